// RINEX 3/4 observation texts written by hand, each against the RINEX 2.11
// text expected of it (also written by hand), the choice of one code per
// type, the read of the translation by the RINEX 2 reader, and the framed
// stops on broken texts.
#include "observations/Rinex3Observation.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <map>
#include <sstream>
#include <vector>

#include "../TestSupport.h"
#include "observations/CompactRinex.h"
#include "observations/RINEX.h"

namespace {

// A header record: data padded to column 60, then the label.
std::string H(const std::string& data, const std::string& label)
{
    return data + std::string(60 - data.size(), ' ') + label + "\n";
}

// The lines of a text after END OF HEADER that are no epoch lines (which
// begin " 20" in RINEX 2, "> " in RINEX 3), joined by '|'.
std::string Records(const std::string& text)
{
    std::string out, line;
    std::istringstream in(text.substr(text.find("END OF HEADER") + 14));
    while (std::getline(in, line))
        if (line.compare(0, 3, " 20") != 0) out += line + "|";
    return out;
}

std::string Translate(const std::string& text, std::string* report = nullptr)
{
    testing::internal::CaptureStdout();
    const std::string out = Rinex3ToRinex2(text, "test.rnx");
    const std::string printed = testing::internal::GetCapturedStdout();
    if (report) *report = printed;
    return out;
}

const std::string Blank16(16, ' '), Blank32(32, ' ');

// G, R, E, C; 14 GPS codes on two lines in an order unlike RINEX 2's; 13
// processed satellites in one epoch; an event; an old "G 2" satellite; a
// receiver clock offset.
const std::string Rnx304 =
    H("     3.04           OBSERVATION DATA    M (MIXED)", "RINEX VERSION / TYPE") + H("TEST", "MARKER NAME")
    + H("G   14 L1C C1C S1C C1W D1C L5Q C2W S2W L2W C5Q C1L L2L S1W", "SYS / # / OBS TYPES")
    + H("       C5X", "SYS / # / OBS TYPES") + H("R    4 C1C L1C C2P L2P", "SYS / # / OBS TYPES")
    + H("E    4 C1C L1C C7Q L7Q", "SYS / # / OBS TYPES") + H("C    2 C2I L2I", "SYS / # / OBS TYPES")
    + H("G L2W  0.00000", "SYS / PHASE SHIFT") + H("  2 R01  1 R02 -4", "GLONASS SLOT / FRQ #")
    + H("  2020     6    25     0     0    0.0000000     GPS", "TIME OF FIRST OBS") + H("", "END OF HEADER")
    + "> 2020 06 25 00 00  0.0000000  0 14\n"
      "G01 105000000.30017  20000000.100 7        45.500    20000001.200       -1000.400    78000000.123 8"
      "  20000002.600          40.800    82000000.700 6  20000003.900    20000004.000    82000000.999 6"
      "        41.000    20000005.000\n"
      "C05  30000000.000 6 156000000.000 6\n"
      "G02 110000002.000\nG03 110000003.000\nG04 110000004.000\nG05 110000005.000\nG06 110000006.000\n"
      "G07 110000007.000\nG08 110000008.000\nG09 110000009.000\nG10 110000010.000\n"
      "R01  19000000.111 6 101000000.222 6  19000001.333 6  78000000.444 6\n"
      "E01  23000000.555 7 121000000.666 7  23000001.777 7  93000000.888 7\n"
      "E02                                  24000000.999 5\n"
      "> 2020 06 25 00 00 15.0000000  5  1\n"
    + H("SPARE ANTENNA", "COMMENT")
    + "> 2020 06 25 00 00 30.0000000  0  2       0.000123456789\n"
      "G 2 110000099.000\nE01  23000099.000\n";

std::string Expected304()
{
    std::string gps;  // G02-G10: L1 alone, the third RINEX 2 field
    for (int n = 2; n <= 10; ++n) gps += Blank32 + " 1100000" + (n < 10 ? "0" : "") + std::to_string(n) + ".000\n\n\n";
    return H("     2.11           OBSERVATION DATA    M (MIXED)", "RINEX VERSION / TYPE")
           + H("TRANSLATED FROM RINEX 3.04 BY ORVO", "COMMENT") + H("TEST", "MARKER NAME")
           + H("  2 R01  1 R02 -4", "GLONASS SLOT / FRQ #")
           + H("  2020     6    25     0     0    0.0000000     GPS", "TIME OF FIRST OBS")
           + H("    12    C1    P1    L1    D1    S1    P2    L2    S2    C5", "# / TYPES OF OBSERV")
           + H("          L5    C7    L7", "# / TYPES OF OBSERV") + H("", "END OF HEADER")
           + " 20  6 25  0  0  0.0000000  0 13G01G02G03G04G05G06G07G08G09G10R01E01\n" + Blank32 + "E02\n"
           + "  20000000.100 7  20000001.200   105000000.30017     -1000.400          45.500\n"
             "  20000002.600    82000000.700 6        40.800    20000003.900    78000000.123 8\n\n"
           + gps
           + "  19000000.111 6" + Blank16 + " 101000000.222 6\n  19000001.333 6  78000000.444 6\n\n"
           + "  23000000.555 7" + Blank16 + " 121000000.666 7\n\n  23000001.777 7  93000000.888 7\n"
           + "\n\n  24000000.999 5\n"
           + std::string(26, ' ') + "  5  1\n" + H("SPARE ANTENNA", "COMMENT")
           + " 20  6 25  0  0 30.0000000  0  2G02E01" + std::string(30, ' ') + " 0.000123457\n"
           + Blank32 + " 110000099.000\n\n\n  23000099.000\n\n\n";
}

// GLONASS alone in 4.00: records RINEX 2 has not (DOI, LICENSE OF USE), a
// blank time system, an undated event with header records inside, and
// cycle-slip records (flag 6).
const std::string Rnx400 =
    H("     4.00           OBSERVATION DATA    R", "RINEX VERSION / TYPE") + H("10.1234/ABC", "DOI")
    + H("CC BY 4.0", "LICENSE OF USE") + H("R    6 C1C C1P L1C L1P S1C S1P", "SYS / # / OBS TYPES")
    + H("  2020     6    25     0     0    0.0000000", "TIME OF FIRST OBS") + H("", "END OF HEADER")
    + "> 2020 06 25 00 00  0.0000000  0  1\n"
      "R01  19000000.111 6  19000000.222   101000000.333 6 101000000.444 6        40.000          41.000\n"
      ">                              4  2\n"
    + H("ANTENNA CHANGED", "COMMENT") + H("        0.1200        0.0000        0.0000", "ANTENNA: DELTA H/E/N")
    + "> 2020 06 25 00 00 30.0000000  6  1\n"
      "R01                                 101000010.000 1\n"
      "> 2020 06 25 00 00 30.0000000  0  1\n"
      "R01  19000003.000    19000003.100   101000010.000 1 101000010.100 1        39.000          39.500\n";

const std::string Expected400 =
    H("     2.11           OBSERVATION DATA    R", "RINEX VERSION / TYPE")
    + H("TRANSLATED FROM RINEX 4.00 BY ORVO", "COMMENT")
    + H("  2020     6    25     0     0    0.0000000     GLO", "TIME OF FIRST OBS")
    + H("     4    C1    P1    L1    S1", "# / TYPES OF OBSERV") + H("", "END OF HEADER")
    + " 20  6 25  0  0  0.0000000  0  1R01\n"
      "  19000000.111 6  19000000.222   101000000.333 6        40.000\n"
    + std::string(26, ' ') + "  4  2\n" + H("ANTENNA CHANGED", "COMMENT")
    + H("        0.1200        0.0000        0.0000", "ANTENNA: DELTA H/E/N")
    + std::string(26, ' ') + "  6  1R01\n" + Blank32 + " 101000010.000 1\n"
    + " 20  6 25  0  0 30.0000000  0  1R01\n"
      "  19000003.000    19000003.100   101000010.000 1        39.000\n";

}  // namespace

