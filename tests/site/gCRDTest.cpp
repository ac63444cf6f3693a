// Coordinate catalogue: the published solutions of ESBC and ZIMM carried to
// the middle of their data days, the search and table-end rules, the
// writer read back, the constraint sections and the failures.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <vector>

#include "SiteSupport.h"
#include "site/gCRD.h"

using namespace sitetest;
using orvotest::WriteTemp;

namespace {

// A data line in the documented columns; the numeric part from column 87 is
// free text.
std::string Row(int id, const char* name, const char* number, const long double p[3], const long double v[3],
                const char* date)
{
    char b[400];
    std::snprintf(b, sizeof b, "%4d %-20s %-60s %.8Lf %.8Lf %.8Lf %.12Lf %.12Lf %.12Lf %s", id, name, number, p[0],
                  p[1], p[2], v[0], v[1], v[2], date);
    return b;
}

// The value of KEY= in a set.env, or of the label's field (columns 1-60) in
// a RINEX header.
std::string SetValue(const std::string& set, const std::string& key)
{
    std::ifstream in(orvotest::Data(set + "/set.env"));
    for (std::string l; std::getline(in, l);) if (l.rfind(key + "=", 0) == 0) return l.substr(key.size() + 1);
    return "";
}
std::string HeaderField(const std::string& path, const std::string& label)
{
    std::ifstream in(path);
    for (std::string l; std::getline(in, l);) if (l.find(label) == 60) return l.substr(0, l.find_last_not_of(' ', 59) + 1);
    return "";
}

gCRD Catalogue(const std::string& name, const std::string& text)
{ gCRD g; g.SetFile(WriteTemp(name, text).c_str()); return g; }

const long double kP[3] = {1000.0L, 2000.0L, 3000.0L}, kV[3] = {0.01L, -0.02L, 0.03L};

}  // namespace

// The brief's bound; the reference values are printed to 0.1 mm, and the
// data sets' own propagation used the same linear motion over decimal years.
constexpr long double RefTol_m = 1e-3L;
// The catalogue values are printed to 1e-8 m and read in long double.
constexpr long double ReadTol_m = 1e-8L;
// The writer prints 4 decimals: half a unit of the last one.
constexpr long double PrintTol_m = 5e-5L;

TEST(gCRD, PublishedSolutionsGiveTheReferenceAtTheMiddleEpoch)
{
    struct Site { std::string set, obs; long double p[3], v[3]; const char* date; mjd mid; };
    const Site sites[] = {
        // Weekly solution of GPS week 2237; velocity in mm/yr from the README.
        {"esbc-2020-177", "esbc1770.20o", {3582104.73011L, 532590.21597L, 5232755.16261L},
         {-0.01465L, 0.01537L, 0.00967L}, "2022-11-23 12:00:00", Epoch(2020, 6, 25, 12)},
        // IGS14 cumulative solution at 2010.0.
        {"zimm-2015-235", "ZIMM2350.15O", {4331296.99527644L, 567555.967166197L, 4633133.99277524L},
         {-0.013963853698L, 0.018030425614L, 0.011675944528L}, "2010-01-01 00:00:00", Epoch(2015, 8, 23, 12)}};
    std::string text = "# ID NAME\n#*** ****\n", names[2][2];
    for (int i = 0; i < 2; ++i) {
        const std::string obs = orvotest::Data(sites[i].set + "/" + sites[i].obs);
        names[i][0] = HeaderField(obs, "MARKER NAME"), names[i][1] = HeaderField(obs, "MARKER NUMBER");
        ASSERT_FALSE(names[i][0].empty() || names[i][1].empty()) << obs;
        text += Row(i + 1, names[i][0].c_str(), names[i][1].c_str(), sites[i].p, sites[i].v, sites[i].date) + "\n";
    }
    gCRD g = Catalogue("real.crd", text);
    for (int i = 0; i < 2; ++i) {
        const char *name = names[i][0].c_str(), *number = names[i][1].c_str();
        xyz vel;
        const xyz p = g.GetCRD(name, number, sites[i].mid, vel);
        ASSERT_TRUE(g.IsSite()) << name;
        const long double got[3] = {p.x, p.y, p.z};
        for (int k = 0; k < 3; ++k)
            EXPECT_NEAR_LD(got[k], std::strtold(SetValue(sites[i].set, std::string("REF_") + "XYZ"[k]).c_str(), nullptr),
                           RefTol_m) << name << k;
        EXPECT_NEAR_LD(vel.z, sites[i].v[2], ReadTol_m) << name;
        // The receiver stage's form takes the same position silently.
        orvotest::Capture err(std::cerr);
        EXPECT_NEAR_LD(AprioriPosition(g, name, number, sites[i].mid, xyz()).x, p.x, 0.0L);
        EXPECT_EQ(err.Text(), "");
    }
    // Another marker number of the same name is not listed: the header's
    // position stays, with the warning.
    orvotest::Capture err(std::cerr);
    const xyz p = AprioriPosition(g, "ZIMM", "14001M009", sites[1].mid, xyz(1.0L, 2.0L, 3.0L));
    EXPECT_TRUE(p.x == 1.0L && p.y == 2.0L && p.z == 3.0L);
    EXPECT_NE(err.Text().find("#### Orvo: Warning -> SITE NAME NOT LISTED IN APRIORI COORDINATE FILE - USING RINEX "
                              "VALUES! ####"), std::string::npos) << err.Text();
}

