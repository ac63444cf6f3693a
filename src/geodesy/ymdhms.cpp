#include "geodesy/ymdhms.h"
#include "numerics/ProgramError.h"

#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <iostream>

namespace ymdhmsns {
short NDecSecond = 1;
short PrintFormat = 0;
short PrintType = 2;
}  // namespace ymdhmsns

const unsigned short month_day[2][13] = {
    {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365},
    {0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335, 366}};

ymdhms::ymdhms() : year(1980), month(1), day(1), hour(0), minute(0), second(0.0L) {}

ymdhms::ymdhms(unsigned short y, unsigned short mo, unsigned short d,
               unsigned short h, unsigned short mi, long double s)
    : year(y), month(mo), day(d), hour(h), minute(mi), second(s)
{
    TestDatum();
}

ymdhms::ymdhms(const ymdhms& o)
    : year(o.year), month(o.month), day(o.day), hour(o.hour), minute(o.minute), second(o.second)
{
    TestDatum();
}

ymdhms& ymdhms::operator=(const ymdhms& o)
{
    if (this != &o) {
        year = o.year;
        month = o.month;
        day = o.day;
        hour = o.hour;
        minute = o.minute;
        second = o.second;
    }
    TestDatum();
    return *this;
}

void ymdhms::Set(unsigned short y, unsigned short mo, unsigned short d,
                 unsigned short h, unsigned short mi, long double s)
{
    year = y;
    month = mo;
    day = d;
    hour = h;
    minute = mi;
    second = s;
    TestDatum();
}

void ymdhms::SetYear(unsigned short y) { year = y; TestYear(); }
void ymdhms::SetMonth(unsigned short m) { month = m; TestMonth(); }
void ymdhms::SetDay(unsigned short d) { day = d; TestDay(); }
void ymdhms::SetHour(unsigned short h) { hour = h; TestHour(); }
void ymdhms::SetMinute(unsigned short m) { minute = m; TestMinute(); }
void ymdhms::SetSecond(long double s) { second = s; TestSecond(); }

void ymdhms::Error(const std::string& text) { ClassErrorCout("ymdhms", text); }

void ymdhms::TestYear() const
{
    if (year < 1901 || year > 2199) Error("YEAR not valid");
}

void ymdhms::TestMonth() const
{
    // Month 0 has no row in month_day; refusing it here keeps every later
    // month_day[leap][month - 1] in bounds.
    if (month < 1 || month > 12) Error("MONTH not valid");
}

void ymdhms::TestDay() const
{
    unsigned short last = 31;
    if (month == 4 || month == 6 || month == 9 || month == 11)
        last = 30;
    else if (month < 1 || month > 12 || month == 2)
        last = LeapYear(year) ? 29 : 28;
    if (day < 1 || day > last) Error("DAY not valid");
}

void ymdhms::TestHour() const
{
    if (hour > 59) Error("HOUR not valid");
}

void ymdhms::TestMinute() const
{
    if (minute > 59) Error("MINUTE not valid");
}

void ymdhms::TestSecond() const
{
    // Written so that NaN fails too.
    if (!(second >= 0.0L && second < 60.0L)) Error("SECOND not valid");
}

void ymdhms::TestDatum() const
{
    TestYear();
    TestMonth();
    TestDay();
    TestHour();
    TestMinute();
    TestSecond();
}