TEST(Rinex3Observation, HandWrittenTextsGiveTheRinex2TextExpected)
{
    std::string report;
    EXPECT_EQ(Translate(Rnx304, &report), Expected304());
    // C1L has no RINEX 2 type; the BeiDou record is counted.
    EXPECT_NE(report.find("NOT USED: G: C1L"), std::string::npos) << report;
    EXPECT_NE(report.find("LEFT OUT (C 1)"), std::string::npos) << report;
    EXPECT_EQ(Translate(Rnx400), Expected400);
}

TEST(Rinex3Observation, OneCodePerTypeFirstListedWithAValueInTheFile)
{
    const std::string e0 = "> 2020 06 25 00 00  0.0000000  0  1\n", e1 = "> 2020 06 25 00 00 30.0000000  0  1\n";
    const struct { const char* what; std::string types, records, expTypes, expRecords; } rows[] = {
        {"C1W listed but empty all day: C1P", "G    3 C1C C1P C1W", e0 + "G01  20000000.000    20000001.000\n",
         "     2    C1    P1", "  20000000.000    20000001.000|"},
        {"C1W with a value in the second epoch only", "G    3 C1C C1P C1W",
         e0 + "G01  20000000.000    20000001.000\n" + e1 + "G01  20000000.000    20000001.000    20000002.000\n",
         "     2    C1    P1", "  20000000.000|  20000000.000    20000002.000|"},
        {"C1W and C1P absent: C1Y", "G    2 C1C C1Y", e0 + "G01  20000000.000    20000001.000\n",
         "     2    C1    P1", "  20000000.000    20000001.000|"},
        {"0.000 is no value", "G    3 C1C C1W C1P", e0 + "G01  20000000.000           0.000    20000001.000\n",
         "     2    C1    P1", "  20000000.000    20000001.000|"},
        {"S1 from the signal of L1", "G    4 S1W L1W S1C L1C",
         e0 + "G01        41.000   105000000.000 5        45.000   105000000.100 7\n", "     2    L1    S1",
         " 105000000.100 7        45.000|"},
        {"L1C empty all day: L1W and S1W", "G    4 S1W L1W S1C L1C",
         e0 + "G01        41.000   105000000.000 5        45.000\n", "     2    L1    S1", " 105000000.000 5        41.000|"},
        {"GLONASS L2P before L2C", "R    2 L2C L2P", e0 + "R01  78000000.100 5  78000000.200 6\n", "     1    L2",
         "  78000000.200 6|"},
    };
    for (const auto& r : rows) {
        const std::string out = Translate(H("     3.05           OBSERVATION DATA    M", "RINEX VERSION / TYPE")
                                          + H(r.types, "SYS / # / OBS TYPES") + H("", "END OF HEADER") + r.records);
        EXPECT_NE(out.find(H(r.expTypes, "# / TYPES OF OBSERV")), std::string::npos) << r.what << "\n" << out;
        EXPECT_EQ(Records(out), r.expRecords) << r.what;
    }
}

