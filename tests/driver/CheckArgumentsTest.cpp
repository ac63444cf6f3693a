#include "driver/CheckArguments.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

#include "ContextFixture.h"
#include "TestSupport.h"
#include "numerics/NearLD.h"

using drivertest::Context;
using orvotest::Data;
using orvotest::TempDir;

namespace {

using FileMember = char (gCPosC::*)[gCPosCns::FileNameSize];

const std::string kObs = Data("esbc-2020-177/esbc1770.20o");
const std::string kSp3 = Data("esbc-2020-177/GRG0MGXFIN_20201770000_01D_15M_ORB.SP3");
const std::string kNavG = Data("esbc-2020-177/esbc1770.20n");
const std::string kNavR = Data("esbc-2020-177/esbc1770.20g");

// A name in a fresh scratch folder: it cannot open.
std::string Missing() { return TempDir() + "/no_such_file.dat"; }

void SetName(gCPosC& gc, FileMember m, const std::string& name)
{
    ASSERT_LT(name.size(), static_cast<size_t>(gCPosCns::FileNameSize));
    std::strcpy(gc.*m, name.c_str());
}

// A context that passes every check without a warning: RINEX and precise
// orbits of the real day, GPS only, static, C1 only.
std::unique_ptr<Context> Valid()
{
    auto c = std::make_unique<Context>();
    SetName(c->gc, &gCPosC::rnxfile, kObs);
    c->gc.isRnx = true;
    SetName(c->gc, &gCPosC::sp3file, kSp3);
    c->gc.isPEph = true;
    c->gc.isGPS = true;
    c->gc.ifEstSta = true;
    c->gc.ifC1 = true;
    return c;
}

// Everything written on the error stream while it lives.
class ErrCapture {
public:
    ErrCapture() : old_(std::cerr.rdbuf(buf_.rdbuf())) {}
    ~ErrCapture() { std::cerr.rdbuf(old_); }
    std::string Text() const { return buf_.str(); }

private:
    std::ostringstream buf_;
    std::streambuf* old_;
};

std::string RunChecks(gCPosC& gc)
{
    ErrCapture cap;
    CheckArguments(gc);
    return cap.Text();
}

int Count(const std::string& text, const std::string& what)
{
    int n = 0;
    for (size_t p = text.find(what); p != std::string::npos; p = text.find(what, p + 1)) ++n;
    return n;
}

std::string Warning(const std::string& msg) { return "#### Orvo: Warning -> " + msg + " ####"; }

int Warnings(const std::string& text) { return Count(text, "#### Orvo: Warning -> "); }

// The framed error as an extended regular expression.
std::string ErrorRegex(const std::string& msg)
{
    std::string out = "\\*\\*\\*\\* Orvo: Error -> ";
    for (char ch : msg) {
        if (std::strchr("\\^$.|?*+()[]{}", ch)) out += '\\';
        out += ch;
    }
    return out + " \\*\\*\\*\\*";
}

}  // namespace

TEST(CheckArguments, ValidSettingPassesSilently)
{
    auto c = Valid();
    EXPECT_EQ(RunChecks(c->gc), "");
    EXPECT_TRUE(c->gc.isGPS);
    EXPECT_TRUE(c->gc.isPEph);
}

TEST(CheckArguments, VerboseLogOpensWithTheGroupHeadsInOrder)
{
    auto c = Valid();
    c->gc.verbose = true;
    const std::string log = RunChecks(c->gc);
    const char* heads[] = {"CHECKING INPUT ARGUMETNS!", "SATELLITE SYSTEMS!", "RINEX file!",
                           "Ephemeris files!", "Ionosphere files!",
                           "ANTEX - antenna phase variation file!",
                           "Differential Code Biases files!", "A-priori coordinate file!",
                           "GLONASS frequency channel file!", "Estimation type!!",
                           "Observations in processing!!"};
    EXPECT_EQ(log.rfind("Orvo::CheckArguments(): CHECKING INPUT ARGUMETNS!\n", 0), 0u);
    size_t at = 0;
    for (size_t i = 1; i < sizeof heads / sizeof heads[0]; ++i) {
        const std::string line = std::string("Orvo::CheckArguments():         ") + heads[i] + "\n";
        const size_t p = log.find(line, at);
        ASSERT_NE(p, std::string::npos) << heads[i];
        at = p + line.size();
    }
}

