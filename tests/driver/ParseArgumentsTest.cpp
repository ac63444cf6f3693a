#include "driver/ParseArguments.h"

#include "ContextFixture.h"
#include "geodesy/TimeConverse.h"

using namespace drivertest;

// Values that pass through atof are compared with the same decimal text
// converted by the compiler; 1e-12 covers the last bit of a double.
constexpr double ParseTol = 1e-12;

// A fresh context with `args` parsed; what the parser wrote on the error
// stream goes to `err`. The capture also undoes a redirection of the stream.
static std::unique_ptr<Context> Parsed(const std::vector<std::string>& args, std::string* err = nullptr) {
    auto c = std::make_unique<Context>();
    orvotest::Capture cap(std::cerr);
    Parse(c->gc, args);
    if (err) *err = cap.Text();
    return c;
}

struct FileOption { const char* arg; char (gCPosC::*name)[gCPosCns::FileNameSize]; Flag flag; const char* expected; };

// Every option that takes a file name, in each spelling its case rule allows.
// Selector characters are never part of the value: "-rest" is a RINEX file
// called "est", and -ot / -oT differ only in the case of position 2.
const FileOption fileOptions[] = {
    {"-rwtzr0100.10o", GC(rnxfile), GC(isRnx), "wtzr0100.10o"},
    {"-Rx.o", GC(rnxfile), GC(isRnx), "x.o"}, {"-rest", GC(rnxfile), GC(isRnx), "est"},
    {"-egbrdc.n", GC(gnavfile), GC(isGPSnav), "brdc.n"}, {"-eGnav", GC(gnavfile), GC(isGPSnav), "nav"},
    {"-EGnav", GC(gnavfile), GC(isGPSnav), "nav"}, {"-eRbrdc.g", GC(rnavfile), GC(isGLNnav), "brdc.g"},
    {"-Eebrdc.l", GC(enavfile), GC(isGALnav), "brdc.l"}, {"-EPigs.sp3", GC(sp3file), GC(isPEph), "igs.sp3"},
    {"-ecigs.clk", GC(pclkfile), GC(isPclk), "igs.clk"}, {"-eoigs.erp", GC(ptidefile), GC(isPTide), "igs.erp"},
    {"-icrec.clk", GC(clkFName), GC(isClkErr), "rec.clk"},
    {"-SXsat.crx", GC(scrxfile), GC(isSCrx), "sat.crx"}, {"-mp1a.mp1", GC(mp1file), GC(isMP1), "a.mp1"},
    {"-MP2a.mp2", GC(mp2file), GC(isMP2), "a.mp2"}, {"-ikklob.n", GC(ionkfile), GC(isKlob), "klob.n"},
    {"-Iicodg.i", GC(ionxfile), GC(isIonx), "codg.i"}, {"-iMmy.ion", GC(myionfile), GC(isMyion), "my.ion"},
    {"-pvigs14.atx", GC(atxfile), GC(isAtx), "igs14.atx"}, {"-cb1p1p2.dcb", GC(dcbp1p2file), GC(isP1P2), "p1p2.dcb"},
    {"-CB2p1c1.dcb", GC(dcbp1c1file), GC(isP1C1), "p1c1.dcb"}, {"-cb3p2c2.dcb", GC(dcbp2c2file), GC(isP2C2), "p2c2.dcb"},
    {"-cbMmy.dcb", GC(mydbcfile), GC(isMyDCB), "my.dcb"}, {"-ctrec.trk", GC(rctrackfile), GC(isRCodTrc), "rec.trk"},
    {"-GFgln.frq", GC(glnfreqch), GC(isGLNfrch), "gln.frq"}, {"-acapr.crd", GC(aprcrdfile), GC(isAprCrd), "apr.crd"},
    {"-gpkkin.dat", GC(gnuplotKin), GC(isGNUPlotKin), "kin.dat"},
    {"-GPsstat.dat", GC(gnuplotStat), GC(isGNUPlotStat), "stat.dat"},
    {"-spsky.dat", GC(skyplotfile), GC(isSkyPlot), "sky.dat"}, {"-pcosz", GC(prcorrfile), GC(isPRCorr), "osz"},
    {"-CFout.clk", GC(clkfile), GC(isClkFile), "out.clk"}, {"-oddcb.out", GC(estdcbfile), GC(isOutDCBFile), "dcb.out"},
    {"-Ottrop.out", GC(esttropfile), GC(isOutTropFile), "trop.out"}, {"-otA", GC(esttropfile), GC(isOutTropFile), "A"},
    {"-OTtrope.out", GC(esttropephfile), GC(isOutTropEphFile), "trope.out"},
    {"-oTB", GC(esttropephfile), GC(isOutTropEphFile), "B"}, {"-VMvmf1.grd", GC(vmf1file), GC(isVMF1file), "vmf1.grd"},
    {"-G2gpt2.grd", GC(gpt2file), GC(isGPT2file), "gpt2.grd"}, {"-bqsite.blq", GC(otidefile), GC(isOTide), "site.blq"},
    {"-FPres.out", GC(resfile), GC(isresfile), "res.out"},
};

