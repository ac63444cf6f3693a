#pragma once
// The static plot file: one head line and one data line per run.
#include "driver/gCPosC.h"
#include "geodesy/mjd.h"

/// With isGNUPlotStat writes gnuplotStat (through the member gplotStat):
/// the head line and one data line with RefEpoch, the epoch, observation
/// and outlier counts, the a-posteriori reference standard deviation, the
/// global test, the estimated position (m) and the six distinct elements of
/// the position cofactor matrix (m^2 per unit weight), and the marker name.
/// The data line starts with "#" when s0apost is below 1e-10 or undefined
/// (NaN), so that a run without a solution reads as a comment. A file that
/// does not open gives no message.
void WriteStaticPlot(gCPosC& gc, const mjd& RefEpoch);
