#include "preprocessing/ConAmbiguities.h"

#include <cmath>
#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

#include "driver/Console.h"
#include "numerics/MathConstants.h"
#include "numerics/ProgramError.h"
#include "numerics/inv.h"
#include "observations/GLC.h"
#include "observations/LinearCombinations.h"
#include "observations/SatelliteSystem.h"
#include "preprocessing/AmbiguityTable.h"

namespace {

namespace ns = ConAmbiguitiesns;

// Low observations carry more multipath and troposphere error: below minE
// their weight falls with the sine of the elevation, and an observation at
// or below the horizon (or without an elevation) gets none.
long double Weight(const gCPosC& gc, long k)
{
    if (k >= gc.ELV.NRow()) return 0.0L;
    if (gc.ELV(k) >= ns::minE * Deg2Rad) return 1.0L;
    const long double p = 2.0L * gc.SinElevation(k);
    return p > 0.0L ? p : 0.0L;
}

// The table is only ever built by the arc stages; one that does not fit the
// store means a broken stage order, said plainly before any index is used.
void CheckTable(const gCPosC& gc)
{
    const RINEXData& d = gc.rnxd;
    bool ok = gc.nAmb >= 0 && gc.AmbIndex.NRow() >= gc.nAmb && gc.AmbIndex.NCol() >= 4
              && gc.AmbSat.NRow() >= gc.nAmb && gc.xAmb.NRow() >= gc.nAmb
              && d.nsat.NRow() >= d.GetNEpoch() && d.epoch.NRow() >= d.GetNEpoch()
              && d.sat.NRow() >= d.GetNObs();
    for (long a = 0; ok && a < gc.nAmb; ++a)
        ok = gc.AmbIndex(a, 0) >= 0 && gc.AmbIndex(a, 0) <= gc.AmbIndex(a, 2)
             && gc.AmbIndex(a, 2) < d.GetNEpoch() && gc.AmbIndex(a, 1) >= 0
             && gc.AmbIndex(a, 1) <= d.GetNObs();
    if (!ok) ProgramError("Orvo", "AMBIGUITY CONNECTION: ARC TABLE DOES NOT FIT THE OBSERVATIONS!");
}


bool Present(const matrix<gnssobs>& m, long k) { return k < m.NRow() && !m(k).IsNull(); }

// Weighted sums of one side of the gap about the common origin x0.
struct Sums {
    long double spll = 0.0L, spl = 0.0L, sp = 0.0L;
    long n = 0;
    void Add(long double l, long double p)
    {
        spll += p * l * l;
        spl += p * l;
        sp += p;
        ++n;
    }
    bool Usable() const { return n >= 2 && sp > 0.0L; }
    long double Mean() const { return spl / sp; }
    // Round-off can take the scatter of equal values a hair below zero.
    long double Var() const
    {
        const long double v = (spll / sp - Mean() * Mean()) / static_cast<long double>(n - 1);
        return v > 0.0L ? v : 0.0L;
    }
};

// Wide-lane, L1 and L2 wavelengths (m) of sat; false for a satellite of no
// system or a GLONASS slot without frequency channel.
bool Wavelengths(short sat, long double& lWL, long double& l1, long double& l2)
{
    switch (SystemOf(sat)) {
    case SysGPS: lWL = GPSc::lamWL; l1 = GPSc::lamb1; l2 = GPSc::lamb2; return true;
    case SysGAL: lWL = GALILEOc::lamWL; l1 = GALILEOc::lamb1; l2 = GALILEOc::lamb2; return true;
    case SysGLN: {
        const long row = SystemPRN(sat) - 1;
        if (row >= GLONASSc::lamb.NRow() || row >= GLONASSc::lambWL.NRow()) return false;
        lWL = GLONASSc::lambWL(row);
        l1 = GLONASSc::lamb(row, 0);
        l2 = GLONASSc::lamb(row, 1);
        return l1 > 0.0L && l2 > l1;
    }
    default: return false;
    }
}

void PrintValue(long double v, int width, bool defined)
{
    if (defined)
        std::cout << std::setw(width) << std::setprecision(2) << v;
    else
        std::cout << std::setw(width) << "-.--";
}

void PrintArc(const gCPosC& gc, long a)
{
    const short sat = gc.AmbSat(a);
    std::cout << std::setw(8) << a + 1 << "   " << SystemLetter(sat) << std::setw(2)
              << std::setfill('0') << SystemPRN(sat) << std::setfill(' ') << std::setw(18)
              << gc.AmbIndex(a, 0) << std::setw(18) << gc.AmbIndex(a, 2) << std::setw(10)
              << gc.AmbIndex(a, 3);
}

// The decision on one pair of arcs, in cycles.
struct CycleSlipFix {
    long double dMWF, dL2, sdL2, dL2F, dL1F;
    bool connect;
};

// Equal wavelengths or a non-finite input never connect.
CycleSlipFix WholeCycleSlip(long double dMW, long double sdMW, long double dL4, long double sdL4,
                            long double lamb1, long double lamb2)
{
    CycleSlipFix f{};
    const long double dl = lamb2 - lamb1;
    if (!std::isfinite(dMW) || !std::isfinite(sdMW) || !std::isfinite(dL4)
        || !std::isfinite(sdL4) || !(std::fabs(dl) > 0.0L))
        return f;
    f.dMWF = std::round(dMW);
    const bool isMWFixed = std::fabs(f.dMWF - dMW) < ns::MWth && sdMW < ns::sMWth;
    f.dL2 = (lamb1 * f.dMWF - dL4) / dl;
    f.dL2F = std::round(f.dL2);
    f.sdL2 = sdL4 / dl;
    const bool isL2Fixed = std::fabs(f.dL2F - f.dL2) < ns::L2th && f.sdL2 < ns::sL2th;
    f.dL1F = f.dMWF + f.dL2F;
    f.connect = isMWFixed && isL2Fixed;
    return f;
}

}  // namespace

