// Compact RINEX decoded to plain RINEX: the published worked examples, hand-
// written streams for the rules they leave out and corrupt variants. The real
// ESBC day is compared record for record with its RINEX 2 copy through the
// whole reading chain (RinexFormats).
#include <gtest/gtest.h>

#include <sstream>
#include <map>
#include <vector>

#include "TestSupport.h"
#include "numerics/InputFile.h"
#include "observations/CompactRinex.h"

namespace {

const std::string kCrx3 = "3.0                 COMPACT RINEX FORMAT                    CRINEX VERS   / TYPE\n"
                          "EXAMPLE 1.0                             01-Mar-21 12:00     CRINEX PROG / DATE\n";
const std::string kCrx1 = "1.0" + kCrx3.substr(3);

// Worked example, CRINEX 3 (four GPS epochs): header, compact body, plain body.
const std::string kHead3 = R"(     3.04           OBSERVATION DATA    G (GPS)             RINEX VERSION / TYPE
XMPL                                                        MARKER NAME
G    4 C1C L1C C2W L2W                                      SYS / # / OBS TYPES
  2021     3     1     0     0    0.0000000     GPS         TIME OF FIRST OBS
                                                            END OF HEADER
)";
const std::string kBody3 = R"(> 2021 03 01 00 00 00.0000000  0  2      G05G12
3&123456789
3&21345678123 3&112170123456 3&21345681012 3&87405281789 &7&7&5&5
3&23987654321 3&126055432876 3&23987658456 3&98224567012 &6&6&4&4
                   3
212
223333 1173667 223338 914569
-222221 -1167793 -222206 -909991
                 1 0              3            G25
2
112 588  455      &
123 647 116 505  5 5
3&24500000500 3&128748291347   &5&5&&&&
                   3
-3
2 0 3&21346351377 3&66533914250      51
-7 -40 4 -32
-200250 -1052327
)";
const std::string kPlain3 = R"(> 2021 03 01 00 00 00.0000000  0  2       0.000123456789
G05  21345678.123 7 112170123.456 7  21345681.012 5  87405281.789 5
G12  23987654.321 6 126055432.876 6  23987658.456 4  98224567.012 4
> 2021 03 01 00 00 30.0000000  0  2       0.000123457001
G05  21345901.456 7 112171297.123 7  21345904.350 5  87406196.358 5
G12  23987432.100 6 126054265.083 6  23987436.250 4  98223657.021 4
> 2021 03 01 00 01 00.0000000  0  3       0.000123457215
G05  21346124.901 7 112172471.378 7                  87407111.382 5
G12  23987210.002 5 126053097.937 5  23987214.160 4  98222747.535 4
G25  24500000.500 5 128748291.347 5
> 2021 03 01 00 01 30.0000000  0  3       0.000123457428
G05  21346348.460 7 112173646.221 7  21346351.377 5  66533914.25015
G12  23986988.020 5 126051931.398 5  23986992.190 4  98221838.522 4
G25  24499800.250 5 128747239.020 5
)";
// Its first three epochs as CRINEX 1.0 / RINEX 2.11.
const std::string kHead1 = "     2.11           OBSERVATION DATA    G (GPS)             RINEX VERSION / TYPE\n"
                           "     4    C1    L1    P2    L2                              # / TYPES OF OBSERV\n"
                           "                                                            END OF HEADER\n";
const std::string kBody1 = R"(&21  3  1  0  0  0.0000000  0  2G05G12
3&123457
3&21345678123 3&112170123456 3&21345681012 3&87405281789  7 7 5 5
3&23987654321 3&126055432876 3&23987658456 3&98224567012  6 6 4 4
                3
1
223333 1173667 223338 914569
-222221 -1167793 -222206 -909991
              1 &              3      G25

112 588  455
123 647 116 505  5 5
3&24500000500 3&128748291347    5 5
)";
const std::string kPlain1 = R"( 21  3  1  0  0  0.0000000  0  2G05G12                               0.000123457
  21345678.123 7 112170123.456 7  21345681.012 5  87405281.789 5
  23987654.321 6 126055432.876 6  23987658.456 4  98224567.012 4
 21  3  1  0  0 30.0000000  0  2G05G12                               0.000123458
  21345901.456 7 112171297.123 7  21345904.350 5  87406196.358 5
  23987432.100 6 126054265.083 6  23987436.250 4  98223657.021 4
 21  3  1  0  1  0.0000000  0  3G05G12G25
  21346124.901 7 112172471.378 7                  87407111.382 5
  23987210.002 5 126053097.937 5  23987214.160 4  98222747.535 4
  24500000.500 5 128748291.347 5
)";
// The CRINEX 3 example with a flag-4 and a flag-5 event after epoch 2.
const std::string kEvents = R"(>                              4  2
ANTENNA CHANGED TO SPARE UNIT                               COMMENT
        0.1200        0.0000        0.0000                  ANTENNA: DELTA H/E/N
