#include "driver/CheckArguments.h"

#include "ContextFixture.h"

using namespace drivertest;

using Words = std::vector<std::string>;

// A name in a fresh scratch folder: it cannot open.
const std::string kMissing = orvotest::TempDir() + "/no_such_file.dat";

// A context that passes every check without a warning: RINEX and precise
// orbits of the real day, GPS only, static, C1 only; the troposphere
// interval of -ti01:00:00 for rows that switch its estimation on.
static std::unique_ptr<Context> Valid() {
    auto c = std::make_unique<Context>();
    c->gc.TropoInterval = 3600.0L;
    SetName(c->gc.rnxfile, kObs);
    SetName(c->gc.sp3file, kSp3);
    c->gc.isRnx = c->gc.isPEph = c->gc.isGPS = c->gc.ifEstSta = c->gc.ifC1 = true;
    return c;
}

// Names file `f` with `name` and raises its flag.
static void Name(gCPosC& gc, FileMember f, Flag flag, const std::string& name) { SetName(gc.*f, name), gc.*flag = true; }

static std::string RunChecks(gCPosC& gc) {
    Capture cap(std::cerr);
    CheckArguments(gc);
    return cap.Text();
}

// Each message warned once, and no other warning.
static void ExpectWarnings(const std::string& err, const Words& msgs) {
    for (const std::string& m : msgs) EXPECT_EQ(Count(err, Warning(m)), 1) << m << "\n" << err;
    EXPECT_EQ(Count(err, "#### Orvo: Warning -> "), static_cast<int>(msgs.size())) << err;
}

// The framed error with `msg` taken literally, as an extended regular expression.
static std::string ErrorRegex(const std::string& msg) {
    return "\\*\\*\\*\\* Orvo: Error -> " + std::regex_replace(msg, std::regex(R"([\\^$.|?*+()\[\]{}])"), R"(\$&)") + " \\*\\*\\*\\*";
}

TEST(CheckArguments, ValidSettingPassesSilentlyAndVerboseLogsTheGroupsInOrder) {
    auto c = Valid();
    EXPECT_EQ(RunChecks(c->gc), "");
    // Verbose: the opening line and one head per group of checks, in the order of the rules.
    c->gc.verbose = true;
    const std::string log = RunChecks(c->gc);
    EXPECT_EQ(log.rfind("Orvo::CheckArguments(): CHECKING INPUT ARGUMETNS!\nOrvo::CheckArguments():         SATELLITE SYSTEMS!\n", 0), 0u);
    EXPECT_EQ(Count(log, "Orvo::CheckArguments():         "), 10) << log;
    EXPECT_LT(log.find("A-priori coordinate file!"), log.find("Observations in processing!!")) << log;
}