TEST(ParseArguments, EveryFileOptionFillsItsMemberAndFlag) {
    for (const FileOption& o : fileOptions) {
        // A second, unrelated argument keeps the help away.
        auto c = Parsed({o.arg, "-ca"});
        EXPECT_TRUE(c->gc.*o.flag) << o.arg;
        EXPECT_STREQ(c->gc.*o.name, o.expected) << o.arg;
        EXPECT_TRUE(c->gc.GetRunProg()) << o.arg;
    }
}

TEST(ParseArguments, FlagOptionsAndTheirCaseRules) {
    // Each row parses one argument and wants one flag set or clear, and the
    // warning when one is given. The pair rule wants both selector letters in
    // one case; a mixed -iC or -Ic fails the pair of -ic and lands in the -i
    // family, which warns; the weighting option wants an upper-case W. -cs
    // takes letters of either case, and an unknown letter is left to the
    // argument checks; the -cx words are upper case only. The observation
    // types and the estimation type set their flags and clear none.
    const std::string iono = "IONOSPHERE FILE NOT SET CORRECTLY [ use -i[k|i|m]FILENAME ]!";
    const struct { const char* arg; Flag flag; bool set; std::string warning; } rows[] = {
        {"-csG", GC(isGPS), true, ""}, {"-CSG", GC(isGPS), true, ""}, {"-cSG", GC(isGPS), false, "UNKNOWN PARAMETHER: -cSG"},
        {"-CsG", GC(isGPS), false, "UNKNOWN PARAMETHER: -CsG"}, {"-iCrec.clk", GC(isClkErr), false, iono},
        {"-Icrec.clk", GC(isClkErr), false, iono}, {"-pwcosz", GC(isPRCorr), false, "UNKNOWN PARAMETHER: -pwcosz"},
        {"-csgRe", GC(isGLN), true, ""}, {"-csgRe", GC(isGAL), true, ""}, {"-csR", GC(isGLN), true, ""}, {"-csR", GC(isGPS), false, ""},
        {"-csX", GC(isGPS), false, ""}, {"-csX", GC(isGLN), false, ""}, {"-csX", GC(isGAL), false, ""},
        {"-cxGPS,GAL", GC(isGPSxdcb), true, ""}, {"-cxGPS,GAL", GC(isGALxdcb), true, ""}, {"-cxGPS,GAL", GC(isGLNxdcb), false, ""},
        {"-cxGLN", GC(isGLNxdcb), true, ""}, {"-cxgps,gln", GC(isGPSxdcb), false, ""}, {"-cxgps,gln", GC(isGLNxdcb), false, ""},
        {"-ca", GC(CorrAmbig), false, ""}, {"-SM", GC(splitMidnightAmbs), true, ""}, {"-st", GC(isSolidTide), false, ""},
        {"-PF", GC(doCopyFilterC), true, ""}, {"-Lpp3", GC(ifPp3), true, ""}, {"-Lpp3", GC(ifC1), false, ""},
        {"-Lpp3", GC(ifP1), false, ""}, {"-Lpp3", GC(ifP2), false, ""}, {"-Lpp3", GC(ifPc3), false, ""}, {"-Lpp3", GC(ifL3), false, ""},
        {"-Xkin", GC(ifEstKin), true, ""}, {"-Xkin", GC(ifEstSta), false, ""}};
    for (const auto& k : rows) {
        std::string err;
        EXPECT_EQ(Parsed({k.arg}, &err)->gc.*k.flag, k.set) << k.arg;
        EXPECT_EQ(Has(err, k.warning.empty() ? "Warning" : k.warning), !k.warning.empty()) << k.arg << err;
    }
    auto c = Parsed({"-lC1,P1,P2,Pc3,Pp3,L3", "-xSTA,KIN"});
    const gCPosC& g = c->gc;
    EXPECT_TRUE(g.ifC1 && g.ifP1 && g.ifP2 && g.ifPc3 && g.ifPp3 && g.ifL3 && g.ifEstSta && g.ifEstKin);
    bool k = false, s = false, c1 = false, p1 = false, p2 = false, pc3 = false, pp3 = false, l3 = false;
    Capture err(std::cerr);
    ParseEstimationType("-xsta", k, s, true);
    ParseObservationList("-lc1,pc3,l3", c1, p1, p2, pc3, pp3, l3, true);
    EXPECT_EQ(err.Text(), "Orvo::GetFiles():         Estimation type:  STATIC\n"
                          "Orvo::GetFiles():         Observation types:  C1 P3[C1] L3!\n");
}

