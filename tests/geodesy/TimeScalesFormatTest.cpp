// Printed layouts of the time classes, written out by hand from their
// column descriptions, and the framed exits of invalid fields.
#include <gtest/gtest.h>

#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>

#include "geodesy/TimeConverse.h"
#include "numerics/NearLD.h"

namespace {

// 2020-06-25 08:05:03.3, a Thursday: day of year 177, second of day 29103.3,
// MJD 59025, GPS week 2111, second of week 374703.3.
const ymdhms Cal(2020, 6, 25, 8, 5, 3.3L);
const mjd Day(59025, 29103.3L);
const GPSws Week(2111, 4.0L * 86400.0L + 29103.3L);

template <class T>
std::string Print(const T& t)
{
    std::ostringstream os;
    os << t;
    return os.str();
}

// Sets the print globals of one class for a test and puts back the defaults.
struct PrintSettings {
    ~PrintSettings()
    {
        ymdhmsns::NDecSecond = 1;
        ymdhmsns::PrintFormat = 0;
        ymdhmsns::PrintType = 2;
        mjdns::NDecSecond = 1;
        mjdns::PrintFormat = 0;
        gpswsns::NDecSecond = 1;
        gpswsns::PrintFormat = 0;
    }
};

// The framed exit text of a time class, as a regular expression.
std::string Framed(const std::string& cls, const std::string& msg)
{
    return "\\*\\*\\*\\* " + cls + ": Error -> " + msg + " \\*\\*\\*\\*\n     Exiting class " + cls
           + " \\.\\.\\. \n";
}

// The classes report on the output stream; a death test sees the error stream.
#define EXPECT_TIME_DEATH(stmt, cls, msg)                                                   \
    EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); stmt; }, ::testing::ExitedWithCode(1), \
                Framed(cls, msg))

}  // namespace

TEST(TimeFormat, CalendarFixedColumnTypes)
{
    PrintSettings keep;
    ymdhmsns::PrintType = 0;
    EXPECT_EQ(Print(Cal), "  2020     6    25     8     5    3.3000000");
    ymdhmsns::PrintType = 1;
    EXPECT_EQ(Print(Cal), " 20  6 25  8  5  3.3000000");
    EXPECT_EQ(Print(ymdhms(1999, 12, 31, 23, 59, 0.0L)), " 99 12 31 23 59  0.0000000");
    ymdhmsns::PrintType = 3;
    EXPECT_EQ(Print(Cal), "2020  6 25  8  5  3.30000000");
    ymdhmsns::PrintType = 4;
    EXPECT_EQ(Print(Cal), "20:177:29103");
    EXPECT_EQ(Print(ymdhms(2005, 1, 9, 0, 1, 5.0L)), "05:009:00065");
}

TEST(TimeFormat, CalendarPrintFormats)
{
    PrintSettings keep;
    EXPECT_EQ(Print(Cal), " 2020-06-25 08:05:03.3");
    ymdhmsns::NDecSecond = 0;
    EXPECT_EQ(Print(Cal), " 2020-06-25 08:05:03");
    ymdhmsns::NDecSecond = 3;
    EXPECT_EQ(Print(Cal), " 2020-06-25 08:05:03.300");
    ymdhmsns::NDecSecond = 1;
    ymdhmsns::PrintFormat = 1;
    EXPECT_EQ(Print(Cal), " 2020-177 08:05:03.3");
    ymdhmsns::PrintFormat = 2;
    EXPECT_EQ(Print(Cal), "2020-177  29103.3");
    EXPECT_EQ(Print(ymdhms(2020, 1, 2, 0, 0, 5.0L)), "2020-002      5.0");
    ymdhmsns::PrintFormat = 3;
    EXPECT_EQ(Print(Cal), "2020-06-25");
    ymdhmsns::PrintFormat = 5;
    EXPECT_EQ(Print(Cal), "2020-177");
    ymdhmsns::PrintFormat = 4;
    // 2020 + (176 + 29103.3/86400)/366 = 2020.48179468...
    EXPECT_EQ(Print(Cal), " 2020.4817947");
}

