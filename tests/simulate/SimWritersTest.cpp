// The simulated files through the program's readers (SP3, RINEX clock) and
// their fixed columns as the formats and the channel reader lay them down.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>

#include "SimSupport.h"
#include "geodesy/mjd.h"
#include "orbits/GNSSpClk.h"
#include "orbits/GNSSpEph.h"
#include "numerics/NearLD.h"

namespace {

std::vector<std::string> Lines(const std::string& path)
{
    std::vector<std::string> v;
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) v.push_back(line);
    return v;
}

// SP3 holds km with 6 decimals: 0.5 mm rounding per coordinate.
constexpr long double Sp3Rounding_m = 0.5001e-3L;
// RINEX clock values carry 13 significant digits: below 1e-16 s at 0.5 ms.
constexpr long double ClockRounding_s = 1e-16L;

TEST(SimWriters, OrbitFileNodesReadBackAndCoverTheDay)
{
    const simtest::DataSet& set = simtest::NoiseFree();
    GNSSpEph eph;
    const std::string path = set.Path(set.names.sp3);
    eph.SetFile(path.c_str());
    eph.ReadFile();
    ASSERT_EQ(eph.GetNEpoch(), static_cast<long>(set.d.orbitTimes.size()));
    ASSERT_EQ(eph.GetNSat(), static_cast<short>(set.d.sats.size()));
    // Two hours of nodes before the first and after the last observation:
    // the 14-node window (3 h 15 min) stays centred there.
    // 1e-9 s: whole-second node times; round-off only.
    EXPECT_NEAR_LD(set.d.orbitTimes.front(), -7200.0L, 1e-9L);
    EXPECT_GE(set.d.orbitTimes.back(), set.d.epochs.back().t + 7200.0L);
    const mjd day0(set.d.mjday, 0.0L);
    for (long e = 0; e < eph.GetNEpoch(); e += 5) {
        // 1e-6 s: the file prints node seconds with 8 decimals of whole seconds.
        EXPECT_NEAR_LD(eph.GetMJD(e) - day0, set.d.orbitTimes[static_cast<std::size_t>(e)], 1e-6L);
        for (short j = 0; j < eph.GetNSat(); ++j) {
            const SimSatellite& s = set.d.sats[static_cast<std::size_t>(j)];
            ASSERT_EQ(eph.GetSatList(j), s.number);
            const xyzt p = eph.GetSatPos(j + eph.GetNSat() * e);
            const SimVec q = EarthFixedPosition(s, set.d.orbitTimes[static_cast<std::size_t>(e)]);
            EXPECT_NEAR_LD(p.x, q.x, Sp3Rounding_m);
            EXPECT_NEAR_LD(p.y, q.y, Sp3Rounding_m);
            EXPECT_NEAR_LD(p.z, q.z, Sp3Rounding_m);
            // Microseconds with 6 decimals: 0.5 ps.
            EXPECT_NEAR_LD(p.dt, ClockModel(s, set.d.orbitTimes[static_cast<std::size_t>(e)]), 0.5001e-12L);
        }
    }
}

TEST(SimWriters, OrbitFileLinesHaveSp3cColumns)
{
    const simtest::DataSet& set = simtest::NoiseFree();
    const std::vector<std::string> v = Lines(set.Path(set.names.sp3));
    ASSERT_GT(v.size(), 30u);
    EXPECT_EQ(v[0].substr(0, 3), "#cP");
    EXPECT_EQ(std::atoi(v[0].substr(32, 7).c_str()), static_cast<int>(set.d.orbitTimes.size()));
    EXPECT_EQ(v[1].substr(0, 3), "## ");
    // 1e-9 s: a whole-second interval printed and read back; round-off only.
    EXPECT_NEAR_LD(std::atof(v[1].substr(24, 14).c_str()), 900.0, 1e-9);
    int plus = 0, plusplus = 0, pos = 0, epochs = 0;
    for (const std::string& l : v) {
        if (l.compare(0, 2, "+ ") == 0) ++plus;
        if (l.compare(0, 2, "++") == 0) ++plusplus;
        if (l[0] == '*') {
            ++epochs;
            EXPECT_EQ(l.size(), 31u);
        }
        if (l[0] == 'P') {
            ++pos;
            EXPECT_EQ(l.size(), 60u);
        }
    }
    EXPECT_EQ(plus, 5);
    EXPECT_EQ(plusplus, 5);
    EXPECT_EQ(epochs, static_cast<int>(set.d.orbitTimes.size()));
    EXPECT_EQ(pos, epochs * static_cast<int>(set.d.sats.size()));
    EXPECT_EQ(v.back(), "EOF");
}

