// GLONASS carriers after the correction stage with a frequency channel file
// (-gf): every satellite's wavelengths follow the channel of its slot.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <string>

#include "TestSupport.h"
#include "driver/ReadFiles.h"
#include "driver/SetFiles.h"
#include "observations/GLONASSc.h"
#include "preprocessing/ApplyCorrections.h"
#include "preprocessing/GetReceiverProperties.h"
#include "preprocessing/StagingSupport.h"
#include "numerics/NearLD.h"

using stagingtest::Capture;
using stagingtest::Context;
using stagingtest::CutObs;
using stagingtest::SetName;

namespace {

constexpr long double C = 299792458.0L;  // m/s
// 1e-15 m: a wavelength of 0.19-0.25 m carries a long double round-off of
// about 1e-20 m per operation; a channel off by one moves it by 7e-5 m.
constexpr long double WaveTol_m = 1e-15L;

const std::string kChannels = orvotest::Data("esbc-2020-177/esbc1770.20o.glnfc");

// Slot -> channel from the "Rnn k" list of the data set, read here.
std::map<int, int> ChannelList()
{
    std::ifstream in(orvotest::Data("esbc-2020-177/esbc1770.20o.glofrq"));
    std::map<int, int> m;
    std::string sat;
    int k = 0;
    while (in >> sat >> k) m[std::atoi(sat.c_str() + 1)] = k;
    return m;
}

// Zeroes the program-wide tables so that a row left untouched shows.
void ClearTables()
{
    for (long r = 0; r < GLONASSc::NSlots; ++r)
        for (long j = 0; j < 2; ++j) GLONASSc::freq(r, j) = GLONASSc::lamb(r, j) = 0.0L;
}

struct Staged {
    std::unique_ptr<Context> c = std::make_unique<Context>();
    std::string out, err;
};

// Two epochs of the real day with precise orbits and clocks, GPS and
// GLONASS, through the correction stage with the channel file `channels`.
Staged Stage(const std::string& channels)
{
    ClearTables();
    Staged s;
    gCPosC& g = s.c->gc;
    static const std::string obs = CutObs("glnfc-window.20o", 0, 2);
    SetName(g.rnxfile, obs);
    SetName(g.sp3file, stagingtest::Sp3());
    SetName(g.pclkfile, stagingtest::Clk());
    SetName(g.glnfreqch, channels);
    g.isRnx = g.isPEph = g.isPclk = g.isGLNfrch = true;
    g.isGPS = g.isGLN = true;
    Capture o(std::cout);
    Capture e(std::cerr);
    SetFiles(g);
    ReadFiles(g);
    GetReceiverProperties(g);
    ApplyCorrections(g);
    s.out = o.Text();
    s.err = e.Text();
    return s;
}

TEST(SetGlonassFrequency, WavelengthsFollowTheChannelOfEverySlot)
{
    const std::map<int, int> list = ChannelList();
    const Staged s = Stage(kChannels);
    int nGlonass = 0;
    for (long i = 0; i < s.c->rnxd.GetNSat(); ++i) {
        const short prn = s.c->rnxd.GetSat(i);
        if (prn <= 100 || prn > 199) continue;
        ++nGlonass;
        const int slot = prn - 100;
        ASSERT_EQ(list.count(slot), 1u) << slot;
        const long double k = list.at(slot);
        const long row = slot - 1;
        // GLONASS ICD 5.1: G1 = 1602 + 0.5625 k MHz, G2 = 1246 + 0.4375 k MHz.
        EXPECT_NEAR_LD(GLONASSc::lamb(row, 0), C / (1602.0e6L + 0.5625e6L * k), WaveTol_m) << slot;
        EXPECT_NEAR_LD(GLONASSc::lamb(row, 1), C / (1246.0e6L + 0.4375e6L * k), WaveTol_m) << slot;
        // Both carriers are multiples of the channel's own step: 9/7 for all.
        EXPECT_NEAR_LD(GLONASSc::lamb(row, 1) / GLONASSc::lamb(row, 0), 9.0L / 7.0L, 1e-17L);
        char line[64];
        std::snprintf(line, sizeof line, "    Satellite:  R%02d    f. channel: %5.1f", slot,
                      static_cast<double>(k));
        EXPECT_NE(s.out.find(line), std::string::npos) << line;
        EXPECT_EQ(s.err.find("GLONASS SATELLITE " + std::to_string(prn) + " NOT LISTED"),
                  std::string::npos);
    }
    EXPECT_GE(nGlonass, 10);  // the first epoch alone holds 10 GLONASS satellites
    // GLONASS now has orbits as well: some of its records are usable.
    long ok = 0;
    for (long k = 0; k < s.c->rnxd.GetNObs(); ++k)
        if (s.c->rnxd.sat(k) > 100 && s.c->rnxd.sat(k) < 200 && s.c->gc.OKSAT(k)) ++ok;
    EXPECT_GT(ok, 0);
}

TEST(SetGlonassFrequency, SlotMissingOrNotYetValidFallsBackToChannelZero)
{
    // R02 (channel -4) dropped, R08 (channel 6) valid only from 00:00:30,
    // after the first epoch at midnight which decides.
    std::ifstream in(kChannels);
    std::string line, text;
    while (std::getline(in, line)) {
        if (line.compare(0, 3, "R02") == 0) continue;
        if (line.compare(0, 3, "R08") == 0) line.replace(24, 7, "00 30.0");
        text += line + "\n";
    }
    const Staged s = Stage(orvotest::WriteTemp("partial.glnfc", text));
    for (int slot : {2, 8}) {
        char w[120];
        std::snprintf(w, sizeof w,
                      "GLONASS SATELLITE %3d NOT LISTED IN GLONASS FREQUENCY CHANNEL FILE - "
                      "USING FREQ. CHANNEL k = 0!",
                      100 + slot);
        EXPECT_NE(s.err.find(w), std::string::npos) << w;
        EXPECT_NEAR_LD(GLONASSc::lamb(slot - 1, 0), C / 1602.0e6L, WaveTol_m);
        EXPECT_NEAR_LD(GLONASSc::lamb(slot - 1, 1), C / 1246.0e6L, WaveTol_m);
    }
    // R01 is still read from the file: channel 1.
    EXPECT_NEAR_LD(GLONASSc::lamb(0, 0), C / (1602.0e6L + 0.5625e6L), WaveTol_m);
}

TEST(SetGlonassFrequency, NavigationFileGivesTheChannelsWithoutAChannelFile)
{
    ClearTables();
    const std::map<int, int> list = ChannelList();
    Context c;
    gCPosC& g = c.gc;
    SetName(g.rnxfile, CutObs("glnfc-nav.20o", 0, 1));
    SetName(g.rnavfile, orvotest::Data("esbc-2020-177/esbc1770.20g"));
    g.isRnx = g.isGLNnav = true;
    g.isGPS = g.isGLN = true;
    std::string err;
    {
        Capture o(std::cout);
        Capture e(std::cerr);
        SetFiles(g);
        ReadFiles(g);
        SetGlonassFrequency(g);
        err = e.Text();
    }
    EXPECT_EQ(err.find("NOT LISTED"), std::string::npos);
    int n = 0;
    for (long i = 0; i < c.rnxd.GetNSat(); ++i) {
        const short prn = c.rnxd.GetSat(i);
        if (prn <= 100 || prn > 199) continue;
        const long double k = list.at(prn - 100);
        EXPECT_NEAR_LD(GLONASSc::lamb(prn - 101, 0), C / (1602.0e6L + 0.5625e6L * k), WaveTol_m);
        EXPECT_NEAR_LD(GLONASSc::lamb(prn - 101, 1), C / (1246.0e6L + 0.4375e6L * k), WaveTol_m);
        ++n;
    }
    EXPECT_EQ(n, 10);
}

// The navigation file of the day without the records of slot `dropSlot`:
// a GLONASS record is an epoch line with the slot in columns 1-2, and
// three lines that start with at least three blanks.
std::string NavWithoutSlot(int dropSlot)
{
    std::ifstream in(orvotest::Data("esbc-2020-177/esbc1770.20g"));
    std::string line, text;
    bool header = true;
    int skip = 0;
    while (std::getline(in, line)) {
        if (skip > 0) {
            --skip;
            continue;
        }
        if (!header && line.size() > 2 && line.compare(0, 3, "   ") != 0
            && std::atoi(line.substr(0, 2).c_str()) == dropSlot) {
            skip = 3;
            continue;
        }
        if (line.find("END OF HEADER") != std::string::npos) header = false;
        text += line + "\n";
    }
    return orvotest::WriteTemp("noR" + std::to_string(dropSlot) + ".20g", text);
}

// Runs SetGlonassFrequency on the first epoch with the sources given (an
// empty name: that source is absent) and returns its output and warnings.
void FrequencyStage(const std::string& channels, const std::string& nav, std::string& out,
                    std::string& err)
{
    ClearTables();
    Context c;
    gCPosC& g = c.gc;
    SetName(g.rnxfile, CutObs("glnfc-both.20o", 0, 1));
    g.isRnx = g.isGPS = g.isGLN = true;
    if (!channels.empty()) {
        SetName(g.glnfreqch, channels);
        g.isGLNfrch = true;
    }
    if (!nav.empty()) {
        SetName(g.rnavfile, nav);
        g.isGLNnav = true;
    }
    Capture o(std::cout);
    Capture e(std::cerr);
    SetFiles(g);
    ReadFiles(g);
    SetGlonassFrequency(g);
    out = o.Text();
    err = e.Text();
}

}  // namespace