TEST(gCRD, SearchTakesTheFirstPrefixWithBlankOrEqualNumberBeforeTheTableEnd)
{
    const mjd ref = Epoch(2021, 1, 1), half = Epoch(2021, 7, 2, 12);  // 182.5 of 365 days
    long double P[5][3] = {};  // row 0: the null position of a station not found
    for (int r = 1; r < 5; ++r) for (int k = 0; k < 3; ++k) P[r][k] = 1000.0L * (k + 1) + 100.0L * (r - 1);
    const char* d = "2021-01-01 00:00:00";
    gCRD g = Catalogue("search.crd", Row(1, "ABCD00XYZ", "X111", P[1], kV, d) + "\n" + Row(2, "ABCD00XYZ", "Y222", P[2], kV, d)
        + "\n" + Row(3, "ABCD00XYZ", "", P[3], kV, d) + "\n#234 passed over\n" + Row(4, "EFGH", "", P[4], kV, d)
        + "\n\n" + Row(5, "HIDE", "", P[1], kV, d) + "\n");
    // row: the line expected (0 none); dY: years from its reference.
    const struct { const char* name; const char* number; mjd t; int row; long double dY; } cases[] = {
        {"ABCD00XYZ", "Y222", ref, 2, 0}, {"ABCD", "X111", ref, 1, 0},       {"ABCD", "Z999", ref, 3, 0},
        {"ABCD", "", ref, 3, 0},          {"EFGH", "ANY", ref, 4, 0},        {"ABCD", "X111", half, 1, 0.5L},
        {"ABCD00XYZW", "", ref, 0, 0},    {"abcd", "X111", ref, 0, 0},       {"HIDE", "", ref, 0, 0},
        {"", "", ref, 0, 0}};
    for (const auto& c : cases) {
        const xyz p = g.GetCRD(c.name, c.number, c.t);
        EXPECT_EQ(g.IsSite(), c.row != 0) << c.name << "/" << c.number;
        EXPECT_NEAR_LD(p.x, P[c.row][0] + c.dY * kV[0], ReadTol_m) << c.name;
        EXPECT_NEAR_LD(p.y, P[c.row][1] + c.dY * kV[1], ReadTol_m) << c.name;
        EXPECT_NEAR_LD(p.z, P[c.row][2] + c.dY * kV[2], ReadTol_m) << c.name;
    }
    // A comment or a short line with a blank column 3 ends the table too.
    for (const std::string end : {"#   comment\n", "AB\n"}) {
        gCRD e = Catalogue("end.crd", end + Row(1, "EFGH", "", P[1], kV, d) + "\n");
        e.GetCRD("EFGH", "", ref);
        EXPECT_FALSE(e.IsSite()) << end;
        e.GetCRD("EFGH");
        EXPECT_EQ(e.IsSite(), end[0] == '#') << "position-only form passes over leading comments";
    }
}

