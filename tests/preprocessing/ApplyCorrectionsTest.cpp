// The correction stage on the real day, 31 epochs from 08:00:00 to 08:15:00,
// so that the first and last epochs fall on SP3 nodes and G04, which the
// orbit file does not hold, is in view. Geometry is checked against the
// independent computation of StagingSupport.h.
#include "preprocessing/StagingSupport.h"
#include "numerics/Trigonometry.h"

using namespace stagingtest;

namespace {

constexpr long kFirst = 960;  // 08:00:00 at 30 s
constexpr long kEpochs = 31;

// 1e-6 rad: the quadratic through three 15-min nodes misses the orbit by
// under 1 m at the 0.1 s offsets used here (a few metres at 0.5 s), and the
// program's receiver point (header APPROX POSITION) lies 0.8 m from the
// reference marker; 2 m at 19 000 km or more is 1e-7 rad, so a metre-level
// light-time or frame error (>= 1e-5 rad) cannot hide.
constexpr long double AngleTol_rad = 1e-6L;
// The relativistic term changes by 1e-9 m per metre of geometry: 2 m of
// geometry difference leaves it far inside 1e-7 m.
constexpr long double Rel2Tol_m = 1e-7L;
constexpr long double TwoGMc2 = 2.0L * 3.986004418e14L / (C * C);  // m

Options Window(const std::string& dropClk = "")
{
    Options o;
    o.obs = CutObs("window.20o", kFirst, kEpochs);
    o.clk = CutClk("window" + dropClk + ".clk", 8 * 60, 8 * 60 + 20, dropClk);
    return o;
}

long double AngleDiff(long double a, long double b) { return std::remainder(a - b, 2.0L * Pi); }

TEST(Corrections, GeometryAgreesWithIndependentComputationAtOrbitNodesAndIsPlotted)
{
    // 0.5 s of receiver clock takes the satellites half a second earlier,
    // about 2 km along the orbit, some 1e-4 rad in direction. Seen from the
    // antipode every satellite is below the horizon: the stage stores the
    // geometry as it is, without a cut.
    const struct {
        bool antipode;
        long double rcv_s;
    } rows[] = {{false, 0.0L}, {true, 0.0L}, {false, 0.5L}};
    std::ostringstream rcv;
    rcv << "CLOCK ERROR FILE: ESBC00DNK / 10118M001\nCLOCK REF. SYS. : G\n";
    for (long i = 0; i < kEpochs; ++i) rcv << "59025 " << 28800 + 30 * i << "  500000.0\n";
    for (const auto& r : rows) {
        Options o = Window();
        o.sky = r.antipode || r.rcv_s > 0 ? "" : orvotest::TempDir() + "/sky.txt";
        if (r.antipode || r.rcv_s > 0) o.clk = "";  // the orbit file's own clocks suffice
        if (r.rcv_s > 0) o.rcvClock = orvotest::WriteTemp("half_second.clk", rcv.str());
        if (r.antipode)
            o.beforeProps = [](Context& c) { c.rnxh.X0 = xyz(-c.rnxh.X0.x, -c.rnxh.X0.y, -c.rnxh.X0.z); };
        Context c;
        Stage(c, o);
        const gCPosC& g = c.gc;
        const long n = c.rnxd.GetNObs();
        for (long rows : {g.ELV.NRow(), g.SINELV.NRow(), g.AZM.NRow(), g.WGHT.NRow(), g.TROP.NRow(), g.MFTROP.NRow(), g.REL2.NRow(),
                          g.SETIDE.NRow(), g.isPTide ? g.PTIDE.NRow() : n,
                          g.isOTide ? g.OTIDE.NRow() : n, g.ION.NRow(),
                          g.savedSat.NRow(), g.OKSAT.NRow(), g.MFGRAD.NRow(), g.MFGRAD.NCol() * n / 2})
            EXPECT_EQ(rows, n);
        EXPECT_EQ(g.posSunUnit.NRow() + g.SunMag.NRow(), 2 * kEpochs);
        // The stages that weight by the sine read the one kept here.
        for (long k = 0; k < n; ++k) ASSERT_EQ(g.SinElevation(k), trig::Sin(g.ELV(k))) << k;
        const V3 rec = AntennaPoint(r.antipode ? V3{-kRef[0], -kRef[1], -kRef[2]} : kRef);
        int checked = 0;
        for (long ix : {0L, kEpochs - 1})
            for (long k : Records(c.rnxd, ix)) {
                const short prn = c.rnxd.sat(k);
                if (IsGlonass(prn) || !g.OKSAT(k)) continue;
                const Emission e = Emit(SatName(prn), 8 * 60 + (ix == 0 ? 0 : 15), rec, r.rcv_s);
                ASSERT_TRUE(e.ok);
                // Look angles of the emission position in the Earth-fixed frame
                // of its emission epoch, as the orbit reader delivers it.
                const std::array<V3, 3> f = Enu(rec);
                const V3 d = Sub(e.p, rec);
                const long double east = Dot(d, f[0]), north = Dot(d, f[1]);
                const long double elev = std::atan2(Dot(d, f[2]), std::hypot(east, north));
                const long double rs = Norm(e.p), rr = Norm(rec);
                EXPECT_NEAR_LD(g.ELV(k), elev, AngleTol_rad) << SatName(prn);
                // The azimuth is ill-conditioned near the zenith.
                EXPECT_NEAR_LD(std::fabs(elev) < 80.0L * Pi / 180.0L ? AngleDiff(g.AZM(k), std::atan2(east, north)) : 0.0L,
                               0.0L, AngleTol_rad);
                EXPECT_NEAR_LD(g.REL2(k), TwoGMc2 * std::log((rs + rr + e.rho) / (rs + rr - e.rho)), Rel2Tol_m);
                // Below the horizon from the antipode; elsewhere the Shapiro term of a
                // GNSS orbit: 1.2 cm at the zenith to under 2.5 cm at the horizon
                // (ln of 4.2 to 11 times 8.87 mm).
                EXPECT_TRUE(r.antipode ? g.ELV(k) < 0.0L : g.REL2(k) > 0.010L && g.REL2(k) < 0.025L) << SatName(prn);
                // Weights by elevation (the default mode).
                EXPECT_NEAR_LD(g.WGHT(k), std::sin(elev) * std::sin(elev), 2.0L * AngleTol_rad);
                // GPS and Galileo orbit radii: 26 560 and 29 600 km.
                const long double radius = g.SatellitePosition(k).GetLength();
                EXPECT_TRUE(radius > 2.6e7L && radius < 3.0e7L);
                ++checked;
            }
        // About 20 GPS and Galileo satellites are in view at each of the two epochs.
        EXPECT_GT(checked, 30);
        if (o.sky.empty()) continue;
        // The sky plot lists every record with an orbit, angles in degrees
        // with two decimals.
        std::ifstream in(o.sky);
        long k = 0, lines = 0, ok = 0;
        for (std::string line; std::getline(in, line); ++k, ++lines) {
            while (k < n && !g.OKSAT(k)) ++k;
            ASSERT_LT(k, n);
            std::istringstream is(line);
            long day;
            long double sec, el, az;
            int prn;
            ASSERT_TRUE(is >> day >> sec >> prn >> el >> az) << line;
            EXPECT_EQ(prn, c.rnxd.sat(k));
            EXPECT_NEAR_LD(el, g.ELV(k) * 180.0L / Pi, 0.0051L);
            EXPECT_NEAR_LD(az, g.AZM(k) * 180.0L / Pi, 0.0051L);
        }
        for (long i = 0; i < n; ++i) ok += g.OKSAT(i) ? 1 : 0;
        EXPECT_EQ(lines, ok);
    }
}

TEST(Corrections, RecordWithoutOrbitClockOrSystemKeepsStartValues)
{
    // G12 without clock in the orbit file: only the clock file can give it;
    // missing from the clock file only, the orbit file's clock stands in.
    // A clock file from 07:30 that lacks G12 only around the window (07:55
    // to 08:25) lacks it where the epochs look, whatever it has before.
    // G04 is observed in the window but not in the orbit file. GLONASS is
    // off, and no troposphere model is chosen.
    const struct {
        short sat;
        bool noSp3Clock, noClkFile, ok, gapAroundWindow;
    } rows[] = {{12, true, false, true, false}, {12, true, true, false, false}, {12, false, true, true, false},
                {4, false, false, false, false}, {12, true, false, false, true}};
    for (const auto& r : rows) {
        Options o = Window(r.noClkFile ? "G12" : "");
        if (r.gapAroundWindow) {
            bool body = false;
            o.clk = EditFile(Clk(), "gap.clk", [&](std::string& l) {
                if (!body) return body = Has(l, "END OF HEADER"), true;
                if (l.size() < 30 || l.compare(0, 2, "AS") != 0) return false;
                const int minute = std::atoi(l.substr(19, 2).c_str()) * 60 + std::atoi(l.substr(22, 2).c_str());
                const bool g12 = l.compare(3, 3, "G12") == 0;
                return minute >= 450 && minute <= 510 && !(g12 && minute >= 475 && minute <= 505);
            });
        }
        if (r.noSp3Clock)  // the clock of G12 marked missing at every node
            o.sp3 = EditFile(Sp3(), "noclock.sp3", [](std::string& l) {
                if (l.size() >= 60 && l.compare(0, 4, "PG12") == 0) l.replace(46, 14, " 999999.999999");
                return true;
            });
        Context c;
        Stage(c, o);
        const gCPosC& g = c.gc;
        long seen = 0, glonass = 0;
        for (long k = 0; k < c.rnxd.GetNObs(); ++k) {
            EXPECT_EQ(g.TROP(k) + g.MFTROP(k) + g.ION(k), 0.0L);
            const short prn = c.rnxd.sat(k);
            const bool off = IsGlonass(prn);
            glonass += off;
            if (prn != r.sat && !off) continue;
            seen += !off;
            EXPECT_EQ(g.OKSAT(k), r.ok && !off) << prn;
            if (r.ok && !off) {
                EXPECT_GT(g.ELV(k), 0.0L);
                continue;
            }
            for (long double v : {g.ELV(k), g.SINELV(k), g.AZM(k), g.REL2(k), g.WGHT(k) - 1.0L, g.SETIDE(k)}) EXPECT_EQ(v, 0.0L) << prn;
        }
        EXPECT_EQ(seen, kEpochs);  // tracked through the window
        EXPECT_GT(glonass, 0);
    }
}

TEST(Corrections, TidesEnterAlongTheLineOfSightWithOpposedSenses)
{
    // The solid tide is projected on the line from satellite to receiver,
    // pole and ocean tide on the line to the satellite: a site lifted by 1 m
    // under a satellite in the zenith gives SETIDE -1 m, PTIDE and OTIDE
    // +1 m. The station's own BLQ block is ZIMM's renamed; the pole is
    // 0.2", 0.4" (version 1 units of 1e-5").
    Options o = Window();
    o.blq = EditFile(orvotest::Data("zimm-2015-235/zimm.blq"), "esbc.blq", [](std::string& l) {
        if (l.rfind("  ZIMM", 0) == 0) l = "  ESBC00DNK";
        return true;
    });
    o.erp = orvotest::WriteTemp("pole.erp", "VERSION 1\n  MJD  X  Y  UT1-UTC\n  units\n59024 20000 40000 0\n59026 20000 40000 0\n");
    Context c;
    Stage(c, o);
    gCPosC& g = c.gc;
    ASSERT_TRUE(g.isSolidTide && g.isOTide && g.isPTide);
    LuniSolarPosition lsp;
    SolidEarthTide set;
    set.SetStaPosition(g.RecPos0.GetUnitVector(1.0L), g.RecPos0.GetLength());
    const V3 rec{g.RecPosFC.x, g.RecPosFC.y, g.RecPosFC.z};
    const std::array<V3, 3> enu = Enu(rec);
    long checked = 0;
    for (long i = 0, k = 0; i < c.rnxd.GetNEpoch(); ++i) {
        mjd t = c.rnxd.epoch(i);
        xyz sun, moon, dSet;
        long double rs = 0.0L, rm = 0.0L;
        lsp.SunPosition(t, sun, rs);
        lsp.MoonPosition(t, moon, rm);
        set.SetSunPosition(sun, rs);
        set.SetMoonPosition(moon, rm);
        set.GetDisplacement(t, dSet);
        neu dOtl, dPole;
        g.otide.GetDisplacement(t, dOtl);
        g.ptide.SetCalcEpoch(t);
        g.ptide.SetMeanPole();
        g.ptide.GetPoleTide(t, g.RecPosFCG, dPole);
        EXPECT_GT(std::fabs(dOtl.u) + std::fabs(dPole.u), 1e-4L);  // both tides at work
        for (long j = 0; j < c.rnxd.nsat(i); ++j, ++k) {
            if (!g.OKSAT(k)) continue;
            const V3 los = Sub(V3{g.SatellitePosition(k).x, g.SatellitePosition(k).y, g.SatellitePosition(k).z}, rec);
            const long double r = Norm(los), e = Dot(los, enu[0]) / r, n = Dot(los, enu[1]) / r, u = Dot(los, enu[2]) / r;
            // The range of the light-time solution and the straight line
            // differ by the Earth's turn (under 40 m of 2e7 m): 1e-7 m here.
            EXPECT_NEAR(g.SETIDE(k), -(dSet.x * los[0] + dSet.y * los[1] + dSet.z * los[2]) / r, 1e-6L);
            EXPECT_NEAR(g.OTIDE(k), dOtl.e * e + dOtl.n * n + dOtl.u * u, 1e-9L);
            EXPECT_NEAR(g.PTIDE(k), dPole.e * e + dPole.n * n + dPole.u * u, 1e-9L);
            ++checked;
        }
    }
    EXPECT_GT(checked, 20);
}

TEST(Corrections, NavigationGroupDelaysShiftTheCodesAndUnhealthyRecordsAreNotUsed)
{
    // TGD of each GPS satellite's first record (third number of its sixth
    // orbit line), read here from the file's text: C1 and P1 move by
    // -TGD c, P2 by -(f1/f2)^2 TGD c; under a centimetre in sum nothing moves.
    std::map<int, long double> tgd;
    std::ifstream in(NavG());
    bool body = false;
    for (std::string line; std::getline(in, line);) {
        if (!body) { body = Has(line, "END OF HEADER"); continue; }
        std::string orbit[7];
        for (std::string& l : orbit) std::getline(in, l);
        const int prn = std::atoi(line.substr(0, 2).c_str());
        std::string v = orbit[5].substr(41, 19);
        std::replace(v.begin(), v.end(), 'D', 'E');
        if (!tgd.count(prn)) tgd[prn] = std::strtold(v.c_str(), nullptr);
    }
    Options o = Window();
    o.gal = false;
    Context plain, shifted;
    Stage(plain, o);
    // G05 marked unhealthy in every record (health, second number of the
    // sixth orbit line): its codes still move, but it is not used.
    long line = -1, g05 = -1;
    o.gnav = EditFile(NavG(), "g05sick.20n", [&](std::string& l) {
        if (line < 0) line = Has(l, "END OF HEADER") ? 0 : -1;
        else if (line++ % 8 == 0) g05 = std::atoi(l.substr(0, 2).c_str()) == 5;
        else if (g05 == 1 && (line - 1) % 8 == 6) l.replace(22, 19, " 1.000000000000D+00");
        return true;
    });
    // Without an orbit file, GPS and GLONASS come from their navigation files.
    o.sp3 = "";
    o.nav = Nav();
    o.gln = true;
    Stage(shifted, o);
    const long double gamma = (1575.42L * 1575.42L) / (1227.6L * 1227.6L);
    long moved = 0;
    for (long k = 0; k < plain.rnxd.GetNObs(); ++k) {
        const short prn = plain.rnxd.sat(k);
        if (prn > 99) {
            EXPECT_EQ(shifted.gc.OKSAT(k), IsGlonass(prn)) << prn;  // Galileo is off
            continue;
        }
        ASSERT_TRUE(tgd.count(prn)) << prn;
        const long double d1 = -tgd[prn] * C, d2 = gamma * d1, apply = std::fabs(d1) + std::fabs(d2) < 0.01L ? 0.0L : 1.0L;
        if (!plain.rnxd.C1(k).IsNull()) {
            EXPECT_NEAR(shifted.rnxd.C1(k).obs - plain.rnxd.C1(k).obs, apply * d1, 1e-9L) << prn;
        }
        if (!plain.rnxd.P2(k).IsNull()) {
            EXPECT_NEAR(shifted.rnxd.P2(k).obs - plain.rnxd.P2(k).obs, apply * d2, 1e-9L) << prn;
        }
        moved += apply > 0.0L;
        EXPECT_EQ(shifted.gc.OKSAT(k), prn != 5) << prn;
    }
    EXPECT_GT(moved, 0);
}

TEST(Corrections, BiasFilesShiftTheCodesByTrackingType)
{
    // CODE bias files of 1 ns for every GPS satellite (G05: 0.001 ns, a sum
    // below 1 cm: nothing moves). P1-P2 shifts C1, P1 by LCion2 c DCB and P2
    // by LCion1 c DCB; P1-C1 shifts the first code of a C1/P2 receiver
    // (type 1) and both of a C1/X2 one (type 2), and nothing of a P1/P2 one.
    std::string table = "DIFFERENTIAL CODE BIASES\n\nPRN / STATION NAME        VALUE (NS)  RMS (NS)\n"
                        "***   ****************    *****.***   *****.***\n";
    for (int prn = 1; prn <= 32; ++prn) {
        char line[80];
        std::snprintf(line, sizeof line, "G%02d                       %9.3f   %9.3f\n", prn, prn == 5 ? 0.001 : 1.0, 0.01);
        table += line;
    }
    const std::string dcb = orvotest::WriteTemp("one_ns.DCB", table + "\n");
    const long double ns_m = C * 1e-9L, f1 = 1575.42L, f2 = 1227.6L;
    const long double lc1 = f1 * f1 / (f1 * f1 - f2 * f2), lc2 = f2 * f2 / (f1 * f1 - f2 * f2);
    const struct {
        const char* name;
        bool p1p2;
        const char* codes;  // the station receiver's entry in the list
        long double d1, d2; // shift of C1/P1 and of P2 (m)
    } rows[] = {{"p1p2", true, "P1 P2", lc2 * ns_m, lc1 * ns_m},
                {"c1p2", false, "C1 P2", ns_m, 0.0L},
                {"c1x2", false, "C1 X2", ns_m, ns_m},
                {"p1p2 receiver", false, "P1 P2", 0.0L, 0.0L}};
    Options o = Window();
    o.gal = false;
    Context plain;
    Stage(plain, o);
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        char entry[120];
        std::snprintf(entry, sizeof entry, "%-20s   2     %.2s   CODE TRACKING\n%29s%s\n", "SEPT POLARX5", r.codes, "", r.codes + 3);
        Context c;
        gCPosC& g = c.gc;
        SetName(g.rctrackfile, orvotest::WriteTemp("list.rec", std::string("RECEIVER TYPE          #F    CODES\n") + entry));
        SetName(r.p1p2 ? g.dcbp1p2file : g.dcbp1c1file, dcb);
        g.isRCodTrc = true;
        (r.p1p2 ? g.isP1P2 : g.isP1C1) = true;
        Stage(c, o);
        long moved = 0;
        for (long k = 0; k < c.rnxd.GetNObs(); ++k) {
            const short prn = c.rnxd.sat(k);
            if (prn > 99) continue;
            const long double apply = prn == 5 ? 0.0L : 1.0L;
            for (const auto& [m, want] : {std::pair{&RINEXData::C1, r.d1}, {&RINEXData::P1, r.d1}, {&RINEXData::P2, r.d2}})
                if (!(plain.rnxd.*m)(k).IsNull()) {
                    EXPECT_NEAR((c.rnxd.*m)(k).obs - (plain.rnxd.*m)(k).obs, apply * want, 1e-9L) << prn;
                }
            moved += apply > 0.0L;
        }
        EXPECT_GT(moved, 10);
    }
}

