// Ionosphere models: the broadcast coefficients of the ESBC navigation
// header, CODE's global maps of 2015-08-23 (read back against the file's
// own numbers) and small made-up Meskal series.
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>

#include "DelaysSupport.h"
#include "delays/IONEX.h"
#include "delays/IonKlobuchar.h"
#include "delays/TEC.h"
#include "delays/myIono.h"

using namespace deltest;
using orvotest::FirstLines;

namespace {

constexpr long double C_mps = 299792458.0L;
// Delays of a few metres computed by the same formula in a handful of long
// double operations agree to about 1e-18 m; 1 pm leaves a margin of a
// million and is still a billion times below the millimetre that matters.
constexpr long double Tol_m = 1e-12L;
// Decimal nanoseconds of the bias block scaled by 1e-9: round-off near
// 1e-27 s; 1e-21 s is a millionth of the file's last digit.
constexpr long double DcbTol_s = 1e-21L;

const std::string kNav = orvotest::Data("esbc-2020-177/esbc1770.20n");
const std::string kIonex = orvotest::Data("zimm-2015-235/corg2350.15i");

// ION ALPHA and ION BETA as printed in the header of esbc1770.20n.
const long double kAlfa[4] = {4.6566e-9L, 1.4901e-8L, -5.9605e-8L, -1.1921e-7L};
const long double kBeta[4] = {8.1920e4L, 9.8304e4L, -6.5536e4L, -5.2429e5L};

IonKlobuchar ReadKlob(const std::string& path) { IonKlobuchar k; std::ifstream in(path); in >> k; return k; }
IONEX& Maps() { static IONEX* x = nullptr; return x ? *x : (Read(*(x = new IONEX), kIonex), *x); }

// Obliquity factor of the broadcast model for elevation e (deg).
long double SF(long double e) { const long double d = 0.53L - e / 180.0L; return 1.0L + 16.0L * d * d * d; }

// Number of the file at TEC or RMS map m (1-based), latitude lat and
// longitude lon (deg), taken from its text by position in the 16I5 rows.
long double FileNumber(const std::string& kind, int m, long double lat, long double lon)
{
    std::ifstream in(kIonex);
    std::string line;
    int map = 0;
    while (std::getline(in, line)) {
        if (line.find("START OF " + kind + " MAP") != std::string::npos) map = std::atoi(line.c_str());
        if (map != m || line.find("LAT/LON1") == std::string::npos || std::fabs(std::atof(line.substr(0, 8).c_str()) - lat) > 1e-6) continue;
        const long col = std::lround((lon + 180.0L) / 5.0L);
        for (long k = 0; k <= col / 16; ++k) std::getline(in, line);
        return std::atoi(line.substr(col % 16 * 5, 5).c_str());
    }
    ADD_FAILURE() << kind << " map " << m << " has no row " << (double)lat;
    return 0;
}
// The file's TEC value in metres on L1: 0.1 TECU per unit (EXPONENT -1).
long double FileDelay(int m, long double lat, long double lon) { return FileNumber("TEC", m, lat, lon) * 0.1L * 0.16237244751199470L; }

long double DelayOf(IONEX& x, long double secd, long double beta, long double la, long double elev = 90, int type = 1, int unit = 0, int tecv = 0)
{
    return x.CalcIonDelay(secd, beta, la, elev, unit, type, tecv);
}
long double Delay(long double secd, long double beta, long double la, long double elev = 90, int type = 1, int unit = 0, int tecv = 0)
{
    return DelayOf(Maps(), secd, beta, la, elev, type, unit, tecv);
}

}  // namespace

TEST(IonKlobuchar, ReadsTheNavigationHeaderAndCutLinesAsZero)
{
    const IonKlobuchar k = ReadKlob(kNav);
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR_LD(k.alfa[i] / kAlfa[i], 1.0L, 1e-15L) << i;
        EXPECT_NEAR_LD(k.beta[i] / kBeta[i], 1.0L, 1e-15L) << i;
    }
    EXPECT_EQ(k.leaps, 18);
    EXPECT_EQ(k.W, 2111);
    EXPECT_STREQ(k.type, "N: GPS NAV DATA");
    // Lines cut before their numbers: every field beyond the end reads 0.
    const std::string cut = orvotest::WriteTemp("cut.20n", FirstLines(kNav, 1) + "ION ALPHA\n    4.6566D-09  1.49ION BETA\n" + std::string(60, ' ') + "END OF HEADER\n");
    const IonKlobuchar c = ReadKlob(cut);
    EXPECT_NEAR_LD(c.alfa[0], 0.0L, 1e-30L);
    EXPECT_NEAR_LD(c.beta[0], 4.6566e-9L, 1e-24L);
    EXPECT_NEAR_LD(c.beta[2], 0.0L, 1e-30L);
}

