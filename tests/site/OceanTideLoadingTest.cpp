// Ocean tide loading: the published hardisp series of Onsala and Reykjavik,
// the harmonic table against the reference copy, the real ZIMM file, the
// written block read back, and the failures on cut copies of the files.
#include <algorithm>
#include <cmath>
#include <fstream>
#include <iostream>
#include <memory>

#include "numerics/MathConstants.h"

#include "OtlSupport.h"

using namespace otltest;
using orvotest::Capture;
using orvotest::WriteTemp;

namespace {

// The series are printed to 1e-6 m (rounding up to 5e-7 m); the vectors give
// 1e-6 m as the match of a faithful port.
constexpr long double HardispTol_m = 1e-6L;
// The two double-precision ports that print the secondary first epoch to
// 1e-10 m agree with each other to 5e-10 m.
constexpr long double PortTol_m = 1e-9L;
// The official table takes the fundamental arguments at the UTC epoch, the
// ports (and we) at TT, 66.184 s later. That turns a harmonic of frequency f
// and band d1 by (f - d1) 360 deg 66.184 s / 86400 s: M2 by 0.019 deg, 3.3e-4
// of its 23.6 mm radial at Reykjavik (7.8e-6 m); N2, O1, Mf and the side
// lines add up to 3e-6 m more, the printed digits 5e-7 m.
constexpr long double UtcArgumentTol_m = 1.5e-5L;
// The secondary first epoch to ten digits (dU, dS, dW; m).
const long double kFirst[3] = {0.0030940825L, -0.0015382987L, -0.0008953596L};

const std::string kZimmBlq = orvotest::Data("zimm-2015-235/zimm.blq");

std::unique_ptr<OceanTideLoading> Load(const std::string& path, const char* station)
{
    auto o = std::make_unique<OceanTideLoading>();
    o->SetFile(path.c_str());
    o->ReadFile();
    if (station) o->SetStation(station);
    return o;
}

// hardisp's columns dU, dS, dW as north = -dS, east = -dW, up = dU.
void ExpectHardisp(OceanTideLoading& o, const mjd& t, const long double* uSW, long double tol, const std::string& what)
{
    neu d;
    o.GetDisplacement(t, d);
    EXPECT_NEAR(d.n, -uSW[1], tol) << what;
    EXPECT_NEAR(d.e, -uSW[2], tol) << what;
    EXPECT_NEAR(d.u, uSW[0], tol) << what;
}

std::string ZimmLine(int n)
{
    const std::string before = orvotest::FirstLines(kZimmBlq, n - 1), upTo = orvotest::FirstLines(kZimmBlq, n);
    return upTo.substr(before.size(), upTo.size() - before.size() - 1);
}

std::string ZimmWith(const std::string& name, int lineNo, const std::string& replacement)
{
    std::istringstream in(orvotest::ReadFile(kZimmBlq));
    std::string out;
    int n = 0;
    for (std::string l; std::getline(in, l);)
        out += (++n == lineNo ? replacement : l) + "\n";
    return WriteTemp(name, out);
}

}  // namespace

TEST(OceanTideLoading, FollowsTheSecondaryOnsalaSeriesOfTheTwoPorts)
{
    std::vector<Row> secondary;
    for (const std::string& l : Fenced(1)) secondary.push_back(Numbers(l));
    ASSERT_EQ(secondary.size(), 24u);
    auto o = Load(VectorBlq(), "ONSALA");
    for (const Row& r : secondary)  // from 01:10:45, hourly, into the next day
        ExpectHardisp(*o, Jun25(4245.0L + 3600.0L * (r[0] - 1)), &r[1], HardispTol_m, "epoch " + std::to_string(r[0]));
    ExpectHardisp(*o, Jun25(4245.0L), kFirst, PortTol_m, "first epoch to more digits");
}

TEST(OceanTideLoading, FollowsTheOfficialSeriesOfOnsalaAndReykjavik)
{
    const std::vector<Row> official = OfficialSeries();
    ASSERT_EQ(official.size(), 24u);
    auto o = Load(VectorBlq(), nullptr);
    ASSERT_EQ(o->GetNStation(), 2);
    for (int s = 0; s < 2; ++s) {
        o->SetStation(s == 0 ? "ONSALA" : "REYKJAVIK");
        ASSERT_EQ(o->GetStatIndex(), s);
        for (const Row& r : official)
            ExpectHardisp(*o, Jun25(3600.0L * r[0]), &r[1 + 3 * s], UtcArgumentTol_m,
                          "station " + std::to_string(s) + " hour " + std::to_string(r[0]));
    }
}

TEST(OceanTideLoading, HarmonicTableEqualsThePublishedRows)
{
    std::ifstream in(orvotest::Reference("hardisp_harmonics.txt"));
    int k = 0;
    for (std::string l; std::getline(in, l);) {
        if (l.empty() || l[0] == '#') continue;
        ASSERT_LT(k, otlns::NHarm) << "more rows in the reference than in the table";
        const Row r = Numbers(l);
        ASSERT_EQ(r.size(), 7u) << l;
        for (int i = 0; i < otlns::NArg; ++i) EXPECT_EQ(otlns::Harmonics[k].IDD[i], static_cast<int>(r[i])) << "row " << k + 1;
        // Any slip changes a value by at least 1e-6, the table's last digit.
        EXPECT_NEAR(otlns::Harmonics[k].TAMP, r[6], 1e-9L) << "row " << k + 1;
        ++k;
    }
    EXPECT_EQ(k, otlns::NHarm);
}

