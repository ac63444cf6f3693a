#include "preprocessing/AmbiguityTable.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iostream>

#include "numerics/ProgramError.h"
#include "observations/SatelliteSystem.h"

namespace {

// The code that L3 is referred to: the one the solution uses, so that the
// a-priori ambiguity carries the same code biases as the adjustment.
const matrix<gnssobs>& SolutionCode(const gCPosC& gc)
{
    if (gc.ifPc3) return gc.rnxd.PC3;
    if (gc.ifPp3) return gc.rnxd.PP3;
    return gc.rnxd.C1;
}

}  // namespace

void ArcL3MinusCode(const gCPosC& gc, short sat, long iStart, long ioStart, long iEnd,
                    long& count, long double& mean_m)
{
    const RINEXData& d = gc.rnxd;
    const matrix<gnssobs>& code = SolutionCode(gc);
    const long n = d.GetNObs();
    count = 0;
    mean_m = 0.0L;
    if (d.L3.NRow() < n || code.NRow() < n || gc.OKSAT.NRow() < n || iStart < 0 || ioStart < 0)
        return;
    const long last = iEnd < d.GetNEpoch() ? iEnd : d.GetNEpoch() - 1;
    long double sum = 0.0L;
    long k = ioStart;
    for (long i = iStart; i <= last && i < d.nsat.NRow(); ++i)
        for (long j = 0; j < d.nsat(i) && k < n; ++j, ++k) {
            if (d.sat(k) != sat || !gc.OKSAT(k)) continue;
            if (d.L3(k).IsNull() || code(k).IsNull()) continue;
            sum += d.L3(k).obs - code(k).obs;
            ++count;
        }
    if (count > 0) mean_m = sum / static_cast<long double>(count);
}

void RecomputeArcMeans(gCPosC& gc)
{
    if (gc.AmbIndex.NRow() < gc.nAmb || gc.AmbIndex.NCol() < 4 || gc.AmbSat.NRow() < gc.nAmb
        || gc.xAmb.NRow() < gc.nAmb)
        ProgramError("Orvo", "AMBIGUITIES: ARC TABLE SHORTER THAN THE NUMBER OF ARCS!");
    for (long a = 0; a < gc.nAmb; ++a) {
        long count = 0;
        long double mean = 0.0L;
        ArcL3MinusCode(gc, gc.AmbSat(a), gc.AmbIndex(a, 0), gc.AmbIndex(a, 1),
                       gc.AmbIndex(a, 2), count, mean);
        gc.AmbIndex(a, 3) = count;
        if (count > 0) gc.xAmb(a) = mean;
    }
}

void PrintAmbiguityTable(const gCPosC& gc)
{
    const std::ios::fmtflags flags = std::cout.flags();
    const std::streamsize prec = std::cout.precision();
    long rows = gc.nAmb;
    if (gc.AmbIndex.NCol() < 3) rows = 0;
    if (rows > gc.AmbIndex.NRow()) rows = gc.AmbIndex.NRow();
    if (rows > gc.AmbSat.NRow()) rows = gc.AmbSat.NRow();
    if (rows > gc.xAmb.NRow()) rows = gc.xAmb.NRow();
    std::cout << std::fixed
              << "      ID   PRN       START EPOCH         END EPOCH          L3 AMB [m]\n";
    for (long i = 0; i < rows; ++i) {
        const short sat = gc.AmbSat(i);
        if (i > 0 && sat != gc.AmbSat(i - 1)) std::cout << "\n";
        PrintArcColumns(i + 1, sat, gc.AmbIndex(i, 0), gc.AmbIndex(i, 2));
        std::cout << std::setw(20) << std::setprecision(4) << gc.xAmb(i) << "\n";
    }
    std::cout << "\n";
    std::cout.flags(flags);
    std::cout.precision(prec);
}

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

void PrintSatColumns(long id, short sat)
{
    std::cout << std::setw(8) << id << "   " << SystemLetter(sat) << std::setw(2)
              << std::setfill('0') << SystemPRN(sat) << std::setfill(' ');
}

void PrintArcColumns(long id, short sat, long firstEpoch, long lastEpoch)
{
    PrintSatColumns(id, sat);
    std::cout << std::setw(18) << firstEpoch << std::setw(18) << lastEpoch;
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

std::vector<SatRecord> ArcRecords(const gCPosC& gc, long a)
{
    const RINEXData& d = gc.rnxd;
    std::vector<SatRecord> r;
    const short sat = gc.AmbSat(a);
    long k = gc.AmbIndex(a, 1);
    for (long i = gc.AmbIndex(a, 0); i <= gc.AmbIndex(a, 2); ++i)
        for (long j = 0; j < d.nsat(i) && k < d.GetNObs(); ++j, ++k)
            if (d.sat(k) == sat) r.push_back({i, k});
    return r;
}

SatelliteRecords::SatelliteRecords(const RINEXData& d)
{
    // Counted first, so that each list finds its place in the block at
    // once, and found through a table by number rather than a search per
    // record.
    const auto walk = [&d](auto&& visit) {
        long k = 0;
        for (long i = 0; i < d.GetNEpoch(); ++i)
            for (long j = 0; j < d.nsat(i) && k < d.GetNObs(); ++j, ++k) visit(i, k, d.sat(k));
    };
    short low = 0, high = -1;
    walk([&](long, long, short sat) {
        if (high < low) low = high = sat;
        low = std::min(low, sat);
        high = std::max(high, sat);
    });
    const std::size_t nNumbers = high >= low ? static_cast<std::size_t>(high - low + 1) : 0;
    std::vector<std::size_t> next(nNumbers + 1, 0);
    walk([&](long, long, short sat) { ++next[static_cast<std::size_t>(sat - low) + 1]; });
    for (std::size_t s = 0; s < nNumbers; ++s) next[s + 1] += next[s];
    block_.resize(next[nNumbers]);
    for (std::size_t s = 0; s < nNumbers; ++s)
        if (next[s + 1] > next[s])
            lists_.emplace(static_cast<short>(low + static_cast<long>(s)),
                           SatRecordSpan(block_.data() + next[s], next[s + 1] - next[s]));
    walk([&](long i, long k, short sat) { block_[next[static_cast<std::size_t>(sat - low)]++] = {i, k}; });
}

SatRecordSpan SatelliteRecords::operator[](short sat) const
{
    const auto it = lists_.find(sat);
    return it == lists_.end() ? SatRecordSpan() : it->second;
}