TEST(CheckArgumentsDeath, MissingMustHaveInputsUnopenableFilesAndTwoIonosphereModelsStop) {
    // One unopenable must-have file per group of checks. Two ionosphere
    // models would count the delay twice (the pairs tell a sum from a
    // difference); the observation file stands in for a model file, as only
    // its opening is tested here.
    const struct { FileMember f1; Flag flag1; FileMember f2; Flag flag2; std::string name, msg; } rows[] = {
        {GC(rnxfile), GC(isRnx), nullptr, nullptr, "", "NO RINEX (OBSERVATION) FILE SET!"},
        {GC(rnxfile), GC(isRnx), nullptr, nullptr, kMissing, "RINEX (OBSERVATION) FILE CAN NOT BE OPENED!"},
        {GC(sp3file), GC(isPEph), nullptr, nullptr, "", "NO EPHEMERIS FILE SET!"},
        {GC(rnavfile), GC(isGLNnav), nullptr, nullptr, kMissing, "GLONAS NAVIGATION FILE CAN NOT BE OPENED!"},
        {GC(ionxfile), GC(isIonx), nullptr, nullptr, kMissing, "IONEX IONOSPHERE FILE CAN NOT BE OPENED!"},
        {GC(dcbp1c1file), GC(isP1C1), nullptr, nullptr, kMissing, "DCB FILE - P1C1 CAN NOT BE OPENED!"},
        {GC(glnfreqch), GC(isGLNfrch), nullptr, nullptr, kMissing, "GLONASS FREQUENCY CHANNEL FILE CAN NOT BE OPENED!"},
        {GC(ionkfile), GC(isKlob), GC(ionxfile), GC(isIonx), kObs, "MULTIPLE IONOSPHERE MODELS SET IN PROCESSING!"},
        {GC(ionkfile), GC(isKlob), GC(myionfile), GC(isMyion), kObs, "MULTIPLE IONOSPHERE MODELS SET IN PROCESSING!"},
        // A result file on an input file, or in a folder that is not there.
        {GC(clkfile), GC(isClkFile), nullptr, nullptr, kObs, "RESULT FILE -" + kObs + "- WOULD OVERWRITE THE INPUT FILE " + kObs + "!"},
        {GC(resfile), GC(isresfile), nullptr, nullptr, "/nonexistent/folder/day.res", "RESULT FILE -/nonexistent/folder/day.res- LIES IN A FOLDER THAT DOES NOT EXIST!"},
    };
    for (const auto& r : rows) {
        auto c = Valid();
        Name(c->gc, r.f1, r.flag1, r.name);
        if (r.f2) Name(c->gc, r.f2, r.flag2, r.name);
        EXPECT_EXIT(CheckArguments(c->gc), ::testing::ExitedWithCode(1), ErrorRegex(r.msg)) << r.msg;
    }
}

TEST(CheckArguments, OptionalFileThatDoesNotOpenIsDroppedAndOneThatOpensKept) {
    const struct { FileMember file; Flag flag; const char* msg; } rows[] = {
        {GC(pclkfile), GC(isPclk), "PRECISE MULTI-GNSS SATELLITE CLOCK FILE CAN NOT BE OPENED!"},
        {GC(clkFName), GC(isClkErr), "APRIORI RECEIVER CLOCK ERROR FILE CAN NOT BE OPENED!"},
        {GC(scrxfile), GC(isSCrx), "GPS AND GLONASS SATELLITE PROBLEM FILE CAN NOT BE OPENED!"},
        {GC(mp1file), GC(isMP1), "MULTIPATH FILE (P1) CAN NOT BE OPENED!"},
        {GC(mp2file), GC(isMP2), "MULTIPATH FILE (P2) CAN NOT BE OPENED!"},
        {GC(ionkfile), GC(isKlob), "KLOBUCHAR IONOSPHERE FILE CAN NOT BE OPENED!"},
        {GC(myionfile), GC(isMyion), "MYIONO IONOSPHERE FILE CAN NOT BE OPENED!"},
        {GC(ptidefile), GC(isPTide), "EARTH ROTATION PARAMETERS FILE CAN NOT BE OPENED!"},
        {GC(otidefile), GC(isOTide), "OCEAN LOADING TIDE FILE (BLQ) CAN NOT BE OPENED!"},
        {GC(aprcrdfile), GC(isAprCrd), "APRIORI COORDINATE FILE CAN NOT BE OPENED - USING RINEX VALUES!"}};
    for (const auto& r : rows)
        for (const bool opens : {false, true}) {
            auto c = Valid();
            Name(c->gc, r.file, r.flag, opens ? kObs : kMissing);
            ExpectWarnings(RunChecks(c->gc), opens ? Words{} : Words{r.msg});
            EXPECT_EQ(c->gc.*r.flag, opens) << r.msg;
        }
}

