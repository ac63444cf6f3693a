#pragma once
// Right-aligned fixed-notation fields of the result listing and files.
#include <iomanip>
#include <ostream>

/// Writes v right aligned in width columns with ndec decimals in fixed
/// notation. The stream stays in fixed notation with precision ndec, as the
/// report relies on: a field printed without its own decimals takes those
/// of the field before it.
inline void FixedColumn(std::ostream& os, long double v, int width, int ndec)
{
    os << std::fixed << std::setprecision(ndec) << std::setw(width) << v;
}