bool GetMWCSlip(gCPosC& gc, long iamb, long double lWL, long double& dMW, long double& sdMW)
{
    dMW = sdMW = 0.0L;
    if (iamb < 1 || iamb >= gc.nAmb || !(lWL > 0.0L)) return false;
    const matrix<gnssobs>& MW = gc.rnxd.MW;
    const std::size_t maxObs = ns::MaxCSObs;
    std::vector<long> before, after;
    const std::vector<SatRecord> r1 = ArcRecords(gc, iamb - 1), r2 = ArcRecords(gc, iamb);
    for (auto it = r1.rbegin(); it != r1.rend() && before.size() < maxObs; ++it)
        if (Present(MW, it->k)) before.insert(before.begin(), it->k);
    for (auto it = r2.begin(); it != r2.end() && after.size() < maxObs; ++it)
        if (Present(MW, it->k)) after.push_back(it->k);
    if (before.empty()) return false;
    // Sums about the first value: MW itself is metres of ambiguity, its
    // scatter centimetres.
    const long double x0 = MW(before.front()).obs;
    Sums s1, s2;
    for (long k : before) s1.Add(MW(k).obs - x0, Weight(gc, k));
    for (long k : after) s2.Add(MW(k).obs - x0, Weight(gc, k));
    if (!s1.Usable() || !s2.Usable()) return false;
    dMW = (s2.Mean() - s1.Mean()) / lWL;
    sdMW = std::sqrt(s1.Var() + s2.Var()) / lWL;
    return true;
}

