#pragma once
// Ocean tide loading: the displacement of a station by the load of the ocean
// tides, from the BLQ coefficients of the 11 main tides. The BLQ values fix an
// admittance at 11 frequencies; splines over frequency carry it to 342 tidal
// harmonics, whose sum is the displacement (the hardisp scheme of the IERS
// Conventions 2010, ch. 7, by D. Agnew).
#include <iosfwd>
#include <cstddef>

#include "geodesy/flh.h"
#include "geodesy/mjd.h"
#include "geodesy/neu.h"
#include "numerics/matrix.h"

namespace otlns {
constexpr int NCons = 11;   ///< constituents of a BLQ block: M2 S2 N2 K2 K1 O1 P1 Q1 Mf Mm Ssa
constexpr int NHarm = 342;  ///< harmonics of the tidal table
constexpr int NArg = 6;     ///< Doodson arguments (tau, s, h, p, N', ps)
constexpr int NameSize = 64;    ///< station name buffer, terminator included
constexpr int FieldWidth = 7;   ///< columns of one BLQ number; number i starts at 7 i + 1
/// 0-based columns of longitude, latitude and height (degrees, metres) in
/// the last comment line of a block.
constexpr std::size_t LonPos = 49, LatPos = 59, HgtPos = 69, CoordWidth = 10;

/// One tidal harmonic: Doodson numbers without the +5 offsets, and the
/// Cartwright-Tayler-Edden amplitude of the equilibrium tide, sign included.
struct Harmonic {
    int IDD[NArg];
    long double TAMP;
};
/// The 342 harmonics of the IERS routine hardisp in its order: 109
/// semidiurnal, 154 diurnal, 79 long-period.
extern const Harmonic Harmonics[NHarm];
}  // namespace otlns

/// One station of a BLQ file.
class otlData {
public:
    char pt[otlns::NameSize];  ///< station name, blanks trimmed
    flh gpos;                  ///< position of the block's comment line (rad, rad, m)
    /// Amplitudes (m) of the 11 constituents: u the first row (radial), e the
    /// second (tangential west), n the third (tangential south).
    matrix<neu> AMP;
    /// Phases (degrees) in the same layout, sign reversed from the file's lags.
    matrix<neu> PHS;

    /// Empty name, zero position, 11 zero amplitudes and phases.
    otlData();
};

/// Writes d as a BLQ block that ReadFile reads back: a "$$" line, the name
/// after two blanks, two "$$" lines, a comment line with longitude, latitude
/// (degrees) and height at columns 49, 59, 69, then three rows of amplitudes
/// (m, "%7.5f" with the leading 0 blanked, so 0 <= amplitude < 1 m) and three
/// rows of phase lags (degrees, 7.1), each number at column 7 i + 1.
std::ostream& operator<<(std::ostream& os, const otlData& d);

class OceanTideLoading {
public:
    /// No file, no station selected.
    OceanTideLoading();

    /// Stores the BLQ file name; a null name or one of 512 characters or more
    /// ends the run with "OCEAN TIDE LOADING FILE CAN NOT BE READ!".
    void SetFile(const char* fname);

    /// Reads every station of the BLQ file, in two passes (count, then read).
    /// Header lines run to the one holding "$$ END HEADER"; a block is then a
    /// name line (first line after any "$$" or blank lines), three "$$"
    /// comment lines and six rows of 11 numbers; "$$ END TABLE" or the end of
    /// the file closes the table. A file that does not open or ends in the
    /// header ends the run with "OCEAN TIDE LOADING FILE CAN NOT BE READ!". A
    /// last block cut short by the end of the table is left out after the
    /// warning "PROBLEM READING BLQ FILE: STATION NUMBER %3ld [%s]!". A short
    /// line, a missing or malformed number, a comment line that isn't one, or
    /// a comment position outside +-90 degrees of latitude or +-360 of
    /// longitude end the run with "OCEAN TIDE LOADING FILE CORRUPTED!".
    void ReadFile();

    /// Stations read.
    long GetNStation() const { return nstation; }
    /// Index of the selected station, -1 when none.
    long GetStatIndex() const { return ixOTide; }
    /// Station i (0 <= i < GetNStation()); the matrix stops the run otherwise.
    const otlData& GetStation(long i) const { return OTL(i); }

    /// Selects the station whose trimmed name equals name exactly. Without
    /// one, warns "STATION NAME -%s- NOT LISTED IN BLQ FILE > SETTING ALL
    /// DISPLACEMENTS TO ZERO!" and selects none.
    void SetStation(const char* name);

    /// Ocean loading displacement (m) of the selected station at eph: north,
    /// east, up; all zero without a station. The epoch is read as UTC: it is
    /// moved to TT by TT - UTC and its second of day gives the hour angle, as
    /// in hardisp. A GPS epoch thus stands for an instant up to 18 s later:
    /// 18 s of tidal motion, a few tenths of a millimetre at the most.
    void GetDisplacement(const mjd& eph, neu& DXOTL);

private:
    void CheckData(std::istream& in);
    void ReadData(std::istream& in);
    void SetDoodsonPhasFreq(const mjd& eph);
    void TDFRPH(int KK, long double& FREQ, long double& PHASE) const;
    void ADMINT(const matrix<long double>& AMPIN, const matrix<long double>& PHIN,
                matrix<long double>& AMPOUT, matrix<long double>& POUT);
    long double RECURS(const matrix<long double>& A, const matrix<long double>& P) const;

    char file[512];
    long nstation;
    long ixOTide;
    matrix<otlData> OTL;
    matrix<long double> AMP, PHS;          // one component of the station, 11 values
    matrix<long double> AZ, AW, AS;        // harmonic amplitudes (m): radial, west, south
    matrix<long double> PZ, PW, PS;        // harmonic phases (degrees)
    matrix<long double> RL, AIM, RF;       // admittance and frequency at the constituents
    matrix<long> IXRF;                     // sort keys of RF
    long double D[otlns::NArg];            // Doodson phases (degrees) at the epoch
    long double DD[otlns::NArg];           // their rates (cycles per day)
};
