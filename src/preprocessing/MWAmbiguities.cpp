#include "preprocessing/MWAmbiguities.h"

#include <cmath>
#include <iomanip>
#include <iostream>
#include <vector>

#include "driver/Console.h"
#include "numerics/MathConstants.h"
#include "numerics/ProgramError.h"
#include "observations/GALILEOc.h"
#include "observations/GLONASSc.h"
#include "observations/GPSc.h"
#include "observations/SatelliteSystem.h"
#include "preprocessing/AmbiguityTable.h"
#include "preprocessing/ScreenArcMean.h"

namespace {

// Wide-lane wavelength (m) of sat; 0 for a GLONASS slot without a channel
// or outside the table, where cycles cannot be given.
long double WideLane(short sat)
{
    switch (SystemOf(sat)) {
    case SysGPS: return GPSc::lamWL;
    case SysGAL: return GALILEOc::lamWL;
    case SysGLN: {
        const long row = SystemPRN(sat) - 1;
        return row < GLONASSc::lambWL.NRow() ? GLONASSc::lambWL(row) : 0.0L;
    }
    default: return 0.0L;
    }
}

void Clear(matrix<gnssobs>& m, bool listed, long k)
{
    if (listed && k < m.NRow()) m(k) = gnssobs();
}

}  // namespace

void MWAmbiguities(gCPosC& gc)
{
    if (!gc.ifL3) return;
    namespace ns = MWAmbiguitiesns;
    RINEXData& d = gc.rnxd;
    const RINEXHeader& h = gc.rnxh;
    CheckArcTable(gc, "MW AMBIGUITIES");
    if (gc.ELV.NRow() < d.GetNObs())
        ProgramError("Orvo", "MW AMBIGUITIES: ELEVATIONS NOT SET FOR ALL OBSERVATIONS!");

    ProgramSubSubTitle("ESTIMATING MELBOURNE-WUEBBENA AMBIGUITIES:", 0);
    const std::ios::fmtflags flags = std::cout.flags();
    const std::streamsize prec = std::cout.precision();
    std::cout << std::fixed << std::setprecision(2)
              << "  Outlier detection threshold         : " << gc.MWOutliersThres << " * STD_V\n"
              << "  Ambiguity units                     :  full cycles\n\n"
              << "      ID   PRN       START EPOCH         END EPOCH  #OBS/AMB        MW AMBIGUITY"
                 "       STD     OUTLIERS-STATS\n";

    const long double minE = ns::FullWeightElev_deg * Deg2Rad;
    const long double minElevation = static_cast<long double>(gc.MinElevation) * Deg2Rad;
    const bool haveMW = d.MW.NRow() >= d.GetNObs();
    ArcTotals tot;
    std::vector<ArcObs> obs;
    for (long a = 0; a < gc.nAmb; ++a) {
        const short sat = gc.AmbSat(a);
        obs.clear();
        for (const SatRecord& r : ArcRecords(gc, a)) {
            const long k = r.k;
            if (!haveMW || d.MW(k).IsNull()) continue;
            const long double e = gc.ELV(k);
            if (!(e > minElevation)) continue;
            obs.push_back({k, d.MW(k).obs, e >= minE ? 1.0L : 2.0L * gc.SinElevation(k)});
        }
        const ArcMean m = ScreenArcMean(obs, gc.MWOutliersThres);
        const bool galileo = SystemOf(sat) == SysGAL;
        for (long o : m.outliers) {
            Clear(d.L1, h.iL1, o);
            if (galileo)
                Clear(d.L7, h.iL7, o);
            else
                Clear(d.L2, h.iL2, o);
            Clear(d.L3, h.iL3, o);
            Clear(d.L4, h.iL4, o);
            Clear(d.PC3, h.iPC3, o);
            Clear(d.PP3, h.iPP3, o);
        }
        tot.Add(m);

        if (a > 0 && sat != gc.AmbSat(a - 1)) std::cout << "\n";
        PrintArcColumns(a + 1, sat, gc.AmbIndex(a, 0), gc.AmbIndex(a, 2));
        const long double lWL = WideLane(sat);
        const bool cycles = lWL > 0.0L;
        PrintArcStats(m.n, m.nOut, cycles, m.x / (cycles ? lWL : 1.0L), cycles,
                      {std::sqrt(m.v0 * m.qx) / (cycles ? lWL : 1.0L)});
    }

    std::cout << "\n"
              << "  Number of all MW observations   : " << tot.nall << "\n"
              << "  Number of MW outliers           : " << tot.nallo;
    PrintPercent(tot.nallo, tot.nall);
    const long dof = tot.nall - tot.nallo - 1;
    std::cout << "\n  Estimated precision of MW obs   : ";
    PrintPrecision_cm(tot.svvAll, dof, 1.0L);
    std::cout << "\n  Estimated precision of CODE obs : ";
    PrintPrecision_cm(tot.svvAll, dof, ns::NarrowLaneCodeVariance);
    std::cout << "\n\n";
    std::cout.flags(flags);
    std::cout.precision(prec);
}
