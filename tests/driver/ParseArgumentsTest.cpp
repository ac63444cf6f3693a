#include "driver/ParseArguments.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <iostream>
#include <memory>

#include "ContextFixture.h"
#include "TestSupport.h"
#include "geodesy/TimeConverse.h"
#include "numerics/NearLD.h"

using drivertest::Context;
using drivertest::Parse;

namespace {

// Each test starts from the defaults of a new context.
std::unique_ptr<Context> Fresh() { return std::make_unique<Context>(); }

// Values that pass through atof are compared with the same decimal text
// converted by the compiler; 1e-12 covers the last bit of a double.
constexpr double ParseTol = 1e-12;

struct FileOption {
    const char* arg;
    char (gCPosC::*name)[gCPosCns::FileNameSize];
    bool gCPosC::*flag;
    const char* expected;
};

// Every option that takes a file name, in each spelling its case rule allows.
const FileOption fileOptions[] = {
    {"-rwtzr0100.10o", &gCPosC::rnxfile, &gCPosC::isRnx, "wtzr0100.10o"},
    {"-Rx.o", &gCPosC::rnxfile, &gCPosC::isRnx, "x.o"},
    {"-egbrdc.n", &gCPosC::gnavfile, &gCPosC::isGPSnav, "brdc.n"},
    {"-eRbrdc.g", &gCPosC::rnavfile, &gCPosC::isGLNnav, "brdc.g"},
    {"-Eebrdc.l", &gCPosC::enavfile, &gCPosC::isGALnav, "brdc.l"},
    {"-EPigs.sp3", &gCPosC::sp3file, &gCPosC::isPEph, "igs.sp3"},
    {"-ecigs.clk", &gCPosC::pclkfile, &gCPosC::isPclk, "igs.clk"},
    {"-eoigs.erp", &gCPosC::ptidefile, &gCPosC::isPTide, "igs.erp"},
    {"-icrec.clk", &gCPosC::clkFName, &gCPosC::isClkErr, "rec.clk"},
    {"-SXsat.crx", &gCPosC::scrxfile, &gCPosC::isSCrx, "sat.crx"},
    {"-mp1a.mp1", &gCPosC::mp1file, &gCPosC::isMP1, "a.mp1"},
    {"-MP2a.mp2", &gCPosC::mp2file, &gCPosC::isMP2, "a.mp2"},
    {"-ikklob.n", &gCPosC::ionkfile, &gCPosC::isKlob, "klob.n"},
    {"-Iicodg.i", &gCPosC::ionxfile, &gCPosC::isIonx, "codg.i"},
    {"-iMmy.ion", &gCPosC::myionfile, &gCPosC::isMyion, "my.ion"},
    {"-pvigs14.atx", &gCPosC::atxfile, &gCPosC::isAtx, "igs14.atx"},
    {"-cb1p1p2.dcb", &gCPosC::dcbp1p2file, &gCPosC::isP1P2, "p1p2.dcb"},
    {"-CB2p1c1.dcb", &gCPosC::dcbp1c1file, &gCPosC::isP1C1, "p1c1.dcb"},
    {"-cb3p2c2.dcb", &gCPosC::dcbp2c2file, &gCPosC::isP2C2, "p2c2.dcb"},
    {"-cbMmy.dcb", &gCPosC::mydbcfile, &gCPosC::isMyDCB, "my.dcb"},
    {"-ctrec.trk", &gCPosC::rctrackfile, &gCPosC::isRCodTrc, "rec.trk"},
    {"-GFgln.frq", &gCPosC::glnfreqch, &gCPosC::isGLNfrch, "gln.frq"},
    {"-acapr.crd", &gCPosC::aprcrdfile, &gCPosC::isAprCrd, "apr.crd"},
    {"-gpkkin.dat", &gCPosC::gnuplotKin, &gCPosC::isGNUPlotKin, "kin.dat"},
    {"-GPsstat.dat", &gCPosC::gnuplotStat, &gCPosC::isGNUPlotStat, "stat.dat"},
    {"-spsky.dat", &gCPosC::skyplotfile, &gCPosC::isSkyPlot, "sky.dat"},
    {"-pcosz", &gCPosC::prcorrfile, &gCPosC::isPRCorr, "osz"},
    {"-CFout.clk", &gCPosC::clkfile, &gCPosC::isClkFile, "out.clk"},
    {"-oddcb.out", &gCPosC::estdcbfile, &gCPosC::isOutDCBFile, "dcb.out"},
    {"-Ottrop.out", &gCPosC::esttropfile, &gCPosC::isOutTropFile, "trop.out"},
    {"-OTtrope.out", &gCPosC::esttropephfile, &gCPosC::isOutTropEphFile, "trope.out"},
    {"-VMvmf1.grd", &gCPosC::vmf1file, &gCPosC::isVMF1file, "vmf1.grd"},
    {"-G2gpt2.grd", &gCPosC::gpt2file, &gCPosC::isGPT2file, "gpt2.grd"},
    {"-bqsite.blq", &gCPosC::otidefile, &gCPosC::isOTide, "site.blq"},
    {"-FPres.out", &gCPosC::resfile, &gCPosC::isresfile, "res.out"},
};

}  // namespace

