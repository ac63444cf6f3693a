// The two-pass reader on the real observation files, checked against a
// simple independent scan of the same files and the counts published with
// the data; the writer round trip; and the framed stops on broken variants
// cut from the real file.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <vector>

#include "TestSupport.h"
#include "observations/RINEX.h"
#include "numerics/NearLD.h"

using orvotest::Data;
using orvotest::FirstLines;
using orvotest::TempDir;
using orvotest::WriteTemp;

namespace {

const std::string kEsbc = "esbc-2020-177/esbc1770.20o";
const std::string kZimm = "zimm-2015-235/ZIMM2350.15O";

// The files hold 3 decimals; the scan converts with double precision
// (relative 1.1e-16), the reader in long double. A misread digit is at
// least 1e-3, so this bound separates the two by five orders.
constexpr double ValueRelTol = 1e-15;
constexpr double ValueAbsTol = 1e-9;
// Epoch times come from whole seconds and 7-decimal fractions.
constexpr long double EpochTol_s = 1e-9L;

// A file read once per test process: reading the ESBC day takes a few
// tenths of a second, and every test of it looks at the same result.
struct Loaded {
    RINEXHeader h;
    RINEXData d{h};
    RINEX r{h, d};
    explicit Loaded(const std::string& path)
    {
        r.SetFile(path);
        r.ReadFile();
    }
};

Loaded& Load(const std::string& rel)
{
    static std::map<std::string, std::unique_ptr<Loaded>> cache;
    auto& slot = cache[rel];
    if (!slot) slot = std::make_unique<Loaded>(Data(rel));
    return *slot;
}

// What the independent scan finds: it walks the layout of RINEX 2 from
// each epoch line's satellite count, without the reader's epoch-line test.
struct Scan {
    std::vector<std::string> types;
    long epochs = 0, records = 0;
    std::map<char, long> recordsOf;
    std::map<char, std::set<int>> satsOf;
    std::string firstDate, lastDate;  // columns 1-25 of the epoch lines
    long mismatches = 0;
    std::string firstMismatch;
};

std::string Col(const std::string& s, std::size_t pos, std::size_t len)
{
    return pos < s.size() ? s.substr(pos, len) : std::string();
}

double FieldNumber(const std::string& f)
{
    return f.find_first_not_of(' ') == std::string::npos ? 0.0 : std::stod(f);
}

unsigned FlagOf(char c) { return c == ' ' ? 0u : static_cast<unsigned>(c - '0'); }

// A line without its terminator; ZIMM ends its lines in CR LF.
bool NextLine(std::istream& in, std::string& line)
{
    if (!std::getline(in, line)) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

// Scans path and, when d is given, compares every field of every record
// with what the reader stored.
Scan ScanFile(const std::string& path, const RINEXHeader* h = nullptr,
              const RINEXData* d = nullptr)
{
    Scan s;
    std::ifstream in(path);
    std::string line;
    int ntypes = 0;
    while (NextLine(in, line)) {
        if (line.find("END OF HEADER") != std::string::npos) break;
        if (line.find("# / TYPES OF OBSERV") != std::string::npos) {
            std::istringstream words(line.substr(0, 60));
            std::string w;
            if (line.compare(0, 6, "      ") != 0) words >> ntypes;
            while (words >> w) s.types.push_back(w);
        }
    }
    const int linesPerSat = (ntypes + 4) / 5;
    long r = 0;
    while (NextLine(in, line)) {
        const int n = std::stoi(line.substr(29, 3));
        s.epochs++;
        if (s.epochs == 1) s.firstDate = line.substr(1, 25);
        s.lastDate = line.substr(1, 25);
        std::string sats = Col(line, 32, 36);
        for (int c = 12; c < n; c += 12) {
            NextLine(in, line);
            sats += Col(line, 32, 36);
        }
        for (int k = 0; k < n; k++, r++) {
            const char sys = sats[3 * k] == ' ' ? 'G' : sats[3 * k];
            s.recordsOf[sys]++;
            s.satsOf[sys].insert(std::stoi(sats.substr(3 * k + 1, 2)));
            std::string text;
            for (int l = 0; l < linesPerSat; l++) {
                NextLine(in, line);
                line.resize(80, ' ');
                text += line;
            }
            if (!d) continue;
            for (int t = 0; t < ntypes; t++) {
                const std::string f = text.substr(16 * t, 16);
                const double want = FieldNumber(f.substr(0, 14));
                const unsigned short type = h->obs(t);
                long double got;
                unsigned lli = 0, ss = 0;
                if (const matrix<gnssobs>* m = d->ObsMatrix(type)) {
                    got = (*m)(r).GetObs();
                    lli = (*m)(r).GetLli();
                    ss = (*m)(r).GetSs();
                } else {
                    got = (*d->ShortMatrix(type))(r).GetObs();
                    lli = FlagOf(f[14]);
                    ss = FlagOf(f[15]);
                }
                const bool ok = std::fabs(static_cast<double>(got) - want)
                                    <= ValueAbsTol + ValueRelTol * std::fabs(want)
                                && lli == FlagOf(f[14]) && ss == FlagOf(f[15]);
                if (!ok && s.mismatches++ == 0)
                    s.firstMismatch = "record " + std::to_string(r) + " type "
                                      + s.types[t] + ": '" + f + "'";
            }
        }
        s.records += n;
    }
    return s;
}

// Days since 1970-01-01 of a Gregorian date (H. Hinnant, "chrono-compatible
// low-level date algorithms"); MJD 40587 is that day.
long MJDOf(long y, long m, long d)
{
    y -= m <= 2;
    const long era = (y >= 0 ? y : y - 399) / 400;
    const long yoe = y - era * 400;
    const long doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468 + 40587;
}

void ExpectSameAsScan(const std::string& rel, const Scan& s)
{
    const Loaded& f = Load(rel);
    EXPECT_EQ(f.d.GetNEpoch(), s.epochs);
    EXPECT_EQ(f.d.GetNObs(), s.records);
    ASSERT_EQ(static_cast<std::size_t>(f.h.GetNObs()), s.types.size());
    for (std::size_t k = 0; k < s.types.size(); k++)
        EXPECT_EQ(RINEXHeader::GetObsString(f.h.obs(static_cast<long>(k))), s.types[k]);
    std::map<char, long> recs;
    std::map<char, std::set<int>> sats;
    for (long r = 0; r < f.d.GetNObs(); r++) {
        const short sn = f.d.GetObsSat(r);
        const char sys = sn < 100 ? 'G' : sn < 200 ? 'R' : sn < 300 ? 'E' : '?';
        recs[sys]++;
        sats[sys].insert(sn % 100);
    }
    EXPECT_EQ(recs, s.recordsOf);
    EXPECT_EQ(sats, s.satsOf);
    long listed = 0;
    for (const auto& kv : s.satsOf) listed += static_cast<long>(kv.second.size());
    ASSERT_EQ(f.d.GetNSat(), listed);
    for (long i = 1; i < f.d.GetNSat(); i++) EXPECT_LT(f.d.GetSat(i - 1), f.d.GetSat(i));
    // The running index: epoch counts add up to the records.
    long sum = 0;
    for (long i = 0; i < f.d.GetNEpoch(); i++) sum += f.d.GetEphNSat(i);
    EXPECT_EQ(sum, f.d.GetNObs());
}

}  // namespace

TEST(RinexRealFiles, EsbcAgreesWithTheScanAndThePublishedCounts)
{
    const Scan s = ScanFile(Data(kEsbc));
    // Counted by the data provider with a separate parser.
    EXPECT_EQ(s.epochs, 2880);
    EXPECT_EQ(s.recordsOf.at('G'), 33406);
    EXPECT_EQ(s.recordsOf.at('R'), 25790);
    EXPECT_EQ(s.recordsOf.at('E'), 24362);
    EXPECT_EQ(s.satsOf.at('G').size(), 31u);
    EXPECT_EQ(s.satsOf.at('R').size(), 23u);
    EXPECT_EQ(s.satsOf.at('E').size(), 22u);
    EXPECT_EQ(s.types.size(), 22u);
    ExpectSameAsScan(kEsbc, s);
}

TEST(RinexRealFiles, ZimmAgreesWithTheScanAndThePublishedCounts)
{
    const Scan s = ScanFile(Data(kZimm));
    EXPECT_EQ(s.epochs, 2880);
    EXPECT_EQ(s.recordsOf.at('G'), 27960);
    EXPECT_EQ(s.satsOf.at('G').size(), 31u);
    EXPECT_EQ(s.recordsOf.size(), 1u);
    EXPECT_EQ(s.types.size(), 10u);
    ExpectSameAsScan(kZimm, s);
}

TEST(RinexRealFiles, EveryFieldEqualsTheIndependentDecoding)
{
    for (const std::string& rel : {kEsbc, kZimm}) {
        const Loaded& f = Load(rel);
        const Scan s = ScanFile(Data(rel), &f.h, &f.d);
        EXPECT_EQ(s.mismatches, 0) << rel << ", first: " << s.firstMismatch;
    }
}

TEST(RinexRealFiles, FirstAndLastEpochAndSampling)
{
    struct Case {
        std::string rel;
        long y, m, d;
        std::string first, last;
    };
    for (const Case& c : {Case{kEsbc, 2020, 6, 25, "20  6 25  0  0  0.0000000",
                               "20  6 25 23 59 30.0000000"},
                          Case{kZimm, 2015, 8, 23, "15  8 23  0  0  0.0000000",
                               "15  8 23 23 59 30.0000000"}}) {
        const Loaded& f = Load(c.rel);
        const Scan s = ScanFile(Data(c.rel));
        EXPECT_EQ(s.firstDate, c.first);
        EXPECT_EQ(s.lastDate, c.last);
        const long mjd0 = MJDOf(c.y, c.m, c.d);
        const mjd first = f.d.GetMJD(0), last = f.d.GetMJD(f.d.GetNEpoch() - 1);
        EXPECT_EQ(static_cast<long>(first.GetMJDay()), mjd0) << c.rel;
        EXPECT_NEAR_LD(first.GetSecond(), 0.0L, EpochTol_s);
        EXPECT_EQ(static_cast<long>(last.GetMJDay()), mjd0);
        EXPECT_NEAR_LD(last.GetSecond(), 86370.0L, EpochTol_s);
        // The data overrule the header's first and last time.
        EXPECT_NEAR_LD(f.h.obsfirst - first, 0.0L, EpochTol_s);
        EXPECT_NEAR_LD(f.h.obslast - last, 0.0L, EpochTol_s);
        EXPECT_EQ(f.h.obsfirstts, "GPS");
        EXPECT_EQ(f.h.obslastts, "GPS");  // ZIMM has no TIME OF LAST OBS line
        EXPECT_NEAR_LD(f.h.GetInterval(), 30.0f, 1e-6f);
        // No gaps: every step is the 30 s sampling.
        for (long i = 1; i < f.d.GetNEpoch(); i++)
            ASSERT_NEAR_LD(f.d.GetMJD(i) - f.d.GetMJD(i - 1), 30.0L, EpochTol_s) << "epoch " << i;
        EXPECT_EQ(f.d.nComment, 0);
    }
}

TEST(RinexRealFiles, HeaderFieldsOfEsbc)
{
    const Loaded& f = Load(kEsbc);
    EXPECT_EQ(f.h.mname, "ESBC00DNK");
    EXPECT_EQ(f.h.mnumber, "10118M001");
    EXPECT_EQ(f.h.rectype, "SEPT POLARX5");
    EXPECT_EQ(f.h.anttype, "ASH701945E_M    SCIS");  // blanks kept
    EXPECT_NEAR_LD(f.h.version, 2.11f, 1e-6f);
    EXPECT_EQ(f.h.type, 'O');
    EXPECT_EQ(f.h.satsystems, 'M');
    // Published header values, metres.
    EXPECT_NEAR_LD(f.h.GetX0().GetX(), 3582105.2910L, 1e-6L);
    EXPECT_NEAR_LD(f.h.GetX0().GetZ(), 5232754.8054L, 1e-6L);
    // 1e-9 m: a 4-decimal field read back carries only round-off.
    EXPECT_NEAR_LD(f.h.GetECC().GetU(), 0.2160L, 1e-9L);
    EXPECT_TRUE(f.h.HasC1() && f.h.HasP1() && f.h.HasL1() && f.h.HasL2() && f.h.HasP2()
                && f.h.HasC2() && f.h.HasC5() && f.h.HasL5() && f.h.HasC7() && f.h.HasL7()
                && f.h.HasC8() && f.h.HasL8());
    EXPECT_FALSE(f.h.HasL3R() || f.h.HasC3R() || f.h.HasL3() || f.h.HasPC3());
    EXPECT_FALSE(f.d.IfTimeCorr);
}

TEST(RinexRealFiles, ZimmWithoutP1KeepsC1AndCopiesC2ToP2OnlyWhenAsked)
{
    const Loaded& f = Load(kZimm);
    EXPECT_TRUE(f.h.HasC1());
    EXPECT_FALSE(f.h.HasP1());
    EXPECT_TRUE(f.h.HasP2());
    EXPECT_EQ(f.h.anttype, "TRM29659.00     NONE");
}

TEST(RinexWriter, RealFilesRoundTripRecordForRecord)
{
    for (const std::string& rel : {kZimm, kEsbc}) {
        Loaded& f = Load(rel);
        const std::string out = TempDir() + "/roundtrip.o";
        f.r.PrintFile(out);
        Loaded back(out);
        ASSERT_EQ(back.d.GetNEpoch(), f.d.GetNEpoch());
        ASSERT_EQ(back.d.GetNObs(), f.d.GetNObs());
        ASSERT_EQ(back.h.GetNObs(), f.h.GetNObs());
        EXPECT_EQ(back.h.mname, f.h.mname);
        // 1e-6 m: the header prints 4 decimals of a value read from 4 decimals,
        // so the round trip is exact up to round-off; a lost digit is 1e-4 m.
        EXPECT_NEAR_LD(back.h.GetX0().GetY(), f.h.GetX0().GetY(), 1e-6L);
        for (long i = 0; i < f.d.GetNEpoch(); i++) {
            ASSERT_NEAR_LD(back.d.GetMJD(i) - f.d.GetMJD(i), 0.0L, EpochTol_s) << rel << " epoch " << i;
            ASSERT_EQ(back.d.GetEphNSat(i), f.d.GetEphNSat(i));
        }
        long bad = 0;
        for (long k = 0; k < f.h.GetNObs(); k++) {
            const unsigned short t = f.h.obs(k);
            for (long r = 0; r < f.d.GetNObs(); r++) {
                if (back.d.GetObsSat(r) != f.d.GetObsSat(r)) bad++;
                if (const matrix<gnssobs>* a = f.d.ObsMatrix(t)) {
                    const gnssobs& x = (*a)(r);
                    const gnssobs& y = (*back.d.ObsMatrix(t))(r);
                    // Written with the file's own 3 decimals: read back, the
                    // same text gives the same number.
                    if (std::fabs(x.GetObs() - y.GetObs()) > 1e-9L || x.GetLli() != y.GetLli()
                        || x.GetSs() != y.GetSs())
                        bad++;
                } else {
                    if (std::fabs((*f.d.ShortMatrix(t))(r).GetObs()
                                  - (*back.d.ShortMatrix(t))(r).GetObs()) > 1e-9L)
                        bad++;
                }
            }
        }
        EXPECT_EQ(bad, 0) << rel;
    }
}

// ---- Broken variants of the real file ------------------------------------

namespace {

void ReadRinex(const std::string& path)
{
    std::cout.rdbuf(std::cerr.rdbuf());  // the frames go to the output stream
    RINEXHeader h;
    RINEXData d(h);
    RINEX r(h, d);
    r.SetFile(path);
    r.ReadFile();
}

std::vector<std::string> EsbcLines(int n)
{
    std::istringstream in(FirstLines(Data(kEsbc), n));
    std::vector<std::string> lines;
    std::string l;
    while (std::getline(in, l)) lines.push_back(l);
    return lines;
}

std::string Join(const std::vector<std::string>& lines)
{
    std::string s;
    for (const std::string& l : lines) s += l + "\n";
    return s;
}

// ESBC: END OF HEADER is line 26; the first epoch line is 27, its two
// satellite continuation lines 28-29, then 30 records of 5 lines (30-179);
// the second epoch line is 180 and its records end at line 332. Indices
// below are 0-based (line number - 1).
constexpr int kHeaderLines = 26;
constexpr int kEpoch1 = 26;
constexpr int kEpoch2 = 179;
constexpr int kTwoEpochs = 332;

const char* const kNoEpoch =
    "#### RINEXData: Error -> NUMBER OF EPOCH IN RINEX FILE NOT DETERMINED! ####";

}  // namespace

TEST(RinexBrokenFiles, EmptyFileHasNoEpoch)
{
    const std::string p = WriteTemp("empty.o", "");
    EXPECT_EXIT(ReadRinex(p), ::testing::ExitedWithCode(1), kNoEpoch);
}

TEST(RinexBrokenFiles, MissingFileCannotBeOpened)
{
    EXPECT_EXIT(ReadRinex(TempDir() + "/no-such-file.o"), ::testing::ExitedWithCode(1),
                "#### RINEX: Error -> RINEX FILE CAN NOT BE OPENED! ####");
}

TEST(RinexBrokenFiles, HeaderWithoutEndHasNoEpoch)
{
    std::vector<std::string> lines = EsbcLines(kTwoEpochs);
    lines.erase(lines.begin() + kHeaderLines - 1);
    ASSERT_EQ(Join(lines).find("END OF HEADER"), std::string::npos);
    const std::string p = WriteTemp("noend.o", Join(lines));
    EXPECT_EXIT(ReadRinex(p), ::testing::ExitedWithCode(1), kNoEpoch);
}

TEST(RinexBrokenFiles, HeaderOnlyHasNoEpochAndEpochsWithoutSatellitesNoRecords)
{
    const std::string p = WriteTemp("headeronly.o", FirstLines(Data(kEsbc), kHeaderLines));
    EXPECT_EXIT(ReadRinex(p), ::testing::ExitedWithCode(1), kNoEpoch);
    std::vector<std::string> lines = EsbcLines(kHeaderLines + 1);
    lines.back().replace(29, 3, "  0");
    lines.back().resize(32);
    lines.back() += "        ";  // an epoch line needs more than 32 characters
    const std::string q = WriteTemp("nosats.o", Join(lines));
    EXPECT_EXIT(ReadRinex(q), ::testing::ExitedWithCode(1),
                "#### RINEXData: Error -> NUMBER OF OBSERVATIONS IN RINEX FILE NOT DETERMINED! ####");
}

namespace {

// The first epoch of ESBC rewritten in the RINEX 3 layout: "SYS / # / OBS
// TYPES", an epoch line opening with ">", one line per satellite. With
// nTypes types a line holds 3 + 16·nTypes characters.
std::string Rinex3FromEsbc(int nTypes)
{
    const std::vector<std::string> lines = EsbcLines(kEpoch2);
    std::string out;
    out += "     3.04           OBSERVATION DATA    M                   RINEX VERSION / TYPE\n";
    for (int i = 1; i < kHeaderLines - 1; i++)
        if (lines[i].find("TYPES OF OBSERV") == std::string::npos) out += lines[i] + "\n";
    for (char sys : {'G', 'R', 'E'}) {
        char buf[81];
        std::snprintf(buf, sizeof buf, "%c  %3d", sys, nTypes);
        std::string l = buf;
        for (int k = 0; k < nTypes; k++) l += " C1C";
        l.resize(60, ' ');
        out += l + "SYS / # / OBS TYPES\n";
    }
    out += lines[kHeaderLines - 1] + "\n";
    out += "> 2020 06 25 00 00  0.0000000  0 30\n";
    const std::string sats = lines[kEpoch1].substr(32, 36) + lines[kEpoch1 + 1].substr(32, 36)
                             + lines[kEpoch1 + 2].substr(32, 18);
    for (int s = 0; s < 30; s++) {
        std::string text;
        for (int l = 0; l < 5; l++) {
            std::string x = lines[kEpoch1 + 3 + 5 * s + l];
            x.resize(80, ' ');
            text += x;
        }
        out += sats.substr(3 * s, 3) + text.substr(0, 16 * nTypes) + "\n";
    }
    return out;
}

}  // namespace

TEST(RinexBrokenFiles, Rinex3FileHasNoEpochOfRinex2)
{
    // Four types keep every line within the 99-character buffer: no line is
    // an epoch line of RINEX 2.
    const std::string shortLines = WriteTemp("rinex3short.o", Rinex3FromEsbc(4));
    EXPECT_EXIT(ReadRinex(shortLines), ::testing::ExitedWithCode(1), kNoEpoch);
    // The full 22 types run to column 355: reading ends at the first record,
    // with a warning that says so, before the same report.
    const std::string longLines = WriteTemp("rinex3.o", Rinex3FromEsbc(22));
    EXPECT_EXIT(ReadRinex(longLines), ::testing::ExitedWithCode(1),
                "LINE 28 LONGER THAN 99 CHARACTERS: READING ENDS THERE(.|\n)*"
                "#### RINEXData: Error -> NUMBER OF EPOCH IN RINEX FILE NOT DETERMINED! ####");
}

TEST(RinexBrokenFiles, FileCutInsideAnEpoch)
{
    // Cut at the first line of a record: the counting pass stops.
    const std::string atFirst = WriteTemp("cut192.o", FirstLines(Data(kEsbc), kEpoch2 + 3 + 10));
    EXPECT_EXIT(ReadRinex(atFirst), ::testing::ExitedWithCode(1),
                "#### RINEX: Error -> .*cut192.o: FILE ENDS INSIDE THE EPOCH OF LINE 180 ####");
    // Cut inside the last record: counting reads only two lines a record,
    // the data pass reads all five and stops.
    const std::string inLast = WriteTemp("cutlast.o", FirstLines(Data(kEsbc), kEpoch2 - 1));
    EXPECT_EXIT(ReadRinex(inLast), ::testing::ExitedWithCode(1),
                "#### RINEXData: Error -> RINEX FILE ENDS INSIDE THE EPOCH OF LINE 27 ####");
    // Cut inside the satellite list.
    const std::string inList = WriteTemp("cutlist.o", FirstLines(Data(kEsbc), kEpoch1 + 1));
    EXPECT_EXIT(ReadRinex(inList), ::testing::ExitedWithCode(1),
                "#### RINEX: Error -> .*cutlist.o: FILE ENDS INSIDE THE EPOCH OF LINE 27 ####");
}

TEST(RinexBrokenFiles, LineLongerThan99Characters)
{
    // In the data: everything after it would be lost, so the run stops.
    std::vector<std::string> lines = EsbcLines(kTwoEpochs);
    lines[199].resize(100, ' ');
    const std::string data = WriteTemp("longdata.o", Join(lines));
    EXPECT_EXIT(ReadRinex(data), ::testing::ExitedWithCode(1),
                "#### RINEX: Error -> .*longdata.o: LINE 200 LONGER THAN 99 CHARACTERS ####");
    // Between two epochs the same.
    std::vector<std::string> between = EsbcLines(kTwoEpochs);
    between.insert(between.begin() + kEpoch2, std::string(120, ' '));
    const std::string betweenFile = WriteTemp("longbetween.o", Join(between));
    EXPECT_EXIT(ReadRinex(betweenFile), ::testing::ExitedWithCode(1),
                "#### RINEX: Error -> .*longbetween.o: LINE 180 LONGER THAN 99 CHARACTERS: THE "
                "EPOCHS AFTER IT WOULD BE LOST ####");
    // Exactly 99 characters is still a line.
    lines[199].resize(99);
    const std::string edge = WriteTemp("edge99.o", Join(lines));
    RINEXHeader h;
    RINEXData d(h);
    RINEX r(h, d);
    r.SetFile(edge);
    r.ReadFile();
    EXPECT_EQ(d.GetNEpoch(), 2);
    EXPECT_EQ(d.GetNObs(), 60);
    // In the header: the header ends there and no epoch is found.
    lines = EsbcLines(kTwoEpochs);
    lines[3] += std::string(50, '-');
    const std::string head = WriteTemp("longhead.o", Join(lines));
    EXPECT_EXIT(ReadRinex(head), ::testing::ExitedWithCode(1),
                "LINE 4 LONGER THAN 99 CHARACTERS: READING ENDS THERE(.|\n)*"
                "#### RINEXData: Error -> NUMBER OF EPOCH IN RINEX FILE NOT DETERMINED! ####");
}

TEST(RinexBrokenFiles, SatelliteCountsThatDoNotFit)
{
    // A count beyond the 341 satellites the record buffers hold (the count
    // is read from column 30 on, so it runs into the list).
    std::vector<std::string> lines = EsbcLines(kTwoEpochs);
    lines[kEpoch1] = lines[kEpoch1].substr(0, 30) + "342" + lines[kEpoch1].substr(32);
    const std::string p = WriteTemp("count342.o", Join(lines));
    EXPECT_EXIT(ReadRinex(p), ::testing::ExitedWithCode(1),
                "#### RINEX: Error -> .*SATELLITE COUNT OF EPOCH NOT VALID -> line: 27 ####");
    // A count above the listed satellites takes the next epoch's lines as
    // records: the two passes then disagree and the run stops.
    lines = EsbcLines(kTwoEpochs);
    lines[kEpoch1].replace(30, 2, "42");
    const std::string q = WriteTemp("count42.o", Join(lines));
    EXPECT_EXIT(ReadRinex(q), ::testing::ExitedWithCode(1),
                "#### RINEXData: Error -> EPOCHS OR RECORDS OF RINEX FILE DO NOT AGREE WITH "
                "THEIR COUNT ####");
}

TEST(RinexBrokenFiles, InvalidEpochDateStopsInTheTimeClass)
{
    std::vector<std::string> lines = EsbcLines(kTwoEpochs);
    lines[kEpoch2].replace(4, 2, "13");
    const std::string p = WriteTemp("month13.o", Join(lines));
    EXPECT_EXIT(ReadRinex(p), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* ymdhms: Error -> MONTH not valid \\*\\*\\*\\*");
}

TEST(RinexBrokenFiles, NonNumericFieldsReadAsZeroByTheAtofRule)
{
    // A value that does not convert reads 0, which is a missing
    // observation: the reader goes on, and the other fields are intact.
    std::vector<std::string> lines = EsbcLines(kTwoEpochs);
    // First record (E01), line 1: C1 in columns 0-15, L1 in 32-47.
    lines[kEpoch1 + 3].replace(0, 14, "   27616x85.99");
    lines[kEpoch1 + 3].replace(32, 14, "  not a number");
    // Second epoch: a satellite count that is no number is 0 satellites;
    // the epoch stays and its records are passed over as foreign lines.
    lines[kEpoch2].replace(29, 3, " xx");
    const std::string p = WriteTemp("nonnumeric.o", Join(lines));
    RINEXHeader h;
    RINEXData d(h);
    RINEX r(h, d);
    r.SetFile(p);
    r.ReadFile();
    ASSERT_EQ(d.GetNEpoch(), 2);
    EXPECT_EQ(d.GetEphNSat(1), 0);
    ASSERT_EQ(d.GetNObs(), 30);
    EXPECT_NEAR_LD(d.C1(0).GetObs(), 27616.0L, 1e-9L);  // atof stops at the x
    EXPECT_TRUE(d.L1(0).IsNull());
    EXPECT_EQ(d.L1(0).GetSs(), 6);                   // flags are their own columns
    EXPECT_NEAR_LD(d.D1(0).GetObs(), -2620.702L, 1e-9L);
    EXPECT_NEAR_LD(d.C1(1).GetObs(), 27055946.391L, 1e-6L);
    EXPECT_EQ(d.nComment, 2 + 30 * 5);
}
