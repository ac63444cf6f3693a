#pragma once
// Precise orbits from one SP3 file: the whole file in memory, answered per
// satellite and epoch by a 14-node Lagrange polynomial for position and
// velocity and a 4-node one for the clock, with the signal's light time
// solved when a receiver position is given.
#include <map>
#include <string>

#include "geodesy/mjd.h"
#include "geodesy/xyz.h"
#include "numerics/MathConstants.h"
#include "numerics/matrix.h"
#include "observations/gnssobs.h"
#include "orbits/LightTimeHints.h"

namespace GNSSpEphns {
/// Distance (s) beyond the first or last node at which a request is
/// reported as outside the file: one 15-min interval of a usual SP3 file.
constexpr long double MaxOutside_s = 900.0L;
/// Distance (s) beyond the first or last node up to which the 14-node
/// polynomial is still used. Carried beyond the last node of a 15-min GRG
/// file it is off by 1 cm RMS (2 cm at most) after 30 s, 0.23 m after 300 s
/// and 2.9 m after 870 s: a second keeps the error below a millimetre and
/// covers the light time of a signal received at the first node.
constexpr long double MaxExtrapolation_s = 1.0L;
/// A node whose |x|+|y|+|z| is below this (m) is an empty record: no
/// satellite of any system orbits within a metre of the geocentre.
constexpr long double EmptyNode_m = 1.0L;
/// A clock node above this (s) holds no value: the reader stores the
/// 999999 "no value" mark and every refused clock as 999999 s.
constexpr long double MaxClock_s = 0.9L;
/// The "no value" mark of an SP3 clock (µs).
constexpr long double NoClock_us = 999999.0L;
/// Geocentric distances (m) between which a satellite can be. The lowest
/// of any GNSS is the perigee of Galileo E14 and E18 in their eccentric
/// orbits (a = 27 978 km, e = 0.16: 23 450 km), GLONASS flies at 25 500 km;
/// the highest is the apogee of the inclined geosynchronous QZSS orbit
/// (a = 42 164 km, e = 0.075: 45 300 km). 3 000 and 5 000 km of margin
/// still refuse a position off by a factor of ten or written in metres.
constexpr long double MinOrbitRadius_m = 20.0e6L;
constexpr long double MaxOrbitRadius_m = 50.0e6L;
/// Convergence of the light-time iteration (m of range).
constexpr long double LightTimeThres_m = 1e-5L;
/// Light-time iterations allowed before the warning; three or four suffice.
constexpr int MaxLightTimeIter = 10;
// Earth's gravitational constant (m³/s², IERS Conventions 2010), for the
// central acceleration that carries a saved satellite state over a change
// of emission time.
constexpr long double EarthGM_m3ps2 = 3.986004418e14L;
/// Longest flight time (s) taken as a signal: 300 000 km, beyond any GNSS
/// orbit (geostationary ranges stay below 0.14 s). A longer one only comes
/// from a polynomial extrapolated far outside the file, and following it
/// could carry the epoch out of the calendar.
constexpr long double MaxFlightTime_s = 1.0L;
/// Speed of light (m/s).
constexpr long double C_mps = SpeedOfLight_mps;
/// Farthest a flight-time hint may lie from the solution (s). Over it the
/// satellite is carried along its velocity and its acceleration in the
/// Earth-fixed frame (central attraction, Coriolis, centrifugal); what that
/// leaves out (J2 and the third bodies, < 1e-4 m/s²) amounts to less than
/// 1e-12 m of position and 1e-8 m/s of velocity, 2e-9 m in the relativity
/// term.
constexpr long double MaxHintError_s = 1e-4L;
}  // namespace GNSSpEphns

class GNSSpEph {
public:
    GNSSpEph();

    /// Stores the SP3 file name; a name of 256 characters or more ends the
    /// run with the framed error, since it could not be stored whole.
    void SetFile(const char* file);

    /// Reads the whole SP3 file named by SetFile: header, all position
    /// records (km and µs converted to m and s) and the Lagrange
    /// denominators; velocity (V) and correlation (EP, EV) lines are passed
    /// over. A file that does not open, is cut short, announces fewer than
    /// 14 epochs, whose records leave the header's satellite order or its
    /// epoch spacing, or that holds a blank or non-numeric coordinate or
    /// clock ends the run with the framed error naming the line. A node
    /// outside MinOrbitRadius_m..MaxOrbitRadius_m (position and clock) or
    /// with a clock beyond GNSSpClkns::MaxSatClock_s (clock only) is
    /// refused as missing, counted per satellite and warned about on the
    /// output stream with its first line.
    void ReadFile();

