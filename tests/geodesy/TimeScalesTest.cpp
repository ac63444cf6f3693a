// Time scales: calendar, MJD and GPS week conversions checked against an
// independent day count (Fliegel & Van Flandern 1968, Comm. ACM 11(10):657)
// and published epochs, epoch arithmetic and comparisons, the leap second
// table, the printed layouts written out by hand, and the framed exits.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>

#include "numerics/NearLD.h"
#include "geodesy/TimeConverse.h"

// MJD of 0h of a Gregorian date: the integer Julian day number of its noon
// (Fliegel & Van Flandern) less 2400001.
static long FvfMJD(long y, long m, long d) {
    const long a = (m - 14) / 12;
    return d - 32075 + 1461 * (y + 4800 + a) / 4 + 367 * (m - 2 - a * 12) / 12 - 3 * ((y + 4900 + a) / 100) / 4 - 2400001;
}

// Inverse of FvfMJD (same source).
static void FvfDate(long mjday, long& y, long& m, long& d) {
    long l = mjday + 2400001 + 68569;
    const long n = 4 * l / 146097;
    l -= (146097 * n + 3) / 4;
    const long i = 4000 * (l + 1) / 1461001;
    l -= 1461 * i / 4 - 31;
    const long j = 80 * l / 2447;
    d = l - 2447 * j / 80;
    m = j + 2 - 12 * (j / 11);
    y = 100 * (n - 49) + i + j / 11;
}

// Second of week near 604800 s holds long double steps of 5.7e-14 s; a
// conversion chain adds a few such roundings.
// Splitting a second of day into h, m, s costs a few ulps of 86400 s
// (7e-15 s each) per division and multiplication.
constexpr long double RoundTripTol_s = 5e-13L, HmsTol_s = 1e-12L;

static bool Near(long double a, long double b, long double tol) { return std::fabs(a - b) <= tol; }

template <class T> static std::string Print(const T& t) { std::ostringstream os; os << t; return os.str(); }

// The classes report on the output stream; a death test sees the error stream.
static void ExpectClassExit(const std::function<void()>& f, const std::string& cls, const std::string& msg) {
    EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); f(); }, ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* " + cls + ": Error -> " + msg + " \\*\\*\\*\\*\n     Exiting class " + cls + " \\.\\.\\. \n");
}


TEST(TimeConversion, EveryDayFrom1901To2199MatchesIndependentDayCount) {
    const long first = FvfMJD(1901, 1, 1), last = FvfMJD(2199, 12, 31);
    ASSERT_EQ(first, 15385);
    for (long m = first; m <= last; ++m) {
        long y, mo, d; FvfDate(m, y, mo, d);
        // A second of day that hits midnight, whole hours and minutes, the
        // last half second and fractions, different from day to day.
        const long double sod = std::array<long double, 5>{0.0L, 3600.0L * (m % 24), 60.0L * (m % 1440), 86399.5L, (m * 7919L) % 86400L + 0.123456789L}[m % 5];
        const ymdhms cal = mjd2ymdhms(mjd(m, sod));
        ASSERT_TRUE(cal.GetYear() == y && cal.GetMonth() == mo && cal.GetDay() == d && Near(cal.GetDaySecond(), sod, HmsTol_s) &&
                    cal.GetDayOfYear() == m - FvfMJD(y, 1, 1) + 1 && ymdhms2mjd(ymdhms(y, mo, d, 0, 0, 0.0L)).GetMJDay() == static_cast<unsigned long>(m)) << "MJD " << m << ": " << cal;
        if (m < 44244) continue;  // the GPS origin, a Sunday: day of week 0
        const GPSws g = mjd2GPSws(mjd(m, sod)), fromCal = ymdhms2GPSws(GPSws2ymdhms(g));
        const mjd back = GPSws2mjd(g);
        const ymdhms gc = GPSws2ymdhms(g);
        ASSERT_TRUE(g.GetWeek() == (m - 44244) / 7 && g.GetWeekDay() == (m - 44244) % 7 && Near(g.GetDaySecond(), sod, RoundTripTol_s) &&
                    back.GetMJDay() == static_cast<unsigned long>(m) && Near(back.GetSecond(), sod, RoundTripTol_s) &&
                    gc.GetYear() == y && gc.GetMonth() == mo && gc.GetDay() == d && Near(gc.GetDaySecond(), sod, HmsTol_s) && fromCal.GetWeek() == g.GetWeek() && Near(fromCal.GetSecond(), g.GetSecond(), RoundTripTol_s)) << "MJD " << m << ": " << g << gc;
    }
}