// ---- Rows that end the run ----

TEST(CheckArgumentsDeath, MissingMustHaveInputsStop)
{
    {
        auto c = Valid();
        c->gc.rnxfile[0] = '\0';
        EXPECT_EXIT(CheckArguments(c->gc), ::testing::ExitedWithCode(1),
                    ErrorRegex("NO RINEX (OBSERVATION) FILE SET!"));
    }
    {
        auto c = Valid();
        SetName(c->gc, &gCPosC::rnxfile, Missing());
        EXPECT_EXIT(CheckArguments(c->gc), ::testing::ExitedWithCode(1),
                    ErrorRegex("RINEX (OBSERVATION) FILE CAN NOT BE OPENED!"));
    }
    {
        auto c = Valid();
        c->gc.sp3file[0] = '\0';
        EXPECT_EXIT(CheckArguments(c->gc), ::testing::ExitedWithCode(1),
                    ErrorRegex("NO EPHEMERIS FILE SET!"));
    }
}

TEST(CheckArgumentsDeath, NamedFileThatDoesNotOpenStops)
{
    struct Row {
        FileMember file;
        bool gCPosC::*flag;
        const char* msg;
    };
    const Row rows[] = {
        {&gCPosC::gnavfile, &gCPosC::isGPSnav, "GPS NAVIGATION FILE CAN NOT BE OPENED!"},
        {&gCPosC::rnavfile, &gCPosC::isGLNnav, "GLONAS NAVIGATION FILE CAN NOT BE OPENED!"},
        {&gCPosC::enavfile, &gCPosC::isGALnav, "GALILEO NAVIGATION FILE CAN NOT BE OPENED!"},
        {&gCPosC::sp3file, &gCPosC::isPEph,
         "MULTI-GNSS PRECISE EPHEMERIS FILE CAN NOT BE OPENED!"},
        {&gCPosC::ionxfile, &gCPosC::isIonx, "IONEX IONOSPHERE FILE CAN NOT BE OPENED!"},
        {&gCPosC::atxfile, &gCPosC::isAtx, "ANTEX FILE CAN NOT BE OPENED!"},
        {&gCPosC::dcbp1p2file, &gCPosC::isP1P2, "DCB FILE - P1P2 CAN NOT BE OPENED!"},
        {&gCPosC::dcbp1c1file, &gCPosC::isP1C1, "DCB FILE - P1C1 CAN NOT BE OPENED!"},
        {&gCPosC::dcbp2c2file, &gCPosC::isP2C2, "DCB FILE - P2C2 CAN NOT BE OPENED!"},
        {&gCPosC::mydbcfile, &gCPosC::isMyDCB, "DCB FILE - Meskal RESULT CAN NOT BE OPENED!"},
        {&gCPosC::glnfreqch, &gCPosC::isGLNfrch,
         "GLONASS FREQUENCY CHANNEL FILE CAN NOT BE OPENED!"},
    };
    for (const Row& r : rows) {
        auto c = Valid();
        SetName(c->gc, r.file, Missing());
        c->gc.*r.flag = true;
        EXPECT_EXIT(CheckArguments(c->gc), ::testing::ExitedWithCode(1), ErrorRegex(r.msg))
            << r.msg;
    }
}

TEST(CheckArgumentsDeath, TwoIonosphereModelsStop)
{
    // Each pair of the three models; the observation file stands in for a
    // model file, as only its opening is tested here.
    const int pairs[3][3] = {{1, 1, 0}, {1, 0, 1}, {0, 1, 1}};
    for (const auto& p : pairs) {
        auto c = Valid();
        if (p[0]) { SetName(c->gc, &gCPosC::ionkfile, kObs); c->gc.isKlob = true; }
        if (p[1]) { SetName(c->gc, &gCPosC::ionxfile, kObs); c->gc.isIonx = true; }
        if (p[2]) { SetName(c->gc, &gCPosC::myionfile, kObs); c->gc.isMyion = true; }
        EXPECT_EXIT(CheckArguments(c->gc), ::testing::ExitedWithCode(1),
                    ErrorRegex("MULTIPLE IONOSPHERE MODELS SET IN PROCESSING!"));
    }
}