TEST(gCRD, WrittenPointsReadBack)
{
    const std::string path = orvotest::TempDir() + "/written.crd";
    const long double p2[3] = {-4331296.9165L, 567556.0689L, -4633134.0586L}, v2[3] = {-0.0139L, 0.018L, -0.0117L};
    const struct { const char* name; const char* number; const long double* p; const long double* v; mjd t, back; } pts[] = {
        {"ESBC00DNK", "10118M001", kP, kV, Epoch(2020, 6, 25, 12), Epoch(2020, 6, 25, 12)},
        // Cut to the 20 name columns; 59.6 s rounds on into the next year.
        {"A_NAME_LONGER_THAN_TWENTY", "", p2, v2, mjd(Epoch(2020, 12, 31, 23, 59).GetMJDay(), 86399.6L), Epoch(2021, 1, 1)}};
    gCRD w;
    ASSERT_TRUE(w.OpenOutputFile(path.c_str()));
    for (const auto& q : pts)
        EXPECT_TRUE(w.PrintGPoint(q.name, q.number, xyz(q.p[0], q.p[1], q.p[2]), xyz(q.v[0], q.v[1], q.v[2]), q.t));
    // A value filling its field would run into its neighbour.
    EXPECT_FALSE(w.PrintGPoint("BIG", "", xyz(1e9L, 0, 0), xyz(), pts[0].t));
    w.CloseOutputFile();
    EXPECT_FALSE(w.PrintGPoint("CLOSED", "", xyz(), xyz(), pts[0].t));

    gCRD r;
    r.SetFile(path.c_str());
    matrix<std::string> pt; matrix<xyz> pos, vel; matrix<mjd> eph;
    ASSERT_EQ(r.ReadCRDs(pt, pos, vel, eph), 2);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(pt(i), std::string(pts[i].name).substr(0, 20));
        EXPECT_TRUE(eph(i) == pts[i].back) << i;
        const long double got[6] = {pos(i).x, pos(i).y, pos(i).z, vel(i).x, vel(i).y, vel(i).z};
        for (int k = 0; k < 6; ++k) EXPECT_NEAR_LD(got[k], k < 3 ? pts[i].p[k] : pts[i].v[k - 3], PrintTol_m) << i << k;
    }
}

TEST(gCRD, ConstraintSectionsReadTheirRowsWithSigmaFloors)
{
    auto Names = [](const char* a, const char* b) { char s[64]; std::snprintf(s, sizeof s, "%4d %-20s %-20s ", 1, a, b); return std::string(s); };
    auto Sig = [](std::initializer_list<const char*> v) { std::string s; for (const char* x : v) { char b[20]; std::snprintf(b, sizeof b, "%-15s", x); s += b; } return s; };
    const std::string abs = Names("ABCD", "").substr(0, 26);
    gCRD g = Catalogue("const.crd", Row(1, "ABCD", "", kP, kV, "2021-01-01 00:00:00") + "\n\n"
        "# MINIMUM CONSTRAINTS\n#   blank column 3 under the heading\n   1 ABCD\n   2 EFGH\n\n"
        "# ABSOLUTE\n" + abs + Sig({"0.001", "0", "0.002"}) + "\n#   a blank column 3 ends a section\n"
        "# RELATIVE\n" + Names("ABCD", "EFGH") + Sig({"0.003", "0.0", "abc"}) + "\n\n"
        "# HEIGHT\n" + Names("ABCD", "EFGH") + "0.004\n\n# NORTH-EAST\n" + Names("EFGH", "ABCD") + Sig({"0.005", "0.006"})
        + "\n\n# FIXED\n" + Names("IJKL", "").substr(0, 9) + "\n");
    matrix<std::string> pt; matrix<long double> sig;
    EXPECT_TRUE(g.ReadMINConst(pt, "MINIMUM") == 2 && pt.NRow() == 2 && pt(0) == "ABCD" && pt(1) == "EFGH");
    EXPECT_TRUE(g.ReadFixedStat(pt, "FIXED") == 1 && pt(0) == "IJKL");
    EXPECT_EQ(g.ReadMINConst(pt, "NO SUCH HEADING"), 0);
    using Reader = long (gCRD::*)(matrix<std::string>&, matrix<long double>&, const char*);
    const struct { Reader read; const char* head; std::vector<std::string> names; std::vector<long double> s; } cases[] = {
        {&gCRD::ReadABSConst, "ABSOLUTE", {"ABCD"}, {0.001L, 1e-5L, 0.002L}},
        {&gCRD::ReadRELConst, "RELATIVE", {"ABCD", "EFGH"}, {0.003L, 1e-7L, 1e-7L}},
        {&gCRD::ReadDHConst, "HEIGHT", {"ABCD", "EFGH"}, {0.004L}},
        {&gCRD::ReadDNEConst, "NORTH-EAST", {"EFGH", "ABCD"}, {0.005L, 0.006L}}};
    for (const auto& c : cases) {
        ASSERT_EQ((g.*c.read)(pt, sig, c.head), 1) << c.head;
        ASSERT_TRUE(pt.NCol() == static_cast<long>(c.names.size()) && sig.NCol() == static_cast<long>(c.s.size()));
        for (std::size_t k = 0; k < c.names.size(); ++k) EXPECT_EQ(pt(0, k), c.names[k]) << c.head;
        // Read by strtold from the same decimal text as the literal: equal.
        for (std::size_t k = 0; k < c.s.size(); ++k) EXPECT_NEAR_LD(sig(0, k), c.s[k], 0.0L) << c.head << k;
    }
}

