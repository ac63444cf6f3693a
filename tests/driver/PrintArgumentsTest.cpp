#include "driver/PrintArguments.h"

#include "ContextFixture.h"
#include "driver/CheckArguments.h"
#include "numerics/CppCas.h"

using namespace drivertest;

// The report of gc, the verbose log kept apart in `log`; fixedAfter tells
// whether the output stream was left in fixed notation.
static std::string Report(gCPosC& gc, bool* fixedAfter = nullptr, std::string* log = nullptr) {
    Capture err(std::cerr), out(std::cout);
    std::cout << std::scientific;  // PrintArguments must set its own notation
    PrintArguments(gc);
    if (fixedAfter) *fixedAfter = (std::cout.flags() & std::ios::floatfield) == std::ios::fixed;
    if (log) *log = err.Text();
    return out.Text();
}

// Every entry of `want` stands as whole lines of the report.
static void ExpectLines(const std::string& report, const std::vector<std::string>& want) {
    for (const std::string& w : want) EXPECT_TRUE(Has("\n" + report, "\n" + w + "\n")) << w << "\n" << report;
}

TEST(PrintArguments, ReportOfTheEsbjergDay) {
    Context c;
    Parse(c.gc, {"-r" + kObs, "-ep" + kSp3, "-ec" + kClk, "-eg" + kNavG, "-er" + kNavR, "-gf" + kChannels, "-csGRE", "-lPc3,L3",
                 "-xSTA", "-tmSAAST,NIELL", "-ti01:00:00d00:30:00", "-tgi2", "-cxGPS,GLN", "-me7.5", "-ft20", "-bt3",
                 "-tc0.04,0.01c", "-md80", "-mi8", "-mt0.001", "-odout.dcb", "-otout.trp", "-gpsstat.dat", "-cfrec.clk"});
    [&c] { Capture err(std::cerr); CheckArguments(c.gc); }();  // its log is not part of the report
    const std::string dateBefore = std::string("DATE: ") + CppCas().Ascii();
    bool fixedAfter = false;
    const std::string report = Report(c.gc, &fixedAfter), dateAfter = std::string("DATE: ") + CppCas().Ascii();
    // The 112 lines of the layout: banner, titles, 24 input, 7 output and 3
    // plot file lines, the settings and the blank lines between; the clock
    // may tick during the call, so either date is right. The report ends
    // where it started: in fixed notation.
    EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), 112);
    const std::string release = "          RELEASE:            07 FEB 2024" + std::string(24 + 19, ' ');
    EXPECT_TRUE(Has(report, release + dateBefore + "\n") || Has(report, release + dateAfter + "\n")) << report;
    EXPECT_TRUE(fixedAfter);
    // The precise orbits overrule both navigation files, so their names and
    // the group delays of the GPS one are not used.
    const std::string no = " ---";
    ExpectLines(report, {
        "  Observation (RINEX) file            : " + kObs + "\n  Apriori receiver clock error file   : " + no,
        "  GPS broadcast navigation file       : " + no + "\n  GLONASS broadcast navigation file   : " + no,
        "  MULTI-GNSS precise ephemeris file   : " + kSp3 + "\n  MULTI-GNSS precise clock file       : " + kClk +
            "\n  GLONASS frequency channel file      : " + kChannels,
        "  Clock correction file               : rec.clk\n  Differential code bias output file  : out.dcb\n"
        "  Estimated troposphere delays file   : out.trp\n  Estimated epoch tropo. delays file  : " + no,
        "  Static coordinates GNU Plot file    : stat.dat",
        "  Satellite systems used in processing: GPS GLONASS GALILEO\n  Code observations used in program   : P3[C/A,P2]\n"
        "  Phase observations used in program  : L3\n  Minimum elevation angle             : 7.5 [MANUALLY SET]",
        "     Troposphere model                : Saastamoinen\n     Troposphere mapping function     : Niell",
        "     Iono-free linear combination     : YES\n  Differential code biases            : " + no,
        "  Solid Earth Tide modelling          : YES\n  Observation weighting               : COS(Z) model",
        "      reference std. dev. apriori [m] : 0.0500",
        "      Misclosure vector f [threshold] : YES [ 20.00 m]\n      Residual vector v [threshold]   : YES [3.00 * STD_V]\n"
        "  Threshold for L4 cycle slip screen. : YES\n      L4 threshold                [m] :  0.040\n"
        "      L4-rate threshold   [m/sqrt(s)] :  0.010\n      L4 screening method             : CONSTANT",
        "      KINEMATIC                       : " + no + "\n      STATIC                          : YES\n"
        "  Estimation of DCB values            : GPS GLONASS\n  Estimation of troposphere parameters: YES\n"
        "      Troposphere interval            : 3600.0 s\n      Troposphere epoch shift         : 1800.0 s\n"
        "  Estimation of gradient tropo. par.  : YES\n      Number of gradient intervals    : 2\n"
        "  Check for minimum GNSS data         : YES [80.0 %]",
        "  Maximum number of iteration         : 8\n  Iteration process threshold         : 1.00e-03"});
}

