#include "preprocessing/SplitMidnightAmbs.h"

#include <iomanip>
#include <iostream>

#include "driver/Console.h"
#include "preprocessing/AmbiguityTable.h"

void SplitMidnightAmbs(gCPosC& gc)
{
    const RINEXData& d = gc.rnxd;
    if (!gc.ifL3 || !gc.splitMidnightAmbs || d.GetNEpoch() < 1) return;
    if (d.epoch(0).GetMJDay() == d.epoch(d.GetNEpoch() - 1).GetMJDay()) return;
    CheckArcTable(gc, "MIDNIGHT SPLIT");

    const long nAmb = gc.nAmb;
    // Each arc gives at most two parts.
    matrix<long double> xAmb(2 * nAmb + 1, 1, 0.0L);
    matrix<long> AmbIndex(2 * nAmb + 1, 4, 0L);
    matrix<short> AmbSat(2 * nAmb + 1, 1, static_cast<short>(0));
    long j = 0, nSplit = 0, nAdded = 0, nRemoved = 0;
    auto take = [&](long i, long c0, long c1, long c2, long c3) {
        xAmb(j) = gc.xAmb(i);
        AmbSat(j) = gc.AmbSat(i);
        AmbIndex(j, 0) = c0;
        AmbIndex(j, 1) = c1;
        AmbIndex(j, 2) = c2;
        AmbIndex(j, 3) = c3;
        ++j;
    };

    ProgramSubSubTitle("SPLITTING MIDNIGHT AMBIGUITIES - PRECISE CLKS MISSALIGMENT:", 0);
    const std::ios::fmtflags flags = std::cout.flags();
    std::cout << "      ID   PRN       START EPOCH         END EPOCH  #OBS/AMB     SPLIT\n";
    for (long i = 0; i < nAmb; ++i) {
        const short sat = gc.AmbSat(i);
        const long first = gc.AmbIndex(i, 0), rec = gc.AmbIndex(i, 1), last = gc.AmbIndex(i, 2);
        if (i > 0 && sat != gc.AmbSat(i - 1)) std::cout << "\n";
        PrintArcColumns(i + 1, sat, first, last);
        std::cout << std::setw(10) << gc.AmbIndex(i, 3);
        const unsigned long mdStart = d.epoch(first).GetMJDay(), mdEnd = d.epoch(last).GetMJDay();
        if (mdStart == mdEnd) {
            std::cout << std::setw(10) << "NO" << "\n";
            take(i, first, rec, last, gc.AmbIndex(i, 3));
            continue;
        }
        std::cout << std::setw(10) << "YES" << "\n";
        ++nSplit;
        long ieBefore = first, ieAfter = last, ioAfter = rec;
        for (long ie = first, io = rec; ie <= last; io += d.nsat(ie), ++ie) {
            const unsigned long md = d.epoch(ie).GetMJDay();
            if (md == mdStart) ieBefore = ie;
            if (md == mdEnd) {
                ieAfter = ie;
                ioAfter = io;
                break;
            }
        }
        // Epochs, not observations: the part must be long enough in time.
        const long nBefore = ieAfter - first, nAfter = last - ieAfter + 1;
        const bool before = nBefore >= gc.MinObsAmb, after = nAfter >= gc.MinObsAmb;
        if (before) {
            PrintArcColumns(j + 1, sat, first, ieBefore);
            std::cout << std::setw(10) << nBefore << std::setw(10) << "BEFORE" << "\n";
            take(i, first, rec, ieBefore, nBefore);
        }
        if (after) {
            PrintArcColumns(j + 1, sat, ieAfter, last);
            std::cout << std::setw(10) << nAfter << std::setw(10) << "AFTER" << "\n";
            take(i, ieAfter, ioAfter, last, nAfter);
        }
        if (before && after) ++nAdded;
        if (!before && !after) ++nRemoved;
    }
    std::cout << "\n"
              << "  # of splitted ambiguities    : " << nSplit << "\n"
              << "  # of additional ambiguities  : " << nAdded << "\n"
              << "  # of removed ambiguities     : " << nRemoved << "\n\n";
    std::cout.flags(flags);

    gc.nAmb = j;
    gc.xAmb.Resize(j, 1, 0.0L);
    gc.AmbIndex.Resize(j, 4, 0L);
    gc.AmbSat.Resize(j, 1, static_cast<short>(0));
    for (long i = 0; i < j; ++i) {
        gc.xAmb(i) = xAmb(i);
        gc.AmbSat(i) = AmbSat(i);
        for (int c = 0; c < 4; ++c) gc.AmbIndex(i, c) = AmbIndex(i, c);
    }
}