TEST(SimWriters, ClockFileReadsBackAtObservationInterval)
{
    const simtest::DataSet& set = simtest::NoiseFree();
    GNSSpClk clk;
    const std::string path = set.Path(set.names.clk);
    clk.SetFile(path.c_str());
    clk.ReadFile();
    ASSERT_EQ(clk.GetNEpoch(), static_cast<long>(set.d.clockTimes.size()));
    ASSERT_EQ(clk.GetNSatList(), static_cast<short>(set.d.sats.size()));
    // Between nodes the cubic of the reader reproduces the quadratic clock
    // polynomial exactly, up to rounding.
    mjd t(set.d.mjday, 0.0L);
    t += 4321.7L;
    clk.SetEpochIndex(t);
    for (const SimSatellite& s : set.d.sats) {
        short prn = s.number;
        long double dt = 0.0L;
        clk.GetSatelliteClock(prn, t, dt);
        ASSERT_TRUE(clk.DTisOK);
        EXPECT_NEAR_LD(dt, ClockModel(s, 4321.7L), 10.0L * ClockRounding_s);
    }
    // AS records: name at index 3, date from 8, value from 38.
    for (const std::string& l : Lines(path))
        if (l.compare(0, 3, "AS ") == 0) {
            EXPECT_EQ(l.size(), 58u);
            EXPECT_EQ(l[7], ' ');
            EXPECT_EQ(l[37], ' ');
        }
}

TEST(SimWriters, ChannelFileHasReaderColumns)
{
    const simtest::DataSet& set = simtest::NoiseFree();
    int n = 0;
    for (const std::string& l : Lines(set.Path(set.names.glnfc))) {
        if (l.empty() || l[0] == '#') continue;
        ASSERT_GT(l.size(), 51u);
        const int slot = std::atoi(l.substr(1, 2).c_str());
        ASSERT_GE(slot, 1);
        ASSERT_LE(slot, 24);
        EXPECT_EQ(l[0], 'R');
        EXPECT_EQ(std::atoi(l.substr(10, 4).c_str()), 2020);
        EXPECT_EQ(l[31], ' ');  // open end
        EXPECT_EQ(std::atoi(l.substr(51).c_str()), set.d.sats[static_cast<std::size_t>(24 + slot - 1)].channel);
        ++n;
    }
    EXPECT_EQ(n, 24);
}

TEST(SimWriters, TruthFileGivesStationAndEveryEpoch)
{
    const simtest::DataSet& set = simtest::NoiseFree();
    const std::vector<std::string> v = Lines(set.Path(set.names.truth));
    long data = 0;
    int markerLines = 0;  // the position checks below must not be skipped
    for (const std::string& l : v) {
        if (l.compare(0, 10, "MARKER XYZ") == 0) {
            ++markerLines;
            std::istringstream in(l.substr(24));
            long double x, y, z;
            in >> x >> y >> z;
            // The truth file prints 4 decimals of metres (0.05 mm rounding), seconds
            // with 3 (0.5 ms) and the clock with 12 (0.5 ps): each bound is twice that.
            EXPECT_NEAR_LD(x, set.d.opt.x, 1e-4L);
            EXPECT_NEAR_LD(y, set.d.opt.y, 1e-4L);
            EXPECT_NEAR_LD(z, set.d.opt.z, 1e-4L);
        }
        if (!l.empty() && std::isdigit(static_cast<unsigned char>(l[1]))) {
            std::istringstream in(l);
            long day;
            long double sec, zhd, zwd, clk;
            in >> day >> sec >> zhd >> zwd >> clk;
            const SimEpoch& ep = set.d.epochs[static_cast<std::size_t>(data)];
            EXPECT_NEAR_LD(sec, ep.t, 1e-3L);
            // A standard atmosphere near 1 km: some 2.1 m dry, centimetres wet.
            EXPECT_GT(zhd, 1.9L);
            EXPECT_LT(zhd, 2.4L);
            EXPECT_GT(zwd, 0.0L);
            EXPECT_LT(zwd, 0.3L);
            EXPECT_NEAR_LD(clk, ep.rxClock, 1e-12L);
            ++data;
        }
    }
    EXPECT_EQ(markerLines, 1);
    EXPECT_EQ(data, static_cast<long>(set.d.epochs.size()));
}

TEST(SimWritersDeath, FolderThatTakesNoFilesStops)
{
    SimOptions o;
    o.hours = 0.2L;
    o.outDir = orvotest::TempDir() + "/no/such/folder";
    const SimData d = Simulate(o);
    EXPECT_EXIT(WriteAll(d), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> orvo-simulate: folder .*no/such/folder can not be written");
}

}  // namespace
