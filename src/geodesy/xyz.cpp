#include "geodesy/xyz.h"

#include <cmath>
#include <istream>
#include <ostream>

#include "geodesy/FixedField.h"
#include "numerics/Trigonometry.h"

using geodesyio::IsUnit;
using geodesyio::PutFixed;

long double xyz::GetLength() const
{
    return std::hypot(x, y, z);
}

xyz xyz::GetUnitVector(long double sign) const
{
    const long double sx = x * 1e-6L, sy = y * 1e-6L, sz = z * 1e-6L;
    const long double s = std::sqrt(sx * sx + sy * sy + sz * sz);
    // A null vector points nowhere; returning it keeps NaN out of callers.
    if (!(s > 0.0L)) return xyz();
    // One division: on the x87 it costs as much as a dozen products.
    const long double f = sign / s;
    return xyz(sx * f, sy * f, sz * f);
}

xyz& xyz::RotateX(long double a_rad)
{
    const long double c = trig::Cos(a_rad), s = trig::Sin(a_rad);
    const long double y1 = y * c - z * s;
    const long double z1 = z * c + y * s;
    y = y1; z = z1;
    return *this;
}

xyz& xyz::RotateY(long double a_rad)
{
    const long double c = trig::Cos(a_rad), s = trig::Sin(a_rad);
    const long double x1 = x * c + z * s;
    const long double z1 = z * c - x * s;
    x = x1; z = z1;
    return *this;
}

xyz& xyz::operator+=(const xyz& b) { x += b.x; y += b.y; z += b.z; return *this; }
xyz& xyz::operator-=(const xyz& b) { x -= b.x; y -= b.y; z -= b.z; return *this; }
xyz& xyz::operator*=(long double s) { x *= s; y *= s; z *= s; return *this; }
xyz& xyz::operator/=(long double s) { x /= s; y /= s; z /= s; return *this; }

xyzt& xyzt::operator=(const xyz& p)
{
    x = p.x; y = p.y; z = p.z; dt = 0.0L;
    return *this;
}

xyzt xyzt::GetUnitVector(long double sign) const
{
    return xyzt(xyz::GetUnitVector(sign), 0.0L);
}

xyzt& xyzt::operator+=(const xyzt& b) { xyz::operator+=(b); dt += b.dt; return *this; }
xyzt& xyzt::operator-=(const xyzt& b) { xyz::operator-=(b); dt -= b.dt; return *this; }
xyzt& xyzt::operator*=(long double s) { xyz::operator*=(s); dt *= s; return *this; }
xyzt& xyzt::operator/=(long double s) { xyz::operator/=(s); dt /= s; return *this; }

xyz operator+(const xyz& a, const xyz& b) { return xyz(a.x + b.x, a.y + b.y, a.z + b.z); }
xyz operator-(const xyz& a, const xyz& b) { return xyz(a.x - b.x, a.y - b.y, a.z - b.z); }
xyz operator-(const xyz& a) { return xyz(-a.x, -a.y, -a.z); }
long double operator*(const xyz& a, const xyz& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
xyz operator*(const xyz& a, long double s) { return xyz(a.x * s, a.y * s, a.z * s); }
xyz operator*(long double s, const xyz& a) { return a * s; }
xyz operator/(const xyz& a, long double s) { return xyz(a.x / s, a.y / s, a.z / s); }
xyzt operator*(const xyzt& a, long double s) { return xyzt(a.x * s, a.y * s, a.z * s, a.dt * s); }
xyzt operator*(long double s, const xyzt& a) { return a * s; }
xyzt operator/(const xyzt& a, long double s) { return xyzt(a.x / s, a.y / s, a.z / s, a.dt / s); }

bool operator==(const xyz& a, const xyz& b)
{
    return std::fabs(a.x - b.x) < xyzcmp::EqualTol && std::fabs(a.y - b.y) < xyzcmp::EqualTol
        && std::fabs(a.z - b.z) < xyzcmp::EqualTol;
}

bool operator==(const xyzt& a, const xyzt& b)
{
    return static_cast<const xyz&>(a) == static_cast<const xyz&>(b)
        && std::fabs(a.dt - b.dt) < xyzcmp::EqualTol;
}

bool operator!=(const xyz& a, const xyz& b) { return !(a == b); }
bool operator!=(const xyzt& a, const xyzt& b) { return !(a == b); }

xyz CrossP(const xyz& a, const xyz& b)
{
    return xyz(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

xyz ElementP(const xyz& a, const xyz& b)
{
    return xyz(a.x * b.x, a.y * b.y, a.z * b.z);
}

xyz sqrt(const xyz& a)
{
    return xyz(std::sqrt(a.x), std::sqrt(a.y), std::sqrt(a.z));
}

std::ostream& operator<<(std::ostream& os, const xyz& p)
{
    const long double u = xyzns::Unit;
    const bool mult = IsUnit(u, 100.0L) || IsUnit(u, 1000.0L);
    const long double vals[3] = {p.x, p.y, p.z};
    for (long double v : vals)
        PutFixed(os, mult ? v * u : v / u, xyzns::Width, xyzns::NDec);
    return os;
}

std::istream& operator>>(std::istream& is, xyz& p)
{
    long double v[3] = {0.0L, 0.0L, 0.0L};
    is >> v[0] >> v[1] >> v[2];
    // A failed read leaves the vector as it was rather than half-filled.
    if (!is) return is;
    const long double u = xyzns::Unit;
    for (long double& c : v) c = IsUnit(u, 100.0L) ? c / 100.0L : c * u;
    p.Set(v[0], v[1], v[2]);
    return is;
}

std::ostream& operator<<(std::ostream& os, const xyzt& p)
{
    const long double u = xyztns::Unit;
    const bool mult = IsUnit(u, 100.0L);
    const long double vals[3] = {p.x, p.y, p.z};
    for (long double v : vals)
        PutFixed(os, mult ? v * u : v / u, xyztns::Width, xyztns::NDec);
    if (xyztns::PrintTime == 1)
        PutFixed(os, p.dt * xyztns::UnitT, xyztns::WidthT, xyztns::NDecT);
    return os;
}

std::istream& operator>>(std::istream& is, xyzt& p)
{
    long double v[4] = {0.0L, 0.0L, 0.0L, 0.0L};
    is >> v[0] >> v[1] >> v[2] >> v[3];
    if (!is) return is;
    const long double u = xyztns::Unit;
    for (int i = 0; i < 3; ++i) v[i] = IsUnit(u, 100.0L) ? v[i] / 100.0L : v[i] * u;
    p.Set(v[0], v[1], v[2], v[3] / xyztns::UnitT);
    return is;
}