// The reader holds 3-decimal values in long double; a misread digit is at
// least 1e-3 m (or cycle).
constexpr long double ValueTol = 1e-6L;

TEST(Rinex3Observation, TheRinex2ReaderTakesTheTranslation)
{
    RINEXHeader h;
    RINEXData d(h);
    RINEX rnx(h, d);
    rnx.SetFile(orvotest::WriteTemp("rnx304.rnx", Translate(Rnx304)));
    testing::internal::CaptureStdout();
    rnx.ReadFile();
    testing::internal::GetCapturedStdout();
    // The event is passed over: two epochs of 13 and 2 records.
    ASSERT_EQ(d.GetNEpoch(), 2);
    ASSERT_EQ(d.GetNObs(), 15);
    const struct { long rec; short sat; const matrix<gnssobs>& m; long double value; int lli, ss; } rows[] = {
        {0, 1, d.C1, 20000000.100L, 0, 7},    {0, 1, d.P1, 20000001.200L, 0, 0},  {0, 1, d.L1, 105000000.300L, 1, 7},
        {0, 1, d.P2, 20000002.600L, 0, 0},    {0, 1, d.L2, 82000000.700L, 0, 6},  {0, 1, d.L5, 78000000.123L, 0, 8},
        {10, 101, d.P2, 19000001.333L, 0, 6}, {11, 201, d.L7, 93000000.888L, 0, 7}, {12, 202, d.C7, 24000000.999L, 0, 5},
        {13, 2, d.L1, 110000099.000L, 0, 0}};
    for (const auto& r : rows) {
        EXPECT_EQ(d.sat(r.rec), r.sat) << r.rec;
        EXPECT_NEAR(static_cast<double>(r.m(r.rec).obs), static_cast<double>(r.value), static_cast<double>(ValueTol));
        EXPECT_EQ(r.m(r.rec).lli, r.lli) << r.rec;
        EXPECT_EQ(r.m(r.rec).ss, r.ss) << r.rec;
    }
    EXPECT_NEAR(static_cast<double>(d.S1(0).obs), 45.5, static_cast<double>(ValueTol));
    // The channels of the header: R01 +1, R02 -4, no other slot.
    EXPECT_EQ(h.nGlonassChannels, 2);
    EXPECT_EQ(h.glonassChannel[1], 1);
    EXPECT_EQ(h.glonassChannel[2], -4);
    EXPECT_FALSE(h.HasGlonassChannel(3));
}