TEST(IonKlobuchar, NightDelayIsTheConstantTimesTheObliquityFactor)
{
    // Azimuth 0 keeps the pierce point on the site's meridian; local
    // midnight lies far beyond the 1.57 rad of the daytime cosine.
    const IonKlobuchar k = ReadKlob(kNav);
    for (long double fi : {46.877L, 0.0L, -33.9L, 80.0L})
        for (long double e : {90.0L, 60.0L, 30.0L, 10.0L, 5.0L})
            EXPECT_NEAR_LD(k.CalcIonDelay(fi, 0.0L, e, 0.0L, 0.0L), 5e-9L * C_mps * SF(e), Tol_m) << (double)fi << " " << (double)e;
    EXPECT_NEAR_LD(SF(90.0L), 1.000432L, 1e-15L);
}

TEST(IonKlobuchar, AfternoonPeakIsConstantPlusAmplitude)
{
    // Zenith, azimuth 0: the pierce point lies EA semicircles north of the
    // site (IS-GPS-200 fig. 20-4); local time 14:00 makes the cosine term 1.
    // A made-up amplitude growing with the square of the latitude makes the
    // pierce point's hold at 0.416 semicircles show (the file's is 0 there).
    IonKlobuchar k = ReadKlob(kNav), q = k;
    q.alfa[0] = q.alfa[1] = q.alfa[3] = 0.0L, q.alfa[2] = 3e-8L;
    const long double ea = 0.0137L / (0.5L + 0.11L) - 0.022L;
    struct Case { long double fi, la, sod; } cases[] = {{46.877L, 21.06L, 50400.0L - 43200.0L * 0.117L}, {0.0L, 180.0L, 7200.0L},
        {-33.9L, -90.0L, 72000.0L}, {75.0L, 7.465L, 50400.0L - 43200.0L * 7.465L / 180.0L}, {-80.0L, -90.0L, 72000.0L}};
    for (const IonKlobuchar* m : {&k, &q})
        for (const Case& c : cases) {
            const long double fi1 = std::min(0.416L, std::max(-0.416L, c.fi / 180.0L + ea));
            const long double fim = fi1 + 0.064L * std::cos(Pi * (c.la / 180.0L - 1.617L));
            const long double* al = m->alfa;
            const long double a = std::max(0.0L, al[0] + al[1] * fim + al[2] * fim * fim + al[3] * fim * fim * fim);
            EXPECT_NEAR_LD(m->CalcIonDelay(c.fi, c.la, 90.0L, 0.0L, c.sod), SF(90.0L) * (5e-9L + a) * C_mps, Tol_m) << (double)c.fi;
        }
    // On the date line the local time wraps into the day from either side.
    for (long double sod : {7199.0L, 86399.0L}) {
        const long double east = k.CalcIonDelay(10.0L, 180.0L, 90.0L, 0.0L, sod);
        EXPECT_NEAR_LD(east, k.CalcIonDelay(10.0L, -180.0L, 90.0L, 0.0L, sod), Tol_m);
        EXPECT_GT(east, 5e-9L * C_mps * SF(90.0L) + 0.1L);
    }
}

TEST(IonKlobucharDeath, ForeignOrCutHeaderStops)
{
    std::string obs = FirstLines(kNav, 8);
    obs.replace(obs.find("N: GPS NAV DATA"), 15, "O: OBSERVATION ");
    const std::string foreign = orvotest::WriteTemp("foreign.20n", obs), cut = orvotest::WriteTemp("cuthead.20n", FirstLines(kNav, 5));
    EXPECT_EXIT(ReadKlob(foreign), ::testing::ExitedWithCode(1), "\\*\\*\\*\\* Klobuchar iono: Error -> FILE VERSION IS NOT \"NAVIGATION DATA\"!!");
    EXPECT_EXIT(ReadKlob(cut), ::testing::ExitedWithCode(1), "Klobuchar iono: Error -> NAVIGATION FILE HEADER ENDS BEFORE");
}