TEST(ParseArguments, TroposphereIntervalShiftAndGradients) {
    // An upper-case D (shift) or I (gradient count) wins over the lower-case letter.
    const struct { const char* arg; long double interval_s, shift_s; int nGrad; } rows[] = {
        {"-ti01:00:00d00:30:00", 3600, 1800, 1}, {"-TI02:00:00d00:30:00D00:10:30", 7200, 630, 1}, {"-ti00:15:00", 900, 0, 1},
        {"-tg", 0, 0, 1}, {"-tgi0", 0, 0, 0}, {"-TGi5I3", 0, 0, 3},
        // Beyond int atoi is undefined; the count is clamped for its check.
        {"-tgi99999999999", 0, 0, 2147483647}, {"-tgi-99999999999", 0, 0, -2147483647 - 1}};
    for (const auto& k : rows) {
        auto c = Parsed({k.arg});
        EXPECT_TRUE(k.interval_s > 0 ? c->gc.ifEstTropo : c->gc.ifEstTropoGrad) << k.arg;
        EXPECT_EQ(c->gc.TropoInterval, k.interval_s) << k.arg;
        EXPECT_EQ(c->gc.TropoShift, k.shift_s) << k.arg;
        EXPECT_EQ(c->gc.nTropoGradInt, k.nGrad) << k.arg;
    }
}

TEST(ParseArguments, TroposphereModelAndMappingWords) {
    // GPT2 must not read as GPT; a mapping word alone leaves the model unchosen (-1).
    const struct { const char* arg; short model, mapping; } rows[] = {
        {"-tmSAAST,NIELL", 0, 0},  {"-tmSaast,Chao", 0, 1},  {"-tmhopf,davis", 1, 2}, {"-TMVienna,MARINI", 4, 3},
        {"-tmvienna,Unb3", 4, 4}, {"-tmGpt2,vmf1", 3, 5}, {"-tmGPT,GLPT2", 2, 6}, {"-tmgpt,Glpt2", 2, 6},
        {"-tmGPT2,glpt2", 3, 6}, {"-tmHOPF,VMF1", 1, 5}, {"-tmsaast,niell", 0, 0}, {"-tmNIELL", -1, 0}};
    for (const auto& k : rows) {
        auto c = Parsed({k.arg});
        EXPECT_EQ(std::make_pair(c->gc.TrpModel, c->gc.TrpMappFun), std::make_pair(k.model, k.mapping)) << k.arg;
        EXPECT_TRUE(c->gc.isTrpModel) << k.arg;
    }
}

