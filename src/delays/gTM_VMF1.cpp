#include "delays/gTM_VMF1.h"

#include "numerics/ProgramError.h"

void gTM_VMF1::SetPoint(const char* name)
{
    FindSeries(name, "zh", "zw");
    const std::string p(name ? name : "");
    if (ixH < 0)
        ProgramWarning("Orvo", "ZENITH HYDROSTATIC DELAYS FOR POINT " + p
                                   + " NOT IN FILE " + std::string(file));
    if (ixW < 0)
        ProgramWarning("Orvo", "ZENITH WETT DELAYS FOR POINT " + p
                                   + " NOT IN FILE " + std::string(file));
}

void gTM_VMF1::GetZenithDelay(gTropDelay& td, const mjd& eph)
{
    const long double t = eph.GetMJDDec();
    td.tdry = Interpolate(t, ixH);
    td.twet = Interpolate(t, ixW);
}
