#include "delays/gMF_VMF1.h"

#include "delays/MappingFraction.h"
#include "numerics/MathConstants.h"
#include "numerics/ProgramError.h"
#include "numerics/Trigonometry.h"

#include <cmath>

namespace {
}

gMF_VMF1::gMF_VMF1()
    : bh(0.0029L), c0h(0.062L), c11h(0.005L), c10h(0.001L), phh(0.0L),
      adht(2.53e-5L), bdht(5.49e-3L), cdht(1.14e-3L),
      bw(0.00146L), cw(0.04391L)
{
}

void gMF_VMF1::SetPoint(const char* name)
{
    FindSeries(name, "ah", "aw");
    const std::string p(name ? name : "");
    if (ixH < 0)
        ProgramWarning("Orvo", "HYDROSTATIC COEFFICINETS A FOR POINT " + p
                                   + " NOT IN FILE " + std::string(file));
    if (ixW < 0)
        ProgramWarning("Orvo", "WETT COEFFICINETS A FOR POINT " + p
                                   + " NOT IN FILE " + std::string(file));
}

void gMF_VMF1::GetMappFunction(gTropDelay& td, const flh& pos, const mjd& eph,
                               long double E)
{
    const long double t = eph.GetMJDDec();
    const long double ah = Interpolate(t, ixH);
    const long double aw = Interpolate(t, ixW);
    GetMappFunction(td, pos, eph, E, ah, aw);
}

void gMF_VMF1::GetMappFunction(gTropDelay& td, const flh& pos, const mjd& eph,
                               long double E, long double ah, long double aw)
{
    // Whole days from 28 January 1980, the phase origin of the c term.
    const long double doy =
        static_cast<long double>(eph.GetMJDay()) - 44239.0L + 1.0L - 28.0L;
    if (pos.f < 0.0L) {
        phh = Pi;
        c11h = 0.007L;
        c10h = 0.002L;
    } else {
        phh = 0.0L;
        c11h = 0.005L;
        c10h = 0.001L;
    }
    const long double ch =
        c0h + ((trig::Cos(2.0L * Pi * doy / 365.25L + phh) + 1.0L) * c11h / 2.0L + c10h)
                  * (1.0L - trig::Cos(pos.f));
    td.mfdry = MappingFraction(ah, bh, ch, E)
               + NiellHeightCorrection(pos.h, E, adht, bdht, cdht);
    td.mfwet = MappingFraction(aw, bw, cw, E);
}
