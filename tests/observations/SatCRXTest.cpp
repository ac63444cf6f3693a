// The satellite problem list and the stage that clears what it names.
#include "ObsSupport.h"

using namespace obstest;

static const std::string kHeader =
    "SATELLITE PROBLEMS\n------------------\n SAT  PROBLEM  ACTION      FROM                 TO\n\n"
    "     (1 phase, 2 code, 3 both)\n-----------------------------------------------------------------------\n";

// One data line in the file's columns: satellite at 1, problem at 13 (its
// digit at 14), action at 21, start "yyyy mm dd hh mm ss" at 32, end at 53
// when given.
static std::string DataLine(int sat, int problem, int action, const char* from, const char* to = "")
{
    char b[128];
    std::snprintf(b, sizeof b, " %3d         %2d      %d          %s  %s", sat, problem, action, from, to);
    return std::string(b).erase(std::string(b).find_last_not_of(' ') + 1) + "\n";
}

// 2020-06-25 is MJD 59025 (JD 2459025.5).
constexpr unsigned long kDay = 59025;
const char *const kFrom5 = "2020 06 25 00 05 00", *const kTo10 = "2020 06 25 00 10 00";

static SatCRX ReadList(const std::string& name, const std::string& text)
{
    SatCRX x;
    x.SetFile(WriteTemp(name, text));
    x.ReadFile();
    return x;
}

// Problem and action of satellite s at second t of the day.
static std::pair<short, short> At(const SatCRX& x, short s, long double t)
{
    short p = -1, a = -1;
    x.GetSatelliteProblem(s, mjd(kDay, t), p, a);
    return {p, a};
}

TEST(SatCRX, ReadsPeriodsUpToTheFirstShortLineAndHoldsBothEnds)
{
    const SatCRX x = ReadList("list.crx", kHeader + DataLine(5, 3, 1, kFrom5, kTo10) + DataLine(105, 1, 0, kFrom5)
                                              + "   a remark line that is long but has no problem digit\n"
                                              + DataLine(211, 2, 2, kFrom5, kTo10) + DataLine(5, 1, 4, kTo10)
                                              + "  end \n" + DataLine(7, 2, 0, kFrom5));
    ASSERT_EQ(x.GetNSat(), 4);
    std::vector<short> got;
    for (long k = 0; k < 4; ++k) got.insert(got.end(), {x.sat(k), x.TypAct(k, SatCRX::PROBLEM), x.TypAct(k, SatCRX::ACTION)});
    EXPECT_EQ(got, (std::vector<short>{5, 3, 1, 105, 1, 0, 211, 2, 2, 5, 1, 4}));
    EXPECT_TRUE(x.eph(0, SatCRX::FROM) == mjd(kDay, 300.0L) && x.eph(0, SatCRX::TO) == mjd(kDay, 600.0L));
    // Without an end the period runs to 2099-12-31 23:59:59.
    EXPECT_TRUE(x.eph(1, SatCRX::TO) == mjd(88068, 86399.0L));
    // Both ends belong to the period; the first period holding the epoch
    // wins over the open one that starts at its end.
    EXPECT_EQ((std::vector<std::pair<short, short>>{At(x, 5, 299), At(x, 5, 300), At(x, 5, 600), At(x, 5, 601), At(x, 6, 400)}),
              (std::vector<std::pair<short, short>>{{0, 0}, {3, 1}, {3, 1}, {1, 4}, {0, 0}}));
    // A file of fewer than six lines is an empty list.
    EXPECT_EQ(ReadList("short.crx", "SATELLITE PROBLEMS\n\n" + DataLine(5, 3, 1, kFrom5)).GetNSat(), 0);
}

TEST(SatCRXDeath, MissingOrVanishedFileStops)
{
    SatCRX x;
    EXPECT_STOP(x.SetFile(TempDir() + "/no_such.crx"), "\\*\\*\\*\\* Orvo: Error -> SATELLITE PROBLEM FILE DOES NOT EXIST! \\*\\*\\*\\*");
    const std::string p = WriteTemp("gone.crx", kHeader);
    x.SetFile(p);
    std::remove(p.c_str());
    EXPECT_STOP(x.ReadFile(), "\\*\\*\\*\\* Orvo: Error -> SATELLITE PROBLEM FILE CAN NOT BE OPENED! \\*\\*\\*\\*");
}