> 2021 03 01 00 00 45.0000000  5  0
> 2021 03 01 00 01 00.0000000  0  3      G05G12G25
3&123457215
3&21346124901 3&112172471378  3&87407111382 &7&7&&&5
3&23987210002 3&126053097937 3&23987214160 3&98222747535 &5&5&4&4
3&24500000500 3&128748291347   &5&5&&&&
                   3
213
223559 1174843 3&21346351377 3&66533914250      51
-221982 -1166539 -221970 -909013
-200250 -1052327
                 2 0              1       12&&&&&&

3&-123 3&0  3&1500      5 &
                   3

-1 1  100      6 5
)";

// Lines [from, from + n) of text, newlines kept.
std::string Lines(const std::string& text, int from, int n)
{
    std::istringstream in(text);
    std::string line, out;
    for (int i = 0; i < from + n && std::getline(in, line); ++i)
        if (i >= from) out += line + "\n";
    return out;
}

std::string Replace(std::string s, const std::string& from, const std::string& to)
{
    return s.replace(s.find(from), from.size(), to);
}

// A header record: content in columns 1-60, label from 61.
std::string Rec(const std::string& content, const std::string& label)
{
    return content + std::string(60 - content.size(), ' ') + label + "\n";
}

std::string Decode(const std::string& text) { return DecodeCompactRinex(text, "test.crx"); }

}  // namespace

TEST(CompactRinex, TellsCompactFromOtherText)
{
    const std::pair<std::string, bool> cases[] = {
        {kCrx3, true}, {kCrx1, true}, {"2.0" + kCrx3.substr(3), false},
        {Replace(kCrx3, "CRINEX VERS", "RINEX VERSI"), false}, {kHead3, false}, {"", false}};
    for (const auto& [text, compact] : cases) EXPECT_EQ(IsCompactRinex(text), compact) << text;
}

TEST(CompactRinex, WorkedExamplesDecodeToTheirPlainText)
{
    // The published event example prints positive values below 1 without the
    // leading zero; F14.3 keeps it, as the published clocks do.
    const std::string tail = "> 2021 03 01 00 02 00.0000000  0  1\n"
                             "G12        -0.123 5         0.000 5               5         1.500\n"
                             "> 2021 03 01 00 02 30.0000000  0  1\n"
                             "G12        -0.124 5         0.001 5               6         1.600 5\n";
    const struct { const char* name; std::string compact, plain; } cases[] = {
        {"CRINEX 3", kCrx3 + kHead3 + kBody3, kHead3 + kPlain3},
        {"CRINEX 1", kCrx1 + kHead1 + kBody1, kHead1 + kPlain1},
        {"events", kCrx3 + kHead3 + Lines(kBody3, 0, 8) + kEvents,
         kHead3 + Lines(kPlain3, 0, 6) + Lines(kEvents, 0, 4) + Lines(kPlain3, 6, 8) + tail},
    };
    for (const auto& c : cases) EXPECT_EQ(Decode(c.compact), c.plain) << c.name;
}

