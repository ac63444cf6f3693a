#include "preprocessing/ApplyCorrections.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "driver/ReadFiles.h"
#include "driver/SetFiles.h"
#include "observations/GLONASSc.h"
#include "preprocessing/GetReceiverProperties.h"
#include "preprocessing/StagingSupport.h"
#include "numerics/NearLD.h"

using stagingtest::Capture;
using stagingtest::Context;
using stagingtest::CutObs;
using stagingtest::SetName;

namespace {

// ---------------------------------------------------------------------------
// An independent geometry: SP3 nodes read here, a quadratic through three
// 15-min nodes, the light time with Earth rotation, and a plain ECEF -> ENU
// rotation on GRS80 at the reference marker of the data set.

using V3 = std::array<long double, 3>;

constexpr long double C = 299792458.0L;             // m/s
constexpr long double OmegaE = 7.2921151467e-5L;    // rad/s, IERS
constexpr long double TwoGMc2 = 2.0L * 3.986004418e14L / (C * C);  // m
constexpr long double Pi = 3.14159265358979323846264338327950288L;
constexpr long double NodeStep_s = 900.0L;           // SP3 node spacing

// Reference marker of README.md (IGb14, 2020.4822) and the antenna height.
const V3 kRef = {3582104.7655L, 532590.1789L, 5232755.1393L};
constexpr long double kAntennaUp_m = 0.2160L;

// 1e-6 rad: the quadratic through three 15-min nodes misses the orbit by
// under 1 m at the 0.1 s offsets used here, and the program's receiver
// point (header APPROX POSITION) lies 0.8 m from the reference marker;
// 2 m at 19 000 km or more is 1e-7 rad, so a fault of a metre-level
// light-time or frame error (>= 1e-5 rad) cannot hide.
constexpr long double AngleTol_rad = 1e-6L;
// The relativistic term changes by 1e-9 m per metre of geometry: 2 m of
// geometry difference leaves it far inside 1e-7 m.
constexpr long double Rel2Tol_m = 1e-7L;

long double Norm(const V3& a) { return std::sqrt(a[0] * a[0] + a[1] * a[1] + a[2] * a[2]); }
V3 Sub(const V3& a, const V3& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
long double Dot(const V3& a, const V3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

struct LocalFrame {
    V3 e, n, u;
};

// Geodetic latitude by fixed-point iteration on GRS80, then the ENU axes.
LocalFrame Frame(const V3& p)
{
    const long double a = 6378137.0L, f = 1.0L / 298.257222101L, e2 = f * (2.0L - f);
    const long double lon = std::atan2(p[1], p[0]);
    const long double rho = std::hypot(p[0], p[1]);
    long double lat = std::atan2(p[2], rho * (1.0L - e2));
    for (int i = 0; i < 10; ++i) {
        const long double N = a / std::sqrt(1.0L - e2 * std::sin(lat) * std::sin(lat));
        lat = std::atan2(p[2] + e2 * N * std::sin(lat), rho);
    }
    const long double sf = std::sin(lat), cf = std::cos(lat), sl = std::sin(lon),
                      cl = std::cos(lon);
    return {{-sl, cl, 0.0L}, {-sf * cl, -sf * sl, cf}, {cf * cl, cf * sl, sf}};
}

V3 AntennaPoint(const V3& marker)
{
    const LocalFrame fr = Frame(marker);
    return {marker[0] + kAntennaUp_m * fr.u[0], marker[1] + kAntennaUp_m * fr.u[1],
            marker[2] + kAntennaUp_m * fr.u[2]};
}

// Positions (m) of all satellites at the SP3 epoch hh:mm of 2020-06-25.
std::map<std::string, V3> Sp3Epoch(int hh, int mm)
{
    std::ifstream in(stagingtest::Sp3());
    std::string line;
    char want[40];
    std::snprintf(want, sizeof want, "*  2020  6 25 %2d %2d  0.00000000", hh, mm);
    bool inEpoch = false;
    std::map<std::string, V3> out;
    while (std::getline(in, line)) {
        if (!line.empty() && line[0] == '*') {
            if (inEpoch) break;
            inEpoch = line.compare(0, std::strlen(want), want) == 0;
            continue;
        }
        if (inEpoch && line.size() > 46 && line[0] == 'P') {
            V3 p;
            for (int c = 0; c < 3; ++c) p[c] = 1000.0L * std::strtold(line.substr(4 + 14 * c, 14).c_str(), nullptr);
            out[line.substr(1, 3)] = p;
        }
    }
    return out;
}

// The satellite list of the SP3 header.
std::set<std::string> Sp3Satellites()
{
    std::ifstream in(stagingtest::Sp3());
    std::string line;
    std::set<std::string> out;
    while (std::getline(in, line) && line.compare(0, 2, "++") != 0)
        if (line.compare(0, 2, "+ ") == 0)
            for (size_t p = 9; p + 3 <= line.size() && p < 60; p += 3)
                if (line[p] != ' ' && line[p] != '0') out.insert(line.substr(p, 3));
    return out;
}

struct Direction {
    long double elev, azim, rel2;
};

// Elevation, azimuth and relativistic term of satellite sat seen from the
// antenna point rec at the SP3 node hh:mm, shifted by the receiver clock
// rcv_s: transmission at node - rcv_s - light time.
Direction Expected(const std::string& sat, int hh, int mm, const V3& rec, long double rcv_s = 0.0L)
{
    const int before = hh * 60 + mm - 15, after = hh * 60 + mm + 15;
    const V3 pm = Sp3Epoch(before / 60, before % 60).at(sat);
    const V3 p0 = Sp3Epoch(hh, mm).at(sat);
    const V3 pp = Sp3Epoch(after / 60, after % 60).at(sat);
    long double tau = 0.07L;
    V3 p{};
    long double rho = 0.0L;
    for (int it = 0; it < 6; ++it) {
        const long double s = -(rcv_s + tau);
        for (int c = 0; c < 3; ++c)
            p[c] = p0[c] + s * (pp[c] - pm[c]) / (2.0L * NodeStep_s)
                   + s * s * (pp[c] - 2.0L * p0[c] + pm[c]) / (2.0L * NodeStep_s * NodeStep_s);
        // The Earth turns by omega*tau while the signal travels: the range
        // is taken in the Earth-fixed frame of the reception epoch.
        const long double th = OmegaE * tau;
        const V3 xs = {p[0] * std::cos(th) + p[1] * std::sin(th),
                       -p[0] * std::sin(th) + p[1] * std::cos(th), p[2]};
        rho = Norm(Sub(xs, rec));
        tau = rho / C;
    }
    // The look angles are those of the satellite's emission position in the
    // Earth-fixed frame of its emission epoch, as the orbit reader delivers
    // it (the reception frame is turned by omega*tau, some 6e-6 rad of
    // direction, from it).
    const V3 d = Sub(p, rec);
    const LocalFrame fr = Frame(rec);
    const long double e = Dot(d, fr.e), n = Dot(d, fr.n), u = Dot(d, fr.u);
    long double az = std::atan2(e, n);
    if (az < 0) az += 2.0L * Pi;
    const long double rs = Norm(p), rr = Norm(rec);
    return {std::atan2(u, std::hypot(e, n)), az,
            TwoGMc2 * std::log((rs + rr + rho) / (rs + rr - rho))};
}

long double AngleDiff(long double a, long double b)
{
    long double d = std::fmod(a - b, 2.0L * Pi);
    if (d > Pi) d -= 2.0L * Pi;
    if (d < -Pi) d += 2.0L * Pi;
    return d;
}

std::string SatName(short prn)
{
    char s[8];
    std::snprintf(s, sizeof s, "%c%02d", prn > 200 ? 'E' : (prn > 100 ? 'R' : 'G'), prn % 100);
    return s;
}

// ---------------------------------------------------------------------------
// Staging of the real day: 31 epochs from 08:00:00 to 08:15:00, so that the
// first and last epochs fall on SP3 nodes and G04, which the orbit file does
// not hold, is in view.

constexpr long kFirst = 960;  // 08:00:00 at 30 s
constexpr long kEpochs = 31;
constexpr long kLastIx = kEpochs - 1;

// A clock file of the 08:00-08:20 window; without satellite `drop`.
std::string CutClk(const std::string& name, const std::string& drop = "")
{
    std::ifstream in(stagingtest::Clk());
    std::ostringstream out;
    std::string line;
    while (std::getline(in, line)) {
        out << line << "\n";
        if (line.find("END OF HEADER") != std::string::npos) break;
    }
    while (std::getline(in, line)) {
        if (line.size() < 30 || line.compare(0, 2, "AS") != 0) continue;
        const int minute = std::atoi(line.substr(19, 2).c_str()) * 60 + std::atoi(line.substr(22, 2).c_str());
        if (minute < 8 * 60 || minute > 8 * 60 + 20) continue;
        if (!drop.empty() && line.compare(3, 3, drop) == 0) continue;
        out << line << "\n";
    }
    return orvotest::WriteTemp(name, out.str());
}

// The orbit file with the clock of satellite sat marked missing (999999.999999)
// at every node.
std::string Sp3WithoutClock(const std::string& sat)
{
    std::ifstream in(stagingtest::Sp3());
    std::ostringstream out;
    std::string line;
    while (std::getline(in, line)) {
        if (line.size() >= 60 && line[0] == 'P' && line.compare(1, 3, sat) == 0)
            line.replace(46, 14, " 999999.999999");
        out << line << "\n";
    }
    return orvotest::WriteTemp("noclock_" + sat + ".sp3", out.str());
}

struct Options {
    std::string sp3 = stagingtest::Sp3();
    bool gal = true;
    bool clk = true;
    std::string dropClk;
    bool tropo = false;
    bool estTropo = false;
    bool tropEphFile = false;  // -oT asked for: the wet mapping is kept
    bool antipode = false;
    std::string sky;
    std::string rcvClock;
    bool quiet = true;  // swallow the report and the log
};

std::unique_ptr<Context> Stage(const Options& o)
{
    auto c = std::make_unique<Context>();
    gCPosC& g = c->gc;
    static const std::string obs = CutObs("window.20o", kFirst, kEpochs);
    SetName(g.rnxfile, obs);
    SetName(g.sp3file, o.sp3);
    g.isRnx = g.isPEph = true;
    g.isGPS = true;
    g.isGAL = o.gal;
    if (o.clk) {
        SetName(g.pclkfile, CutClk("window" + o.dropClk + ".clk", o.dropClk));
        g.isPclk = true;
    }
    if (o.tropo) {
        g.isTrpModel = true;
        g.TrpModel = 0;    // Saastamoinen
        g.TrpMappFun = 0;  // Niell
        g.ifEstTropo = g.ifEstTropoGrad = o.estTropo;
        g.isOutTropEphFile = o.tropEphFile;
    }
    if (!o.rcvClock.empty()) {
        SetName(g.clkFName, o.rcvClock);
        g.isClkErr = true;
    }
    if (!o.sky.empty()) {
        SetName(g.skyplotfile, o.sky);
        g.isSkyPlot = true;
    }
    std::unique_ptr<Capture> out, err;
    if (o.quiet) {
        out = std::make_unique<Capture>(std::cout);
        err = std::make_unique<Capture>(std::cerr);
    }
    SetFiles(g);
    ReadFiles(g);
    if (o.antipode) {
        c->rnxh.X0.x = -c->rnxh.X0.x;
        c->rnxh.X0.y = -c->rnxh.X0.y;
        c->rnxh.X0.z = -c->rnxh.X0.z;
    }
    GetReceiverProperties(g);
    ApplyCorrections(g);
    return c;
}

// Record indices of the epoch ix of the window.
std::vector<long> Records(const RINEXData& d, long ix)
{
    long k = 0;
    for (long i = 0; i < ix; ++i) k += d.nsat(i);
    std::vector<long> out;
    for (long j = 0; j < d.nsat(ix); ++j) out.push_back(k + j);
    return out;
}

Options DropClock(const std::string& sat)
{
    Options o;
    o.dropClk = sat;
    return o;
}

class CorrectionsOnRealDay : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ctx_ = Stage(Options()).release(); }
    static void TearDownTestSuite() { delete ctx_; }
    static Context* ctx_;
};
Context* CorrectionsOnRealDay::ctx_ = nullptr;

TEST_F(CorrectionsOnRealDay, ArraysCoverEveryRecordAndEpoch)
{
    const gCPosC& g = ctx_->gc;
    const long n = ctx_->rnxd.GetNObs();
    for (const matrix<long double>* m : {&g.ELV, &g.AZM, &g.WGHT, &g.TROP, &g.MFTROP, &g.REL2,
                                         &g.SAT_DIST, &g.SETIDE, &g.PTIDE, &g.OTIDE, &g.ION})
        EXPECT_EQ(m->NRow(), n);
    EXPECT_EQ(g.MFGRAD.NRow(), n);
    EXPECT_EQ(g.MFGRAD.NCol(), 2);
    EXPECT_EQ(g.SAT_POS.NRow(), n);
    EXPECT_EQ(g.OKSAT.NRow(), n);
    EXPECT_EQ(g.posSunUnit.NRow(), kEpochs);
    EXPECT_EQ(g.SunMag.NRow(), kEpochs);
}

TEST_F(CorrectionsOnRealDay, GeometryAgreesWithIndependentComputationAtOrbitNodes)
{
    const gCPosC& g = ctx_->gc;
    const V3 rec = AntennaPoint(kRef);
    int checked = 0;
    for (long ix : {0L, kLastIx}) {
        const int minute = 8 * 60 + (ix == 0 ? 0 : 15);
        for (long k : Records(ctx_->rnxd, ix)) {
            const short prn = ctx_->rnxd.sat(k);
            if (prn > 100 && prn < 200) continue;  // GLONASS is off
            if (!g.OKSAT(k)) continue;
            const Direction x = Expected(SatName(prn), minute / 60, minute % 60, rec);
            EXPECT_NEAR_LD(g.ELV(k), x.elev, AngleTol_rad) << SatName(prn);
            if (x.elev < 80.0L * Pi / 180.0L) {  // azimuth is ill-conditioned near the zenith
                EXPECT_NEAR_LD(AngleDiff(g.AZM(k), x.azim), 0.0L, AngleTol_rad) << SatName(prn);
            }
            EXPECT_NEAR_LD(g.REL2(k), x.rel2, Rel2Tol_m) << SatName(prn);
            // Shapiro path term of a GNSS orbit: 1.2 cm at the zenith to
            // under 2.5 cm at the horizon (ln of 4.2 to 11 times 8.87 mm).
            EXPECT_GT(g.REL2(k), 0.010L);
            EXPECT_LT(g.REL2(k), 0.025L);
            // Weights by elevation (the default mode).
            EXPECT_NEAR_LD(g.WGHT(k), std::sin(x.elev) * std::sin(x.elev), 2.0L * AngleTol_rad);
            // GPS and Galileo orbit radii: 26 560 and 29 600 km.
            EXPECT_GT(g.SAT_DIST(k), 2.6e7L);
            EXPECT_LT(g.SAT_DIST(k), 3.0e7L);
            // 1e-6 m: the same norm of the same vector; round-off at 3e7 m is 1e-11 m.
            EXPECT_NEAR_LD(g.SAT_DIST(k), g.SAT_POS(k).GetLength(), 1e-6L);
            ++checked;
        }
    }
    // About 20 GPS and Galileo satellites are in view at each of the two epochs.
    EXPECT_GT(checked, 30);
}

TEST_F(CorrectionsOnRealDay, SatelliteMissingFromOrbitsKeepsStartValues)
{
    const gCPosC& g = ctx_->gc;
    const std::set<std::string> inSp3 = Sp3Satellites();
    long missing = 0, present = 0;
    for (long k = 0; k < ctx_->rnxd.GetNObs(); ++k) {
        const short prn = ctx_->rnxd.sat(k);
        if (prn > 100 && prn < 200) continue;
        if (inSp3.count(SatName(prn)) == 0) {
            ++missing;
            EXPECT_FALSE(g.OKSAT(k));
            EXPECT_EQ(g.ELV(k), 0.0L);
            EXPECT_EQ(g.AZM(k), 0.0L);
            EXPECT_EQ(g.REL2(k), 0.0L);
            EXPECT_EQ(g.SAT_DIST(k), 0.0L);
            EXPECT_EQ(g.WGHT(k), 1.0L);
        } else {
            ++present;
            EXPECT_TRUE(g.OKSAT(k)) << SatName(prn);
        }
    }
    // G04 is observed in the window but not in the orbit file.
    EXPECT_EQ(missing, kEpochs);
    EXPECT_GT(present, 0);
}

TEST_F(CorrectionsOnRealDay, SwitchedOffSystemAndNoModelsKeepStartValues)
{
    const gCPosC& g = ctx_->gc;
    long glonass = 0;
    for (long k = 0; k < ctx_->rnxd.GetNObs(); ++k) {
        EXPECT_EQ(g.TROP(k), 0.0L);  // no troposphere model chosen
        EXPECT_EQ(g.MFTROP(k), 0.0L);
        EXPECT_EQ(g.SETIDE(k), 0.0L);
        EXPECT_EQ(g.ION(k), 0.0L);
        const short prn = ctx_->rnxd.sat(k);
        if (prn > 100 && prn < 200) {
            ++glonass;
            EXPECT_FALSE(g.OKSAT(k));
            EXPECT_EQ(g.ELV(k), 0.0L);
            EXPECT_EQ(g.WGHT(k), 1.0L);
        }
    }
    EXPECT_GT(glonass, 0);
}

TEST(Corrections, SatelliteIsOkWithAClockFromEitherProduct)
{
    // G12 without clock in the orbit file: only the clock file can give it.
    const std::string sp3 = Sp3WithoutClock("G12");
    long seen = 0;
    for (const bool inClk : {true, false}) {
        Options o;
        o.sp3 = sp3;
        o.dropClk = inClk ? "" : "G12";
        auto c = Stage(o);
        for (long k = 0; k < c->rnxd.GetNObs(); ++k) {
            if (c->rnxd.sat(k) != 12) continue;
            ++seen;
            EXPECT_EQ(c->gc.OKSAT(k), inClk);
            if (!inClk) {
                EXPECT_EQ(c->gc.ELV(k), 0.0L);
                EXPECT_EQ(c->gc.REL2(k), 0.0L);
            } else {
                EXPECT_GT(c->gc.ELV(k), 0.0L);
            }
        }
    }
    EXPECT_EQ(seen, 2 * kEpochs);  // G12 is tracked through the window

    // Missing from the clock file only: the orbit file's clock suffices.
    auto c = Stage(DropClock("G12"));
    for (long k = 0; k < c->rnxd.GetNObs(); ++k)
        if (c->rnxd.sat(k) == 12) {
            EXPECT_TRUE(c->gc.OKSAT(k));
        }
}

TEST(Corrections, SatellitesBelowTheHorizonGetNegativeElevations)
{
    // Seen from the antipode of the site, every tracked satellite is below
    // the horizon: the stage stores the geometry as it is, without a cut.
    Options o;
    o.antipode = true;
    o.clk = false;  // the orbit file's own clocks suffice
    auto c = Stage(o);
    const V3 rec = AntennaPoint({-kRef[0], -kRef[1], -kRef[2]});
    int checked = 0;
    for (long k : Records(c->rnxd, 0)) {
        const short prn = c->rnxd.sat(k);
        if ((prn > 100 && prn < 200) || !c->gc.OKSAT(k)) continue;
        const Direction x = Expected(SatName(prn), 8, 0, rec);
        EXPECT_LT(c->gc.ELV(k), 0.0L);
        EXPECT_NEAR_LD(c->gc.ELV(k), x.elev, AngleTol_rad) << SatName(prn);
        EXPECT_NEAR_LD(AngleDiff(c->gc.AZM(k), x.azim), 0.0L, AngleTol_rad) << SatName(prn);
        EXPECT_NEAR_LD(c->gc.REL2(k), x.rel2, Rel2Tol_m);
        ++checked;
    }
    EXPECT_GT(checked, 10);
}

TEST(Corrections, ReceiverClockMovesTheModelEpoch)
{
    // 0.5 s of receiver clock: the satellites are taken half a second
    // earlier, about 2 km along the orbit, some 1e-4 rad in direction.
    std::ostringstream os;
    os << "CLOCK ERROR FILE: ESBC00DNK / 10118M001\nCLOCK REF. SYS. : G\n";
    for (long i = 0; i < kEpochs; ++i) os << "59025 " << 28800 + 30 * i << "  500000.0\n";
    Options o;
    o.rcvClock = orvotest::WriteTemp("half_second.clk", os.str());
    o.clk = false;
    auto c = Stage(o);
    ASSERT_TRUE(c->gc.isClkErr);
    const V3 rec = AntennaPoint(kRef);
    int checked = 0;
    for (long k : Records(c->rnxd, 0)) {
        const short prn = c->rnxd.sat(k);
        if ((prn > 100 && prn < 200) || !c->gc.OKSAT(k)) continue;
        // Half a second off the node the quadratic errs by a few metres.
        EXPECT_NEAR_LD(c->gc.ELV(k), Expected(SatName(prn), 8, 0, rec, 0.5L).elev, AngleTol_rad);
        ++checked;
    }
    EXPECT_GT(checked, 10);
}

TEST(Corrections, TroposphereTotalOrDryDependingOnEstimation)
{
    Options o;
    o.tropo = true;
    o.clk = false;
    auto total = Stage(o);
    o.estTropo = true;
    auto dry = Stage(o);
    int checked = 0;
    for (long k = 0; k < total->rnxd.GetNObs(); ++k) {
        if (!total->gc.OKSAT(k) || total->gc.ELV(k) < 15.0L * Pi / 180.0L) continue;
        const long double e = total->gc.ELV(k), s = std::sin(e);
        // A site near sea level: zenith total delay 2.3-2.6 m, hydrostatic
        // 2.25-2.35 m; above 15 degrees the mapping stays within 3% of
        // 1/sin(E).
        EXPECT_GT(total->gc.TROP(k) * s, 2.2L);
        EXPECT_LT(total->gc.TROP(k) * s, 2.7L);
        EXPECT_GT(dry->gc.TROP(k) * s, 2.1L);
        EXPECT_LT(dry->gc.TROP(k) * s, 2.45L);
        EXPECT_GT(total->gc.TROP(k), dry->gc.TROP(k));  // the wet part is positive
        EXPECT_EQ(total->gc.MFTROP(k), 0.0L);            // not estimated, not asked for
        EXPECT_NEAR_LD(dry->gc.MFTROP(k) * s, 1.0L, 0.03L);
        // Gradient mapping of Chen & Herring (1997) from the elevation and
        // azimuth of the same record.
        const long double mg = 1.0L / (std::tan(e) * s + 0.0032L);
        // 1e-9: the same closed form from the same angles; round-off of a factor
        // near 1 to 10 is far smaller, a swapped cos/sin or a lost 0.0032 far larger.
        EXPECT_NEAR_LD(dry->gc.MFGRAD(k, 0), mg * std::cos(dry->gc.AZM(k)), 1e-9L);
        EXPECT_NEAR_LD(dry->gc.MFGRAD(k, 1), mg * std::sin(dry->gc.AZM(k)), 1e-9L);
        EXPECT_EQ(total->gc.MFGRAD(k, 0), 0.0L);
        ++checked;
    }
    EXPECT_GT(checked, 100);
}

TEST(Corrections, EpochTroposphereFileKeepsTheWetMappingWithoutEstimation)
{
    // Asking for the epoch troposphere file fills MFTROP even when the wet
    // delay is modelled rather than estimated; the delay itself stays the
    // total one. The wet mapping is that of the same model at the same
    // epoch and elevation, so it equals the value of an estimating run.
    Options o;
    o.tropo = true;
    o.clk = false;
    o.tropEphFile = true;
    auto kept = Stage(o);
    o.tropEphFile = false;
    auto total = Stage(o);
    o.estTropo = true;
    auto dry = Stage(o);
    int checked = 0;
    for (long k = 0; k < kept->rnxd.GetNObs(); ++k) {
        if (!kept->gc.OKSAT(k) || kept->gc.ELV(k) < 15.0L * Pi / 180.0L) continue;
        const long double s = std::sin(kept->gc.ELV(k));
        EXPECT_NEAR_LD(kept->gc.MFTROP(k) * s, 1.0L, 0.03L);  // 1/sin(E) within 3% above 15 deg
        EXPECT_NEAR_LD(kept->gc.MFTROP(k), dry->gc.MFTROP(k), 1e-15L);  // same computation
        EXPECT_NEAR_LD(kept->gc.TROP(k), total->gc.TROP(k), 1e-15L);    // still dry + wet
        EXPECT_GT(kept->gc.TROP(k), dry->gc.TROP(k));
        EXPECT_EQ(kept->gc.MFGRAD(k, 0), 0.0L);  // gradients only when estimated
        ++checked;
    }
    EXPECT_GT(checked, 100);
}

TEST(Corrections, SkyPlotListsEveryRecordWithAnOrbit)
{
    Options o;
    o.clk = false;
    o.sky = orvotest::TempDir() + "/sky.txt";
    auto c = Stage(o);
    std::ifstream in(o.sky);
    std::string line;
    long k = 0, lines = 0;
    while (std::getline(in, line)) {
        while (k < c->rnxd.GetNObs() && !c->gc.OKSAT(k)) ++k;
        ASSERT_LT(k, c->rnxd.GetNObs());
        std::istringstream is(line);
        long day;
        long double sec, el, az;
        int prn;
        ASSERT_TRUE(is >> day >> sec >> prn >> el >> az) << line;
        EXPECT_EQ(prn, c->rnxd.sat(k));
        // Two decimals of a degree are printed.
        EXPECT_NEAR_LD(el, c->gc.ELV(k) * 180.0L / Pi, 0.0051L);
        EXPECT_NEAR_LD(az, c->gc.AZM(k) * 180.0L / Pi, 0.0051L);
        ++k;
        ++lines;
    }
    long ok = 0;
    for (long i = 0; i < c->rnxd.GetNObs(); ++i) ok += c->gc.OKSAT(i) ? 1 : 0;
    EXPECT_EQ(lines, ok);
}

TEST(GlonassFrequency, MissingChannelSourceGivesChannelZeroWithWarning)
{
    Context c;
    SetName(c.gc.rnxfile, CutObs("glonass.20o", 0, 1));
    c.gc.isRnx = true;
    c.gc.isGPS = c.gc.isGLN = true;
    SetFiles(c.gc);
    ReadFiles(c.gc);
    // Flagged after staging: a channel source that lists no satellite.
    c.gc.isGLNfrch = true;
    std::string err, out;
    {
        Capture e(std::cerr);
        Capture o(std::cout);
        SetGlonassFrequency(c.gc);
        err = e.Text();
        out = o.Text();
    }
    int nGlonass = 0;
    for (long i = 0; i < c.rnxd.GetNSat(); ++i) {
        const short prn = c.rnxd.GetSat(i);
        if (prn <= 100 || prn > 199) continue;
        ++nGlonass;
        char w[120];
        std::snprintf(w, sizeof w, "GLONASS SATELLITE %3d NOT LISTED IN GLONASS FREQUENCY CHANNEL "
                                   "FILE - USING FREQ. CHANNEL k = 0!", prn);
        EXPECT_NE(err.find(w), std::string::npos) << w;
        // Channel 0: G1 1602 MHz, G2 1246 MHz (GLONASS ICD 5.1).
        EXPECT_EQ(GLONASSc::freq(prn - 101, 0), 1602.0e6L);
        EXPECT_EQ(GLONASSc::freq(prn - 101, 1), 1246.0e6L);
        EXPECT_NE(out.find("    Satellite:  R" + SatName(prn).substr(1)
                           + "    f. channel:  NOT FOUND -> SETTING TO 0.0"),
                  std::string::npos);
    }
    EXPECT_EQ(nGlonass, 10);  // R01 R02 R08 ... R19 of the first epoch line
}

TEST(GlonassFrequency, NothingWithoutGlonassOrWithoutASource)
{
    Context c;
    c.gc.isGLN = false;
    c.gc.isGLNfrch = true;
    std::string out;
    {
        Capture o(std::cout);
        SetGlonassFrequency(c.gc);
        out = o.Text();
    }
    EXPECT_TRUE(out.empty());
    c.gc.isGLN = true;
    c.gc.isGLNfrch = false;
    {
        Capture o(std::cout);
        SetGlonassFrequency(c.gc);
        out = o.Text();
    }
    EXPECT_TRUE(out.empty());
}

TEST(CorrectionsDeath, UnwritableSkyPlotFileStopsBeforeModelling)
{
    EXPECT_EXIT(
        {
            Options o;
            o.clk = false;
            o.sky = orvotest::TempDir() + "/no_such_dir/sky.txt";
            o.quiet = false;
            Stage(o);
        },
        ::testing::ExitedWithCode(1), "\\*\\*\\*\\* Orvo: Error -> SKY PLOT FILE CAN NOT BE OPENED!");
}

}  // namespace