TEST(SetGlonassFrequency, ChannelFileWinsOverTheNavigationFile)
{
    // R02 (channel -4 in the navigation file) is left out of the channel
    // file. Given both, the channel file alone decides: R02 falls back to
    // channel 0 with the channel file's warning instead of taking -4.
    std::ifstream in(kChannels);
    std::string line, text;
    while (std::getline(in, line))
        if (line.compare(0, 3, "R02") != 0) text += line + "\n";
    std::string out, err;
    FrequencyStage(orvotest::WriteTemp("noR02.glnfc", text),
                   orvotest::Data("esbc-2020-177/esbc1770.20g"), out, err);
    EXPECT_NE(err.find("GLONASS SATELLITE 102 NOT LISTED IN GLONASS FREQUENCY CHANNEL FILE - "
                       "USING FREQ. CHANNEL k = 0!"),
              std::string::npos)
        << err;
    EXPECT_EQ(err.find("BROADCAST EPHEMERIS"), std::string::npos);
    EXPECT_NEAR_LD(GLONASSc::lamb(1, 0), C / 1602.0e6L, WaveTol_m);
    EXPECT_NEAR_LD(GLONASSc::lamb(1, 1), C / 1246.0e6L, WaveTol_m);
    EXPECT_NE(out.find("    Satellite:  R02    f. channel:  NOT FOUND -> SETTING TO 0.0"),
              std::string::npos);
    // The others follow the channel file, which agrees with the list.
    const std::map<int, int> list = ChannelList();
    const long double k1 = list.at(1);
    EXPECT_NEAR_LD(GLONASSc::lamb(0, 0), C / (1602.0e6L + 0.5625e6L * k1), WaveTol_m);
}

TEST(SetGlonassFrequency, SlotMissingFromTheNavigationFileGetsChannelZero)
{
    std::string out, err;
    FrequencyStage("", NavWithoutSlot(2), out, err);
    EXPECT_NE(err.find("GLONASS SATELLITE 102 NOT LISTED IN GLONASS BROADCAST EPHEMERIS FILE - "
                       "USING FREQ. CHANNEL k = 0!"),
              std::string::npos)
        << err;
    EXPECT_NEAR_LD(GLONASSc::lamb(1, 0), C / 1602.0e6L, WaveTol_m);
    EXPECT_NEAR_LD(GLONASSc::lamb(1, 1), C / 1246.0e6L, WaveTol_m);
    EXPECT_NE(out.find("    Satellite:  R02    f. channel:  NOT FOUND -> SETTING TO 0.0"),
              std::string::npos);
    // R01 keeps the channel of its own records.
    const long double k1 = ChannelList().at(1);
    EXPECT_NEAR_LD(GLONASSc::lamb(0, 0), C / (1602.0e6L + 0.5625e6L * k1), WaveTol_m);
    EXPECT_EQ(err.find("GLONASS SATELLITE 101"), std::string::npos);
}
