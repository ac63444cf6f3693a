#pragma once
// The residuals of the static solution as a binary file for outside tools:
// little-endian, no padding between fields.
#include "driver/gCPosC.h"

namespace PrintResStaticns {
/// Bytes of one entry: number 2, type 2, residual, elevation and azimuth
/// 16 each, rejection flag 1.
inline constexpr long EntryBytes = 53;
/// Bytes of an epoch head: day 4, second 16, number of entries 4.
inline constexpr long EpochHeadBytes = 24;
}  // namespace PrintResStaticns

/// With ifEstSta and isresfile writes resfile: the number of satellites of
/// the observation file (2 bytes) and their numbers (2 bytes each); then per
/// epoch with entries its day (4), second (long double) and entry count (4
/// bytes, a 32-bit integer), and per record and type used by the adjustment
/// (C1, P1, P2, P3 from C1, P3 from P1, L3, types 0 to 5) the number, the
/// type, the misclosure (m), elevation and azimuth (degrees) and the
/// rejection flag. A long double takes 16 bytes: the 80-bit value, then
/// six zero bytes. A file that does not open is warned of; nothing else
/// of the run depends on it.
void PrintResStatic(gCPosC& gc);