TEST(IONEX, ReadsHeaderMapsAndBiases)
{
    IONEX& x = Maps();
    EXPECT_EQ(x.GetNMaps(), 25);
    EXPECT_EQ(x.GetNSat(), 55);
    EXPECT_EQ(x.Header().nStats, 210);
    EXPECT_TRUE(x.Data().nhgt == 1 && x.Data().nlat == 71 && x.Data().nlon == 73 && x.Data().hasRMS);
    EXPECT_NEAR_LD(x.Data().EPH(24) - x.Data().EPH(0), 86400.0L, 1e-9L);
    // Biases as printed in the file (ns); G10 and Galileo are not listed.
    struct Case { short sat; long double dcb; } cases[] = {{1, -7.720e-9L}, {32, -2.085e-9L}, {101, -5.460e-9L}, {124, 6.246e-9L}, {10, 0}, {201, 0}, {-3, 0}};
    for (Case c : cases) {
        EXPECT_NEAR_LD(x.GetDCB(c.sat), c.dcb, DcbTol_s) << c.sat;
        if (c.sat < 0) continue;
        unsigned short u = static_cast<unsigned short>(c.sat);
        EXPECT_NEAR_LD(x.GetDCB(u), c.dcb, DcbTol_s) << c.sat;
    }
}

TEST(IONEX, NodeAtMapEpochIsTheFileNumberInEveryUnitAndType)
{
    // 40.3e16 / f1^2 (Schaer et al. 1998) is the factor the maps use; the
    // 17-digit quote is cut, not rounded: up to 2e-16 of the value.
    const long double f1 = 1575.42e6L;
    EXPECT_NEAR_LD(0.16237244751199470L / (40.3e16L / (f1 * f1)), 1.0L, 2e-16L);
    struct Node { int map; long double lat, lon; } nodes[] = {{1, 87.5L, -180.0L}, {1, -87.5L, 180.0L}, {13, 47.5L, 5.0L}, {25, 0.0L, 0.0L}, {7, -25.0L, 175.0L}, {25, 87.5L, 180.0L}};
    for (const Node& n : nodes) {
        const long double secd = (n.map - 1) * 3600.0L, tec = FileNumber("TEC", n.map, n.lat, n.lon) * 0.1L;
        EXPECT_NEAR_LD(Delay(secd, n.lat, n.lon), FileDelay(n.map, n.lat, n.lon), Tol_m) << n.map << " " << (double)n.lat;
        EXPECT_NEAR_LD(Delay(secd, n.lat, n.lon, 90, 0), FileDelay(n.map, n.lat, n.lon), Tol_m);
        EXPECT_NEAR_LD(Delay(secd, n.lat, n.lon, 90, 1, 1), tec, Tol_m);
        EXPECT_NEAR_LD(Delay(secd, n.lat, n.lon, 90, 1, 0, 1), FileNumber("RMS", n.map, n.lat, n.lon) * 0.1L * 0.16237244751199470L, Tol_m);
    }
}

TEST(IONEX, InterpolatesBilinearlyInSpaceAndLinearlyInTime)
{
    // Each case names its cell and fractions by hand: the lower map (1-based)
    // and dsec, the lower latitude and longitude nodes and their fractions,
    // and the node that the nearest-value type must pick.
    struct Case { long double secd, beta, la; int m; long double dsec, lat, db, lon, dl; int nm; long double nlat, nlon; } cases[] = {
        {45000, 46.8771L, 7.465L, 13, 0.5L, 45.0L, 1.8771L / 2.5L, 5.0L, 2.465L / 5, 14, 47.5L, 5.0L},
        {19800, -61.3L, -123.4L, 6, 0.5L, -62.5L, 1.2L / 2.5L, -125.0L, 1.6L / 5, 7, -62.5L, -125.0L},
        {18900, -61.3L, -122.4L, 6, 0.25L, -62.5L, 1.2L / 2.5L, -125.0L, 2.6L / 5, 6, -62.5L, -120.0L},
        {-1800, -10.0L, -180.0L, 1, -0.5L, -10.0L, 0, -180.0L, 0, 1, -10.0L, -180.0L},     // before the first map
        {86400, 87.5L, 180.0L, 24, 1, 85.0L, 1, 175.0L, 1, 25, 87.5L, 180.0L}};             // last map, north and east ends
    for (const Case& c : cases) {
        auto map = [&c](int m) {
            return FileDelay(m, c.lat, c.lon) * (1 - c.dl) * (1 - c.db) + FileDelay(m, c.lat, c.lon + 5) * c.dl * (1 - c.db)
                   + FileDelay(m, c.lat + 2.5L, c.lon) * (1 - c.dl) * c.db + FileDelay(m, c.lat + 2.5L, c.lon + 5) * c.dl * c.db;
        };
        EXPECT_NEAR_LD(Delay(c.secd, c.beta, c.la), (1 - c.dsec) * map(c.m) + c.dsec * map(c.m + 1), Tol_m) << (double)c.secd;
        EXPECT_NEAR_LD(Delay(c.secd, c.beta, c.la, 90, 0), FileDelay(c.nm, c.nlat, c.nlon), Tol_m) << (double)c.secd;
    }
}

