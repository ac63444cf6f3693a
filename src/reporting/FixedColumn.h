#pragma once
// Right-aligned fixed-notation fields of the result listing and files.
#include <iomanip>
#include <ostream>

namespace fixedcolumnns {
/// Most decimals and widest field written without the library.
inline constexpr int MaxFastDecimals = 9;
inline constexpr int MaxFastWidth = 40;
}  // namespace fixedcolumnns

/// The text of v in fixed notation with ndec decimals, as printf's "%.*Lf"
/// writes it (the exact binary value rounded half to even, a minus sign on
/// any negative value, -0 included), to buf, which holds 48 characters;
/// returns its length, or -1 where the library must write it: not finite,
/// ndec outside 0 to fixedcolumnns::MaxFastDecimals, or |v| times 10^ndec
/// from 2^64 on.
int FixedText(long double v, int ndec, char* buf);

/// Writes v right aligned in width columns with ndec decimals in fixed
/// notation. The stream stays in fixed notation with precision ndec, as the
/// report relies on: a field printed without its own decimals takes those
/// of the field before it.
inline void FixedColumn(std::ostream& os, long double v, int width, int ndec)
{
    os << std::fixed << std::setprecision(ndec);
    // The library formats a long double through its printf, a microsecond
    // a field; a day's listing has some hundred thousand. A stream set up
    // otherwise than plain right alignment with blanks goes that way.
    char buf[fixedcolumnns::MaxFastWidth + 48];
    const std::ios::fmtflags adjust = os.flags() & std::ios::adjustfield;
    const int n = width <= fixedcolumnns::MaxFastWidth && os.fill() == ' '
                          && !(os.flags() & (std::ios::showpos | std::ios::showpoint))
                          && (adjust == std::ios::right || adjust == std::ios::fmtflags(0))
                      ? FixedText(v, ndec, buf + fixedcolumnns::MaxFastWidth)
                      : -1;
    if (n < 0) {
        os << std::setw(width) << v;
        return;
    }
    const int pad = width > n ? width - n : 0;
    char* const start = buf + fixedcolumnns::MaxFastWidth - pad;
    for (int i = 0; i < pad; ++i) start[i] = ' ';
    os.width(0);
    os.write(start, pad + n);
}
