// GPS and Galileo broadcast ephemeris: the GPS navigation file of the ESBC
// set and the Galileo records of the station's RINEX 3 file, checked against
// a parse of their own, against the precise orbits and clocks of the day and
// through the light-time forms; broken variants cut from them.
#include <cstdio>
#include <iostream>

#include "OrbitsSupport.h"
#include "orbits/GLNbEph.h"
#include "orbits/GPSbEph.h"

using namespace orbtest;

namespace {

// Broadcast against precise: IS-GPS-200 and the Galileo SIS ICD promise a
// signal-in-space range error of 1-2 m; the precise orbit is the centre of
// mass and the broadcast one the antenna (about 1 m apart), so 2 m RMS and
// 5 m at most. The clocks after the per-epoch median: the broadcast clocks
// are good to about 2 ns (0.6 m), so 3 ns RMS and 10 ns at most. A record
// taken with the wrong epoch or a lost harmonic term costs tens of metres,
// a wrong sign of the relativity term up to 45 ns.
constexpr long double PosRms_m = 2.0L, PosMax_m = 5.0L, ClkRms_s = 3e-9L, ClkMax_s = 10e-9L;
// A GPS record is fitted for 4 h around its epoch; a Galileo record is
// sent from its epoch on every 10 min and predicts forward, so it is
// compared from 5 min before (the nearer record) to 2 h after its epoch.
constexpr long double GpsWindow_s = 7200.0L, GalBefore_s = 300.0L;
// 1 mm: the light time closes to 1e-5 m, and the forms differ only in the
// second order of the Earth rotation angle during travel, (5e-6)^2 * 2.5e7 m.
constexpr long double LightFormTol_m = 1e-3L;
// 1e-10 s: r.v of the broadcast orbit differs from that of the Keplerian
// ellipse by the radius harmonics, 4 n Crc r / c^2 = 6e-11 s for a Crc of
// 350 m; the term itself reaches 23 ns, so a wrong sign or scale shows.
constexpr long double RelativityTol_s = 1e-10L;

GPSbEph& Gps() { return Shared<GPSbEph>(kGpsNav); }

long double Field(const std::string& l, std::size_t pos)
{
    std::string f = pos < l.size() ? l.substr(pos, 19) : "";
    for (char& c : f) c = c == 'D' ? 'E' : c;
    return std::strtold(f.c_str(), nullptr);
}

// The I/NAV records (data source bit 9) of the RINEX 3 file as a RINEX 2
// style file: two-digit year, satellite "E01" with letter, else "201".
struct Galileo { std::vector<std::string> lines; std::string letter, number; };
const Galileo& GalileoFiles()
{
    static const Galileo g = [] {
        Galileo r; std::vector<std::string> l; char buf[256];
        FILE* p = popen(("gzip -dc " + kMixedNav).c_str(), "r");
        for (bool body = false; p != nullptr && std::fgets(buf, sizeof buf, p);) {
            std::string s(buf); s.erase(s.find_last_not_of("\r\n") + 1);
            if (body) l.push_back(s); else body = s.find("END OF HEADER") != std::string::npos;
        }
        if (p != nullptr) pclose(p);
        const std::string head = "     2.11           N: GPS NAV DATA                         RINEX VERSION / TYPE\n"
                                 "                                                            END OF HEADER\n";
        r.letter = r.number = head;
        for (std::size_t i = 0; i + 7 < l.size(); ++i) {
            if (l[i][0] != 'E' || (std::lround(Field(l[i + 5], 23)) & 512) == 0) continue;
            for (int k = 0; k < 8; ++k) r.lines.push_back(l[i + k]);
            // "2020 06 24 23 30 00" as "20 06 24 23 30 00.0"
            const std::string rest = " " + l[i].substr(6, 14) + " " + l[i].substr(21, 2) + ".0" + l[i].substr(23) + "\n" + Join({l.begin() + i + 1, l.begin() + i + 8});
            r.letter += l[i].substr(0, 3) + rest, r.number += std::to_string(200 + std::atoi(l[i].substr(1, 2).c_str())) + rest;
        }
        r.letter = WriteTemp("galileo_letter.20n", r.letter), r.number = WriteTemp("galileo_number.20n", r.number);
        return r;
    }();
    return g;
}

// The state of a healthy record chosen for t when it lies in [-before, 2 h] of t.
BroadcastState Healthy(GPSbEph& nav, long double before)
{
    return [&nav, before](short s, mjd& t, xyzt& p) {
        const long ix = nav.GetDataIndex(s, t); const long double dt = t - nav.GetMJD(ix);
        if (dt < -before || dt > GpsWindow_s || nav.GetData().data(ix, GPSbEphData::SVHEALTH) != 0.0L) return false;
        nav.CalcSatPosition(s, t, t, p, nullptr, 0, 0);
        return p.dt += nav.GetRelativity(), true;
    };
}

}  // namespace

