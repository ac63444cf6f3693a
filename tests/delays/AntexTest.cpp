// ANTEX calibrations: receiver and satellite records written here in the
// published layout (ANTEX 1.4), broken copies of them, and the real NGS file
// of the ESBC day.
#include <algorithm>
#include <functional>
#include <iostream>
#include <sstream>

#include "DelaysSupport.h"
#include "delays/antex.h"
#include "geodesy/TimeConverse.h"

using namespace deltest;

namespace {

// Node values are decimal text with two decimals (mm), turned into metres
// and combined in a few long double operations: round-off near 1e-19 m.
// 1e-15 m leaves room and is far below the 1e-7 m that tells the edge
// cases apart.
constexpr long double Tol_m = 1e-15L;

mjd Day(int y, int m, int d, int h = 0, int mi = 0, long double s = 0.0L) { return ymdhms2mjd(ymdhms(y, m, d, h, mi, s)); }
std::string Fmt(const char* f, long double a, long double b = 0, long double c = 0) { char t[64]; std::snprintf(t, sizeof t, f, (double)a, (double)b, (double)c); return t; }
// A line of the format: contents in columns 0-59, the label from column 60.
std::string L(std::string text, const std::string& label) { text.resize(60, ' '); return text + label + "\n"; }
std::string Pad(std::string s) { s.resize(20, ' '); return s; }
std::string Valid(const char* label, int y, int m, int d, int h = 0, int mi = 0, double s = 0.0) { char t[64]; std::snprintf(t, sizeof t, "%6d%6d%6d%6d%6d%13.7f", y, m, d, h, mi, s); return L(t, label); }
const std::string kHeader = L("     1.4            M", "ANTEX VERSION / SYST") + L("A", "PCV TYPE / REFANT") + L("", "END OF HEADER");

// Node value (mm) of carrier c at azimuth a and zenith z (deg): curved in
// zenith so that a wrong cell gives a wrong value, with a cross term that
// only the bilinear coefficient a3 follows. Exact in two decimals on the
// nodes used here. Linear interpolation of z^2 over a step h misses it by
// the chord h^2 t (1 - t), t the place in the cell: that is the oracle.
long double G(int c, long double a, long double z) { return c + z * z / 25.0L + a / 5.0L - a * z / 1000.0L; }
long double Interp(int c, long double a, long double z, long double h, long double t) { return (G(c, a, z) + h * h * t * (1.0L - t) / 25.0L) / 1000.0L; }

// A record: type and serial, azimuth step da (0: none), zenith 0..zmax by
// dz, carriers {name, c} with offsets (c, -c, 10c) mm, extra lines (validity).
std::string Record(const std::string& type, const std::string& ser, int da, int zmax, int dz, const std::vector<std::pair<std::string, int>>& fr, const std::string& extra = "")
{
    std::string s = L("", "START OF ANTENNA") + L(Pad(type) + ser, "TYPE / SERIAL NO") + L(Fmt("  %6.1f", da), "DAZI")
                    + L(Fmt("  %6.1f%6.1f%6.1f", 0, zmax, dz), "ZEN1 / ZEN2 / DZEN") + extra;
    for (const auto& f : fr) {
        s += L("   " + f.first, "START OF FREQUENCY") + L(Fmt("%10.2f%10.2f%10.2f", f.second, -f.second, 10 * f.second), "NORTH / EAST / UP") + "   NOAZI";
        for (int z = 0; z <= zmax; z += dz) s += Fmt("%8.2f", G(f.second, 0, z));
        for (int a = 0; da > 0 && a <= 360; a += da) {
            s += "\n" + Fmt("%8.1f", a);
            for (int z = 0; z <= zmax; z += dz) s += Fmt("%8.2f", G(f.second, a, z));
        }
        s += "\n" + L("   " + f.first, "END OF FREQUENCY");
    }
    return s + L("", "END OF ANTENNA");
}

const char kAoa[] = "AOAD/M_T        NONE", kTrm[] = "TRM59800.00     NONE";
const std::string kRecAzi = Record(kAoa, "", 30, 90, 5, {{"G01", 1}, {"G02", 2}});
const char* const kBlocks[] = {"BLOCK II", "BLOCK IIA", "BLOCK IIR-A", "BLOCK IIR-B", "BLOCK IIR-M", "BLOCK IIF"};

// The synthetic file: receivers (with and without azimuth, an individual
// one), G05 as IIR-M and as the IIA before it, R07, E11, and six bare
// blocks on G21-G26.
const std::string& Set()
{
    static std::string path;
    if (path.empty()) {
        std::string t = kHeader + kRecAzi + Record(kTrm, "", 0, 80, 5, {{"G01", 3}, {"G02", 4}})
                        + Record(kTrm, "4711", 0, 80, 5, {{"G01", 5}}, Valid("VALID FROM", 2018, 1, 1))
                        + Record("BLOCK IIR-M", "G05", 0, 14, 1, {{"G01", 6}, {"E01", 15}, {"G02", 7}}, Valid("VALID FROM", 2009, 8, 17))
                        + Record("BLOCK IIA", "G05", 0, 14, 1, {{"G01", 8}}, Valid("VALID FROM", 1990, 1, 1) + Valid("VALID UNTIL", 2009, 8, 16, 23, 59, 59.9999999))
                        + Record("GLONASS-K1", "R07", 0, 14, 1, {{"R01", 9}, {"G01", 14}, {"R02", 10}})
                        + Record("GALILEO-2", "E11", 0, 14, 1, {{"E01", 11}, {"R01", 16}, {"E07", 13}, {"E05", 12}});
        for (int i = 0; i < 6; ++i) t += L("", "START OF ANTENNA") + L(Pad(kBlocks[i]) + "G2" + std::to_string(i + 1), "TYPE / SERIAL NO") + L("", "END OF ANTENNA");
        path = orvotest::WriteTemp("set.atx", t);
    }
    return path;
}

antex& Atx() { static antex* a = nullptr; return a ? *a : (Read(*(a = new antex), Set()), *a); }

// The six carriers G01 G02 R01 R02 E01 E07 at zen, azm.
std::vector<long double> Pcv(antex& a, long double zen, long double azm) { std::vector<long double> p(6); a.GetAntennaPCV(zen, azm, p[0], p[1], p[2], p[3], p[4], p[5]); return p; }
neu Off(antex& a, short f) { neu d(9, 9, 9); a.GetAntennaOffset(d, f); return d; }

}  // namespace