TEST(CheckArguments, SettingsThatCannotBeUsedAreDefaultedOrDroppedWithAWarning) {
    // Each row changes the valid setting, then wants its warnings (each once,
    // no other) and the setting that `check` tests.
    const std::string klob = "KLOBUCHAR IONOSPHERE FILE CAN NOT BE OPENED!", noModel = "TROPOSPHERE ESTIMATION SET WITHOUT TROPOSPHERE "
        "MODEL - WILL NOT ESTIMATE TROPOSPHERE PARAMETERS!", gradOnly = "ONLY TROPOSPHERE GRADIENTS SET FOR ESTIMATION - ABORTING!";
    const std::string vmf = "VMF1 AND/OR VIENNA TROPOSPHERE MODEL FILE CAN NOT BE OPENED!", saast = "TROPOSPHERE MODEL SET TO DEFAULT - "
        "SAASTAMOINEN!", niell = "TROPOSPHERE MAPPING FUNCTION SET TO DEFAULT - NIELL!", gpt2 = "GPT2 TROPOSPHERE MODEL FILE CAN NOT BE OPENED!";
    auto dropped = [](Words w, const std::string& s) {
        w.push_back(s + " SYSTEM SET BUT NO EPHEMERIS FOR " + s + " SET (PRECISE AND NAVIGATION) - NOT PROCESSING " + s + " SYSTEM!");
        w.push_back(s + " OBSERVATIONS WILL NOT BE PROCESSED -> " + s + " DCB VALUES UNKONWNS UNSET!");
        return w;
    };
    auto navOnly = [](gCPosC& g, FileMember f, Flag flag, const std::string& name) { g.sp3file[0] = '\0', g.isPEph = false, Name(g, f, flag, name); };
    const std::string noChannels = "NO FREQUENCY CHANNEL FILE [-gf] NOR GLONASS NAVIGATION FILE [-er] GIVES THE GLONASS CHANNELS - "
        "NOT PROCESSING GLONASS SYSTEM!", needsFile = "TROPOSPHERE MODEL/MAPPING FUNCTION [-tm] NEEDS A VMF1 OR GPT2 FILE [-vm|-g2] - NONE SET!";
    const struct { std::function<void(gCPosC&)> setup; Words warnings; std::function<bool(const gCPosC&)> check; } rows[] = {
        // No system at all: all three, which the precise orbits serve, but
        // GLONASS only with a source of its channels.
        {[](gCPosC& g) { g.isGPS = false; }, {"NO SATELLITE SYSTEM SET [-cs[G|R|E]] - SETTING ALL!", noChannels},
         [](const gCPosC& g) { return g.isGPS && !g.isGLN && g.isGAL; }},
        {[](gCPosC& g) { g.isGPS = false, Name(g, GC(glnfreqch), GC(isGLNfrch), kChannels); }, {"NO SATELLITE SYSTEM SET [-cs[G|R|E]] - SETTING ALL!"},
         [](const gCPosC& g) { return g.isGPS && g.isGLN && g.isGAL; }},
        // A RINEX 3 header (GLONASS SLOT / FRQ #) gives them too.
        {[](gCPosC& g) { g.isGPS = false, g.isGLN = true, SetName(g.rnxfile, orvotest::Data("esbc-2020-177/ESBC00DNK_R_20201770000_01D_30S_MO.crx.gz")); },
         {}, [](const gCPosC& g) { return !g.isGPS && g.isGLN; }},
        // Precise orbits overrule navigation files; the systems stay, GLONASS
        // on its channel file. Without it GLONASS goes, its code biases too.
        {[](gCPosC& g) { Name(g, GC(gnavfile), GC(isGPSnav), kNavG), Name(g, GC(rnavfile), GC(isGLNnav), kNavR), g.isGLN = true,
                         Name(g, GC(glnfreqch), GC(isGLNfrch), kChannels); },
         {"BOTH PRECISE EPHEMERIS AND (SOME) NAVIGATION FILES FOR SET -> USING ONLY PRECISE EPHEMERIS FILE!"},
         [](const gCPosC& g) { return !g.isGPSnav && !g.isGLNnav && !g.isGALnav && g.isGPS && g.isGLN; }},
        {[](gCPosC& g) { Name(g, GC(rnavfile), GC(isGLNnav), kNavR), g.isGLN = g.isGLNxdcb = true; },
         {"BOTH PRECISE EPHEMERIS AND (SOME) NAVIGATION FILES FOR SET -> USING ONLY PRECISE EPHEMERIS FILE!", noChannels,
          "GLONASS OBSERVATIONS WILL NOT BE PROCESSED -> GLONASS DCB VALUES UNKONWNS UNSET!"},
         [](const gCPosC& g) { return g.isGPS && !g.isGLN && !g.isGLNxdcb; }},
        // Without precise orbits a system without its navigation file goes,
        // and its code bias unknowns with it; the others keep theirs.
        {[&](gCPosC& g) { navOnly(g, GC(gnavfile), GC(isGPSnav), kNavG), g.isGLN = g.isGAL = g.isGPSxdcb = g.isGLNxdcb = g.isGALxdcb = true; },
         dropped(dropped({}, "GLONASS"), "GALILEO"),
         [](const gCPosC& g) { return g.isGPS && g.isGPSxdcb && !g.isGLN && !g.isGAL && !g.isGLNxdcb && !g.isGALxdcb; }},
        {[&](gCPosC& g) { navOnly(g, GC(rnavfile), GC(isGLNnav), kNavR), g.isGLN = g.isGPSxdcb = true; }, dropped({}, "GPS"),
         [](const gCPosC& g) { return !g.isGPS && !g.isGPSxdcb && g.isGLN; }},
        // A flag without a name is left to the reader; no test of the empty name.
        {[](gCPosC& g) { g.isPclk = g.isAtx = g.isGLNfrch = true; }, {}, [](const gCPosC& g) { return g.isPclk && g.isAtx && g.isGLNfrch; }},
        // The Klobuchar file fails first, so the IONEX model stands alone.
        {[&](gCPosC& g) { Name(g, GC(ionkfile), GC(isKlob), kMissing), Name(g, GC(ionxfile), GC(isIonx), kObs); },
         {klob}, [](const gCPosC& g) { return !g.isKlob && g.isIonx; }},
        // No estimation type means static, no observation list C1 alone;
        // kinematic alone or L3 alone is a choice, not a gap.
        {[](gCPosC& g) { g.ifEstSta = g.ifC1 = false; },
         {"TYPE OF ESTIMATION IS NOT SET [-x option]: USING DEFAULT SETTING - STATIC ESTIMATION!",
          "LIST OF OBSERVATIONS IS NOT SET [-l option]: USING ONLY C1 OBSERVATIONS!"},
         [](const gCPosC& g) { return g.ifEstSta && g.ifC1 && !g.ifEstKin && !g.ifP1 && !g.ifP2 && !g.ifPc3 && !g.ifPp3 && !g.ifL3; }},
        {[](gCPosC& g) { g.ifEstSta = g.ifC1 = false, g.ifEstKin = g.ifL3 = true; }, {}, [](const gCPosC& g) { return !g.ifEstSta && !g.ifC1; }},
        // The wet delay needs an a-priori model; gradients need the delay and
        // are dropped before their interval count is looked at; 0 intervals
        // means one per delay interval.
        {[](gCPosC& g) { g.ifEstTropo = g.ifEstTropoGrad = true; }, {noModel, gradOnly},
         [](const gCPosC& g) { return !g.ifEstTropo && !g.ifEstTropoGrad; }},
        {[](gCPosC& g) { g.isTrpModel = g.ifEstTropoGrad = true, g.nTropoGradInt = -3; }, {gradOnly},
         [](const gCPosC& g) { return !g.ifEstTropoGrad && g.nTropoGradInt == -3; }},
        {[](gCPosC& g) { g.isTrpModel = g.ifEstTropo = g.ifEstTropoGrad = true, g.nTropoGradInt = -2; },
         {"NUMBER OF TROPOSPHERE GRADIENT INTERVALS MUST BE POZITIVE NUMBER - SETTING TO 1!"},
         [](const gCPosC& g) { return g.ifEstTropo && g.ifEstTropoGrad && g.nTropoGradInt == 1; }},
        {[](gCPosC& g) { g.isTrpModel = g.ifEstTropo = g.ifEstTropoGrad = true, g.nTropoGradInt = 0; }, {},
         [](const gCPosC& g) { return g.ifEstTropoGrad && g.nTropoGradInt == 0; }},
        // An output file without its estimate goes; any one system's bias
        // estimate keeps the bias file.
        {[](gCPosC& g) { g.isOutDCBFile = g.isOutTropFile = true; },
         {"DCB ESTIMATION IS NOT SET: NO DCB OUTPUT FILE WILL BE WRITTEN!",
          "ESTIMATION OF TROPOSPHERE DELAYS IS NOT SET: NO TROPOSPHERE OUTPUT FILE WILL BE WRITTEN!"},
         [](const gCPosC& g) { return !g.isOutDCBFile && !g.isOutTropFile; }},
        {[](gCPosC& g) { g.isOutDCBFile = g.isGPSxdcb = g.isTrpModel = g.ifEstTropo = g.isOutTropFile = true; }, {},
         [](const gCPosC& g) { return g.isOutDCBFile && g.isOutTropFile; }},
        {[](gCPosC& g) { g.isGLN = g.isOutDCBFile = g.isGLNxdcb = true, Name(g, GC(glnfreqch), GC(isGLNfrch), kChannels); }, {},
         [](const gCPosC& g) { return g.isOutDCBFile; }},
        {[](gCPosC& g) { g.isGAL = g.isOutDCBFile = g.isGALxdcb = true; }, {}, [](const gCPosC& g) { return g.isOutDCBFile; }},
        // Model and mapping codes that live on a lost file (VMF1 4/5, GPT2
        // 3/6) fall back on Saastamoinen and Niell; file-free ones stay.
        {[](gCPosC& g) { Name(g, GC(vmf1file), GC(isVMF1file), kMissing), g.TrpModel = 4, g.TrpMappFun = 5; }, {vmf, saast, niell},
         [](const gCPosC& g) { return !g.isVMF1file && g.TrpModel == 0 && g.TrpMappFun == 0; }},
        {[](gCPosC& g) { Name(g, GC(gpt2file), GC(isGPT2file), kMissing), g.TrpModel = 3, g.TrpMappFun = 6; }, {gpt2, saast, niell},
         [](const gCPosC& g) { return !g.isGPT2file && g.TrpModel == 0 && g.TrpMappFun == 0; }},
        {[](gCPosC& g) { Name(g, GC(vmf1file), GC(isVMF1file), kMissing), g.TrpModel = g.TrpMappFun = 1; }, {vmf},
         [](const gCPosC& g) { return g.TrpModel == 1 && g.TrpMappFun == 1; }},
        {[](gCPosC& g) { Name(g, GC(gpt2file), GC(isGPT2file), kMissing), g.TrpModel = g.TrpMappFun = 1; }, {gpt2},
         [](const gCPosC& g) { return g.TrpModel == 1 && g.TrpMappFun == 1; }},
        // Such codes with no file named at all gave zero delays; either file
        // may carry either kind, so one that opens keeps them.
        {[](gCPosC& g) { g.TrpModel = 4, g.TrpMappFun = 6; }, {needsFile, saast, niell},
         [](const gCPosC& g) { return g.TrpModel == 0 && g.TrpMappFun == 0; }},
        {[](gCPosC& g) { g.TrpModel = 3, g.TrpMappFun = 5; }, {needsFile, saast, niell},
         [](const gCPosC& g) { return g.TrpModel == 0 && g.TrpMappFun == 0; }},
        {[](gCPosC& g) { Name(g, GC(gpt2file), GC(isGPT2file), kObs), g.TrpModel = 4, g.TrpMappFun = 5; }, {},
         [](const gCPosC& g) { return g.TrpModel == 4 && g.TrpMappFun == 5; }},
    };
    for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
        auto c = Valid();
        rows[i].setup(c->gc);
        const std::string err = RunChecks(c->gc);
        ExpectWarnings(err, rows[i].warnings);
        EXPECT_TRUE(rows[i].check(c->gc)) << "row " << i;
        EXPECT_TRUE(!Has(err, noModel) || err.find(noModel) < err.find(gradOnly)) << err;
    }
}

