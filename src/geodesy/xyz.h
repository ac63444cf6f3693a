#pragma once
// Earth-centred Cartesian positions and vectors (metres), and the same with
// a time term (seconds) for satellite states that carry their clock.
#include <iosfwd>

#include "numerics/SmallAngle.h"

/// Print and read settings of xyz, program-wide; callers set them just
/// before printing.
namespace xyzns {
inline int NDec = 4;            ///< decimals of x, y, z
inline int NDecT = 6;           ///< decimals of the time term (unused by xyz)
inline int Width = 14;          ///< field width of x, y, z
inline int WidthT = 12;         ///< field width of the time term (unused by xyz)
inline long double Unit = 1.0L; ///< scale selector of x, y, z (100 and 1000 multiply on output)
inline long double UnitT = 1.0L;///< scale of the time term (unused by xyz)
}  // namespace xyzns

/// Print and read settings of xyzt, program-wide.
namespace xyztns {
inline int NDec = 4;            ///< decimals of x, y, z
inline int NDecT = 6;           ///< decimals of dt
inline int Width = 14;          ///< field width of x, y, z
inline int WidthT = 12;         ///< field width of dt
inline long double Unit = 1.0L; ///< scale selector of x, y, z (100 multiplies on output)
inline long double UnitT = 1.0L;///< dt is multiplied by it on output, divided on input
inline int PrintTime = 1;       ///< 1 prints dt, anything else leaves it out
}  // namespace xyztns

/// Largest component difference (m) at which two vectors count as equal:
/// far below any position the program resolves, yet above the round-off of
/// an exact copy.
namespace xyzcmp {
constexpr long double EqualTol = 1e-14L;
}

/// Cartesian vector x, y, z in metres (or any unit the caller keeps).
class xyz {
public:
    long double x, y, z;
    /// The null vector, and xyzt's, is all zero bytes.
    using ZeroBytesDefault = void;

    /// The null vector.
    xyz() : x(0.0L), y(0.0L), z(0.0L) {}
    /// The vector (x, y, z).
    xyz(long double x_, long double y_, long double z_) : x(x_), y(y_), z(z_) {}

    /// Sets all three components.
    void Set(long double x_, long double y_, long double z_) { x = x_; y = y_; z = z_; }
    /// Component x.
    long double GetX() const { return x; }
    /// Component y.
    long double GetY() const { return y; }
    /// Component z.
    long double GetZ() const { return z; }
    /// Sets component x.
    void SetX(long double v) { x = v; }
    /// Sets component y.
    void SetY(long double v) { y = v; }
    /// Sets component z.
    void SetZ(long double v) { z = v; }

    /// Euclidean norm of (x, y, z), without overflow or underflow of the squares.
    long double GetLength() const;
    /// Unit vector along this vector (sign 1) or against it (sign -1); the
    /// squares are formed on components scaled by 1e-6 so that orbit-sized
    /// vectors stay far from any range limit. A null vector has no direction
    /// and gives the null vector.
    xyz GetUnitVector(long double sign) const;

    /// Rotates in place about the x axis by a_rad (y' = y cos a - z sin a,
    /// z' = z cos a + y sin a); returns this vector.
    xyz& RotateX(long double a_rad);
    /// Rotates in place about the y axis by a_rad (x' = x cos a + z sin a,
    /// z' = z cos a - x sin a); returns this vector.
    xyz& RotateY(long double a_rad);
    /// Rotates in place about the z axis by a_rad (x' = x cos a - y sin a,
    /// y' = y cos a + x sin a); returns this vector. Inline: the light-time
    /// iterations turn the receiver at every step of every record.
    xyz& RotateZ(long double a_rad)
    {
        // The Earth's turn during a signal's flight, a few microradians, is
        // the common case: its series costs a fraction of the library's
        // functions.
        long double s, c;
        SinCosOfSmallAngle(a_rad, s, c);
        const long double x1 = x * c - y * s;
        const long double y1 = y * c + x * s;
        x = x1;
        y = y1;
        return *this;
    }

    /// Adds b component by component.
    xyz& operator+=(const xyz& b);
    /// Subtracts b component by component.
    xyz& operator-=(const xyz& b);
    /// Scales every component by s.
    xyz& operator*=(long double s);
    /// Divides every component by s; s = 0 gives infinities as in IEEE division.
    xyz& operator/=(long double s);
};

