#include "driver/PrintArguments.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "ContextFixture.h"
#include "TestSupport.h"
#include "driver/CheckArguments.h"
#include "numerics/CppCas.h"

using drivertest::Context;
using drivertest::Parse;
using orvotest::Data;

namespace {

// Everything written on the output stream while it lives; the stream's
// format flags are restored with its buffer.
class OutCapture {
public:
    OutCapture() : old_(std::cout.rdbuf(buf_.rdbuf())), flags_(std::cout.flags()) {}
    ~OutCapture()
    {
        std::cout.rdbuf(old_);
        std::cout.flags(flags_);
    }
    std::string Text() const { return buf_.str(); }

private:
    std::ostringstream buf_;
    std::streambuf* old_;
    std::ios::fmtflags flags_;
};

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) out.push_back(line);
    return out;
}

// The report of gc; fixedAfter tells whether the output stream was left in
// fixed notation.
std::string Report(gCPosC& gc, bool* fixedAfter = nullptr)
{
    std::ostringstream log;  // the verbose log is not part of the report
    std::streambuf* oldErr = std::cerr.rdbuf(log.rdbuf());
    OutCapture cap;
    std::cout << std::scientific;  // PrintArguments must set its own notation
    PrintArguments(gc);
    if (fixedAfter)
        *fixedAfter = (std::cout.flags() & std::ios::floatfield) == std::ios::fixed;
    std::cerr.rdbuf(oldErr);
    return cap.Text();
}

// The line of the report that starts with label, empty when there is none.
std::string LineOf(const std::string& report, const std::string& label)
{
    for (const std::string& l : Lines(report))
        if (l.compare(0, label.size(), label) == 0) return l;
    return "";
}

std::string Rule(char c, size_t n) { return std::string(n, c); }

// Banner lines: name and description in 35 left and 45 right columns.
std::string Padded(const std::string& head, const std::string& left, const std::string& right)
{
    return head + left + std::string(35 - left.size(), ' ')
           + std::string(45 - right.size(), ' ') + right;
}

}  // namespace