TEST(Rinex3Observation, WhichFilesAreRinex3AndWhichHeadersGiveChannels)
{
    EXPECT_TRUE(IsRinex3Observation(Rnx304, "a"));
    EXPECT_TRUE(IsRinex3Observation(Rnx400, "a"));
    EXPECT_FALSE(IsRinex3Observation(Expected400, "a"));
    EXPECT_FALSE(IsRinex3Observation(H("     3.05           N: GNSS NAV DATA    M", "RINEX VERSION / TYPE"), "a"));
    EXPECT_FALSE(IsRinex3Observation(H("3.0                 COMPACT RINEX FORMAT", "CRINEX VERS   / TYPE"), "a"));

    const std::string zipped = orvotest::TempDir() + "/rnx304.rnx.gz";
    gzFile z = gzopen(zipped.c_str(), "wb");
    gzputs(z, Rnx304.c_str());
    gzclose(z);
    const struct { std::string path; bool channels; } rows[] = {
        {orvotest::Data("esbc-2020-177/ESBC00DNK_R_20201770000_01D_30S_MO.crx.gz"), true},
        {orvotest::Data("esbc-2020-177/esbc1770.20o"), false},  // named only in a comment
        {orvotest::WriteTemp("rnx400.rnx", Rnx400), false}, {zipped, true}, {"no/such/file", false}};
    for (const auto& r : rows) EXPECT_EQ(ObservationHeaderHasGlonassChannels(r.path), r.channels) << r.path;
}