TEST(CheckArguments, DroppedIonosphereFileLeavesOneModel)
{
    // The Klobuchar file fails first, so the IONEX model stands alone.
    auto c = Valid();
    SetName(c->gc, &gCPosC::ionkfile, Missing());
    c->gc.isKlob = true;
    SetName(c->gc, &gCPosC::ionxfile, kObs);
    c->gc.isIonx = true;
    const std::string err = RunChecks(c->gc);
    EXPECT_EQ(Count(err, Warning("KLOBUCHAR IONOSPHERE FILE CAN NOT BE OPENED!")), 1);
    EXPECT_FALSE(c->gc.isKlob);
    EXPECT_TRUE(c->gc.isIonx);
}

// ---- Rows that warn and go on ----

TEST(CheckArguments, NoSystemSetsAllThree)
{
    auto c = Valid();
    c->gc.isGPS = false;
    const std::string err = RunChecks(c->gc);
    EXPECT_EQ(Count(err, Warning("NO SATELLITE SYSTEM SET [-cs[G|R|E]] - SETTING ALL!")), 1);
    EXPECT_EQ(Warnings(err), 1);
    // The precise orbits serve all three, so none is dropped afterwards.
    EXPECT_TRUE(c->gc.isGPS && c->gc.isGLN && c->gc.isGAL);
}

TEST(CheckArguments, PreciseOrbitsOverruleNavigationFiles)
{
    auto c = Valid();
    SetName(c->gc, &gCPosC::gnavfile, kNavG);
    SetName(c->gc, &gCPosC::rnavfile, kNavR);
    c->gc.isGPSnav = c->gc.isGLNnav = true;
    c->gc.isGLN = true;
    const std::string err = RunChecks(c->gc);
    EXPECT_EQ(Count(err, Warning("BOTH PRECISE EPHEMERIS AND (SOME) NAVIGATION FILES FOR SET "
                                 "-> USING ONLY PRECISE EPHEMERIS FILE!")),
              1);
    EXPECT_EQ(Warnings(err), 1);
    EXPECT_FALSE(c->gc.isGPSnav || c->gc.isGLNnav || c->gc.isGALnav);
    // Systems stay: the precise file covers them.
    EXPECT_TRUE(c->gc.isGPS && c->gc.isGLN);
}

TEST(CheckArguments, SystemWithoutEphemerisIsDroppedWithItsBiasUnknowns)
{
    // Only a GPS navigation file for all three systems: GLONASS and Galileo
    // go, and their code bias unknowns with them, while GPS keeps its own.
    auto c = Valid();
    c->gc.sp3file[0] = '\0';
    c->gc.isPEph = false;
    SetName(c->gc, &gCPosC::gnavfile, kNavG);
    c->gc.isGPSnav = true;
    c->gc.isGPS = c->gc.isGLN = c->gc.isGAL = true;
    c->gc.isGPSxdcb = c->gc.isGLNxdcb = c->gc.isGALxdcb = true;
    const std::string err = RunChecks(c->gc);
    for (const char* sys : {"GLONASS", "GALILEO"}) {
        const std::string s(sys);
        EXPECT_EQ(Count(err, Warning(s + " SYSTEM SET BUT NO EPHEMERIS FOR " + s
                                     + " SET (PRECISE AND NAVIGATION) - NOT PROCESSING " + s
                                     + " SYSTEM!")),
                  1)
            << sys;
        EXPECT_EQ(Count(err, Warning(s + " OBSERVATIONS WILL NOT BE PROCESSED -> " + s
                                     + " DCB VALUES UNKONWNS UNSET!")),
                  1)
            << sys;
    }
    EXPECT_EQ(Warnings(err), 4);
    EXPECT_TRUE(c->gc.isGPS);
    EXPECT_FALSE(c->gc.isGLN || c->gc.isGAL);
    EXPECT_TRUE(c->gc.isGPSxdcb);
    EXPECT_FALSE(c->gc.isGLNxdcb || c->gc.isGALxdcb);
}

