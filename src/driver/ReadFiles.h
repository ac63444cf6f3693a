#pragma once
// Reads every input file into memory and takes the decisions that depend on
// the data rather than on the command line.
#include "driver/gCPosC.h"

namespace ReadFilesns {
/// Seconds of a day: the daily check works on decimal MJD.
constexpr long double SecondsPerDay = 86400.0L;
}  // namespace ReadFilesns

/// Reads the files named by SetFiles in a fixed order (observations,
/// receiver clock, precise orbits, precise clocks, satellite problem list,
/// troposphere series or grid), then decides, in this order:
/// - with isDateChkDaily, the observations must touch the day DateChkDaily
///   (last epoch after its start and first epoch before its end), else the
///   run ends with "CHECKING DAILY DATA PROBLEM: GNSS DATA NOT FOR DAY
///   y-m-d!";
/// - a requested system whose records are not more than 10% of all
///   records is dropped (isGPS/isGLN/isGAL and its code-bias flag cleared)
///   with a warning on the output stream; with none left the run ends;
/// - a receiver clock file whose epoch count differs from the observations'
///   is dropped (isClkErr cleared) with a warning on the output stream;
/// - a file without C1 or L1 ends the run;
/// - a file with C2 but no P2 gets P2 as a copy of C2, with a warning.
/// The readers' own errors on a missing or malformed file end the run
/// with status 1, as do the decisions above.
void ReadFiles(gCPosC& gc);
