#pragma once
// The a-priori receiver clock: one value per epoch from the codes alone, the
// starting point of the clock estimation in the adjustment.
#include "driver/gCPosC.h"
#include "numerics/MathConstants.h"

namespace ProcClockns {
/// Speed of light in vacuum (m/s).
constexpr long double C = SpeedOfLight_mps;
}  // namespace ProcClockns

/// Sets gc.dtAll (gc.rnxd.GetNEpoch() rows, metres) to the receiver clock
/// error c·dt_r of every epoch: the robust mean (FindOutliers) of code -
/// |SAT_POS - RecPosFC| + c·SAT_POS.dt over the codes C1, P1, P2, C7 that
/// the header holds and that are present, of every record with OKSAT true,
/// ELV strictly above MinElevation (degrees) and its system in use. No
/// atmosphere, tide or relativity enters; the value is metre-level. Values
/// farther than 2·MaxfDiff (m) from the mean are counted as exceeded, and
/// change nothing. An epoch without any such code keeps 0. Reports the
/// epochs lacking a system and the counts on the output stream. Runs after
/// ApplyCorrections: per-record arrays that do not cover every record end
/// the run (status 1) before anything is printed.
void ProcClock(gCPosC& gc);
