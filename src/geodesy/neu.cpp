#include "geodesy/neu.h"

#include <cmath>
#include <istream>
#include <ostream>

#include "geodesy/FixedField.h"
#include "geodesy/xyz.h"

using geodesyio::IsUnit;
using geodesyio::PutFixed;

long double neu::GetLength() const
{
    return std::hypot(n, e, u);
}

neu& neu::operator+=(const neu& b) { n += b.n; e += b.e; u += b.u; return *this; }
neu& neu::operator-=(const neu& b) { n -= b.n; e -= b.e; u -= b.u; return *this; }
neu& neu::operator*=(long double s) { n *= s; e *= s; u *= s; return *this; }
neu& neu::operator/=(long double s) { n /= s; e /= s; u /= s; return *this; }

neut& neut::operator=(const neu& p)
{
    n = p.n; e = p.e; u = p.u; dt = 0.0L;
    return *this;
}

neut& neut::operator+=(const neut& b) { neu::operator+=(b); dt += b.dt; return *this; }
neut& neut::operator-=(const neut& b) { neu::operator-=(b); dt -= b.dt; return *this; }
neut& neut::operator*=(long double s) { neu::operator*=(s); dt *= s; return *this; }
neut& neut::operator/=(long double s) { neu::operator/=(s); dt /= s; return *this; }

neu operator+(const neu& a, const neu& b) { return neu(a.n + b.n, a.e + b.e, a.u + b.u); }
neu operator-(const neu& a, const neu& b) { return neu(a.n - b.n, a.e - b.e, a.u - b.u); }
neu operator-(const neu& a) { return neu(-a.n, -a.e, -a.u); }
long double operator*(const neu& a, const neu& b) { return a.n * b.n + a.e * b.e + a.u * b.u; }
neu operator*(const neu& a, long double s) { return neu(a.n * s, a.e * s, a.u * s); }
neu operator*(long double s, const neu& a) { return a * s; }
neu operator/(const neu& a, long double s) { return neu(a.n / s, a.e / s, a.u / s); }
neut operator*(const neut& a, long double s) { return neut(a.n * s, a.e * s, a.u * s, a.dt * s); }
neut operator*(long double s, const neut& a) { return a * s; }
neut operator/(const neut& a, long double s) { return neut(a.n / s, a.e / s, a.u / s, a.dt / s); }

bool operator==(const neu& a, const neu& b)
{
    return std::fabs(a.n - b.n) < xyzcmp::EqualTol && std::fabs(a.e - b.e) < xyzcmp::EqualTol
        && std::fabs(a.u - b.u) < xyzcmp::EqualTol;
}

bool operator==(const neut& a, const neut& b)
{
    return static_cast<const neu&>(a) == static_cast<const neu&>(b)
        && std::fabs(a.dt - b.dt) < xyzcmp::EqualTol;
}

bool operator!=(const neu& a, const neu& b) { return !(a == b); }
bool operator!=(const neut& a, const neut& b) { return !(a == b); }

std::ostream& operator<<(std::ostream& os, const neu& p)
{
    if (neuns::PrintType == 0) {
        PutFixed(os, p.u, 14, 4);
        PutFixed(os, p.e, 14, 4);
        PutFixed(os, p.n, 14, 4);
        return os;
    }
    const long double unit = neuns::Unit;
    const bool mult = IsUnit(unit, 1000.0L) || IsUnit(unit, 100.0L);
    const auto scaled = [&](long double v) { return mult ? v * unit : v / unit; };
    PutFixed(os, scaled(p.n), neuns::WidthNE, neuns::NDecNE);
    PutFixed(os, scaled(p.e), neuns::WidthNE, neuns::NDecNE);
    PutFixed(os, scaled(p.u), neuns::WidthU, neuns::NDecU);
    return os;
}

std::istream& operator>>(std::istream& is, neu& p)
{
    long double v[3] = {0.0L, 0.0L, 0.0L};
    is >> v[0] >> v[1] >> v[2];
    // A failed read leaves the vector as it was rather than half-filled.
    if (!is) return is;
    const long double unit = neuns::Unit;
    const bool div = IsUnit(unit, 1000.0L) || IsUnit(unit, 100.0L);
    for (long double& c : v) c = div ? c / unit : c * unit;
    p.Set(v[0], v[1], v[2]);
    return is;
}

std::ostream& operator<<(std::ostream& os, const neut& p)
{
    PutFixed(os, p.n, neutns::WidthNE, neutns::NDecNE);
    PutFixed(os, p.e, neutns::WidthNE, neutns::NDecNE);
    PutFixed(os, p.u, neutns::WidthU, neutns::NDecU);
    PutFixed(os, p.dt * neutns::UnitT, neutns::WidthT, neutns::NDecT);
    return os;
}

std::istream& operator>>(std::istream& is, neut& p)
{
    long double v[4] = {0.0L, 0.0L, 0.0L, 0.0L};
    is >> v[0] >> v[1] >> v[2] >> v[3];
    if (!is) return is;
    p.Set(v[0], v[1], v[2], v[3] / neutns::UnitT);
    return is;
}