TEST(CheckArguments, GpsWithoutEphemerisIsDroppedWithItsBiasUnknowns)
{
    auto c = Valid();
    c->gc.sp3file[0] = '\0';
    c->gc.isPEph = false;
    SetName(c->gc, &gCPosC::rnavfile, kNavR);
    c->gc.isGLNnav = true;
    c->gc.isGPS = c->gc.isGLN = true;
    c->gc.isGPSxdcb = true;
    const std::string err = RunChecks(c->gc);
    EXPECT_EQ(Count(err, Warning("GPS SYSTEM SET BUT NO EPHEMERIS FOR GPS SET (PRECISE AND "
                                 "NAVIGATION) - NOT PROCESSING GPS SYSTEM!")),
              1);
    EXPECT_EQ(Count(err, Warning("GPS OBSERVATIONS WILL NOT BE PROCESSED -> GPS DCB VALUES "
                                 "UNKONWNS UNSET!")),
              1);
    EXPECT_EQ(Warnings(err), 2);
    EXPECT_FALSE(c->gc.isGPS);
    EXPECT_FALSE(c->gc.isGPSxdcb);
    EXPECT_TRUE(c->gc.isGLN);
}

TEST(CheckArguments, OptionalFileThatDoesNotOpenIsDropped)
{
    struct Row {
        FileMember file;
        bool gCPosC::*flag;
        const char* msg;
    };
    const Row rows[] = {
        {&gCPosC::pclkfile, &gCPosC::isPclk,
         "PRECISE MULTI-GNSS SATELLITE CLOCK FILE CAN NOT BE OPENED!"},
        {&gCPosC::clkFName, &gCPosC::isClkErr,
         "APRIORI RECEIVER CLOCK ERROR FILE CAN NOT BE OPENED!"},
        {&gCPosC::scrxfile, &gCPosC::isSCrx,
         "GPS AND GLONASS SATELLITE PROBLEM FILE CAN NOT BE OPENED!"},
        {&gCPosC::mp1file, &gCPosC::isMP1, "MULTIPATH FILE (P1) CAN NOT BE OPENED!"},
        {&gCPosC::mp2file, &gCPosC::isMP2, "MULTIPATH FILE (P2) CAN NOT BE OPENED!"},
        {&gCPosC::ionkfile, &gCPosC::isKlob, "KLOBUCHAR IONOSPHERE FILE CAN NOT BE OPENED!"},
        {&gCPosC::myionfile, &gCPosC::isMyion, "MYIONO IONOSPHERE FILE CAN NOT BE OPENED!"},
        {&gCPosC::ptidefile, &gCPosC::isPTide,
         "EARTH ROTATION PARAMETERS FILE CAN NOT BE OPENED!"},
        {&gCPosC::otidefile, &gCPosC::isOTide, "OCEAN LOADING TIDE FILE (BLQ) CAN NOT BE OPENED!"},
        {&gCPosC::aprcrdfile, &gCPosC::isAprCrd,
         "APRIORI COORDINATE FILE CAN NOT BE OPENED - USING RINEX VALUES!"},
    };
    for (const Row& r : rows) {
        auto c = Valid();
        SetName(c->gc, r.file, Missing());
        c->gc.*r.flag = true;
        const std::string err = RunChecks(c->gc);
        EXPECT_EQ(Count(err, Warning(r.msg)), 1) << r.msg;
        EXPECT_EQ(Warnings(err), 1) << r.msg;
        EXPECT_FALSE(c->gc.*r.flag) << r.msg;
    }
    // The same files that open are kept.
    for (const Row& r : rows) {
        auto c = Valid();
        SetName(c->gc, r.file, kObs);
        c->gc.*r.flag = true;
        EXPECT_EQ(RunChecks(c->gc), "") << r.msg;
        EXPECT_TRUE(c->gc.*r.flag) << r.msg;
    }
}

TEST(CheckArguments, FileTestRunsOnlyOnANamedFile)
{
    // A flag without a name is left to the reader; no test of the empty name.
    auto c = Valid();
    c->gc.isPclk = c->gc.isAtx = c->gc.isGLNfrch = true;
    EXPECT_EQ(RunChecks(c->gc), "");
    EXPECT_TRUE(c->gc.isPclk && c->gc.isAtx && c->gc.isGLNfrch);
}

