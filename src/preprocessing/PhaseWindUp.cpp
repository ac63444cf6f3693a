#include "preprocessing/PhaseWindUp.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iostream>

#include "driver/Console.h"
#include "geodesy/CoordinateTransforms.h"
#include "numerics/MathConstants.h"
#include "observations/GLC.h"
#include "observations/LinearCombinations.h"
#include "observations/SatelliteSystem.h"
#include "preprocessing/AmbiguityTable.h"

namespace {

// One stretch of a satellite's records without a restart.
struct Stretch {
    long first = 0, last = 0;
    long double min = 0.0L, max = 0.0L;
};

void PrintStretch(long id, short sat, const Stretch& s)
{
    PrintArcColumns(id, sat, s.first, s.last);
    std::cout << std::setw(12) << s.min << std::setw(10) << s.max << "\n";
}

}  // namespace

long double sign(long double x)
{
    if (x > 0.0L) return 1.0L;
    if (x < 0.0L) return -1.0L;
    return 0.0L;
}

long double WindUp(const xyz& satPos, const xyz& recPos, const xyz& recX, const xyz& recY,
                   const xyz& sunPos, bool blockIIR)
{
    const xyz k = (recPos - satPos).GetUnitVector(1.0L);
    xyz satX, satY, satZ;
    GNSSSatBasis(satX, satY, satZ, xyzt(satPos, 0.0L), sunPos);
    if (blockIIR) {
        satX = -satX;
        satY = -satY;
    }
    const xyz dSat = (satX - k * (k * satX) - CrossP(k, satY)).GetUnitVector(1.0L);
    const xyz dRec = (recX - k * (k * recX) + CrossP(k, recY)).GetUnitVector(1.0L);
    const long double ksi = k * CrossP(dSat, dRec);
    const long double c = std::max(-1.0L, std::min(1.0L, dSat * dRec));
    return sign(ksi) * std::acos(c) / (2.0L * Pi);
}

void PhaseWindUp(gCPosC& gc)
{
    if (!gc.ifL3) return;
    ProgramSubSubTitle("APPLYING PHASE WIND-UP BIAS:", 0);
    RINEXData& d = gc.rnxd;
    const long nObs = d.GetNObs();
    const bool haveL3 = gc.rnxh.HasL3() && d.L3.NRow() >= nObs;
    const std::ios::fmtflags flags = std::cout.flags();
    const std::streamsize prec = std::cout.precision();
    std::cout << std::fixed << std::setprecision(4)
              << "      ID   PRN       START EPOCH         END EPOCH     MIN[cy]   MAX[cy]\n";

    const xyz recX = lg2g(neu(1.0L, 0.0L, 0.0L), gc.RecPosFCG);
    const xyz recY = lg2g(neu(0.0L, -1.0L, 0.0L), gc.RecPosFCG);
    long id = 0;
    for (const auto& [sat, records] : RecordsBySatellite(d)) {
        if (!gc.UsesSystem(sat) || !GLC::LoadSystem(sat)) continue;
        bool blockIIR = false;
        if (gc.isAtx && d.GetNEpoch() > 0) {
            gc.atx.SetSatellite(sat, d.epoch(0));
            blockIIR = gc.atx.IsBlockIIR();
        }
        long double wUpOld = 0.0L;
        bool first = true;
        Stretch s;
        for (const SatRecord& r : records) {
            const long k = r.k;
            if (!gc.OKSAT(k)) continue;
            const xyz sun = gc.posSunUnit(r.epoch) * gc.SunMag(r.epoch);
            long double wUp = WindUp(gc.SatelliteXYZ(k), gc.RecPosFC, recX, recY, sun, blockIIR);
            if (first) {
                first = false;
                s = {r.epoch, r.epoch, wUp, wUp};
            } else if (d.epoch(r.epoch) - d.epoch(s.last) > PhaseWindUpns::RestartGap_s) {
                PrintStretch(++id, sat, s);
                s = {r.epoch, r.epoch, wUp, wUp};
            } else {
                // Tracked beyond one turn: the whole number of cycles
                // nearest to the change is taken off.
                const long double dwUp = wUp - wUpOld;
                wUp -= std::trunc(dwUp >= 0.0L ? dwUp + 0.5L : dwUp - 0.5L);
                s.last = r.epoch;
                s.min = std::min(s.min, wUp);
                s.max = std::max(s.max, wUp);
            }
            if (haveL3 && !d.L3(k).IsNull()) d.L3(k) += -GNSS_L3(wUp, wUp);
            wUpOld = wUp;
        }
        if (!first) PrintStretch(++id, sat, s);
    }
    std::cout << "\n";
    std::cout.flags(flags);
    std::cout.precision(prec);
}
