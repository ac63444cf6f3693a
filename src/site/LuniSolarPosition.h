#pragma once
// Low-precision Sun and Moon in the Earth-fixed frame, and sidereal time:
// enough for the solid Earth tide, satellite attitude and eclipses, where a
// few hundredths of a degree in the Sun and a few tenths in the Moon do not
// show.
#include "geodesy/flh.h"
#include "geodesy/mjd.h"
#include "geodesy/xyz.h"

class LuniSolarPosition {
public:
    LuniSolarPosition();

    /// Greenwich mean sidereal time (rad), in [0, 2 pi), at the GPS-time
    /// epoch ephUT1 reduced by the leap seconds towards UT1 (the IAU 1982
    /// polynomial, Aoki et al. 1982; Meeus, Astronomical Algorithms, ch. 12).
    long double GSTime(const mjd& ephUT1) const;

    /// Local mean sidereal time (rad), in [0, 2 pi): GSTime plus the east
    /// longitude gpos.l (rad) of the site.
    long double LSTime(const mjd& ephUT1, const flh& gpos) const;

    /// Unit vector uvec to the Sun in the Earth-fixed frame and its distance
    /// magr (m) at GPS-time epoch eph: mean elements with the two largest
    /// equation-of-centre terms, rotated by sidereal time only (no nutation,
    /// no polar motion); about 0.01 deg in direction.
    void SunPosition(const mjd& eph, xyz& uvec, long double& magr) const;

    /// Unit vector uvec to the Moon in the Earth-fixed frame and its distance
    /// magr (m) at GPS-time epoch eph: the truncated series of the
    /// Astronomical Almanac (six longitude, four latitude, four parallax
    /// terms), about 0.3 deg in direction and 0.2 % in distance.
    void MoonPosition(const mjd& eph, xyz& uvec, long double& magr) const;

private:
    // Julian centuries from J2000 of eph less the leap seconds: the one time
    // argument, standing for UT1 and for dynamical time alike.
    long double Centuries(const mjd& eph) const;
    // Mean obliquity of the ecliptic (rad) at t centuries.
    long double Obliquity(long double t) const;

    long double twopi;  // 2 pi
    long double AU;     // astronomical unit (km)
    long double RE;     // Earth radius for the Moon's parallax (km)
};
