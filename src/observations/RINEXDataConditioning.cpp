// The methods of RINEXData that condition observations already in memory:
// millisecond clock steps, time-tag repairs, the linear combinations and the
// presence tests of a system's data.
#include <algorithm>
#include <cmath>

#include "numerics/MathConstants.h"
#include "observations/GLC.h"
#include "observations/GLONASSc.h"
#include "observations/GPSc.h"
#include "observations/LinearCombinations.h"
#include "observations/RINEXData.h"
#include "observations/SatelliteSystem.h"

namespace {

/// One millisecond of receiver clock as range, m.
constexpr long double MSm = 299792.458L;
/// Speed of light, m/s.
constexpr long double SpeedOfLight = SpeedOfLight_mps;
/// A GLONASS row below this wavelength (m) was never filled by
/// SetFrequency: the satellite has no channel and no usable phase.
constexpr long double MinWavelength = 0.01L;
/// Most satellite pairs held per epoch pair: the work arrays are fixed.
constexpr int MaxPairs = 100;
/// Largest L4 change (m) between two epochs of a pair that still counts: a
/// larger one is a cycle slip, not a clock step.
constexpr long double MaxL4Change = 1.0L;
/// Largest P4 change (m) between two epochs of a pair that still counts:
/// code noise and multipath stay well below it, a blunder does not.
constexpr long double MaxP4Change = 10.0L;
/// A step below this (ms) is no step: the rounded mean is a whole number.
constexpr long double MinStep_ms = 0.1L;
/// A single-frequency vote needs at least this (ms) of code-minus-phase jump.
constexpr long double MinVote_ms = 0.5L;
/// A single-frequency vote must lie this close (ms) to a whole millisecond:
/// 1e-5 ms is 3 m, the code noise plus the ionosphere change of one step.
constexpr long double VoteTolerance_ms = 1.0e-5L;
/// A correction below this (m) is none.
constexpr long double MinCorrection = 0.0001L;
/// A system needs more than this share of all records to count as present.
constexpr double MinSystemShare = 0.1;

bool IsGPS(short s) { return SystemOf(s) == SysGPS; }
bool IsGLONASS(short s) { return SystemOf(s) == SysGLN; }
bool IsGalileo(short s) { return SystemOf(s) == SysGAL; }

// Wavelengths (m) of the first and second carrier of a GPS or GLONASS
// satellite; false for other systems and for a GLONASS satellite whose
// channel is unknown, whose phase cannot be turned into metres.
bool CarrierWavelengths(short s, long double& lam1, long double& lam2)
{
    if (IsGPS(s)) {
        lam1 = GPSc::lamb1;
        lam2 = GPSc::lamb2;
        return true;
    }
    if (IsGLONASS(s)) {
        const long row = s - 101;
        if (row >= GLONASSc::NSlots) return false;
        lam1 = GLONASSc::lamb(row, 0);
        lam2 = GLONASSc::lamb(row, 1);
        return std::fabs(lam1) > MinWavelength && std::fabs(lam2) > MinWavelength;
    }
    return false;
}

// Writes f(s, a, b) into out for the records whose number passes take and
// whose two sources are both present; the other records that take selects
// get 0. f returns a null value when it cannot form the record.
template <class Take, class F>
void FormRecords(matrix<gnssobs>& out, const matrix<short>& sat, const matrix<gnssobs>& a,
                 const matrix<gnssobs>& b, long n, Take take, F f)
{
    for (long r = 0; r < n; ++r) {
        const short s = sat(r);
        if (!take(s)) continue;
        if (a(r).IsNull() || b(r).IsNull())
            out(r) = gnssobs();
        else
            out(r) = f(s, a(r), b(r));
    }
}

bool AnyRecord(short) { return true; }

// First block of a dual-frequency combination: GPS and GLONASS. The L2/P2
// columns hold no Galileo signal (Galileo has no band 2), and other systems
// have no coefficients, so their records stay 0 until the Galileo block.
template <class FGps, class FGln>
gnssobs GpsGlonass(short s, const gnssobs& a, const gnssobs& b, FGps fg, FGln fr)
{
    if (IsGPS(s) && GLC::LoadSystem(s)) return fg(a, b);
    if (IsGLONASS(s)) return fr(s, a, b);
    return gnssobs();
}

// Galileo block value: Galileo coefficients loaded, then f.
template <class F>
gnssobs GalileoValue(short s, const gnssobs& a, const gnssobs& b, F f)
{
    if (!GLC::LoadSystem(s)) return gnssobs();
    return f(a, b);
}

gnssobs Value(long double v) { return gnssobs(v); }

// A type counts only when the header lists it and its matrix was sized for
// the records: a matrix of an unlisted type is empty and would be indexed
// beyond its end.
bool Has(bool listed, const matrix<gnssobs>& m, long nsatall)
{
    return listed && nsatall > 0 && m.Length() == nsatall;
}

}  // namespace


