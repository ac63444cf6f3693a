#pragma once
// GLONASS broadcast ephemeris from a RINEX 2 GLONASS navigation file: the
// Earth-fixed state vector of each record (PZ-90), carried to the wanted
// epoch by a fourth-order Runge-Kutta integration of the satellite's motion
// in the rotating frame (GLONASS ICD, edition 5.1, appendix J).
#include <istream>
#include <string>

#include "geodesy/mjd.h"
#include "geodesy/xyz.h"
#include "geodesy/ymdhms.h"
#include "numerics/MathConstants.h"
#include "numerics/matrix.h"
#include "observations/gnssobs.h"

namespace GLNbEphns {
/// Speed of light (m/s).
constexpr long double C_mps = SpeedOfLight_mps;
/// Record epochs this far (s) from the wanted epoch are warned of: a record
/// serves 15 min either side of its epoch.
constexpr long double StaleLimit_s = 960.0L;
/// Record epochs are whole minutes; seconds off by more (s) are warned of.
constexpr long double FullMinuteTol_s = 0.01L;
/// Integrator steps at most: 30 000 s of arc at 30 s.
constexpr long MaxSteps = 1000;
/// A remaining step below this (s) ends the integration.
constexpr long double MinStep_s = 1e-8L;
/// Light-time iterations at most, and the closure (m) that ends them.
constexpr int MaxLightIter = 500;
constexpr long double LightTimeTol_m = 1e-5L;
/// Longest signal flight time (s) from any GNSS satellite to the ground
/// (0.15 s from a QZSS apogee): a record that puts its satellite farther is
/// no orbit, and iterating on it only spins.
constexpr long double MaxFlightTime_s = 1.0L;
/// Longest header line kept, and longest record line (characters).
constexpr std::size_t HeaderLineSize = 99;
/// Ranges of the broadcast fields (GLONASS ICD, edition 5.1, table 4.5): a
/// record beyond them is no orbit, and integrating it would run the light
/// time iteration to its limit with the satellite anywhere. Clock offset
/// tau_n 2^-9 s, relative frequency offset gamma_n 2^-30, position 2.7e4 km,
/// velocity 4.3 km/s, luni-solar acceleration 6.2e-9 km/s^2.
constexpr long double MaxTauN_s = 0.001953125L;
constexpr long double MaxGammaN = 9.31322574615478515625e-10L;
constexpr long double MaxCoordinate_km = 2.7e4L;
constexpr long double MaxVelocity_kmps = 4.3L;
constexpr long double MaxAcceleration_kmps2 = 6.2e-9L;
}  // namespace GLNbEphns

/// Header of the navigation file.
class GLNbEphHeader {
public:
    GLNbEphHeader();
    float version;
    char type[20];
    char pgm[21], runby[21];
    char date[20];
    long double TauC;  // GLONASS system time to UTC(SU) correction, s
    ymdhms RefTimeCorr;
    short leaps;
};

/// Reads header lines up to "END OF HEADER". Unknown labels are warned of; a
/// file that ends before "END OF HEADER" ends the run with GLNbEphError.
std::istream& operator>>(std::istream& in, GLNbEphHeader& h);

/// Records of the navigation file in file order.
class GLNbEphData {
public:
    /// Columns of data, in file order (km, km/s, km/s^2 for the state).
    enum {
        TAUN = 0, GAMMAN, TK, X0, XD0, XDDS, HEALTH, Y0, YD0, YDDS, FRQNUM, Z0, ZD0, ZDDS, AGE
    };
    GLNbEphData();
    /// Sizes the tables for n records.
    void SetNRecords(long n);

    long nsatall;
    matrix<mjd> mjdo;  // record epochs on the GPS time scale
    matrix<short> sat, satList;
    matrix<long double> data;
    bool isSet;
};

class GLNbEph {
public:
    GLNbEph();

