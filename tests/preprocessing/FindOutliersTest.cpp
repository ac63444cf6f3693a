#include "preprocessing/FindOutliers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "numerics/NearLD.h"

namespace {

// The mean stops when a round moves it by less than 0.1 mm; the distance
// left to the fixed point is of that order, so 1 mm bounds it with room.
constexpr long double MeanTol_m = 1e-3L;
// Exact arithmetic on values of order 1000 m in long double: 1e-12 m is
// thousands of times the round-off.
constexpr long double ExactTol_m = 1e-12L;

// Sum of the weighted residuals: zero at the fixed point of the Cauchy
// reweighting, the defining equation of the robust mean.
long double Stationarity(const std::vector<long double>& f, long double m)
{
    long double s = 0.0L;
    for (long double x : f) s += (x - m) / ((x - m) * (x - m) + 1.0L);
    return s;
}

TEST(FindOutliers, RobustMeanAndFlagsBeyondTheLimit)
{
    // want: the mean expected, from the sample's symmetry or (tol MeanTol)
    // from the robust mean of the clean part; exact rows are also checked
    // against the defining equation. Blunders weigh 1e-5 to 1e-7 and leave
    // the mean among the clean values; a value exactly at the limit is not
    // above it.
    const struct {
        const char* what;
        std::vector<long double> f;
        long double limit, want, tol;
        std::vector<bool> flagged;
    } rows[] = {
        {"single value", {-1234.5678L}, 1000.0L, -1234.5678L, ExactTol_m, {false}},
        {"equal values", {12.25L, 12.25L, 12.25L, 12.25L}, 0.5L, 12.25L, ExactTol_m, {false, false, false, false}},
        {"two at the limit", {-1000.0L, 1000.0L}, 1000.0L, 0.0L, ExactTol_m, {false, false}},
        {"two just beyond", {-1000.5L, 1000.5L}, 1000.0L, 0.0L, ExactTol_m, {true, true}},
        // Nearly symmetric metre-level scatter about 73.4 m: the plain mean
        // 73.4 within 5 cm.
        {"clean", {73.1L, 74.0L, 72.9L, 73.6L, 73.3L, 74.2L, 72.7L, 73.4L}, 1000.0L, 73.4L, 0.05L, std::vector<bool>(8, false)},
        // Six codes near 20 m (plain mean 20.18 m, 0.3 m spread), one 1500 m
        // and one -3000 m off (lost millisecond, wrong satellite); the plain
        // mean would be dragged 165 m away.
        {"blunders", {20.3L, 19.8L, 1520.0L, 20.6L, 19.9L, 20.1L, 20.4L, -2980.0L}, 1000.0L, 20.18L, 0.1L,
         {false, false, true, false, false, false, false, true}},
        // 300 m off with a limit of 1000 m: not counted, still ignored; the
        // robust mean of 5.0, 5.2, 4.9 is 5.03 within 3 mm.
        {"blunder below the limit", {5.0L, 5.2L, 4.9L, 305.0L}, 1000.0L, 5.03L, 0.01L, {false, false, false, false}},
    };
    for (const auto& r : rows) {
        std::vector<long double> f = r.f;
        long n = static_cast<long>(f.size());
        bool fo[8];
        for (bool& b : fo) b = true;
        const long double m = FindOutliers(f.data(), fo, n, r.limit);
        EXPECT_EQ(n, static_cast<long>(f.size())) << r.what;  // the count is only read
        EXPECT_NEAR_LD(m, r.want, r.tol) << r.what;
        EXPECT_NEAR_LD(Stationarity(f, m), 0.0L, MeanTol_m) << r.what;
        for (size_t j = 0; j < f.size(); ++j) EXPECT_EQ(fo[j], r.flagged[j]) << r.what << j;
    }
    // The blunders leave the mean where the clean codes alone put it.
    std::vector<long double> clean = {20.3L, 19.8L, 20.6L, 19.9L, 20.1L, 20.4L}, dirty = rows[5].f;
    long nc = 6, nd = 8;
    bool fo[8];
    const long double mc = FindOutliers(clean.data(), fo, nc, 1000.0L);
    EXPECT_NEAR_LD(FindOutliers(dirty.data(), fo, nd, 1000.0L), mc, MeanTol_m);
}

TEST(FindOutliers, EmptySampleOrUnderflowingWeightsEndWithoutHanging)
{
    // An empty sample gives 0 and touches no flag. Values 1e3000 apart:
    // every weight underflows to 0 and the weighted mean is 0/0; the plain
    // mean of the first round is the only answer.
    long n = 0;
    long double f[2] = {-1e3000L, 1e3000L};
    bool fo[2] = {true, false};
    EXPECT_EQ(FindOutliers(f, fo, n, 1.0L), 0.0L);
    EXPECT_TRUE(fo[0]);
    n = 2;
    EXPECT_EQ(FindOutliers(f, fo, n, 1.0L), 0.0L);
    EXPECT_TRUE(fo[0] && fo[1]);
}

}  // namespace