TEST(CheckArgumentsDeath, SettingsWithoutASoundResultStop) {
    // GLONASS alone on unknown carriers; a troposphere step that never
    // advances or a shift it can never step back from; iterations that
    // would never end under a threshold that is never met.
    const struct { std::function<void(gCPosC&)> setup; std::string msg; } rows[] = {
        {[](gCPosC& g) { g.isGPS = false, g.isGLN = true; }, "GLONASS IS THE ONLY SYSTEM SET BUT NO FREQUENCY CHANNEL FILE [-gf] NOR "
                                                            "GLONASS NAVIGATION FILE [-er] GIVES ITS CHANNELS!"},
        {[](gCPosC& g) { g.isTrpModel = g.ifEstTropo = true, g.TropoInterval = 0.0L; },
         "TROPOSPHERE ESTIMATION INTERVAL [-ti] MUST BE A POSITIVE NUMBER OF SECONDS!"},
        {[](gCPosC& g) { g.isTrpModel = g.ifEstTropo = true, g.TropoInterval = g.TropoShift = 3600.0L; },
         "TROPOSPHERE EPOCH SHIFT [-ti...d] MUST BE SMALLER THAN THE INTERVAL!"},
        {[](gCPosC& g) { g.MaxIter = 101; }, "MAXIMUM NUMBER OF ITERATIONS [-mi] 101 ABOVE 100!"}};
    for (const auto& r : rows) {
        auto c = Valid();
        r.setup(c->gc);
        EXPECT_EXIT(CheckArguments(c->gc), ::testing::ExitedWithCode(1), ErrorRegex(r.msg)) << r.msg;
    }
    // The edges that stay: 100 iterations, a shift just inside the interval.
    auto c = Valid();
    c->gc.MaxIter = 100;
    c->gc.isTrpModel = c->gc.ifEstTropo = true;
    c->gc.TropoInterval = 3600.0L;
    c->gc.TropoShift = -3599.0L;
    EXPECT_EQ(RunChecks(c->gc), "");
}

