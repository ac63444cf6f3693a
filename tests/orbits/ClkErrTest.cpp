// The program's own receiver clock file: written, read back, and refused
// when its head lines or data lines are not its own.
#include "OrbitsSupport.h"
#include "orbits/ClkErr.h"

using namespace orbtest;

namespace {

// The file holds µs with 6 decimals: half a unit is 0.5e-12 s; 1e-15 s more
// covers the decimal conversions of long double. Seconds of day with 3
// decimals: half a unit is 0.5 ms. Fields printed with 3 decimals of values
// that have 3: round-off only.
constexpr long double ClockTol_s = 0.5e-12L + 1e-15L, EpochTol_s = 0.5e-3L + 1e-9L, PrintTol = 1e-9L;

std::string Written(const matrix<mjd>& ep, const matrix<long double>& dt_m, char sys = 'G')
{
    std::ostringstream out; ClkErr::Write(out, "ESBC", "10118M001", sys, ep, dt_m);
    return out.str();
}

}  // namespace

TEST(ClkErr, WriteReadRoundTripOverADayAndTheLayout)
{
    // A product of two long doubles near 1e6 carries 1e-13 round-off; a
    // wrong power of ten or of c is off by far more.
    EXPECT_NEAR_LD(ClkErrns::MicrosecondsPerMetre * C, 1e6L, 1e-12L);
    // 30-s epochs a little off the full second, as a receiver without clock
    // steering gives them, and clocks of ±1 ms in metres; the last epoch is
    // printed as second 86400.000 and read as the next midnight.
    const long n = 2880; matrix<mjd> ep(n); matrix<long double> dt(n);
    for (long i = 0; i < n; ++i) {
        ep(i) = Plus(mjd(Jun25, 0.0L), i + 1 < n ? 30.0L * i + 0.0001234L * (i % 7) : 86399.9996L);
        dt(i) = 3.0e5L * std::sin(0.001L * i) - 1234.5678L;
    }
    const std::string text = Written(ep, dt, 'R'); auto c = Load<ClkErr>(WriteTemp("roundtrip.clk", text + "\n   \n"));  // blank lines are no epochs
    ASSERT_TRUE(c->GetNEpoch() == n && c->GetRefSystem() == 'R');
    for (long i = 0; i < n; ++i) {
        EXPECT_NEAR_LD(c->GetMJD(i) - ep(i), 0.0L, EpochTol_s) << i;
        EXPECT_NEAR_LD(c->GetClkErr(i), dt(i) / C, ClockTol_s) << i;
    }
    EXPECT_TRUE(c->GetMJD(n - 1).GetMJDay() == Jun25 + 1 && c->GetMJD(n - 1).GetSecond() < PrintTol);
    // Head lines, then columns 6 + 10 + 2 + 10 of the data lines.
    const std::string head = "CLOCK ERROR FILE: ESBC / 10118M001\nCLOCK REF. SYS. : R\n", l = text.substr(head.size(), 29);
    EXPECT_EQ(text.substr(0, head.size()) + l.substr(0, 6) + "|" + l.substr(16, 2) + "|" + l.substr(28), head + " 59025|  |\n");
    EXPECT_NEAR_LD(std::strtold(l.substr(6, 10).c_str(), nullptr), 0.0L, PrintTol);
    EXPECT_NEAR_LD(std::strtold(l.substr(18, 10).c_str(), nullptr), dt(0) * ClkErrns::MicrosecondsPerMetre, 0.5e-6L);
}

TEST(ClkErrDeath, ForeignHeadLinesDataOrLengthsStop)
{
    const std::string head = "CLOCK ERROR FILE: X / 1\nCLOCK REF. SYS. : G\n59025 0.000 1.0\n";
    ExpectEachStops<ClkErr>({
        {"l1.clk", "CLOCK FILE: X\nCLOCK REF. SYS. : G\n", Framed("Line 1 of clock file is not >CLOCK ERROR FILE:< line!")},
        {"l2.clk", "CLOCK ERROR FILE: X / 1\nCLOCK SYS. : G\n", Framed("Line 2 of clock file is not >CLOCK REF. SYS. :< line!")},
        {"data.clk", head + "59025 30.000 ****\n", Framed(".*line 4 is not MJD, second of day and clock")},
        {"nan.clk", head + "59025 30.000 nan\n", Framed(".*nan.clk: line 4 is not MJD, second of day and clock")},
        {"inf.clk", head + "59025 30.000 -inf\n", Framed(".*inf.clk: line 4 is not MJD, second of day and clock")},
        {"four.clk", head + "59025 30.000 1.0 2.0\n", Framed(".*four.clk: line 4 is not MJD, second of day and clock")},
        {"glued.clk", head + "59025 30.000 1.0x\n", Framed(".*glued.clk: line 4 is not MJD, second of day and clock")},
        {"1s.clk", head + "59025 30.000 1000000.5\n", Framed(".*1s.clk: line 4: receiver clock beyond 1 s")},
    });
    EXPECT_EXIT(Load<ClkErr>("absent_clkerr"), ::testing::ExitedWithCode(1), Framed("RECEIVER CLOCK ERROR FILE absent_clkerr CAN NOT BE OPENED!"));
    EXPECT_EXIT(Written(matrix<mjd>(3), matrix<long double>(2, 1, 0.0L)), ::testing::ExitedWithCode(1),
                Framed("RECEIVER CLOCK ERROR FILE: 3 epochs but 2 clock values"));
}
