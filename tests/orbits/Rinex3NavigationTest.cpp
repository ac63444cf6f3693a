// RINEX 3 and 4 navigation files: the station's mixed RINEX 3.05 file (gzip)
// against the RINEX 2 files converted from it, against itself rewritten as
// RINEX 4.00, and its Galileo orbits against the precise orbits of the day;
// broken variants cut from it.
#include <iostream>
#include <set>

#include "OrbitsSupport.h"
#include "numerics/InputFile.h"
#include "orbits/GLNbEph.h"
#include "orbits/GPSbEph.h"
#include "orbits/Rinex3Navigation.h"

using namespace orbtest;

namespace {

// Both formats print the same 12 decimals; the RINEX 2 GLONASS reader
// scales its mantissa by a power of ten, a few long double steps (1e-19)
// away from the direct conversion.
constexpr long double SameDigitsRel = 1e-18L;
// Broadcast against precise orbit: the Galileo SIS ICD's signal-in-space
// error is well below a metre for orbits, and the broadcast orbit is the
// antenna phase centre while SP3 is the centre of mass: 0.6-0.8 m apart
// along the radius for the Galileo FOC satellites, inside the bound. A
// record taken at the wrong epoch or message type costs tens of metres.
// A Galileo record is a prediction from its epoch on (sent every 10 min):
// compared from 5 min before it (where the next record is the nearer) to
// 2 h after; run backwards over 2 h the same records are 16 m off.
constexpr long double GalileoRms_m = 2.0L, Window_s = 7200.0L, Before_s = 300.0L;

const std::string& Mixed() { static const std::string t = ReadInputFile(kMixedNav, "test"); return t; }
const std::vector<std::string>& MixedLines()
{
    static const std::vector<std::string> l = [] { std::vector<std::string> v; std::istringstream in(Mixed()); for (std::string s; std::getline(in, s);) v.push_back(s); return v; }();
    return l;
}

template <class T> T& Read(const std::string& path, char sys = 'G')
{
    static std::map<std::string, std::unique_ptr<T>> r; std::unique_ptr<T>& p = r[path + sys];
    if (!p) { p = std::make_unique<T>(); p->SetFile(path.c_str()); if constexpr (std::is_same_v<T, GPSbEph>) p->SetSystem(sys); p->ReadFile(); }
    return *p;
}

// The mixed file as RINEX 4.00: version, no ionosphere or time lines in the
// header, a record line before each record (Galileo's message type from its
// data sources), and ION, STO and GPS CNAV records to be passed over.
std::string AsRinex4()
{
    const std::vector<std::string>& l = MixedLines();
    std::string out = "     4.00" + l[0].substr(9) + "\n", body;
    std::size_t i = 1;
    for (; l[i].find("END OF HEADER") == std::string::npos; ++i) if (l[i].find(" CORR ") == std::string::npos) out += l[i] + "\n";
    out += l[i] + "\n> ION G29 LNAV\n    2022 06 08 09 59 48 1.024454832077E-08 2.235174179077E-08-5.960464477539E-08\n"
                  "    -1.192092895508E-07 9.625600000000E+04\n> STO G26 LNAV\n    2022 06 10 19 56 48 GPUT\n";
    for (++i; i < l.size(); ++i) {
        if (l[i][0] == ' ') { body += l[i] + "\n"; continue; }
        const long ds = l[i][0] == 'E' ? std::lround(std::strtold(l[i + 5].substr(23, 19).c_str(), nullptr)) : 0;
        const std::map<char, std::string> type = {{'G', "LNAV"}, {'R', "FDMA"}, {'E', (ds & 2) && !(ds & 5) ? "FNAV" : "INAV"}, {'S', "SBAS"}, {'C', "D1"}, {'J', "LNAV"}};
        if (l[i][0] == 'G') body += "> EPH " + l[i].substr(0, 3) + " CNAV\n" + l[i] + "\n";  // skipped: nonsense as LNAV
        body += "> EPH " + l[i].substr(0, 3) + " " + type.at(l[i][0]) + "\n" + l[i] + "\n";
    }
    return out + body;
}

}  // namespace

// The records of b equal those of a: satellites, epochs and values.
template <class D> void ExpectSameRecords(const D& a, const D& b, int cols)
{
    ASSERT_EQ(b.nsatall, a.nsatall);
    for (long i = 0; i < static_cast<long>(a.nsatall); ++i) {
        ASSERT_EQ(b.sat(i), a.sat(i)) << i;
        EXPECT_NEAR_LD(b.mjdo(i) - a.mjdo(i), 0.0L, 1e-9L) << i;
        for (int j = 0; j < cols; ++j) EXPECT_NEAR_LD(b.data(i, j), a.data(i, j), SameDigitsRel * std::fabs(a.data(i, j))) << i << " " << j;
    }
}

