#pragma once
// GPS - UTC from the table of leap seconds announced by the IERS.
#include "geodesy/mjd.h"

/// GPS - UTC (s) at epoch t: TAI - UTC less the constant 19 s of TAI - GPS,
/// so 0 from 1980-01-01 and 18 from 2017-01-01 (MJD 57754). Before
/// 1972-01-01 (MJD 41317) it is the first table value, -9; after the last
/// step it stays 18 until the table grows. Only the day of t matters: the
/// step is taken at 0h of the day it holds from.
long double LeapSecond(const mjd& t);
