#pragma once
// The carrier phase wind-up of the simulated signals: a right-hand
// circularly polarised wave gains one cycle per turn of the transmitting
// antenna against the receiving one (Wu et al. 1993, Manuscr. Geod. 18,
// 91-98). Satellites keep the nominal yaw attitude: the body z axis to the
// geocentre, y perpendicular to the plane of Sun, satellite and Earth.
// Coded here from the paper, apart from the program's own version.
#include "SimOrbit.h"

/// Earth-fixed position (m) of the Sun at t seconds after 00:00 of day
/// mjday: the low-precision solar coordinates of the Astronomical Almanac
/// (about 0.01 deg), turned by the Greenwich mean sidereal time of Aoki et
/// al. (1982) in its linear form.
SimVec SunEarthFixed(unsigned long mjday, long double t);

/// Wind-up (cycles, in (-1/2, 1/2]) of the signal of a satellite at satEF
/// received at recEF (m, Earth-fixed) by an antenna at geodetic latitude
/// lat and longitude lon (rad) whose dipoles point north and west, with the
/// Sun at sunEF.
long double WindUpCycles(const SimVec& satEF, const SimVec& recEF, long double lat,
                         long double lon, const SimVec& sunEF);