TEST(ParseArguments, EveryFileOptionFillsItsMemberAndFlag)
{
    for (const FileOption& o : fileOptions) {
        auto c = Fresh();
        EXPECT_FALSE(c->gc.*o.flag) << o.arg;
        // A second, unrelated argument keeps the help away.
        Parse(c->gc, {o.arg, "-ca"});
        EXPECT_TRUE(c->gc.*o.flag) << o.arg;
        EXPECT_STREQ(c->gc.*o.name, o.expected) << o.arg;
        EXPECT_TRUE(c->gc.GetRunProg()) << o.arg;
    }
}

TEST(ParseArguments, SelectorCharactersAreNeverPartOfTheValue)
{
    // "-rest" is a RINEX file called "est": nothing compares whole words.
    auto c = Fresh();
    Parse(c->gc, {"-rest"});
    EXPECT_STREQ(c->gc.rnxfile, "est");
    // A later argument for the same option overwrites the earlier one.
    Parse(c->gc, {"-rfirst", "-rsecond"});
    EXPECT_STREQ(c->gc.rnxfile, "second");
}

TEST(ParseArguments, PairRuleWantsBothSelectorLettersInOneCase)
{
    for (const char* ok : {"-csG", "-CSG"}) {
        auto c = Fresh();
        Parse(c->gc, {ok});
        EXPECT_TRUE(c->gc.isGPS) << ok;
    }
    for (const char* bad : {"-cSG", "-CsG"}) {
        auto c = Fresh();
        testing::internal::CaptureStderr();
        Parse(c->gc, {bad});
        const std::string err = testing::internal::GetCapturedStderr();
        EXPECT_FALSE(c->gc.isGPS) << bad;
        EXPECT_NE(err.find(std::string("UNKNOWN PARAMETHER: ") + bad), std::string::npos) << err;
    }
    // -iC and -Ic fail the pair of -ic and land in the -i family, which warns.
    for (const char* mixed : {"-iCrec.clk", "-Icrec.clk"}) {
        auto c = Fresh();
        testing::internal::CaptureStderr();
        Parse(c->gc, {mixed});
        const std::string err = testing::internal::GetCapturedStderr();
        EXPECT_FALSE(c->gc.isClkErr) << mixed;
        EXPECT_NE(err.find("IONOSPHERE FILE NOT SET CORRECTLY [ use -i[k|i|m]FILENAME ]!"),
                  std::string::npos)
            << err;
    }
}

TEST(ParseArguments, EachRuleTakesEitherCaseAtEveryPosition)
{
    for (const char* arg : {"-egnav", "-eGnav", "-Egnav", "-EGnav"}) {
        auto c = Fresh();
        Parse(c->gc, {arg});
        EXPECT_TRUE(c->gc.isGPSnav) << arg;
        EXPECT_STREQ(c->gc.gnavfile, "nav") << arg;
    }
}

TEST(ParseArguments, ExactPositionsTellTroposphereFilesAndPlotsApart)
{
    auto c = Fresh();
    Parse(c->gc, {"-otA", "-oTB"});
    EXPECT_STREQ(c->gc.esttropfile, "A");
    EXPECT_STREQ(c->gc.esttropephfile, "B");

    auto d = Fresh();
    Parse(d->gc, {"-OTB", "-OtA"});
    EXPECT_STREQ(d->gc.esttropephfile, "B");
    EXPECT_STREQ(d->gc.esttropfile, "A");

    // The weighting option wants an upper-case W: "-pw..." is unknown.
    auto e = Fresh();
    testing::internal::CaptureStderr();
    Parse(e->gc, {"-pwcosz"});
    EXPECT_NE(testing::internal::GetCapturedStderr().find("UNKNOWN PARAMETHER: -pwcosz"),
              std::string::npos);
}