TEST(Rinex3Navigation, RecordsEqualTheRinex2ConversionAndTheRinex4Rewrite)
{
    const std::string v4 = WriteTemp("mixed4.rnx", AsRinex4());
    ExpectSameRecords(Read<GPSbEph>(kGpsNav).GetData(), Read<GPSbEph>(kMixedNav).GetData(), 28);
    ExpectSameRecords(Read<GLNbEph>(kNav).GetData(), Read<GLNbEph>(kMixedNav).GetData(), 15);
    ExpectSameRecords(Read<GPSbEph>(kMixedNav).GetData(), Read<GPSbEph>(v4).GetData(), 28);
    ExpectSameRecords(Read<GLNbEph>(kMixedNav).GetData(), Read<GLNbEph>(v4).GetData(), 15);
    ExpectSameRecords(Read<GPSbEph>(kMixedNav, 'E').GetData(), Read<GPSbEph>(v4, 'E').GetData(), 28);
    // RINEX 3 header lines GPSA, GPSB and GPUT against ION ALPHA, BETA and DELTA-UTC.
    const GPSbEphHeader &h2 = Read<GPSbEph>(kGpsNav).GetHeader(), &h3 = Read<GPSbEph>(kMixedNav).GetHeader();
    for (int k = 0; k < 4; ++k) {
        EXPECT_NEAR_LD(h3.alfa[k], h2.alfa[k], SameDigitsRel * std::fabs(h2.alfa[k]));
        EXPECT_NEAR_LD(h3.beta[k], h2.beta[k], SameDigitsRel * std::fabs(h2.beta[k]));
    }
    EXPECT_NEAR_LD(h3.a0, h2.a0, SameDigitsRel * h2.a0);
    EXPECT_NEAR_LD(h3.a1, h2.a1, SameDigitsRel * h2.a1);
    EXPECT_TRUE(h3.T == h2.T && h3.W == h2.W && h3.leaps == h2.leaps);
}

TEST(Rinex3Navigation, GalileoTakesINavAndFnavOnlyWhereNoINavIsNear)
{
    // Galileo records of the raw text: satellite and data sources. The
    // file sends every orbit in both messages, so F/NAV is kept only once a
    // satellite's I/NAV records are taken out (all of E01's here).
    const std::vector<std::string>& l = MixedLines();
    std::string noE01Inav;
    std::map<std::string, long> inav, fnav;
    for (std::size_t i = 0; i < l.size(); ++i) {
        const bool e = l[i][0] == 'E' && i + 5 < l.size();
        const long ds = e ? std::lround(std::strtold(l[i + 5].substr(23, 19).c_str(), nullptr)) : 0;
        if (e) ++(ds == 258 ? fnav : inav)[l[i].substr(0, 3)];
        if (e && ds == 517 && l[i].compare(0, 3, "E01") == 0) i += 7; else noE01Inav += l[i] + "\n";
    }
    const struct { std::string path; long e01, e01Source, others; } cases[] = {
        {kMixedNav, inav["E01"], 517, 0}, {WriteTemp("noE01inav.rnx", noE01Inav), fnav["E01"], 258, 0}};
    for (const auto& c : cases) {
        const GPSbEphData& d = Read<GPSbEph>(c.path, 'E').GetData();
        long e01 = 0, others = 0;
        for (long i = 0; i < static_cast<long>(d.nsatall); ++i) {
            const long ds = std::lround(d.data(i, GPSbEphData::CODL2));
            if (d.sat(i) == 201) { ++e01; EXPECT_EQ(ds, c.e01Source); } else { ++others; EXPECT_EQ(ds, 517); }
        }
        long inavOthers = 0; for (const auto& k : inav) inavOthers += k.first == "E01" ? 0 : k.second;
        EXPECT_EQ(e01, c.e01) << c.path;
        EXPECT_EQ(others, inavOthers) << c.path;
    }
}