TEST(PrintArguments, ReportOfTheEsbjergDayMatchesLineByLine)
{
    const std::string dir = "esbc-2020-177/";
    const std::string obs = Data(dir + "esbc1770.20o");
    const std::string sp3 = Data(dir + "GRG0MGXFIN_20201770000_01D_15M_ORB.SP3");
    const std::string clk = Data(dir + "GRG0MGXFIN_20201770000_01D_30S_CLK.CLK");
    const std::string navG = Data(dir + "esbc1770.20n");
    const std::string navR = Data(dir + "esbc1770.20g");
    const std::string glnfc = Data(dir + "esbc1770.20o.glnfc");

    Context c;
    Parse(c.gc, {"-r" + obs, "-ep" + sp3, "-ec" + clk, "-eg" + navG, "-er" + navR,
                 "-gf" + glnfc, "-csGRE", "-lPc3,L3", "-xSTA", "-tmSAAST,NIELL",
                 "-ti01:00:00d00:30:00", "-tgi2", "-cxGPS,GLN", "-me7.5", "-ft20", "-bt3",
                 "-tc0.04,0.01c", "-md80", "-mi8", "-mt0.001", "-odout.dcb", "-otout.trp",
                 "-gpsstat.dat", "-cfrec.clk"});
    {
        std::ostringstream log;
        std::streambuf* oldErr = std::cerr.rdbuf(log.rdbuf());
        CheckArguments(c.gc);
        std::cerr.rdbuf(oldErr);
    }

    CppCas before;
    const std::string dateBefore = std::string("DATE: ") + before.Ascii();
    bool fixedAfter = false;
    const std::string report = Report(c.gc, &fixedAfter);
    CppCas after;
    const std::string dateAfter = std::string("DATE: ") + after.Ascii();

    const std::string none = " ---";
    const std::vector<std::string> want = {
        Rule('_', 110),
        Rule('*', 110),
        Padded("          PROGRAM:            ", "Orvo",
               "GNSS PRECISE POINT POSITIONING (CODE+PHASE)"),
        "<date>",
        Rule('_', 110),
        Rule('*', 110),
        "",
        "",
        Rule('=', 110),
        "PROGRAM SETTINGS AND INPUT PARAMETERS:",
        Rule('=', 110),
        "",
        "",
        "INPUT DATA (FILE NAMES):",
        Rule('=', 24),
        "",
        "  Apriori coordinate file             : " + none,
        "  Observation (RINEX) file            : " + obs,
        "  Apriori receiver clock error file   : " + none,
        "  Satellite problem file              : " + none,
        // The precise orbits overrule both navigation files.
        "  GPS broadcast navigation file       : " + none,
        "  GLONASS broadcast navigation file   : " + none,
        "  GALILEO broadcast navigation file   : " + none,
        "  MULTI-GNSS precise ephemeris file   : " + sp3,
        "  MULTI-GNSS precise clock file       : " + clk,
        "  GLONASS frequency channel file      : " + glnfc,
        "  Earth rotation parameters file      : " + none,
        "  Ocean tide loading file (BLQ)       : " + none,
        "  VMF1 mapping function / model file  : " + none,
        "  GPT2 mapping function / model file  : " + none,
        "  Ionosphere IONEX model file         : " + none,
        "  Ionosphere Klobuchar model file     : " + none,
        "  Ionosphere MyIono model file        : " + none,
        "  Antenna phase center variation file : " + none,
        "  Differential code bias file (P1P2)  : " + none,
        "  Differential code bias file (P1C1)  : " + none,
        "  Differential code bias file (P2C2)  : " + none,
        "  Receiver code tracking type file    : " + none,
        "  Multipath on P1/C1 file             : " + none,
        "  Multipath on P2 file                : " + none,
        "",
        "OUTPUT/RESULT FILES:",
        Rule('=', 20),
        "",
        "  Clock correction file               : rec.clk",
        "  Differential code bias output file  : out.dcb",
        "  Estimated troposphere delays file   : out.trp",
        "  Estimated epoch tropo. delays file  : " + none,
        "  Pseudo-range correction values file : " + none,
        "  File with redirected COUT content   : " + none,
        "  File with redirected CERR content   : " + none,
        "",
        "",
        "PLOTING FILES (GNUPLOT):",
        Rule('=', 24),
        "",
        "  Kinematic coordinates GNU Plot file : " + none,
        "  Static coordinates GNU Plot file    : stat.dat",
        "  Skyplot GNU Plot file               : " + none,
        "",
        "",
        "PROCESSING SETTINGS USED:",
        Rule('=', 25),
        "",
        "  Satellite systems used in processing: GPS GLONASS GALILEO",
        "  Code observations used in program   : P3[C/A,P2]",
        "  Phase observations used in program  : L3",
        "  Minimum elevation angle             : 7.5 [MANUALLY SET]",
        "  Troposphere modeling                :",
        "     Troposphere model                : Saastamoinen",
        "     Troposphere mapping function     : Niell",
        "  Ionosphere modeling                 :",
        "     IONEX model                      : " + none,
        "     Global Klobuchar parameters      : " + none,
        "     Iono-free linear combination     : YES",
        // The GPS navigation file was dropped, so its group delays are not used.
        "  Differential code biases            : " + none,
        "  Differential code biases - Meskal   : " + none,
        "  Solid Earth Tide modelling          : YES",
        "  Observation weighting               : COS(Z) model",
        "  Reference standard deviatons        :",
        "      observation C/A             [m] : 0.2000",
        "      observation P1/P2           [m] : 0.2000",
        "      observation L1/L2           [m] : 0.0020",
        "      reference std. dev. apriori [m] : 0.0500",
        "  Blunder detection in observations   : ",
        "      Misclosure vector f [threshold] : YES [ 20.00 m]",
        "      Residual vector v [threshold]   : YES [3.00 * STD_V]",
        "  Threshold for L4 cycle slip screen. : YES",
        "      L4 threshold                [m] :  0.040",
        "      L4-rate threshold   [m/sqrt(s)] :  0.010",
        "      L4 screening method             : CONSTANT",
        "  Antenna phase center modelling      : " + none,
        "  Azimuth offset for calibration data : " + none,
        "  Type of processing solution         :",
        "      KINEMATIC                       : " + none,
        "      STATIC                          : YES",
        "  Estimation of DCB values            : GPS GLONASS",
        "  Estimation of troposphere parameters: YES",
        "      Troposphere interval            : 3600.0 s",
        "      Troposphere epoch shift         : 1800.0 s",
        "  Estimation of gradient tropo. par.  : YES",
        "      Number of gradient intervals    : 2",
        "  Check for minimum GNSS data         : YES [80.0 %]",
        "",
        "",
        "ITERATION PROCESS:",
        Rule('=', 18),
        "",
        "  Maximum number of iteration         : 8",
        "  Iteration process threshold         : 1.00e-03",
        "",
        "",
    };

    const std::vector<std::string> got = Lines(report);
    ASSERT_EQ(got.size(), want.size()) << report;
    for (size_t i = 0; i < want.size(); ++i) {
        if (want[i] == "<date>") {
            // The clock may tick during the call: either reading is right.
            const std::string head = "          RELEASE:            ";
            EXPECT_TRUE(got[i] == Padded(head, "07 FEB 2024", dateBefore)
                        || got[i] == Padded(head, "07 FEB 2024", dateAfter))
                << got[i];
        } else {
            EXPECT_EQ(got[i], want[i]) << "line " << i + 1;
        }
    }
    // The report ends where it started: in fixed notation.
    EXPECT_TRUE(fixedAfter);
}

