#pragma once
// An ANTEX antenna calibration file held in memory (Rothacher & Schmid,
// ANTEX: The Antenna Exchange Format, version 1.4): the receiver and
// satellite antenna records, one of which is selected at a time and answers
// for its phase centre offsets and variations.
#include "delays/AntennaPCV.h"
#include "geodesy/mjd.h"
#include "geodesy/neu.h"
#include "numerics/matrix.h"

namespace antexns {
/// 1 checks the length of antenna names and warns of antennas not found.
inline short PrintWarns = 1;
}  // namespace antexns

class antex {
public:
    /// No file, no records, no current record.
    antex();

    /// Stores the file name. A missing file ends the run with "ANTEX FILE
    /// DOES NOT EXISTS!", a null name or one of 256 characters or more
    /// with the framed error as well.
    void SetFile(const char* file);

    /// Reads the whole file in two passes: the header and a count of the
    /// TYPE / SERIAL NO lines, then every record (see AntennaPCV::ReadFile).
    /// A file without END OF HEADER, or with fewer START OF ANTENNA lines
    /// than TYPE / SERIAL NO lines, ends the run with the framed error
    /// naming the file.
    void ReadFile();

    /// Selects the first record whose name (type and radome, 20 columns)
    /// occurs in ant; true when found. Otherwise no record is current and,
    /// with PrintWarns, a warning goes to the output stream. With
    /// PrintWarns, a name that is not 20 characters long ends the run.
    bool SetAntenna(const char* ant);
    /// As SetAntenna(ant), and the record's serial must occur in ser; silent.
    bool SetAntenna(const char* ant, const char* ser);
    /// As SetAntenna(ant, ser), and the record must be valid at eph; silent.
    bool SetAntenna(const char* ant, const char* ser, const mjd& eph);
    /// Selects the first record of satellite prn (shared numbering) valid at
    /// eph; true when found, otherwise as SetAntenna(ant).
    bool SetSatellite(short prn, const mjd& eph);

    /// Whether the current record is a GPS block IIR antenna (IIR, IIR-A,
    /// IIR-B, IIR-M); false without a current record.
    bool IsBlockIIR() const;

    /// Phase centre offset (m, north, east, up) of the current record on
    /// carrier freq: 0 G01, 1 G02, 2 R01, 3 R02, 4 E01, 5 E07. Zero without
    /// a current record; another freq gives zero and a warning on the
    /// output stream.
    void GetAntennaOffset(neu& dpos, short freq) const;

    /// Phase centre variations (m) of the current record for zenith (nadir
    /// for a satellite) zen_deg and azimuth azm_deg, on the six carriers;
    /// carriers of other constellations than the record's are 0, and all
    /// are 0 without a current record.
    void GetAntennaPCV(long double zen_deg, long double azm_deg, long double& pcvg1,
                       long double& pcvg2, long double& pcvr1, long double& pcvr2,
                       long double& pcve1, long double& pcve7);

    /// Current record, -1 for none.
    long GetAtxIndex() const { return IxAnt; }
    /// Records of the file.
    long GetNAntenna() const { return nAntenna; }
    /// GPS satellite records (type BLOCK ...).
    long GetNGPSSat() const { return nGPSSat; }
    /// GLONASS satellite records.
    long GetNGLNSat() const { return nGLNSat; }
    /// Galileo satellite records.
    long GetNGALSat() const { return nGALSat; }
    /// Receiver antenna records.
    long GetNRec() const { return nRec; }

private:
    void ReadHeader(std::istream& in, long& lineNo);
    void CheckData(std::istream& in, long& lineNo);
    void ReadData(std::istream& in, long& lineNo);
    long Find(const char* ant, const char* ser, const mjd* eph) const;
    void CheckName(const char* ant) const;

    char antfile[256];
    float version;
    char satsystem;
    char pvctype;
    long nAntenna, nGPSSat, nGLNSat, nGALSat, nRec;
    long IxAnt;
    long ixZen, ixAzm;
    matrix<AntennaPCV> AT_PCV;
};