    /// Epochs announced by the header (and read).
    long GetNEpoch() const { return nepoch; }
    /// Satellites announced by the header.
    short GetNSat() const { return nsat; }
    /// Length of the header's satellite list; the same as GetNSat().
    short GetNSatList() const { return nsat; }
    /// Satellite number of record i (slot + nsat*epoch index).
    short GetSat(long i) const { return sat(i); }
    /// Satellite number of header slot i.
    short GetSatList(long i) const { return satList(i); }
    /// The header's satellite list, in header order.
    matrix<short> GetSatList() const { return satList; }
    /// Record i: position (m) and clock (s).
    xyzt GetSatPos(long i) const { return sPos(i); }
    /// Standard deviations of record i (m, s); 0 where the line has none.
    xyzt GetSatPosSig(long i) const { return sPosSig(i); }
    /// Exponent base of the position accuracy codes.
    long double GetPositionBase() const { return posBase; }
    /// Exponent base of the clock accuracy codes.
    long double GetClockBase() const { return clkBase; }
    /// Epoch of data block i, on the file's time scale.
    mjd GetMJD(long i) const { return epoch(i); }
    /// The file name given to SetFile.
    const char* GetFile() const { return sp3file; }
    /// Nodes refused at reading, per satellite number.
    const std::map<short, long>& GetRefused() const { return refused; }

    /// Interpolates satellite sati (shared numbering) at ephCalc: position
    /// (m) and clock (s) into psat, velocity (m/s, dt 0) into vsat. Sets
    /// PSisOK false (psat, vsat untouched) for a satellite not in the file
    /// or an empty node in the 14-node window, and DTisOK false when a
    /// clock node of the 4-node window is marked missing (psat.dt is then
    /// no value). Epochs more than 900 s outside the file are warned about;
    /// an epoch more than MaxExtrapolation_s beyond the first or last node
    /// is not extrapolated: both flags false and OutOfSpan true.
    void CalcSatPosition(unsigned short sati, mjd& ephCalc, xyzt& psat, xyzt& vsat);

    /// Satellite state at emission for a signal received at ephCalc by a
    /// receiver at prec (m, Earth-fixed at reception): iterates the light
    /// time, corrects Earth rotation during flight, and reduces psat.dt by
    /// the periodic relativity term 2 r·v/c² (kept in Relativity). Returns
    /// the geometric distance (m), or -1.0 when the position can't be had
    /// (also when the flight time exceeds 1 s, flags false).
    long double CalcSatPosition(unsigned short sati, mjd& ephCalc, xyz& prec,
                                xyzt& psat, xyzt& vsat);

    /// As above, with the iteration started from the flight time tauHint
    /// (s), that of the satellite's last epoch carried forward: one
    /// interpolation at the hinted emission epoch, the satellite then
    /// carried as in MovedSatPosition, the clock interpolated at the
    /// emission epoch found. Agrees with the form above to 1e-9 m, and
    /// falls back to it for a hint of 0 (none), one off by more than
    /// MaxHintError_s, or a solution on another interpolation window.
    long double CalcSatPosition(unsigned short sati, mjd& ephCalc, xyz& prec,
                                xyzt& psat, xyzt& vsat, long double tauHint);

    /// As above, with the hint hints hold for sati; they keep the solution
    /// for the satellite's next epoch.
    long double CalcSatPosition(unsigned short sati, mjd& ephCalc, xyz& prec,
                                xyzt& psat, xyzt& vsat, LightTimeHints& hints);

    /// Satellite state of the last light-time solution of CalcSatPosition
    /// above: light time tau (s), position and orbit-file clock (s, before
    /// the relativity term) at emission, velocity (m/s).
    struct LightTimeState {
        long double tau = 0.0L;
        xyzt pos;
        xyz vel;
    };
    /// The state of the last successful CalcSatPosition with a receiver.
    LightTimeState LastState() const { return {lastTau, lastPos, lastVel}; }
    /// The satellite of a saved solution as CalcSatPosition gave it:
    /// position at emission, clock with the relativity term taken off.
    static xyzt SolvedPosition(const LightTimeState& s);

    /// The light-time solution of CalcSatPosition for the same record after
    /// its reception epoch moved by shift_s (s, a millisecond at most) and
    /// the receiver to prec: the satellite and its velocity carried along
    /// the Earth-fixed acceleration over the change of emission time. Over a
    /// millisecond the neglected acceleration (J2 and the third bodies,
    /// < 1e-3 m/s²) moves it by less than 1e-9 m, so the distance
    /// (returned, m) and psat agree with a fresh interpolation to 1e-9 m;
    /// Relativity, whose rate that acceleration times r changes, to 6e-14 s
    /// a second of shift (2e-8 m over a millisecond). No file is touched;
    /// the clock psat.dt keeps its saved value. Where carried is given, it
    /// takes the state reached (flight time, position, velocity, the saved
    /// clock): moved again by a later shift from there, it gives what a move
    /// from s by both shifts would, and its light time starts converged.
    long double MovedSatPosition(const LightTimeState& s, long double shift_s, const xyz& prec,
                                 xyzt& psat, LightTimeState* carried = nullptr);