TEST(ParseArguments, NumericOptionsWeightingL4ThresholdsAndCheckDay) {
    // The elevation arrives with float precision, as the option promises;
    // the other values are exact in binary.
    auto c = Parsed({"-md80.5", "-me3.3", "-ao-12.5", "-bt3.00", "-ft20.00", "-mi25", "-mt1e-5"});
    const gCPosC& g = c->gc;
    EXPECT_TRUE(g.isMinDailyObs && g.isMinElev && g.isAzmOffAtx && g.isThresBlunder && g.isMaxfDiff);
    EXPECT_NEAR_LD(g.MinDailyObs, 80.5, ParseTol);
    EXPECT_NEAR_LD(g.IterThres, 1e-5, ParseTol);
    EXPECT_EQ(g.MinElevation, static_cast<double>(3.3f));
    EXPECT_EQ((std::vector<long double>{g.AzmOffAtx, g.ThresBlunder, g.MaxfDiff, 1.0L * g.MaxIter}),
              (std::vector<long double>{-12.5L, 3.0L, 20.0L, 25.0L}));
    // A value that does not convert reads 0 without a message.
    std::string err;
    EXPECT_EQ(Parsed({"-mixyz"}, &err)->gc.MaxIter, 0);
    EXPECT_EQ(err, "");

    Context w;
    w.gc.obsP = gCPosC::OBSP1;
    w.gc.isL4ScreenConst = true;
    Parse(w.gc, {"-PWCOSZ", "-tc0.04,0.01L"});
    EXPECT_EQ(w.gc.obsP, gCPosC::COSZ);
    EXPECT_FALSE(w.gc.isL4ScreenConst);
    // The method letter behind the numbers: none leaves it, c wins over l.
    // Negative thresholds arrive as given, for the argument checks to refuse.
    const struct { const char* arg; long double sig, ppm; bool constant; } rows[] = {
        {"-tc0.04,0.01", 0.04L, 0.01L, false}, {"-tc0.04,0.01c", 0.04L, 0.01L, true}, {"-TC0.04,0.01lC", 0.04L, 0.01L, true},
        {"-tc-1,-1", -1, -1, false}, {"-tc+2;3L", 2, 3, false}, {"-tc3.5", 3.5L, 0, false},
        {"-tc,5", 0, 5, false}};
    for (const auto& k : rows) {
        auto c = Parsed({k.arg});
        EXPECT_TRUE(c->gc.isThresL4) << k.arg;
        EXPECT_NEAR_LD(c->gc.ThresL40, k.sig, ParseTol) << k.arg;
        EXPECT_NEAR_LD(c->gc.dThresL4, k.ppm, ParseTol) << k.arg;
        EXPECT_EQ(c->gc.isL4ScreenConst, k.constant) << k.arg;
    }
    // 2020-06-25 is MJD 59025: 2000-01-01 is MJD 51544, plus 7305 days to
    // 2020-01-01 and 176 days of a leap year's first half to 25 June. A full
    // epoch takes hour, minute and the rest as second behind the date.
    for (const char* arg : {"-cd2020-06-25", "-CD2020/06/25"}) {
        auto d = Parsed({arg});
        EXPECT_TRUE(d->gc.isDateChkDaily && d->gc.DateChkDaily.GetMJDay() == 59025UL && d->gc.DateChkDaily.GetSecond() == 0.0L) << arg;
    }
    ymdhms t;
    ParseDate("x2021-12-31 23:59:30.25", t, 1);
    EXPECT_EQ(std::vector<long double>({1.0L * t.GetYear(), 1.0L * t.GetMonth(), 1.0L * t.GetDay(), 1.0L * t.GetHour(),
                                        1.0L * t.GetMinute(), t.GetSecond()}), std::vector<long double>({2021, 12, 31, 23, 59, 30.25L}));
}

TEST(ParseArguments, WarningsForBareWordsUnknownOptionsAndBadSubSelectors) {
    std::string err;
    auto c = Parsed({"bare", "-zz", "-mP1x", "-mp3a", "-cb4a", "-ixa", "-tx"}, &err);
    size_t at = 0;
    for (const char* e : {" - PARAMETHER MANDATORY ->  bare", "UNKNOWN PARAMETHER: -zz", "UNKNOWN PARAMETHER: -mP1x",
                          "MULTIPATH FILE NOT SET CORRECTLY [ use -mp[1|2]FILENAME ]!",
                          "DIFFERENTIAL CODE BIAS (DCB) FILE NOT SET CORRECTLY [ use -cb[1|2|3,m]FILENAME ]!",
                          "IONOSPHERE FILE NOT SET CORRECTLY [ use -i[k|i|m]FILENAME ]!", "UNKNOWN PARAMETHER: -tx"}) {
        const size_t found = err.find("#### Orvo: Warning -> " + std::string(e) + " ####", at);
        EXPECT_NE(found, std::string::npos) << e << "\n" << err;  // in argument order
        if (found != std::string::npos) at = found;
    }
    // Nothing is set, and the run goes on.
    EXPECT_FALSE(c->gc.isRnx || c->gc.isMP1 || c->gc.isMP2 || c->gc.isP1P2 || c->gc.isIonx);
    EXPECT_TRUE(c->gc.GetRunProg());
}

TEST(ParseArguments, HelpOnlyWhenNothingIsToBeRun) {
    // "-vmFILE" is verbose by its position 1, and alone.
    const struct { std::vector<std::string> args; bool help; } rows[] = {
        {{}, true}, {{"-v"}, true}, {{"-help"}, true}, {{"-HELP", "-v"}, true}, {{"-vmFILE"}, true}, {{"-help", "-rX"}, false},
        {{"-help", "-v", "-rX"}, false}, {{"-v", "-rX"}, false}, {{"-rX"}, false}};
    for (const auto& k : rows) {
        std::string err;
        auto c = Parsed(k.args, &err);
        EXPECT_EQ(Has(err, "PROGRAM: Orvo.exe"), k.help) << k.args.size();
        EXPECT_EQ(c->gc.GetRunProg(), !k.help) << k.args.size();
    }
    auto m = Parsed({"-vmFILE"});
    EXPECT_TRUE(m->gc.GetVerbose() && std::string(m->gc.vmf1file) == "FILE");
}