TEST(TimeConversion, PublishedEpochsAndMidnightCarries) {
    // GPS origin (IS-GPS-200), the GPT day count origin, J2000, a derived
    // day, and the two roll-overs of the broadcast 10-bit week.
    const struct { unsigned short y, m, d; unsigned long mjday; } days[] = {
        {1980, 1, 6, 44244}, {1980, 1, 1, 44239}, {2000, 1, 1, 51544}, {2012, 8, 2, 56141}, {1999, 8, 22, 51412}, {2019, 4, 7, 58580}};
    for (const auto& c : days)
        EXPECT_TRUE(ymdhms2mjd(ymdhms(c.y, c.m, c.d, 0, 0, 0.0L)).GetMJDay() == c.mjday && Print(mjd2ymdhms(mjd(c.mjday, 0.0L))) == Print(ymdhms(c.y, c.m, c.d, 0, 0, 0.0L))) << c.mjday;
    EXPECT_TRUE(ymdhms2GPSws(ymdhms(1999, 8, 22, 0, 0, 0.0L)).GetWeek() == 1024 && ymdhms2GPSws(ymdhms(2019, 4, 7, 0, 0, 0.0L)).GetWeek() == 2048 &&
                GPSws2mjd(GPSws(0, 0.0L)).GetMJDay() == 44244u);
    // MJD 55055 is 2009-08-12, a Wednesday. J2000.0 in GPS time:
    // 2000-01-01 11:59:08.816 is week 1042, 561548.816 s.
    const GPSws w = mjd2GPSws(mjd(55055, 0.0L)), j2000 = ymdhms2GPSws(ymdhms(2000, 1, 1, 11, 59, 8.816L));
    EXPECT_TRUE(w.GetWeek() == 1544 && w.GetWeekDay() == 3 && Near(w.GetSecond(), 259200.0L, RoundTripTol_s)) << w;
    EXPECT_TRUE(j2000.GetWeek() == 1042 && Near(j2000.GetSecond(), 561548.816L, RoundTripTol_s)) << j2000;

    // 1e-11 s short of midnight the split carries to 24:00:00, which the
    // hour test lets pass and which is the next day; hours past 24 are later
    // days too, and Saturday 24:00 is the next week's Sunday 0h.
    const ymdhms late = mjd2ymdhms(mjd(51544, 86400.0L - 1e-11L));
    const mjd next = ymdhms2mjd(late), later = ymdhms2mjd(ymdhms(2000, 1, 1, 30, 0, 0.0L));
    const GPSws sat = ymdhms2GPSws(ymdhms(2000, 1, 1, 24, 0, 0.0L));
    EXPECT_TRUE(late.GetHour() == 24 && late.GetMinute() == 0 && late.GetSecond() == 0.0L && next.GetMJDay() == 51545u && next.GetSecond() == 0.0L && later.GetMJDay() == 51545u && Near(later.GetSecond(), 21600.0L, HmsTol_s) &&
                sat.GetWeek() == 1043 && Near(sat.GetSecond(), 0.0L, RoundTripTol_s)) << late << sat;
    unsigned short h, m; long double s;
    Sec2HMS(3600.0L * 5 + 60.0L * 59 + 60.0L - 1e-11L, h, m, s);  // carries to 06:00:00
    EXPECT_TRUE(h == 6 && m == 0 && s == 0.0L);
    // GPSws keeps the raw split: no carry, so a second just short of 60
    // stays (1e-9 s: round-off of the split at 9e4 s is 1e-14 s).
    GPSws(100, 86400.0L + 3599.9999999L).Sec2HMS(h, m, s);
    EXPECT_TRUE(h == 0 && m == 59 && Near(s, 59.9999999L, 1e-9L));
}