bool GetL4CSlip(gCPosC& gc, long iamb, long double& dL4, long double& sdL4)
{
    dL4 = sdL4 = 0.0L;
    if (iamb < 1 || iamb >= gc.nAmb) return false;
    const RINEXData& d = gc.rnxd;
    const matrix<gnssobs>& L4 = d.L4;
    // The earlier window is the arc's last epochs whether or not the
    // satellite was seen, so that t stays small on both sides of the gap.
    const long end1 = gc.AmbIndex(iamb - 1, 2);
    long first = end1 - (ns::MaxCSObs - 1);
    if (first < gc.AmbIndex(iamb - 1, 0)) first = gc.AmbIndex(iamb - 1, 0);
    std::vector<SatRecord> before, after;
    for (const SatRecord& s : ArcRecords(gc, iamb - 1))
        if (s.epoch >= first && Present(L4, s.k)) before.push_back(s);
    for (const SatRecord& s : ArcRecords(gc, iamb))
        if (after.size() < static_cast<std::size_t>(ns::MaxCSObs) && Present(L4, s.k))
            after.push_back(s);
    const long n = static_cast<long>(before.size() + after.size());
    // Four unknowns: with no more observations s0 has no degree of freedom.
    if (n <= 4) return false;

    const mjd& t0 = d.epoch(first);
    const long double x0 = L4(before.empty() ? after.front().k : before.front().k).obs;
    matrix<long double> N(4, 4, 0.0L), t(4, 1, 0.0L);
    long double ff = 0.0L;
    auto add = [&](const SatRecord& s, bool step) {
        const long double dt = (d.epoch(s.epoch) - t0) / 60.0L;  // minutes
        const long double l = L4(s.k).obs - x0, p = Weight(gc, s.k);
        const long double a[4] = {dt * dt, dt, 1.0L, step ? 1.0L : 0.0L};
        for (int i = 0; i < 4; ++i) {
            for (int j = i; j < 4; ++j) N(i, j) += a[i] * a[j] * p;
            t(i) += a[i] * l * p;
        }
        ff += l * l * p;
    };
    for (const SatRecord& s : before) add(s, false);
    for (const SatRecord& s : after) add(s, true);
    for (int i = 1; i < 4; ++i)
        for (int j = 0; j < i; ++j) N(i, j) = N(j, i);

    const matrix<long double> Qdd = inv(N);
    if (invns::IsSingular) {
        ProgramWarning("Orvo", "PROBLEMS INVERTING MATRIX N - SINGULARITY POSSIBILITY!!!");
        return false;
    }
    long double tx = 0.0L, X3 = 0.0L;
    for (int i = 0; i < 4; ++i) {
        long double x = 0.0L;
        for (int j = 0; j < 4; ++j) x += Qdd(i, j) * t(j);
        tx += t(i) * x;
        if (i == 3) X3 = x;
    }
    // A noise-free fit leaves round-off of either sign in place of zero.
    long double s0 = (ff - tx) / static_cast<long double>(n - 4);
    if (s0 < 0.0L) s0 = 0.0L;
    const long double q = Qdd(3, 3) * s0;
    dL4 = X3;
    sdL4 = std::sqrt(q > 0.0L ? q : 0.0L);
    return true;
}

void RepairAmb(gCPosC& gc, long iamb, long double dL1, long double dL2)
{
    if (iamb < 1 || iamb >= gc.nAmb) return;
    const short sat = gc.AmbSat(iamb);
    if (!GLC::LoadSystem(sat)) return;
    gc.xAmb(iamb) = gc.xAmb(iamb - 1);
    const long double dObsL3 = GNSS_L3(dL1, dL2), dObsL4 = GNSS_L4(dL1, dL2),
                      dObsMW = GNSS_MW(dL1, dL2, 0.0L, 0.0L);
    RINEXData& d = gc.rnxd;
    matrix<gnssobs>& second = SystemOf(sat) == SysGAL ? d.L7 : d.L2;
    const bool haveSecond = SystemOf(sat) == SysGAL ? gc.rnxh.iL7 : gc.rnxh.iL2;
    auto take = [](matrix<gnssobs>& m, long k, long double v) {
        if (k < m.NRow() && !m(k).IsNull()) m(k) += -v;
    };
    for (const SatRecord& s : ArcRecords(gc, iamb)) {
        take(d.L1, s.k, dL1);
        if (haveSecond) take(second, s.k, dL2);
        take(d.L3, s.k, dObsL3);
        take(d.L4, s.k, dObsL4);
        take(d.MW, s.k, dObsMW);
    }
}

void ConAmbIntervals(gCPosC& gc, matrix<bool>& isFixAmb)
{
    auto joined = [&](long i) { return i > 0 && i < isFixAmb.NRow() && isFixAmb(i); };
    long nNew = gc.nAmb;
    for (long i = 1; i < gc.nAmb; ++i)
        if (joined(i)) --nNew;
    matrix<long> AI(nNew, 4, 0L);
    matrix<long double> x(nNew, 1, 0.0L);
    matrix<short> AS(nNew, 1, static_cast<short>(0));
    long j = -1;
    for (long i = 0; i < gc.nAmb; ++i) {
        if (!joined(i)) {
            ++j;
            for (int c = 0; c < 4; ++c) AI(j, c) = gc.AmbIndex(i, c);
            x(j) = gc.xAmb(i);
            AS(j) = gc.AmbSat(i);
        } else {
            AI(j, 2) = gc.AmbIndex(i, 2);
            AI(j, 3) += gc.AmbIndex(i, 3);
        }
    }
    gc.nAmb = nNew;
    gc.AmbIndex = AI;
    gc.xAmb = x;
    gc.AmbSat = AS;
}

