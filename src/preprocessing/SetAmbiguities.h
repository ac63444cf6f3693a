#pragma once
// Ambiguity arcs: the stretches of one satellite's phase over which one
// carrier-phase ambiguity holds, and the lookup that all later stages use
// to find the arc of an observation.
#include <vector>

#include "driver/gCPosC.h"

namespace SetAmbiguitiesns {
/// Arcs may hold gaps of up to this many sampling intervals.
inline constexpr long double GapIntervals = 5.0L;
/// Half a second of slack on the interval, so that a time tag off the grid
/// by rounding does not break an arc or move a table boundary.
inline constexpr long double IntervalSlack_s = 0.5L;
}  // namespace SetAmbiguitiesns

/// Arc parameters for sampling interval T_s (s): the largest gap inside an
/// arc, 5·T + 0.5 s, and the shortest arc kept, from 120 observations at
/// 1 s down to 15 at 20 s and above (by T + 0.5 below 2, 3, 4, 10, 20 s:
/// 120, 60, 40, 30, 25). About an hour of data at the usual rates; fewer
/// points would make the a-priori ambiguity and the slip tests unreliable.
void ArcParameters(long double T_s, long double& MaxAmbTimeGap, long& MinObsAmb);

/// The arc of an observation in an arc table: of the first namb arcs (rows
/// of AI and AP; namb beyond their rows is cut to them), the first whose
/// satellite AP(k) is prn and whose epochs AI(k,0) .. AI(k,2) enclose ieph,
/// both ends included. Each satellite's arcs are listed once, in table
/// order, so that a search walks that satellite's few arcs, not all of them.
class AmbiguityLookup {
public:
    /// The arcs of AI and AP, which must outlive the lookup unchanged.
    AmbiguityLookup(const matrix<long>& AI, const matrix<short>& AP, long namb);
    /// The arc k for prn and ieph, -1 when there is none.
    long Find(short prn, long ieph) const;

private:
    const matrix<long>& AI_;
    short low_ = 0;
    std::vector<std::vector<long>> arcsOf_;  // by satellite number less low_
};

/// Cuts the phase of every satellite into ambiguity arcs when gc.ifL3 is
/// set, and does nothing otherwise. The arc parameters come from the
/// header's sampling interval (ArcParameters, replacing MinObsAmb and
/// MaxAmbTimeGap); arcs are cut on L4 (RINEXData::ScreenL4 when
/// isL4ScreenConst, else ScreenL4Linear, thresholds ThresL40, dThresL4 in
/// m, elevation cut-off MinElevation in degrees), then on MW
/// (RINEXData::ScreenMW, MWRMSThres in m), through the temporary file
/// "Ambiq_<marker>_<random>.b" in the working directory, which is removed
/// again. An arc keeps its a-priori L3 ambiguity, xAmb (m), the mean of L3
/// minus the code of the solution (PC3 with ifPc3, else PP3 with ifPp3,
/// else C1) over its observations with OKSAT set and both values present;
/// an arc with none is dropped. Fills nAmb, xAmb, AmbIndex (first epoch,
/// first record of that epoch, last epoch, count) and AmbSat, in satList
/// order and by time, and clears L1, L2/L7, L3, L4 and MW of every record of
/// a system in use that lies in no arc's epoch span. Reports on the output
/// stream. A sampling interval that is not positive, per-record arrays
/// that do not cover every record, or an arc file that cannot be written
/// or read end the run (status 1); one that cannot be removed is a warning.
void SetAmbiguities(gCPosC& gc);