TEST(Corrections, TroposphereTotalOrDryAndWetMappingWhenEstimatedOrFiled)
{
    // The epoch troposphere file (-oT) fills MFTROP even when the wet delay
    // is modelled; the delay itself stays the total one.
    Options o = Window();
    o.clk = "";
    o.tropo = true;
    Context total, dry, kept;
    Stage(total, o);
    o.estTropo = true;
    Stage(dry, o);
    o.estTropo = false;
    o.tropEphFile = true;
    Stage(kept, o);
    int checked = 0;
    for (long k = 0; k < total.rnxd.GetNObs(); ++k) {
        if (!total.gc.OKSAT(k) || total.gc.ELV(k) < 15.0L * Pi / 180.0L) continue;
        const long double e = total.gc.ELV(k), s = std::sin(e);
        // A site near sea level: zenith total delay 2.3-2.6 m, hydrostatic
        // 2.25-2.35 m; above 15 degrees the mapping stays within 3% of 1/sin(E).
        EXPECT_GT(total.gc.TROP(k) * s, 2.2L);
        EXPECT_LT(total.gc.TROP(k) * s, 2.7L);
        EXPECT_GT(dry.gc.TROP(k) * s, 2.1L);
        EXPECT_LT(dry.gc.TROP(k) * s, 2.45L);
        EXPECT_GT(total.gc.TROP(k), dry.gc.TROP(k));  // the wet part is positive
        EXPECT_EQ(total.gc.MFTROP(k), 0.0L);           // not estimated, not asked for
        EXPECT_NEAR_LD(dry.gc.MFTROP(k) * s, 1.0L, 0.03L);
        // 1e-15: the same computation at the same epoch and elevation.
        EXPECT_NEAR_LD(kept.gc.MFTROP(k), dry.gc.MFTROP(k), 1e-15L);
        EXPECT_NEAR_LD(kept.gc.TROP(k), total.gc.TROP(k), 1e-15L);
        // Gradient mapping of Chen & Herring (1997) from the same angles; 1e-9:
        // round-off of a factor near 1 to 10 is far smaller, a swapped cos/sin
        // or a lost 0.0032 far larger. Gradients only when estimated.
        const long double mg = 1.0L / (std::tan(e) * s + 0.0032L);
        EXPECT_NEAR_LD(dry.gc.MFGRAD(k, 0), mg * std::cos(dry.gc.AZM(k)), 1e-9L);
        EXPECT_NEAR_LD(dry.gc.MFGRAD(k, 1), mg * std::sin(dry.gc.AZM(k)), 1e-9L);
        EXPECT_EQ(total.gc.MFGRAD(k, 0) + kept.gc.MFGRAD(k, 0), 0.0L);
        ++checked;
    }
    EXPECT_GT(checked, 100);
}