TEST(Antex, CountsRecordsByKind)
{
    EXPECT_TRUE(Atx().GetNAntenna() == 13 && Atx().GetNRec() == 3 && Atx().GetNGPSSat() == 8 && Atx().GetNGLNSat() == 1 && Atx().GetNGALSat() == 1);
}

TEST(Antex, ReceiverGridNodesCellsAndEdgesOnEveryCarrier)
{
    // {zenith, azimuth asked; azimuth, zenith the value must come from;
    // place t in the zenith cell}. Zenith 0 and above 89.999 take the edge
    // rows, azimuth 0 and below 0.001 the first column, above 359.999 the last.
    struct Case { long double zen, azm, a, z, t; };
    const Case cases[] = {{10, 60, 60, 10, 0}, {12.5L, 45, 45, 12.5L, 0.5L}, {11, 100, 100, 11, 0.2L}, {88, 355, 355, 88, 0.6L},
                          {0, 45, 45, 0, 0}, {90, 45, 45, 90, 0}, {89.9995L, 200, 200, 90, 0}, {12.5L, 0, 0, 12.5L, 0.5L},
                          {12.5L, 0.0005L, 0, 12.5L, 0.5L}, {12.5L, 359.9995L, 360, 12.5L, 0.5L}, {0, 359.9995L, 360, 0, 0}};
    // G02 lends R02 and E07 its values, G01 the others.
    const int c[6] = {1, 2, 1, 2, 1, 2};
    ASSERT_TRUE(Atx().SetAntenna(kAoa));
    for (const Case& k : cases) {
        const std::vector<long double> p = Pcv(Atx(), k.zen, k.azm);
        for (int f = 0; f < 6; ++f) EXPECT_NEAR_LD(p[f], Interp(c[f], k.a, k.z, 5, k.t), Tol_m) << k.zen << " " << k.azm << " " << f;
    }
    // Without azimuth values the NOAZI row serves every azimuth; zenith 85
    // lies above its last node at 80.
    ASSERT_TRUE(Atx().SetAntenna(kTrm));
    const long double zen[] = {0, 12.5L, 80, 85}, z[] = {0, 12.5L, 80, 80}, t[] = {0, 0.5L, 0, 0};
    for (int i = 0; i < 4; ++i) {
        const std::vector<long double> p = Pcv(Atx(), zen[i], 123);
        for (int f = 0; f < 6; ++f) EXPECT_NEAR_LD(p[f], Interp(c[f] + 2, 0, z[i], 5, t[i]), Tol_m) << zen[i] << " " << f;
    }
    for (short f = 0; f < 6; ++f) {
        const long double mm = (c[f] + 2) / 1000.0L;
        EXPECT_NEAR_LD((Off(Atx(), f) - neu(mm, -mm, 10 * mm)).GetLength(), 0.0L, Tol_m) << f;
    }
}