TEST(GPSbEph, HeaderAndEveryRecordReadByTheirColumns)
{
    const GPSbEphHeader& h = Gps().GetHeader();
    EXPECT_EQ(std::string(h.type) + "|" + h.pgm + "|" + std::to_string(h.T) + "|" + std::to_string(h.W) + "|" + std::to_string(h.leaps),
              "N: GPS NAV DATA|rnx3nav2|589824|2111|18");
    EXPECT_NEAR_LD(h.alfa[0], 4.6566e-9L, 1e-22L); EXPECT_NEAR_LD(h.beta[3], -5.2429e5L, 1e-9L); EXPECT_NEAR_LD(h.a1, 2.664535259e-15L, 1e-28L);
    // The published G01 record: sqrt(A) = 5153.707128525, OMEGADOT = -8.384634967987e-09.
    EXPECT_NEAR_LD(Gps().GetData().data(0, GPSbEphData::AS), 5153.707128525L, 1e-12L);
    EXPECT_NEAR_LD(Gps().GetData().data(0, GPSbEphData::OMEGADOT), -8.384634967987e-09L, 1e-24L);
    // RINEX 2.11 columns, D exponents (epoch line: I2, 5 I3, F5.1, 3D19.12;
    // then 3X, 4D19.12), and the Galileo lines of RINEX 3 (4X, e exponents).
    const std::vector<std::string> l = FileLines(kGpsNav);
    const GPSbEph& gal = Shared<GPSbEph>(GalileoFiles().letter), &num = Shared<GPSbEph>(GalileoFiles().number);
    const struct { const GPSbEph& nav; const std::vector<std::string> lines; std::size_t day, first, indent; int base; } files[] = {
        {Gps(), {l.begin() + 8, l.end()}, 9, 22, 3, 0}, {gal, GalileoFiles().lines, 12, 23, 4, 200}, {num, GalileoFiles().lines, 12, 23, 4, 200}};
    for (const auto& f : files) {
        ASSERT_EQ(static_cast<std::size_t>(f.nav.GetNSat()) * 8, f.lines.size());
        for (long i = 0; i < f.nav.GetNSat(); ++i) {
            const std::string& e = f.lines[8 * i];
            EXPECT_EQ(f.nav.GetData().sat(i), f.base + std::atoi(e.substr(f.base > 0 ? 1 : 0, 2).c_str()));
            auto at = [&e, &f](std::size_t k) { return std::strtold(e.substr(f.day + k, 3).c_str(), nullptr); };  // June days
            EXPECT_NEAR_LD(f.nav.GetMJD(i) - mjd(Jun25 - 25 + std::lround(at(0)), 0.0L), 3600.0L * at(3) + 60.0L * at(6) + at(8), 1e-9L);
            for (int j = 0; j < 28; ++j) {  // correctly rounded both ways
                const long double v = j < 3 ? Field(e, f.first + 19 * j) : Field(f.lines[8 * i + 1 + (j - 3) / 4], f.indent + 19 * ((j - 3) % 4));
                EXPECT_NEAR_LD(f.nav.GetData().data(i, j), v, 1e-18L * std::fabs(v)) << i << " " << j;
            }
        }
    }
    EXPECT_TRUE(gal.GetSatList()(0) == 201 && num.GetSatList()(0) == 201 && Gps().GetSatList().NRow() == 31);
}

TEST(GPSbEph, BlankAndShortFieldsReadZeroAndKeepTheirColumns)
{
    // First record: CODL2 blanked inside line 5, line 6 cut after SVHEALTH,
    // and one more blank line between the records.
    std::vector<std::string> l = FileLines(kGpsNav);
    l[13].replace(22, 19, 19, ' '), l[14].resize(41), l.insert(l.begin() + 16, "   ");
    const auto g = Load<GPSbEph>(WriteTemp("blank.20n", Join(l)));
    ASSERT_EQ(g->GetNSat(), Gps().GetNSat());
    for (int j = 0; j < 28; ++j) {
        const bool cleared = j == GPSbEphData::CODL2 || j == GPSbEphData::TGD || j == GPSbEphData::IODC;
        EXPECT_EQ(g->GetData().data(0, j), cleared ? 0.0L : Gps().GetData().data(0, j)) << j;
        EXPECT_EQ(g->GetData().data(1, j), Gps().GetData().data(1, j)) << j;
    }
}