TEST(CheckArguments, LostTroposphereFileResetsOnlyTheCodesThatNeedIt)
{
    const std::string modelReset = Warning("TROPOSPHERE MODEL SET TO DEFAULT - SAASTAMOINEN!");
    const std::string mappReset = Warning("TROPOSPHERE MAPPING FUNCTION SET TO DEFAULT - NIELL!");
    struct Row {
        FileMember file;
        bool gCPosC::*flag;
        const char* msg;
        short model, mapping;  // codes that live on this file
    };
    const Row rows[] = {
        {&gCPosC::vmf1file, &gCPosC::isVMF1file,
         "VMF1 AND/OR VIENNA TROPOSPHERE MODEL FILE CAN NOT BE OPENED!", 4, 5},
        {&gCPosC::gpt2file, &gCPosC::isGPT2file, "GPT2 TROPOSPHERE MODEL FILE CAN NOT BE OPENED!",
         3, 6},
    };
    for (const Row& r : rows) {
        // Both codes on the lost file: both fall back.
        auto c = Valid();
        SetName(c->gc, r.file, Missing());
        c->gc.*r.flag = true;
        c->gc.TrpModel = r.model;
        c->gc.TrpMappFun = r.mapping;
        std::string err = RunChecks(c->gc);
        EXPECT_EQ(Count(err, Warning(r.msg)), 1);
        EXPECT_EQ(Count(err, modelReset), 1);
        EXPECT_EQ(Count(err, mappReset), 1);
        EXPECT_EQ(Warnings(err), 3);
        EXPECT_FALSE(c->gc.*r.flag);
        EXPECT_EQ(c->gc.TrpModel, 0);
        EXPECT_EQ(c->gc.TrpMappFun, 0);

        // File-free codes (Hopfield, Chao) stay as chosen.
        auto d = Valid();
        SetName(d->gc, r.file, Missing());
        d->gc.*r.flag = true;
        d->gc.TrpModel = 1;
        d->gc.TrpMappFun = 1;
        err = RunChecks(d->gc);
        EXPECT_EQ(Warnings(err), 1);
        EXPECT_EQ(d->gc.TrpModel, 1);
        EXPECT_EQ(d->gc.TrpMappFun, 1);
    }
}

TEST(CheckArguments, EstimationTypeAndObservationListDefaults)
{
    auto c = Valid();
    c->gc.ifEstSta = false;
    c->gc.ifC1 = false;
    const std::string err = RunChecks(c->gc);
    EXPECT_EQ(Count(err, Warning("TYPE OF ESTIMATION IS NOT SET [-x option]: USING DEFAULT "
                                 "SETTING - STATIC ESTIMATION!")),
              1);
    EXPECT_EQ(Count(err, Warning("LIST OF OBSERVATIONS IS NOT SET [-l option]: USING ONLY C1 "
                                 "OBSERVATIONS!")),
              1);
    EXPECT_EQ(Warnings(err), 2);
    EXPECT_TRUE(c->gc.ifEstSta);
    EXPECT_FALSE(c->gc.ifEstKin);
    EXPECT_TRUE(c->gc.ifC1);
    EXPECT_FALSE(c->gc.ifP1 || c->gc.ifP2 || c->gc.ifPc3 || c->gc.ifPp3 || c->gc.ifL3);

    // Kinematic alone or L3 alone is a choice, not a gap.
    auto d = Valid();
    d->gc.ifEstSta = false;
    d->gc.ifEstKin = true;
    d->gc.ifC1 = false;
    d->gc.ifL3 = true;
    EXPECT_EQ(RunChecks(d->gc), "");
    EXPECT_FALSE(d->gc.ifEstSta);
    EXPECT_FALSE(d->gc.ifC1);
}

