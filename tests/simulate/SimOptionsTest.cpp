// The command line of orvo-simulate: glued values, and the framed stop for
// anything it cannot simulate faithfully.
#include <gtest/gtest.h>

#include <vector>

#include "SimOptions.h"
#include "numerics/NearLD.h"

namespace {

SimOptions Parse(std::vector<const char*> args)
{
    args.insert(args.begin(), "orvo-simulate");
    return ParseSimOptions(static_cast<int>(args.size()), args.data());
}

TEST(SimOptions, GluedValuesAreRead)
{
    const SimOptions o = Parse({"-x4075580.5,931853.2,4801568.1", "-d2015-08-23", "-i15", "-h6",
                                "-sGE", "-e0", "-nc0.5", "-np0.001", "-ion12", "-notrop",
                                "-wv0.2", "-ecc0.05,0.01,-0.02", "-apr4", "-slipE11,30,5,-4",
                                "-slipG07,40,1,0", "-jump60", "-seed9", "-mZIMM", "-o/tmp"});
    // Parsed decimals: only strtold round-off may separate them from the
    // literals (1e-12 m at 4e6 m), so 1e-9 m and 1e-12 bound it; whole numbers
    // must come back exactly (zero tolerance).
    EXPECT_NEAR_LD(o.x, 4075580.5L, 1e-9L);
    EXPECT_NEAR_LD(o.z, 4801568.1L, 1e-9L);
    EXPECT_EQ(o.year, 2015);
    EXPECT_EQ(o.month, 8);
    EXPECT_EQ(o.day, 23);
    EXPECT_NEAR_LD(o.interval, 15.0L, 0.0L);
    EXPECT_TRUE(o.useGPS && !o.useGLN && o.useGAL);
    EXPECT_NEAR_LD(o.elevMask_deg, 0.0L, 0.0L);
    EXPECT_NEAR_LD(o.sigCode, 0.5L, 1e-12L);
    EXPECT_FALSE(o.useTrop);
    EXPECT_NEAR_LD(o.eccN, -0.02L, 1e-12L);
    ASSERT_EQ(o.slips.size(), 2u);
    EXPECT_EQ(o.slips[0].sat, 211);
    EXPECT_EQ(o.slips[0].n2_cyc, -4);
    EXPECT_EQ(o.slips[1].sat, 7);
    EXPECT_EQ(o.msJumpEpoch, 60);
    EXPECT_EQ(o.seed, 9u);
    EXPECT_EQ(o.marker, "ZIMM");
    EXPECT_EQ(o.outDir, "/tmp");
}

TEST(SimOptions, DefaultsAreTheDocumentedOnes)
{
    const SimOptions o = Parse({});
    // Defaults are literals: 1e-12 admits only round-off; exact for whole numbers.
    EXPECT_NEAR_LD(o.sigCode, 0.3L, 1e-12L);
    EXPECT_NEAR_LD(o.sigPhase, 0.002L, 1e-12L);
    EXPECT_NEAR_LD(o.interval, 30.0L, 0.0L);
    EXPECT_TRUE(o.useGPS && o.useGLN && o.useGAL);
    EXPECT_EQ(o.msJumpEpoch, -1);
}

TEST(SimOptionsDeath, BadValuesStopWithFramedError)
{
    const char* prefix = "\\*\\*\\*\\* Orvo: Error -> orvo-simulate option ";
    EXPECT_EXIT(Parse({"-e10"}), ::testing::ExitedWithCode(1), std::string(prefix) + "-e10: value out of range");
    EXPECT_EXIT(Parse({"-d2021-02-29"}), ::testing::ExitedWithCode(1), std::string(prefix) + "-d2021-02-29: date not valid");
    EXPECT_EXIT(Parse({"-i7.5"}), ::testing::ExitedWithCode(1), std::string(prefix) + ".*" + "interval must be whole seconds");
    EXPECT_EXIT(Parse({"-h25"}), ::testing::ExitedWithCode(1), std::string(prefix) + ".*" + "-h25: value out of range");
    EXPECT_EXIT(Parse({"-x1,2,3"}), ::testing::ExitedWithCode(1), std::string(prefix) + ".*" + "not near the Earth's surface");
    EXPECT_EXIT(Parse({"-nc0.3m"}), ::testing::ExitedWithCode(1), std::string(prefix) + ".*" + "'0.3m' is not a number");
    EXPECT_EXIT(Parse({"-foo"}), ::testing::ExitedWithCode(1), std::string(prefix) + "-foo: unknown option");
    EXPECT_EXIT(Parse({"-sGX"}), ::testing::ExitedWithCode(1), std::string(prefix) + ".*" + "unknown system X");
    EXPECT_EXIT(Parse({"-slipG05,10,1"}), ::testing::ExitedWithCode(1), std::string(prefix) + ".*" + "needs satellite,epoch,n1,n2");
    EXPECT_EXIT(Parse({"-sG", "-slipR05,10,1,1"}), ::testing::ExitedWithCode(1), std::string(prefix) + ".*" + "system that is not simulated");
    EXPECT_EXIT(Parse({"-h0.1", "-i900"}), ::testing::ExitedWithCode(1), std::string(prefix) + ".*" + "fewer than two epochs");
    EXPECT_EXIT(Parse({"-h1", "-jump120"}), ::testing::ExitedWithCode(1), std::string(prefix) + ".*" + "-jump: epoch index beyond the last epoch");
}

}  // namespace
