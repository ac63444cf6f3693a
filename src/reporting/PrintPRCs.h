#pragma once
// The pseudo-range corrections of every record the adjustment processed,
// as a text table: the terms that make up the modelled range.
#include "driver/gCPosC.h"

/// With isPRCorr writes prcorrfile: two head lines, then one row per record
/// that the adjustment processed (|prcdDst| above 1 m) of a system in use:
/// the epoch (day and second of day), the satellite number, and in metres
/// the geometric distance, satellite clock, relativity, receiver clock,
/// troposphere, ionosphere, receiver antenna and tide terms, 16 columns
/// each with 4 decimals. A file that does not open is warned of.
void PrintPRCs(gCPosC& gc);