void RINEXData::CorrMSJumps(long& nMSJumps)
{
    nMSJumps = 0;
    if (nepochall < 2 || nsatall < 1) return;
    if (!(Has(rhead.iC1, C1, nsatall) && Has(rhead.iL1, L1, nsatall)
          && Has(rhead.iL2, L2, nsatall) && Has(rhead.iP2, P2, nsatall)))
        return;

    matrix<long double> Lcorr(nepochall, 1, 0.0L);
    long prev = 0;  // first record of epoch i - 1
    for (long i = 1; i < nepochall; ++i) {
        const long cur = std::min(prev + static_cast<long>(nsat(i - 1)), nsatall);
        const long end = std::min(cur + static_cast<long>(nsat(i)), nsatall);
        long double sum = 0.0L;
        long count = 0;
        int npairs = 0;
        for (long a = prev; a < cur && npairs < MaxPairs; ++a) {
            long double lam1 = 0.0L, lam2 = 0.0L;
            if (!CarrierWavelengths(sat(a), lam1, lam2)) continue;
            for (long b = cur; b < end; ++b) {
                if (sat(b) != sat(a)) continue;
                if (!C1(a).IsNull() && !C1(b).IsNull() && !L1(a).IsNull() && !L1(b).IsNull()
                    && !L2(a).IsNull() && !L2(b).IsNull() && !P2(a).IsNull()
                    && !P2(b).IsNull()) {
                    npairs++;
                    const long double dC1 = C1(b).obs - C1(a).obs;
                    const long double dP2 = P2(b).obs - P2(a).obs;
                    const long double dL1 = (L1(b).obs - L1(a).obs) * lam1;
                    const long double dL2 = (L2(b).obs - L2(a).obs) * lam2;
                    if (std::fabs(dL2 - dL1) < MaxL4Change && std::fabs(dP2 - dC1) < MaxP4Change) {
                        sum += (dC1 - dL1) + (dP2 - dL2);
                        count += 2;
                    }
                }
                break;  // the first match only
            }
        }
        if (count > 0) {
            const long double jump = std::round(sum / count / MSm);
            if (std::fabs(jump) > MinStep_ms) {
                nMSJumps++;
                Lcorr(i) = jump * MSm;
            }
        }
        prev = cur;
    }
    if (nMSJumps == 0) return;

    long double MSCorr = 0.0L;
    long r = 0;
    for (long i = 0; i < nepochall && r < nsatall; ++i) {
        MSCorr += Lcorr(i);
        const bool stepHere = std::fabs(Lcorr(i)) > MinStep_ms;
        const long end = std::min(r + static_cast<long>(nsat(i)), nsatall);
        for (; r < end; ++r) {
            long double lam1 = 0.0L, lam2 = 0.0L;
            if (!CarrierWavelengths(sat(r), lam1, lam2)) continue;
            // GLONASS records at the step's own epoch stay as read.
            if (IsGLONASS(sat(r)) && stepHere) continue;
            if (!L1(r).IsNull()) L1(r) += MSCorr / lam1;
            if (!L2(r).IsNull()) L2(r) += MSCorr / lam2;
        }
    }
}

