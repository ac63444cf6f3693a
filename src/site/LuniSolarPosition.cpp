#include "site/LuniSolarPosition.h"

#include <cmath>
#include <cstddef>

#include "geodesy/LeapSecond.h"
#include "numerics/MathConstants.h"
#include "numerics/Trigonometry.h"

namespace {

constexpr long double DaySec = 86400.0L;
constexpr long double DaysPerCentury = 36525.0L;
constexpr long double J2000MJD = 51544.5L;

// Sum of amp sin(arg0 + rate t) over a table, all in degrees.
struct Term { long double amp, arg0, rate; };

template <std::size_t N>
long double SineSeries(const Term (&terms)[N], long double t)
{
    long double s = 0.0L;
    for (const Term& k : terms) s += k.amp * trig::Sin((k.arg0 + k.rate * t) * Deg2Rad);
    return s;
}

template <std::size_t N>
long double CosineSeries(const Term (&terms)[N], long double t)
{
    long double s = 0.0L;
    for (const Term& k : terms) s += k.amp * trig::Cos((k.arg0 + k.rate * t) * Deg2Rad);
    return s;
}

constexpr Term MoonLongitude[] = {
    {6.29L, 134.9L, 477198.85L}, {-1.27L, 259.2L, -413335.38L}, {0.66L, 235.7L, 890534.23L},
    {0.21L, 269.9L, 954397.7L},  {-0.19L, 357.5L, 35999.05L},   {-0.11L, 186.6L, 966404.05L}};
constexpr Term MoonLatitude[] = {
    {5.13L, 93.3L, 483202.03L}, {0.28L, 228.2L, 960400.87L}, {-0.28L, 318.3L, 6003.18L},
    {-0.17L, 217.6L, -407332.2L}};
constexpr Term MoonParallax[] = {
    {0.0518L, 134.9L, 477198.85L}, {0.0095L, 259.2L, -413335.38L}, {0.0078L, 235.7L, 890534.23L},
    {0.0028L, 269.9L, 954397.7L}};

}  // namespace

LuniSolarPosition::LuniSolarPosition() : twopi(6.283185307179586L), AU(149597870.0L), RE(6378.137L) {}

long double LuniSolarPosition::Centuries(const mjd& eph) const
{
    // Day and second apart: the day count against J2000 is exact, so the
    // second of day keeps its full resolution.
    const long double days = (static_cast<long double>(eph.GetMJDay()) - J2000MJD)
                           + (eph.GetSecond() - LeapSecond(eph)) / DaySec;
    return days / DaysPerCentury;
}

long double LuniSolarPosition::Obliquity(long double t) const
{
    return (23.439291L - 0.0130042L * t) * Deg2Rad;
}

long double LuniSolarPosition::GSTime(const mjd& ephUT1) const
{
    const long double t = Centuries(ephUT1);
    const long double sec = ((-0.0000062L * t + 0.093104L) * t + 3164400184.812866L) * t + 67310.54841L;
    // fmod keeps the sign of a negative polynomial (epochs before J2000).
    long double gst = std::fmod(sec * Pi / 180.0L / 240.0L, twopi);
    if (gst < 0.0L) gst += twopi;
    return gst;
}

long double LuniSolarPosition::LSTime(const mjd& ephUT1, const flh& gpos) const
{
    long double lst = std::fmod(GSTime(ephUT1) + gpos.l, twopi);
    if (lst < 0.0L) lst += twopi;
    return lst;
}

void LuniSolarPosition::SunPosition(const mjd& eph, xyz& uvec, long double& magr) const
{
    const long double t = Centuries(eph);
    const long double gst = std::fmod(GSTime(eph), twopi);
    const long double L_deg = std::fmod(280.4606184L + 36000.77005361L * t, 360.0L);
    long double M = std::fmod((357.5277233L + 35999.05034L * t) * Deg2Rad, twopi);
    if (M < 0.0L) M += twopi;
    const long double lon = (L_deg + 1.914666471L * trig::Sin(M) + 0.019994643L * trig::Sin(2.0L * M)) * Deg2Rad;
    const long double obl = Obliquity(t);
    magr = (1.000140612L - 0.016708617L * trig::Cos(M) - 0.000139589L * trig::Cos(2.0L * M)) * AU * 1000.0L;
    uvec.Set(trig::Cos(lon), trig::Sin(lon) * trig::Cos(obl), trig::Sin(lon) * trig::Sin(obl));
    uvec.RotateZ(-gst);
}

void LuniSolarPosition::MoonPosition(const mjd& eph, xyz& uvec, long double& magr) const
{
    const long double t = Centuries(eph);
    const long double gst = std::fmod(GSTime(eph), twopi);
    const long double lon = std::fmod((218.32L + 481267.8813L * t + SineSeries(MoonLongitude, t)) * Deg2Rad, twopi);
    const long double lat = std::fmod(SineSeries(MoonLatitude, t) * Deg2Rad, twopi);
    const long double par = std::fmod((0.9508L + CosineSeries(MoonParallax, t)) * Deg2Rad, twopi);
    const long double obl = Obliquity(t);
    const long double cl = trig::Cos(lat), sl = trig::Sin(lat), co = trig::Cos(obl), so = trig::Sin(obl);
    uvec.Set(trig::Cos(lon) * cl, co * cl * trig::Sin(lon) - so * sl, so * cl * trig::Sin(lon) + co * sl);
    // The parallax stays near 0.9 deg, far from a zero sine.
    magr = RE / trig::Sin(par) * 1000.0L;
    uvec.RotateZ(-gst);
}
