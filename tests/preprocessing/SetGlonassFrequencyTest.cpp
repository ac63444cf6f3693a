// GLONASS carriers from a frequency channel file (-gf) or the GLONASS
// navigation file: every satellite's wavelengths follow the channel of its
// slot, checked against the list of the data set and the ICD.
#include "observations/GLONASSc.h"
#include "preprocessing/StagingSupport.h"

#include <set>

using namespace stagingtest;

namespace {

// 1e-15 m: a wavelength of 0.19-0.25 m carries a long double round-off of
// about 1e-20 m per operation; a channel off by one moves it by 7e-5 m.
constexpr long double WaveTol_m = 1e-15L;

// Slot -> channel from the "Rnn k" list of the data set, read here.
std::map<int, int> ChannelList()
{
    std::ifstream in(orvotest::Data(kSet + "esbc1770.20o.glofrq"));
    std::map<int, int> m;
    std::string sat;
    for (int k = 0; in >> sat >> k;) m[std::atoi(sat.c_str() + 1)] = k;
    return m;
}

// The channel file without R02 and, with lateR08, R08 valid only from
// 00:00:30, after the first epoch at midnight which decides.
std::string PartialChannels(bool lateR08)
{
    return EditFile(Channels(), lateR08 ? "partial.glnfc" : "noR02.glnfc", [&](std::string& l) {
        if (lateR08 && l.compare(0, 3, "R08") == 0) l.replace(24, 7, "00 30.0");
        return l.compare(0, 3, "R02") != 0;
    });
}

// The navigation file without the records of slot 2: a GLONASS record is
// an epoch line with the slot in columns 1-2, and three lines that start
// with at least three blanks.
std::string NavWithoutR02()
{
    bool header = true;
    int skip = 0;
    return EditFile(Nav(), "noR02.20g", [&](std::string& l) {
        if (header) return header = !Has(l, "END OF HEADER"), true;
        if (l.size() > 2 && l.compare(0, 3, "   ") != 0) skip = std::atoi(l.substr(0, 2).c_str()) == 2 ? 4 : 0;
        return skip == 0 || skip-- == 0;
    });
}

const std::string kFromChannels = "GLONASS FREQUENCY CHANNEL FILE", kFromNav = "GLONASS BROADCAST EPHEMERIS FILE";

}  // namespace

TEST(SetGlonassFrequency, WavelengthsFollowTheChannelOfEverySlotOrChannelZero)
{
    const std::map<int, int> list = ChannelList();
    const struct {
        const char* what;
        std::string channels, nav;
        bool orbits;               // through the whole correction stage
        std::set<int> zero;        // slots that fall back to channel 0
        bool allZero;              // a channel source flagged that lists no satellite
        const std::string* source;  // named in the fallback warning
    } rows[] = {
        {"channel file", Channels(), "", true, {}, false, &kFromChannels},
        {"slot missing or not yet valid", PartialChannels(true), "", false, {2, 8}, false, &kFromChannels},
        {"navigation file", "", Nav(), false, {}, false, &kFromNav},
        // Given both, the channel file alone decides: R02 (-4 in the
        // navigation file) falls back with the channel file's warning.
        {"channel file wins", PartialChannels(false), Nav(), false, {2}, false, &kFromChannels},
        {"slot missing from navigation", "", NavWithoutR02(), false, {2}, false, &kFromNav},
        {"empty channel source", "", "", false, {}, true, &kFromChannels},
    };
    for (const auto& r : rows) {
        for (long s = 0; s < GLONASSc::NSlots; ++s)  // a row left untouched shows
            for (long j = 0; j < 2; ++j) GLONASSc::freq(s, j) = GLONASSc::lamb(s, j) = 0.0L;
        Context c;
        Options o;
        o.obs = CutObs("glonass.20o", 0, 1);
        std::tie(o.gal, o.gln, o.channels, o.nav, o.upTo) = std::make_tuple(false, true, r.channels, r.nav, r.orbits ? 2 : 0);
        o.clk = r.orbits ? CutClk("glonass.clk", 0, 30) : "";
        o.sp3 = r.orbits ? o.sp3 : "";
        std::string err, out = Stage(c, o, &err);
        if (!r.orbits) {
            c.gc.isGLNfrch = c.gc.isGLNfrch || r.allZero;
            Capture co(std::cout), ce(std::cerr);
            SetGlonassFrequency(c.gc);
            out = co.Text();
            err = ce.Text();
        }
        int nGlonass = 0;
        for (long i = 0; i < c.rnxd.GetNSat(); ++i) {
            const short prn = c.rnxd.GetSat(i);
            if (!IsGlonass(prn)) continue;
            ++nGlonass;
            const int slot = prn - 100;
            const bool zero = r.allZero || r.zero.count(slot) > 0;
            const long double k = zero ? 0 : list.at(slot);
            // GLONASS ICD 5.1: G1 = 1602 + 0.5625 k MHz, G2 = 1246 + 0.4375 k MHz.
            EXPECT_NEAR_LD(GLONASSc::lamb(slot - 1, 0), C / (1602.0e6L + 0.5625e6L * k), WaveTol_m) << r.what << slot;
            EXPECT_NEAR_LD(GLONASSc::lamb(slot - 1, 1), C / (1246.0e6L + 0.4375e6L * k), WaveTol_m) << r.what << slot;
            char line[64], warn[160];
            std::snprintf(line, sizeof line, "    Satellite:  R%02d    f. channel: %5.1f", slot, static_cast<double>(k));
            std::snprintf(warn, sizeof warn, "GLONASS SATELLITE %3d NOT LISTED IN %s - USING FREQ. CHANNEL k = 0!", prn, r.source->c_str());
            EXPECT_TRUE(Has(out, zero ? std::string(line, 34) + "  NOT FOUND -> SETTING TO 0.0" : line)) << r.what << line;
            EXPECT_EQ(Has(err, warn), zero) << r.what << warn;
        }
        EXPECT_EQ(nGlonass, 10) << r.what;  // R01 R02 R08 ... R19 of the first epoch line
        EXPECT_EQ(err.find(r.source == &kFromNav ? kFromChannels : kFromNav), std::string::npos) << r.what;
        long ok = 0;  // with orbits GLONASS is modelled as well: some of its records are usable
        for (long k = 0; k < c.rnxd.GetNObs(); ++k) ok += IsGlonass(c.rnxd.sat(k)) && r.orbits && c.gc.OKSAT(k);
        EXPECT_EQ(ok > 0, r.orbits);
    }
}

