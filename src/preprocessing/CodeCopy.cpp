#include "preprocessing/CodeCopy.h"

#include <iomanip>
#include <iostream>
#include <string>

#include "driver/Console.h"
#include "observations/SatelliteSystem.h"
#include "preprocessing/AmbiguityTable.h"

namespace {

struct CopyText {
    const char *title, *head, *total;
};

// Copies `from` into `to` for the satellites that never have both.
void Copy(gCPosC& gc, matrix<gnssobs>& to, const matrix<gnssobs>& from, const CopyText& text)
{
    const long n = gc.rnxd.GetNObs();
    if (to.NRow() < n || from.NRow() < n) return;
    struct Row {
        short sat;
        long copied;
    };
    std::vector<Row> rows;
    long total = 0;
    for (const auto& [sat, recs] : RecordsBySatellite(gc.rnxd)) {
        if (!gc.UsesSystem(sat)) continue;
        bool paired = false;
        for (const SatRecord& r : recs) paired = paired || (!to(r.k).IsNull() && !from(r.k).IsNull());
        if (paired) continue;
        long copied = 0;
        for (const SatRecord& r : recs)
            if (to(r.k).IsNull() && !from(r.k).IsNull()) {
                to(r.k).SetObs(from(r.k).obs);
                ++copied;
            }
        if (copied > 0) rows.push_back({sat, copied});
        total += copied;
    }
    if (total == 0) return;
    ProgramSubSubTitle(text.title, 0);
    std::cout << text.head << "\n";
    for (std::size_t i = 0; i < rows.size(); ++i) {
        PrintSatColumns(static_cast<long>(i + 1), rows[i].sat);
        std::cout << std::setw(24) << rows[i].copied << "\n";
    }
    std::cout << "\n" << text.total << total << "\n"
              << "  Number of problematic satellites: " << rows.size() << "\n\n";
}

}  // namespace

void C1P1Copy(gCPosC& gc)
{
    if (!gc.doCopyFilterC || !gc.rnxh.HasC1() || !gc.rnxh.HasP1()) return;
    Copy(gc, gc.rnxd.C1, gc.rnxd.P1,
         {"COPYING  C1/P1 TO C1 OBSERVATIONS:", "      ID   PRN      #C1 COPIED FROM P1",
          "  Number of all P1/C1 copied to C1: "});
}

void C2P2Copy(gCPosC& gc)
{
    if (!gc.doCopyFilterC || !gc.rnxh.HasC2() || !gc.rnxh.HasP2()) return;
    Copy(gc, gc.rnxd.P2, gc.rnxd.C2,
         {"COPYING  C2/P2 TO P2 OBSERVATIONS:", "      ID   PRN      #P2 COPIED FROM C2",
          "  Number of all C2/P2 copied to P2: "});
}
