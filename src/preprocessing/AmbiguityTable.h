#pragma once
// The arc table of the context as every arc stage sees it: its check
// before a walk, and the columns its report rows start with.
#include <initializer_list>
#include <string>

#include "driver/gCPosC.h"

/// Ends the run (status 1, framed error naming `stage`) when the arc table
/// cannot be walked safely: nAmb negative or beyond the rows of xAmb,
/// AmbIndex (4 columns) or AmbSat, an arc whose first or last epoch lies
/// outside the store or whose first epoch comes after its last, or a first
/// record (column 1) outside 0 .. nsatall. Returns quietly otherwise.
void CheckArcTable(const gCPosC& gc, const std::string& stage);

/// Writes the leading columns of one arc row on the output stream: `id` in
/// 8 columns, three blanks, the system letter and the two-digit PRN (or
/// GLONASS slot) of `sat`, then the epoch indices `firstEpoch` and
/// `lastEpoch` in 18 columns each; no new line. The fill character is a
/// blank afterwards.
void PrintArcColumns(long id, short sat, long firstEpoch, long lastEpoch);

/// Writes the screening columns of one arc row on the output stream and
/// ends the line: `n` in 10 columns; `value` in 20 columns with 4 decimals;
/// each of `sd` in 10 columns with 4 decimals; `nOut` in 10 columns and
/// nOut/n in per cent in 8 columns with 1 decimal and "%". With n = 0 the
/// columns read "-.----", "-.----" for each sd, "--", "-.-" and "%". Without
/// `haveValue` the value reads "-.----"; without `haveSd`, or with fewer
/// than two observations (no scatter), each sd does.
void PrintArcStats(long n, long nOut, bool haveValue, long double value, bool haveSd,
                   std::initializer_list<long double> sd);

/// Writes " (", nOut/n in per cent with 2 decimals and " %)" on the output
/// stream; " (-.-- %)" when n is not above 0.
void PrintPercent(long nOut, long n);

/// Writes sqrt(svv/dof/varianceFactor)·100, the precision (cm) of one
/// observation, with 2 decimals and " cm" on the output stream. Without
/// redundancy (dof not above 0) or with a factor not above 0 the precision
/// is undetermined and reads "-.-- cm".
void PrintPrecision_cm(long double svv, long dof, long double varianceFactor);