TEST(CheckArguments, SiteMissingFromTheVmf1FileFallsBackOnTheDefaultsWithAWarningInTheReport) {
    // The file has ESBC's delays but no coefficients: a site it lacks
    // entirely loses both, the listed site only the mapping function.
    const std::string file = orvotest::WriteTemp("site.vmf", "ESBC00DNK zh 1\n 59025 0 2.3\nESBC00DNK zw 1\n 59025 0 0.1\n");
    const std::string zenith = "ZENITH DELAYS (ZH, ZW) FOR POINT OTHR NOT IN FILE " + file + " - TROPOSPHERE MODEL SET TO DEFAULT - SAASTAMOINEN!";
    const struct { const char* point; short model, mapping; Words warnings; } rows[] = {
        {"ESBC00DNK", 4, 0, {"VMF1 COEFFICIENTS (AH, AW) FOR POINT ESBC00DNK NOT IN FILE " + file + " - TROPOSPHERE MAPPING FUNCTION SET TO DEFAULT - NIELL!"}},
        {"OTHR", 0, 0, {zenith, "VMF1 COEFFICIENTS (AH, AW) FOR POINT OTHR NOT IN FILE " + file + " - TROPOSPHERE MAPPING FUNCTION SET TO DEFAULT - NIELL!"}}};
    for (const auto& r : rows) {
        auto c = Valid();
        gCPosC& g = c->gc;
        g.isTrpModel = true, g.TrpModel = 4, g.TrpMappFun = 5;
        g.trpmodel.SetTropModel(4), g.trpmodel.SetMappFunction(5), g.trpmodel.SetFile(file.c_str()), g.trpmodel.ReadFile();
        g.rnxh.mname = r.point;
        Capture out(std::cout);
        CheckTroposphereSite(g);
        ExpectWarnings(out.Text(), r.warnings);
        EXPECT_EQ((std::vector<short>{g.TrpModel, g.TrpMappFun, g.trpmodel.TropM, g.trpmodel.MappF}),
                  (std::vector<short>{r.model, r.mapping, r.model, r.mapping})) << r.point;
    }
}

