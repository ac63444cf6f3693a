#pragma once
// Phase wind-up: a circularly polarised carrier advances by one cycle for
// each turn of the transmitting antenna relative to the receiving one, so
// the changing geometry of a pass and the yaw of the satellite add a phase
// that the ionosphere-free combination keeps (Wu et al. 1993, Manuscr.
// Geod. 18, 91-98).
#include "driver/gCPosC.h"

namespace PhaseWindUpns {
/// A satellite not seen for longer than this (s) starts its wind-up afresh
/// in (-1/2, 1/2] cycle: a whole turn can have passed unseen.
inline constexpr long double RestartGap_s = 1800.0L;
}  // namespace PhaseWindUpns

/// -1, 0 or 1 by the sign of x.
long double sign(long double x);

/// Wind-up (cycles, in (-1/2, 1/2]) of a signal from a satellite at satPos
/// (m, Earth-fixed) to a receiver at recPos whose antenna dipoles point
/// along recX (north) and recY (west), with the Sun at sunPos (m): nominal
/// yaw attitude, body axes turned by half a turn for block IIR. The cosine
/// is clamped to [-1, 1] so that rounding cannot give NaN.
long double WindUp(const xyz& satPos, const xyz& recPos, const xyz& recX, const xyz& recY,
                   const xyz& sunPos, bool blockIIR);

/// With gc.ifL3, adds -GNSS_L3(w, w) (m) to every non-null L3 of each
/// satellite of a system in use, w the wind-up of the record tracked beyond
/// one turn from the satellite's previous record (restarting after a gap
/// above RestartGap_s); records without OKSAT are skipped. L1, L2, L4 and
/// xAmb stay. Prints per stretch of a satellite the epochs and the least
/// and largest wind-up (cycles) on the output stream.
void PhaseWindUp(gCPosC& gc);
