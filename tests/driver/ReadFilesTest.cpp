#include "driver/ReadFiles.h"

#include "ContextFixture.h"
#include "driver/SetFiles.h"

using namespace drivertest;

// 20 epochs of the real day from 00:00:00: small enough for death tests,
// which read the file anew in their child process.
constexpr long kEpochs = 20;

// Names obs and switches on the systems (letters G, R, E) with their code bias unknowns.
static void Prepare(Context& c, const std::string& obs, const std::string& systems) {
    SetName(c.gc.rnxfile, obs), c.gc.isRnx = true;
    c.gc.isGPS = c.gc.isGPSxdcb = Has(systems, "G");
    c.gc.isGLN = c.gc.isGLNxdcb = Has(systems, "R");
    c.gc.isGAL = c.gc.isGALxdcb = Has(systems, "E");
}

// Prepares and stages obs; returns what was written on both streams.
static std::string Stage(Context& c, const std::string& obs, const std::string& systems) {
    Prepare(c, obs, systems);
    Capture out(std::cout), err(std::cerr);
    SetFiles(c.gc);
    ReadFiles(c.gc);
    return out.Text() + err.Text();
}

// Keeps the first nG GPS and the first nOther satellites of system sys.
static Selector Keep(int nG, char sys, int nOther) {
    return [=](const std::vector<std::string>& sats) {
        std::vector<bool> k(sats.size(), false);
        for (size_t i = 0, g = 0, o = 0; i < sats.size(); ++i)
            k[i] = (sats[i][0] == 'G' && g++ < size_t(nG)) || (sats[i][0] == sys && o++ < size_t(nOther));
        return k;
    };
}

TEST(ReadFiles, FullDayHoldsTheIndependentlyCountedRecords) {
    // README.md of the data set, counted by a separate parser: 2880 epochs,
    // G 33406, R 25790, E 24362 records; every system far above 10%. The
    // daily check lets the data of its own day through.
    Context c;
    c.gc.isDateChkDaily = true;
    c.gc.DateChkDaily.Set(59025, 0.0L);
    Stage(c, kObs, "GRE");
    EXPECT_EQ(c.rnxd.GetNEpoch(), 2880);
    std::vector<long> n(3, 0);
    for (long k = 0; k < c.rnxd.GetNObs(); ++k) n.at(c.rnxd.sat(k) / 100) += c.rnxd.sat(k) % 100 != 0;
    EXPECT_EQ(n, (std::vector<long>{33406, 25790, 24362}));
    EXPECT_EQ(c.rnxd.GetNObs(), 33406 + 25790 + 24362);
    EXPECT_TRUE(c.gc.isGPS && c.gc.isGLN && c.gc.isGAL && c.rnxh.HasP2());  // P2 observed, nothing copied
}

TEST(ReadFiles, SystemWithAtMostTenPerCentOfRecordsIsDropped) {
    // Nine GPS and one Galileo record per epoch is exactly 10%, not more;
    // one GLONASS beside ten GPS (1/11) goes too; 1/9 is kept.
    const struct { const char* name; int nG; char sys; bool kept; std::string sysName; } rows[] = {
        {"ten.20o", 9, 'E', false, "GALILEO"}, {"eleven.20o", 10, 'R', false, "GLONASS"}, {"nine.20o", 8, 'E', true, "GALILEO"}};
    for (const auto& k : rows) {
        Context c;
        const std::string out = Stage(c, CutObs(k.name, kEpochs, Keep(k.nG, k.sys, 1)), std::string("G") + k.sys);
        EXPECT_TRUE(c.gc.isGPS) << k.name;
        EXPECT_EQ(k.sys == 'R' ? c.gc.isGLN && c.gc.isGLNxdcb : c.gc.isGAL && c.gc.isGALxdcb, k.kept) << k.name;
        EXPECT_EQ(Has(out, Warning("NO OR NOT ENOUGH " + k.sysName + " DATA IN RINEX FILE - NOT USING " + k.sysName +
                                   " OBSERVATIONS IN PROCESSING!")), !k.kept) << out;
    }
}

TEST(ReadFiles, ReceiverClockFileMustMatchTheEpochsAndProblemFileIsRead) {
    // A receiver clock file of the program's own layout with n epochs of
    // 1.5 µs from 2020-06-25 00:00:00 at 30 s.
    auto clockFile = [](const std::string& name, long n) {
        std::string text = "CLOCK ERROR FILE: ESBC00DNK / 10118M001\nCLOCK REF. SYS. : G\n";
        for (long i = 0; i < n; ++i) text += "59025 " + std::to_string(30 * i) + "  1.5\n";
        return orvotest::WriteTemp(name, text);
    };
    const std::string obs = CutObs("clk.20o", kEpochs);
    Context ok, bad, crx;
    SetName(ok.gc.clkFName, clockFile("match.clk", kEpochs));
    SetName(bad.gc.clkFName, clockFile("onemore.clk", kEpochs + 1));
    ok.gc.isClkErr = bad.gc.isClkErr = true;
    Stage(ok, obs, "G");
    EXPECT_TRUE(ok.gc.isClkErr);
    EXPECT_NEAR_LD(ok.gc.clkerr.GetClkErr(kEpochs - 1), 1.5e-6L, 1e-18L);  // µs read back in s; the text is exact
    EXPECT_TRUE(Has(Stage(bad, obs, "G"), Warning("RINEX FILE AND APRIORI CLOCK ERROR FILE HAVE DIFFERENT NUMBER OF EPOCHS - "
                                                  "NOT USING RECEIVER CLOCK ERROR FILE!")));
    EXPECT_FALSE(bad.gc.isClkErr);
    // Six header lines and no period: an empty problem list, read and echoed.
    SetName(crx.gc.scrxfile, orvotest::WriteTemp("empty.crx", "h1\nh2\nh3\nh4\nh5\nh6\n"));
    SetName(crx.gc.atxfile, kAtx);
    SetName(crx.gc.otidefile, orvotest::Data("zimm-2015-235/zimm.blq"));
    crx.gc.isSCrx = crx.gc.verbose = crx.gc.isAtx = crx.gc.isOTide = true;
    const std::string log = Stage(crx, obs, "G");
    EXPECT_TRUE(Has(log, "reading ANTEX file - 31 GPS SWs  25 GLONASS SWs  0 GALILEO SWs  1 RECs")) << log;
    EXPECT_TRUE(Has(log, "reading OCEAN LOADING TIDE file - 1 stations ")) << log;
    EXPECT_EQ(crx.gc.GetSatCRX().GetNSat(), 0);
    EXPECT_TRUE(Has(log, "Orvo::ReadFiles():        reading GPS AND GLONASS SATELLITE PROBLEM file - 0 problematic "
                         "epochs/satellites!")) << log;
}