TEST(TimeFormat, MjdPrintFormats)
{
    PrintSettings keep;
    EXPECT_EQ(Print(Day), " 59025 29103.3");
    mjdns::NDecSecond = 3;
    EXPECT_EQ(Print(Day), " 59025 29103.300");
    mjdns::NDecSecond = 1;
    mjdns::PrintFormat = 1;
    EXPECT_EQ(Print(Day), " 59025.3");
    mjdns::PrintFormat = 2;
    EXPECT_EQ(Print(Day), " 59025  08:05:03.3");
    mjdns::PrintFormat = 3;
    EXPECT_EQ(Print(Day), "59025");
    mjdns::PrintFormat = 4;
    EXPECT_EQ(Print(Day), " 59025 0.3368437500000");
}

TEST(TimeFormat, GPSwsPrintFormats)
{
    PrintSettings keep;
    EXPECT_EQ(Print(Week), " 2111 374703.3");
    gpswsns::PrintFormat = 1;
    EXPECT_EQ(Print(Week), " 2111 4 29103.3");
    gpswsns::PrintFormat = 2;
    EXPECT_EQ(Print(Week), " 2111 4  08:05:03.3");
    gpswsns::PrintFormat = 3;
    EXPECT_EQ(Print(Week), " 2111 4");
    EXPECT_EQ(Print(GPSws(850, 0.0L)), " 0850 0");
    gpswsns::PrintFormat = 4;
    EXPECT_EQ(Print(Week), " 2111 374703.30000000");
}

TEST(TimeFormat, StreamStateIsKeptAndReadsBack)
{
    PrintSettings keep;
    std::ostringstream os;
    os << std::scientific << std::setprecision(3) << std::setfill('*');
    os << Cal << Day << Week;
    EXPECT_EQ(os.precision(), 3);
    EXPECT_EQ(os.fill(), '*');
    EXPECT_TRUE((os.flags() & std::ios::scientific) != 0);

    // The 7-decimal layout read back gives the same epoch.
    ymdhmsns::PrintType = 0;
    std::istringstream in(Print(Cal));
    ymdhms back;
    in >> back;
    EXPECT_NEAR_LD(ymdhms2mjd(back) - ymdhms2mjd(Cal), 0.0L, 1e-7L);  // printed to 1e-7 s

    std::istringstream in2(Print(Day) + " " + "2111 374703.3");
    mjd d;
    GPSws g;
    in2 >> d >> g;
    // 1e-9 s: the day fraction prints 13 decimals (9e-9 s), and Day was built
    // from whole tenths of a second, so its text reads back to round-off.
    EXPECT_NEAR_LD(d - Day, 0.0L, 1e-9L);
    EXPECT_EQ(g.GetWeek(), 2111);
}

TEST(TimeValidity, ValidEdgesPass)
{
    EXPECT_EQ(ymdhms(1901, 1, 1, 0, 0, 0.0L).GetYear(), 1901);
    EXPECT_EQ(ymdhms(2199, 12, 31, 59, 59, 59.999L).GetHour(), 59);
    EXPECT_EQ(ymdhms(2000, 2, 29, 0, 0, 0.0L).GetDay(), 29);
    EXPECT_EQ(mjd(199999, 86399.999L).GetMJDay(), 199999u);
    EXPECT_EQ(GPSws(11999, 604799.999L).GetWeek(), 11999);
}

TEST(TimeValidityDeath, CalendarFields)
{
    EXPECT_TIME_DEATH(ymdhms(1900, 1, 1, 0, 0, 0.0L), "ymdhms", "YEAR not valid");
    EXPECT_TIME_DEATH(ymdhms(2200, 1, 1, 0, 0, 0.0L), "ymdhms", "YEAR not valid");
    EXPECT_TIME_DEATH(ymdhms(2020, 13, 1, 0, 0, 0.0L), "ymdhms", "MONTH not valid");
    EXPECT_TIME_DEATH(ymdhms(2020, 0, 1, 0, 0, 0.0L), "ymdhms", "MONTH not valid");
    EXPECT_TIME_DEATH(ymdhms(2020, 1, 0, 0, 0, 0.0L), "ymdhms", "DAY not valid");
    EXPECT_TIME_DEATH(ymdhms(2020, 1, 32, 0, 0, 0.0L), "ymdhms", "DAY not valid");
    EXPECT_TIME_DEATH(ymdhms(2020, 4, 31, 0, 0, 0.0L), "ymdhms", "DAY not valid");
    EXPECT_TIME_DEATH(ymdhms(2001, 2, 29, 0, 0, 0.0L), "ymdhms", "DAY not valid");
    EXPECT_TIME_DEATH(ymdhms(2100, 2, 29, 0, 0, 0.0L), "ymdhms", "DAY not valid");
    EXPECT_TIME_DEATH(ymdhms(2000, 2, 30, 0, 0, 0.0L), "ymdhms", "DAY not valid");
    EXPECT_TIME_DEATH(ymdhms(2020, 1, 1, 60, 0, 0.0L), "ymdhms", "HOUR not valid");
    EXPECT_TIME_DEATH(ymdhms(2020, 1, 1, 0, 60, 0.0L), "ymdhms", "MINUTE not valid");
    EXPECT_TIME_DEATH(ymdhms(2020, 1, 1, 0, 0, 60.0L), "ymdhms", "SECOND not valid");
    EXPECT_TIME_DEATH(ymdhms(2020, 1, 1, 0, 0, -1e-9L), "ymdhms", "SECOND not valid");
    // The year is tested first when several fields are wrong.
    EXPECT_TIME_DEATH(ymdhms(1800, 13, 40, 70, 70, 70.0L), "ymdhms", "YEAR not valid");
}

