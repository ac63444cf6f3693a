// Header lines of RINEX 2: labels, fixed columns, repeats and the type list.
#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <vector>

#include "observations/RINEXHeader.h"
#include "numerics/NearLD.h"

namespace {

// A header line: text in columns 0-59, the label from column 60.
std::string HLine(const std::string& text, const std::string& label)
{
    std::string l = text;
    l.resize(60, ' ');
    return l + label + "\n";
}

std::string TypesLines(const std::vector<std::string>& types)
{
    std::string out;
    char buf[16];
    std::snprintf(buf, sizeof buf, "%6zu", types.size());
    std::string text = buf;
    for (std::size_t k = 0; k < types.size(); k++) {
        if (k > 0 && k % 9 == 0) {
            out += HLine(text, "# / TYPES OF OBSERV");
            text = "      ";
        }
        text += "    " + types[k];
    }
    return out + HLine(text, "# / TYPES OF OBSERV");
}

RINEXHeader Read(const std::string& text)
{
    std::istringstream in(text);
    RINEXHeader h;
    in >> h;
    return h;
}

}  // namespace

TEST(RinexHeader, FixedColumnFieldsAndTrimming)
{
    const std::string text =
        HLine("     2.11           OBSERVATION DATA    G (GPS)", "RINEX VERSION / TYPE")
        + HLine("teqc  2015Jun23                         20150824 00:11:18UTC", "PGM / RUN BY / DATE")
        + HLine("  ZIMM  ", "MARKER NAME")
        + HLine("14001M004", "MARKER NUMBER")
        + HLine("TRIMBLE NETR9       SWISSTOPO", "OBSERVER / AGENCY")
        + HLine("5429R49141          TRIMBLE NETR9       5.03", "REC # / TYPE / VERS")
        + HLine("99390               TRM29659.00     NONE", "ANT # / TYPE")
        + HLine("  4331296.9226   567556.0704  4633134.0631", "APPROX POSITION XYZ")
        + HLine("        1.2500        0.0100       -0.0200", "ANTENNA: DELTA H/E/N")
        + HLine("     1     2", "WAVELENGTH FACT L1/2")
        + HLine("    30.0000", "INTERVAL")
        + HLine("  2015     8    23     0     0    0.0000000     GPS", "TIME OF FIRST OBS")
        + HLine("", "END OF HEADER") + HLine("after the header", "MARKER NAME");
    const RINEXHeader h = Read(text);
    // Version and interval are floats: 1e-6 is a few float steps at 2.11 and
    // less than one at 30, so only the float of the same decimal passes.
    EXPECT_NEAR_LD(h.version, 2.11f, 1e-6f);
    EXPECT_EQ(h.type, 'O');
    EXPECT_EQ(h.satsystems, 'G');
    EXPECT_EQ(h.pgm, "teqc  2015Jun23");
    EXPECT_EQ(h.date, "20150824 00:11:18UTC");
    EXPECT_EQ(h.mname, "ZIMM");  // trimmed, and nothing read past END OF HEADER
    EXPECT_EQ(h.observer, "TRIMBLE NETR9");
    EXPECT_EQ(h.agency, "SWISSTOPO");
    EXPECT_EQ(h.recversion, "5.03");
    EXPECT_EQ(h.antnumb, "99390               ");           // not trimmed
    EXPECT_EQ(h.anttype, "TRM29659.00     NONE");
    EXPECT_TRUE(h.xyz0read);
    // 1e-9 m: reading 4-decimal text loses only round-off (1e-13 m here);
    // a wrong digit or column shows as 1e-4 m or more.
    EXPECT_NEAR_LD(h.GetX0().GetY(), 567556.0704L, 1e-9L);
    EXPECT_TRUE(h.neuread);
    // The line gives up, east, north.
    EXPECT_NEAR_LD(h.GetECC().GetU(), 1.25L, 1e-12L);
    EXPECT_NEAR_LD(h.GetECC().GetE(), 0.01L, 1e-12L);
    EXPECT_NEAR_LD(h.GetECC().GetN(), -0.02L, 1e-12L);
    EXPECT_EQ(h.wavelengthDefL1, '1');
    EXPECT_EQ(h.wavelengthDefL2, '2');
    EXPECT_NEAR_LD(h.GetInterval(), 30.0f, 1e-6f);
    // 2015-08-23 is MJD 57257 (JD 2457257.5).
    EXPECT_EQ(h.obsfirst.GetMJDay(), 57257u);
    EXPECT_EQ(h.obsfirstts, "GPS");
    EXPECT_EQ(h.nlines, 13);
}