TEST(ParseArguments, SystemsAndCodeBiasSystems)
{
    auto c = Fresh();
    Parse(c->gc, {"-csgRe"});
    EXPECT_TRUE(c->gc.isGPS && c->gc.isGLN && c->gc.isGAL);

    auto x = Fresh();
    Parse(x->gc, {"-csX"});  // left to the argument checks, which set all
    EXPECT_FALSE(x->gc.isGPS || x->gc.isGLN || x->gc.isGAL);

    auto d = Fresh();
    Parse(d->gc, {"-cxGPS,GAL"});
    EXPECT_TRUE(d->gc.isGPSxdcb);
    EXPECT_FALSE(d->gc.isGLNxdcb);
    EXPECT_TRUE(d->gc.isGALxdcb);

    auto l = Fresh();
    Parse(l->gc, {"-cxgps,gln"});  // the words are upper case only
    EXPECT_FALSE(l->gc.isGPSxdcb || l->gc.isGLNxdcb || l->gc.isGALxdcb);
}

TEST(ParseArguments, SwitchesFlipTheirDefaults)
{
    auto c = Fresh();
    EXPECT_TRUE(c->gc.CorrAmbig);
    EXPECT_FALSE(c->gc.splitMidnightAmbs);
    EXPECT_TRUE(c->gc.isSolidTide);
    EXPECT_FALSE(c->gc.doCopyFilterC);
    Parse(c->gc, {"-ca", "-SM", "-st", "-PF"});
    EXPECT_FALSE(c->gc.CorrAmbig);
    EXPECT_TRUE(c->gc.splitMidnightAmbs);
    EXPECT_FALSE(c->gc.isSolidTide);
    EXPECT_TRUE(c->gc.doCopyFilterC);
}