    /// Stores the file name; a null name or one of 256 characters or more
    /// ends the run with GLNbEphError.
    void SetFile(const char* file);
    /// Reads the file, plain or gzip: a RINEX 2 GLONASS file in two passes
    /// (count, then fill), the FDMA records of a RINEX 3.02-3.05 or 4.00
    /// file by ReadRinex3NavRecords (its errors there). Record epochs (UTC
    /// in the file) are moved to GPS time by LeapSecond. A file that does
    /// not open, has no END OF HEADER or ends inside a record ends the run
    /// with GLNbEphError, as does a record outside the ranges of the ICD; a
    /// record epoch off whole minutes is warned of and kept.
    void ReadFile();
    /// Stores record r of slot (1..99) at the UTC epoch utc with its 15
    /// values in the order of GLNbEphData's columns, the one home of the
    /// record checks of both formats: the epoch off whole minutes is warned
    /// of; a value beyond the ranges of the GLONASS ICD ends the run with
    /// GLNbEphError naming where.
    void StoreRecord(long r, int slot, const ymdhms& utc, const long double* values, const std::string& where);
    /// Records read.
    long GetNSat() const { return nsatall; }
    /// Epoch (GPS time) of record i.
    mjd GetMJD(long i) const { return rdata.mjdo(i); }
    /// Last periodic relativity term 2 r.v/c^2 (s), already taken out of the
    /// clock that CalcSatPosition returns.
    long double GetRelativity() const { return Relativity; }
    /// Sorted slot numbers of the file.
    const matrix<short>& GetSatList() const { return rdata.satList; }
    /// The records as read.
    const GLNbEphData& GetData() const { return rdata; }
    /// The header as read.
    const GLNbEphHeader& GetHeader() const { return rhead; }

    /// Record of slot st used for epoch t0: the first record when t0 is
    /// earlier, the nearer of the two around t0 (a tie to the earlier), the
    /// last after the end. A slot without records ends the run with
    /// GLNbEphError "SAT: Rnn IS NOT LISTED IN GLONASS NAVIGATION FILE!!!".
    long GetDataIndex(short st, const mjd& t0) const;
    /// Record that the last CalcSatPosition used (GetDataIndex of its
    /// tindex); -1 before any.
    long GetLastIndex() const { return ixLast; }

    /// Position (m, PZ-90 Earth-fixed) and velocity (m/s) of slot st
    /// (1..99) at t0 from the record chosen for tindex, integrated in 30 s
    /// steps; pos.dt is the clock correction (s) TAUN - GAMMAN dt + TauC
    /// less the relativity term. With warning non-zero a record more than
    /// 16 min away is warned of. The integration stops after 1000 steps.
    void CalcSatPosition(short st, mjd& t0, mjd& tindex, xyzt& pos, xyzt& vel, short warning);

    /// Light-time iteration from the reception epoch eph to the receiver at
    /// prec (m): psat, vsat at transmission; returns the geometric distance
    /// (m) with the Earth's rotation during the signal travel applied to the
    /// receiver. More than 500 iterations are warned of; -1 when the record
    /// puts its satellite more than MaxFlightTime_s of light away.
    long double CalcSatPosition(short sati, mjd& eph, mjd& tindex, xyz& prec, xyzt& psat,
                                xyzt& vsat, short warning);

    /// One pass with the travel time P/c from the pseudorange P (m): the
    /// satellite at eph - P/c, rotated into the frame of eph; returns the
    /// distance (m) to prec.
    long double CalcSatPosition(short sati, mjd& eph, mjd& tindex, xyz& prec, xyzt& psat,
                                xyzt& vsat, gnssobs& P, short warning);

private:
    long ixLast = -1;
    long CountNav(const std::string& content);
    void ReadRecords(std::istream& in);
    void ReadRinex3(const std::string& content);
    bool ReadParameter(std::istream& in, long double& value);
    void DiffEqTwoBody(const matrix<long double>& x, long double ax, long double ay,
                       long double az, matrix<long double>& y) const;

    char navig[256];
    long double diffinterval;
    GLNbEphHeader rhead;
    GLNbEphData rdata;
    long nsatall;
    long double GMz, OMEGAz, aE, C20;
    long double Relativity;
    long double x0, y0, z0, vx0, vy0, vz0, asx, asy, asz;
    matrix<long double> Xp, Yp, D1, D2, D3, D4, tmp;
    xyzt p0, v0;
    xyz ps;
    mjd ephr;
};

/// Framed error of the reader on the output stream; ends the run with 1.
[[noreturn]] void GLNbEphError(const std::string& text);
/// Framed warning of the reader on the output stream.
void GLNbEphWarning(const std::string& text);
