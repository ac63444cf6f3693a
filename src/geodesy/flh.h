#pragma once
// Geodetic positions: latitude, longitude (radians) and ellipsoidal height
// (metres), and the same with a time term (seconds).
#include <iosfwd>

/// Print and read settings of flh, program-wide; callers set them just
/// before printing.
namespace flhns {
inline int NDecFL = 8;   ///< decimals of latitude and longitude
inline int NDecH = 4;    ///< decimals of height
inline int WidthFL = 12; ///< field width of latitude and longitude
inline int WidthH = 10;  ///< field width of height
/// Form of the angles: 0 radians, 1 degrees, 2 gons (output only),
/// 3 packed DD.MMSS, 4 degrees minutes seconds, 5 longitude first in
/// degrees minutes seconds to 0.1" (output only).
inline int Unit = 0;
}  // namespace flhns

/// Print and read settings of flht, program-wide.
namespace flhtns {
inline int NDecFL = 8;          ///< decimals of latitude and longitude
inline int NDecH = 4;           ///< decimals of height
inline int NDecT = 6;           ///< decimals of dt
inline int WidthFL = 12;        ///< field width of latitude and longitude
inline int WidthH = 10;         ///< field width of height
inline int WidthT = 12;         ///< field width of dt
inline int Unit = 0;            ///< form of the angles, as flhns::Unit
inline long double UnitT = 1.0L;///< dt is multiplied by it on output, divided on input
}  // namespace flhtns

/// Geodetic position: latitude f and longitude l in radians, ellipsoidal
/// height h in metres. Every construction and assignment checks the angles
/// and stops the run on a bad one.
class flh {
public:
    long double f, l, h;

    /// Latitude, longitude and height 0.
    flh() : f(0.0L), l(0.0L), h(0.0L) {}
    /// The position (f_rad, l_rad, h_m); stops the run when TestPos fails.
    flh(long double f_rad, long double l_rad, long double h_m);
    /// Copy, checked like any construction.
    flh(const flh& p);
    /// Assignment, checked like any construction.
    flh& operator=(const flh& p);

    /// Sets all three and checks them.
    void Set(long double f_rad, long double l_rad, long double h_m);
    /// Latitude (rad).
    long double GetF() const { return f; }
    /// Longitude (rad).
    long double GetL() const { return l; }
    /// Height (m).
    long double GetH() const { return h; }
    /// Sets the latitude (rad) and checks it.
    void SetF(long double f_rad);
    /// Sets the longitude (rad) and checks it.
    void SetL(long double l_rad);
    /// Sets the height (m).
    void SetH(long double h_m) { h = h_m; }

    /// Stops the run with "LATITUDE not valid" unless -90 <= f <= 90. The
    /// bound is the number 90 on the radian value: it catches corrupt or
    /// non-finite values, not angles a little beyond the pole.
    void TestFi() const;
    /// Stops the run with "LONGITUDE not valid" unless -180 <= l <= 180,
    /// the number on the radian value as in TestFi.
    void TestLa() const;
    /// TestFi, then TestLa.
    void TestPos() const;

    /// Adds b component by component and checks the result.
    flh& operator+=(const flh& b);
    /// Subtracts b component by component and checks the result.
    flh& operator-=(const flh& b);

protected:
    // Checks under the name of the class that owns the object, so that a
    // flht reports as flht.
    void CheckFi(const char* cls) const;
    void CheckLa(const char* cls) const;
};

/// Geodetic position with a time term dt in seconds. Converts to flh by
/// dropping dt.
class flht : public flh {
public:
    long double dt;

    /// Latitude, longitude, height and dt 0.
    flht() : flh(), dt(0.0L) {}
    /// The position with time term dt_s; stops the run when TestPos fails.
    flht(long double f_rad, long double l_rad, long double h_m, long double dt_s);
    /// The position p with time term dt_s (0 unless given), checked.
    explicit flht(const flh& p, long double dt_s = 0.0L);
    /// Copy, checked like any construction.
    flht(const flht& p);
    /// Assignment, checked like any construction.
    flht& operator=(const flht& p);
    /// Takes f, l, h of p; a plain position carries no time, so dt becomes 0.
    flht& operator=(const flh& p);

    using flh::Set;
    /// Sets all four and checks them.
    void Set(long double f_rad, long double l_rad, long double h_m, long double dt_s);
    /// Sets the latitude (rad) and checks it.
    void SetF(long double f_rad);
    /// Sets the longitude (rad) and checks it.
    void SetL(long double l_rad);
    /// Time term in seconds.
    long double GetDt() const { return dt; }
    /// Sets the time term in seconds.
    void SetDt(long double dt_s) { dt = dt_s; }

    /// As flh::TestFi, reporting as flht.
    void TestFi() const;
    /// As flh::TestLa, reporting as flht.
    void TestLa() const;
    /// TestFi, then TestLa.
    void TestPos() const;

    using flh::operator+=;
    using flh::operator-=;
    /// Adds b component by component, dt included, and checks the result.
    flht& operator+=(const flht& b);
    /// Subtracts b component by component, dt included, and checks the result.
    flht& operator-=(const flht& b);
};

/// Component sum of the geodetic parts, checked; any dt is dropped.
flh operator+(const flh& a, const flh& b);
/// Component difference of the geodetic parts, checked; any dt is dropped.
flh operator-(const flh& a, const flh& b);
/// Component sum, dt included, checked.
flht operator+(const flht& a, const flht& b);
/// Component difference, dt included, checked.
flht operator-(const flht& a, const flht& b);

/// True when f, l, h each differ by less than 1e-14.
bool operator==(const flh& a, const flh& b);
/// True when f, l, h and dt each differ by less than 1e-14.
bool operator==(const flht& a, const flht& b);
/// Negation of ==.
bool operator!=(const flh& a, const flh& b);
/// Negation of ==.
bool operator!=(const flht& a, const flht& b);

/// Writes the position in the form flhns::Unit (see there), angles in
/// WidthFL with NDecFL decimals and the height in WidthH.NDecH for forms
/// 0 to 4; form 5 is longitude, latitude in 11 columns to 0.1" and the
/// height in 7.1, blank-separated. An unknown form stops the run.
std::ostream& operator<<(std::ostream& os, const flh& p);
/// Reads a position in the form flhns::Unit: forms 0, 1, 3 read latitude,
/// longitude, height; form 4 reads degree, minute, second of latitude and
/// of longitude (a negative degree, -0 included, makes the whole angle
/// negative), then the height. Forms 2 and 5 have no input and stop the
/// run. A failed read leaves the position unchanged; a read position is
/// checked.
std::istream& operator>>(std::istream& is, flh& p);
/// As for flh under flhtns, followed by dt times UnitT in WidthT.NDecT.
std::ostream& operator<<(std::ostream& os, const flht& p);
/// As for flh under flhtns, followed by dt divided by UnitT.
std::istream& operator>>(std::istream& is, flht& p);
