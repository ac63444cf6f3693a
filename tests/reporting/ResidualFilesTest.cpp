// The residual and correction files of a real day, read back by readers of
// their own: the binary layout byte by byte, every residual against the
// adjustment's stored misclosures, and the correction terms against the
// ionosphere-free code they make up.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>

#include "TestSupport.h"
#include "estimation/RealDayRun.h"

namespace {

struct Reader {
    std::string bytes;
    std::size_t at = 0;
    std::uint64_t Unsigned(int n)
    {
        std::uint64_t v = 0;
        for (int i = 0; i < n; ++i) v |= std::uint64_t(static_cast<unsigned char>(bytes.at(at + i))) << (8 * i);
        at += n;
        return v;
    }
    long double Extended()
    {
        long double v = 0.0L;
        std::memcpy(&v, bytes.data() + at, 10);
        for (int i = 10; i < 16; ++i) EXPECT_EQ(bytes.at(at + i), '\0') << "padding byte " << i;
        at += 16;
        return v;
    }
};

TEST(ResidualFiles, BinaryResidualsAndCorrectionRowsReadBack) {
    const std::string res = orvotest::TempDir() + "/day.res", prc = orvotest::TempDir() + "/day.prc";
    const auto run = orvotest::RunDay(orvotest::EsbcOptions("-xSTA -bt4 -fp" + res + " -pc" + prc, 240));
    const gCPosC& g = run->gc;
    const RINEXData& d = run->d;
    Reader r{orvotest::ReadFile(res)};
    ASSERT_EQ(r.Unsigned(2), static_cast<std::uint64_t>(d.GetNSat()));
    for (long s = 0; s < d.GetNSat(); ++s) EXPECT_EQ(static_cast<short>(r.Unsigned(2)), d.GetSat(s));
    // Record index by epoch and satellite, to find each entry's record.
    std::map<std::pair<long, short>, long> index;
    for (long i = 0, k = 0; i < d.GetNEpoch(); ++i)
        for (long j = 0; j < d.nsat(i); ++j, ++k) index[{i, d.sat(k)}] = k;
    const matrix<long double>* f[6] = {&g.fc1, &g.fp1, &g.fp2, &g.fc3, &g.fp3, &g.fl3};
    const matrix<bool>* used[6] = {&g.ifOc1, &g.ifOp1, &g.ifOp2, &g.ifOc3, &g.ifOp3, &g.ifOl3};
    const matrix<bool>* rejected[6] = {&g.ifXc1, &g.ifXp1, &g.ifXp2, &g.ifXc3, &g.ifXp3, &g.ifXl3};
    long entries = 0, flagged = 0, epoch = 0;
    while (r.at < r.bytes.size()) {
        const unsigned long day = r.Unsigned(4);
        const long double sec = r.Extended();
        const long nobs = static_cast<long>(r.Unsigned(4));
        while (epoch < d.GetNEpoch() && !(d.epoch(epoch).GetMJDay() == day && d.epoch(epoch).GetSecond() == sec)) ++epoch;
        ASSERT_LT(epoch, d.GetNEpoch()) << "an epoch head the store does not have";
        for (long e = 0; e < nobs; ++e) {
            const short sat = static_cast<short>(r.Unsigned(2));
            const int type = static_cast<int>(r.Unsigned(2));
            ASSERT_TRUE(index.count({epoch, sat}) && type < 6) << sat << " " << type;
            const long k = index[{epoch, sat}];
            EXPECT_EQ(r.Extended(), (*f[type])(k));
            EXPECT_NEAR(r.Extended(), g.ELV(k) * 180.0L / 3.14159265358979323846L, 1e-12L);
            EXPECT_NEAR(r.Extended(), g.AZM(k) * 180.0L / 3.14159265358979323846L, 1e-12L);
            const bool out = r.Unsigned(1) != 0;
            EXPECT_EQ(out, (*rejected[type])(k));
            flagged += out;
            ++entries;
        }
    }
    long usedAll = 0, rejectedAll = 0;
    for (int t = 0; t < 6; ++t)
        for (long k = 0; k < used[t]->NRow(); ++k) usedAll += (*used[t])(k), rejectedAll += (*used[t])(k) && (*rejected[t])(k);
    EXPECT_EQ(entries, usedAll);
    EXPECT_EQ(flagged, rejectedAll);
    EXPECT_GT(rejectedAll, 0) << "-bt4 rejects some observations of two hours";
    EXPECT_EQ(r.at, r.bytes.size());

    // Correction rows: observation plus misclosure of the ionosphere-free
    // code is the modelled range; the file holds it but for the
    // relativistic path delay (under 3 cm).
    std::istringstream rows(orvotest::ReadFile(prc));
    std::string line;
    std::getline(rows, line);
    EXPECT_EQ(line.rfind("#MJD[DAY, SEC]   PRN       GEOM_DIST", 0), 0u);
    std::getline(rows, line);
    EXPECT_EQ(line, std::string(148, '-'));
    long checked = 0;
    while (std::getline(rows, line)) {
        std::istringstream in(line);
        long double sec, v[8];
        unsigned long day;
        short sat;
        ASSERT_TRUE(in >> day >> sec >> sat >> v[0] >> v[1] >> v[2] >> v[3] >> v[4] >> v[5] >> v[6] >> v[7]) << line;
        long i = 0;
        while (i < d.GetNEpoch() && std::fabs(d.epoch(i).GetSecond() - sec) > 0.05L) ++i;
        ASSERT_TRUE(i < d.GetNEpoch() && index.count({i, sat})) << line;
        const long k = index[{i, sat}];
        if (!g.ifOp3(k) || g.ifXp3(k)) continue;
        const long double model = v[0] + v[1] + v[2] + v[3] + v[4] + v[7];
        EXPECT_NEAR(d.PP3(k).obs + g.fp3(k), model, 0.03L) << line;
        ++checked;
    }
    EXPECT_GT(checked, 1000);
}

}  // namespace
