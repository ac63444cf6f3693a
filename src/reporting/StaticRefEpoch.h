#pragma once
// The time tag of the static solution.
#include "geodesy/mjd.h"
#include "observations/RINEXData.h"

/// Middle of the observation span of rnxd: first epoch plus half of (last
/// epoch - first epoch), formed on the difference so that the day number
/// never enters the sum. A file without epochs ends the run with the framed
/// error.
mjd StaticRefEpoch(const RINEXData& rnxd);
