#pragma once
// The receiver clock file of the static solution.
#include "driver/gCPosC.h"

/// With isClkFile writes clkfile in the layout of ClkErr: the marker name
/// and number, the reference system letter (G when GPS takes part, else R
/// when GLONASS does, else E), then every epoch, also those without a clock
/// solution, with its clock dtAll (m) in microseconds. Sets
/// mjdns::NDecSecond to 3. A file that does not open gives no message.
void WriteStaticClock(const gCPosC& gc);