TEST(IONEX, SlantDelayFollowsTheSingleLayerAt450km)
{
    const long double zenith = Delay(45000, 46.8771L, 7.465L);
    for (long double e : {60.0L, 30.0L, 10.0L, 0.0L}) {
        const long double sinz = std::cos(Rad(e)) * 6371.0L / 6821.0L;
        EXPECT_NEAR_LD(Delay(45000, 46.8771L, 7.465L, e) / zenith, 1.0L / std::sqrt(1.0L - sinz * sinz), 1e-15L) << (double)e;
    }
}

TEST(IONEX, Type2RotatesTheMapsWithTheSun)
{
    // Half-way between maps the Sun has turned 7.5 deg: the earlier map is
    // read 7.5 deg east, the later one 7.5 deg west, both on nodes here; the
    // last case wraps across the date line.
    struct Case { long double secd, lat, la; int m; long double lonA, lonB; } cases[] = {
        {45000, 47.5L, 7.5L, 13, 15.0L, 0.0L}, {1800, -20.0L, -97.5L, 1, -90.0L, -105.0L}, {84600, 0.0L, 177.5L, 24, -175.0L, 170.0L}};
    for (const Case& c : cases)
        EXPECT_NEAR_LD(Delay(c.secd, c.lat, c.la, 90, 2), 0.5L * FileDelay(c.m, c.lat, c.lonA) + 0.5L * FileDelay(c.m + 1, c.lat, c.lonB), Tol_m);
    // At a map epoch the rotation is nil; an unknown type warns and uses 2.
    EXPECT_NEAR_LD(Delay(43200, 47.5L, 7.5L, 90, 2), Delay(43200, 47.5L, 7.5L), Tol_m);
    long double secd = 45000, beta = 47.5L, la = 7.5L, elev = 90;
    int unit = 0, type = 7, tecv = 0;
    orvotest::Capture err(std::cerr);
    const long double v = Maps().CalcIonDelay(secd, beta, la, elev, unit, type, tecv);
    EXPECT_EQ(type, 2);
    EXPECT_NEAR_LD(v, Delay(45000, 47.5L, 7.5L, 90, 2), Tol_m);
    EXPECT_NE(err.Text().find("#### Orvo: Warning -> IONEX DELAY TYPE INCORRECT - USING TYPE 3!"), std::string::npos);
}

TEST(IONEXDeath, EpochOrPlaceOffTheMapsStops)
{
    Maps();
    struct Case { long double secd, beta, la; const char* re; } cases[] = {
        {-7200, 0, 0, "SECONDS OF DAY FOR IONOSPHERE DELAY INPROPER \\[iT1<-1\\]!"}, {90000, 0, 0, "SECONDS OF DAY FOR IONOSPHERE DELAY INPROPER \\[iT1\\]!"},
        {0, -95, 0, "LATITUDE FOR IONOSPHERE DELAY INPROPER \\[iB1<-1\\]!"}, {0, 92.6L, 0, "LATITUDE FOR IONOSPHERE DELAY INPROPER \\[iB1\\]!"},
        {0, 0, 185, "LONGITUDE FOR IONOSPHERE DELAY INPROPER \\[iL1\\]!"}, {0, 0, -185, "LONGITUDE FOR IONOSPHERE DELAY INPROPER \\[iL1\\]!"},
        {0, 0, 180.5L, "LONGITUDE FOR IONOSPHERE DELAY INPROPER \\[iL2\\]!"}};
    for (const Case& c : cases) EXPECT_EXIT(Delay(c.secd, c.beta, c.la), ::testing::ExitedWithCode(1), Framed(c.re)) << c.re;
}