TEST(CheckArguments, TroposphereEstimationNeedsAModelAndGradientsNeedTheDelay)
{
    const std::string noModel = Warning("TROPOSPHERE ESTIMATION SET WITHOUT TROPOSPHERE MODEL - "
                                        "WILL NOT ESTIMATE TROPOSPHERE PARAMETERS!");
    const std::string gradOnly =
        Warning("ONLY TROPOSPHERE GRADIENTS SET FOR ESTIMATION - ABORTING!");
    const std::string negInt = Warning("NUMBER OF TROPOSPHERE GRADIENT INTERVALS MUST BE "
                                       "POZITIVE NUMBER - SETTING TO 1!");
    {
        // -ti and -tg without -tm: the delay goes, and the gradients after it.
        auto c = Valid();
        c->gc.ifEstTropo = c->gc.ifEstTropoGrad = true;
        const std::string err = RunChecks(c->gc);
        EXPECT_EQ(Count(err, noModel), 1);
        EXPECT_EQ(Count(err, gradOnly), 1);
        EXPECT_LT(err.find(noModel), err.find(gradOnly));
        EXPECT_FALSE(c->gc.ifEstTropo || c->gc.ifEstTropoGrad);
    }
    {
        // Gradients alone: warned and dropped, and the run goes on.
        auto c = Valid();
        c->gc.ifEstTropoGrad = true;
        c->gc.nTropoGradInt = -3;
        const std::string err = RunChecks(c->gc);
        EXPECT_EQ(Count(err, gradOnly), 1);
        EXPECT_EQ(Warnings(err), 1);  // the interval test reads the cleared flag
        EXPECT_FALSE(c->gc.ifEstTropoGrad);
    }
    {
        auto c = Valid();
        c->gc.isTrpModel = c->gc.ifEstTropo = c->gc.ifEstTropoGrad = true;
        c->gc.nTropoGradInt = -2;
        const std::string err = RunChecks(c->gc);
        EXPECT_EQ(Count(err, negInt), 1);
        EXPECT_EQ(Warnings(err), 1);
        EXPECT_EQ(c->gc.nTropoGradInt, 1);
        EXPECT_TRUE(c->gc.ifEstTropo && c->gc.ifEstTropoGrad);
    }
    {
        // 0 means one gradient interval per delay interval and is valid.
        auto c = Valid();
        c->gc.isTrpModel = c->gc.ifEstTropo = c->gc.ifEstTropoGrad = true;
        c->gc.nTropoGradInt = 0;
        EXPECT_EQ(RunChecks(c->gc), "");
        EXPECT_EQ(c->gc.nTropoGradInt, 0);
    }
}

TEST(CheckArguments, OutputFilesWithoutTheirEstimateAreDropped)
{
    auto c = Valid();
    c->gc.isOutDCBFile = c->gc.isOutTropFile = true;
    const std::string err = RunChecks(c->gc);
    EXPECT_EQ(Count(err, Warning("DCB ESTIMATION IS NOT SET: NO DCB OUTPUT FILE WILL BE "
                                 "WRITTEN!")),
              1);
    EXPECT_EQ(Count(err, Warning("ESTIMATION OF TROPOSPHERE DELAYS IS NOT SET: NO TROPOSPHERE "
                                 "OUTPUT FILE WILL BE WRITTEN!")),
              1);
    EXPECT_EQ(Warnings(err), 2);
    EXPECT_FALSE(c->gc.isOutDCBFile || c->gc.isOutTropFile);

    for (bool gCPosC::*xdcb : {&gCPosC::isGPSxdcb, &gCPosC::isGLNxdcb, &gCPosC::isGALxdcb}) {
        auto d = Valid();
        d->gc.isGLN = d->gc.isGAL = true;  // the precise orbits cover all three
        d->gc.isOutDCBFile = true;
        d->gc.*xdcb = true;
        d->gc.isTrpModel = d->gc.ifEstTropo = d->gc.isOutTropFile = true;
        EXPECT_EQ(RunChecks(d->gc), "");
        EXPECT_TRUE(d->gc.isOutDCBFile && d->gc.isOutTropFile);
    }
}

