#pragma once
// Reduction of every code and phase observation to the antenna reference
// point of the receiver and to the centre of mass of the satellite, by the
// phase centre offsets and variations of the ANTEX file. It runs before any
// filter or combination, because the corrections differ per carrier.
#include "driver/gCPosC.h"

namespace ApplyATXValns {
/// Azimuth and elevation (rad) both below this in size mark a record
/// without geometry (no orbit, or its system switched off).
inline constexpr long double NoGeometry_rad = 0.0001L;
/// A satellite closer to the geocentre than this (m) has no position.
inline constexpr long double MinSatDistance_m = 1.0L;
}  // namespace ApplyATXValns

/// With gc.isAtx, shifts the non-null L1, C1, P1 and L2, P2 (GPS,
/// GLONASS) or L7, C7 (Galileo) of every record with geometry: first by the
/// receiver antenna's offset projected on the line of sight minus its
/// variation at the record's zenith and azimuth (azimuth turned by
/// AzmOffAtx with isAzmOffAtx), then by the satellite antenna's body-frame
/// offset projected on the line of sight minus its variation at the nadir
/// angle. Codes change in metres, phases in cycles. The satellite offset is
/// zero for a system whose orbit comes from its navigation file. A receiver
/// antenna missing from the file gets a warning and no receiver part; a
/// satellite missing at an epoch gets one report line and one warning per
/// satellite and no satellite part. With isPRCorr prcAtx keeps the
/// receiver part of the first carrier (m). Nothing happens without isAtx.
void ApplyATXVal(gCPosC& gc);
