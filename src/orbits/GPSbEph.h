#pragma once
// GPS and Galileo broadcast ephemeris from a RINEX navigation file of
// Keplerian records (IS-GPS-200, 20.3.3.4.3; Galileo OS SIS ICD, 5.1.1):
// the Earth-fixed satellite position and clock of one record at any epoch.
// Epochs stay on the file's own time scale (GPS or Galileo system time).
//
// Satellite numbers follow the shared numbering: a GPS record is held
// under its PRN, a Galileo record under 200 + PRN. The satellite field of a
// record may be a bare number (1-99 GPS, 201-299 Galileo) or a system letter
// with the PRN ("G05", "E11", as RINEX 3 writes them); any other letter or
// number ends the run.
//
// Fields are read by their columns, 19 characters each: the values of the
// epoch line follow the epoch directly, and the four of each further line
// start one field width before that, which is the layout of RINEX 2 (3
// blanks) and RINEX 3 (4 blanks) alike. A blank field reads 0, as a field
// the program's other readers can't convert does; RINEX leaves the spare
// and unknown fields blank.
#include <istream>
#include <string>

#include "geodesy/mjd.h"
#include "geodesy/xyz.h"
#include "numerics/MathConstants.h"
#include "numerics/matrix.h"
#include "observations/gnssobs.h"

namespace GPSbEphns {
/// Speed of light (m/s).
constexpr long double C_mps = SpeedOfLight_mps;
/// A record is fitted for 4 h around its epoch; beyond this distance (s)
/// the result is warned of on every call.
constexpr long double ValidInterval_s = 8000.0L;
/// With warnings asked for, a record this far (s) from the epoch is stale.
constexpr long double StaleLimit_s = 7200.0L;
/// Kepler's equation: change of the eccentric anomaly (rad) that ends the
/// iteration, and iterations at most.
constexpr long double KeplerTol_rad = 1e-14L;
constexpr int MaxKeplerIter = 100;
/// Light-time iterations at most, and the closure (m) that ends them.
constexpr int MaxLightIter = 10;
constexpr long double LightTimeTol_m = 1e-5L;
/// Longest header line kept (characters), and the width of a record field.
constexpr std::size_t HeaderLineSize = 99;
constexpr std::size_t FieldWidth = 19;
/// Parameters of a record: 3 on the epoch line, 4 on each of six lines and
/// the transmission time; the fit interval after it is not kept.
constexpr int NParameters = 28;
constexpr int NLinesRecord = 8;
}  // namespace GPSbEphns

/// Header of the navigation file.
class GPSbEphHeader {
public:
    GPSbEphHeader();
    float version;
    char type[20];
    char pgm[21], runby[21];
    char date[20];
    long double a0, a1;  // GPS - UTC polynomial, s and s/s
    long T, W;           // its reference time (s of week) and week
    short leaps;
    long double alfa[4], beta[4];  // Klobuchar coefficients, s/semicircle^n
};

/// Reads header lines up to "END OF HEADER". Unknown labels are warned of
/// (GPSbEphHeaderWarning); a file that ends before "END OF HEADER" ends the
/// run with GPSbEphHeaderError.
std::istream& operator>>(std::istream& in, GPSbEphHeader& h);

/// Records of the navigation file in file order.
class GPSbEphData {
public:
    /// Columns of data, in file order (s, rad, m, rad/s as RINEX has them).
    enum {
        A0 = 0, A1, A2, IODE, CRS, DN, M0, CUC, E, CUS, AS, TOE, CIC, OMEGA, CIS, I0, CRC, W,
        OMEGADOT, IDOT, CODL2, GPSW, L2P, SVACC, SVHEALTH, TGD, IODC, TODD
    };
    GPSbEphData();
    /// Sizes the tables for n records.
    void SetNRecords(unsigned long n);

    unsigned long nsatall;
    matrix<mjd> mjdo;  // record epochs (time of clock)
    matrix<short> sat, satList;
    matrix<long double> data;
    bool isSet;
};

class GPSbEph {
public:
    GPSbEph();