TEST(Calendar, LeapYearsDaysOfYearDecimalYearsAndReading) {
    EXPECT_TRUE(LeapYear(2000) && LeapYear(2004) && !(LeapYear(1900) || LeapYear(2100) || LeapYear(2001) || LeapYear(0)));
    // Every day of a common, a leap and the non-leap century year.
    ymdhms t;
    for (long y : {2001L, 2000L, 2100L})
        for (long doy = 1, yy, mo, d; doy <= (LeapYear(static_cast<unsigned short>(y)) ? 366 : 365); ++doy) {
            FvfDate(FvfMJD(y, 1, 1) + doy - 1, yy, mo, d);
            t.SetDayOfYear(static_cast<unsigned short>(y), static_cast<unsigned short>(doy));
            ASSERT_TRUE(t.GetYear() == yy && t.GetMonth() == mo && t.GetDay() == d && t.GetDayOfYear() == doy && t.GetDaySecond() == 0.0L) << y << " " << doy;
        }
    // The decimal year passes through double: 2000 yr * 1.1e-16 = 7e-6 s.
    // Mid-year of a leap year: 183 of 366 days have passed at 2000-07-02 0h.
    for (const ymdhms& c : {ymdhms(2000, 2, 29, 12, 0, 0.0L), ymdhms(2019, 12, 31, 23, 59, 59.5L), ymdhms(1901, 1, 1, 0, 0, 0.0L)}) {
        t.SetYDec(static_cast<double>(c.GetYearDec()));
        EXPECT_NEAR_LD(ymdhms2mjd(t) - ymdhms2mjd(c), 0.0L, 2e-5L) << c;
    }
    EXPECT_NEAR_LD(ymdhms(2000, 7, 2, 0, 0, 0.0L).GetYearDec(), 2000.5L, 1e-15L);
    t = ymdhms(2020, 6, 25, 0, 0, 0.0L);
    t.SetDaySecond(45296.5L);  // 12:34:56.5, the date kept
    EXPECT_TRUE(t.GetDay() == 25 && t.GetHour() == 12 && t.GetMinute() == 34 && Near(t.GetSecond(), 56.5L, HmsTol_s)) << t;
    t.SetHMS(1, 2, 3.0L);
    EXPECT_NEAR_LD(t.GetDaySecond(), 3723.0L, HmsTol_s);
    // Two-digit years: 80 to 99 are the 1900s, 0 to 79 the 2000s; a short
    // line fails and leaves the value alone.
    const struct { const char* text; unsigned short year; } reads[] = {
        {"79 1 1 0 0 0", 2079}, {"80 1 1 0 0 0", 1980}, {"99 12 31 0 0 0", 1999}, {"0 1 1 0 0 0", 2000}, {"2020 6 25 8 5 3.3", 2020}};
    ymdhms u;
    for (const auto& r : reads) EXPECT_TRUE(std::istringstream(r.text) >> u && u.GetYear() == r.year) << r.text;
    EXPECT_TRUE(!(std::istringstream("2020 6") >> t) && t.GetHour() == 1);
}

TEST(EpochArithmetic, StepsCarryDaysAndWeeksAndDifferencesGiveThemBack) {
    // Over midnight, back over it, whole days and a midnight at once, and
    // exactly onto midnight; then whole days.
    mjd t(51544, 86000.0L);
    const struct { long double step; unsigned long day; long double second; } steps[] = {
        {500, 51545, 100}, {-200, 51544, 86300}, {3 * 86400.0L + 200, 51548, 100}, {-3 * 86400.0L - 100, 51545, 0}};
    for (const auto& c : steps) EXPECT_TRUE((t += c.step).GetMJDay() == c.day && Near(t.GetSecond(), c.second, RoundTripTol_s)) << c.step << ": " << t;
    EXPECT_EQ((t += 2L, t -= 3L).GetMJDay(), 51544u);
    // 1e-13 s short of midnight rolls over; 1e-11 s short is a real instant
    // and stays on its day (1e-14 s: the spacing at 86400 s is 7e-15 s).
    mjd u(51544, 0.0L), v(51544, 0.0L);
    u += 86400.0L - 1e-13L, v += 86400.0L - 1e-11L;
    EXPECT_TRUE(u.GetMJDay() == 51545u && u.GetSecond() == 0.0L && v.GetMJDay() == 51544u && Near(v.GetSecond(), 86400.0L - 1e-11L, 1e-14L));

    // 7300 days and 12 h from the GPS origin to J2000 noon; day plus second
    // keeps nanoseconds across days where a decimal MJD (5e-10 s at MJD
    // 60000) could not: near 86400 s a second of day holds 7.2e-15 s steps.
    const mjd a(44244, 0.0L), b(51544, 43200.0L), c(60000, 86400.0L - 1e-9L), d(60001, 1e-9L);
    EXPECT_TRUE(Near(b - a, 7300.5L * 86400.0L, RoundTripTol_s) && Near(a - b, -7300.5L * 86400.0L, RoundTripTol_s) &&
                Near(d - c, 2e-9L, 2 * 7.2e-15L) && Near(c - d, -2e-9L, 2 * 7.2e-15L));
    for (long double dt : {30.0L, -30.0L, 86399.999L, 1e6L + 0.25L, -2.5e6L}) EXPECT_NEAR_LD((mjd(55055, 43210.5L) += dt) - mjd(55055, 43210.5L), dt, RoundTripTol_s);
    // 51544.5 is exact in binary; only the split and its recombination round.
    t = 51544.5L;
    EXPECT_TRUE(t.GetMJDay() == 51544u && Near(t.GetSecond(), 43200.0L, RoundTripTol_s) && Near(t.GetMJDDec(), 51544.5L, 1e-15L)) << t;

    GPSws g(2111, 600000.0L);
    const struct { long double step; int week; long double second; } gsteps[] = {{10000, 2112, 5200}, {-6000, 2111, 604000}, {3 * 604800.0L, 2114, 604000}};
    for (const auto& c : gsteps) EXPECT_TRUE((g += c.step).GetWeek() == c.week && Near(g.GetSecond(), c.second, RoundTripTol_s)) << c.step << ": " << g;
    g += static_cast<unsigned short>(2);
    EXPECT_TRUE(g.GetWeek() == 2116 && g.GetWeekDay() == 6 && Near(g.GetDaySecond(), 604000.0L - 6.0L * 86400.0L, RoundTripTol_s)) << g;
}

