#pragma once
// The station stage: what the observation file holds, whether it is enough,
// and the a-priori positions from which every model is computed.
#include "driver/gCPosC.h"

namespace GetReceiverPropertiesns {
/// Seconds of a day.
constexpr long double SecondsPerDay = 86400.0L;
/// Smallest geocentric distance (m) accepted for the a-priori marker: the
/// polar radius less the deepest land (6356.75 km - 0.5 km) rounded down
/// to 6000 km, so any site on or above the Earth passes, while a header
/// without APPROX POSITION (0, 0, 0) has no direction to compute
/// elevations from.
constexpr long double MinGeocentricDistance_m = 6.0e6L;
}  // namespace GetReceiverPropertiesns

/// Reports the station, receiver, antenna and data span of the observation
/// file on the output stream; with isMinDailyObs ends the run (status 1)
/// when the data span, or the number of epochs, is below MinDailyObs per
/// cent of a full day. Sets RecCodeTrackType to 0 (no tracking table), the
/// a-priori marker position RecPos0 from the RINEX header (m, Cartesian)
/// and RecPos0G on eGPS, the eccentricity RecPosEccLG (north, east, up, m)
/// and its Cartesian form RecPosEcc, the antenna reference point RecPosFC =
/// RecPos0 + eccentricity and RecPosFCG, the unit vector RecPosUnit and the
/// geocentric distance RecMag (m) of RecPos0. With isTrpModel gives the
/// site to the troposphere model. A marker closer than 6000 km to the
/// geocentre ends the run. Leaves the print settings of flh and xyz as the
/// later reports expect them.
void GetReceiverProperties(gCPosC& gc);