TEST(gCRDDeath, FilesThatAreMissingUnsetOrGoneStop)
{
    EXPECT_EXIT(gCRD().SetFile("/nonexistent/apr.crd"), ::testing::ExitedWithCode(1),
                Framed("COORDINATE FILE DOES NOT EXIST!"));
    matrix<std::string> pt; matrix<xyz> pos, vel; matrix<mjd> eph;
    EXPECT_EXIT(gCRD().ReadCRDs(pt, pos, vel, eph), ::testing::ExitedWithCode(1), Framed("COORDINATE FILE IS NOT SET!"));
    gCRD g = Catalogue("gone.crd", "");
    std::remove((orvotest::TempDir() + "/gone.crd").c_str());
    EXPECT_EXIT(g.GetCRD("ABCD", "", Epoch(2021, 1, 1)), ::testing::ExitedWithCode(1),
                Framed("COORDINATE FILE CAN NOT BE OPENED!"));
    EXPECT_EQ(g.ReadCRDs(pt, pos, vel, eph), 0);  // the table reader just finds nothing
}

TEST(gCRDDeath, BadLineOfAFoundStationStops)
{
    const std::string good = Row(1, "ABCD", "", kP, kV, "2021-01-01 00:00:00");
    const std::string head = good.substr(0, 87);
    const std::string bad[] = {good.substr(0, 60), head + "1 2 3 4 5 6 2021-01-01 00:00", head + "1 2 3 4 5 6 2021-13-01 0:0:0",
                               head + "1 2 3 4 5 6 2021-01-01 24:0:0",
                               head + "nan 2 3 4 5 6 2021-01-01 0:0:0", head + "1 2 3 4 5 6 -5-01-01 0:0:0"};
    for (const std::string& b : bad) {
        gCRD g = Catalogue("bad.crd", b + "\n" + good + "\n");
        EXPECT_EXIT(g.GetCRD("AB", "X", Epoch(2021, 1, 1)), ::testing::ExitedWithCode(1),
                    Framed("PROBLEM READING COORDINATE LINE FOR STATION AB!")) << b;
    }
    // The table reader names the line's station; the position-only form
    // needs three numbers.
    gCRD g = Catalogue("bad2.crd", good + "\n" + Row(2, "EFGH", "", kP, kV, "2021-02-30 00:00:00") + "\n   3 XY" + std::string(80, ' ') + "1 2\n");
    matrix<std::string> pt; matrix<xyz> pos, vel; matrix<mjd> eph;
    EXPECT_EXIT(g.ReadCRDs(pt, pos, vel, eph), ::testing::ExitedWithCode(1), Framed(".*FOR STATION EFGH!"));
    EXPECT_EXIT(g.GetCRD("XY"), ::testing::ExitedWithCode(1), Framed(".*FOR STATION XY!"));
}
