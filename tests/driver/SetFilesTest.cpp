#include "driver/SetFiles.h"

#include "ContextFixture.h"

using namespace drivertest;

TEST(SetFiles, HandsOnlyFlaggedNamesAndLogsEachStepInOrder) {
    // Named but not flagged: an option that the checks dropped; handing it
    // on would make the clock reader open it.
    Context c;
    SetName(c.gc.rnxfile, kObs);
    SetName(c.gc.sp3file, kSp3);
    SetName(c.gc.pclkfile, orvotest::TempDir() + "/dropped.clk");
    SetName(c.gc.atxfile, kAtx);
    SetName(c.gc.otidefile, orvotest::Data("zimm-2015-235/zimm.blq"));
    SetName(c.gc.ptidefile, orvotest::TempDir() + "/named.erp");
    c.gc.isRnx = c.gc.isPEph = c.gc.isTrpModel = c.gc.verbose = c.gc.isAtx = c.gc.isOTide = c.gc.isPTide = true;
    c.gc.TrpModel = 1, c.gc.TrpMappFun = 2;
    Capture err(std::cerr);
    SetFiles(c.gc);
    EXPECT_EQ(c.gc.rnx.rinexfile, kObs);
    EXPECT_EQ(std::make_pair(c.gc.trpmodel.TropM, c.gc.trpmodel.MappF), (std::make_pair<short, short>(1, 2)));
    const std::string head = "Orvo::SetFiles():         ", log = err.Text();
    size_t at = 0;
    for (const std::string& line : {std::string("Orvo::SetFiles(): SETTING INPUT FILE NAMES AND PROCESSING SETTINGS!"),
                                    head + "setting RINEX file!", head + "setting MULTI-GNSS PRECISE EPHEMERIS file!",
                                    head + "setting EARTH ROTATION PARAMETERS file!", head + "setting OCEAN LOADING TIDE file!",
                                    head + "setting ANTEX file!", head + "setting TROPOSPHERE model and mapping function: 1/2"})
        ASSERT_NE(at = log.find(line, at), std::string::npos) << line << "\n" << log;
    EXPECT_FALSE(Has(log, "CLOCK"));
}