void RINEXData::CorrMSJumpsSF(long& nMSJumps)
{
    nMSJumps = 0;
    if (nepochall < 2 || nsatall < 1) return;
    if (!(Has(rhead.iC1, C1, nsatall) && Has(rhead.iL1, L1, nsatall))) return;
    const bool hasL2 = Has(rhead.iL2, L2, nsatall);

    long double MSCorr = 0.0L;  // accumulated step applied to the epochs walked, m
    long prev = 0;
    for (long i = 1; i < nepochall; ++i) {
        const long cur = std::min(prev + static_cast<long>(nsat(i - 1)), nsatall);
        const long end = std::min(cur + static_cast<long>(nsat(i)), nsatall);
        long double xslip = 0.0L;
        int votes = 0, npairs = 0;
        for (long a = prev; a < cur && npairs < MaxPairs; ++a) {
            long double lam1 = 0.0L, lam2 = 0.0L;
            if (!CarrierWavelengths(sat(a), lam1, lam2)) continue;
            for (long b = cur; b < end; ++b) {
                if (sat(b) != sat(a)) continue;
                if (!C1(a).IsNull() && !C1(b).IsNull() && !L1(a).IsNull() && !L1(b).IsNull()) {
                    npairs++;
                    const long double dC = C1(b).obs - C1(a).obs;
                    const long double dL1 = (L1(b).obs - L1(a).obs) * lam1;
                    // Epoch i - 1 already carries MSCorr; what is left is
                    // the step of this epoch alone, so that a step back is
                    // seen as well as a step forward.
                    const long double x = (dC - dL1 - MSCorr) / MSm;
                    const long double rx = std::round(x);
                    if (std::fabs(x) > MinVote_ms && std::fabs(x - rx) < VoteTolerance_ms) {
                        xslip = rx;
                        votes++;
                    }
                }
                break;
            }
        }
        if (votes > 1) {
            nMSJumps++;
            MSCorr += xslip * MSm;
        }
        if (std::fabs(MSCorr) > MinCorrection) {
            for (long r = cur; r < end; ++r) {
                long double lam1 = 0.0L, lam2 = 0.0L;
                if (!CarrierWavelengths(sat(r), lam1, lam2)) continue;
                if (!L1(r).IsNull()) L1(r) += MSCorr / lam1;
                if (hasL2 && !L2(r).IsNull()) L2(r) += MSCorr / lam2;
            }
        }
        prev = cur;
    }
}

void RINEXData::Corr4ClockError()
{
    const long double interval = rhead.interval;
    // Without a sampling interval there is no grid to move the epochs to.
    if (!(interval > 0.0L)) return;
    const bool c1 = Has(rhead.iC1, C1, nsatall), p1 = Has(rhead.iP1, P1, nsatall);
    const bool p2 = Has(rhead.iP2, P2, nsatall), c5 = Has(rhead.iC5, C5, nsatall);
    long r = 0;
    for (long i = 0; i < nepochall; ++i) {
        const long double sec = epoch(i).GetSecond();
        const long double nominal = std::round(sec / interval) * interval;
        const long double clkerror = nominal - sec;  // s
        const long double dc = clkerror * SpeedOfLight;
        epoch(i) += clkerror;
        const long end = std::min(r + static_cast<long>(nsat(i)), nsatall);
        for (; r < end; ++r) {
            if (c1 && !C1(r).IsNull()) C1(r) += dc;
            if (p1 && !P1(r).IsNull()) P1(r) += dc;
            if (p2 && !P2(r).IsNull()) P2(r) += dc;
            if (c5 && !C5(r).IsNull()) C5(r) += dc;
        }
    }
}