TEST(PrintArguments, OtherBranchesOfTheSettings) {
    Context c, d;
    std::strcpy(c.gc.rnxfile, "site.20o");
    std::strcpy(c.gc.mydbcfile, "my.dcb");
    std::strcpy(c.gc.CerrFile, "run.log");
    c.gc.isCerrFile = c.gc.isMyDCB = c.gc.isAzmOffAtx = c.gc.isAtx = c.gc.ifEstKin = c.gc.ifEstTropo = c.gc.ifEstTropoGrad = true;
    c.gc.ifC1 = c.gc.ifP1 = c.gc.ifP2 = c.gc.ifPp3 = c.gc.isGAL = c.gc.isGALxdcb = true;
    c.gc.obsP = gCPosC::OBSP1, c.gc.isSolidTide = false, c.gc.AzmOffAtx = 12.5;
    c.gc.TropoInterval = 7200.0L, c.gc.nTropoGradInt = 0;
    ExpectLines(Report(c.gc), {
        "  File with redirected CERR content   : run.log", "  Code observations used in program   : C/A P1 P2 P3[P1,P2]",
        "     Troposphere model                :  ---\n     Troposphere mapping function     :  ---",
        "     Iono-free linear combination     : YES", "  Differential code biases - Meskal   : YES - my.dcb\n"
        "  Solid Earth Tide modelling          :  ---\n  Observation weighting               :  ---",
        "      Misclosure vector f [threshold] : NO\n      Residual vector v [threshold]   : NO",
        "  Antenna phase center modelling      : YES\n  Azimuth offset for calibration data : YES [12.5]",
        "      KINEMATIC                       : YES\n      STATIC                          :  ---\n"
        "  Estimation of DCB values            : GALILEO", "      Troposphere interval            : 7200.0 s\n"
        "      Troposphere epoch shift         : 0.0 s", "      Number of gradient intervals    :  same as ZTDs\n"
        "  Check for minimum GNSS data         :  ---", "  Maximum number of iteration         : 10\n"
        "  Iteration process threshold         : 1.00e-04"});
    // Without the estimate, its details read " ---"; the log has one line.
    d.gc.verbose = true;
    std::string log;
    ExpectLines(Report(d.gc, nullptr, &log), {"      Troposphere interval            :  ---", "     Iono-free linear combination     :  ---",
                                              "      Number of gradient intervals    :  ---", "  Azimuth offset for calibration data :  ---",
                                              "  Differential code biases - Meskal   :  ---"});
    EXPECT_EQ(log, "Orvo::PrintArguments(): PRINTING INPUT ARGUMENTS!\n");
}

TEST(PrintArguments, CodeBiasSourceTakesTheLastThatApplies) {
    const std::string code = "DCB values provided by CODE";
    const struct { bool nav, ionx; Flag file; std::string text; } rows[] = {
        {false, false, nullptr, " ---"}, {true, false, nullptr, "Navigation time group delay"}, {true, true, nullptr, "IONEX DCB values"},
        {false, true, nullptr, "IONEX DCB values"}, {true, true, GC(isP2C2), code}, {false, false, GC(isP1P2), code},
        {false, false, GC(isP1C1), code}, {false, false, GC(isP2C2), code}};
    for (const auto& k : rows) {
        Context c;
        c.gc.isGPSnav = k.nav;
        c.gc.isIonx = k.ionx;
        if (k.file) c.gc.*k.file = true;
        ExpectLines(Report(c.gc), {"  Differential code biases            : " + k.text});
    }
}