TEST(Rinex3ObservationDeath, BrokenTextsStopWithAFramedErrorNamingTheLine)
{
    const std::string head = H("     3.05           OBSERVATION DATA    G", "RINEX VERSION / TYPE")
                             + H("G    2 C1C L1C", "SYS / # / OBS TYPES")
                             + H("  2020     6    25     0     0    0.0000000     GPS", "TIME OF FIRST OBS");
    const std::string body = H("", "END OF HEADER") + "> 2020 06 25 00 00  0.0000000  0  1\n"
                             + "G01  20000000.000 7 105000000.000 7\n> 2020 06 25 00 00 30.0000000  0  1\n"
                             + "G01  20000001.000 7 105000001.000 7\n";
    const struct { std::string from, to, message; } rows[] = {
        {"3.05", "3.01", "UNKNOWN RINEX VERSION 3.01"},
        {"3.05", "2.11", "NOT A RINEX 3 OR 4 OBSERVATION FILE"},
        {body, "", "NO END OF HEADER"},
        {"G    2", "X\nG    2", "HEADER LINE SHORTER THAN ITS LABEL \\(COLUMNS 61-80\\) -> line: 2"},
        {"G    2", "G    3", "SYS / # / OBS TYPES OF G LISTS FEWER CODES THAN 3 -> line: 2"},
        {"L1C", "Q1C", "OBSERVATION CODE \"Q1C\" OF SYSTEM G NOT VALID"},
        {"G    2", "X    2", "SATELLITE SYSTEM \"X\" OF SYS / # / OBS TYPES NOT VALID"},
        {"  2020", H("G   10", "SYS / SCALE FACTOR") + "  2020", "SYS / SCALE FACTOR 10 OF SYSTEM G NOT SUPPORTED -> line: 3"},
        {"> 2020 06 25 00 00  0", "  2020 06 25 00 00  0", "EPOCH LINE \\(>\\) EXPECTED -> line: 5"},
        {"0  1\nG01  2000", "0  0\nG01  2000", "THE COUNT OF THE EPOCH OF LINE 5 DOES NOT MATCH ITS RECORDS -> line: 6"},
        {"0  1\nG01  2000", "0  2\nG01  2000", "NEW EPOCH INSIDE THE 2 RECORDS OF THE EPOCH OF LINE 5"},
        {"30.0000000  0  1", "30.0000000  0  2", "FILE ENDS INSIDE THE EPOCH OF LINE 7"},
        {"0.0000000  0  1", "0.0000000  7  1", "EPOCH FLAG \"7\" NOT VALID \\(0 TO 6\\) -> line: 5"},
        {"0.0000000  0  1", "0.0000000  0 -1", "NEGATIVE COUNT IN EPOCH LINE -> line: 5"},
        {" 06 25", " 0x 25", "\"0x\" IN EPOCH LINE IS NOT A NUMBER -> line: 5"},
        {"> 2020", "> 2080", "YEAR 2080 OUTSIDE 1980 TO 2079"},
        {" 06 25", " 13 25", "EPOCH TIME NOT VALID -> line: 5"},
        {"> 2020 06 25 00 00  0.0000000", ">" + std::string(28, ' '), "EPOCH LINE WITHOUT DATE -> line: 5"},
        {"0  1\nG01  2000", "0  1         abc\nG01  2000", "RECEIVER CLOCK OFFSET \"abc\" IS NOT A NUMBER"},
        {"G01  20000000", "X01  20000000", "SATELLITE \"X01\" NOT VALID -> line: 6"},
        {"G01  20000000", "R01  20000000", "SYSTEM R HAS NO SYS / # / OBS TYPES -> line: 6"},
        {"20000000.000", "2000000x.000", "C1C OF G01 IS NOT A NUMBER: \"  2000000x.000 7\" -> line: 6"},
        {"105000000.000 7\n", "105000000.000 7  1.000\n", "RECORD OF G01 HAS MORE FIELDS THAN THE 2 TYPES"},
        {"105000001.000 7\n", "1050", "FILE ENDS INSIDE AN OBSERVATION VALUE -> line: 8"},
        {"> 2020 06 25 00 00 30", ">                              4  1\n" + H("G    1 C1C", "SYS / # / OBS TYPES")
                                      + "> 2020 06 25 00 00 30", "OBSERVATION TYPES CHANGE INSIDE THE DATA"},
    };
    for (const auto& r : rows) {
        std::string text = head + body;
        text.replace(text.find(r.from), r.from.size(), r.to);
        EXPECT_EXIT(Translate(text), testing::ExitedWithCode(1), "\\*\\*\\*\\* Orvo: Error -> test.rnx: .*" + r.message)
            << r.from;
    }
}

