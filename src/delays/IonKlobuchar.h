#pragma once
// The broadcast ionosphere model of GPS (Klobuchar, 1987; IS-GPS-200
// figure 20-4): eight coefficients from the header of a RINEX 2 GPS
// navigation file give the delay on L1 for any site, satellite direction
// and time of day.
#include <istream>

class IonKlobuchar {
public:
    float version = 0.0f;                // RINEX version
    char type[20] = {};                  // file type, first letter N
    char pgm[21] = {}, runby[21] = {};   // program and agency
    char date[20] = {};                  // date of the file
    long double a0 = 0.0L, a1 = 0.0L;    // GPS-UTC polynomial (s, s/s)
    long T = 0, W = 0;                   // its reference second and week
    short leaps = 0;                     // leap seconds
    long double alfa[4] = {};            // vertical delay amplitude (s, s/semicircle^n)
    long double beta[4] = {};            // period (s, s/semicircle^n)

    /// Slant ionospheric delay (m) on L1 seen from geodetic latitude fi_deg
    /// and longitude la_deg towards a satellite at elevation elev_deg and
    /// azimuth azm_deg (all degrees), at sod seconds of GPS day. The amplitude
    /// is held at or above 0 and the period at or above 72000 s; at night
    /// (phase beyond 1.57 rad) the delay is the constant 5 ns times the
    /// obliquity factor. Any angle is accepted; the pierce point latitude is
    /// held within 0.416 semicircles as the model prescribes.
    long double CalcIonDelay(long double fi_deg, long double la_deg, long double elev_deg, long double azm_deg,
                             long double sod) const;
};

/// Reads the header of a RINEX 2 GPS navigation file up to "END OF HEADER"
/// (version, type, program, ION ALPHA/BETA, DELTA-UTC, LEAP SECONDS) and
/// leaves the stream behind it. A file whose type letter is not N, or that
/// ends before "END OF HEADER", ends the run with the framed error under
/// "Klobuchar iono"; an unknown label is warned about.
std::istream& operator>>(std::istream& in, IonKlobuchar& k);
