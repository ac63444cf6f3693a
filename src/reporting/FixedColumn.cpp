#include "reporting/FixedColumn.h"

#include <cfloat>
#include <cmath>
#include <cstdint>

static_assert(LDBL_MANT_DIG == 64, "the fixed-notation writer takes the 64-bit significand of x87 long double");

int FixedText(long double v, int ndec, char* buf)
{
    using fixedcolumnns::MaxFastDecimals;
    if (!std::isfinite(v) || ndec < 0 || ndec > MaxFastDecimals) return -1;
    static constexpr std::uint64_t Pow10[MaxFastDecimals + 1] = {1,         10,         100,       1000,
                                                                 10000,     100000,     1000000,   10000000,
                                                                 100000000, 1000000000};
    // |v| = m / 2^shift exactly; |v|·10^ndec = m·10^ndec / 2^shift, below
    // 2^94, is rounded as an integer: half to even, as printf rounds the
    // exact value.
    std::uint64_t scaled = 0;
    const long double a = std::fabs(v);
    if (a != 0.0L) {
        int e = 0;
        const long double f = std::frexp(a, &e);  // a = f·2^e, 0.5 <= f < 1
        const std::uint64_t m = static_cast<std::uint64_t>(std::ldexp(f, 64));
        const int shift = 64 - e;
        if (shift <= 0) return -1;
        const unsigned __int128 prod = static_cast<unsigned __int128>(m) * Pow10[ndec];
        // Beyond 94 bits of shift the value is below half a unit.
        if (shift <= 94) {
            const unsigned __int128 whole = prod >> shift;
            const unsigned __int128 rest = prod - (whole << shift);
            const unsigned __int128 half = static_cast<unsigned __int128>(1) << (shift - 1);
            unsigned __int128 n = whole + ((rest > half || (rest == half && (whole & 1))) ? 1 : 0);
            if (n >> 64) return -1;
            scaled = static_cast<std::uint64_t>(n);
        }
    }
    char digits[24];
    int nd = 0;
    std::uint64_t intPart = scaled / Pow10[ndec], frac = scaled % Pow10[ndec];
    for (int i = 0; i < ndec; ++i, frac /= 10) digits[nd++] = static_cast<char>('0' + frac % 10);
    int len = 0;
    if (std::signbit(v)) buf[len++] = '-';
    char whole[24];
    int nw = 0;
    do {
        whole[nw++] = static_cast<char>('0' + intPart % 10);
        intPart /= 10;
    } while (intPart > 0);
    while (nw > 0) buf[len++] = whole[--nw];
    if (ndec > 0) buf[len++] = '.';
    while (nd > 0) buf[len++] = digits[--nd];
    return len;
}