TEST(IONEXDeath, MissingForeignOrCutFileStops)
{
    std::string obs = FirstLines(kIonex, 40);
    obs.replace(obs.find("IONOSPHERE MAPS"), 15, "OBSERVATION    ");
    std::string cutRow = FirstLines(kIonex, 400);
    cutRow.resize(cutRow.size() - 51);  // line 400 keeps 30 characters: 6 of its 16 values
    const std::string noRms = orvotest::WriteTemp("norms.15i", FirstLines(kIonex, 11059));
    struct Case { std::string path; const char* re; } cases[] = {
        {"/nonexistent/corg2350.15i", "IONEX file can not be opened \\[/nonexistent/corg2350.15i\\]!!!"},
        {orvotest::WriteTemp("type.15i", obs), "FILE VERSION IS NOT \"IONOSPHERE MAPS\"!!"}, {kNav, "FILE VERSION IS NOT \"IONOSPHERE MAPS\"!!"},
        {orvotest::WriteTemp("head.15i", FirstLines(kIonex, 300)), "IONEX FILE HEADER ENDS BEFORE \"END OF HEADER\"!!"},
        {orvotest::WriteTemp("map.15i", FirstLines(kIonex, 599)), "IONEX file \\[.*\\] line 599: file ends inside a map row"},
        {orvotest::WriteTemp("row.15i", cutRow), "IONEX file \\[.*\\] line 400: map row cut before value 39"}};
    for (const Case& c : cases) {
        EXPECT_EXIT({ IONEX x; Read(x, c.path); }, ::testing::ExitedWithCode(1), Framed(c.re)) << c.re;
    }
    // RMS maps are optional: the TEC maps serve alone, the RMS request stops.
    IONEX x;
    Read(x, noRms);
    EXPECT_NEAR_LD(DelayOf(x, 3600, 47.5L, 5.0L), FileDelay(2, 47.5L, 5.0L), Tol_m);
    EXPECT_EXIT(DelayOf(x, 3600, 47.5L, 5.0L, 90, 1, 0, 1), ::testing::ExitedWithCode(1), Framed("IONEX file \\[.*norms.15i\\] has no RMS maps"));
}

TEST(TEC, EveryIndexHasItsOwnElement)
{
    TEC t(2, 3, 4, 5, -1.0L);
    long k = 0;
    for (long e = 0; e < 2; ++e) for (long h = 0; h < 3; ++h) for (long b = 0; b < 4; ++b) for (long l = 0; l < 5; ++l) t(e, h, b, l) = k++;
    k = 0;
    const TEC copy = t;
    for (long e = 0; e < 2; ++e) for (long h = 0; h < 3; ++h) for (long b = 0; b < 4; ++b) for (long l = 0; l < 5; ++l, ++k)
        ASSERT_NEAR_LD(copy(e, h, b, l), k, 0.0L) << e << h << b << l;
}

TEST(TECDeath, IndexOffTheStoreStops)
{
    struct Case { long e, h, b, l; const char* re; } cases[] = {{2, 0, 0, 0, "Epoch index not in range"}, {0, 3, 0, 0, "Height index not in range"},
        {0, 0, -1, 0, "Latitude index not in range"}, {0, 0, 0, 5, "Longitude index not in range"}};
    TEC t(2, 3, 4, 5), unset;
    for (const Case& c : cases)
        EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); t(c.e, c.h, c.b, c.l); }, ::testing::ExitedWithCode(1), std::string("TEC::ERROR:.*Operator:   \\(\\)\n") + c.re + ".*Exiting program") << c.re;
    EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); unset(0, 0, 0, 0); }, ::testing::ExitedWithCode(1), "TEC::ERROR:.*TEC object is not set");
}

