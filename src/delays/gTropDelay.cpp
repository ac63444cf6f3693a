#include "delays/gTropDelay.h"

#include <iomanip>

std::ostream& operator<<(std::ostream& out, const gTropDelay& td)
{
    const std::ios_base::fmtflags flags = out.flags();
    const std::streamsize prec = out.precision();
    out << std::fixed
        << std::setw(16) << std::setprecision(12) << td.mfdry << " x "
        << std::setw(6) << std::setprecision(5) << td.tdry
        << std::setw(16) << std::setprecision(12) << td.mfwet << " x "
        << std::setw(6) << std::setprecision(5) << td.twet;
    out.flags(flags);
    out.precision(prec);
    return out;
}