TEST(CompactRinex, MadeUpStreamsFollowEachRule)
{
    auto crlf = [](std::string s) {
        for (size_t p = 0; (p = s.find('\n', p)) != std::string::npos; p += 2) s.insert(p, "\r");
        return s;
    };
    const std::string head3 = Rec("     3.04           OBSERVATION DATA    G (GPS)", "RINEX VERSION / TYPE")
                              + Rec("G    2 C1C L1C", "SYS / # / OBS TYPES") + Rec("", "END OF HEADER");
    const std::string head1 = Rec("     6    C1    L1    P2    L2    S1    S2", "# / TYPES OF OBSERV")
                              + Rec("", "END OF HEADER");
    const struct { const char* rule; std::string compact, plain; } cases[] = {
        // Order 0 gives the value itself, order 1 ramps no further, a
        // re-started arc drops its old differences; the escape line is
        // skipped; CR LF ends are cut; a flag-4 block's new type list holds
        // for the initialisation after it, the clock arc restarting there.
        {"orders, escape, CR LF, type change", crlf(kCrx3 + head3 +
             "> 2021 03 01 00 00 00.0000000  0  1      G07\n\n0&1000 1&5000\n& reserved\n"
             "                   3\n\n2000 7\n                 1 0\n\n3&-5 -2\n"
             ">                              4  1\n" + Rec("G    1 C1C", "SYS / # / OBS TYPES") +
             "> 2021 03 01 00 01 30.0000000  0  1      G07\n3&77\n3&123\n"),
         head3 + "> 2021 03 01 00 00 00.0000000  0  1\nG07         1.000           5.000\n"
             "> 2021 03 01 00 00 30.0000000  0  1\nG07         2.000           5.007\n"
             "> 2021 03 01 00 01 00.0000000  0  1\nG07        -0.005           5.005\n"
             ">                              4  1\n" + Rec("G    1 C1C", "SYS / # / OBS TYPES") +
             "> 2021 03 01 00 01 30.0000000  0  1       0.000000000077\nG07         0.123\n"},
        // RINEX 2: twelve satellites a line with the clock behind them, five
        // types a line, raw IDs kept, an event line's & back to a blank.
        {"RINEX 2 continuation lines and events", kCrx1 + head1 +
             "&21  3  1  0  0  0.0000000  0 13G01G02G03G04G05G06G07G08G09G10G11G12G 3\n3&-1500\n"
             + std::string(12, '\n') + "     3&42           12\n"
             "&21  3  1  0  0 15.0000000  5  0\n&21  3  1  0  0 30.0000000  0  1G 3\n\n     3&43\n",
         head1 + " 21  3  1  0  0  0.0000000  0 13G01G02G03G04G05G06G07G08G09G10G11G12-0.000001500\n"
             "                                G 3\n" + std::string(25, '\n') + "         0.04212\n"
             " 21  3  1  0  0 15.0000000  5  0\n 21  3  1  0  0 30.0000000  0  1G 3\n\n         0.043\n"},
    };
    for (const auto& c : cases) EXPECT_EQ(Decode(c.compact), c.plain) << c.rule;
}

TEST(CompactRinexDeath, CorruptFilesStopWithTheLine)
{
    const std::string good = kCrx3 + kHead3 + kBody3;
    const struct { std::string text, message; } cases[] = {
        {Replace(good, "CRINEX VERS", "CRINEX VERZ"), "line 1: not a Compact RINEX file"},
        {"2.0" + good.substr(3), "line 1: unknown Compact RINEX version '2.0'"},
        // A new satellite and a field empty the epoch before must start arcs.
        {Replace(good, "3&24500000500", "24500000500"), "line 20: difference '24500000500' where an arc must start"},
        {Replace(good, "3&21346351377", "223559"), "line 23: difference '223559' where an arc must start"},
        {Replace(good, "> 2021 03 01 00 00 00", "  2021 03 01 00 00 00"),
         "line 8: epoch line is a difference but no initialisation line precedes it"},
        {good.substr(0, good.size() - 17), "line 25: file ends inside an epoch block"},
        {Replace(good, "0  2      G05G12", "0"), "line 8: line cut short before the count in columns 33-35"},
        {Replace(good, "3&123456789", "12&123456789"), "line 9: differencing order 12 beyond 9"},
        {Replace(good, "0  2      G05G12", "0  3      G05G12"),
         "line 8: satellite count 3 does not match the list of 2"},
        {Replace(good, "3&21345678123", "3&1234567890123456789"), "line 10: value out of range '1234567890123456789'"},
        {Replace(good, "3&21345678123", "3&10000000000000"), "line 10: value out of range '3&10000000000000'"},
        {Replace(good, "223333", "22x333"), "line 14: bad number '22x333'"},
        {Replace(good, "G05G12", "X05G12"), "line 10: no observation types for satellite 'X05'"},
        {Replace(good, "0  2      G05G12", "9  2      G05G12"), "line 8: bad epoch flag"},
        {Replace(good, "&7&7&5&5", "&7&7&5&5&&"), "line 10: flag part longer than the 8 flag characters"},
        {kCrx1 + Rec("  1000", "# / TYPES OF OBSERV"), "line 3: more than 999 observation types"},
        {kCrx1 + kHead1 + "&21  3  1  0  0  0.0000000  6  0\n",
         "line 6: epoch flag 6 \\(cycle slip records\\) is not supported in Compact RINEX 1.0"},
    };
    for (const auto& c : cases)
        EXPECT_EXIT(Decode(c.text), ::testing::ExitedWithCode(1),
                    "\\*\\*\\*\\* Orvo: Error -> COMPACT RINEX FILE test.crx: " + c.message)
            << c.message;
}