    /// Stores the file name; a null name or one of 256 characters or more
    /// ends the run with GPSbEphError.
    void SetFile(const char* file);
    /// System whose records a RINEX 3 or 4 file gives: 'G' (GPS LNAV, the
    /// default) or 'E' (Galileo); a RINEX 2 file gives every record it holds.
    void SetSystem(char letter) { system = letter; }
    /// Reads the file, plain or gzip: a RINEX 2 file in two passes (count,
    /// then fill), a RINEX 3.02-3.05 or 4.00 file by ReadRinex3NavRecords
    /// (its errors there). A file that does not open, has no END OF HEADER,
    /// ends inside a record or holds a satellite field of no known system
    /// ends the run with the framed error; records of a satellite out of
    /// time order are warned of.
    void ReadFile();
    /// Records read.
    long GetNSat() const { return nsatall; }
    /// Sorted satellite numbers of the file (shared numbering).
    const matrix<short>& GetSatList() const { return gdata.satList; }
    /// Epoch of record i.
    mjd GetMJD(long i) const { return gdata.mjdo(i); }
    /// Relativity term -F e sqrt(A) sin E (s) of the last position: the
    /// opposite of what the clock of CalcSatPosition holds, so that adding
    /// it takes it out.
    long double GetRelativity() const { return Relativity; }
    /// The records as read.
    const GPSbEphData& GetData() const { return gdata; }
    /// The header as read.
    const GPSbEphHeader& GetHeader() const { return ghead; }

    /// Record of satellite st used for epoch t0: the first record when t0 is
    /// earlier, the nearer of the two around t0 (a tie to the earlier), the
    /// last after the end. A satellite without records ends the run with
    /// GPSbEphError "SAT: Gnn IS NOT LISTED IN GPS NAVIGATION FILE!!!" (Enn
    /// for Galileo).
    long GetDataIndex(short st, const mjd& t0) const;
    /// Record that the last CalcSatPosition used (GetDataIndex of its
    /// tindex); -1 before any.
    long GetLastIndex() const { return ixLast; }

    /// Position (m, Earth-fixed, antenna phase centre of the broadcast
    /// model) of satellite st at t0 from the record chosen for tindex;
    /// pos.dt is the clock correction (s) a0 + a1 dt + a2 dt^2 with the
    /// relativity term F e sqrt(A) sin E in it, for the ionosphere-free pair
    /// of the message. The orbit's time is counted from the record epoch.
    /// tgdout (if not null) receives TGD (s). More than 8000 s from the
    /// record is warned of always, more than 7200 s with w non-zero; izpis
    /// is not used. A record without a usable orbit or a Kepler iteration
    /// that does not settle in 100 steps ends the run.
    void CalcSatPosition(unsigned short st, mjd& t0, mjd& tindex, xyzt& pos,
                         long double* tgdout, unsigned short w, unsigned short izpis);

    /// Light-time iteration from the reception epoch eph to the receiver at
    /// prec (m, Earth-fixed at eph): psat at transmission; returns the
    /// geometric distance (m) to the receiver turned by the Earth's rotation
    /// during the travel. More than 10 iterations are warned of.
    long double CalcSatPosition(unsigned short sati, mjd& eph, mjd& tindex, xyz& prec,
                                xyzt& psat, long double* tgd, unsigned short w,
                                unsigned short iz);

    /// One pass with the travel time P/c from the pseudorange P (m): psat at
    /// eph - P/c; returns the distance (m) to the receiver turned by the
    /// Earth's rotation during that time.
    long double CalcSatPosition(unsigned short sati, mjd& eph, mjd& tindex, xyz& prec,
                                xyzt& psat, gnssobs& P, long double* tgd, unsigned short w,
                                unsigned short iz);

private:
    long ixLast = -1;
    long CountNav(const std::string& content);
    void ReadRecords(std::istream& in);
    void ReadRinex3(const std::string& content);
    char system = 'G';
    void CheckTimeOrder() const;
    // Receiver at prec turned by the Earth's rotation angle of a travel of
    // tau s, into the frame of the transmission epoch; distance to psat.
    long double RotatedDistance(const xyz& prec, long double tau, const xyzt& psat);

    char navig[256];
    GPSbEphHeader ghead;
    GPSbEphData gdata;
    long double Relativity;
    long nsatall;
    long double GMz, OMEGAz, RelK;
    xyzt p0, v0;
    xyz ps;
    mjd ephr;
};

/// Framed error of the reader on the output stream; ends the run with 1.
[[noreturn]] void GPSbEphError(const std::string& text);

/// Framed warning of the reader on the output stream.
void GPSbEphWarning(const std::string& text);
/// Framed error and warning of the record table.
[[noreturn]] void GPSbEphDataError(const std::string& text);
void GPSbEphDataWarning(const std::string& text);
/// Framed error and warning of the header.
[[noreturn]] void GPSbEphHeaderError(const std::string& text);
void GPSbEphHeaderWarning(const std::string& text);