void RINEXData::CorrRNX_Leap0Red()
{
    if (nepochall < 2) return;
    matrix<bool> drop(nepochall, 1, false);
    long ndrop = 0;
    long keep = 0;  // the epoch that a run of equal epochs folds into
    for (long i = 1; i < nepochall; ++i) {
        if (epoch(i) == epoch(i - 1)) {
            drop(i) = true;
            ndrop++;
            nsat(keep) = static_cast<short>(nsat(keep) + nsat(i));
        } else {
            keep = i;
        }
    }
    if (ndrop == 0) return;

    const long n = nepochall - ndrop;
    matrix<mjd> e(n, 1);
    matrix<char> f(n, 1);
    matrix<short> ns(n, 1);
    matrix<long double> tc;
    if (IfTimeCorr) tc.Resize(n, 1);
    const bool marks = IsEpochOKG.Length() == nepochall && IsEpochOKR.Length() == nepochall;
    matrix<short> okg, okr;
    if (marks) {
        okg.Resize(n, 1);
        okr.Resize(n, 1);
    }
    long k = 0;
    for (long i = 0; i < nepochall; ++i) {
        if (drop(i)) continue;
        e(k) = epoch(i);
        f(k) = flag(i);
        ns(k) = nsat(i);
        if (IfTimeCorr) tc(k) = TCorr(i);
        if (marks) {
            okg(k) = IsEpochOKG(i);
            okr(k) = IsEpochOKR(i);
        }
        k++;
    }
    epoch = e;
    flag = f;
    nsat = ns;
    if (IfTimeCorr) TCorr = tc;
    if (marks) {
        IsEpochOKG = okg;
        IsEpochOKR = okr;
    }
    nepochall = n;
    iend = std::max(0L, iend - ndrop);
}

void RINEXData::SetLC_PC1()
{
    if (!(Has(rhead.iC1, C1, nsatall) && Has(rhead.iP1, P1, nsatall))) return;
    rhead.iPC1 = true;
    PC1.Resize(nsatall, 1, gnssobs());
    FormRecords(PC1, sat, C1, P1, nsatall, AnyRecord,
                [](short, const gnssobs& c1, const gnssobs& p1) { return p1 - c1; });
}

// The first-frequency code-phase pair exists for every system with an L1
// carrier: GPS and Galileo share it, GLONASS has its channel's.
static gnssobs CodePhaseL1(short s, const gnssobs& c1, const gnssobs& l1, bool graphic)
{
    if (s > 299 || !GLC::LoadSystem(s)) return gnssobs();
    return Value(graphic ? GNSS_CLI(c1.obs, l1.obs) : GNSS_CL1(c1.obs, l1.obs));
}

void RINEXData::SetLC_CLI()
{
    if (!(Has(rhead.iC1, C1, nsatall) && Has(rhead.iL1, L1, nsatall))) return;
    rhead.iCLI = true;
    CLI.Resize(nsatall, 1, gnssobs());
    FormRecords(CLI, sat, C1, L1, nsatall, AnyRecord,
                [](short s, const gnssobs& c1, const gnssobs& l1) {
                    return CodePhaseL1(s, c1, l1, true);
                });
}

void RINEXData::SetLC_CL1()
{
    if (!(Has(rhead.iC1, C1, nsatall) && Has(rhead.iL1, L1, nsatall))) return;
    rhead.iCL1 = true;
    CL1.Resize(nsatall, 1, gnssobs());
    FormRecords(CL1, sat, C1, L1, nsatall, AnyRecord,
                [](short s, const gnssobs& c1, const gnssobs& l1) {
                    return CodePhaseL1(s, c1, l1, false);
                });
}

// Ionosphere-free code: the GPS factors for GPS, the fixed GLONASS factors
// (the channel ratio is 9/7 for all channels) for GLONASS.
static gnssobs IonoFreeCode(short s, const gnssobs& a, const gnssobs& b)
{
    return GpsGlonass(
        s, a, b, [](const gnssobs& x, const gnssobs& y) { return GNSS_P3(x, y); },
        [](short, const gnssobs& x, const gnssobs& y) { return Value(GNSS_P3R(x.obs, y.obs)); });
}

static gnssobs GalileoIonoFreeCode(short s, const gnssobs& a, const gnssobs& b)
{
    return GalileoValue(s, a, b, [](const gnssobs& x, const gnssobs& y) { return GNSS_P3(x, y); });
}

