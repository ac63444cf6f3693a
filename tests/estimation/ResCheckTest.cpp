#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "RealDayRun.h"
#include "estimation/ResCheck.h"
#include "observations/GPSc.h"

namespace {

// The residual cofactor against the full quadratic form b' Q b written out
// over both triangles (the code walks one triangle and doubles it).
TEST(ResCheck, ResidualCofactorIsInverseWeightLessFullQuadraticForm)
{
    matrix<long double> Q(5, 5, 0.0L);
    long double B[ProcStaticns::NSlots] = {};
    long iB[ProcStaticns::NSlots] = {-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
    const long double b[] = {0.3L, -0.5L, 0.8L, -1.0L, 2.5L};
    const long cols[] = {0, 1, 2, 3, 5};  // slot 4 empty: no code bias
    for (int s = 0, u = 0; s < 6; ++s) {
        if (s == 4) continue;
        B[s] = b[u];
        iB[s] = cols[u] < 4 ? cols[u] : 4;
        ++u;
    }
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 5; ++j) Q(i, j) = (i == j ? 2.0L : 0.1L * (i + j + 1)) * 1e-3L;
    long double quad = 0.0L;
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 5; ++j) quad += b[i] * Q(i, j) * b[j];
    const long double p = 4.0L;
    EXPECT_NEAR(static_cast<double>(GetQVV(B, iB, Q, p)), static_cast<double>(1.0L / p - quad),
                1e-15);
}

// Both passes of the adjustment on six real hours: once clean without the
// check (the reference), once with blunders put in and -bt4.
struct Blunders {
    std::vector<long> phase, code;  // records with 5 cm on L3, 10 m on P1
};

const orvotest::DayRun& Clean()
{
    static auto run = orvotest::RunDay(orvotest::EsbcOptions("-xSTA,KIN"));
    return *run;
}

// Three records each of a high GPS satellite, 20, 40 and 60 epochs before
// its highest record (phase) and after it (code): the first satellite, by
// elevation, that is there at all six epochs.
Blunders Choose(const gCPosC& gc)
{
    const RINEXData& d = gc.rnxd;
    std::vector<std::pair<long double, long>> byElv;  // (elevation, record)
    std::vector<long> epochOf(d.nsatall);
    for (long i = 0, k = 0; i < d.nepochall; ++i)
        for (long j = 0; j < d.nsat(i); ++j, ++k) {
            epochOf[k] = i;
            if (d.sat(k) < 100) byElv.push_back({gc.ELV(k), k});
        }
    std::sort(byElv.rbegin(), byElv.rend());
    for (const auto& [elv, best] : byElv) {
        Blunders b;
        for (long k = 0; k < d.nsatall; ++k) {
            if (d.sat(k) != d.sat(best)) continue;
            const long off = epochOf[k] - epochOf[best];
            if (off == -60 || off == -40 || off == -20) b.phase.push_back(k);
            if (off == 20 || off == 40 || off == 60) b.code.push_back(k);
        }
        if (b.phase.size() == 3 && b.code.size() == 3) return b;
    }
    return {};
}

TEST(ResCheckRealDay, InjectedPhaseAndCodeBlundersAreRejectedAndTheSecondPassReturns)
{
    const Blunders b = Choose(Clean().gc);
    ASSERT_EQ(b.phase.size(), 3u);
    ASSERT_EQ(b.code.size(), 3u);
    // 5 cm as metres on both carriers moves L3 by 5 cm and leaves L4 alone.
    auto inject = [&](gCPosC& gc) {
        for (long k : b.phase) {
            gc.rnxd.L1(k).obs += 0.05L / GPSc::lamb1;
            gc.rnxd.L2(k).obs += 0.05L / GPSc::lamb2;
        }
        // P1 and P2 moved against each other leave the narrow-lane code, and
        // so MW, alone, while the ionosphere-free P3 moves by 10 m; C1 moved
        // with P2 hides them from the P2 - C1 code screen. The check must
        // find them.
        const long double a = 10.0L / GPSc::LCwl1;
        for (long k : b.code) {
            gc.rnxd.P1(k).obs += a;
            gc.rnxd.P2(k).obs -= a * GPSc::f1_f2;
            gc.rnxd.C1(k).obs -= a * GPSc::f1_f2;
        }
    };
    const auto run = orvotest::RunDay(orvotest::EsbcOptions("-xSTA -bt4"), inject);
    for (long k : b.phase) EXPECT_TRUE(run->gc.ifXl3(k)) << "record " << k;
    for (long k : b.code) EXPECT_TRUE(run->gc.ifXp3(k)) << "record " << k;
    EXPECT_GE(run->gc.NObsOutlGPh, 3);
    EXPECT_GE(run->gc.NObsOutlGCd, 3);
    EXPECT_EQ(run->gc.NObsOutl, run->gc.NObsOutlG + run->gc.NObsOutlR + run->gc.NObsOutlE);

    // Two adjustments with the check, one without it.
    auto passes = [](const std::string& r) {
        long n = 0;
        for (auto at = r.find("ESTIMATING GNSS UNKNOWNS"); at != std::string::npos;
             at = r.find("ESTIMATING GNSS UNKNOWNS", at + 1))
            ++n;
        return n;
    };
    EXPECT_EQ(passes(run->report), 2);
    EXPECT_EQ(passes(Clean().report), 1);
    // Against the same check on the clean hours: with the blunders gone the
    // two differ only by the six records, far below 5 mm.
    const auto checked = orvotest::RunDay(orvotest::EsbcOptions("-xSTA -bt4"));
    const xyz d = run->gc.RecPosEst - checked->gc.RecPosEst;
    EXPECT_LT(std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z), 5e-3L);
}

}  // namespace
