#pragma once
// One IONEX file of global ionosphere maps: its header with the satellite
// code biases and its TEC and RMS maps, owned together, answering slant
// delays and biases.
#include "delays/IONEXData.h"
#include "delays/IONEXHeader.h"

class IONEX {
public:
    IONEX();
    /// Copies keep the maps bound to their own header.
    IONEX(const IONEX& other);
    IONEX& operator=(const IONEX& other);

    /// Stores the file name; a name of 256 characters or more ends the run
    /// with the framed error.
    void SetFile(const char* file);

    /// Reads the whole file: counts the bias lines, then the header and the
    /// maps. A file that does not open, isn't of type "IONOSPHERE MAPS" in
    /// its first line, or is cut or malformed ends the run with the framed
    /// error.
    void ReadFile();

    /// P1-P2 code bias (s) of satellite sat (shared numbering: GPS PRN,
    /// GLONASS 100 + slot, Galileo 200 + PRN); 0 when the file doesn't list it.
    long double GetDCB(unsigned short& sat);
    /// The same for the signed satellite number; a negative one is not listed.
    long double GetDCB(short& sat);

    /// Slant delay from the maps; see IONEXData::CalcIonDelay for the
    /// arguments (seconds of day, geocentric latitude, longitude and
    /// elevation in degrees), the types, units and failures.
    long double CalcIonDelay(long double& secd, long double& beta_deg, long double& la_deg, long double& elev_deg,
                             int& Unit, int& Type, int& tecv);

    /// TEC maps of the file.
    int GetNMaps() const { return ihead.nMaps; }
    /// Satellites of the bias block.
    int GetNSat() const { return ihead.nSat; }
    const IONEXHeader& Header() const { return ihead; }
    const IONEXData& Data() const { return idata; }

private:
    long CheckIFile();

    char ifile[256];
    unsigned short sattmp;
    IONEXHeader ihead;
    IONEXData idata;
};
