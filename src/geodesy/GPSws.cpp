#include "geodesy/GPSws.h"
#include "numerics/ProgramError.h"

#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <iostream>

#include "geodesy/ymdhms.h"

namespace gpswsns {
short NDecSecond = 1;
short PrintFormat = 0;
}  // namespace gpswsns

namespace {
constexpr long double DaySec = 86400.0L;
constexpr long double WeekSec = 604800.0L;
constexpr long MaxWeek = 11999;
}  // namespace

GPSws::GPSws() : week(0), second(0.0L) {}

GPSws::GPSws(unsigned short w, long double s) : week(w), second(s) { TestDatum(); }

GPSws::GPSws(const GPSws& o) : week(o.week), second(o.second) { TestDatum(); }

GPSws& GPSws::operator=(const GPSws& o)
{
    week = o.week;
    second = o.second;
    TestDatum();
    return *this;
}

void GPSws::Set(unsigned short w, long double s)
{
    week = w;
    second = s;
    TestDatum();
}

void GPSws::SetWeek(unsigned short w) { week = w; TestWeek(); }
void GPSws::SetSecond(long double s) { second = s; TestSecond(); }

unsigned short GPSws::GetWeekDay() const
{
    return static_cast<unsigned short>(second / DaySec);
}

long double GPSws::GetDaySecond() const { return second - DaySec * GetWeekDay(); }

void GPSws::Error(const std::string& text) { ClassErrorCout("GPSws", text); }

void GPSws::TestWeek() const
{
    if (week > MaxWeek) Error("WEEK not valid");
}

void GPSws::TestSecond() const
{
    if (!(second >= 0.0L && second < WeekSec)) Error("SECOND not valid");
}

void GPSws::TestDatum() const
{
    TestWeek();
    TestSecond();
}

void GPSws::Sec2HMS(unsigned short& hr, unsigned short& mn, long double& sec) const
{
    const long double ds = GetDaySecond();
    const long double h = std::floor(ds / 3600.0L);
    const long double m = std::floor((ds / 3600.0L - h) * 60.0L);
    sec = ((ds / 3600.0L - h) * 60.0L - m) * 60.0L;
    hr = static_cast<unsigned short>(h);
    mn = static_cast<unsigned short>(m);
}

GPSws& GPSws::operator+=(long double dsec)
{
    // Bounds the week count before it is converted to an integer.
    if (!(std::fabs(dsec) <= (MaxWeek + 2.0L) * WeekSec)) Error("WEEK not valid");
    long double s = second + dsec;
    const long double whole = std::trunc(s / WeekSec);
    long w = week + static_cast<long>(whole);
    s -= whole * WeekSec;
    if (s < 0.0L) {
        --w;
        s += WeekSec;
        // A tiny negative second rounds to a full week when 604800 is added.
        if (s >= WeekSec) {
            ++w;
            s = 0.0L;
        }
    }
    if (w < 0 || w > MaxWeek) Error("WEEK not valid");
    week = static_cast<unsigned short>(w);
    second = s;
    TestSecond();
    return *this;
}

GPSws& GPSws::operator+=(unsigned short weeks)
{
    const long w = static_cast<long>(week) + weeks;
    if (w > MaxWeek) Error("WEEK not valid");
    week = static_cast<unsigned short>(w);
    return *this;
}

std::ostream& operator<<(std::ostream& os, const GPSws& t)
{
    const std::ios::fmtflags flags = os.flags();
    const std::streamsize prec = os.precision();
    const char fill = os.fill();
    os << std::fixed << std::setfill(' ');
    const short nd = gpswsns::NDecSecond < 0 ? 0 : gpswsns::NDecSecond;
    switch (gpswsns::PrintFormat) {
    case 1:
        os << std::setw(5) << t.GetWeek() << std::setw(2) << t.GetWeekDay() << std::setw(nd + 7)
           << std::setprecision(nd) << t.GetDaySecond();
        break;
    case 2: {
        unsigned short h, m;
        long double s;
        t.Sec2HMS(h, m, s);
        os << std::setw(5) << t.GetWeek() << std::setw(2) << t.GetWeekDay() << "  ";
        ymdhmsns::PrintHMS(os, h, m, s, nd);
        break;
    }
    case 3:
        os << " " << std::setfill('0') << std::setw(4) << t.GetWeek() << std::setfill(' ')
           << std::setw(2) << t.GetWeekDay();
        break;
    case 4:
        os << std::setw(5) << t.GetWeek() << std::setw(16) << std::setprecision(8)
           << t.GetSecond();
        break;
    default:
        os << std::setw(5) << t.GetWeek() << std::setw(nd + 8) << std::setprecision(nd)
           << t.GetSecond();
        break;
    }
    os.flags(flags);
    os.precision(prec);
    os.fill(fill);
    return os;
}

std::istream& operator>>(std::istream& is, GPSws& t)
{
    long w;
    long double s;
    if (!(is >> w >> s)) return is;
    // A negative week would wrap into a valid-looking unsigned one.
    if (w < 0 || w > MaxWeek) GPSws::Error("WEEK not valid");
    t.Set(static_cast<unsigned short>(w), s);
    return is;
}
