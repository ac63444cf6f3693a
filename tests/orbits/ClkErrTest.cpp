// The program's own receiver clock file: written, read back, and refused
// when its head lines or data lines are not its own.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <sstream>
#include <string>

#include "TestSupport.h"
#include "orbits/ClkErr.h"
#include "numerics/NearLD.h"

using orvotest::WriteTemp;

namespace {

constexpr long double C = 299792458.0L;

// The file holds µs with 6 decimals: half a unit is 0.5e-12 s; 1e-15 s more
// covers the decimal conversions of long double.
constexpr long double ClockTol_s = 0.5e-12L + 1e-15L;
// Seconds of day with 3 decimals: half a unit is 0.5 ms.
constexpr long double EpochTol_s = 0.5e-3L + 1e-9L;

std::string Written(const matrix<mjd>& ep, const matrix<long double>& dt_m, char sys = 'G')
{
    std::ostringstream out;
    ClkErr::Write(out, "ESBC", "10118M001", sys, ep, dt_m);
    return out.str();
}

ClkErr Read(const std::string& path)
{
    ClkErr c;
    c.SetFile(path.c_str());
    c.ReadFile();
    return c;
}

}  // namespace

TEST(ClkErr, ConversionFactorIsMicrosecondsPerMetreOfLight)
{
    // 1e-12: a product of two long doubles near 1e6 carries 1e-13 round-off;
    // any wrong power of ten or of c is off by far more.
    EXPECT_NEAR_LD(ClkErrns::MicrosecondsPerMetre * C, 1e6L, 1e-12L);
}

TEST(ClkErr, WriteReadRoundTripOverADay)
{
    // A day at 30 s with epochs a little off the full second, as a receiver
    // without clock steering gives them, and clocks of ±1 ms in metres.
    const long n = 2880;
    matrix<mjd> ep(n);
    matrix<long double> dt(n);
    for (long i = 0; i < n; ++i) {
        mjd t(59025UL, 0.0L);
        t += 30.0L * i + 0.0001234L * (i % 7);
        ep(i) = t;
        dt(i) = 3.0e5L * std::sin(0.001L * i) - 1234.5678L;
    }
    const std::string path = WriteTemp("roundtrip.clk", Written(ep, dt, 'R'));
    ClkErr c = Read(path);
    ASSERT_EQ(c.GetNEpoch(), n);
    EXPECT_EQ(c.GetRefSystem(), 'R');
    for (long i = 0; i < n; ++i) {
        EXPECT_NEAR_LD(c.GetMJD(i) - ep(i), 0.0L, EpochTol_s) << i;
        EXPECT_NEAR_LD(c.GetClkErr(i), dt(i) / C, ClockTol_s) << i;
    }
}

TEST(ClkErr, LayoutOfHeadAndDataLines)
{
    matrix<mjd> ep(1);
    matrix<long double> dt(1);
    ep(0) = mjd(59025UL, 45296.789L);
    dt(0) = -299.792458L;  // -1 µs
    std::istringstream in(Written(ep, dt));
    std::string l1, l2, l3;
    std::getline(in, l1);
    std::getline(in, l2);
    std::getline(in, l3);
    EXPECT_EQ(l1, "CLOCK ERROR FILE: ESBC / 10118M001");
    EXPECT_EQ(l2, "CLOCK REF. SYS. : G");
    ASSERT_EQ(l3.size(), 28u);  // 6 + 10 + 2 + 10 columns
    EXPECT_EQ(std::atol(l3.substr(0, 6).c_str()), 59025L);
    // 1e-9: the fields are printed with 3 decimals of values that have 3;
    // reading them back leaves only round-off.
    EXPECT_NEAR_LD(std::strtold(l3.substr(6, 10).c_str(), nullptr), 45296.789L, 1e-9L);
    EXPECT_EQ(l3.substr(16, 2), "  ");
    EXPECT_NEAR_LD(std::strtold(l3.substr(18, 10).c_str(), nullptr), -1.0L, 1e-9L);
}

TEST(ClkErr, SecondRoundedToMidnightReadsAsNextDay)
{
    matrix<mjd> ep(2);
    matrix<long double> dt(2, 1, 0.0L);
    ep(0) = mjd(59025UL, 86369.9996L);
    ep(1) = mjd(59025UL, 86399.9996L);  // printed as 86400.000
    ClkErr c = Read(WriteTemp("midnight.clk", Written(ep, dt) + "\n   \n"));
    ASSERT_EQ(c.GetNEpoch(), 2);  // blank lines are no epochs
    EXPECT_EQ(c.GetMJD(1).GetMJDay(), 59026UL);
    EXPECT_NEAR_LD(c.GetMJD(1).GetSecond(), 0.0L, 1e-9L);
}

namespace {
void ReadPath(const std::string& path) { Read(path); }
const char* kFramed = "\\*\\*\\*\\* Orvo: Error -> ";
}  // namespace

TEST(ClkErrDeath, ForeignHeadLinesOrDataStop)
{
    EXPECT_EXIT(ReadPath(WriteTemp("l1.clk", "CLOCK FILE: X\nCLOCK REF. SYS. : G\n59025 0.000 1.0\n")),
                ::testing::ExitedWithCode(1), std::string(kFramed) + "Line 1 of clock file is not >CLOCK ERROR FILE:< line!");
    EXPECT_EXIT(ReadPath(WriteTemp("l2.clk", "CLOCK ERROR FILE: X / 1\nCLOCK SYS. : G\n59025 0.000 1.0\n")),
                ::testing::ExitedWithCode(1), std::string(kFramed) + "Line 2 of clock file is not >CLOCK REF. SYS. :< line!");
    EXPECT_EXIT(ReadPath(WriteTemp("empty.clk", "")), ::testing::ExitedWithCode(1),
                std::string(kFramed) + "Line 1 of clock file");
    EXPECT_EXIT(ReadPath(WriteTemp("data.clk", "CLOCK ERROR FILE: X / 1\nCLOCK REF. SYS. : G\n59025 0.000 1.0\n59025 30.000 ****\n")),
                ::testing::ExitedWithCode(1), std::string(kFramed) + ".*line 4 is not MJD, second of day and clock");
    EXPECT_EXIT(ReadPath(orvotest::TempDir() + "/absent_clkerr"), ::testing::ExitedWithCode(1),
                std::string(kFramed) + "RECEIVER CLOCK ERROR FILE .*absent_clkerr CAN NOT BE OPENED!");
}

TEST(ClkErrDeath, WriterRefusesMismatchedLengths)
{
    matrix<mjd> ep(3);
    matrix<long double> dt(2, 1, 0.0L);
    std::ostringstream out;
    EXPECT_EXIT(ClkErr::Write(out, "A", "B", 'G', ep, dt), ::testing::ExitedWithCode(1),
                std::string(kFramed) + "RECEIVER CLOCK ERROR FILE: 3 epochs but 2 clock values");
}