namespace {

// A Meskal series on MJD 57257: records at the given seconds, value 0.5 m
// plus 0.1 m per record, rate 0.2 m/h minus 0.05 m/h per record.
std::string Series(const char* type, std::initializer_list<long double> secs, const std::string& extra = "")
{
    std::string t = std::string(type) + "\n# day   sec     value         rms      rate            rate rms\n";
    int i = 0;
    for (long double s : secs) {
        char l[96];
        std::snprintf(l, sizeof l, "%-8d%-8.1f%-14.6f%-9.4f%-16.6f%.4f\n", 57257, (double)s, 0.5 + 0.1 * i, 0.01, 0.2 - 0.05 * i, 0.005);
        t += l, ++i;
    }
    return orvotest::WriteTemp(std::string(type).substr(0, 5) + ".ion", t + extra);
}
mjd At(long double sec) { mjd t(57257, 0.0L); t += sec; return t; }
const char* const kEarlyLin = "IONO INDEX SET TO ZERO \\(0\\) - INPUT EPOCH PRIOR TO FIRST IONO EPOCH \\(<900s\\)";
const char* const kLateLin = "IONO INDEX SET TO LAST \\(neph-1\\) - INPUT EPOCH LATER THAN LAST IONO EPOCH \\(>INTERVAL\\+900s\\)";
const char* const kEarlyEpo = "IONO INDEX SET TO ZERO \\(0\\) - INPUT EPOCH PRIOR TO FIRST IONO EPOCH \\(<3\\*INTERVALs\\)";
const char* const kLateEpo = "IONO INDEX SET TO LAST \\(neph-1\\) - INPUT EPOCH LATER THAN LAST IONO EPOCH \\(>3\\*INTERVALs\\)";

struct IonoCase { long double sec; long ix; const char* warn; };

// Every start index of the walking search gives the full search's record,
// warning and delay; value and rate as written by Series.
void CheckSeries(myIono& m, const std::vector<IonoCase>& cases, long double recSec(long), bool linear)
{
    for (const IonoCase& c : cases)
        for (long start : {-1L, 0L, 1L, 2L, 3L, 99L}) {
            mjd t = At(c.sec);
            orvotest::Capture err(std::cerr);
            if (start < 0) m.SetIonoIndex(t); else m.SetIonoIndex(t, start);
            long double d = -1;
            m.GetIonoDelay(t, d);
            EXPECT_EQ(m.GetIonoIndex(), c.ix) << (double)c.sec << " from " << start;
            const long double want = 0.5L + 0.1L * c.ix + (linear ? (0.2L - 0.05L * c.ix) * (c.sec - recSec(c.ix)) / 3600.0L : 0.0L);
            EXPECT_NEAR_LD(d, want, 1e-15L) << (double)c.sec;
            if (c.warn[0] == '\0') EXPECT_EQ(err.Text(), "") << (double)c.sec;
            else EXPECT_TRUE(testing::internal::RE::PartialMatch(err.Text(), std::string("Orvo: Warning -> ") + c.warn)) << err.Text();
        }
}

}  // namespace

TEST(myIono, LinearTakesTheLastRecordNotLaterAndItsRate)
{
    myIono m;
    Read(m, Series("LINEAR", {0, 3600, 7200, 9000}, "\n"));
    EXPECT_TRUE(m.GetType() == 0 && m.GetNEph() == 4);
    EXPECT_NEAR_LD(m.GetInterval(), 1800.0L, 1e-9L);
    // The last record ends 1800 s + 900 s of slack later.
    CheckSeries(m, {{1800, 0, ""}, {3600, 1, ""}, {8000, 2, ""}, {-900, 0, ""}, {-901, 0, kEarlyLin}, {11700, 3, ""}, {11701, 3, kLateLin}},
                [](long i) { const long double s[] = {0, 3600, 7200, 9000}; return s[i]; }, true);
}

TEST(myIono, EpochByEpochTakesTheNearestRecordTiesToTheLater)
{
    myIono m;
    Read(m, Series("EPOCH BY EPOCH", {0, 30, 60, 90}));
    EXPECT_TRUE(m.GetType() == 1 && m.GetNEph() == 4);
    CheckSeries(m, {{15, 1, ""}, {14.9L, 0, ""}, {30.05L, 1, ""}, {59.95L, 2, ""}, {75, 3, ""}, {-90, 0, ""}, {-91, 0, kEarlyEpo}, {180, 3, ""}, {181, 3, kLateEpo}},
                [](long i) { return 30.0L * i; }, false);
}

TEST(myIonoDeath, UnreadableCutOrDisorderedFileStops)
{
    std::string cut = orvotest::ReadFile(Series("LINEAR", {0, 3600}));
    cut.resize(cut.size() - 8);
    struct Case { std::string path; const char* re; } cases[] = {{"/nonexistent.ion", "myIONO FILE CAN NOT BE READ!"},
        {orvotest::WriteTemp("cut.ion", cut), "myIONO FILE .* line 4: record cut"}, {orvotest::WriteTemp("none.ion", "LINEAR\n# none\n"), "myIONO FILE .* line 1: no records"},
        {Series("LINEAR", {3600, 0}), "myIONO FILE .* line 4: epoch not later"}, {orvotest::WriteTemp("kind.ion", "QUADRATIC\n"), "myIONO FILE .* line 1: type is neither"}};
    for (const Case& c : cases) EXPECT_EXIT({ myIono m; Read(m, c.path); }, ::testing::ExitedWithCode(1), Framed(c.re)) << c.re;
}