bool ymdhms::LeapYear(long y)
{
    if (y == 0) return false;
    return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

void ymdhms::Sec2HMS(long double s, unsigned short& hr, unsigned short& mn, long double& sec)
{
    if (!(s >= 0.0L)) Error("SECOND not valid");
    // Beyond 60 h the hour cannot pass TestHour, and the casts below need a
    // bounded value.
    if (s >= 60.0L * 3600.0L) Error("HOUR not valid");
    const long double hours = s / 3600.0L;
    const long double h = std::floor(hours);
    const long double minutes = (hours - h) * 60.0L;
    const long double m = std::floor(minutes);
    sec = (minutes - m) * 60.0L;
    hr = static_cast<unsigned short>(h);
    mn = static_cast<unsigned short>(m);
    // Round-off of the divisions leaves 59.99999999999... for a whole minute.
    if (std::fabs(sec - 60.0L) < 1e-10L) {
        sec = 0.0L;
        ++mn;
    }
    if (mn == 60) {
        mn = 0;
        ++hr;
    }
}

long double ymdhms::GetDaySecond() const
{
    return 3600.0L * hour + 60.0L * minute + second;
}

unsigned short ymdhms::GetDayOfYear() const
{
    return static_cast<unsigned short>(day + month_day[LeapYear(year) ? 1 : 0][month - 1]);
}

long double ymdhms::GetYearDec() const
{
    const int leap = LeapYear(year) ? 1 : 0;
    return year + ((GetDayOfYear() - 1) + GetDaySecond() / 86400.0L) / (365.0L + leap);
}

void ymdhms::SetDayOfYear(unsigned short y, unsigned short doy)
{
    year = y;
    TestYear();
    hour = 0;
    minute = 0;
    second = 0.0L;
    const int leap = LeapYear(year) ? 1 : 0;
    // The month search below walks off the table for these.
    if (doy < 1 || doy > month_day[leap][12]) Error("DAY OF YEAR not valid");
    unsigned short m = 1;
    while (m <= 12 && month_day[leap][m - 1] < doy) ++m;
    --m;
    month = m;
    day = static_cast<unsigned short>(doy - month_day[leap][m - 1]);
}

void ymdhms::SetYDec(double ydec)
{
    // Guards the conversion to an integer; the exact range is TestYear's.
    if (!(ydec >= 1.0 && ydec < 65536.0)) Error("YEAR not valid");
    const unsigned short y = static_cast<unsigned short>(ydec);
    year = y;
    TestYear();
    const int leap = LeapYear(y) ? 1 : 0;
    const double doyd = 1.0 + (365 + leap) * std::fmod(ydec, 1.0);
    const unsigned short doy = static_cast<unsigned short>(doyd);
    SetDayOfYear(y, doy);
    unsigned short h, m;
    long double s;
    Sec2HMS((static_cast<long double>(doyd) - doy) * 86400.0L, h, m, s);
    SetHMS(h, m, s);
}

void ymdhms::SetDaySecond(long double s)
{
    unsigned short h, m;
    long double sec;
    Sec2HMS(s, h, m, sec);
    SetHMS(h, m, sec);
}

void ymdhms::SetHMS(unsigned short h, unsigned short m, long double s)
{
    hour = h;
    minute = m;
    second = s;
    TestHour();
    TestMinute();
    TestSecond();
}

namespace ymdhmsns {
void PrintHMS(std::ostream& os, unsigned short hr, unsigned short mn, long double sec, short ndec)
{
    if (ndec < 0) ndec = 0;
    os << std::setfill('0') << std::setw(2) << hr << ":" << std::setw(2) << mn << ":"
       << std::setw(ndec == 0 ? 2 : ndec + 3) << std::setprecision(ndec) << sec;
}
}  // namespace ymdhmsns

std::ostream& operator<<(std::ostream& os, const ymdhms& t)
{
    const std::ios::fmtflags flags = os.flags();
    const std::streamsize prec = os.precision();
    const char fill = os.fill();
    os << std::fixed << std::setfill(' ');
    const short nd = ymdhmsns::NDecSecond < 0 ? 0 : ymdhmsns::NDecSecond;
    switch (ymdhmsns::PrintType) {
    case 0:
        os << std::setw(6) << t.GetYear() << std::setw(6) << t.GetMonth() << std::setw(6)
           << t.GetDay() << std::setw(6) << t.GetHour() << std::setw(6) << t.GetMinute()
           << std::setw(13) << std::setprecision(7) << t.GetSecond();
        break;
    case 1:
        os << std::setw(3) << (t.GetYear() < 2000 ? t.GetYear() - 1900 : t.GetYear() - 2000)
           << std::setw(3) << t.GetMonth() << std::setw(3) << t.GetDay() << std::setw(3)
           << t.GetHour() << std::setw(3) << t.GetMinute() << std::setw(11)
           << std::setprecision(7) << t.GetSecond();
        break;
    case 3:
        os << std::setw(4) << t.GetYear() << std::setw(3) << t.GetMonth() << std::setw(3)
           << t.GetDay() << std::setw(3) << t.GetHour() << std::setw(3) << t.GetMinute()
           << std::setw(12) << std::setprecision(8) << t.GetSecond();
        break;
    case 4:
        // The YY:DDD:SSSSS epoch of exchange formats, zero-filled throughout.
        os << std::setfill('0') << std::setw(2) << t.GetYear() % 100 << ":" << std::setw(3)
           << t.GetDayOfYear() << ":" << std::setw(5) << std::setprecision(0)
           << t.GetDaySecond();
        break;
    default:
        switch (ymdhmsns::PrintFormat) {
        case 1:
            os << std::setw(5) << t.GetYear() << "-" << std::setfill('0') << std::setw(3)
               << t.GetDayOfYear() << " ";
            ymdhmsns::PrintHMS(os, t.GetHour(), t.GetMinute(), t.GetSecond(), nd);
            break;
        case 2:
            os << t.GetYear() << "-" << std::setfill('0') << std::setw(3) << t.GetDayOfYear()
               << " " << std::setfill(' ') << std::setw(nd + 7) << std::setprecision(nd)
               << t.GetDaySecond();
            break;
        case 3:
            os << t.GetYear() << "-" << std::setfill('0') << std::setw(2) << t.GetMonth() << "-"
               << std::setw(2) << t.GetDay();
            break;
        case 4:
            os << std::setw(nd + 12) << std::setprecision(nd + 6) << t.GetYearDec();
            break;
        case 5:
            os << t.GetYear() << "-" << std::setfill('0') << std::setw(3) << t.GetDayOfYear();
            break;
        default:
            os << std::setw(5) << t.GetYear() << "-" << std::setfill('0') << std::setw(2)
               << t.GetMonth() << "-" << std::setw(2) << t.GetDay() << " ";
            ymdhmsns::PrintHMS(os, t.GetHour(), t.GetMinute(), t.GetSecond(), nd);
            break;
        }
        break;
    }
    os.flags(flags);
    os.precision(prec);
    os.fill(fill);
    return os;
}

std::istream& operator>>(std::istream& is, ymdhms& t)
{
    long y, mo, d, h, mi;
    long double s;
    if (!(is >> y >> mo >> d >> h >> mi >> s)) return is;
    if (y >= 0 && y <= 99) y += (y > 79) ? 1900 : 2000;
    // Values beyond the field type would wrap into valid-looking ones.
    if (y < 0 || y > 65535) ymdhms::Error("YEAR not valid");
    if (mo < 0 || mo > 65535) ymdhms::Error("MONTH not valid");
    if (d < 0 || d > 65535) ymdhms::Error("DAY not valid");
    if (h < 0 || h > 65535) ymdhms::Error("HOUR not valid");
    if (mi < 0 || mi > 65535) ymdhms::Error("MINUTE not valid");
    t.Set(static_cast<unsigned short>(y), static_cast<unsigned short>(mo),
          static_cast<unsigned short>(d), static_cast<unsigned short>(h),
          static_cast<unsigned short>(mi), s);
    return is;
}
