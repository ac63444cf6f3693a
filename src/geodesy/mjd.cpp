#include "geodesy/mjd.h"
#include "numerics/ProgramError.h"

#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <iostream>

#include "geodesy/ymdhms.h"

namespace mjdns {
short NDecSecond = 1;
short PrintFormat = 0;
}  // namespace mjdns

namespace {
constexpr long double DaySec = 86400.0L;
constexpr unsigned long MaxMJDay = 199999;
// Seconds closer than this to midnight are midnight: sums of epoch intervals
// miss it by a few long double ulps (7e-15 s near 86400 s).
constexpr long double MidnightTol = 1e-12L;
constexpr long double EqualTol = 1e-13L;
constexpr long double OrderTol = 1e-14L;
}  // namespace

mjd::mjd() : mjday(0), second(0.0L) {}

mjd::mjd(unsigned long d, long double s) : mjday(d), second(s) { TestDatum(); }

mjd::mjd(const mjd& o) : mjday(o.mjday), second(o.second) { TestDatum(); }

mjd& mjd::operator=(const mjd& o)
{
    mjday = o.mjday;
    second = o.second;
    TestDatum();
    return *this;
}

mjd& mjd::operator=(long double mdec)
{
    // Guards the conversion to an unsigned day number.
    if (!(mdec >= 0.0L && mdec < MaxMJDay + 1.0L)) Error("MJDAY not valid");
    const long double whole = std::floor(mdec);
    mjday = static_cast<unsigned long>(whole);
    second = (mdec - whole) * DaySec;
    TestDatum();
    return *this;
}

void mjd::Set(unsigned long d, long double s)
{
    mjday = d;
    second = s;
    TestDatum();
}

void mjd::SetMJDay(unsigned long d) { mjday = d; TestMJDay(); }
void mjd::SetSecond(long double s) { second = s; TestSecond(); }

long double mjd::GetMJDDec() const { return mjday + second / DaySec; }

void mjd::Error(const std::string& text) { ClassErrorCout("mjd", text); }

void mjd::TestMJDay() const
{
    if (mjday > MaxMJDay) Error("MJDAY not valid");
}

void mjd::TestSecond() const
{
    if (!(second >= 0.0L && second < DaySec)) Error("SECOND not valid");
}

void mjd::TestDatum() const
{
    TestMJDay();
    TestSecond();
}

void mjd::Sec2HMS(unsigned short& hr, unsigned short& mn, long double& sec) const
{
    ymdhms::Sec2HMS(second, hr, mn, sec);
}

mjd& mjd::operator+=(long double dsec)
{
    // Bounds the day count before it is converted to an integer; anything
    // this large leaves the valid day range anyway.
    if (!(std::fabs(dsec) <= (MaxMJDay + 2.0L) * DaySec)) Error("MJDAY not valid");
    // Below a day, the whole-day split below is zero days and the whole
    // step: skip its division (the light-time steps of every observation
    // come this way).
    if (std::fabs(dsec) < DaySec) return AddSeconds(dsec, static_cast<long long>(mjday));
    const long sign = dsec < 0.0L ? -1 : 1;
    const long double adsec = std::fabs(dsec);
    const long double dday = std::floor(adsec / DaySec);
    const long double rest = adsec - DaySec * dday;
    return AddSeconds(sign * rest, static_cast<long long>(mjday) + sign * static_cast<long long>(dday));
}

mjd& mjd::AddSeconds(long double dsec, long long day)
{
    second += dsec;
    if (second < 0.0L) {
        --day;
        second += DaySec;
    }
    if (second > DaySec) {
        ++day;
        second -= DaySec;
    }
    if (std::fabs(second - DaySec) < MidnightTol) {
        ++day;
        second = 0.0L;
    }
    if (day < 0 || day > static_cast<long long>(MaxMJDay)) Error("MJDAY not valid");
    mjday = static_cast<unsigned long>(day);
    TestSecond();
    return *this;
}

mjd& mjd::operator+=(long days)
{
    mjday += days;
    return *this;
}

mjd& mjd::operator-=(long days)
{
    mjday -= days;
    return *this;
}

bool mjd::operator==(const mjd& o) const
{
    if (this == &o) return true;
    return mjday == o.mjday && std::fabs(second - o.second) < EqualTol;
}

bool mjd::operator!=(const mjd& o) const { return !(*this == o); }

bool mjd::operator>(const mjd& o) const
{
    if (this == &o) return false;
    if (mjday != o.mjday) return mjday > o.mjday;
    return second > o.second;
}

bool mjd::operator<(const mjd& o) const
{
    if (this == &o) return false;
    if (mjday != o.mjday) return mjday < o.mjday;
    return second < o.second;
}

bool mjd::operator>=(const mjd& o) const
{
    if (this == &o) return true;
    if (mjday != o.mjday) return mjday > o.mjday;
    return second - o.second > -OrderTol;
}

bool mjd::operator<=(const mjd& o) const
{
    if (this == &o) return true;
    if (mjday != o.mjday) return mjday < o.mjday;
    return second - o.second < OrderTol;
}

long double operator-(const mjd& d1, const mjd& d2)
{
    // The day numbers are unsigned: subtract the smaller from the larger.
    const unsigned long a = d1.GetMJDay(), b = d2.GetMJDay();
    const long double days = a >= b ? static_cast<long double>(a - b)
                                    : -static_cast<long double>(b - a);
    return days * DaySec + (d1.GetSecond() - d2.GetSecond());
}

std::ostream& operator<<(std::ostream& os, const mjd& t)
{
    const std::ios::fmtflags flags = os.flags();
    const std::streamsize prec = os.precision();
    const char fill = os.fill();
    os << std::fixed << std::setfill(' ');
    const short nd = mjdns::NDecSecond < 0 ? 0 : mjdns::NDecSecond;
    switch (mjdns::PrintFormat) {
    case 1:
        os << std::setw(nd + 7) << std::setprecision(nd) << t.GetMJDDec();
        break;
    case 2: {
        unsigned short h, m;
        long double s;
        t.Sec2HMS(h, m, s);
        os << std::setw(6) << t.GetMJDay() << "  ";
        ymdhmsns::PrintHMS(os, h, m, s, nd);
        break;
    }
    case 3:
        os << t.GetMJDay();
        break;
    case 4:
        os << std::setw(6) << t.GetMJDay() << std::setw(16) << std::setprecision(13)
           << t.GetSecond() / DaySec;
        break;
    default:
        os << std::setw(6) << t.GetMJDay() << std::setw(nd + 7) << std::setprecision(nd)
           << t.GetSecond();
        break;
    }
    os.flags(flags);
    os.precision(prec);
    os.fill(fill);
    return os;
}

std::istream& operator>>(std::istream& is, mjd& t)
{
    long long d;
    long double s;
    if (!(is >> d >> s)) return is;
    // A negative day would wrap into a valid-looking unsigned one.
    if (d < 0 || d > static_cast<long long>(MaxMJDay)) mjd::Error("MJDAY not valid");
    t.Set(static_cast<unsigned long>(d), s);
    return is;
}
