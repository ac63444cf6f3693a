#pragma once
// The arc table's a-priori L3 ambiguities and its listing: one computation
// and one layout for the stage that cuts the arcs and those that join them.
#include "driver/gCPosC.h"

/// Number of observations `count` and mean `mean_m` (m) of L3 minus the
/// solution's code (PC3 with ifPc3, else PP3 with ifPp3, else C1) of
/// satellite `sat` over epochs iStart .. iEnd, the records of epoch iStart
/// beginning at flat index ioStart. A record counts when its OKSAT is set
/// and both values are present. Epochs and records beyond the store, and
/// arrays that do not cover a record, count nothing; with no record
/// counted, `mean_m` is 0.
void ArcL3MinusCode(const gCPosC& gc, short sat, long iStart, long ioStart, long iEnd,
                    long& count, long double& mean_m);

/// Sets column 3 of AmbIndex and xAmb (m) of each of the nAmb arcs of gc
/// anew by ArcL3MinusCode over the arc's span. An arc left with no usable
/// observation gets count 0 and keeps its xAmb. A table shorter than nAmb
/// (rows of AmbIndex, AmbSat or xAmb, or fewer than 4 columns) ends the run
/// (status 1).
void RecomputeArcMeans(gCPosC& gc);

/// Prints the arc table of gc on the output stream under the column head
/// ID, PRN, START EPOCH, END EPOCH, L3 AMB [m] (4 decimals), an empty line
/// between satellites and one after the table; the stream's format is left
/// as it was. Rows beyond those the arrays hold are not printed.
void PrintAmbiguityTable(const gCPosC& gc);