TEST(RinexHeader, DefaultsOfAnEmptyHeader)
{
    const RINEXHeader h = Read("");
    EXPECT_EQ(h.GetNObs(), 0);
    // Float field: 1e-6 admits only the float -1 itself (steps of 1.2e-7).
    EXPECT_NEAR_LD(h.GetInterval(), -1.0f, 1e-6f);
    EXPECT_EQ(h.wavelengthDefL1, '1');
    EXPECT_FALSE(h.xyz0read || h.neuread || h.HasC1() || h.HasL1());
}

TEST(RinexHeader, NineTypesFillOneLineAndTheTenthOpensAnother)
{
    const std::vector<std::string> nine = {"C1", "P1", "L1", "S1", "D1", "C2", "P2", "L2", "S2"};
    // A line after the type list that must not be eaten as a continuation.
    RINEXHeader h = Read(TypesLines(nine) + HLine("MARK", "MARKER NAME") + HLine("", "END OF HEADER"));
    ASSERT_EQ(h.GetNObs(), 9);
    EXPECT_EQ(h.mname, "MARK");
    for (long k = 0; k < 9; k++) EXPECT_EQ(RINEXHeader::GetObsString(h.obs(k)), nine[k]);

    std::vector<std::string> ten = nine;
    ten.push_back("L7");
    h = Read(TypesLines(ten) + HLine("MARK", "MARKER NAME") + HLine("", "END OF HEADER"));
    ASSERT_EQ(h.GetNObs(), 10);
    EXPECT_EQ(h.obs(9), RINEXObs::L7);
    EXPECT_TRUE(h.HasL7());
    EXPECT_EQ(h.mname, "MARK");
}

TEST(RinexHeader, EveryCodeOfTheTableAndUnknownCodes)
{
    const std::vector<std::string> all = {
        "C1", "P1", "L1", "S1", "D1", "C2", "P2", "L2", "S2", "D2", "C3", "L3", "S3", "D3", "C5",
        "L5", "D5", "S5", "C6", "L6", "D6", "S6", "C7", "L7", "D7", "S7", "C8", "L8", "D8", "S8",
        "X9", "L9"};
    RINEXHeader h = Read(TypesLines(all) + HLine("", "END OF HEADER"));
    ASSERT_EQ(h.GetNObs(), 32);
    for (unsigned short t = 0; t < 30; t++) {
        EXPECT_EQ(h.obs(t), t) << all[t];
        ASSERT_NE(h.PresenceFlag(t), nullptr);
        EXPECT_TRUE(*h.PresenceFlag(t)) << all[t];
    }
    EXPECT_EQ(h.obs(30), RINEXObs::Unknown);
    EXPECT_EQ(h.obs(31), RINEXObs::Unknown);
    // The band-3 observed types are the R names, not the combinations.
    EXPECT_TRUE(h.HasL3R() && h.HasC3R());
    EXPECT_FALSE(h.HasL3() || h.HasPC3() || h.HasPP3() || h.HasL4());
}

TEST(RinexHeader, RepeatedLabelWarnsWithItsLineAndReplaces)
{
    const std::string text = HLine("FIRST", "MARKER NAME") + HLine("", "COMMENT")
                             + HLine("SECOND", "MARKER NAME")
                             + HLine("    15.000", "INTERVAL") + HLine("    30.000", "INTERVAL")
                             + HLine("", "END OF HEADER");
    testing::internal::CaptureStdout();
    const RINEXHeader h = Read(text);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(h.mname, "SECOND");
    EXPECT_NEAR_LD(h.GetInterval(), 30.0f, 1e-6f);
    EXPECT_NE(out.find("\n#### RINEXHeader: Warning -> ADDITIONAL \"MARKER NAME\" HEADER LINE"
                       " -> line: 3 ####\n     Continuing RINEXHeader ... \n\n"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("ADDITIONAL \"INTERVAL\" HEADER LINE -> line: 5"), std::string::npos);
}

TEST(RinexHeader, ACommentHoldingALabelCountsAsThatLabel)
{
    // The search runs over the whole line in a fixed order.
    const RINEXHeader h = Read(HLine("OBSERVATORY", "MARKER NAME COMMENT") + HLine("", "END OF HEADER"));
    EXPECT_EQ(h.mname, "OBSERVATORY");
}

TEST(RinexHeader, TooManyTypesStop)
{
    std::vector<std::string> many(61, "L1");
    const std::string text = TypesLines(many) + HLine("", "END OF HEADER");
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            Read(text);
        },
        ::testing::ExitedWithCode(1),
        "#### RINEXHeader: Error -> NUMBER OF OBSERVATION TYPES NOT VALID \\(0 TO 60\\) -> "
        "line: 1 ####");
}

TEST(RinexHeader, InvalidTimeOfFirstObservationStopsInTheTimeClass)
{
    const std::string text = HLine("  2015    13    23     0     0    0.0000000     GPS",
                                   "TIME OF FIRST OBS");
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            Read(text);
        },
        ::testing::ExitedWithCode(1), "ymdhms: Error -> MONTH not valid");
}