TEST(ReadFiles, OnlyC2OnTheSecondCarrierIsCopiedToP2) {
    // P2 is then the C2 column of the same file read without the change.
    Context plain, c;
    Stage(plain, CutObs("withp2.20o", 3), "GRE");
    const std::string err = Stage(c, CutObs("nop2.20o", 3, KeepAll, "    P2    L2", "    X2    L2"), "GRE");
    EXPECT_TRUE(Has(err, Warning("RINEX FILE HAS ONLY C2 CODE OBSERVATIONS ON L2 - COPYING VALUES TO P2!")));
    ASSERT_TRUE(c.rnxh.HasP2());
    ASSERT_EQ(c.rnxd.GetNObs(), plain.rnxd.GetNObs());
    long nC2 = 0;
    for (long k = 0; k < c.rnxd.GetNObs(); ++k) {
        EXPECT_EQ(c.rnxd.P2(k).obs, plain.rnxd.C2(k).obs) << "record " << k;
        nC2 += std::fabs(plain.rnxd.C2(k).obs) > 1.0L;
    }
    EXPECT_GT(nC2, 0);
}

TEST(ReadFilesDeath, WrongDayMissingDataAndBrokenOrForeignFilesStop) {
    // The day before ends exactly where the data start, which does not touch
    // it. Galileo data alone leave a GPS run with nothing: a warning, then
    // the stop. C1 and P1 renamed to unknown types leave no first code. The
    // readers refuse a product file that is missing (the argument checks
    // normally do) or an observation file in its place.
    const std::string obs = CutObs("death.20o", kEpochs), absent = orvotest::TempDir() + "/absent";
    const std::string galileo = CutObs("galileo.20o", kEpochs, Keep(0, 'E', 99));
    const std::string noC1 = CutObs("noc1.20o", 3, KeepAll, "    C1    P1", "    X1    X2");
    const std::string E = "\\*\\*\\*\\* Orvo: Error -> ", day = "CHECKING DAILY DATA PROBLEM: GNSS DATA NOT FOR DAY 2020-6-2";
    const struct { unsigned long day; std::string obs; FileMember file; Flag flag; std::string name, regex; } rows[] = {
        {59024, obs, nullptr, nullptr, "", E + day + "4! \\*\\*\\*\\*"},
        {59026, obs, nullptr, nullptr, "", E + day + "6! \\*\\*\\*\\*"},
        {0, galileo, nullptr, nullptr, "", "NO OR NOT ENOUGH GPS DATA IN RINEX FILE - NOT USING GPS OBSERVATIONS IN PROCESSING!"
                                           "(.|\n)*" + E + "NO OR NOT ENOUGH GNSS \\(G\\|R\\|E\\) DATA IN RINEX FILE - "
                                           "PROBLEMATIC RINEX FILE! \\*\\*\\*\\*"},
        {0, noC1, nullptr, nullptr, "", "  \\*\\*\\* PROBLEMATIC DATA - FIRST CARRIER OBSERVATIONS ARE MISSING \\(C1, L1\\)!!\n\n"
                                        "(.|\n)*Orvo: Error -> OBSERVATIONS \\(C1, L1\\) ON FIRST CARRIER ARE MISSING!"},
        {0, obs, GC(sp3file), GC(isPEph), absent, E + "PRECISE ORBIT FILE .*absent CAN NOT BE OPENED!"},
        {0, obs, GC(sp3file), GC(isPEph), obs, E + "PRECISE ORBIT FILE .*: line 1.*not an SP3 header line"},
        {0, obs, GC(clkFName), GC(isClkErr), obs, E + "Line 1 of clock file is not >CLOCK ERROR FILE:< line!"},
        {0, obs, GC(scrxfile), GC(isSCrx), absent, "Orvo: Error -> SATELLITE PROBLEM FILE DOES NOT EXIST!"},
    };
    // Both streams reach the death test's error stream, uncaptured.
    auto run = [](const auto& k) {
        Context c;
        c.gc.isDateChkDaily = k.day != 0;
        c.gc.DateChkDaily.Set(k.day, 0.0L);
        if (k.file) SetName(c.gc.*k.file, k.name), c.gc.*k.flag = true;
        Prepare(c, k.obs, "G");
        std::cout.rdbuf(std::cerr.rdbuf());
        SetFiles(c.gc);
        ReadFiles(c.gc);
    };
    for (const auto& k : rows) EXPECT_EXIT(run(k), ::testing::ExitedWithCode(1), k.regex) << k.regex;
}