void RINEXData::SetLC_PP3()
{
    bool first = false;
    if (Has(rhead.iP1, P1, nsatall) && Has(rhead.iP2, P2, nsatall)) {
        rhead.iPP3 = first = true;
        PP3.Resize(nsatall, 1, gnssobs());
        FormRecords(PP3, sat, P1, P2, nsatall, AnyRecord, IonoFreeCode);
    }
    if (Has(rhead.iP1, P1, nsatall) && Has(rhead.iC7, C7, nsatall)) {
        rhead.iPP3 = true;
        if (!first) PP3.Resize(nsatall, 1, gnssobs());
        FormRecords(PP3, sat, P1, C7, nsatall, IsGalileo, GalileoIonoFreeCode);
    }
}

void RINEXData::SetLC_PC3()
{
    bool first = false;
    if (Has(rhead.iC1, C1, nsatall) && Has(rhead.iP2, P2, nsatall)) {
        rhead.iPC3 = first = true;
        PC3.Resize(nsatall, 1, gnssobs());
        FormRecords(PC3, sat, C1, P2, nsatall, AnyRecord, IonoFreeCode);
    }
    if (Has(rhead.iC1, C1, nsatall) && Has(rhead.iC7, C7, nsatall)) {
        rhead.iPC3 = true;
        if (!first) PC3.Resize(nsatall, 1, gnssobs());
        FormRecords(PC3, sat, C1, C7, nsatall, IsGalileo, GalileoIonoFreeCode);
    }
}

// Phase combinations need the satellite's wavelengths: a GLONASS satellite
// without a channel gets 0.
static gnssobs IonoFreePhase(short s, const gnssobs& a, const gnssobs& b)
{
    return GpsGlonass(
        s, a, b, [](const gnssobs& x, const gnssobs& y) { return GNSS_L3(x, y); },
        [](short g, const gnssobs& x, const gnssobs& y) {
            return GLC::LoadSystem(g) ? GNSS_L3(x, y) : gnssobs();
        });
}

static gnssobs GeometryFreePhase(short s, const gnssobs& a, const gnssobs& b)
{
    return GpsGlonass(
        s, a, b, [](const gnssobs& x, const gnssobs& y) { return GNSS_L4(x, y); },
        [](short g, const gnssobs& x, const gnssobs& y) {
            return GLC::LoadSystem(g) ? GNSS_L4(x, y) : gnssobs();
        });
}

// The geometry-free code needs no coefficients, but the second column
// holds a second-frequency code for GPS and GLONASS only.
static gnssobs GeometryFreeCode(short s, const gnssobs& a, const gnssobs& b)
{
    if (IsGPS(s) || IsGLONASS(s)) return GNSS_P4(a, b);
    return gnssobs();
}

void RINEXData::SetLC_L3()
{
    bool first = false;
    if (Has(rhead.iL1, L1, nsatall) && Has(rhead.iL2, L2, nsatall)) {
        rhead.iL3 = first = true;
        L3.Resize(nsatall, 1, gnssobs());
        FormRecords(L3, sat, L1, L2, nsatall, AnyRecord, IonoFreePhase);
    }
    if (Has(rhead.iL1, L1, nsatall) && Has(rhead.iL7, L7, nsatall)) {
        rhead.iL3 = true;
        if (!first) L3.Resize(nsatall, 1, gnssobs());
        FormRecords(L3, sat, L1, L7, nsatall, IsGalileo,
                    [](short s, const gnssobs& a, const gnssobs& b) {
                        return GalileoValue(s, a, b, [](const gnssobs& x, const gnssobs& y) {
                            return GNSS_L3(x, y);
                        });
                    });
    }
}

void RINEXData::SetLC_PC4()
{
    bool first = false;
    if (Has(rhead.iC1, C1, nsatall) && Has(rhead.iP2, P2, nsatall)) {
        rhead.iPC4 = first = true;
        PC4.Resize(nsatall, 1, gnssobs());
        FormRecords(PC4, sat, C1, P2, nsatall, AnyRecord, GeometryFreeCode);
    }
    if (Has(rhead.iC1, C1, nsatall) && Has(rhead.iC7, C7, nsatall)) {
        rhead.iPC4 = true;
        if (!first) PC4.Resize(nsatall, 1, gnssobs());
        FormRecords(PC4, sat, C1, C7, nsatall, IsGalileo,
                    [](short, const gnssobs& a, const gnssobs& b) { return GNSS_P4(a, b); });
    }
}