TEST(CheckArguments, DailyShareAndL4ThresholdsOutOfRange) {
    // The share is tested only under -md; 0 and 100 are inside.
    for (const double share : {150.0, -1.0, 100.001, -0.001, 0.0, 100.0, 50.0})
        for (const bool given : {true, false}) {
            auto c = Valid();
            c->gc.isMinDailyObs = given;
            c->gc.MinDailyObs = share;
            const bool bad = given && (share < 0.0 || share > 100.0);
            ExpectWarnings(RunChecks(c->gc), bad ? Words{"MINIMUM DAILY NUMBER OF DATA MUST BE IN RANGE  0% - 100%: NOT USING THIS PARAMETER!"} : Words{});
            EXPECT_EQ(c->gc.isMinDailyObs, given && !bad) << share;
        }
    // Negative L4 thresholds fall back on 5 cm and 2 cm (the message says
    // 3 cm); zero is a threshold, not an error; without -tc nothing is
    // tested. 1e-18 m: the defaults are the literals 0.05L and 0.02L, whose
    // long double spacing is about 7e-21 m.
    for (const long double t : {-1.0L, 0.0L})
        for (const bool given : {true, false}) {
            auto c = Valid();
            c->gc.isThresL4 = given;
            c->gc.ThresL40 = c->gc.dThresL4 = t;
            const bool bad = given && t < 0.0L;
            ExpectWarnings(RunChecks(c->gc), bad ? Words{"L4 THRESHOLD SET NEGATIVE - USING DEFAULT 5cm!",
                                                         "Delta L4 THRESHOLD SET NEGATIVE - USING DEFAULT 3cm!"} : Words{});
            EXPECT_NEAR_LD(c->gc.ThresL40, bad ? 0.05L : t, 1e-18L);
            EXPECT_NEAR_LD(c->gc.dThresL4, bad ? 0.02L : t, 1e-18L);
        }
}