TEST(Antex, SatelliteServesOnlyItsOwnConstellation)
{
    // {number, c per slot of G01 G02 R01 R02 E01 E07 (0: none) for the
    // variations and for the offsets}. Each carries a calibration of
    // another constellation (G05 E01, R07 G01, E11 R01) that must not reach
    // that constellation's variations; E05 of E11 (c 12, after E07) is no
    // carrier of the program and is skipped.
    struct Case { short prn; int c[6], off[6]; };
    const Case cases[] = {{5, {6, 7, 0, 0, 0, 0}, {6, 7, 0, 0, 15, 0}}, {107, {0, 0, 9, 10, 0, 0}, {14, 0, 9, 10, 0, 0}},
                          {211, {0, 0, 0, 0, 11, 13}, {0, 0, 16, 0, 11, 13}}};
    for (const Case& k : cases) {
        ASSERT_TRUE(Atx().SetSatellite(k.prn, Day(2020, 6, 25))) << k.prn;
        // Nadir 7.5 lies mid-cell of the 1-degree grid; 14.2 above its end.
        const std::vector<long double> p = Pcv(Atx(), 7.5L, 250), q = Pcv(Atx(), 14.2L, 0);
        for (short f = 0; f < 6; ++f) {
            const int c = k.c[f];
            EXPECT_NEAR_LD(p[f], c ? Interp(c, 0, 7.5L, 1, 0.5L) : 0.0L, Tol_m) << k.prn << " " << f;
            EXPECT_NEAR_LD(q[f], c ? G(c, 0, 14) / 1000.0L : 0.0L, Tol_m) << k.prn << " " << f;
            EXPECT_NEAR_LD(Off(Atx(), f).u, k.off[f] / 100.0L, Tol_m) << k.prn << " " << f;
        }
    }
}

TEST(Antex, SelectsByNameSerialAndValidity)
{
    // {selection, found, c of the record it must give (0: none)}. The
    // validity ends are inclusive; G05 was a IIA before the IIR-M.
    const std::string ser = "4711                ", longName = kTrm + std::string(" CR5200327016");
    struct Case { std::function<bool()> select; bool found; int c; };
    const Case cases[] = {{[] { return Atx().SetAntenna(kTrm); }, true, 3}, {[&] { return Atx().SetAntenna(longName.c_str()); }, true, 3},
                          {[&] { return Atx().SetAntenna(kTrm, ser.c_str()); }, true, 5},
                          {[&] { return Atx().SetAntenna(kTrm, ser.c_str(), Day(2017, 12, 31, 23, 59, 59)); }, false, 0},
                          {[&] { return Atx().SetAntenna(kTrm, ser.c_str(), Day(2018, 1, 1)); }, true, 5},
                          {[] { return Atx().SetSatellite(5, Day(1989, 12, 31)); }, false, 0}, {[] { return Atx().SetSatellite(5, Day(2005, 1, 1)); }, true, 8},
                          {[] { return Atx().SetSatellite(5, Day(2009, 8, 16, 23, 59, 59.9999999L)); }, true, 8},
                          {[] { return Atx().SetSatellite(5, Day(2009, 8, 17)); }, true, 6}};
    antexns::PrintWarns = 0;  // lets a name run on into a serial, and keeps misses silent
    for (const Case& k : cases) {
        EXPECT_EQ(k.select(), k.found) << k.c;
        EXPECT_NEAR_LD(Off(Atx(), 0).n, k.c / 1000.0L, Tol_m);
        EXPECT_EQ(Atx().IsBlockIIR(), k.c == 6);
    }
    antexns::PrintWarns = 1;
    // IIR-A, IIR-B, IIR-M are IIR; II, IIA, IIF are not.
    for (short i = 0; i < 6; ++i) EXPECT_EQ(Atx().SetSatellite(21 + i, Day(2020, 6, 25)) && Atx().IsBlockIIR(), i >= 2 && i <= 4) << kBlocks[i];
}

