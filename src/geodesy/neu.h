#pragma once
// Local topocentric vectors: north, east, up (metres) at a point of the
// ellipsoid, and the same with a time term (seconds).
#include <iosfwd>

/// Print and read settings of neu, program-wide; callers set them just
/// before printing.
namespace neuns {
inline int NDecNE = 4;          ///< decimals of north and east
inline int NDecU = 4;           ///< decimals of up
inline int WidthNE = 12;        ///< field width of north and east
inline int WidthU = 10;         ///< field width of up
inline long double Unit = 1.0L; ///< 1000 or 100 multiply on output (1000 prints millimetres)
inline int PrintType = 1;       ///< 0 prints u, e, n in 14.4 unscaled; otherwise n, e, u
}  // namespace neuns

/// Print and read settings of neut, program-wide.
namespace neutns {
inline int NDecNE = 4;          ///< decimals of north and east
inline int NDecU = 4;           ///< decimals of up
inline int NDecT = 6;           ///< decimals of dt
inline int WidthNE = 12;        ///< field width of north and east
inline int WidthU = 10;         ///< field width of up
inline int WidthT = 10;         ///< field width of dt
inline long double UnitT = 1.0L;///< dt is multiplied by it on output, divided on input
}  // namespace neutns

/// Local vector: north, east, up in metres.
class neu {
public:
    long double n, e, u;

    /// The null vector.
    neu() : n(0.0L), e(0.0L), u(0.0L) {}
    /// The vector (n, e, u).
    neu(long double n_, long double e_, long double u_) : n(n_), e(e_), u(u_) {}

    /// Sets all three components.
    void Set(long double n_, long double e_, long double u_) { n = n_; e = e_; u = u_; }
    /// North component.
    long double GetN() const { return n; }
    /// East component.
    long double GetE() const { return e; }
    /// Up component.
    long double GetU() const { return u; }
    /// Sets the north component.
    void SetN(long double v) { n = v; }
    /// Sets the east component.
    void SetE(long double v) { e = v; }
    /// Sets the up component.
    void SetU(long double v) { u = v; }

    /// Euclidean norm of (n, e, u).
    long double GetLength() const;

    /// Adds b component by component.
    neu& operator+=(const neu& b);
    /// Subtracts b component by component.
    neu& operator-=(const neu& b);
    /// Scales every component by s.
    neu& operator*=(long double s);
    /// Divides every component by s.
    neu& operator/=(long double s);
};

/// Local vector with a time term dt in seconds. Converts to neu by
/// dropping dt.
class neut : public neu {
public:
    long double dt;

    /// The null vector with dt = 0.
    neut() : neu(), dt(0.0L) {}
    /// The vector (n, e, u) with time term dt_s.
    neut(long double n_, long double e_, long double u_, long double dt_s)
        : neu(n_, e_, u_), dt(dt_s) {}
    /// The vector p with a time term dt_s (0 unless given).
    explicit neut(const neu& p, long double dt_s = 0.0L) : neu(p), dt(dt_s) {}

    /// Takes n, e, u of p; a plain vector carries no time, so dt becomes 0.
    neut& operator=(const neu& p);
    neut& operator=(const neut& p) = default;
    neut(const neut& p) = default;

    using neu::Set;
    /// Sets all four components.
    void Set(long double n_, long double e_, long double u_, long double dt_s)
    {
        n = n_; e = e_; u = u_; dt = dt_s;
    }
    /// Time term in seconds.
    long double GetDt() const { return dt; }
    /// Sets the time term in seconds.
    void SetDt(long double dt_s) { dt = dt_s; }

    using neu::operator+=;
    using neu::operator-=;
    /// Adds b component by component, dt included.
    neut& operator+=(const neut& b);
    /// Subtracts b component by component, dt included.
    neut& operator-=(const neut& b);
    /// Scales all four components by s.
    neut& operator*=(long double s);
    /// Divides all four components by s.
    neut& operator/=(long double s);
};

/// Sum of the local parts; any dt is dropped.
neu operator+(const neu& a, const neu& b);
/// Difference of the local parts; any dt is dropped.
neu operator-(const neu& a, const neu& b);
/// The opposite vector.
neu operator-(const neu& a);
/// Dot product of the local parts (m^2).
long double operator*(const neu& a, const neu& b);
/// The vector scaled by s.
neu operator*(const neu& a, long double s);
/// The vector scaled by s.
neu operator*(long double s, const neu& a);
/// The vector divided by s.
neu operator/(const neu& a, long double s);
/// All four components scaled by s.
neut operator*(const neut& a, long double s);
/// All four components scaled by s.
neut operator*(long double s, const neut& a);
/// All four components divided by s.
neut operator/(const neut& a, long double s);

/// True when n, e, u each differ by less than 1e-14.
bool operator==(const neu& a, const neu& b);
/// True when n, e, u and dt each differ by less than 1e-14.
bool operator==(const neut& a, const neut& b);
/// Negation of ==.
bool operator!=(const neu& a, const neu& b);
/// Negation of ==.
bool operator!=(const neut& a, const neut& b);

/// With neuns::PrintType 0 writes u, e, n unscaled in 14.4; otherwise n, e
/// in WidthNE.NDecNE and u in WidthU.NDecU, multiplied by Unit when it is
/// 1000 or 100 and divided by it otherwise. Fixed notation.
std::ostream& operator<<(std::ostream& os, const neu& p);
/// Reads n, e, u; neuns::Unit 1000 or 100 divides, any other multiplies.
std::istream& operator>>(std::istream& is, neu& p);
/// Writes n, e in WidthNE.NDecNE, u in WidthU.NDecU, dt times UnitT in
/// WidthT.NDecT, all under neutns, unscaled apart from dt.
std::ostream& operator<<(std::ostream& os, const neut& p);
/// Reads n, e, u and dt; dt is divided by neutns::UnitT.
std::istream& operator>>(std::istream& is, neut& p);
