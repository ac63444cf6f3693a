#pragma once
// Header of an IONEX 1.0 file of global ionosphere maps (Schaer, Gurtner,
// Feltens 1998): the time and grid layout of the maps, their exponent and
// the satellite code biases of the auxiliary block.
#include <istream>

#include "geodesy/mjd.h"
#include "numerics/matrix.h"

class IONEXHeader {
public:
    float version = 0.0f;
    char type[20] = {};                  // must hold "IONOSPHERE MAPS"
    char pgm[21] = {}, runby[21] = {};
    char date[20] = {};
    char MapFun[6] = {};                 // mapping function of the producer
    char ObsUsed[80] = {};
    mjd firstEph, lastEph;               // epochs of the first and last map
    int interval = 0;                    // map spacing (s)
    int nMaps = 0;                       // TEC maps in the file
    int nStats = 0, nSat = 0;            // bias lines counted before reading
    short MapDim = 0;
    float ElevCutOff = 0.0f;             // degrees
    long double BaseR = 0.0L;            // Earth radius of the model (km)
    long double hgt1 = 0.0L, hgt2 = 0.0L, dhgt = 0.0L;  // shell heights (km)
    long double lat1 = 0.0L, lat2 = 0.0L, dlat = 0.0L;  // grid latitudes (deg)
    long double lon1 = 0.0L, lon2 = 0.0L, dlon = 0.0L;  // grid longitudes (deg)
    int exponent = -1;                   // map values are in 10^exponent TECU
    matrix<unsigned short> Sat;          // nSat satellite numbers (G 0, R 100, E 200)
    matrix<long double> SatDCB;          // nSat x 2: bias and its RMS (s)

    /// Sizes Sat and SatDCB for the counted nSat bias lines; Sat is 0 (no
    /// satellite) until read.
    void SetNSat(int n, int nStations);
};

/// Reads the header up to "END OF HEADER". nSat and nStats must be set by a
/// count of the file's bias lines first (SetNSat). A type without
/// "IONOSPHERE MAPS" ends the run with the framed error; unknown labels and
/// malformed epoch or grid lines are warned about under "IONEXHeader" and
/// reading goes on. Labels are taken from column 61, where the format puts
/// them, so that free text can't be taken for one.
std::istream& operator>>(std::istream& in, IONEXHeader& h);