TEST(CheckArguments, DailyShareOutsideZeroToHundredIsSwitchedOff)
{
    const std::string msg = Warning("MINIMUM DAILY NUMBER OF DATA MUST BE IN RANGE  0% - 100%: "
                                    "NOT USING THIS PARAMETER!");
    for (double share : {150.0, -1.0, 100.001, -0.001}) {
        auto c = Valid();
        c->gc.isMinDailyObs = true;
        c->gc.MinDailyObs = share;
        const std::string err = RunChecks(c->gc);
        EXPECT_EQ(Count(err, msg), 1) << share;
        EXPECT_EQ(Warnings(err), 1) << share;
        EXPECT_FALSE(c->gc.isMinDailyObs) << share;
    }
    for (double share : {0.0, 100.0, 50.0}) {
        auto c = Valid();
        c->gc.isMinDailyObs = true;
        c->gc.MinDailyObs = share;
        EXPECT_EQ(RunChecks(c->gc), "") << share;
        EXPECT_TRUE(c->gc.isMinDailyObs) << share;
    }
    // Without -md the value is not looked at.
    auto c = Valid();
    c->gc.MinDailyObs = 150.0;
    EXPECT_EQ(RunChecks(c->gc), "");
}

TEST(CheckArguments, NegativeL4ThresholdsFallBackOnTheDefaults)
{
    auto c = Valid();
    c->gc.isThresL4 = true;
    c->gc.ThresL40 = -1.0L;
    c->gc.dThresL4 = -1.0L;
    const std::string err = RunChecks(c->gc);
    EXPECT_EQ(Count(err, Warning("L4 THRESHOLD SET NEGATIVE - USING DEFAULT 5cm!")), 1);
    EXPECT_EQ(Count(err, Warning("Delta L4 THRESHOLD SET NEGATIVE - USING DEFAULT 3cm!")), 1);
    EXPECT_EQ(Warnings(err), 2);
    // The values of a new context: 5 cm and 2 cm (the message says 3 cm).
    Context fresh;
    EXPECT_EQ(c->gc.ThresL40, fresh.gc.ThresL40);
    EXPECT_EQ(c->gc.dThresL4, fresh.gc.dThresL4);
    // 1e-18 m: the defaults are the literals 0.05L and 0.02L, whose long
    // double spacing is about 7e-21 m.
    EXPECT_NEAR_LD(c->gc.ThresL40, 0.05L, 1e-18L);
    EXPECT_NEAR_LD(c->gc.dThresL4, 0.02L, 1e-18L);

    // Zero is a threshold, not an error; without -tc nothing is tested.
    auto d = Valid();
    d->gc.isThresL4 = true;
    d->gc.ThresL40 = 0.0L;
    d->gc.dThresL4 = 0.0L;
    EXPECT_EQ(RunChecks(d->gc), "");
    EXPECT_EQ(d->gc.ThresL40, 0.0L);
    auto e = Valid();
    e->gc.ThresL40 = -1.0L;
    EXPECT_EQ(RunChecks(e->gc), "");
    EXPECT_EQ(e->gc.ThresL40, -1.0L);
}

// ---- Derived weights ----

