#include "preprocessing/AmbiguityTable.h"

#include <cmath>
#include <iomanip>
#include <iostream>

#include "numerics/ProgramError.h"
#include "observations/SatelliteSystem.h"

void CheckArcTable(const gCPosC& gc, const std::string& stage)
{
    const RINEXData& d = gc.rnxd;
    const long n = gc.nAmb;
    if (n < 0 || n > gc.xAmb.NRow() || n > gc.AmbIndex.NRow() || n > gc.AmbSat.NRow()
        || (n > 0 && gc.AmbIndex.NCol() < 4))
        ProgramError("Orvo", stage + ": AMBIGUITY ARC TABLE SHORTER THAN ITS "
                                 + std::to_string(n) + " ARCS!");
    for (long i = 0; i < n; ++i) {
        const long first = gc.AmbIndex(i, 0), rec = gc.AmbIndex(i, 1), last = gc.AmbIndex(i, 2);
        // A walk from such an arc would read the records of foreign epochs.
        if (first < 0 || last >= d.GetNEpoch() || first > last || rec < 0 || rec > d.GetNObs())
            ProgramError("Orvo", stage + ": AMBIGUITY ARC " + std::to_string(i + 1)
                                     + " LIES OUTSIDE THE OBSERVATIONS!");
    }
}

void PrintArcColumns(long id, short sat, long firstEpoch, long lastEpoch)
{
    std::cout << std::setw(8) << id << "   " << SystemLetter(sat) << std::setw(2)
              << std::setfill('0') << SystemPRN(sat) << std::setfill(' ') << std::setw(18)
              << firstEpoch << std::setw(18) << lastEpoch;
}

void PrintArcStats(long n, long nOut, bool haveValue, long double value, bool haveSd,
                   std::initializer_list<long double> sd)
{
    std::cout << std::fixed << std::setw(10) << n;
    if (n <= 0) {
        std::cout << std::setw(20) << "-.----";
        for (std::size_t i = 0; i < sd.size(); ++i) std::cout << std::setw(10) << "-.----";
        std::cout << std::setw(10) << "--" << std::setw(8) << "-.-" << "%\n";
        return;
    }
    std::cout << std::setprecision(4);
    if (haveValue)
        std::cout << std::setw(20) << value;
    else
        std::cout << std::setw(20) << "-.----";
    for (long double s : sd)
        if (haveSd && n > 1)
            std::cout << std::setw(10) << s;
        else
            std::cout << std::setw(10) << "-.----";
    std::cout << std::setw(10) << nOut << std::setw(8) << std::setprecision(1)
              << 100.0L * static_cast<long double>(nOut) / static_cast<long double>(n) << "%\n";
}

void PrintPercent(long nOut, long n)
{
    if (n <= 0) {
        std::cout << " (-.-- %)";
        return;
    }
    std::cout << " (" << std::fixed << std::setprecision(2)
              << 100.0L * static_cast<long double>(nOut) / static_cast<long double>(n) << " %)";
}

void PrintPrecision_cm(long double svv, long dof, long double varianceFactor)
{
    if (dof <= 0 || !(varianceFactor > 0.0L)) {
        std::cout << "-.-- cm";
        return;
    }
    std::cout << std::fixed << std::setprecision(2)
              << std::sqrt(svv / static_cast<long double>(dof) / varianceFactor) * 100.0L << " cm";
}
