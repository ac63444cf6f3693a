#include "numerics/AngleConversion.h"

#include <cmath>
#include <cstdio>

namespace {

// rad2dms carries seconds this close to 60 into the minutes: they are what is
// left of a whole minute after the conversion from radians.
constexpr long double SecCarryRad_s = 1e-13L;

// A packed value splits into a seconds part this close to 100 only through
// its own representation error: a whole minute stored a hair low, e.g.
// 45.30 as 45.29999999999999999. The error is below 1e-12 s for any long
// double angle up to 360 degrees and below 1e-10 s when the value passed
// through a double; valid seconds stay below 60, so 1e-8 s separates the
// two cases with room on both sides.
constexpr long double SecCarryPacked_s = 1e-8L;

// Whole degrees, minutes and seconds of the absolute packed value, with the
// carry of a seconds part that is a whole minute in disguise.
void SplitPacked(long double kotv, long double& deg, long double& min, long double& sec)
{
    const long double a = std::fabs(kotv);
    deg = std::floor(a);
    const long double m = (a - deg) * 100.0L;
    min = std::floor(m);
    sec = (m - min) * 100.0L;
    if (std::fabs(sec - 100.0L) < SecCarryPacked_s) {
        sec = 0.0L;
        min += 1.0L;
    }
    if (min >= 60.0L) {
        min -= 60.0L;
        deg += 1.0L;
    }
}

}  // namespace

long double deg2rad(long double num) { return num / 180.0L * angns::pi; }

double deg2rad(double num) { return static_cast<double>(angns::pi) * (num / 180.0); }

long double rad2deg(long double num) { return num * 180.0L / angns::pi; }

long double deg2gon(long double kot) { return kot * 1.11111111111111116045L; }

long double rad2gon(long double kot) { return deg2gon(rad2deg(kot)); }

long double rad2dms(long double kotv)
{
    const long double a = std::fabs(rad2deg(kotv));
    long double kots = std::floor(a);
    const long double m = (a - kots) * 60.0L;
    long double kotm = std::floor(m);
    long double kotse = (m - kotm) * 60.0L;
    if (std::fabs(kotse - 60.0L) < SecCarryRad_s) {
        kotse = 0.0L;
        kotm += 1.0L;
    }
    if (kotm >= 60.0L) {
        kotm -= 60.0L;
        kots += 1.0L;
    }
    const long double packed = kots + kotm / 100.0L + kotse / 10000.0L;
    return kotv < 0.0L ? -packed : packed;
}

long double dms2rad(long double kotv)
{
    long double kots, kotm, kotse;
    SplitPacked(kotv, kots, kotm, kotse);
    const long double r = deg2rad(kots + kotm / 60.0L + kotse / 3600.0L);
    return kotv < 0.0L ? -r : r;
}

long double dms2deg(short d, short m, long double s)
{
    if (d < 0) return d - m / 60.0L - s / 3600.0L;
    return d + m / 60.0L + s / 3600.0L;
}

long double dms2rad(short d, short m, long double s) { return deg2rad(dms2deg(d, m, s)); }

std::string dms2dms(long double dms, int ndec)
{
    if (ndec < 0) ndec = 0;
    // More decimals than long double carries would only print noise, and the
    // cap keeps the text inside the buffer below.
    if (ndec > 30) ndec = 30;
    long double sm, min, sec;
    SplitPacked(dms, sm, min, sec);
    const int deg = static_cast<int>(sm);
    char buf[128];
    if (dms < 0.0L && deg == 0)
        std::snprintf(buf, sizeof buf, " -%1d%3d%*.*Lf", deg, static_cast<int>(min), ndec + 4,
                      ndec, sec);
    else
        std::snprintf(buf, sizeof buf, "%3d%3d%*.*Lf", dms < 0.0L ? -deg : deg,
                      static_cast<int>(min), ndec + 4, ndec, sec);
    return buf;
}