void ConAmbiguities(gCPosC& gc)
{
    if (!gc.ifL3 || !gc.CorrAmbig) return;
    CheckTable(gc);
    const RINEXData& d = gc.rnxd;

    ProgramSubSubTitle("CONNECTING CONSECUTIVE AMBIGUITIES:", 0);
    const std::ios::fmtflags flags = std::cout.flags();
    const std::streamsize prec = std::cout.precision();
    std::cout << std::fixed << std::setprecision(2)
              << "  Maximum time gap between cons. amb  : " << std::setprecision(1) << ns::dtmax
              << " s\n" << std::setprecision(2)
              << "  Melbourne-Wuebbena linear comb.     :\n"
              << "   Max float-fixed difference         : " << ns::MWth << " cy\n"
              << "   Max float value precision          : " << ns::sMWth << " cy\n"
              << "  L4 and MW based L2 ambiguity        :\n"
              << "   Max float-fixed difference         : " << ns::L2th << " cy\n"
              << "   Max float value precision          : " << ns::sL2th << " cy\n\n"
              << "      ID   PRN       START EPOCH         END EPOCH  #OBS/AMB    MW AMB    "
                 "      MW AMB[cy]    L2 AMB          L2 AMB[cy]  L1 AMB[cy]  STATUS\n"
              << "                                                                 FIXED    "
                 "   VALUE  STDDEV     FIXED       VALUE  STDDEV       VALUE\n";

    matrix<bool> isAmbFix(gc.nAmb > 0 ? gc.nAmb : 1, 1, false);
    long nPossible = 0, nFixed = 0;
    for (long i = 1; i < gc.nAmb; ++i) {
        const short sat = gc.AmbSat(i);
        if (sat != gc.AmbSat(i - 1)) continue;
        if (!(d.epoch(gc.AmbIndex(i, 0)) - d.epoch(gc.AmbIndex(i - 1, 2)) < ns::dtmax)) continue;
        long double lWL = 0.0L, lamb1 = 0.0L, lamb2 = 0.0L;
        if (!Wavelengths(sat, lWL, lamb1, lamb2)) continue;
        ++nPossible;

        long double dMW = 0.0L, sdMW = 0.0L, dL4 = 0.0L, sdL4 = 0.0L;
        const bool haveMW = GetMWCSlip(gc, i, lWL, dMW, sdMW);
        const bool haveL4 = GetL4CSlip(gc, i, dL4, sdL4);
        CycleSlipFix f = WholeCycleSlip(dMW, sdMW, dL4, sdL4, lamb1, lamb2);
        f.connect = f.connect && haveMW && haveL4;
        // Jumps below a cycle are zero after rounding: joined, nothing to take out.
        if (f.connect && (std::fabs(f.dL1F) > 0.5L || std::fabs(f.dL2F) > 0.5L))
            RepairAmb(gc, i, f.dL1F, f.dL2F);
        isAmbFix(i) = f.connect;
        if (f.connect) ++nFixed;

        PrintArc(gc, i - 1);
        std::cout << std::setw(10) << "";
        PrintValue(dMW, 12, haveMW);
        PrintValue(sdMW, 8, haveMW);
        std::cout << std::setw(10) << "";
        PrintValue(f.dL2, 12, haveMW && haveL4);
        PrintValue(f.sdL2, 8, haveMW && haveL4);
        std::cout << "\n";
        PrintArc(gc, i);
        PrintValue(f.dMWF, 10, f.connect);
        std::cout << std::setw(20) << "";
        PrintValue(f.dL2F, 10, f.connect);
        std::cout << std::setw(20) << "";
        PrintValue(f.dL1F, 12, f.connect);
        std::cout << (f.connect ? "     YES   FIXED" : "      NO") << "\n";
    }
    std::cout << "\n  # of possible ambiguities to fix    : " << nPossible
              << "\n  # of fixed/connected ambiguities    : " << nFixed << "\n\n";

    if (nPossible > 0) ConAmbIntervals(gc, isAmbFix);
    RecomputeArcMeans(gc);
    ProgramSubSubSubTitle("CONNECTED AMBIGUITIES", 2);
    PrintAmbiguityTable(gc);
    std::cout.flags(flags);
    std::cout.precision(prec);
}
