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
    EXPECT_EQ(TypeFor("-lC1"), 0);
    EXPECT_EQ(TypeFor("-lP1"), 0);
    EXPECT_EQ(TypeFor("-lP2"), 1);
    EXPECT_EQ(TypeFor("-lC1,P2"), 2);
    EXPECT_EQ(TypeFor("-lPc3"), 2);
    EXPECT_EQ(TypeFor("-lPp3"), 2);
    EXPECT_EQ(TypeFor("-lC1,L3"), 3);
    EXPECT_EQ(TypeFor("-lPc3,L3"), 3);
    // No type at all still sets the first-code test.
    EXPECT_EQ(TypeFor("-l"), 0);
}

}  // namespace
