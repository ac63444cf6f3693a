// The two-pass reader on the real observation files, checked against a
// simple independent scan of the same files and the counts published with
// the data; the writer round trip; and the framed stops on broken variants
// cut from the real file.
#include "ObsSupport.h"

using namespace obstest;

// The files hold 3 decimals; the scan converts with double precision
// (relative 1.1e-16), the reader in long double. A misread digit is at
// least 1e-3, so this bound separates the two by five orders.
constexpr double ValueRelTol = 1e-15;
constexpr double ValueAbsTol = 1e-9;
// Epoch times come from whole seconds and 7-decimal fractions.
constexpr long double EpochTol_s = 1e-9L;

// What the independent scan finds: it walks the layout of RINEX 2 from
// each epoch line's satellite count, without the reader's epoch-line test.
struct Scan {
    std::vector<std::string> types;
    long epochs = 0, records = 0, mismatches = 0;
    std::map<char, long> recordsOf;
    std::set<int> sats;  // with the reader's system bases: G 0, R 100, E 200
    std::string firstDate, lastDate, firstMismatch;  // dates: columns 1-25 of the epoch lines
};

static unsigned FlagOf(char c) { return c == ' ' ? 0u : static_cast<unsigned>(c - '0'); }

// A line without its terminator; ZIMM ends its lines in CR LF.
static bool NextLine(std::istream& in, std::string& line)
{
    if (!std::getline(in, line)) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

// Days since 1970-01-01 of a Gregorian date (H. Hinnant, "chrono-compatible
// low-level date algorithms"); MJD 40587 is that day.
static long MJDOf(long y, long m, long d)
{
    y -= m <= 2;
    const long era = (y >= 0 ? y : y - 399) / 400, yoe = y - era * 400;
    const long doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    return era * 146097 + yoe * 365 + yoe / 4 - yoe / 100 + doy - 719468 + 40587;
}

// Scans a file of the real data's layout and compares every epoch time and
// satellite count, every satellite and every field of every record with
// what the reader stored in f.
static Scan ScanFile(const std::string& path, const Loaded& f)
{
    Scan s;
    std::ifstream in(path);
    std::string line;
    int ntypes = 0;
    auto mismatch = [&](bool bad, const std::string& what) {
        if (bad && s.mismatches++ == 0) s.firstMismatch = what;
    };
    while (NextLine(in, line) && line.find("END OF HEADER") == std::string::npos)
        if (line.find("# / TYPES OF OBSERV") != std::string::npos) {
            std::istringstream words(line.substr(0, 60));
            std::string w;
            if (line.compare(0, 6, "      ") != 0) words >> ntypes;
            while (words >> w) s.types.push_back(w);
        }
    for (long r = 0; NextLine(in, line); s.epochs++) {
        const int n = std::stoi(line.substr(29, 3));
        if (s.epochs == 0) s.firstDate = line.substr(1, 25);
        s.lastDate = line.substr(1, 25);
        const mjd t(MJDOf(2000 + std::stoi(line.substr(1, 2)), std::stoi(line.substr(4, 2)), std::stoi(line.substr(7, 2))),
                    3600.0L * std::stoi(line.substr(10, 2)) + 60.0L * std::stoi(line.substr(13, 2)) + std::stold(line.substr(15, 11)));
        mismatch(s.epochs >= f.d.GetNEpoch() || std::fabs(f.d.GetMJD(s.epochs) - t) > EpochTol_s
                     || f.d.GetEphNSat(s.epochs) != n, "epoch line " + line);
        std::string sats = RINEXField(line, 32, 36);
        for (int c = 12; c < n; c += 12) NextLine(in, line), sats += RINEXField(line, 32, 36);
        for (int k = 0; k < n; k++, r++, s.records++) {
            const char sys = sats[3 * k] == ' ' ? 'G' : sats[3 * k];
            const int sn = (sys == 'R' ? 100 : sys == 'E' ? 200 : 0) + std::stoi(sats.substr(3 * k + 1, 2));
            s.recordsOf[sys]++;
            s.sats.insert(sn);
            mismatch(r >= f.d.GetNObs() || f.d.GetObsSat(r) != sn, "satellite of record " + std::to_string(r));
            std::string text;
            for (int l = 0; l < (ntypes + 4) / 5; l++) NextLine(in, line), text += (line + std::string(80, ' ')).substr(0, 80);
            for (int k2 = 0; k2 < ntypes && r < f.d.GetNObs(); k2++) {
                const std::string fd = text.substr(16 * k2, 16), num = fd.substr(0, 14);
                const double want = num.find_first_not_of(' ') == std::string::npos ? 0.0 : std::stod(num);
                // The short types keep no flags.
                const matrix<gnssobs>* m = f.d.ObsMatrix(f.h.obs(k2));
                const long double got = m ? (*m)(r).GetObs() : (*f.d.ShortMatrix(f.h.obs(k2)))(r).GetObs();
                mismatch(std::fabs(static_cast<double>(got) - want) > ValueAbsTol + ValueRelTol * std::fabs(want)
                             || (m && ((*m)(r).GetLli() != FlagOf(fd[14]) || (*m)(r).GetSs() != FlagOf(fd[15]))),
                         "record " + std::to_string(r) + " '" + fd + "'");
            }
        }
    }
    return s;
}

TEST(RinexRealFiles, ReaderAgreesWithTheScanAndThePublishedCounts)
{
    // Counted by the data provider with a separate parser.
    const std::tuple<std::string, std::map<char, long>, std::size_t, std::size_t, std::string, std::string> cases[] = {
        {kEsbc, {{'G', 33406}, {'R', 25790}, {'E', 24362}}, 31 + 23 + 22, 22, "20  6 25  0  0  0.0000000",
         "20  6 25 23 59 30.0000000"},
        {kZimm, {{'G', 27960}}, 31, 10, "15  8 23  0  0  0.0000000", "15  8 23 23 59 30.0000000"}};
    for (const auto& [rel, records, nsats, ntypes, first, last] : cases) {
        const Loaded& f = Load(rel);
        const Scan s = ScanFile(Data(rel), f);
        EXPECT_EQ(s.mismatches, 0) << rel << ", first: " << s.firstMismatch;
        EXPECT_EQ((std::vector<long>{s.epochs, f.d.GetNEpoch(), s.records}), (std::vector<long>{2880, 2880, f.d.GetNObs()}));
        EXPECT_EQ(s.recordsOf, records);
        EXPECT_EQ(s.firstDate + "|" + s.lastDate, first + "|" + last);
        // The satellite list holds each satellite once, in ascending order.
        ASSERT_EQ(s.sats.size(), nsats);
        EXPECT_EQ(std::vector<int>(s.sats.begin(), s.sats.end()),
                  std::vector<int>(&f.d.satList(0), &f.d.satList(0) + f.d.GetNSat()));
        ASSERT_EQ(s.types.size(), ntypes);
        for (std::size_t k = 0; k < ntypes; k++) EXPECT_EQ(RINEXHeader::GetObsString(f.h.obs(k)), s.types[k]);
        // The data overrule the header's first and last time; ZIMM has no
        // TIME OF LAST OBS line. No gaps: every step is the 30 s sampling.
        EXPECT_NEAR_LD(f.h.obsfirst - f.d.GetMJD(0), 0.0L, EpochTol_s);
        EXPECT_NEAR_LD(f.h.obslast - f.d.GetMJD(2879), 0.0L, EpochTol_s);
        EXPECT_EQ(f.h.obsfirstts + f.h.obslastts, "GPSGPS");
        EXPECT_NEAR_LD(f.h.GetInterval(), 30.0f, 1e-6f);
        for (long i = 1; i < f.d.GetNEpoch(); i++)
            ASSERT_NEAR_LD(f.d.GetMJD(i) - f.d.GetMJD(i - 1), 30.0L, EpochTol_s) << "epoch " << i;
        EXPECT_EQ(f.d.nComment, 0);
        // Every code is a range from the ground and no satellite repeats.
        EXPECT_TRUE(f.d.CodeOutsideRange.empty() && f.d.RepeatedRecords.empty());
    }
}

TEST(RinexWriter, RealFilesRoundTripRecordForRecord)
{
    // The written file, decoded by the scan, must hold what the reader took
    // from the real one, and read back it must give the same header.
    for (const std::string& rel : {kZimm, kEsbc}) {
        Loaded& f = Load(rel);
        const std::string out = TempDir() + "/roundtrip.o";
        f.r.PrintFile(out);
        const Scan s = ScanFile(out, f);
        EXPECT_EQ(s.mismatches, 0) << rel << ", first: " << s.firstMismatch;
        EXPECT_EQ((std::vector<long>{s.epochs, s.records}), (std::vector<long>{f.d.GetNEpoch(), f.d.GetNObs()}));
        const Loaded back(out);
        EXPECT_EQ(back.h.mname + "|" + back.h.anttype, f.h.mname + "|" + f.h.anttype);
        EXPECT_EQ(back.h.GetNObs(), f.h.GetNObs());
        // 1e-6 m: the header prints 4 decimals of a value read from 4 decimals,
        // so the round trip is exact up to round-off; a lost digit is 1e-4 m.
        EXPECT_NEAR_LD(back.h.GetX0().GetY(), f.h.GetX0().GetY(), 1e-6L);
        EXPECT_NEAR_LD(back.h.GetECC().GetU(), f.h.GetECC().GetU(), 1e-6L);
    }
}

// ---- Broken variants of the real file ------------------------------------

static void ReadRinex(const std::string& path) { Loaded f(path); }

// ESBC: END OF HEADER is line 26; the first epoch line is 27, its two
// satellite continuation lines 28-29, then 30 records of 5 lines (30-179);
// the second epoch line is 180 and its records end at line 332. Indices
// below are 0-based (line number - 1).
constexpr int kHeaderLines = 26, kEpoch1 = 26, kEpoch2 = 179, kTwoEpochs = 332;

// The first n lines of ESBC with f applied.
static std::string Edited(const std::function<void(std::vector<std::string>&)>& f, int n = kTwoEpochs)
{
    std::istringstream in(FirstLines(Data(kEsbc), n));
    std::vector<std::string> lines;
    for (std::string l; std::getline(in, l);) lines.push_back(l);
    f(lines);
    std::string s;
    for (const std::string& l : lines) s += l + "\n";
    return s;
}

static const std::string kNoEpoch = "#### RINEXData: Error -> NUMBER OF EPOCH IN RINEX FILE NOT DETERMINED! ####";

TEST(RinexBrokenFiles, EachBrokenVariantStopsWithItsFramedErrorButNinetyNineCharactersRead)
{
    const struct {
        std::string name, text, re;
    } cases[] = {
        {"empty.o", "", kNoEpoch},
        // An epoch line needs more than 32 characters; this one lists none.
        {"nosats.o", Edited([](auto& l) { l.back() = l.back().substr(0, 29) + "  0" + std::string(8, ' '); }, kHeaderLines + 1),
         "#### RINEXData: Error -> NUMBER OF OBSERVATIONS IN RINEX FILE NOT DETERMINED! ####"},
        // Cut at the first line of a record: the counting pass stops. Cut
        // inside the last record: counting reads only two lines a record,
        // the data pass reads all five and stops.
        {"cut192.o", FirstLines(Data(kEsbc), kEpoch2 + 13),
         "#### RINEX: Error -> .*cut192.o: FILE ENDS INSIDE THE EPOCH OF LINE 180 ####"},
        {"cutlast.o", FirstLines(Data(kEsbc), kEpoch2 - 1),
         "#### RINEXData: Error -> RINEX FILE ENDS INSIDE THE EPOCH OF LINE 27 ####"},
        // A long line in the data or between two epochs would lose what
        // follows it; before the first epoch (in the header, or the records
        // of a RINEX 3 file, which run past column 99) it ends the reading
        // with a warning, and no epoch is found.
        {"longdata.o", Edited([](auto& l) { l[199].resize(100, ' '); }),
         "#### RINEX: Error -> .*longdata.o: LINE 200 LONGER THAN 99 CHARACTERS ####"},
        {"longbetween.o", Edited([](auto& l) { l.insert(l.begin() + kEpoch2, std::string(120, ' ')); }),
         "#### RINEX: Error -> .*longbetween.o: LINE 180 LONGER THAN 99 CHARACTERS: THE EPOCHS AFTER IT WOULD BE LOST ####"},
        {"longhead.o", Edited([](auto& l) { l[3] += std::string(50, '-'); }),
         "LINE 4 LONGER THAN 99 CHARACTERS: READING ENDS THERE(.|\n)*" + kNoEpoch},
        // A count beyond the 341 satellites the buffers hold (read from
        // column 30 on, so it runs into the list); a count above the listed
        // satellites takes the next epoch's lines as records, and the next
        // epoch line is no observation value.
        {"count342.o", Edited([](auto& l) { l[kEpoch1] = l[kEpoch1].substr(0, 30) + "342" + l[kEpoch1].substr(32); }),
         "#### RINEX: Error -> .*SATELLITE COUNT OF EPOCH NOT VALID -> line: 27 ####"},
        {"count42.o", Edited([](auto& l) { l[kEpoch1].replace(30, 2, "42"); }),
         "#### RINEXData: Error -> .*count42.o: D8 OF R19 IS NOT A NUMBER: \" 20  6 25  0  0 \" -> line: 180 ####"},
        {"month13.o", Edited([](auto& l) { l[kEpoch2].replace(4, 2, "13"); }),
         "\\*\\*\\*\\* ymdhms: Error -> MONTH not valid \\*\\*\\*\\*"},
        // Text in a count would turn its records into passed-over lines.
        {"count3x.o", Edited([](auto& l) { l[kEpoch1].replace(30, 2, "3x"); }),
         "#### RINEX: Error -> .*count3x.o: SATELLITE COUNT OF EPOCH NOT VALID -> line: 27 ####"},
        // Values and flags that are no numbers, in the first and third line
        // of the first record (E01: L1 at column 32, L5 at 16, flags at 46).
        {"nan.o", Edited([](auto& l) { l[kEpoch1 + 3].replace(32, 14, "           nan"); }),
         "#### RINEXData: Error -> .*nan.o: L1 OF E01 IS NOT A NUMBER: \"           nan06\" -> line: 30 ####"},
        {"inf.o", Edited([](auto& l) { l[kEpoch1 + 5].replace(16, 14, "          -inf"); }), "L5 OF E01 IS NOT A NUMBER: .* -> line: 32 ####"},
        {"text.o", Edited([](auto& l) { l[kEpoch1 + 5].replace(16, 14, " 108371872.7x0"); }), "L5 OF E01 IS NOT A NUMBER: .* -> line: 32"},
        {"lli.o", Edited([](auto& l) { l[kEpoch1 + 3][46] = 'x'; }), "L1 OF E01 IS NOT A NUMBER: \" 145124050.106x6\" -> line: 30"}, };
    for (const auto& c : cases) EXPECT_STOP(ReadRinex(WriteTemp(c.name, c.text)), c.re) << c.name;
    // Exactly 99 characters is still a line.
    Loaded edge(WriteTemp("edge99.o", Edited([](auto& l) { l[199].resize(99, ' '); })));
    EXPECT_TRUE(edge.d.GetNEpoch() == 2 && edge.d.GetNObs() == 60);
    EXPECT_STOP(ReadRinex(TempDir() + "/no-such-file.o"), "#### RINEX: Error -> RINEX FILE CAN NOT BE OPENED! ####");
}

// ---- The same day in the formats stations publish --------------------------

// The RINEX 2 file of ESBC was made from the station's gzipped Compact RINEX 3
// file: read through inflating, Hatanaka decoding and translation it must give
// the RINEX 2 file's record store exactly, every value with its LLI and signal
// strength, in every type of the RINEX 2 header. So must a plain RINEX 3 copy
// (decoded here) and a gzipped copy of the RINEX 2 file (gzip(1) here).
TEST(RinexFormats, CompressedAndRinex3CopiesOfTheDayGiveTheRinex2RecordsExactly)
{
    const Loaded& ref = Load(kEsbc);
    const std::string crx = Data("esbc-2020-177/ESBC00DNK_R_20201770000_01D_30S_MO.crx.gz");
    const std::string rnx3 = WriteTemp("ESBC.rnx", DecodeCompactRinex(ReadInputFile(crx, "test"), crx));
    const std::string gz = TempDir() + "/esbc1770.20o.gz";
    ASSERT_EQ(std::system(("gzip -c " + Data(kEsbc) + " > " + gz).c_str()), 0);
    for (const std::string& path : {crx, rnx3, gz}) {
        SCOPED_TRACE(path);
        Loaded other(path);
        ASSERT_EQ(other.d.GetNEpoch(), ref.d.GetNEpoch());
        ASSERT_EQ(other.d.GetNObs(), ref.d.GetNObs());
        long differ = 0, compared = 0;
        for (long i = 0; i < ref.d.GetNEpoch(); ++i)
            differ += other.d.nsat(i) != ref.d.nsat(i) || other.d.epoch(i) - ref.d.epoch(i) != 0.0L;
        for (long k = 0; k < ref.d.GetNObs(); ++k) differ += other.d.sat(k) != ref.d.sat(k);
        for (long t = 0; t < ref.h.GetNObs(); ++t) {
            const unsigned short type = ref.h.obs(t);
            if (const matrix<gnssobs>* a = ref.d.ObsMatrix(type)) {
                const matrix<gnssobs>* b = other.d.ObsMatrix(type);
                ASSERT_TRUE(b != nullptr && b->Length() == a->Length()) << "type " << type;
                for (long k = 0; k < a->Length(); ++k, ++compared)
                    differ += (*a)(k).obs != (*b)(k).obs || (*a)(k).lli != (*b)(k).lli || (*a)(k).ss != (*b)(k).ss;
            } else if (const matrix<gnssobsshort>* a = ref.d.ShortMatrix(type)) {
                const matrix<gnssobsshort>* b = other.d.ShortMatrix(type);
                ASSERT_TRUE(b != nullptr && b->Length() == a->Length()) << "type " << type;
                for (long k = 0; k < a->Length(); ++k, ++compared) differ += (*a)(k).obs != (*b)(k).obs;
            }
        }
        EXPECT_EQ(differ, 0);
        EXPECT_EQ(compared, ref.d.GetNObs() * ref.h.GetNObs());
    }
}