TEST(TimeValidityDeath, CalendarSettersAndReads)
{
    ymdhms t;
    EXPECT_TIME_DEATH(t.SetMonth(13), "ymdhms", "MONTH not valid");
    EXPECT_TIME_DEATH(t.SetDay(32), "ymdhms", "DAY not valid");
    EXPECT_TIME_DEATH(t.SetSecond(61.0L), "ymdhms", "SECOND not valid");
    EXPECT_TIME_DEATH(t.SetDaySecond(-1.0L), "ymdhms", "SECOND not valid");
    EXPECT_TIME_DEATH(t.SetDaySecond(60.0L * 3600.0L), "ymdhms", "HOUR not valid");
    EXPECT_TIME_DEATH(t.SetDayOfYear(2001, 366), "ymdhms", "DAY OF YEAR not valid");
    EXPECT_TIME_DEATH(t.SetDayOfYear(2000, 0), "ymdhms", "DAY OF YEAR not valid");
    EXPECT_TIME_DEATH(t.SetYDec(-5.0), "ymdhms", "YEAR not valid");
    EXPECT_TIME_DEATH(
        {
            std::istringstream in("2020 -1 1 0 0 0");
            in >> t;
        },
        "ymdhms", "MONTH not valid");
    // Days before 1901 have no calendar in the day count.
    EXPECT_TIME_DEATH(mjd2ymdhms(mjd(15384, 0.0L)), "ymdhms", "YEAR not valid");
}

TEST(TimeValidityDeath, MjdAndGPSwsFields)
{
    EXPECT_TIME_DEATH(mjd(200000, 0.0L), "mjd", "MJDAY not valid");
    EXPECT_TIME_DEATH(mjd(51544, 86400.0L), "mjd", "SECOND not valid");
    EXPECT_TIME_DEATH(mjd(51544, -0.001L), "mjd", "SECOND not valid");
    EXPECT_TIME_DEATH({ mjd m; m = -1.0L; }, "mjd", "MJDAY not valid");
    EXPECT_TIME_DEATH({ mjd m(0, 10.0L); m += -20.0L; }, "mjd", "MJDAY not valid");
    EXPECT_TIME_DEATH(
        {
            std::istringstream in("-5 0");
            mjd m;
            in >> m;
        },
        "mjd", "MJDAY not valid");

    EXPECT_TIME_DEATH(GPSws(12000, 0.0L), "GPSws", "WEEK not valid");
    EXPECT_TIME_DEATH(GPSws(100, 604800.0L), "GPSws", "SECOND not valid");
    EXPECT_TIME_DEATH(GPSws(100, -1.0L), "GPSws", "SECOND not valid");
    EXPECT_TIME_DEATH({ GPSws g(0, 5.0L); g += -10.0L; }, "GPSws", "WEEK not valid");
    // Before the GPS origin there is no week.
    EXPECT_TIME_DEATH(mjd2GPSws(mjd(44243, 86399.0L)), "GPSws", "WEEK not valid");
    EXPECT_TIME_DEATH(ymdhms2GPSws(ymdhms(1980, 1, 5, 0, 0, 0.0L)), "GPSws", "WEEK not valid");
}
