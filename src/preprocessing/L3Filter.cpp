#include "preprocessing/L3Filter.h"

#include <cmath>
#include <iomanip>
#include <iostream>
#include <vector>

#include "driver/Console.h"
#include "numerics/MathConstants.h"
#include "numerics/ProgramError.h"
#include "preprocessing/AmbiguityTable.h"
#include "preprocessing/ScreenArcMean.h"

void L3Filter(gCPosC& gc)
{
    if (!gc.ifL3 || !(gc.ifPc3 || gc.ifPp3)) return;
    RINEXData& d = gc.rnxd;
    CheckArcTable(gc, "L3 FILTER");
    const long nObs = d.GetNObs();
    if (gc.ELV.NRow() < nObs || gc.OKSAT.NRow() < nObs)
        ProgramError("Orvo", "L3 FILTER: OBSERVATION CORRECTIONS NOT SET FOR ALL OBSERVATIONS!");
    const matrix<gnssobs>& code = gc.ifPc3 ? d.PC3 : d.PP3;
    const bool have = d.L3.NRow() >= nObs && code.NRow() >= nObs;

    ProgramSubSubTitle("FILTERING L3 OBSERVATIONS - CODE BASED OUTLIERS DETECTION:", 0);
    const std::ios::fmtflags flags = std::cout.flags();
    const std::streamsize prec = std::cout.precision();
    std::cout << std::fixed << std::setprecision(2)
              << "  Outlier detection threshold         : " << gc.P3OutliersThres << " * STD_V\n\n"
              << "      ID   PRN       START EPOCH         END EPOCH  #OBS/AMB        L3 AMBIGUITY"
                 "       STD   REF STD     OUTLIERS-STATS\n";

    const long double minElevation = static_cast<long double>(gc.MinElevation) * Deg2Rad;
    ArcTotals tot;
    std::vector<ArcObs> obs;
    for (long a = 0; a < gc.nAmb; ++a) {
        const short sat = gc.AmbSat(a);
        obs.clear();
        for (const SatRecord& r : ArcRecords(gc, a)) {
            const long k = r.k;
            if (!have || !gc.OKSAT(k) || d.L3(k).IsNull() || code(k).IsNull()) continue;
            const long double e = gc.ELV(k);
            if (!(e > minElevation)) continue;
            const long double s = gc.SinElevation(k);
            obs.push_back({k, d.L3(k).obs - code(k).obs, s * s});
        }
        const ArcMean m = ScreenArcMean(obs, gc.P3OutliersThres);
        for (long o : m.outliers) d.L3(o) = gnssobs();
        tot.Add(m);
        // One observation gives a mean but no check of it; the arc's
        // earlier mean over all its observations is the safer start.
        if (m.n > 1) gc.xAmb(a) = m.x;
        gc.AmbIndex(a, 3) = m.n;

        if (a > 0 && sat != gc.AmbSat(a - 1)) std::cout << "\n";
        PrintArcColumns(a + 1, sat, gc.AmbIndex(a, 0), gc.AmbIndex(a, 2));
        PrintArcStats(m.n, m.nOut, true, gc.xAmb(a), true,
                      {std::sqrt(m.v0 * m.qx), std::sqrt(m.v0)});
    }

    std::cout << "\n"
              << "  Number of all L3-P3 observations: " << tot.nall << "\n"
              << "  Number of L3-P3 outliers        : " << tot.nallo;
    PrintPercent(tot.nallo, tot.nall);
    std::cout << "\n  Estimated precision of L3-P3 obs: ";
    PrintPrecision_cm(tot.svvAll, tot.nall - 1, 1.0L);
    std::cout << "\n  Estimated precision of CODE obs : ";
    PrintPrecision_cm(tot.svvAll, tot.nall - 1, L3Filterns::IonoFreeCodeVariance);
    std::cout << "\n\n";
    std::cout.flags(flags);
    std::cout.precision(prec);
}
