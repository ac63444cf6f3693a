#pragma once
// Real-valued L3 ambiguities of the static solution.
#include "driver/gCPosC.h"

/// When nAmb > 0: prints every ambiguity arc in list order (satellite,
/// first and last epoch, value in metres with its precision
/// sqrt(Q * s0apost), observations of the arc), an empty line between
/// satellites, undetermined arcs marked with 0 observations, and the mean
/// precision of the determined arcs (NaN when there is none).
void PrintStaticAmbiguities(const gCPosC& gc);
