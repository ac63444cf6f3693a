#include "observations/gnssobs.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iomanip>

namespace {

// The print limit of "absent" in listings, which differs from IsNull's by
// design.
constexpr long double PrintLimit = 0.00001L;

// Decimal powers exact in long double (10^18 < 2^63 needs no rounding).
constexpr long double Pow10[] = {1e0L, 1e1L, 1e2L, 1e3L, 1e4L, 1e5L, 1e6L, 1e7L, 1e8L, 1e9L,
                                 1e10L, 1e11L, 1e12L, 1e13L, 1e14L};

// Columns 0-13 of a field by the atof rule. The plain layout of RINEX,
// blanks, a sign, digits and one full stop, is converted here: the digits
// form an exact integer and one division by an exact power of ten rounds
// once, to the same value strtold gives. Anything else (exponents, text)
// goes to strtold. Converting in place keeps a day of data well under a
// second.
long double FieldValue(const char* field)
{
    constexpr int width = 14;
    int i = 0;
    while (i < width && field[i] == ' ') i++;
    const bool sign = i < width && (field[i] == '-' || field[i] == '+');
    const bool negative = sign && field[i] == '-';
    if (sign) i++;
    unsigned long long mantissa = 0;
    int digits = 0, decimals = 0;
    bool point = false;
    for (; i < width; i++) {
        const char ch = field[i];
        if (ch >= '0' && ch <= '9') {
            mantissa = mantissa * 10 + static_cast<unsigned long long>(ch - '0');
            digits++;
            decimals += point ? 1 : 0;
        } else if (ch == '.' && !point) {
            point = true;
        } else {
            break;
        }
    }
    while (i < width && field[i] == ' ') i++;
    const bool blank = digits == 0 && !sign && !point;
    if (i == width && (digits > 0 || blank)) {
        const long double v = static_cast<long double>(mantissa) / Pow10[decimals];
        return negative ? -v : v;
    }
    char buf[width + 1];
    std::memcpy(buf, field, width);
    buf[width] = '\0';
    return std::strtold(buf, nullptr);
}

// Restores a stream's format when a printer leaves.
class FormatGuard {
public:
    explicit FormatGuard(std::ostream& os)
        : os_(os), flags_(os.flags()), prec_(os.precision()) {}
    ~FormatGuard() { os_.flags(flags_); os_.precision(prec_); }
private:
    std::ostream& os_;
    std::ios::fmtflags flags_;
    std::streamsize prec_;
};

}  // namespace

gnssobs& gnssobs::operator=(long double o)
{
    obs = o;
    lli = 0;
    ss = 0;
    return *this;
}

gnssobs& gnssobs::operator+=(long double d)
{
    obs += d;
    return *this;
}

void gnssobs::operator>>(const char* line)
{
    obs = FieldValue(line);
    lli = FlagDigit(line[14]);
    ss = FlagDigit(line[15]);
}

gnssobsshort& gnssobsshort::operator=(long double o)
{
    obs = o;
    return *this;
}

gnssobsshort& gnssobsshort::operator+=(long double d)
{
    obs += d;
    return *this;
}

void gnssobsshort::operator>>(const char* line) { obs = FieldValue(line); }

gnssobs operator*(long double a, const gnssobs& o)
{
    return gnssobs(a * o.obs, o.lli, o.ss);
}

gnssobs operator*(const gnssobs& o, long double a) { return a * o; }

gnssobs operator-(const gnssobs& a, const gnssobs& b)
{
    if (a.IsNull() || b.IsNull())
        return gnssobs();
    return gnssobs(a.obs - b.obs);
}

gnssobs operator+(const gnssobs& a, const gnssobs& b)
{
    if (a.IsNull() || b.IsNull())
        return gnssobs();
    return gnssobs(a.obs + b.obs);
}

std::ostream& operator<<(std::ostream& os, const gnssobs& o)
{
    FormatGuard guard(os);
    os << std::fixed << std::setprecision(3);
    const bool present = std::fabs(o.obs) > PrintLimit;
    switch (gnssobsns::PrintType) {
    case 0:
        if (present)
            os << std::setw(14) << o.obs << std::setw(1) << o.lli << std::setw(1) << o.ss;
        else
            os << std::setw(14) << "0.000" << "  ";
        break;
    case 2:
        if (present)
            os << std::setw(gnssobsns::Width) << o.obs;
        else
            os << std::setw(gnssobsns::Width) << "*.***";
        break;
    default:
        if (present)
            os << std::setw(14) << o.obs << std::setw(2) << o.lli << std::setw(2) << o.ss;
        else
            os << std::setw(14) << "*.***" << " * *";
        break;
    }
    return os;
}

std::ostream& operator<<(std::ostream& os, const gnssobsshort& o)
{
    FormatGuard guard(os);
    os << std::fixed << std::setprecision(3);
    const bool present = std::fabs(o.obs) > PrintLimit;
    switch (gnssobsshortns::PrintType) {
    case 0:
        if (present)
            os << std::setw(14) << o.obs << "  ";
        else
            os << std::setw(14) << 0 << "  ";
        break;
    case 2:
        if (present)
            os << std::setw(gnssobsshortns::Width) << o.obs;
        else
            os << std::setw(gnssobsshortns::Width) << 0;
        break;
    default:
        if (present)
            os << std::setw(10) << o.obs << " 0 0";
        else
            os << std::setw(10) << "*.***" << " * *";
        break;
    }
    return os;
}