TEST(PrintArguments, OtherBranchesOfTheSettings)
{
    Context c;
    std::strcpy(c.gc.rnxfile, "site.20o");
    std::strcpy(c.gc.mydbcfile, "my.dcb");
    std::strcpy(c.gc.CerrFile, "run.log");
    c.gc.isCerrFile = true;
    c.gc.isMyDCB = true;
    c.gc.obsP = gCPosC::OBSP1;
    c.gc.isSolidTide = false;
    c.gc.isAzmOffAtx = true;
    c.gc.AzmOffAtx = 12.5;
    c.gc.isAtx = true;
    c.gc.ifEstKin = true;
    c.gc.ifC1 = c.gc.ifP1 = c.gc.ifP2 = c.gc.ifPp3 = true;
    c.gc.isGAL = true;
    c.gc.isGALxdcb = true;
    c.gc.ifEstTropo = c.gc.ifEstTropoGrad = true;
    c.gc.TropoInterval = 7200.0L;
    c.gc.nTropoGradInt = 0;
    c.gc.isMinElev = false;
    const std::string r = Report(c.gc);

    EXPECT_EQ(LineOf(r, "  Observation (RINEX) file"),
              "  Observation (RINEX) file            : site.20o");
    EXPECT_EQ(LineOf(r, "  File with redirected CERR"),
              "  File with redirected CERR content   : run.log");
    EXPECT_EQ(LineOf(r, "  Satellite systems used"), "  Satellite systems used in processing: GALILEO");
    EXPECT_EQ(LineOf(r, "  Code observations"),
              "  Code observations used in program   : C/A P1 P2 P3[P1,P2]");
    EXPECT_EQ(LineOf(r, "  Phase observations"), "  Phase observations used in program  :");
    EXPECT_EQ(LineOf(r, "  Minimum elevation"),
              "  Minimum elevation angle             : 10.0 [DEFAULT VALUE]");
    EXPECT_EQ(LineOf(r, "     Troposphere model"), "     Troposphere model                :  ---");
    EXPECT_EQ(LineOf(r, "     Troposphere mapping"),
              "     Troposphere mapping function     :  ---");
    EXPECT_EQ(LineOf(r, "     Iono-free"), "     Iono-free linear combination     : YES");
    EXPECT_EQ(LineOf(r, "  Differential code biases - Meskal"),
              "  Differential code biases - Meskal   : YES - my.dcb");
    EXPECT_EQ(LineOf(r, "  Solid Earth"), "  Solid Earth Tide modelling          :  ---");
    EXPECT_EQ(LineOf(r, "  Observation weighting"),
              "  Observation weighting               :  ---");
    EXPECT_EQ(LineOf(r, "      Misclosure"), "      Misclosure vector f [threshold] : NO");
    EXPECT_EQ(LineOf(r, "      Residual vector"), "      Residual vector v [threshold]   : NO");
    EXPECT_EQ(LineOf(r, "  Threshold for L4"), "  Threshold for L4 cycle slip screen. : NO");
    EXPECT_EQ(LineOf(r, "      L4 threshold"), "      L4 threshold                [m] :  0.050");
    EXPECT_EQ(LineOf(r, "      L4-rate"), "      L4-rate threshold   [m/sqrt(s)] :  0.020");
    EXPECT_EQ(LineOf(r, "      L4 screening"), "      L4 screening method             : LINEAR");
    EXPECT_EQ(LineOf(r, "  Antenna phase center modelling"), "  Antenna phase center modelling      : YES");
    EXPECT_EQ(LineOf(r, "  Azimuth offset"), "  Azimuth offset for calibration data : YES [12.5]");
    EXPECT_EQ(LineOf(r, "      KINEMATIC"), "      KINEMATIC                       : YES");
    EXPECT_EQ(LineOf(r, "      STATIC"), "      STATIC                          :  ---");
    EXPECT_EQ(LineOf(r, "  Estimation of DCB"), "  Estimation of DCB values            : GALILEO");
    EXPECT_EQ(LineOf(r, "      Troposphere interval"),
              "      Troposphere interval            : 7200.0 s");
    EXPECT_EQ(LineOf(r, "      Troposphere epoch shift"),
              "      Troposphere epoch shift         : 0.0 s");
    EXPECT_EQ(LineOf(r, "      Number of gradient"),
              "      Number of gradient intervals    :  same as ZTDs");
    EXPECT_EQ(LineOf(r, "  Check for minimum"), "  Check for minimum GNSS data         :  ---");
    EXPECT_EQ(LineOf(r, "  Iteration process"), "  Iteration process threshold         : 1.00e-04");
    EXPECT_EQ(LineOf(r, "  Maximum number"), "  Maximum number of iteration         : 10");

    // Without the estimate, its details read " ---".
    Context d;
    const std::string r2 = Report(d.gc);
    EXPECT_EQ(LineOf(r2, "      Troposphere interval"),
              "      Troposphere interval            :  ---");
    EXPECT_EQ(LineOf(r2, "      Number of gradient"),
              "      Number of gradient intervals    :  ---");
    EXPECT_EQ(LineOf(r2, "     Iono-free"), "     Iono-free linear combination     :  ---");
    EXPECT_EQ(LineOf(r2, "  Azimuth offset"), "  Azimuth offset for calibration data :  ---");
    EXPECT_EQ(LineOf(r2, "  Differential code biases - Meskal"),
              "  Differential code biases - Meskal   :  ---");
}