void RINEXData::SetLC_PP4()
{
    if (!(Has(rhead.iP1, P1, nsatall) && Has(rhead.iP2, P2, nsatall))) return;
    rhead.iPP4 = true;
    PP4.Resize(nsatall, 1, gnssobs());
    FormRecords(PP4, sat, P1, P2, nsatall, AnyRecord, GeometryFreeCode);
}

void RINEXData::SetLC_L4()
{
    bool first = false;
    if (Has(rhead.iL1, L1, nsatall) && Has(rhead.iL2, L2, nsatall)) {
        rhead.iL4 = first = true;
        L4.Resize(nsatall, 1, gnssobs());
        FormRecords(L4, sat, L1, L2, nsatall, AnyRecord, GeometryFreePhase);
    }
    if (Has(rhead.iL1, L1, nsatall) && Has(rhead.iL7, L7, nsatall)) {
        rhead.iL4 = true;
        if (!first) L4.Resize(nsatall, 1, gnssobs());
        FormRecords(L4, sat, L1, L7, nsatall, IsGalileo,
                    [](short s, const gnssobs& a, const gnssobs& b) {
                        return GalileoValue(s, a, b, [](const gnssobs& x, const gnssobs& y) {
                            return GNSS_L4(x, y);
                        });
                    });
    }
}

void RINEXData::SetLC_MW(bool UseC1)
{
    const bool hasX = UseC1 ? Has(rhead.iC1, C1, nsatall) : Has(rhead.iP1, P1, nsatall);
    const matrix<gnssobs>& X = UseC1 ? C1 : P1;
    const bool l2 = Has(rhead.iL2, L2, nsatall), l7 = Has(rhead.iL7, L7, nsatall);
    const bool p2 = Has(rhead.iP2, P2, nsatall), c7 = Has(rhead.iC7, C7, nsatall);
    if (!(Has(rhead.iL1, L1, nsatall) && (l2 || l7) && hasX && (p2 || c7))) {
        rhead.iMW = false;
        return;
    }
    rhead.iMW = true;
    MW.Resize(nsatall, 1, gnssobs());
    for (long r = 0; r < nsatall; ++r) {
        const short s = sat(r);
        if (s <= 199) {
            if (l2 && p2 && !L1(r).IsNull() && !L2(r).IsNull() && !X(r).IsNull()
                && !P2(r).IsNull() && GLC::LoadSystem(s))
                MW(r) = GNSS_MW(L1(r), L2(r), X(r), P2(r));
        } else if (s <= 299) {
            if (l7 && c7 && !L1(r).IsNull() && !L7(r).IsNull() && !X(r).IsNull()
                && !C7(r).IsNull() && GLC::LoadSystem(s))
                MW(r) = GNSS_MW(L1(r), L7(r), X(r), C7(r));
        }
    }
}

namespace {

// True when some satellite of the list lies in [lo, hi] and its records make
// more than MinSystemShare of all records.
bool SystemShare(const matrix<short>& satList, const matrix<short>& sat, long nsatall,
                 short lo, short hi)
{
    long nlist = 0;
    for (long i = 0; i < satList.Length(); ++i)
        if (satList(i) >= lo && satList(i) <= hi) nlist++;
    if (nlist == 0 || nsatall < 1) return false;
    long nrec = 0;
    const long n = std::min(nsatall, sat.Length());
    for (long r = 0; r < n; ++r)
        if (sat(r) >= lo && sat(r) <= hi) nrec++;
    return static_cast<double>(nrec) / static_cast<double>(nsatall) > MinSystemShare;
}

}  // namespace

bool RINEXData::HasGPSObs() const { return SystemShare(satList, sat, nsatall, 0, 99); }
bool RINEXData::HasGLONASSObs() const { return SystemShare(satList, sat, nsatall, 101, 199); }
bool RINEXData::HasGALILEOObs() const { return SystemShare(satList, sat, nsatall, 201, 299); }
