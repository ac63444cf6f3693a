#include "SimWindUp.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr long double Pi = 3.14159265358979323846264338327950288L;
constexpr long double Deg = Pi / 180.0L;
constexpr long double AU_m = 1.495978707e11L;

SimVec Cross(const SimVec& a, const SimVec& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

SimVec Unit(const SimVec& a) { return (1.0L / Norm(a)) * a; }
}  // namespace

SimVec SunEarthFixed(unsigned long mjday, long double t)
{
    // Days from J2000.0; the 18 s between GPS time and UT move the Sun by
    // 0.0002 deg, far below the method's error.
    const long double n = (static_cast<long double>(mjday) - 51544.5L) + t / 86400.0L;
    const long double L = (280.460L + 0.9856474L * n) * Deg;
    const long double g = (357.528L + 0.9856003L * n) * Deg;
    const long double lambda = L + (1.915L * std::sin(g) + 0.020L * std::sin(2.0L * g)) * Deg;
    const long double eps = (23.439L - 0.0000004L * n) * Deg;
    const long double R =
        (1.00014L - 0.01671L * std::cos(g) - 0.00014L * std::cos(2.0L * g)) * AU_m;
    const SimVec eq = {R * std::cos(lambda), R * std::cos(eps) * std::sin(lambda),
                       R * std::sin(eps) * std::sin(lambda)};
    const long double gmst =
        std::fmod(18.697374558L + 24.06570982441908L * n, 24.0L) * 15.0L * Deg;
    return {eq.x * std::cos(gmst) + eq.y * std::sin(gmst),
            -eq.x * std::sin(gmst) + eq.y * std::cos(gmst), eq.z};
}

long double WindUpCycles(const SimVec& satEF, const SimVec& recEF, long double lat,
                         long double lon, const SimVec& sunEF)
{
    const SimVec k = Unit(recEF - satEF);
    const SimVec ez = Unit(-1.0L * satEF);
    const SimVec ey = Unit(Cross(ez, sunEF - satEF));
    const SimVec ex = Cross(ey, ez);
    const SimVec north = {-std::sin(lat) * std::cos(lon), -std::sin(lat) * std::sin(lon),
                          std::cos(lat)};
    const SimVec west = {std::sin(lon), -std::cos(lon), 0.0L};
    const SimVec dSat = Unit(ex - Dot(k, ex) * k - Cross(k, ey));
    const SimVec dRec = Unit(north - Dot(k, north) * k + Cross(k, west));
    const long double c = std::clamp(Dot(dSat, dRec), -1.0L, 1.0L);
    const long double turn = std::acos(c) / (2.0L * Pi);
    return Dot(k, Cross(dSat, dRec)) < 0.0L ? -turn : turn;
}
