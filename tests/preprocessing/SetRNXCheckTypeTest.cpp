// The observation test of the epoch check follows the types the run uses.
#include <gtest/gtest.h>

#include <string>

#include "driver/ParseArguments.h"
#include "driver/gCPosC.h"
#include "observations/CheckRNXEpochs.h"
#include "observations/RINEX.h"
#include "preprocessing/SetRNXCheckType.h"

namespace {

// CheckType after the -l option `arg` of the command line.
short TypeFor(const char* arg)
{
    RINEXHeader h;
    RINEXData d(h);
    RINEX rnx(h, d);
    gCPosC gc(h, d, rnx);
    ParseObservationList(arg, gc.ifC1, gc.ifP1, gc.ifP2, gc.ifPc3, gc.ifPp3, gc.ifL3, false);
    const short old = CheckType;
    CheckType = -1;
    SetRNXCheckType(gc);
    const short t = CheckType;
    CheckType = old;
    return t;
}

TEST(SetRNXCheckType, LastMatchingRuleDecides)
{
    // No type at all still sets the first-code test.
    const std::pair<const char*, short> rows[] = {{"-lC1", 0},  {"-lP1", 0},    {"-lP2", 1},      {"-lC1,P2", 2}, {"-lPc3", 2},
                                                  {"-lPp3", 2}, {"-lC1,L3", 3}, {"-lPc3,L3", 3}, {"-l", 0}};
    for (const auto& r : rows) EXPECT_EQ(TypeFor(r.first), r.second) << r.first;
}

}  // namespace