TEST(Antex, MissesWarnAndLeaveZeros)
{
    ASSERT_TRUE(Atx().SetAntenna(kAoa));
    orvotest::Capture out(std::cout);
    EXPECT_FALSE(Atx().SetAntenna("LEIAR25.R3      LEIT"));
    // The previous selection is gone: every answer is zero.
    long double sum = Off(Atx(), 0).GetLength();
    for (long double v : Pcv(Atx(), 12.5L, 45)) sum += std::fabs(v);
    EXPECT_TRUE(Atx().GetAtxIndex() == -1 && !Atx().IsBlockIIR());
    EXPECT_FALSE(Atx().SetSatellite(33, Day(2020, 6, 25)));
    ASSERT_TRUE(Atx().SetAntenna(kAoa));
    sum += Off(Atx(), 6).GetLength();
    EXPECT_NEAR_LD(sum, 0.0L, Tol_m);
    EXPECT_FALSE(Atx().SetAntenna(kTrm, "0815"));  // silent
    const std::string text = out.Text();
    for (const char* m : {"#### Orvo: Warning -> ANTENNA: LEIAR25.R3      LEIT NOT FOUND IN ANTEX FILE - SETING ALL CALIBRATION PARAMETERS TO ZERO! ####",
                          "Warning -> SATELLITE: 33 NOT FOUND IN ANTEX FILE - SETING ALL CALIBRATION PARAMETERS TO ZERO! ####",
                          "Warning -> FREQUENCY TYPE NOT PROPER (GETTING ANTENNA OFFSET)! ####"})
        EXPECT_NE(text.find(m), std::string::npos) << m;
    EXPECT_EQ(std::count(text.begin(), text.end(), '#'), 3 * 8);  // these three warnings and nothing else
}

TEST(Antex, RecordWithoutTypeWarns)
{
    antex a;
    orvotest::Capture err(std::cerr);
    Read(a, orvotest::WriteTemp("notype.atx", kHeader + L("", "START OF ANTENNA") + L("", "END OF ANTENNA") + kRecAzi));
    EXPECT_NE(err.Text().find("Warning -> TYPE OF ANTENNA SENSOR NOT DEFINED [RECEIVER|GPS|GLONASS|GALILEO]! ####"), std::string::npos);
    // Its empty name must not match any antenna, and the next record is not read.
    EXPECT_TRUE(a.GetNAntenna() == 1 && !a.SetAntenna(kAoa, ""));
}

TEST(AntexDeath, StopsOnMissingFileAndShortName)
{
    EXPECT_EXIT(antex().SetFile((orvotest::TempDir() + "/none.atx").c_str()), ::testing::ExitedWithCode(1), Framed("ANTEX FILE DOES NOT EXISTS! "));
    EXPECT_EXIT(Atx().SetAntenna("AOAD/M_T"), ::testing::ExitedWithCode(1), Framed("ANTENNA NAME MUST HAVE 20 CHARACTERS! "));
}

TEST(AntexDeath, UnknownBlocksStop)
{
    for (const auto& k : {std::pair<std::string, std::string>{"BLOCK IIX", "GPS"}, {"GLONASS-K2", "GLONASS"}}) {
        const std::string path = orvotest::WriteTemp("block.atx", kHeader + Record(k.first, "G01", 0, 14, 1, {}));
        EXPECT_EXIT({ antex a; Read(a, path); }, ::testing::ExitedWithCode(1),
                    Framed(k.second + " SATELLITE TYPE >" + Pad(k.first) + "< UNDETERMINED - NEW TYPE OF GPS SATELLITE\\?!\\? "));
    }
}

