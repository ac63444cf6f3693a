#pragma once
// Field printing shared by the stream operators of the coordinate classes.
#include <cmath>
#include <iomanip>
#include <ostream>

namespace geodesyio {

/// True when a scale setting stands for the whole-number selector (100,
/// 1000, ...). The margin keeps a computed 10*10 from missing its selector.
inline bool IsUnit(long double unit, long double selector)
{
    return std::fabs(unit - selector) < 1e-9L;
}

/// Prints v in fixed notation, width columns, ndec decimals, and leaves the
/// stream's own format settings as they were.
inline void PutFixed(std::ostream& os, long double v, int width, int ndec)
{
    const std::ios::fmtflags flags = os.flags();
    const std::streamsize prec = os.precision();
    os << std::fixed << std::setprecision(ndec) << std::setw(width) << v;
    os.flags(flags);
    os.precision(prec);
}

}  // namespace geodesyio