static const unsigned short kCleared[] = {RINEXObs::L1, RINEXObs::L2, RINEXObs::C1, RINEXObs::P1, RINEXObs::P2};
static bool IsPhase(unsigned short t) { return t == RINEXObs::L1 || t == RINEXObs::L2; }

// The first 30 epochs of ESBC against the clearable types as read: each
// value is gone where gone(sat, second of day, type) holds and kept
// elsewhere; returns the values gone per satellite, {phase, code}.
static std::map<short, std::pair<long, long>> ExpectCleared( const Loaded& f, const std::vector<matrix<gnssobs>>& before,
    const std::function<bool(short, long double, unsigned short)>& gone)
{
    std::map<short, std::pair<long, long>> n;
    for (long i = 0, r = 0; i < f.d.nepochall; ++i)
        for (long j = 0; j < f.d.nsat(i); ++j, ++r)
            for (int k = 0; k < 5; ++k) {
                const gnssobs &now = (*f.d.ObsMatrix(kCleared[k]))(r), &was = before[k](r);
                if (!gone(f.d.sat(r), f.d.epoch(i).GetSecond(), kCleared[k])) {
                    EXPECT_EQ(now.obs, was.obs) << f.d.sat(r) << " epoch " << i << " type " << k;
                } else if (!was.IsNull()) {
                    EXPECT_TRUE(now.IsNull()) << f.d.sat(r) << " epoch " << i;
                    (IsPhase(kCleared[k]) ? n[f.d.sat(r)].first : n[f.d.sat(r)].second)++;
                }
            }
    return n;
}

TEST(ExcludeProblemSat, PhaseAndCodeOfARealFileClearedInsideThePeriodOnly)
{
    Loaded f(CutFile(kEsbc, 30));
    std::vector<matrix<gnssobs>> before;
    for (unsigned short t : kCleared) before.push_back(*f.d.ObsMatrix(t));
    SatCRX x = ReadList("g05.crx", kHeader + DataLine(5, 3, 0, kFrom5, kTo10) + DataLine(108, 1, 0, kTo10));
    Capture out(std::cout);
    ExcludeProblemSat(f.h, f.d, x, true, false);
    auto n = ExpectCleared(f, before, [](short s, long double t, unsigned short ty) {
        return (s == 5 && t >= 300 && t <= 600) || (s == 108 && t >= 600 && IsPhase(ty));
    });
    const auto g05 = n[5], r08 = n[108];
    ASSERT_TRUE(g05.first > 0 && g05.second > 0 && r08.first > 0 && r08.second == 0);
    // The report counts what was cleared, per satellite and in all.
    char line[512];
    std::snprintf(line, sizeof line, "  SAT:    5    #OBS: %6ld    #PHS: %6ld    #COD: %6ld\n"
                  "  SAT:  108    #OBS: %6ld    #PHS: %6ld    #COD: %6ld\n\n"
                  "  Number of problematic satellites    : %6d\n  Number of problematic observations  : %6ld\n"
                  "                 PHASE observations   : %6ld\n                 CODE observations    : %6ld\n",
                  g05.first + g05.second, g05.first, g05.second, r08.first, r08.first, 0L, 2,
                  g05.first + g05.second + r08.first, g05.first + r08.first, g05.second);
    EXPECT_NE(out.Text().find(line), std::string::npos) << out.Text();

    // An unknown problem (the file's digit test lets only 1-3 in) warns and
    // clears nothing; without a list nothing happens at all.
    Loaded g(CutFile(kEsbc, 30));
    SatCRX bad = ReadList("bad.crx", kHeader + DataLine(5, 3, 0, kFrom5, kTo10));
    bad.TypAct(0, SatCRX::PROBLEM) = 7;
    Capture err(std::cerr), quiet(std::cout);
    ExcludeProblemSat(g.h, g.d, bad, true, true);
    ExcludeProblemSat(g.h, g.d, x, false, true);
    EXPECT_TRUE(ExpectCleared(g, before, [](short, long double, unsigned short) { return false; }).empty());
    EXPECT_GT(Occurrences(err.Text(), "UNKNOWN PROBLEM FROM SATELLITE PROBLEM FILE - EXPECTED 1|2|3 ####"), 0);
    EXPECT_EQ(Occurrences(quiet.Text(), "EXCLUDING PROBLEMATIC SATELLITES"), 1);
}