TEST(AntexDeath, BrokenRecordsStopNamingTheFile)
{
    // {change to the azimuth record: from, to, or a cut of the file at
    // `from`; message}. Each ends the run before a grid is allocated or
    // read beyond what the file holds.
    const std::string dazi = L("    30.0", "DAZI"), zen = L("     0.0  90.0   5.0", "ZEN1 / ZEN2 / DZEN");
    const size_t r60 = kRecAzi.find("\n    60.0") + 1;
    const std::string row60 = kRecAzi.substr(r60, kRecAzi.find('\n', r60) + 1 - r60);
    auto Zen = [](const char* z) { return L(z, "ZEN1 / ZEN2 / DZEN"); };
    struct Case { std::string from, to; bool cut; std::string msg; };
    const Case cases[] = {{L("", "START OF ANTENNA"), "", false, "ENDS AFTER 0 OF 1 RECORDS \\(FEWER START OF ANTENNA THAN TYPE / SERIAL NO\\)!"},
                          {zen, Zen("     0.0  90.0   0.0"), false, "DZEN NOT POSITIVE!"}, {dazi, L("    -5.0", "DAZI"), false, "DAZI NEGATIVE!"},
                          {zen, Zen("     0.0  90.0 0.001"), false, "ZEN2 BELOW ZEN1 OR MORE THAN 62 ZENITH NODES!"},
                          {zen, Zen("    10.0   0.0   5.0"), false, "ZEN2 BELOW ZEN1 OR MORE THAN 62 ZENITH NODES!"},
                          {dazi, L("   0.001", "DAZI"), false, "MORE THAN 3601 AZIMUTH ROWS!"},
                          {dazi, L("     7.0", "DAZI"), false, "GRID DOES NOT CLOSE ON ZEN2 OR ON 360 DEGREES!"},
                          {row60, row60.substr(0, row60.size() - 9) + "\n", false, "FEWER THAN 19 GRID VALUES \\(RECORD CUT INSIDE ITS GRID\\)!"},
                          {row60, "", false, "FEWER THAN 19 GRID VALUES"}, {"\n    90.0", "", true, "FILE ENDS INSIDE AN AZIMUTH GRID!"}};
    for (const Case& k : cases) {
        std::string t = kHeader + kRecAzi;
        const size_t at = t.find(k.from);
        ASSERT_NE(at, std::string::npos) << k.msg;
        t = k.cut ? t.substr(0, at) : t.replace(at, k.from.size(), k.to);
        const std::string path = orvotest::WriteTemp("broken.atx", t);
        EXPECT_EXIT({ antex a; Read(a, path); }, ::testing::ExitedWithCode(1), Framed("ANTEX FILE .*/broken.atx: line [0-9]+: " + k.msg)) << k.msg;
    }
}

TEST(AntexReal, NgsFileOfTheEsbcDay)
{
    const std::string path = orvotest::Data("esbc-2020-177/ngs14_esbc_trimmed.atx");
    antex a;
    Read(a, path);
    // grep "TYPE / SERIAL NO": 57 lines, 31 with BLOCK, 25 with GLONASS, one receiver.
    EXPECT_TRUE(a.GetNAntenna() == 57 && a.GetNGPSSat() == 31 && a.GetNGLNSat() == 25 && a.GetNGALSat() == 0 && a.GetNRec() == 1);
    // The receiver's offsets and its G01 row of azimuth 5 as the text gives
    // them, read here by words.
    std::istringstream in(orvotest::ReadFile(path));
    std::vector<neu> pc;
    std::vector<long double> row;
    bool rec = false;
    for (std::string line; std::getline(in, line);) {
        rec = rec || line.rfind("ASH701945E_M    SCIS", 0) == 0;
        if (rec && line.find("END OF ANTENNA") != std::string::npos) break;
        std::istringstream w(line);
        long double n, e, u, v;
        if (rec && line.find("NORTH / EAST / UP") != std::string::npos && w >> n >> e >> u) pc.push_back(neu(n, e, u) / 1000.0L);
        // The first row of azimuth 5 after G01's offset line.
        if (pc.size() == 1 && row.empty() && line.rfind("     5.0", 0) == 0 && w >> v) while (w >> v) row.push_back(v / 1000.0L);
    }
    ASSERT_TRUE(pc.size() == 2 && row.size() == 19 && a.SetAntenna("ASH701945E_M    SCIS"));
    // GLONASS and Galileo take the G01 and G02 values over.
    for (short f = 0; f < 6; ++f) EXPECT_NEAR_LD((Off(a, f) - pc[f % 2]).GetLength(), 0.0L, Tol_m) << f;
    for (int z = 0; z < 19; ++z) {
        const std::vector<long double> p = Pcv(a, 5.0L * z, 5);
        EXPECT_TRUE(std::fabs(p[0] - row[z]) <= Tol_m && std::fabs(p[2] - row[z]) <= Tol_m) << z << " " << p[0] << " " << row[z];
    }
    // G11 (IIR-A) and G14 on the day; G14's calibration ends on 2020-07-27.
    // A GPS antenna's phase centre lies 0.5 to 3 m off the centre of mass.
    ASSERT_TRUE(a.SetSatellite(11, Day(2020, 6, 25, 12)) && a.IsBlockIIR());
    EXPECT_TRUE(Off(a, 0).u > 0.5L && Off(a, 0).u < 3.0L) << Off(a, 0).u;
    antexns::PrintWarns = 0;
    EXPECT_TRUE(a.SetSatellite(14, Day(2020, 7, 27, 23, 59, 59)) && !a.SetSatellite(14, Day(2020, 7, 28)) && a.SetSatellite(101, Day(2020, 6, 25)));
    antexns::PrintWarns = 1;
}