TEST(Rinex3ObservationDeath, BrokenGlonassChannelsStopTheRinex2Reader)
{
    const struct { std::string entry, message; } rows[] = {
        {"  1 X01  1", "GLONASS SLOT \"X01\" NOT VALID"}, {"  1 R01  9", "GLONASS CHANNEL \"9\" OF R01 NOT VALID"}};
    for (const auto& r : rows) {
        std::string text = Rnx304;
        text.replace(text.find("  2 R01  1 R02 -4"), 17, r.entry + "       ");
        const std::string path = orvotest::WriteTemp("channels.rnx", Translate(text));
        EXPECT_EXIT(
            {
                std::cout.rdbuf(std::cerr.rdbuf());
                RINEXHeader h;
                RINEXData d(h);
                RINEX rnx(h, d);
                rnx.SetFile(path);
                rnx.ReadFile();
            },
            testing::ExitedWithCode(1), "RINEXHeader: Error -> .*" + r.message);
    }
}

// ---- Compact RINEX 3 straight into the store -------------------------------

// The Compact RINEX 3 text of a RINEX 3 text, every epoch an initialisation
// (each value an arc start "3&v", flags written out), events copied whole.
std::string Compact(const std::string& rnx)
{
    std::istringstream in(rnx);
    std::string out = "3.0                 COMPACT RINEX FORMAT                    CRINEX VERS   / TYPE\n"
                      "TEST                                    24-Nov-26 12:00     CRINEX PROG / DATE\n";
    std::map<char, int> types;
    std::string line;
    while (std::getline(in, line)) {
        out += line + "\n";
        if (line.compare(60, 19, "SYS / # / OBS TYPES") == 0) types[line[0]] = std::stoi(line.substr(3, 3));
        if (line.compare(60, 13, "END OF HEADER") == 0) break;
    }
    // "1234.567" as thousandths, or nothing for a blank field.
    const auto value = [](std::string f) {
        f.erase(0, f.find_first_not_of(' '));
        if (f.empty()) return std::string();
        const bool neg = f[0] == '-';
        std::string digits = f.substr(neg);
        digits.erase(digits.find('.'), 1);
        return "3&" + std::string(neg ? "-" : "") + std::to_string(std::stoll(digits));
    };
    while (std::getline(in, line)) {
        const int count = std::stoi(line.substr(32, 3));
        std::vector<std::string> recs(static_cast<std::size_t>(count));
        for (std::string& r : recs) std::getline(in, r);
        if (line[31] != '0' && line[31] != '1') {
            out += line + "\n";
            for (const std::string& r : recs) out += r + "\n";
            continue;
        }
        line.resize(56, ' ');
        out += line.substr(0, 41);
        for (const std::string& r : recs) out += r.substr(0, 3);
        out += "\n" + value(line.substr(41, 15)) + "\n";
        for (std::string r : recs) {
            const int t = types.at(r[0]);
            r.resize(3 + 16 * static_cast<std::size_t>(t), ' ');
            std::string fields, flags;
            for (int k = 0; k < t; k++) {
                fields += value(r.substr(3 + 16 * k, 14)) + " ";
                flags += r.substr(17 + 16 * k, 2);
            }
            out += fields + flags + "\n";
        }
    }
    return out;
}

// A RINEX 3 record: the satellite, then per field its value (blank when
// empty) right-justified in 14 columns and its two flag characters.
std::string R3(const char* sat, const std::vector<std::pair<std::string, std::string>>& fields)
{
    std::string r = sat;
    for (const auto& [value, flags] : fields) r += std::string(14 - value.size(), ' ') + value + flags;
    return r + "\n";
}