TEST(EpochComparison, EqualityHasATolerancesAndStrictOrderHasNone) {
    const mjd a(51544, 100.0L), lo(51544, 100.0L - 1e-15L), hi(51544, 100.0L + 1e-12L), next(51545, 0.0L);
    // Each row: x, y, and the expected x == y, x != y, x < y, x <= y, x > y, x >= y.
    const struct { mjd x, y; bool eq, ne, lt, le, gt, ge; } cases[] = {
        {lo, a, true, false, true, true, false, true},  {a, lo, true, false, false, true, true, true}, {a, hi, false, true, true, true, false, false},
        {hi, next, false, true, true, true, false, false}, {next, a, false, true, false, false, true, true},
        {a, a, true, false, false, true, false, true},   {mjd(51544, 86399.9L), next, false, true, true, true, false, false}};
    for (const auto& c : cases)
        EXPECT_TRUE((c.x == c.y) == c.eq && (c.x != c.y) == c.ne && (c.x < c.y) == c.lt && (c.x <= c.y) == c.le && (c.x > c.y) == c.gt && (c.x >= c.y) == c.ge)
            << c.x << " vs " << c.y;
}

// GPS - UTC = TAI - UTC - 19 s at each leap second of the IERS history
// (Bulletin C), given as the calendar day from which it holds.
TEST(LeapSecondTable, EveryStepOfTheIersHistory) {
    const struct { long y, m; } steps[] = {
        {1972, 1}, {1972, 7}, {1973, 1}, {1974, 1}, {1975, 1}, {1976, 1}, {1977, 1}, {1978, 1}, {1979, 1}, {1980, 1},
        {1981, 7}, {1982, 7}, {1983, 7}, {1985, 7}, {1988, 1}, {1990, 1}, {1991, 1}, {1992, 7}, {1993, 7}, {1994, 7},
        {1996, 1}, {1997, 7}, {1999, 1}, {2006, 1}, {2009, 1}, {2012, 7}, {2015, 7}, {2017, 1}};
    long double now = 10.0L - 19.0L;  // TAI - UTC was 10 s from 1972 and grew by 1 s at each step
    for (const auto& s : steps) {
        const long day = FvfMJD(s.y, s.m, 1);
        EXPECT_TRUE(LeapSecond(mjd(day, 0.0L)) == now && LeapSecond(mjd(day + 180, 0.0L)) == now) << s.y << "-" << s.m;
        // The last instant of the day before still has the old offset.
        EXPECT_TRUE(now == -9.0L || LeapSecond(mjd(day - 1, 86399.9L)) == now - 1.0L) << s.y << "-" << s.m;
        now += 1.0L;
    }
    EXPECT_TRUE(LeapSecond(ymdhms2mjd(ymdhms(2026, 1, 1, 0, 0, 0.0L))) == 18.0L && LeapSecond(mjd(30000, 0.0L)) == -9.0L && LeapSecond(ymdhms2mjd(ymdhms(1980, 1, 6, 0, 0, 0.0L))) == 0.0L);
    // Adding the offset moves the epoch to GPS time: the seconds it adds
    // must go to the second of day, not whole days.
    mjd t(58000, 86390.0L);
    t += LeapSecond(t);
    EXPECT_TRUE(t.GetMJDay() == 58001u && Near(t.GetSecond(), 8.0L, RoundTripTol_s)) << t;
}

