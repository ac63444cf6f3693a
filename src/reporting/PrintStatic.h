#pragma once
// The static solution report: the final listing of the static adjustment
// and its result files.
#include "driver/gCPosC.h"

/// When ifEstSta: checks that the solution of gc can be reported (else the
/// framed error, before any file is opened), then prints on the output
/// stream the counters, reference standard deviations, ECEF and geodetic
/// coordinates with their precisions (the local ones from the cofactor
/// matrix rotated into north, east, up at RecPosFCG), inter-system biases,
/// code biases, troposphere nodes and gradients and L3 ambiguities, and
/// writes the code bias, troposphere, static plot and receiver clock files
/// that their flags ask for. Precisions are sqrt(Q * s0apost). The solution
/// is not changed. Sets mjdns::NDecSecond (1, 3 after a clock file) and
/// ymdhmsns::NDecSecond (0). Does nothing without ifEstSta.
void PrintStatic(gCPosC& gc);