namespace {

// Squared ionosphere-free factors a^2, b^2 per system from the published
// frequencies (GPS 1575.42/1227.60 MHz, GLONASS ratio 9/7, Galileo E1/E5b
// 1575.42/1207.14 MHz), worked out independently to 15 digits.
struct Factors {
    long double a2, b2;
};
constexpr Factors kGps{6.48072993069445L, 2.38927437036813L};
constexpr Factors kGln{6.4072265625L, 2.3447265625L};
constexpr Factors kGal{5.86597319006578L, 2.02201894169977L};

// Relative 1e-13: the factors above carry 15 significant digits, so their
// rounding is below 1e-14 relative, and a weight squares a ratio (2x).
constexpr long double WeightRelTol = 1e-13L;

void ExpectRel(long double got, long double want, const char* what)
{
    EXPECT_NEAR_LD(got / want, 1.0L, WeightRelTol) << what;
}

void ExpectWeights(const gCPosC& g, long double sig0)
{
    const long double sC = g.sigC, sP = g.sigP, sL = g.sigL1;
    ExpectRel(g.sig0, sig0, "sig0");
    ExpectRel(g.p0C, (sig0 / sC) * (sig0 / sC), "p0C");
    ExpectRel(g.p0P, (sig0 / sP) * (sig0 / sP), "p0P");
    struct Sys {
        Factors f;
        long double sigPc3, sigPp3, sigL3, p0Pc3, p0Pp3, p0L3;
        const char* name;
    };
    const Sys sys[] = {
        {kGps, g.sigPc3G, g.sigPp3G, g.sigL3G, g.p0Pc3G, g.p0Pp3G, g.p0L3G, "G"},
        {kGln, g.sigPc3R, g.sigPp3R, g.sigL3R, g.p0Pc3R, g.p0Pp3R, g.p0L3R, "R"},
        {kGal, g.sigPc3E, g.sigPp3E, g.sigL3E, g.p0Pc3E, g.p0Pp3E, g.p0L3E, "E"},
    };
    for (const Sys& s : sys) {
        const long double vPc3 = s.f.a2 * sC * sC + s.f.b2 * sP * sP;
        const long double vPp3 = (s.f.a2 + s.f.b2) * sP * sP;
        const long double vL3 = (s.f.a2 + s.f.b2) * sL * sL;
        ExpectRel(s.sigPc3 * s.sigPc3, vPc3, s.name);
        ExpectRel(s.sigPp3 * s.sigPp3, vPp3, s.name);
        ExpectRel(s.sigL3 * s.sigL3, vL3, s.name);
        ExpectRel(s.p0Pc3, sig0 * sig0 / vPc3, s.name);
        ExpectRel(s.p0Pp3, sig0 * sig0 / vPp3, s.name);
        ExpectRel(s.p0L3, sig0 * sig0 / vL3, s.name);
    }
}

}  // namespace

TEST(CheckArgumentsWeights, BaseWeightsAreSquaredSigmaRatios)
{
    // Defaults: sigC = sigP = 0.2 m, sigL1 = 2 mm, sig0 = 2 cm without L3.
    auto c = Valid();
    RunChecks(c->gc);
    ExpectWeights(c->gc, 0.02L);
    // With equal code sigmas both combinations of a system weigh the same:
    // 0.02^2 / (8.87000430106258 * 0.04) for GPS.
    ExpectRel(c->gc.p0Pc3G, 0.0004L / (8.87000430106258L * 0.04L), "p0Pc3G by hand");
    ExpectRel(c->gc.p0C, 0.01L, "p0C by hand");
}

TEST(CheckArgumentsWeights, PhaseRaisesTheReferenceSigma)
{
    auto c = Valid();
    c->gc.ifL3 = true;
    RunChecks(c->gc);
    ExpectWeights(c->gc, 0.05L);
    ExpectRel(c->gc.p0C, 0.0625L, "p0C = (0.05/0.2)^2");
}

TEST(CheckArgumentsWeights, UnequalCodeSigmasWeighTheFirstCarrierByASquared)
{
    // Unequal sigmas tell a^2 from b^2: a swap of the two would show here.
    auto c = Valid();
    c->gc.sigC = 0.3L;
    c->gc.sigP = 0.1L;
    c->gc.sigL1 = 0.003L;
    RunChecks(c->gc);
    ExpectWeights(c->gc, 0.02L);
}

TEST(CheckArgumentsWeights, IonoFreeSigmaKeepsGeometryAndRemovesIonosphere)
{
    // a - b = 1 keeps the geometric range; a / b = (f1/f2)^2 cancels a
    // first-order ionosphere delay, which scales with 1/f^2.
    const long double f1 = 1575.42e6L, f2 = 1227.60e6L;
    const long double a = IonoFreeSigma(1.0L, 0.0L, f1, f2);
    const long double b = IonoFreeSigma(0.0L, 1.0L, f1, f2);
    // 1e-15: a few units of long double round-off on numbers near 2.5.
    constexpr long double FactorTol = 1e-15L;
    EXPECT_NEAR_LD(a - b, 1.0L, FactorTol);
    EXPECT_NEAR_LD(a / b - (f1 / f2) * (f1 / f2), 0.0L, FactorTol);
    // 1e-13: kGps.a2 is quoted to 15 significant digits of a number near 6.5.
    EXPECT_NEAR_LD(a * a, kGps.a2, 1e-13L);
}