TEST(Corrections, RecordsBeyondTheClockFileOrOnRefusedNodesAreListedPerSatellite)
{
    // A clock file ending at 08:10:30 serves up to a second later and no
    // further: beyond, the orbit file's clocks stand in, and the records
    // are listed as such. A G05 node at 08:00 ten times too far out is
    // refused, and every window of the quarter hour holds it: G05 is not
    // used. Each satellite with an orbit is listed with exactly the records
    // that the rule hits; the clean window lists none.
    Options early = Window(), node = Window(), clean = Window();
    early.clk = CutClk("early.clk", 8 * 60, 8 * 60 + 10);
    node.sp3 = EditFile(Sp3(), "far.sp3", [t = false](std::string& l) mutable {
        t = l[0] == '*' ? l.compare(14, 5, " 8  0") == 0 : t;
        return !(t && l.compare(0, 4, "PG05") == 0) || (l = "PG05-150000.000000 150000.000000 150000.000000      1.000000", true); });
    const std::string clock = "  Observations without a clock from the clock file (orbit file clock used):\n",
                      nodes = "  Observations on missing or refused precise orbit nodes (not used):\n";
    const struct { const Options& o; std::string title, fate; std::function<bool(short, long double)> hit; } rows[] = {
        {early, clock, "ORBIT FILE CLOCK USED", [](short, long double sod) { return sod - (8 * 3600 + 630) > 1.0L; }},
        {node, nodes, "NOT USED", [](short prn, long double) { return prn == 5; }},
        {clean, clock, "", [](short, long double) { return false; }}};
    for (const auto& r : rows) {
        Context c; const std::string out = Stage(c, r.o);
        std::map<short, long> want;  // by number, the report's order
        long total = 0, notOK = 0;
        for (long i = 0, k = 0; i < c.rnxd.GetNEpoch(); ++i)
            for (long j = 0; j < c.rnxd.nsat(i); ++j, ++k) {
                const short prn = c.rnxd.sat(k);
                if (IsGlonass(prn) || prn == 4) continue;  // GLONASS is off, G04 has no orbit
                if (r.hit(prn, c.rnxd.epoch(i).GetSecond())) ++want[prn], ++total;
                notOK += !c.gc.OKSAT(k);
            }
        std::ostringstream listed;
        for (const auto& [sat, n] : want) listed << "    Satellite: " << SatName(sat) << "    #OBS: " << std::setw(8) << n << "\n";
        EXPECT_TRUE(notOK == (r.fate == "NOT USED" ? total : 0) && Has(out, r.title) == (total > 0) && (total > 0) == (&r.o != &clean)) << out;
        EXPECT_TRUE(total == 0 || (Has(out, r.title + listed.str() + "\n") && Has(out, " - " + std::to_string(total) + " OBSERVATIONS " + r.fate + "!")));
    }
}

