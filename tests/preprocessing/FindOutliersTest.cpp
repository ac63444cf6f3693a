#include "preprocessing/FindOutliers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>
#include "numerics/NearLD.h"

namespace {

// The mean stops when a round moves it by less than 0.1 mm; the distance
// left to the fixed point is of that order, so 1 mm bounds it with room.
constexpr long double MeanTol_m = 1e-3L;
// Exact arithmetic on values of order 100 m in long double: 1e-12 m is
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

long double RobustMean(std::vector<long double> f, std::vector<char>& flags, long double thres)
{
    long n = static_cast<long>(f.size());
    bool fo[64];
    for (bool& b : fo) b = true;
    const long double m = FindOutliers(f.data(), fo, n, thres);
    EXPECT_EQ(n, static_cast<long>(f.size()));  // the count is only read
    flags.assign(fo, fo + f.size());
    return m;
}

}  // namespace

TEST(FindOutliers, SingleValueIsItsOwnMeanAndNotFlagged)
{
    std::vector<char> flags;
    EXPECT_NEAR_LD(RobustMean({-1234.5678L}, flags, 1000.0L), -1234.5678L, ExactTol_m);
    EXPECT_FALSE(flags[0]);
}

TEST(FindOutliers, EqualValuesGiveThatValue)
{
    std::vector<char> flags;
    EXPECT_NEAR_LD(RobustMean({12.25L, 12.25L, 12.25L, 12.25L}, flags, 0.5L), 12.25L, ExactTol_m);
    for (char b : flags) EXPECT_FALSE(b);
}

TEST(FindOutliers, TwoValuesAtTheLimitStayUnflagged)
{
    // 2000 m apart with limit 1000: each lies exactly 1000 m from the
    // symmetric mean, which is not above the limit.
    std::vector<char> flags;
    EXPECT_NEAR_LD(RobustMean({-1000.0L, 1000.0L}, flags, 1000.0L), 0.0L, ExactTol_m);
    EXPECT_FALSE(flags[0]);
    EXPECT_FALSE(flags[1]);
    // Just beyond, both are flagged: the mean still sits in the middle.
    EXPECT_NEAR_LD(RobustMean({-1000.5L, 1000.5L}, flags, 1000.0L), 0.0L, ExactTol_m);
    EXPECT_TRUE(flags[0]);
    EXPECT_TRUE(flags[1]);
}

TEST(FindOutliers, CleanSampleMeanSolvesTheWeightedEquation)
{
    // Metre-level scatter about a clock of 73.4 m: nothing is a blunder, and
    // the result is the root of the weighted-residual equation, close to
    // the plain mean because the sample is nearly symmetric.
    const std::vector<long double> f = {73.1L, 74.0L, 72.9L, 73.6L, 73.3L, 74.2L, 72.7L, 73.4L};
    std::vector<char> flags;
    const long double m = RobustMean(f, flags, 1000.0L);
    for (char b : flags) EXPECT_FALSE(b);
    EXPECT_NEAR_LD(Stationarity(f, m), 0.0L, MeanTol_m);
    long double plain = 0.0L;
    for (long double x : f) plain += x;
    plain /= f.size();
    EXPECT_NEAR_LD(m, plain, 0.05L);  // skew of this sample moves it by less
}

TEST(FindOutliers, InjectedBlundersAreFlaggedAndIgnored)
{
    // Six codes near 20 m, one 1500 m and one -3000 m off (lost
    // millisecond, wrong satellite). The blunders weigh about 1e-7 each, so
    // the mean stays at the clean sample's robust mean within a millimetre.
    const std::vector<long double> clean = {20.3L, 19.8L, 20.6L, 19.9L, 20.1L, 20.4L};
    std::vector<long double> dirty = clean;
    dirty.insert(dirty.begin() + 2, 1520.0L);
    dirty.push_back(-2980.0L);
    std::vector<char> flagsClean, flagsDirty;
    const long double mClean = RobustMean(clean, flagsClean, 1000.0L);
    const long double mDirty = RobustMean(dirty, flagsDirty, 1000.0L);
    EXPECT_NEAR_LD(mDirty, mClean, MeanTol_m);
    // The plain mean is dragged 165 m away; the robust one stays among the
    // clean codes (20.18 m plain mean, 0.3 m spread).
    EXPECT_LT(std::fabs(mDirty - 20.18L), 0.1L);
    for (size_t j = 0; j < dirty.size(); ++j)
        EXPECT_EQ(static_cast<bool>(flagsDirty[j]), j == 2 || j == dirty.size() - 1) << j;
}

TEST(FindOutliers, BlunderBelowTheLimitIsNotFlaggedButStillIgnored)
{
    // 300 m off with a limit of 1000 m: not counted, but its weight of
    // 1e-5 leaves the mean where the clean values put it.
    const std::vector<long double> f = {5.0L, 5.2L, 4.9L, 305.0L};
    std::vector<char> flags;
    const long double m = RobustMean(f, flags, 1000.0L);
    for (char b : flags) EXPECT_FALSE(b);
    EXPECT_NEAR_LD(m, 5.03L, 0.01L);  // robust mean of 5.0, 5.2, 4.9 is 5.03 within 3 mm
    EXPECT_NEAR_LD(Stationarity(f, m), 0.0L, MeanTol_m);
}

TEST(FindOutliers, EmptySampleGivesZeroAndTouchesNoFlag)
{
    long n = 0;
    long double f[1] = {7.0L};
    bool fo[1] = {true};
    EXPECT_EQ(FindOutliers(f, fo, n, 1.0L), 0.0L);
    EXPECT_TRUE(fo[0]);
}

TEST(FindOutliers, ValuesBeyondEveryWeightEndWithoutHanging)
{
    // 1e3000 apart: every weight underflows to 0 and the weighted mean is
    // 0/0. The plain mean of the first round is the only answer.
    long n = 2;
    long double f[2] = {-1e3000L, 1e3000L};
    bool fo[2] = {false, false};
    EXPECT_EQ(FindOutliers(f, fo, n, 1.0L), 0.0L);
    EXPECT_TRUE(fo[0]);
    EXPECT_TRUE(fo[1]);
}
