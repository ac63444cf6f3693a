#include "preprocessing/GetEclipsing.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iostream>

#include "driver/Console.h"
#include "numerics/MathConstants.h"
#include "observations/SatelliteSystem.h"
#include "preprocessing/AmbiguityTable.h"

namespace {

void Clear(matrix<gnssobs>& m, bool inHeader, long k)
{
    if (inHeader && k < m.NRow()) m(k) = gnssobs();
}

// One period of eclipsing records of a satellite.
struct Period {
    long first = 0, last = 0, n = 0;
};

void PrintPeriod(long id, short sat, const Period& p)
{
    PrintArcColumns(id, sat, p.first, p.last);
    std::cout << std::setw(16) << p.n << "\n";
}

// |cos| of the Sun-Earth angle at the satellite.
long double SunEarthCosine(const xyz& satPos, const xyz& sunPos)
{
    const xyz toSun = (sunPos - satPos).GetUnitVector(1.0L);
    const xyz toEarth = satPos.GetUnitVector(-1.0L);
    return std::min(1.0L, std::fabs(toSun * toEarth));
}

}  // namespace

long double SunEarthAngle(const xyz& satPos, const xyz& sunPos)
{
    return std::acos(SunEarthCosine(satPos, sunPos));
}

void GetEclipsing(gCPosC& gc)
{
    if (!gc.ifL3) return;
    ProgramSubSubTitle("SETTING ECLIPSING SEASONS FOR SATELLITES:", 0);
    const std::ios::fmtflags flags = std::cout.flags();
    const std::streamsize prec = std::cout.precision();
    std::cout << std::fixed << std::setprecision(2)
              << "  Minimum Sun-Earth angle at satellite: " << gc.satEclipsThres * Rad2Deg << "\n\n";
    ProgramSubSubTitle("ECLIPSING SATELLITE AND ECLIPSING SEASONS:", 0);
    std::cout << "      ID   PRN       START EPOCH         END EPOCH  #ECLIPSING OBS\n";

    RINEXData& d = gc.rnxd;
    const RINEXHeader& h = gc.rnxh;
    const long rows = std::min(gc.EclipsSat.NRow(), gc.EclipsNObs.NRow());
    gc.NEclipsSat = 0;
    // Most records lie far outside the threshold: a cosine below its
    // cosine by this much is an angle beyond it by more than acos's error
    // (1e-19) many times over, and needs no arc cosine to say so. The
    // records near it are decided by the angle, as the threshold is given.
    const long double farBelow = std::cos(gc.satEclipsThres) - GetEclipsingns::CosineMargin;
    long id = 0;
    for (const auto& [sat, records] : RecordsBySatellite(d)) {
        const bool galileo = SystemOf(sat) == SysGAL;
        long n = 0;
        Period p;
        for (const SatRecord& r : records) {
            const long k = r.k;
            if (!gc.OKSAT(k)) continue;
            const xyz sun = gc.posSunUnit(r.epoch) * gc.SunMag(r.epoch);
            const long double c = SunEarthCosine(gc.SatelliteXYZ(k), sun);
            if (c < farBelow || !(std::acos(c) < gc.satEclipsThres)) continue;
            Clear(d.L1, h.HasL1(), k);
            if (galileo)
                Clear(d.L7, h.HasL7(), k);
            else
                Clear(d.L2, h.HasL2(), k);
            Clear(d.L3, h.HasL3(), k);
            Clear(d.L4, h.HasL4(), k);
            Clear(d.MW, h.iMW, k);
            if (n > 0 && d.epoch(r.epoch) - d.epoch(p.last) > GetEclipsingns::PeriodGap_s) {
                PrintPeriod(++id, sat, p);
                p = {r.epoch, r.epoch, 0};
            }
            if (n == 0) p = {r.epoch, r.epoch, 0};
            p.last = r.epoch;
            ++p.n;
            ++n;
        }
        if (n == 0) continue;
        PrintPeriod(++id, sat, p);
        // The tables have a fixed room; a satellite beyond it is still
        // cleared, only not listed.
        if (gc.NEclipsSat < rows) {
            gc.EclipsSat(gc.NEclipsSat) = sat;
            gc.EclipsNObs(gc.NEclipsSat) = n;
            ++gc.NEclipsSat;
        }
    }
    std::cout << "\n  # satellites in eclipsing seasons   : " << std::setw(4) << gc.NEclipsSat
              << "\n\n";
    std::cout.flags(flags);
    std::cout.precision(prec);
}