/// Cartesian vector with a time term dt in seconds (a satellite position
/// with its clock correction). Converts to xyz by dropping dt.
class xyzt : public xyz {
public:
    long double dt;

    /// The null vector with dt = 0.
    xyzt() : xyz(), dt(0.0L) {}
    /// The vector (x, y, z) with time term dt_s.
    xyzt(long double x_, long double y_, long double z_, long double dt_s)
        : xyz(x_, y_, z_), dt(dt_s) {}
    /// The vector p with a time term dt_s (0 unless given).
    explicit xyzt(const xyz& p, long double dt_s = 0.0L) : xyz(p), dt(dt_s) {}

    /// Takes x, y, z of p; a plain vector carries no time, so dt becomes 0.
    xyzt& operator=(const xyz& p);
    xyzt& operator=(const xyzt& p) = default;
    xyzt(const xyzt& p) = default;

    using xyz::Set;
    /// Sets all four components.
    void Set(long double x_, long double y_, long double z_, long double dt_s)
    {
        x = x_; y = y_; z = z_; dt = dt_s;
    }
    /// Time term in seconds.
    long double GetDt() const { return dt; }
    /// Sets the time term in seconds.
    void SetDt(long double dt_s) { dt = dt_s; }

    /// Unit vector as for xyz, with dt = 0.
    xyzt GetUnitVector(long double sign) const;

    using xyz::operator+=;
    using xyz::operator-=;
    /// Adds b component by component, dt included.
    xyzt& operator+=(const xyzt& b);
    /// Subtracts b component by component, dt included.
    xyzt& operator-=(const xyzt& b);
    /// Scales all four components by s.
    xyzt& operator*=(long double s);
    /// Divides all four components by s.
    xyzt& operator/=(long double s);
};

/// Sum of the Cartesian parts; any dt is dropped.
xyz operator+(const xyz& a, const xyz& b);
/// Difference of the Cartesian parts; any dt is dropped.
xyz operator-(const xyz& a, const xyz& b);
/// The opposite vector.
xyz operator-(const xyz& a);
/// Dot product of the Cartesian parts (m^2).
long double operator*(const xyz& a, const xyz& b);
/// The vector scaled by s.
xyz operator*(const xyz& a, long double s);
/// The vector scaled by s.
xyz operator*(long double s, const xyz& a);
/// The vector divided by s.
xyz operator/(const xyz& a, long double s);
/// All four components scaled by s.
xyzt operator*(const xyzt& a, long double s);
/// All four components scaled by s.
xyzt operator*(long double s, const xyzt& a);
/// All four components divided by s.
xyzt operator/(const xyzt& a, long double s);

/// True when x, y, z each differ by less than 1e-14.
bool operator==(const xyz& a, const xyz& b);
/// True when x, y, z and dt each differ by less than 1e-14.
bool operator==(const xyzt& a, const xyzt& b);
/// Negation of ==.
bool operator!=(const xyz& a, const xyz& b);
/// Negation of ==.
bool operator!=(const xyzt& a, const xyzt& b);

/// Cross product a x b.
xyz CrossP(const xyz& a, const xyz& b);
/// Component product (a.x b.x, a.y b.y, a.z b.z).
xyz ElementP(const xyz& a, const xyz& b);
/// Component square root; a negative component is outside the domain and
/// gives NaN in that component.
xyz sqrt(const xyz& a);

/// Writes x, y, z in fixed notation, each in xyzns::Width with
/// xyzns::NDec decimals; Unit 100 or 1000 multiplies, any other divides.
std::ostream& operator<<(std::ostream& os, const xyz& p);
/// Reads three blank-separated values; Unit 100 divides, any other multiplies.
std::istream& operator>>(std::istream& is, xyz& p);
/// Writes x, y, z as for xyz under xyztns (only Unit 100 multiplies), then
/// dt times UnitT in WidthT with NDecT decimals when PrintTime is 1.
std::ostream& operator<<(std::ostream& os, const xyzt& p);
/// Reads x, y, z as for xyz under xyztns, then dt divided by UnitT.
std::istream& operator>>(std::istream& is, xyzt& p);
