#pragma once
// Inter-system clock biases of the static solution.
#include "driver/gCPosC.h"

/// Prints, when nDTsys is not 0, each estimated inter-system clock bias
/// dtGNSS in metres and in microseconds (metres / c * 1e6) with its
/// precision sqrt(Q * s0apost), then an empty line. The label names the
/// reference system first: GPS whenever GPS takes part, else GLONASS.
void PrintStaticSysBiases(const gCPosC& gc);