// Squared ionosphere-free factors a^2, b^2 per system from the published
// frequencies (GPS 1575.42/1227.60 MHz, GLONASS ratio 9/7, Galileo E1/E5b
// 1575.42/1207.14 MHz), worked out independently to 15 digits.
struct Factors { long double a2, b2; };
constexpr Factors kGps{6.48072993069445L, 2.38927437036813L}, kGln{6.4072265625L, 2.3447265625L},
    kGal{5.86597319006578L, 2.02201894169977L};

// Relative 1e-13: the factors above carry 15 significant digits, so their
// rounding is below 1e-14 relative, and a weight squares a ratio (2x).
#define EXPECT_REL(got, want) EXPECT_NEAR_LD((got) / (want), 1.0L, 1e-13L) << #got

// The deviations of the combinations by propagation of uncorrelated errors,
// and the weights as (sig0 / sigma)^2, for the sigmas that `g` holds.
static void ExpectWeights(const gCPosC& g, long double sig0) {
    const long double sC = g.sigC, sP = g.sigP, sL = g.sigL1;
    EXPECT_REL(g.sig0, sig0);
    EXPECT_REL(g.p0C, (sig0 / sC) * (sig0 / sC));
    EXPECT_REL(g.p0P, (sig0 / sP) * (sig0 / sP));
    const struct { Factors f; long double sigPc3, sigPp3, sigL3, p0Pc3, p0Pp3, p0L3; } sys[] = {
        {kGps, g.sigPc3G, g.sigPp3G, g.sigL3G, g.p0Pc3G, g.p0Pp3G, g.p0L3G},
        {kGln, g.sigPc3R, g.sigPp3R, g.sigL3R, g.p0Pc3R, g.p0Pp3R, g.p0L3R},
        {kGal, g.sigPc3E, g.sigPp3E, g.sigL3E, g.p0Pc3E, g.p0Pp3E, g.p0L3E},
    };
    for (const auto& s : sys) {
        const long double vPc3 = s.f.a2 * sC * sC + s.f.b2 * sP * sP, vPp3 = (s.f.a2 + s.f.b2) * sP * sP,
                          vL3 = (s.f.a2 + s.f.b2) * sL * sL;
        EXPECT_REL(s.sigPc3 * s.sigPc3, vPc3);
        EXPECT_REL(s.sigPp3 * s.sigPp3, vPp3);
        EXPECT_REL(s.sigL3 * s.sigL3, vL3);
        EXPECT_REL(s.p0Pc3, sig0 * sig0 / vPc3);
        EXPECT_REL(s.p0Pp3, sig0 * sig0 / vPp3);
        EXPECT_REL(s.p0L3, sig0 * sig0 / vL3);
    }
}