TEST(GPSbEph, RecordChoiceTakesTheNearerAndTiesToTheEarlier)
{
    // G01 records at 04:00, 06:00, 14:00 ... 20:00.
    std::vector<long> ix;
    for (long i = 0; i < Gps().GetNSat(); ++i) if (Gps().GetData().sat(i) == 1) ix.push_back(i);
    ASSERT_GE(ix.size(), 3u);
    const mjd a = Gps().GetMJD(ix[1]), b = Gps().GetMJD(ix[2]);
    const struct { mjd t; long expected; } cases[] = {
        {Plus(a, (b - a) / 2.0L), ix[1]}, {Plus(a, (b - a) / 2.0L + 1e-6L), ix[2]}, {b, ix[2]}, {a, ix[1]},
        {mjd(Jun25 - 1, 0.0L), ix.front()}, {mjd(Jun25 + 1, 3600.0L), ix.back()}};
    for (const auto& c : cases) EXPECT_EQ(Gps().GetDataIndex(1, c.t), c.expected);
}

TEST(GPSbEph, StaleRecordsAreWarnedBeyondTwoHoursAndOutsideTheValidInterval)
{
    // G01 records at 04:00 and 06:00 (2 h apart), then 14:00.
    const struct { long double sod; unsigned short w; bool stale, invalid; const char* text; } cases[] = {
        {8 * 3600.0L - 60.0L, 1, false, false, ""}, {8 * 3600.0L + 300.0L, 1, true, false, "SAT: G01 [2020-06-25 08:05:00.0] -> DT =  2.08 h"},
        {8 * 3600.0L + 300.0L, 0, false, false, ""}, {10 * 3600.0L, 0, false, true, ""},
        {10 * 3600.0L, 1, true, true, "SAT: G01 [2020-06-25 10:00:00.0] -> DT =  4.00 h PARAMETER TO BIG [>2h]"},
        {0.0L, 1, true, true, "SAT: G01 [2020-06-25 00:00:00.0] -> DT = -4.00 h"}};
    for (const auto& c : cases) {
        orvotest::Capture out(std::cout), err(std::cerr); mjd t(Jun25, c.sod); xyzt p;
        Gps().CalcSatPosition(1, t, t, p, nullptr, c.w, 0);
        EXPECT_EQ(out.Text().find("GPSbEph: Warning -> " + std::string(c.text)) != std::string::npos, c.stale) << out.Text();
        EXPECT_EQ(err.Text().find("Orvo: Warning -> GPS BROADCAST EPHEMERIS: CALCULATION EPOCH NOT IN VALID INTERVAL (2H) WITH RESPECT "
                                  "TO EPOCHS OF DATA!") != std::string::npos, c.invalid) << c.sod;
    }
}

TEST(GPSbEph, GpsAndGalileoMeetThePreciseOrbitsAndClocks)
{
    GPSbEph& gal = Shared<GPSbEph>(GalileoFiles().letter);
    const struct { GPSbEph& nav; long double before; const char* name; long minimum; } systems[] = {
        {Gps(), GpsWindow_s, "GPS", 1500}, {gal, GalBefore_s, "Galileo", 800}};
    for (const auto& s : systems) {
        Spread pos, clk; CompareWithPrecise(s.nav.GetSatList(), 0, Healthy(s.nav, s.before), pos, clk);
        EXPECT_GT(clk.n, s.minimum) << s.name;
        EXPECT_TRUE(pos.Rms() < PosRms_m && pos.max < PosMax_m && clk.Rms() < ClkRms_s && clk.max < ClkMax_s) << s.name << " " << Figures(pos, clk);
    }
}

TEST(GPSbEph, RelativityIsTwiceRadiusDotVelocityOverCSquared)
{
    // r.v from the positions 0.5 s either side: the Earth's rotation adds
    // w x r to the velocity, which is normal to r.
    for (long i = 0; i < Gps().GetNSat(); ++i) {
        const unsigned short s = static_cast<unsigned short>(Gps().GetData().sat(i));
        mjd t = Plus(Gps().GetMJD(i), 1234.0L), tm = Plus(t, -0.5L), tp = Plus(t, 0.5L); xyzt p, pm, pp;
        Gps().CalcSatPosition(s, tm, t, pm, nullptr, 0, 0), Gps().CalcSatPosition(s, tp, t, pp, nullptr, 0, 0);
        Gps().CalcSatPosition(s, t, t, p, nullptr, 0, 0);
        const long double rv = p.x * (pp.x - pm.x) + p.y * (pp.y - pm.y) + p.z * (pp.z - pm.z);
        EXPECT_NEAR_LD(Gps().GetRelativity(), 2.0L * rv / (C * C), RelativityTol_s) << i;
    }
}

