#pragma once
// Cutting ambiguity arcs at midnight: the precise clocks of two
// consecutive days do not join there, so one ambiguity cannot span both.
#include "driver/gCPosC.h"

/// Splits every arc whose first and last epoch lie on different MJDs at
/// the first epoch of its last day, when gc.ifL3 and gc.splitMidnightAmbs
/// are set and the file's first and last epochs lie on different MJDs; it
/// does nothing and prints nothing otherwise. The part before ends at the
/// last epoch of the arc's first day and keeps the arc's first record; the
/// part after starts at the block of the first epoch of the last day. A
/// part is kept when it spans at least MinObsAmb epochs (its column 3 is
/// that number of epochs); both keep xAmb (m) and AmbSat of the arc. A
/// part that is not kept takes its observations out of every arc, so
/// AmbiguityLookup finds none for them. Replaces nAmb, xAmb, AmbIndex and AmbSat,
/// and reports the table and the totals on the output stream. An arc table
/// that does not fit the store ends the run (status 1).
void SplitMidnightAmbs(gCPosC& gc);