// G: L2W listed first but never observed (its flags alone in the first
// record), so L2 takes L2L and S2 follows it past S2W; R: L1C empty in the
// first epoch, observed from the second; C left out; a copy and a clash of
// one satellite; a code too short for any orbit; an event, a cycle-slip
// block, an epoch of left-out records only; an LLI that is no digit in a
// code no type takes.
const std::string G01 = R3("G01", {{"20000000.100", " 7"}, {"105000000.300", "17"}, {"", " 5"}, {"82000000.700", " 6"},
                                   {"40.000", " 7"}, {"41.500", " 6"}, {"-1000.400", "  "}, {"20000001.200", "  "}});
const std::string Mixed305 =
    H("     3.05           OBSERVATION DATA    M (MIXED)", "RINEX VERSION / TYPE")
    + H("G    8 C1C L1C L2W L2L S2W S2L D1C C1W", "SYS / # / OBS TYPES") + H("R    3 C1C L1C L1P", "SYS / # / OBS TYPES")
    + H("C    2 C2I L2I", "SYS / # / OBS TYPES") + H("    30.000", "INTERVAL")
    + H("  2020     6    25     0     0    0.0000000     GPS", "TIME OF FIRST OBS") + H("", "END OF HEADER")
    + "> 2020 06 25 00 00  0.0000000  0  4       0.000123456789\n"
    + G01 + G01 + R3("R01", {{"19000000.111", " 6"}, {"", "  "}, {"101000000.222", " 6"}})
    + R3("C05", {{"30000000.000", " 6"}, {"156000000.000", " 6"}})
    + "> 2020 06 25 00 00 30.0000000  0  3      -0.000000000500\n"
    + R3("G02", {{"100.000", " 7"}, {"110000002.000", " 7"}, {"", "  "}, {"85000000.000", " 2"}})
    + R3("G02", {{"21000000.000", " 7"}, {"110000002.000", " 7"}, {"", "  "}, {"85000000.001", " 2"}})
    + R3("R01", {{"19000010.111", " 6"}, {"101000050.000", " 6"}, {"101000050.222", " 6"}})
    + ">                              4  1\n" + H("SPARE ANTENNA", "COMMENT")
    + "> 2020 06 25 00 01  0.0000000  0  1\n" + R3("C05", {{"30000100.000", " 6"}, {"156000100.000", " 6"}})
    + "> 2020 06 25 00 01 30.0000000  6  1\n" + R3("G01", {{"", "  "}, {"105000000.300", "1 "}})
    + "> 2020 06 25 00 02  0.0000000  1  2\n"
    + R3("G01", {{"20000090.100", " 7"}, {"105000090.300", " 7"}, {"", "  "}, {"82000090.700", " 6"}, {"40.000", " x"},
                 {"41.500", " 6"}})
    + R3("R01", {{"19000090.111", " 6"}, {"101000090.000", " 6"}, {"101000090.222", " 6"}});