TEST(PrintArguments, CodeBiasSourceTakesTheLastThatApplies)
{
    struct Case {
        bool nav, ionx, code;
        const char* text;
    };
    const Case cases[] = {
        {false, false, false, " ---"},
        {true, false, false, "Navigation time group delay"},
        {true, true, false, "IONEX DCB values"},
        {false, true, false, "IONEX DCB values"},
        {true, true, true, "DCB values provided by CODE"},
        {false, false, true, "DCB values provided by CODE"},
    };
    for (const Case& k : cases) {
        Context c;
        c.gc.isGPSnav = k.nav;
        c.gc.isIonx = k.ionx;
        c.gc.isP2C2 = k.code;
        EXPECT_EQ(LineOf(Report(c.gc), "  Differential code biases "),
                  std::string("  Differential code biases            : ") + k.text);
    }
    // Each of the three code bias files is enough.
    for (bool gCPosC::*f : {&gCPosC::isP1P2, &gCPosC::isP1C1, &gCPosC::isP2C2}) {
        Context c;
        c.gc.*f = true;
        EXPECT_EQ(LineOf(Report(c.gc), "  Differential code biases "),
                  "  Differential code biases            : DCB values provided by CODE");
    }
}

TEST(PrintArguments, ChosenTroposphereIsSetIntoTheSelector)
{
    struct Case {
        short model, mapping;
        const char *modelName, *mappingName;
    };
    const Case cases[] = {{3, 6, "GPT2", "GPT2"}, {4, 5, "VIENNA", "VMF1"},
                          {1, 2, "Hopfield", "Davis"}, {2, 4, "GPT", "UNB3"}};
    for (const Case& k : cases) {
        Context c;
        c.gc.isTrpModel = true;
        c.gc.TrpModel = k.model;
        c.gc.TrpMappFun = k.mapping;
        const std::string r = Report(c.gc);
        EXPECT_EQ(c.gc.trpmodel.TropM, k.model);
        EXPECT_EQ(c.gc.trpmodel.MappF, k.mapping);
        EXPECT_EQ(LineOf(r, "     Troposphere model"),
                  std::string("     Troposphere model                : ") + k.modelName);
        EXPECT_EQ(LineOf(r, "     Troposphere mapping"),
                  std::string("     Troposphere mapping function     : ") + k.mappingName);
    }
}

TEST(PrintArguments, VerboseModeLogsOneLine)
{
    Context c;
    c.gc.verbose = true;
    std::ostringstream log;
    std::streambuf* oldErr = std::cerr.rdbuf(log.rdbuf());
    {
        OutCapture cap;
        PrintArguments(c.gc);
    }
    std::cerr.rdbuf(oldErr);
    EXPECT_EQ(log.str(), "Orvo::PrintArguments(): PRINTING INPUT ARGUMENTS!\n");
}