TEST(OceanTideLoading, RealZimmFileGivesCentimetreLevelDisplacements)
{
    Capture err(std::cerr);
    auto o = Load(kZimmBlq, "ZIMM");
    EXPECT_EQ(err.Text(), "");
    ASSERT_EQ(o->GetNStation(), 1);
    ASSERT_EQ(o->GetStatIndex(), 0);
    // The comment line: lon/lat 7.4653 46.8771, height 956.350.
    const flh& p = o->GetStation(0).gpos;
    EXPECT_NEAR(p.l / Deg2Rad, 7.4653L, 1e-12L);
    EXPECT_NEAR(p.f / Deg2Rad, 46.8771L, 1e-12L);
    EXPECT_NEAR(p.h, 956.350L, 1e-12L);
    // The 11 amplitudes of each row add to at most 16 mm at ZIMM; the minor
    // harmonics add some per cent, so 2 cm bounds every hour. M2 alone is
    // 6.9 mm radial: a day without 1 mm of motion means nothing was read.
    long double maxUp = 0.0L;
    for (int h = 0; h < 24; ++h) {
        neu d;
        o->GetDisplacement(mjd(57257, 3600.0L * h), d);  // 2015-08-23
        for (long double x : {d.n, d.e, d.u}) EXPECT_LE(std::fabs(x), 0.02L) << h;
        maxUp = std::max(maxUp, std::fabs(d.u));
    }
    EXPECT_GT(maxUp, 0.001L);
}

TEST(OceanTideLoading, WrittenBlocksAreThePrintedBlocksAndReadBack)
{
    auto o = Load(VectorBlq(), nullptr);
    std::ostringstream os;
    os << "$$ END HEADER\n" << o->GetStation(0) << o->GetStation(1) << "$$ END TABLE\n";
    // Name and the six number rows of each block are the published text.
    const std::vector<std::string> printed = Fenced(0);
    std::istringstream in(os.str());
    std::vector<std::string> written;
    for (std::string l; std::getline(in, l);) written.push_back(l);
    ASSERT_EQ(written.size(), 24u);
    for (int s = 0; s < 2; ++s)
        for (int i : {0, 4, 5, 6, 7, 8, 9}) EXPECT_EQ(written[2 + 11 * s + i], printed[11 * s + i]) << s << " " << i;
    auto back = Load(WriteTemp("written.blq", os.str()), "REYKJAVIK");
    ASSERT_EQ(back->GetNStation(), 2);
    EXPECT_EQ(back->GetStatIndex(), 1);
    for (int s = 0; s < 2; ++s) {
        const flh &a = o->GetStation(s).gpos, &b = back->GetStation(s).gpos;
        // The same four decimals of a degree come back.
        EXPECT_NEAR(a.f, b.f, 1e-12L);
        EXPECT_NEAR(a.l, b.l, 1e-12L);
        EXPECT_STREQ(o->GetStation(s).pt, back->GetStation(s).pt);
    }
}

TEST(OceanTideLoading, UnlistedStationWarnsAndGivesZero)
{
    auto o = Load(VectorBlq(), "ONSALA");
    for (const char* name : {"ONSA", "  ONSALA", "onsala"}) {
        Capture err(std::cerr);
        o->SetStation(name);
        EXPECT_NE(err.Text().find(std::string("#### Orvo: Warning -> STATION NAME -") + name
                                  + "- NOT LISTED IN BLQ FILE > SETTING ALL DISPLACEMENTS TO ZERO! ####"),
                  std::string::npos) << err.Text();
        EXPECT_EQ(o->GetStatIndex(), -1);
        for (long double sec : {0.0L, 43200.0L}) {
            neu d(1.0L, 1.0L, 1.0L);
            o->GetDisplacement(Jun25(sec), d);
            EXPECT_TRUE(d.n == 0.0L && d.e == 0.0L && d.u == 0.0L) << name;
        }
    }
}

TEST(OceanTideLoading, BlockCutByTheEndOfFileIsLeftOutWithAWarning)
{
    Capture err(std::cerr);
    auto o = Load(VectorBlq(1), "ONSALA");
    EXPECT_NE(err.Text().find("#### Orvo: Warning -> PROBLEM READING BLQ FILE: STATION NUMBER   2 [REYKJAVIK]! ####"),
              std::string::npos) << err.Text();
    EXPECT_EQ(o->GetNStation(), 1);
    ExpectHardisp(*o, Jun25(4245.0L), kFirst, PortTol_m, "Onsala after the cut");
}

TEST(OceanTideLoadingDeath, UnreadableFileStops)
{
    const std::string cases[] = {orvotest::TempDir() + "/no.blq", orvotest::TempDir(),
                                 WriteTemp("header.blq", orvotest::FirstLines(kZimmBlq, 20))};
    for (const std::string& path : cases)
        EXPECT_EXIT(Load(path, "ZIMM"), ::testing::ExitedWithCode(1),
                    "\\*\\*\\*\\* Orvo: Error -> OCEAN TIDE LOADING FILE CAN NOT BE READ!") << path;
}

TEST(OceanTideLoadingDeath, CorruptedBlockStops)
{
    // Line 37: the comment with the position; 38: first amplitude row.
    const std::string line37 = ZimmLine(37), line38 = ZimmLine(38);
    const std::string cases[] = {ZimmWith("short.blq", 38, line38.substr(0, 60)),
                                 ZimmWith("blank.blq", 38, line38.substr(0, 8) + "       " + line38.substr(15)),
                                 ZimmWith("letter.blq", 38, line38.substr(0, 8) + " .0O246" + line38.substr(15)),
                                 ZimmWith("position.blq", 37, line37.substr(0, 62)),
                                 ZimmWith("comment.blq", 36, "  not a comment")};
    for (const std::string& path : cases)
        EXPECT_EXIT(Load(path, "ZIMM"), ::testing::ExitedWithCode(1),
                    "\\*\\*\\*\\* Orvo: Error -> OCEAN TIDE LOADING FILE CORRUPTED!") << path;
}