// Everything the record store holds of the two reads, equal to the bit.
void ExpectSameStore(const RINEXHeader& ha, const RINEXData& a, const RINEXHeader& hb, const RINEXData& b)
{
    ASSERT_EQ(ha.GetNObs(), hb.GetNObs());
    for (long t = 0; t < ha.GetNObs(); t++) ASSERT_EQ(ha.obs(t), hb.obs(t));
    ASSERT_EQ(a.GetNEpoch(), b.GetNEpoch());
    ASSERT_EQ(a.GetNObs(), b.GetNObs());
    EXPECT_EQ(ha.interval, hb.interval);
    EXPECT_EQ(a.IfTimeCorr, b.IfTimeCorr);
    for (long i = 0; i < a.GetNEpoch(); i++) {
        EXPECT_TRUE(a.epoch(i) - b.epoch(i) == 0.0L && a.flag(i) == b.flag(i) && a.nsat(i) == b.nsat(i)) << i;
        if (a.IfTimeCorr) {
            EXPECT_TRUE(a.TCorr(i) == b.TCorr(i)) << i;
        }
    }
    for (long r = 0; r < a.GetNObs(); r++) EXPECT_EQ(a.sat(r), b.sat(r));
    for (long t = 0; t < ha.GetNObs(); t++)
        for (long r = 0; r < a.GetNObs(); r++) {
            if (const matrix<gnssobs>* m = a.ObsMatrix(ha.obs(t))) {
                const gnssobs &x = (*m)(r), &y = (*b.ObsMatrix(ha.obs(t)))(r);
                EXPECT_TRUE(x.obs == y.obs && x.lli == y.lli && x.ss == y.ss) << RINEXHeader::GetObsString(ha.obs(t)) << " " << r;
            } else if (const matrix<gnssobsshort>* m = a.ShortMatrix(ha.obs(t))) {
                EXPECT_TRUE((*m)(r).obs == (*b.ShortMatrix(ha.obs(t)))(r).obs) << RINEXHeader::GetObsString(ha.obs(t)) << " " << r;
            }
        }
    EXPECT_EQ(a.RepeatedRecords, b.RepeatedRecords);
    EXPECT_EQ(a.CodeOutsideRange, b.CodeOutsideRange);
}

struct Read {
    RINEXHeader h;
    RINEXData d{h};
    std::string printed;
    explicit Read(const std::string& path)
    {
        RINEX rnx(h, d);
        rnx.SetFile(path);
        testing::internal::CaptureStdout();
        rnx.ReadFile();
        printed = testing::internal::GetCapturedStdout();
    }
};

TEST(Rinex3Observation, CompactRinex3GoesIntoTheStoreAsItsTextsWouldTakeIt)
{
    const std::string crx = Compact(Mixed305);
    ASSERT_TRUE(IsCompactRinex3Observation(crx, "a"));
    // The encoder is sound when the decoder gives the text back.
    ASSERT_EQ(Translate(DecodeCompactRinex(crx, "a")), Translate(Mixed305));
    const Read direct(orvotest::WriteTemp("mixed305.crx", crx)), text(orvotest::WriteTemp("mixed305.rnx", Mixed305));
    ExpectSameStore(direct.h, direct.d, text.h, text.d);
    std::string printed = direct.printed;
    printed.replace(printed.find("mixed305.crx"), 12, "mixed305.rnx");
    EXPECT_EQ(printed, text.printed);
    // What the case is made of: L2 from L2L, S2 from S2L, L1 of R01 blank
    // in the first epoch only, the clash cleared, the short code counted.
    ASSERT_EQ(direct.d.GetNObs(), 8);
    EXPECT_NEAR(static_cast<double>(direct.d.L2(0).obs), 82000000.7, 1e-6);
    EXPECT_NEAR(static_cast<double>(direct.d.S2(0).obs), 41.5, 1e-6);
    EXPECT_TRUE(direct.d.L1(2).IsNull() && !direct.d.L1(5).IsNull());
    EXPECT_TRUE(direct.d.L2(3).IsNull() && direct.d.L2(4).IsNull());
    EXPECT_EQ(direct.d.RepeatedRecords.at(1), 1);
    EXPECT_EQ(direct.d.CodeOutsideRange.at(2), 1);

    // A chosen code's LLI that is no digit stops both reads.
    std::string bad = Mixed305;
    bad.replace(bad.find("105000090.300 7"), 15, "105000090.300x7");
    const std::string badPath = orvotest::WriteTemp("bad.crx", Compact(bad));
    EXPECT_EXIT(
        {
            RINEXHeader h;
            RINEXData d(h);
            RINEX rnx(h, d);
            rnx.SetFile(badPath);
            rnx.ReadFile();
        },
        testing::ExitedWithCode(1),
                "bad.crx: L1C OF G01 IS NOT A NUMBER: \" 105000090.300x7\" -> line: 30");
}