TEST(CorrectionsDeath, ProductsOfAnotherDayStopNamingFileAndSpans)
{
    // The orbits of 2020-06-24, and the clocks of the window dated a day early.
    Options sp3 = Window(), clk = Window();
    sp3.sp3 = orvotest::Data(kSet + "GRG0MGXFIN_20201760000_01D_15M_ORB.SP3");
    clk.clk = EditFile(clk.clk, "day176.clk", [](std::string& l) { return l.compare(0, 2, "AS") != 0 || (l.replace(15, 3, " 24"), true); });
    sp3.quiet = clk.quiet = false;
    const std::string obs = ", THE OBSERVATIONS 2020-06-25 08:00:00.0 TO 2020-06-25 08:15:00.0 - NO OBSERVATION EPOCH WITHIN THE PRODUCT";
    for (const auto& [o, re] : {std::pair{sp3, "PRECISE ORBIT FILE .*20201760000_01D_15M_ORB.SP3 SPANS 2020-06-24 00:00:00.0 TO 2020-06-24 23:45:00.0"},
                                {clk, "RINEX CLOCK FILE .*day176.clk SPANS 2020-06-24 08:00:00.0 TO 2020-06-24 08:20:30.0"}})
        EXPECT_EXIT({ Context c; Stage(c, o); }, ::testing::ExitedWithCode(1), "Error -> " + std::string(re) + obs);
}

TEST(CorrectionsDeath, UnwritableSkyPlotFileStopsBeforeModelling)
{
    Options o = Window();
    o.sky = orvotest::TempDir() + "/no_such_dir/sky.txt";
    o.quiet = false;
    EXPECT_EXIT({ Context c; Stage(c, o); }, ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> SKY PLOT FILE CAN NOT BE OPENED!");
}

}  // namespace
