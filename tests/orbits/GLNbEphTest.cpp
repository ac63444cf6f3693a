// GLONASS broadcast ephemeris: the real navigation file of the ESBC set,
// checked against a parse of its own, against the precise orbits of the
// same day, and through the light-time forms; broken variants cut from it.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "orbits/GLNbEph.h"
#include "numerics/NearLD.h"

using orvotest::Data;
using orvotest::ReadFile;
using orvotest::WriteTemp;

namespace {

const std::string kNav = Data("esbc-2020-177/esbc1770.20g");
const std::string kSp3 = Data("esbc-2020-177/GRG0MGXFIN_20201770000_01D_15M_ORB.SP3");
constexpr long double C = 299792458.0L;
constexpr long double GpsUtc_s = 18.0L;  // GPS - UTC in June 2020 (IERS Bulletin C)
constexpr unsigned long Jun25 = 59025;   // MJD of 2020-06-25

// 15 m: broadcast GLONASS orbits are good to a few metres (IGS product
// table: about 5 m), the broadcast state refers to the antenna rather than
// the centre of mass of the precise orbit (about 2 m), and PZ-90.11 and
// IGb14 differ by centimetres. A wrong sign of the Coriolis term puts the
// satellite 100 km off after 15 min, a lost J2 term tens of metres.
constexpr long double OrbitTol_m = 15.0L;
// 1 mm: the two light-time forms differ only in second-order terms of the
// Earth rotation angle (5e-6 rad over the travel): (5e-6)^2 * 2.5e7 m.
constexpr long double LightFormTol_m = 1e-3L;

struct Record {
    int slot;
    int y, m, d, hh, mm;
    long double s;
    long double v[15];
};

long double Num(std::string t)
{
    for (char& ch : t)
        if (ch == 'D') ch = 'E';
    return std::strtold(t.c_str(), nullptr);
}

// The records of the file, cut by the fixed columns of RINEX 2.11
// (epoch line: I2 and 5 I3, F5.1, then 3D19.12; orbit lines: 3X, 4D19.12).
const std::vector<Record>& Records()
{
    static std::vector<Record>* recs = nullptr;
    if (recs) return *recs;
    recs = new std::vector<Record>;
    std::ifstream in(kNav);
    std::string line;
    while (std::getline(in, line) && line.find("END OF HEADER") == std::string::npos) {}
    while (std::getline(in, line)) {
        if (line.size() < 79) break;
        Record r{};
        r.slot = std::atoi(line.substr(0, 2).c_str());
        r.y = 2000 + std::atoi(line.substr(3, 2).c_str());
        r.m = std::atoi(line.substr(6, 2).c_str());
        r.d = std::atoi(line.substr(9, 2).c_str());
        r.hh = std::atoi(line.substr(12, 2).c_str());
        r.mm = std::atoi(line.substr(15, 2).c_str());
        r.s = Num(line.substr(17, 5));
        for (int j = 0; j < 3; ++j) r.v[j] = Num(line.substr(22 + 19 * j, 19));
        for (int l = 0; l < 3; ++l) {
            std::getline(in, line);
            for (int j = 0; j < 4; ++j) r.v[3 + 4 * l + j] = Num(line.substr(3 + 19 * j, 19));
        }
        recs->push_back(r);
    }
    return *recs;
}

// Precise positions (m) by satellite name and epoch of day (GPS s), from
// the 15-min nodes of the SP3 file of 2020-06-25.
const std::map<std::pair<std::string, long>, std::vector<long double>>& Sp3()
{
    static std::map<std::pair<std::string, long>, std::vector<long double>>* m = nullptr;
    if (m) return *m;
    m = new std::map<std::pair<std::string, long>, std::vector<long double>>;
    std::ifstream in(kSp3);
    std::string line;
    long sod = -1;
    while (std::getline(in, line)) {
        if (line.compare(0, 2, "* ") == 0) {
            sod = 3600L * std::atol(line.substr(14, 3).c_str())
                  + 60L * std::atol(line.substr(17, 3).c_str());
        } else if (line.compare(0, 2, "PR") == 0 && sod >= 0) {
            std::istringstream s(line.substr(4));
            long double x, y, z;
            s >> x >> y >> z;
            (*m)[{line.substr(1, 3), sod}] = {x * 1000.0L, y * 1000.0L, z * 1000.0L};
        }
    }
    return *m;
}

GLNbEph& Nav()
{
    static GLNbEph* g = nullptr;
    if (!g) {
        g = new GLNbEph;
        g->SetFile(kNav.c_str());
        g->ReadFile();
    }
    return *g;
}

long double Dist(const xyz& a, const std::vector<long double>& b)
{
    return std::sqrt((a.x - b[0]) * (a.x - b[0]) + (a.y - b[1]) * (a.y - b[1])
                     + (a.z - b[2]) * (a.z - b[2]));
}

TEST(GLNbEph, HeaderAndEveryRecordReadAsTheFileHoldsThem)
{
    GLNbEph& g = Nav();
    const GLNbEphHeader& h = g.GetHeader();
    // Float field: 1e-6 is a few float steps at 2.11.
    EXPECT_NEAR_LD(h.version, 2.11f, 1e-6f);
    EXPECT_STREQ(h.type, "G: GLONASS NAV DATA");
    EXPECT_STREQ(h.pgm, "rnx3nav2");
    EXPECT_EQ(h.leaps, 18);
    const std::vector<Record>& r = Records();
    ASSERT_EQ(r.size(), 510u);  // (2045 lines - 5 header lines) / 4
    ASSERT_EQ(g.GetNSat(), 510);
    for (size_t i = 0; i < r.size(); ++i) {
        EXPECT_EQ(g.GetData().sat(i), r[i].slot);
        // Records are held on GPS time: the UTC epoch plus 18 s.
        const long double sod = 3600.0L * r[i].hh + 60.0L * r[i].mm + r[i].s + GpsUtc_s;
        const unsigned long day = (r[i].d == 24) ? Jun25 - 1 : Jun25 + (r[i].d - 25);
        // 1e-9 s: day-plus-second epochs differ from whole seconds by round-off only.
        EXPECT_NEAR_LD(g.GetMJD(i) - mjd(day, 0.0L), sod, 1e-9L) << i;
        for (int j = 0; j < 15; ++j)  // mantissa times power of ten: a few ulps
            EXPECT_NEAR_LD(g.GetData().data(i, j), r[i].v[j], 1e-15L * std::fabs(r[i].v[j])) << i;
    }
    // 23 slots: R01-R24 without R22.
    const matrix<short>& list = g.GetSatList();
    ASSERT_EQ(list.NRow(), 23);
    EXPECT_EQ(list(0), 1);
    EXPECT_EQ(list(22), 24);
}

TEST(GLNbEph, RecordChoiceTakesTheNearerAndTiesToTheEarlier)
{
    GLNbEph& g = Nav();
    // R01 records at 23:15, 23:45 (24 June), 00:15, 00:45 ... UTC.
    std::vector<long> ix;
    for (long i = 0; i < g.GetNSat(); ++i)
        if (g.GetData().sat(i) == 1) ix.push_back(i);
    ASSERT_GE(ix.size(), 4u);
    const mjd a = g.GetMJD(ix[2]), b = g.GetMJD(ix[3]);
    mjd t = a;
    t += 900.0L;  // half-way
    EXPECT_EQ(g.GetDataIndex(1, t), ix[2]);
    t += 1.0L;
    EXPECT_EQ(g.GetDataIndex(1, t), ix[3]);
    EXPECT_EQ(g.GetDataIndex(1, b), ix[3]);
    mjd early(Jun25 - 2, 0.0L);
    EXPECT_EQ(g.GetDataIndex(1, early), ix.front());
    mjd late(Jun25 + 3, 0.0L);
    EXPECT_EQ(g.GetDataIndex(1, late), ix.back());
}

TEST(GLNbEph, StateAtTheRecordEpochIsTheRecordItself)
{
    GLNbEph& g = Nav();
    const long i = 100;
    mjd t = g.GetMJD(i);
    xyzt p, v;
    g.CalcSatPosition(g.GetData().sat(i), t, t, p, v, 0);
    const matrix<long double>& d = g.GetData().data;
    EXPECT_EQ(p.x, d(i, GLNbEphData::X0) * 1000.0L);
    EXPECT_EQ(p.y, d(i, GLNbEphData::Y0) * 1000.0L);
    EXPECT_EQ(p.z, d(i, GLNbEphData::Z0) * 1000.0L);
    EXPECT_EQ(v.x, d(i, GLNbEphData::XD0) * 1000.0L);
    // Clock: -TauN of the file, no GammaN term at dt 0, less 2 r.v/c^2.
    const long double rel = 2.0L * (p.x * v.x + p.y * v.y + p.z * v.z) / (C * C);
    EXPECT_NEAR_LD(p.dt, d(i, GLNbEphData::TAUN) - rel, 1e-20L);
    // Near-circular orbit (e ~ 0.001): 2 sqrt(GM a) e / c^2 is about 2 ns.
    EXPECT_LT(std::fabs(g.GetRelativity()), 5e-9L);
}

TEST(GLNbEph, IntegratedOrbitsMeetThePreciseOrbitsBothWays)
{
    GLNbEph& g = Nav();
    int checked = 0;
    for (long i = 0; i < g.GetNSat(); ++i) {
        const mjd rec = g.GetMJD(i);
        if (rec.GetMJDay() != Jun25) continue;
        const short slot = g.GetData().sat(i);
        const std::string name = (slot < 10 ? "R0" : "R") + std::to_string(slot);
        // The 15-min SP3 nodes before and after the record epoch (GPS):
        // 18 s back, and 882 s ahead (29 full steps and a 12 s step).
        const long recSod = std::lround(rec.GetSecond());
        for (long node : {recSod - recSod % 900, recSod - recSod % 900 + 900}) {
            const auto it = Sp3().find({name, node});
            if (it == Sp3().end() || node >= 86400) continue;
            mjd t(Jun25, static_cast<long double>(node));
            xyzt p, v;
            g.CalcSatPosition(slot, t, t, p, v, 0);
            EXPECT_LT(Dist(p, it->second), OrbitTol_m) << name << " " << node;
            ++checked;
        }
    }
    EXPECT_GT(checked, 600);  // about 23 slots x 20 records x 2 nodes
}

TEST(GLNbEph, LightTimeFormsAgreeAndCloseOnTheTravelTime)
{
    GLNbEph& g = Nav();
    xyz rec(3582104.7655L, 532590.1789L, 5232755.1393L);  // ESBC marker
    mjd eph(Jun25, 3600.0L * 10.0L + 18.0L);
    for (short slot : {1, 10, 24}) {
        xyzt ps, vs;
        const long double d = g.CalcSatPosition(slot, eph, eph, rec, ps, vs, 0);
        // GLONASS range from the ground: 19 100 to 25 500 km.
        EXPECT_GT(d, 1.9e7L);
        EXPECT_LT(d, 2.6e7L);
        // The satellite stands where it was at eph - d/c.
        mjd te = eph;
        te += -d / C;
        xyzt pe, ve;
        g.CalcSatPosition(slot, te, eph, pe, ve, 0);
        // 1 mm: the light-time iteration closes to 1e-5 m, while a missed
        // light time (70 ms at 3.9 km/s) puts the satellite some 270 m off.
        EXPECT_NEAR_LD(Dist(ps, {pe.x, pe.y, pe.z}), 0.0L, 1e-3L);
        gnssobs P(d);
        xyzt pp, vp;
        const long double dp = g.CalcSatPosition(slot, eph, eph, rec, pp, vp, P, 0);
        EXPECT_NEAR_LD(dp, d, LightFormTol_m) << slot;
    }
}

// --- broken files ------------------------------------------------------------

TEST(GLNbEph, RecordEpochOffWholeMinutesIsWarnedAndKept)
{
    std::string text = ReadFile(kNav);
    const std::size_t p = text.find(" 1 20  6 24 23 15  0.0");
    ASSERT_NE(p, std::string::npos);
    text.replace(p, 22, " 1 20  6 24 23 15 30.0");
    GLNbEph g;
    const std::string path = WriteTemp("seconds.20g", text);
    g.SetFile(path.c_str());
    std::stringstream err;
    std::streambuf* old = std::cerr.rdbuf(err.rdbuf());
    g.ReadFile();
    std::cerr.rdbuf(old);
    EXPECT_NE(err.str().find("GLONASS EPHEMERIS DATA: SATELLITE R01 EPOCH SECONDS  30.0 "
                             "[NOT FULL MINUTES]"),
              std::string::npos);
    EXPECT_EQ(g.GetNSat(), 510);
    // 1e-9 s: round-off of a day-plus-second epoch difference.
    EXPECT_NEAR_LD(g.GetMJD(0) - mjd(Jun25 - 1, 0.0L), 83700.0L + 30.0L + GpsUtc_s, 1e-9L);
}

TEST(GLNbEphDeath, MissingCutAndUnlistedStop)
{
    EXPECT_EXIT(
        {
            GLNbEph g;
            g.SetFile("no-such-file.20g");
            std::cout.rdbuf(std::cerr.rdbuf());
            g.ReadFile();
        },
        ::testing::ExitedWithCode(1),
        "\\*\\*\\*\\* GLNbEph: Error -> GLONASS NAVIGATION FILE CAN NOT BE OPENED! \\*\\*\\*\\*");
    const std::string noEnd = WriteTemp("noend.20g", orvotest::FirstLines(kNav, 4));
    EXPECT_EXIT(
        {
            GLNbEph g;
            g.SetFile(noEnd.c_str());
            std::cout.rdbuf(std::cerr.rdbuf());
            g.ReadFile();
        },
        ::testing::ExitedWithCode(1), "GLNbEph: Error -> NO END OF HEADER");
    // Cut in the middle of the third record's second line.
    const std::string cut = WriteTemp("cut.20g", orvotest::FirstLines(kNav, 14) + "    1.3720");
    EXPECT_EXIT(
        {
            GLNbEph g;
            g.SetFile(cut.c_str());
            std::cout.rdbuf(std::cerr.rdbuf());
            g.ReadFile();
        },
        ::testing::ExitedWithCode(1), "GLNbEph: Error -> RECORD 3: FILE ENDS INSIDE THE RECORD!");
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            mjd t(Jun25, 0.0L);
            Nav().GetDataIndex(22, t);
        },
        ::testing::ExitedWithCode(1),
        "GLNbEph: Error -> SAT: R22 IS NOT LISTED IN GLONASS NAVIGATION FILE!!!");
}

}  // namespace
