#pragma once
// Displacement of a site by the solid Earth tide after the IERS Conventions
// 2010, ch. 7.1.1 (Mathews, Dehant and Gipson 1997): degree 2 and 3 Love
// and Shida terms of Sun and Moon (step 1) with the out-of-phase and
// latitude-dependent corrections, then the frequency-dependent corrections
// of the diurnal and long-period bands (step 2). The permanent tide stays in.
#include "geodesy/mjd.h"
#include "geodesy/xyz.h"

class SolidEarthTide {
public:
    SolidEarthTide();

    /// Earth-fixed unit vector Pos towards the Sun and its geocentric
    /// distance Mag (m), fresh for each epoch.
    void SetSunPosition(const xyz& Pos, long double Mag);
    /// Earth-fixed unit vector Pos towards the Moon and its geocentric
    /// distance Mag (m), fresh for each epoch.
    void SetMoonPosition(const xyz& Pos, long double Mag);
    /// Earth-fixed unit vector Pos of the site and its geocentric distance
    /// Mag (m). A site on the rotation axis takes longitude 0 for its north
    /// and east directions.
    void SetStaPosition(const xyz& Pos, long double Mag);

    /// Earth-fixed displacement DXTIDE (m) of the site at epoch eph (GPS
    /// time as the program carries it; terrestrial time follows from the
    /// leap seconds). Sun, Moon and site must have been set.
    void GetDisplacement(const mjd& eph, xyz& DXTIDE);

private:
    // Each step returns its correction (m), Earth-fixed.
    xyz ST1IDIU() const;  // out-of-phase, diurnal band
    xyz ST1ISEM() const;  // out-of-phase, semi-diurnal band
    xyz ST1L1() const;    // latitude dependence of the Shida number
    // Frequency dependence (m), diurnal and long-period bands.
    void Step2(const mjd& eph, xyz& diurnal, xyz& longPeriod) const;
    // North, east, radial at the site to Earth-fixed.
    xyz ToEarthFixed(long double DN, long double DE, long double DR) const;
    // Delaunay-type arguments S, TAU, H, P, ZNS, PS (deg) at T, with TAU at
    // FHR hours of the day.
    void FundamentalArguments(long double FHR, long double& S, long double& TAU, long double& H,
                              long double& P, long double& ZNS, long double& PS) const;

    long double RSUN, RMON, RSTA;
    xyz XSUN, XMON, XSTA;
    long double H20, L20, H3, L3;
    long double MASS_RATIO_SUN, MASS_RATIO_MOON;
    long double RE;  // Earth's equatorial radius (m)
    long double SINPHI, COSPHI, SINLA, COSLA;
    long double FAC2SUN, FAC2MON, FAC3SUN, FAC3MON;
    long double T;  // Julian centuries of TT from J2000
    long double LON;  // longitude of the site (rad), from SetStaPosition
};