TEST(CheckArgumentsWeights, WeightsAreSquaredSigmaRatiosOfTheCombinations) {
    // Defaults: sigC = sigP = 0.2 m, sigL1 = 2 mm, sig0 = 2 cm without L3;
    // with equal code sigmas both combinations of a system weigh the same:
    // 0.02^2 / (8.87000430106258 * 0.04) for GPS. Phase raises the reference
    // sigma to 5 cm: p0C = (0.05/0.2)^2. Unequal sigmas tell a^2 from b^2: a
    // swap of the two would show.
    auto c = Valid(), l = Valid(), u = Valid();
    l->gc.ifL3 = true;
    u->gc.sigC = 0.3L;
    u->gc.sigP = 0.1L;
    u->gc.sigL1 = 0.003L;
    for (auto* x : {&c, &l, &u}) RunChecks((*x)->gc);
    ExpectWeights(c->gc, 0.02L);
    EXPECT_REL(c->gc.p0Pc3G, 0.0004L / (8.87000430106258L * 0.04L));
    EXPECT_REL(c->gc.p0C, 0.01L);
    ExpectWeights(l->gc, 0.05L);
    EXPECT_REL(l->gc.p0C, 0.0625L);
    ExpectWeights(u->gc, 0.02L);
}

TEST(CheckArgumentsWeights, IonoFreeSigmaKeepsGeometryAndRemovesIonosphere) {
    // a - b = 1 keeps the geometric range; a / b = (f1/f2)^2 cancels a
    // first-order ionosphere delay, which scales with 1/f^2. 1e-15: a few
    // units of long double round-off on numbers near 2.5; 1e-13: kGps.a2 is
    // quoted to 15 significant digits of a number near 6.5.
    const long double f1 = 1575.42e6L, f2 = 1227.60e6L;
    const long double a = IonoFreeSigma(1.0L, 0.0L, f1, f2), b = IonoFreeSigma(0.0L, 1.0L, f1, f2);
    EXPECT_NEAR_LD(a - b, 1.0L, 1e-15L);
    EXPECT_NEAR_LD(a / b - (f1 / f2) * (f1 / f2), 0.0L, 1e-15L);
    EXPECT_NEAR_LD(a * a, kGps.a2, 1e-13L);
}