TEST(GPSbEph, LightTimeFormsCloseOnTheGeometry)
{
    xyz rec = kMarker;
    for (long i = 0; i < Gps().GetNSat(); i += 8) {
        const unsigned short s = static_cast<unsigned short>(Gps().GetData().sat(i));
        mjd eph = Plus(Gps().GetMJD(i), 618.0L); xyzt ps, pe, pp; long double tgd = 0.0L;
        const long double d = Gps().CalcSatPosition(s, eph, eph, rec, ps, &tgd, 0, 0);
        EXPECT_EQ(tgd, Gps().GetData().data(Gps().GetDataIndex(s, eph), GPSbEphData::TGD));
        // The satellite at eph - d/c, seen from the receiver turned back by
        // the Earth's rotation during d/c.
        mjd te = Plus(eph, -d / C); Gps().CalcSatPosition(s, te, eph, pe, nullptr, 0, 0);
        const long double a = 7.2921151467e-5L * d / C;
        const xyz turned(rec.x * std::cos(a) - rec.y * std::sin(a), rec.y * std::cos(a) + rec.x * std::sin(a), rec.z);
        EXPECT_NEAR_LD(Dist(ps, pe), 0.0L, LightFormTol_m);
        EXPECT_NEAR_LD(Dist(turned, ps), d, LightFormTol_m);
        gnssobs P(d); EXPECT_NEAR_LD(Gps().CalcSatPosition(s, eph, eph, rec, pp, P, nullptr, 0, 0), d, LightFormTol_m) << s;
    }
}

TEST(GPSbEphDeath, MissingCutForeignAndUnlistedStop)
{
    const std::vector<std::string> l = FileLines(kGpsNav);
    // The file with text written over line `line` from column pos (and a second such edit).
    auto with = [&l](std::size_t line, std::size_t pos, const std::string& text, std::size_t line2 = 0, const std::string& text2 = "") {
        std::vector<std::string> c = l; c[line].replace(pos, text.size(), text), c[line2].replace(60, text2.size(), text2); return Join(c); };
    const struct { std::string path; std::string error; } cases[] = {
        {"no-such-file.20n", "GPSbEph: Error -> GPS NAVIGATION FILE CAN NOT BE OPENED!"},
        {WriteTemp("noend.20n", Join(l, 7)), "GPSbEphHeader: Error -> NO END OF HEADER IN GPS NAVIGATION FILE!"},
        {WriteTemp("cut.20n", Join(l, 8 + 8 * 2 + 5)), "GPSbEph: Error -> .*cut.20n: RECORD 3: FILE ENDS INSIDE THE RECORD!"},
        {WriteTemp("r.20n", with(16, 0, "R02")), "GPSbEph: Error -> .*: RECORD 2: SATELLITE FIELD \"R02\" OF NO GPS OR GALILEO SATELLITE!"},
        {WriteTemp("epoch.20n", with(16, 3, "2O")), "GPSbEph: Error -> .*: RECORD 2: EPOCH CAN NOT BE READ!"}};
    for (const auto& c : cases)
        EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); Load<GPSbEph>(c.path); }, ::testing::ExitedWithCode(1), c.error) << c.path;
    // A GLONASS file reads as records of its slots, and G30 is not among them.
    mjd t(Jun25, 0.0L); xyzt p;
    EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); Load<GPSbEph>(kNav)->CalcSatPosition(30, t, t, p, nullptr, 0, 0); },
                ::testing::ExitedWithCode(1), "GPSbEph: Error -> SAT: G30 IS NOT LISTED IN GPS NAVIGATION FILE!!!");
    // Eccentricity 0.999 near perigee (M0 = 1e-3) shrinks the error of the
    // iteration by only 2 % a step (rate e cos E); 1.5 is no ellipse.
    for (const char* e : {" 9.990000000000D-01", " 1.500000000000D+00"}) {
        const auto g = Load<GPSbEph>(WriteTemp("e.20n", with(10, 22, e, 9, " 1.000000000000D-03"))); mjd te = g->GetMJD(0);
        EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); g->CalcSatPosition(1, te, te, p, nullptr, 0, 0); }, ::testing::ExitedWithCode(1),
                    e[1] == '9' ? "GPSbEph: Error -> TO MANY ITERATIONS \\(E\\)" : "GPSbEph: Error -> SAT: G01 RECORD 1 HAS NO VALID ORBIT");
    }
}