    /// As above but in one pass, with the flight time taken as P.obs/c from
    /// the pseudorange P (m); no relativity term, no test of PSisOK.
    /// Returns the geometric distance (m).
    long double CalcSatPosition(unsigned short sati, mjd& ephCalc, xyz& prec,
                                xyzt& psat, xyzt& vsat, gnssobs& P);

    /// Periodic relativity term (s) of the last light-time solution.
    long double Relativity;
    /// Validity of the clock and of the position of the last call.
    bool DTisOK, PSisOK;
    /// True when the last call asked for an epoch beyond the file's span
    /// (MaxExtrapolation_s).
    bool OutOfSpan = false;
    /// True when the position of the last call failed on a node that the
    /// file leaves empty or the reader refused.
    bool NodeMissing = false;

private:
    void CountSomeLines();
    void ReadFileHeader();
    void ReadFileData();
    void SetLfact();
    // The interpolation proper, without the outside-the-file test that the
    // public forms make once per call; the velocity (m/s) only on request.
    void Interpolate(unsigned short sati, const mjd& ephCalc, xyzt& psat, xyzt& vsat,
                     bool withVelocity = true);
    // Velocity (m/s, dt 0) of the position last interpolated.
    xyzt LastVelocity() const;
    // The clock on the clock nodes of the last window, at seconds sec from
    // the position window's nodes; DTisOK false on a missing clock node.
    long double WindowClock(const long double* sec);
    // The light-time iteration of CalcSatPosition without the outside-the-
    // file warning.
    long double IteratedLightTime(unsigned short sati, mjd& ephCalc, xyz& prec, xyzt& psat, xyzt& vsat);
    // Keeps the solution for LastState, takes the relativity term off the
    // clock of psat; returns dist.
    long double Solved(long double tau, long double dist, xyzt& psat, const xyzt& vsat);
    // Acceleration (m/s²) of state s in the Earth-fixed frame.
    xyz EarthFixedAcceleration(const LightTimeState& s) const;
    // The light-time iteration with the satellite carried from state s
    // along its velocity and acceleration acc (EarthFixedAcceleration of
    // s), the reception epoch moved by shift_s: returns the distance (m),
    // leaves the position (clock untouched) in psat and the flight time it
    // belongs to in tau.
    long double CarriedLightTime(const LightTimeState& s, const xyz& acc, long double shift_s, const xyz& prec,
                                 xyzt& psat, long double& tau, bool& converged) const;
    void WarnIfOutside(const mjd& ephCalc);
    [[noreturn]] void Fail(long lineNo, const std::string& text) const;

    char sp3file[256];
    char version, flag;
    long nepoch;
    long nSatListLines, nComments;
    short nsat;
    matrix<short> satList;
    matrix<short> satListSig;
    mjd StartEpoch;
    matrix<short> sat;
    matrix<mjd> epoch;
    matrix<xyzt> sPos;
    matrix<xyzt> bySlot;
    // Per slot, nepoch + 1 counts: missing nodes before each node.
    matrix<long> emptyBefore;
    matrix<xyzt> sPosSig;
    long double interval;
    long double posBase, clkBase;
    int nPtsPos;
    int nPtsTime;
    // Nodes of the position window (2 nPtsPos); fixed, so that the
    // interpolation works in arrays on the stack.
    static constexpr int MaxNodes = 14;
    matrix<long double> wPos, wClk;
    // Header slot of each satellite number, -1 for one not in the file.
    matrix<long> slotOf;
    // Seconds from the nodes, their prefix and suffix products and the
    // nodes of the last interpolation.
    long double lastSeconds[MaxNodes] = {};
    long double lastPre[MaxNodes + 1] = {}, lastSuf[MaxNodes + 1] = {};
    const xyzt* lastNode = nullptr;
    long lastNodes = 0;
    // Interval index of the last interpolation, and its clock nodes within
    // the position window.
    long lastIx = 0, lastClockOffset = 0, lastClockNodes = 0;
    long double OMEGAz;
    xyzt p0, v0;
    xyz ps;
    // Light time, emission state and velocity of the last light-time
    // solution, for LastState.
    long double lastTau = 0.0L;
    xyzt lastPos;
    xyz lastVel;
    mjd ephr;
    // Epoch lines ('*') found in the file, so that the header's count is
    // checked before anything is allocated.
    long nEpochLines;
    std::map<short, long> refused;
};
