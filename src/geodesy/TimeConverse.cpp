#include "geodesy/TimeConverse.h"

#include <cmath>

namespace {
constexpr long double DaySec = 86400.0L;
constexpr long double WeekSec = 604800.0L;
constexpr long GPSOriginMJD = 44244;  // 1980-01-06
constexpr long FirstMJD = 15385;      // 1901-01-01, start of the day count
constexpr long MaxYear = 2199;
constexpr long MaxWeek = 11999;
// The day count runs in four-year blocks, which assumes 2100 to be leap; its
// phantom 29 February 2100 sits at the day that really is 1 March 2100.
constexpr long Mar2100MJD = 88128;
// A time of day this close to 24 h is midnight of the next day: the
// fraction-of-day forms of products leave a few 1e-11 s of round-off.
constexpr long double MidnightTol = 1e-10L;
// GPS second of week holds about 1e-10 s resolution when it has passed
// through double precision on its way from a product file.
constexpr long double MinuteCarryTol = 1e-5L;

struct CalendarDay {
    long year;
    unsigned short month, day;
};

// Day number to calendar date by four-year blocks from 1901-01-01 (Remondi's
// month guess 0.032 yday), with the 2100 correction ahead of it.
CalendarDay DayToCalendar(long m)
{
    if (m < FirstMJD) ymdhms::Error("YEAR not valid");
    if (m >= Mar2100MJD) ++m;
    const long days = m - FirstMJD;
    const long num_four_yrs = days / 1461;
    const long years_so_far = 1901 + 4 * num_four_yrs;
    const long days_left = days - 1461 * num_four_yrs;
    const long delta_yrs = days_left / 365 - days_left / 1460;
    CalendarDay c;
    c.year = years_so_far + delta_yrs;
    if (c.year > MaxYear) ymdhms::Error("YEAR not valid");
    const long yday = days_left - 365 * delta_yrs + 1;
    // Leap in the sense of the block count (every fourth year), which is the
    // Gregorian rule from 1901 to 2099 and places the phantom day in 2100.
    const int leap = c.year % 4 == 0 ? 1 : 0;
    const long guess = static_cast<long>(0.032L * yday);
    const long more = yday > month_day[leap][guess + 1] ? 1 : 0;
    c.month = static_cast<unsigned short>(guess + more + 1);
    c.day = static_cast<unsigned short>(yday - month_day[leap][guess + more]);
    return c;
}

// Calendar date (already checked by ymdhms) to day number; inverse of
// DayToCalendar.
long CalendarToDay(const ymdhms& t)
{
    const long y = t.GetYear();
    const int leap = y % 4 == 0 ? 1 : 0;
    const long yday = t.GetDay() + month_day[leap][t.GetMonth() - 1];
    long m = ((y - 1901) / 4) * 1461 + ((y - 1901) % 4) * 365 + yday + 15384;
    if (m >= Mar2100MJD + 1) --m;
    return m;
}

// Week and second of week for day m and second of day sod; sod beyond one
// day carries on through the weeks.
GPSws WeekSecond(long m, long double sod)
{
    if (m < GPSOriginMJD) GPSws::Error("WEEK not valid");
    long week = (m - GPSOriginMJD) / 7;
    long double sow = (m - GPSOriginMJD - 7 * week) * DaySec + sod;
    if (sow >= WeekSec) {
        const long extra = static_cast<long>(std::floor(sow / WeekSec));
        week += extra;
        sow -= extra * WeekSec;
    }
    if (week > MaxWeek) GPSws::Error("WEEK not valid");
    return GPSws(static_cast<unsigned short>(week), sow);
}
}  // namespace

bool LeapYear(long y) { return ymdhms::LeapYear(y); }

void Sec2HMS(long double s, unsigned short& hr, unsigned short& mn, long double& sec)
{
    ymdhms::Sec2HMS(s, hr, mn, sec);
}

ymdhms mjd2ymdhms(const mjd& t)
{
    const CalendarDay c = DayToCalendar(static_cast<long>(t.GetMJDay()));
    unsigned short h, m;
    long double s;
    t.Sec2HMS(h, m, s);
    return ymdhms(static_cast<unsigned short>(c.year), c.month, c.day, h, m, s);
}

mjd ymdhms2mjd(const ymdhms& t)
{
    long m = CalendarToDay(t);
    long double sod = 60.0L * t.GetMinute() + t.GetSecond() + 3600.0L * t.GetHour();
    if (sod > DaySec - MidnightTol) {
        // Hours of 24 and beyond (valid in ymdhms) are later days.
        const long extra = static_cast<long>(std::floor((sod + MidnightTol) / DaySec));
        m += extra;
        sod -= extra * DaySec;
        if (std::fabs(sod) < MidnightTol) sod = 0.0L;
    }
    if (m > 199999) mjd::Error("MJDAY not valid");
    return mjd(static_cast<unsigned long>(m), sod);
}

GPSws mjd2GPSws(const mjd& t)
{
    if (t.GetMJDay() > 199999) mjd::Error("MJDAY not valid");
    return WeekSecond(static_cast<long>(t.GetMJDay()), t.GetSecond());
}

mjd GPSws2mjd(const GPSws& t)
{
    const long double sow = t.GetSecond();
    const long m = static_cast<long>(std::floor(sow / DaySec)) + 7L * t.GetWeek() + GPSOriginMJD;
    return mjd(static_cast<unsigned long>(m), std::fmod(sow, DaySec));
}

GPSws ymdhms2GPSws(const ymdhms& t)
{
    const long m = CalendarToDay(t);
    const long double fraction =
        ((t.GetSecond() / 60.0L + t.GetMinute()) / 60.0L + t.GetHour()) / 24.0L;
    return WeekSecond(m, fraction * DaySec);
}

ymdhms GPSws2ymdhms(const GPSws& t)
{
    const long double sow = t.GetSecond();
    const long m = static_cast<long>(std::floor(sow / DaySec)) + 7L * t.GetWeek() + GPSOriginMJD;
    const long double fmjd = std::fmod(sow, DaySec) / DaySec;
    const CalendarDay c = DayToCalendar(m);
    long hour = static_cast<long>(24.0L * fmjd);
    long minute = static_cast<long>(1440.0L * fmjd - 60.0L * hour);
    long double second = 86400.0L * fmjd - 3600.0L * hour - 60.0L * minute;
    // Round-off of the day fraction can put a whole minute a hair below zero.
    if (second < 0.0L && second > -MinuteCarryTol) second = 0.0L;
    if (std::fabs(second - 60.0L) < MinuteCarryTol) {
        second = 0.0L;
        ++minute;
    }
    if (minute == 60) {
        minute = 0;
        ++hour;
    }
    return ymdhms(static_cast<unsigned short>(c.year), c.month, c.day,
                  static_cast<unsigned short>(hour), static_cast<unsigned short>(minute), second);
}