TEST(Rinex3Navigation, GalileoOrbitsMeetThePreciseOrbitsPerSatellite)
{
    GPSbEph& nav = Read<GPSbEph>(kMixedNav, 'E');
    GNSSpEph& sp3 = Shared<GNSSpEph>(kSp3);
    const matrix<short>& sats = nav.GetSatList();
    long compared = 0;
    for (long k = 0; k < sats.NRow(); ++k) {
        const short s = sats(k); Spread pos;
        for (long e = 0; e < sp3.GetNEpoch(); ++e) {
            mjd t = sp3.GetMJD(e); xyzt p, ps, vs;
            const long ix = nav.GetDataIndex(s, t);
            if (t - nav.GetMJD(ix) < -Before_s || t - nav.GetMJD(ix) > Window_s || nav.GetData().data(ix, GPSbEphData::SVHEALTH) != 0.0L) continue;
            sp3.CalcSatPosition(static_cast<unsigned short>(s), t, ps, vs);
            if (!sp3.PSisOK) continue;
            nav.CalcSatPosition(static_cast<unsigned short>(s), t, t, p, nullptr, 0, 0);
            pos.Add(Dist(p, ps));
        }
        compared += pos.n;
        EXPECT_LT(pos.Rms(), GalileoRms_m) << SatName(s) << " " << pos.n << " epochs, max " << pos.max;
    }
    EXPECT_GT(compared, 1000);  // 24 satellites, each over a third or more of the 96 epochs
}

TEST(Rinex3NavigationDeath, BrokenFilesStopWithFileAndLine)
{
    const std::vector<std::string>& l = MixedLines();
    std::size_t head = 0, g01 = 0, r01 = 0;
    while (l[head].find("END OF HEADER") == std::string::npos) ++head;
    while (l[g01].compare(0, 3, "G01") != 0) ++g01;
    while (l[r01].compare(0, 3, "R01") != 0) ++r01;
    // The header and the first G01 and R01 records, line n (0-based) over
    // written at col by text, or cut after `keep` lines.
    auto file = [&](std::size_t n, std::size_t col, const std::string& text, std::size_t keep = std::string::npos) {
        std::vector<std::string> c(l.begin(), l.begin() + static_cast<long>(head) + 1);
        for (std::size_t k = g01; k < g01 + 8; ++k) c.push_back(l[k]);
        for (std::size_t k = r01; k < r01 + 5; ++k) c.push_back(l[k]);
        if (n < c.size()) c[n].replace(col, text.size(), text);
        c.resize(std::min(c.size(), keep));
        static int made = 0;
        return WriteTemp("broken" + std::to_string(++made) + ".rnx", Join(c));
    };
    const std::size_t g = head + 1, r = head + 9;  // the records' first lines
    const std::string at = "Error -> .*broken[0-9]+.rnx: ";
    const struct { std::string path; bool glonass; std::string error; } cases[] = {
        {file(0, 5, "3.01"), false, at + "RINEX 3.01 NAVIGATION FILE - ONLY VERSIONS 3.02-3.05 AND 4.00 CAN BE READ!"},
        {file(0, 20, "O"), false, at + "RINEX 3.05 FILE OF TYPE \"OAVIGATION DATA\" - NOT A NAVIGATION FILE!"},
        {file(head, 60, "END OF HEADRR"), false, at + "NO END OF HEADER IN THE NAVIGATION FILE!"},
        {file(r, 0, "X"), false, at + "LINE " + std::to_string(r + 1) + ": LINE NEITHER STARTS NOR CONTINUES A RECORD!"},
        {file(0, 0, "", g + 5), false, at + "LINE " + std::to_string(g + 1) + ": RECORD \"G01 2020 06 25\" IS CUT: 5 OF 8 LINES!"},
        {file(r + 2, 30, "x"), true, at + "LINE " + std::to_string(r + 3) + ": FIELD \"2.7958x5522156e\\+00\" IS NOT A NUMBER!"},
        {file(g, 9, "13"), false, at + "LINE " + std::to_string(g + 1) + ": SATELLITE OR EPOCH \"G01 2020 13 25 04 00 00\" NOT VALID!"},
        {file(0, 0, "", r), true, at + "NO GLONASS FDMA RECORDS IN THE NAVIGATION FILE!"},
        {file(r + 1, 4, " 2.701000000000e+04"), true, at + "LINE " + std::to_string(r + 1) + ": X OUTSIDE THE RANGE OF THE GLONASS ICD!"}};
    for (const auto& c : cases)
        EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); c.glonass ? (void)Load<GLNbEph>(c.path) : (void)Load<GPSbEph>(c.path); },
                    ::testing::ExitedWithCode(1), c.error) << c.error;
}