TEST(ParseArguments, VerboseEchoesGoToTheLog) {
    // Without -v the same options leave the log empty.
    std::string err, quiet;
    Parsed({"-v", "-csGE", "-me15", "-tmSAAST,NIELL"}, &err);
    Parsed({"-csGE", "-me15", "-tmSAAST,NIELL"}, &quiet);
    EXPECT_EQ(err, "\nOrvo: ***** (PRECISE) POINT POSITIONING - STARTING APPLICATION *****\nOrvo::GetFiles(): PARSING INPUT PARAMETERS!\n"
                   "Orvo::GetFiles():         Selection of satellite systems to use: GPS GALILEO\n"
                   "Orvo::GetFiles():         Minimum elevation angle: 15!\nOrvo::GetFiles():         Troposphere model: SAASTAMOINEN!\n"
                   "Orvo::GetFiles():         Troposphere mapping function: NIELL!\n");
    EXPECT_EQ(quiet, "");
}

TEST(ParseArgumentsDeath, MalformedOptionsAndUnwritableNamesEndTheRun) {
    // Equal redirection names of 251 characters leave no room for ".CERR" in
    // the 255 that a name member holds: the warning comes, then the framed
    // stop, never a name cut to another file. A month of 13 is refused by the
    // calendar class on the output stream.
    const std::string absent = orvotest::TempDir() + "/no-such-folder/stream.txt", n251(251, 'n'), E = "\\*\\*\\*\\* Orvo: Error -> ";
    const struct { std::vector<std::string> args; std::string text; } rows[] = {
        {{"-exfile"}, E + "EPHEMERIS/PRECISE CLOCKS/ERP FILE NOT SET CORRECTLY \\[ use -e\\[p\\|g\\|r\\|e\\|c\\|o\\]FILENAME \\]!"},
        {{"-gpKfile"}, E + "GNUPLOT FILE NOT SET CORRECTLY \\[ use -gp\\[k\\|s\\]FILENAME \\]!"},
        {{"-tmSAAST"}, E + "TROPOSPHERE MODEL NOT SET CORRECTLY \\[ use -tm\\[SAAST"},
        {{"-pWequal"}, E + "WEIGHTING OF OBSERVATIONS NOT SET CORRECTLY \\[ use -p\\[COSZ\\] \\]!"},
        {{"-r" + std::string(256, 'a')}, E + "FILE NAME LONGER THAN 255"},
        {{"-we" + absent, "-ca"}, E + "CERR REDIRECTION FILE CAN NOT BE OPENED: .*no-such-folder"},
        {{"-WO" + absent, "-ca"}, E + "COUT REDIRECTION FILE CAN NOT BE OPENED: .*no-such-folder"},
        {{"-wo" + n251, "-we" + n251}, "APPENDING .CERR TO CERR FILENAME! ####(.|\n)*\\*\\*\\*\\* Orvo: Error -> CERR "
                                       "REDIRECTION FILE NAME TOO LONG FOR .CERR"},
        {{"-cd2020-13-01"}, "ymdhms: Error -> MONTH not valid"},
    };
    // Both streams reach the death test's error stream, uncaptured.
    auto run = [](const std::vector<std::string>& args) { std::cout.rdbuf(std::cerr.rdbuf()); Context c; Parse(c.gc, args); };
    for (const auto& k : rows) EXPECT_EXIT(run(k.args), ::testing::ExitedWithCode(1), k.text) << k.args[0];
    // 255 characters still fit.
    EXPECT_EQ(std::strlen(Parsed({"-r" + std::string(255, 'b')})->gc.rnxfile), 255u);
}

TEST(ParseArguments, ProgramPathIsNoOption) {
    // An installation path whose second character is "v", or whose second
    // and third are "wo", must not switch verbose mode or redirection on.
    for (const char* self : {"/var/opt/orvo", "/work/bin/orvo"}) {
        Context c;
        const char* argv[] = {self, "-rX", "-ca"};
        Capture err(std::cerr);
        ParseArguments(c.gc, 3, argv);
        EXPECT_TRUE(err.Text().empty() && !c.gc.GetVerbose() && !c.gc.isCoutFile) << self;
    }
}