TEST(TimeFormat, LayoutsWrittenOutByHandAndReadBack) {
    // 2020-06-25 08:05:03.3, a Thursday: day of year 177, second of day
    // 29103.3, MJD 59025, GPS week 2111, second of week 374703.3. Decimal
    // year 2020 + (176 + 29103.3/86400)/366; day fraction 29103.3/86400.
    const ymdhms cal(2020, 6, 25, 8, 5, 3.3L);
    const mjd day(59025, 29103.3L);
    const GPSws week(2111, 4.0L * 86400.0L + 29103.3L);
    const struct { std::function<void()> set; std::function<std::string()> print; const char* text; } cases[] = {
        {[] {}, [&] { return Print(cal) + "|" + Print(day) + "|" + Print(week); }, " 2020-06-25 08:05:03.3| 59025 29103.3| 2111 374703.3"},
        {[] { ymdhmsns::PrintType = 0; }, [&] { return Print(cal); }, "  2020     6    25     8     5    3.3000000"},
        {[] { ymdhmsns::PrintType = 1; }, [&] { return Print(cal) + Print(ymdhms(1999, 12, 31, 23, 59, 0.0L)); }, " 20  6 25  8  5  3.3000000 99 12 31 23 59  0.0000000"},
        {[] { ymdhmsns::PrintType = 3; }, [&] { return Print(cal); }, "2020  6 25  8  5  3.30000000"},
        {[] { ymdhmsns::PrintType = 4; }, [&] { return Print(cal) + Print(ymdhms(2005, 1, 9, 0, 1, 5.0L)); }, "20:177:2910305:009:00065"},
        {[] { ymdhmsns::NDecSecond = 0; mjdns::NDecSecond = 3; }, [&] { return Print(cal) + "|" + Print(day); }, " 2020-06-25 08:05:03| 59025 29103.300"},
        {[] { ymdhmsns::NDecSecond = 3; }, [&] { return Print(cal); }, " 2020-06-25 08:05:03.300"},
        {[] { ymdhmsns::PrintFormat = mjdns::PrintFormat = gpswsns::PrintFormat = 1; }, [&] { return Print(cal) + "|" + Print(day) + "|" + Print(week); }, " 2020-177 08:05:03.3| 59025.3| 2111 4 29103.3"},
        {[] { ymdhmsns::PrintFormat = mjdns::PrintFormat = gpswsns::PrintFormat = 2; }, [&] { return Print(cal) + Print(ymdhms(2020, 1, 2, 0, 0, 5.0L)) + "|" + Print(day) + "|" + Print(week); }, "2020-177  29103.32020-002      5.0| 59025  08:05:03.3| 2111 4  08:05:03.3"},
        {[] { ymdhmsns::PrintFormat = mjdns::PrintFormat = gpswsns::PrintFormat = 3; }, [&] { return Print(cal) + "|" + Print(day) + "|" + Print(week) + Print(GPSws(850, 0.0L)); }, "2020-06-25|59025| 2111 4 0850 0"},
        {[] { ymdhmsns::PrintFormat = mjdns::PrintFormat = gpswsns::PrintFormat = 4; }, [&] { return Print(cal) + "|" + Print(day) + "|" + Print(week); }, " 2020.4817947| 59025 0.3368437500000| 2111 374703.30000000"},
        {[] { ymdhmsns::PrintFormat = 5; }, [&] { return Print(cal); }, "2020-177"}};
    for (const auto& c : cases) {
        c.set();
        EXPECT_EQ(c.print(), c.text);
        ymdhmsns::NDecSecond = mjdns::NDecSecond = gpswsns::NDecSecond = 1;
        ymdhmsns::PrintFormat = mjdns::PrintFormat = gpswsns::PrintFormat = 0, ymdhmsns::PrintType = 2;
    }
    std::ostringstream os;
    os << std::scientific << std::setprecision(3) << std::setfill('*') << cal << day << week;
    EXPECT_TRUE(os.precision() == 3 && os.fill() == '*' && (os.flags() & std::ios::scientific));
    ymdhmsns::PrintType = 0;
    std::istringstream in(Print(cal) + " " + Print(day) + " 2111 374703.3");
    ymdhmsns::PrintType = 2;
    ymdhms back; mjd d; GPSws g;
    in >> back >> d >> g;
    EXPECT_TRUE(Near(ymdhms2mjd(back) - day, 0.0L, 1e-7L) && Near(d - day, 0.0L, 1e-9L) && g.GetWeek() == 2111) << back << d << g;
}