TEST(ParseArguments, NumericOptions)
{
    auto c = Fresh();
    Parse(c->gc, {"-md80.5", "-me3.3", "-ao-12.5", "-bt3.00", "-ft20.00", "-mi25", "-mt1e-5"});
    EXPECT_TRUE(c->gc.isMinDailyObs);
    EXPECT_NEAR_LD(c->gc.MinDailyObs, 80.5, ParseTol);
    // The elevation arrives with float precision, as the option promises.
    EXPECT_TRUE(c->gc.isMinElev);
    EXPECT_EQ(c->gc.MinElevation, static_cast<double>(3.3f));
    EXPECT_TRUE(c->gc.isAzmOffAtx);
    EXPECT_EQ(c->gc.AzmOffAtx, -12.5);  // exact in binary
    EXPECT_TRUE(c->gc.isThresBlunder);
    EXPECT_EQ(c->gc.ThresBlunder, 3.0L);
    EXPECT_TRUE(c->gc.isMaxfDiff);
    EXPECT_EQ(c->gc.MaxfDiff, 20.0L);
    EXPECT_EQ(c->gc.MaxIter, 25);
    EXPECT_NEAR_LD(c->gc.IterThres, 1e-5, ParseTol);

    // A value that does not convert reads 0 without a message.
    auto z = Fresh();
    testing::internal::CaptureStderr();
    Parse(z->gc, {"-mixyz"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(z->gc.MaxIter, 0);
}

TEST(ParseArguments, TroposphereIntervalShiftAndGradients)
{
    auto c = Fresh();
    Parse(c->gc, {"-ti01:00:00d00:30:00"});
    EXPECT_TRUE(c->gc.ifEstTropo);
    EXPECT_EQ(c->gc.TropoInterval, 3600.0L);
    EXPECT_EQ(c->gc.TropoShift, 1800.0L);

    auto d = Fresh();  // an upper-case D wins over a lower-case d
    Parse(d->gc, {"-TI02:00:00d00:30:00D00:10:30"});
    EXPECT_EQ(d->gc.TropoInterval, 7200.0L);
    EXPECT_EQ(d->gc.TropoShift, 630.0L);

    auto n = Fresh();
    Parse(n->gc, {"-ti00:15:00"});
    EXPECT_EQ(n->gc.TropoInterval, 900.0L);
    EXPECT_EQ(n->gc.TropoShift, 0.0L);

    auto g = Fresh();
    EXPECT_EQ(g->gc.nTropoGradInt, 1);
    Parse(g->gc, {"-tg"});
    EXPECT_TRUE(g->gc.ifEstTropoGrad);
    EXPECT_EQ(g->gc.nTropoGradInt, 1);
    Parse(g->gc, {"-tgi0"});
    EXPECT_EQ(g->gc.nTropoGradInt, 0);
    Parse(g->gc, {"-TGi5I3"});  // "I" wins over "i"
    EXPECT_EQ(g->gc.nTropoGradInt, 3);
}

TEST(ParseArguments, TroposphereModelAndMappingWords)
{
    struct Case {
        const char* arg;
        short model, mapping;
    };
    const Case cases[] = {
        {"-tmSAAST,NIELL", 0, 0},  {"-tmSaast,Chao", 0, 1},  {"-tmhopf,davis", 1, 2},
        {"-TMVienna,MARINI", 4, 3}, {"-tmvienna,Unb3", 4, 4}, {"-tmGpt2,vmf1", 3, 5},
        {"-tmGPT,GLPT2", 2, 6},     {"-tmgpt,Glpt2", 2, 6},   {"-tmGPT2,glpt2", 3, 6},
        {"-tmHOPF,VMF1", 1, 5},     {"-tmsaast,niell", 0, 0},
    };
    for (const Case& k : cases) {
        auto c = Fresh();
        Parse(c->gc, {k.arg});
        EXPECT_EQ(c->gc.TrpModel, k.model) << k.arg;
        EXPECT_EQ(c->gc.TrpMappFun, k.mapping) << k.arg;
        EXPECT_TRUE(c->gc.isTrpModel) << k.arg;
    }
    // A mapping word alone is accepted; the model stays unchosen.
    auto m = Fresh();
    Parse(m->gc, {"-tmNIELL"});
    EXPECT_EQ(m->gc.TrpModel, -1);
    EXPECT_EQ(m->gc.TrpMappFun, 0);
    EXPECT_TRUE(m->gc.isTrpModel);
}

TEST(ParseArguments, ObservationListAndEstimationType)
{
    auto c = Fresh();
    Parse(c->gc, {"-lC1,P1,P2,Pc3,Pp3,L3", "-xSTA,KIN"});
    EXPECT_TRUE(c->gc.ifC1 && c->gc.ifP1 && c->gc.ifP2 && c->gc.ifPc3 && c->gc.ifPp3 &&
                c->gc.ifL3);
    EXPECT_TRUE(c->gc.ifEstSta && c->gc.ifEstKin);

    auto p = Fresh();
    Parse(p->gc, {"-Lpp3", "-Xkin"});
    EXPECT_TRUE(p->gc.ifPp3);
    EXPECT_FALSE(p->gc.ifC1 || p->gc.ifP1 || p->gc.ifP2 || p->gc.ifPc3 || p->gc.ifL3);
    EXPECT_TRUE(p->gc.ifEstKin);
    EXPECT_FALSE(p->gc.ifEstSta);

    bool k = false, s = false;
    testing::internal::CaptureStderr();
    ParseEstimationType("-xsta", k, s, true);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Orvo::GetFiles():         Estimation type:  STATIC\n");

    bool c1 = false, p1 = false, p2 = false, pc3 = false, pp3 = false, l3 = false;
    testing::internal::CaptureStderr();
    ParseObservationList("-lc1,pc3,l3", c1, p1, p2, pc3, pp3, l3, true);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Orvo::GetFiles():         Observation types:  C1 P3[C1] L3!\n");
}

TEST(ParseArguments, WeightingL4ThresholdsAndCheckDay)
{
    auto c = Fresh();
    c->gc.obsP = gCPosC::OBSP1;
    Parse(c->gc, {"-PWCOSZ"});
    EXPECT_EQ(c->gc.obsP, gCPosC::COSZ);

    auto t = Fresh();
    Parse(t->gc, {"-tc0.04,0.01"});
    EXPECT_TRUE(t->gc.isThresL4);
    EXPECT_NEAR_LD(t->gc.ThresL40, 0.04L, ParseTol);
    EXPECT_NEAR_LD(t->gc.dThresL4, 0.01L, ParseTol);
    EXPECT_FALSE(t->gc.isL4ScreenConst);  // no letter: left as it was
    Parse(t->gc, {"-tc0.04,0.01c"});
    EXPECT_TRUE(t->gc.isL4ScreenConst);
    Parse(t->gc, {"-tc0.04,0.01L"});
    EXPECT_FALSE(t->gc.isL4ScreenConst);
    Parse(t->gc, {"-TC0.04,0.01lC"});  // c wins over l
    EXPECT_TRUE(t->gc.isL4ScreenConst);
    // Negative thresholds arrive as given, for the argument checks to refuse.
    Parse(t->gc, {"-tc-1,-1"});
    EXPECT_NEAR_LD(t->gc.ThresL40, -1.0L, ParseTol);
    EXPECT_NEAR_LD(t->gc.dThresL4, -1.0L, ParseTol);

    // 2020-06-25 is MJD 59025: 2000-01-01 is MJD 51544, plus 7305 days to
    // 2020-01-01 and 176 days of a leap year's first half to 25 June.
    for (const char* arg : {"-cd2020-06-25", "-CD2020/06/25"}) {
        auto d = Fresh();
        Parse(d->gc, {arg});
        EXPECT_TRUE(d->gc.isDateChkDaily) << arg;
        EXPECT_EQ(d->gc.DateChkDaily.GetMJDay(), 59025UL) << arg;
        EXPECT_EQ(d->gc.DateChkDaily.GetSecond(), 0.0L) << arg;
    }
}

TEST(ParseArguments, WarningsForBareWordsUnknownOptionsAndBadSubSelectors)
{
    auto c = Fresh();
    testing::internal::CaptureStderr();
    Parse(c->gc, {"bare", "-zz", "-mP1x", "-mp3a", "-cb4a", "-ixa", "-tx"});
    const std::string err = testing::internal::GetCapturedStderr();
    const char* expected[] = {
        "#### Orvo: Warning ->  - PARAMETHER MANDATORY ->  bare ####",
        "#### Orvo: Warning -> UNKNOWN PARAMETHER: -zz ####",
        "#### Orvo: Warning -> UNKNOWN PARAMETHER: -mP1x ####",
        "#### Orvo: Warning -> MULTIPATH FILE NOT SET CORRECTLY [ use -mp[1|2]FILENAME ]! ####",
        "#### Orvo: Warning -> DIFFERENTIAL CODE BIAS (DCB) FILE NOT SET CORRECTLY [ use "
        "-cb[1|2|3,m]FILENAME ]! ####",
        "#### Orvo: Warning -> IONOSPHERE FILE NOT SET CORRECTLY [ use -i[k|i|m]FILENAME ]! ####",
        "#### Orvo: Warning -> UNKNOWN PARAMETHER: -tx ####",
    };
    size_t at = 0;
    for (const char* e : expected) {  // in argument order
        const size_t found = err.find(e, at);
        EXPECT_NE(found, std::string::npos) << e << "\n" << err;
        if (found != std::string::npos) at = found;
    }
    // A bare word changes nothing, and the run goes on.
    EXPECT_FALSE(c->gc.isRnx || c->gc.isMP1 || c->gc.isMP2 || c->gc.isP1P2 || c->gc.isIonx);
    EXPECT_TRUE(c->gc.GetRunProg());
}

TEST(ParseArguments, HelpOnlyWhenNothingIsToBeRun)
{
    struct Case {
        std::vector<std::string> args;
        bool help;
    };
    const Case cases[] = {
        {{}, true},
        {{"-v"}, true},
        {{"-help"}, true},
        {{"-HELP", "-v"}, true},
        {{"-vmFILE"}, true},  // verbose by its position 1, and alone
        {{"-help", "-rX"}, false},
        {{"-help", "-v", "-rX"}, false},
        {{"-v", "-rX"}, false},
        {{"-rX"}, false},
    };
    for (const Case& k : cases) {
        auto c = Fresh();
        testing::internal::CaptureStderr();
        Parse(c->gc, k.args);
        const std::string err = testing::internal::GetCapturedStderr();
        const bool printed = err.find("PROGRAM: Orvo.exe") != std::string::npos;
        std::string line;
        for (const auto& a : k.args) line += a + " ";
        EXPECT_EQ(printed, k.help) << line;
        EXPECT_EQ(c->gc.GetRunProg(), !k.help) << line;
    }
    auto m = Fresh();
    testing::internal::CaptureStderr();
    Parse(m->gc, {"-vmFILE"});
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(m->gc.GetVerbose());
    EXPECT_STREQ(m->gc.vmf1file, "FILE");
}

TEST(ParseArguments, VerboseEchoesGoToTheLog)
{
    auto c = Fresh();
    testing::internal::CaptureStderr();
    Parse(c->gc, {"-v", "-rwtzr.10o", "-csGE", "-me15", "-ti01:00:00", "-tmSAAST,NIELL"});
    const std::string err = testing::internal::GetCapturedStderr();
    for (const char* line : {
             "\nOrvo: ***** (PRECISE) POINT POSITIONING - STARTING APPLICATION *****\n",
             "Orvo::GetFiles(): PARSING INPUT PARAMETERS!\n",
             "Orvo::GetFiles():         RINEX file name: wtzr.10o!\n",
             "Orvo::GetFiles():         Selection of satellite systems to use: GPS GALILEO\n",
             "Orvo::GetFiles():         Minimum elevation angle: 15!\n",
             "Orvo::GetFiles():         Tropospheric delay estimation time interval: 3600 s!\n",
             "Orvo::GetFiles():         Troposphere model: SAASTAMOINEN!\n",
             "Orvo::GetFiles():         Troposphere mapping function: NIELL!\n"})
        EXPECT_NE(err.find(line), std::string::npos) << line << "\n" << err;

    // Without -v the same options leave the log empty.
    auto q = Fresh();
    testing::internal::CaptureStderr();
    Parse(q->gc, {"-rwtzr.10o", "-csGE", "-me15"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(ParseArgumentsDeath, MalformedOptionsEndTheRun)
{
    struct Case {
        const char* arg;
        const char* text;
    };
    const Case cases[] = {
        {"-exfile", "EPHEMERIS/PRECISE CLOCKS/ERP FILE NOT SET CORRECTLY \\[ use "
                    "-e\\[p\\|g\\|r\\|e\\|c\\|o\\]FILENAME \\]!"},
        {"-gpKfile", "GNUPLOT FILE NOT SET CORRECTLY \\[ use -gp\\[k\\|s\\]FILENAME \\]!"},
        {"-tmSAAST", "TROPOSPHERE MODEL NOT SET CORRECTLY \\[ use -tm\\[SAAST"},
        {"-pWequal", "WEIGHTING OF OBSERVATIONS NOT SET CORRECTLY \\[ use -p\\[COSZ\\] \\]!"},
    };
    for (const Case& k : cases) {
        const std::string re = std::string("\\*\\*\\*\\* Orvo: Error -> ") + k.text;
        EXPECT_EXIT(
            {
                Context c;
                Parse(c.gc, {k.arg});
            },
            ::testing::ExitedWithCode(1), re)
            << k.arg;
    }
}

TEST(ParseArgumentValues, HMSDateAndSigPpmParsers)
{
    EXPECT_EQ(ParseHMS("x01:30:15.5", 1), 5415.5L);
    EXPECT_EQ(ParseHMS("", 4), 0.0L);  // a start behind the end reads nothing

    ymdhms t;
    ParseDate("2021-12-31 23:59:30.25", t, 0);
    EXPECT_EQ(t.GetYear(), 2021);
    EXPECT_EQ(t.GetMonth(), 12);
    EXPECT_EQ(t.GetDay(), 31);
    EXPECT_EQ(t.GetHour(), 23);
    EXPECT_EQ(t.GetMinute(), 59);
    EXPECT_EQ(t.GetSecond(), 30.25L);
    ParseYMD("-cd1999.02.28", t, 3);
    EXPECT_EQ(t.GetYear(), 1999);
    EXPECT_EQ(t.GetMonth(), 2);
    EXPECT_EQ(t.GetDay(), 28);
    EXPECT_EQ(t.GetDaySecond(), 0.0L);

    long double sig = 0, ppm = 0;
    ParseSigPpm("-xx3.5;7", sig, ppm, 3);
    EXPECT_EQ(sig, 3.5L);
    EXPECT_EQ(ppm, 7.0L);
    ParseSigPpm("-xx3.5", sig, ppm, 3);  // no second number
    EXPECT_EQ(ppm, 0.0L);

    EXPECT_EQ(ParseFloat("-me3.3", 3), 3.3f);
    EXPECT_EQ(ParseInteger("-mi", 3), 0);
}

TEST(ParseArgumentValuesDeath, OverlongFileNameAndBadDateEndTheRun)
{
    const std::string longName = "-r" + std::string(256, 'a');
    EXPECT_EXIT(
        {
            Context c;
            Parse(c.gc, {longName});
        },
        ::testing::ExitedWithCode(1), "\\*\\*\\*\\* Orvo: Error -> FILE NAME LONGER THAN 255");
    // 255 characters still fit.
    Context ok;
    Parse(ok.gc, {"-r" + std::string(255, 'b')});
    EXPECT_EQ(std::strlen(ok.gc.rnxfile), 255u);

    // A month of 13 is refused by the calendar class on the output stream.
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            Context c;
            Parse(c.gc, {"-cd2020-13-01"});
        },
        ::testing::ExitedWithCode(1), "ymdhms: Error -> MONTH not valid");
}

TEST(ParseArgumentsDeath, RedirectionFileThatCannotBeWrittenEndsTheRun)
{
    // A folder that does not exist cannot take the file: the run must stop
    // rather than lose the report or the log without a word.
    const std::string absent = orvotest::TempDir() + "/no-such-folder/stream.txt";
    EXPECT_EXIT(
        {
            Context c;
            Parse(c.gc, {"-we" + absent, "-ca"});
        },
        ::testing::ExitedWithCode(1),
        "\\*\\*\\*\\* Orvo: Error -> CERR REDIRECTION FILE CAN NOT BE OPENED: .*no-such-folder");
    EXPECT_EXIT(
        {
            Context c;
            Parse(c.gc, {"-WO" + absent, "-ca"});
        },
        ::testing::ExitedWithCode(1),
        "\\*\\*\\*\\* Orvo: Error -> COUT REDIRECTION FILE CAN NOT BE OPENED: .*no-such-folder");

    // Equal names of 251 characters leave no room for ".CERR" in the 255
    // that a name member holds: the warning comes, then the framed stop, never
    // a name cut to another file.
    const std::string name(251, 'n');
    EXPECT_EXIT(
        {
            Context c;
            Parse(c.gc, {"-wo" + name, "-we" + name});
        },
        ::testing::ExitedWithCode(1),
        "APPENDING .CERR TO CERR FILENAME! ####(.|\n)*\\*\\*\\*\\* Orvo: Error -> CERR "
        "REDIRECTION FILE NAME TOO LONG FOR .CERR");
}

TEST(ParseArguments, ProgramPathIsNoOption)
{
    // An installation path whose second character is "v", or whose second
    // and third are "wo", must not switch verbose mode or redirection on.
    for (const char* self : {"/var/opt/orvo", "/work/bin/orvo"}) {
        Context c;
        const char* argv[] = {self, "-rX", "-ca"};
        testing::internal::CaptureStderr();
        ParseArguments(c.gc, 3, argv);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << self;
        EXPECT_FALSE(c.gc.GetVerbose()) << self;
        EXPECT_FALSE(c.gc.isCoutFile) << self;
    }
}

TEST(ParseArguments, NamelessErrorRedirectionWarnsAndOpensNothing)
{
    Context c;
    std::streambuf* const before = std::cerr.rdbuf();
    testing::internal::CaptureStderr();
    Parse(c.gc, {"-we", "-ca"});
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_NE(err.find("#### Orvo: Warning -> CERR REDIRECTION FILE SET WITHOUT FILENAME: "
                       "CERR GOES TO TERMINAL! ####"),
              std::string::npos)
        << err;
    EXPECT_EQ(std::cerr.rdbuf(), before);
    // The second pass takes the option again, still without a name.
    EXPECT_TRUE(c.gc.isCerrFile);
    EXPECT_STREQ(c.gc.CerrFile, "");
}
