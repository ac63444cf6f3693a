#include "driver/SetFiles.h"

#include <gtest/gtest.h>

#include <iostream>
#include <string>

#include "TestSupport.h"
#include "preprocessing/StagingSupport.h"

using stagingtest::Capture;
using stagingtest::Context;
using stagingtest::SetName;

namespace {

TEST(SetFilesDeath, MissingObservationFileStopsAtOnce)
{
    // The RINEX reader refuses the name already here, on the output stream.
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            Context c;
            SetName(c.gc.rnxfile, orvotest::TempDir() + "/absent.20o");
            c.gc.isRnx = true;
            SetFiles(c.gc);
        },
        ::testing::ExitedWithCode(1), "#### RINEX: Error -> RINEX FILE CAN NOT BE OPENED! ####");
}

TEST(SetFiles, HandsOnlyFlaggedNamesAndLogsEachStepInOrder)
{
    Context c;
    SetName(c.gc.rnxfile, stagingtest::Obs());
    SetName(c.gc.sp3file, stagingtest::Sp3());
    // Named but not flagged: Part of the command line that the checks
    // dropped; handing it on would make the clock reader open it.
    SetName(c.gc.pclkfile, orvotest::TempDir() + "/dropped.clk");
    c.gc.isRnx = c.gc.isPEph = c.gc.isTrpModel = true;
    c.gc.TrpModel = 1;
    c.gc.TrpMappFun = 2;
    c.gc.verbose = true;
    std::string log;
    {
        Capture err(std::cerr);
        SetFiles(c.gc);
        log = err.Text();
    }
    EXPECT_EQ(c.gc.rnx.rinexfile, stagingtest::Obs());
    EXPECT_EQ(c.gc.trpmodel.TropM, 1);
    EXPECT_EQ(c.gc.trpmodel.MappF, 2);
    const std::string head = "Orvo::SetFiles():         ";
    const size_t a = log.find("Orvo::SetFiles(): SETTING INPUT FILE NAMES AND PROCESSING SETTINGS!");
    const size_t b = log.find(head + "setting RINEX file!");
    const size_t d = log.find(head + "setting MULTI-GNSS PRECISE EPHEMERIS file!");
    const size_t e = log.find(head + "setting TROPOSPHERE model and mapping function: 1/2");
    ASSERT_NE(a, std::string::npos);
    ASSERT_NE(b, std::string::npos);
    ASSERT_NE(d, std::string::npos);
    ASSERT_NE(e, std::string::npos);
    EXPECT_LT(a, b);
    EXPECT_LT(b, d);
    EXPECT_LT(d, e);
    EXPECT_EQ(log.find("CLOCK"), std::string::npos);
}

}  // namespace