TEST(TimeValidityDeath, FieldsOutsideTheirRangeStopWithTheClassFrame) {
    // Valid edges pass.
    EXPECT_TRUE(ymdhms(2199, 12, 31, 59, 59, 59.999L).GetHour() == 59 && ymdhms(1901, 1, 1, 0, 0, 0.0L).GetYear() == 1901 &&
                mjd(199999, 86399.999L).GetMJDay() == 199999u && GPSws(11999, 604799.999L).GetWeek() == 11999);
    ymdhms t;
    const struct { std::function<void()> f; const char *cls, *msg; } cases[] = {
        {[] { ymdhms(1900, 1, 1, 0, 0, 0.0L); }, "ymdhms", "YEAR not valid"},
        {[] { ymdhms(2020, 13, 1, 0, 0, 0.0L); }, "ymdhms", "MONTH not valid"},
        {[] { ymdhms(2020, 1, 0, 0, 0, 0.0L); }, "ymdhms", "DAY not valid"},
        {[] { ymdhms(2020, 4, 31, 0, 0, 0.0L); }, "ymdhms", "DAY not valid"},
        {[] { ymdhms(2100, 2, 29, 0, 0, 0.0L); }, "ymdhms", "DAY not valid"},
        {[] { ymdhms(2000, 2, 30, 0, 0, 0.0L); }, "ymdhms", "DAY not valid"},
        {[] { ymdhms(2020, 1, 1, 60, 0, 0.0L); }, "ymdhms", "HOUR not valid"},
        {[] { ymdhms(2020, 1, 1, 0, 60, 0.0L); }, "ymdhms", "MINUTE not valid"},
        {[] { ymdhms(2020, 1, 1, 0, 0, 60.0L); }, "ymdhms", "SECOND not valid"},
        {[&] { t.SetDaySecond(-1.0L); }, "ymdhms", "SECOND not valid"},
        {[&] { t.SetDaySecond(60.0L * 3600.0L); }, "ymdhms", "HOUR not valid"},
        {[&] { t.SetDayOfYear(2001, 366); }, "ymdhms", "DAY OF YEAR not valid"},
        {[&] { t.SetYDec(-5.0); }, "ymdhms", "YEAR not valid"},
        {[&] { std::istringstream in("2020 -1 1 0 0 0"); in >> t; }, "ymdhms", "MONTH not valid"},
        {[] { mjd2ymdhms(mjd(15384, 0.0L)); }, "ymdhms", "YEAR not valid"},  // no calendar before 1901
        {[] { mjd(200000, 0.0L); }, "mjd", "MJDAY not valid"},
        {[] { mjd(51544, 86400.0L); }, "mjd", "SECOND not valid"},
        {[] { mjd m; m = -1.0L; }, "mjd", "MJDAY not valid"},
        {[] { mjd m(0, 10.0L); m += -20.0L; }, "mjd", "MJDAY not valid"},
        {[] { std::istringstream in("-5 0"); mjd m; in >> m; }, "mjd", "MJDAY not valid"},
        {[] { GPSws(12000, 0.0L); }, "GPSws", "WEEK not valid"},
        {[] { GPSws(100, 604800.0L); }, "GPSws", "SECOND not valid"},
        {[] { GPSws g(0, 5.0L); g += -10.0L; }, "GPSws", "WEEK not valid"},
        {[] { mjd2GPSws(mjd(44243, 86399.0L)); }, "GPSws", "WEEK not valid"}};  // before the GPS origin

    for (const auto& c : cases) ExpectClassExit(c.f, c.cls, c.msg);
}