// Without -gf and -er the GLONASS SLOT / FRQ # records of the header (a
// RINEX 3 file's, carried into its translation) give the channels.
TEST(SetGlonassFrequency, ChannelsOfTheObservationHeaderServeWithoutFileOrNavigation)
{
    const std::map<int, int> list = ChannelList();
    std::string records, data = std::to_string(list.size());
    data.insert(0, 3 - data.size(), ' ');
    for (const auto& [slot, k] : list) {  // eight entries a line, as RINEX 3 writes them
        if (data.size() == 59) records += data + " GLONASS SLOT / FRQ #\n", data = "   ";
        char e[8];
        std::snprintf(e, sizeof e, " R%02d %2d", slot, k);
        data += e;
    }
    records += data + std::string(60 - data.size(), ' ') + "GLONASS SLOT / FRQ #";
    for (long s = 0; s < GLONASSc::NSlots; ++s)  // a row left untouched shows
        for (long j = 0; j < 2; ++j) GLONASSc::freq(s, j) = GLONASSc::lamb(s, j) = 0.0L;
    Context c;
    Options o;
    o.obs = CutObs("header.20o", 0, 1, KeepAll, "GLONASS slot/frequency numbers in .glofrq side file         COMMENT", records);
    std::tie(o.gal, o.gln, o.upTo) = std::make_tuple(false, true, 0);
    Stage(c, o);
    Capture co(std::cout);
    SetGlonassFrequency(c.gc);
    EXPECT_TRUE(Has(co.Text(), "Channels from the OBSERVATION FILE HEADER (GLONASS SLOT / FRQ #)")) << co.Text();
    int nGlonass = 0;
    for (long i = 0; i < c.rnxd.GetNSat(); ++i) {
        const short prn = c.rnxd.GetSat(i);
        if (!IsGlonass(prn)) continue;
        ++nGlonass;
        const long double k = list.at(prn - 100);
        EXPECT_NEAR_LD(GLONASSc::lamb(prn - 101, 0), C / (1602.0e6L + 0.5625e6L * k), WaveTol_m) << prn;
        EXPECT_NEAR_LD(GLONASSc::lamb(prn - 101, 1), C / (1246.0e6L + 0.4375e6L * k), WaveTol_m) << prn;
    }
    EXPECT_EQ(nGlonass, 10);
}

TEST(SetGlonassFrequency, NothingWithoutGlonassOrWithoutASource)
{
    for (const bool gln : {false, true}) {
        Context c;
        c.gc.isGLN = gln;
        c.gc.isGLNfrch = !gln;
        Capture o(std::cout);
        SetGlonassFrequency(c.gc);
        EXPECT_TRUE(o.Text().empty());
    }
}
