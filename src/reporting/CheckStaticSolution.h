#pragma once
// The guard of the static report: every array it reads must match the
// unknown layout, so that a failure ends the run before any result file is
// opened and not half-way through one.
#include "driver/gCPosC.h"

/// Ends the run with the framed error (naming the array) unless the static
/// solution of gc can be reported: at least one epoch, a positive a-priori
/// sig0, NUnk >= 3 with QxxAll, xAll and IsUnkOK covering every unknown,
/// every index of the inter-system biases, code biases, troposphere nodes,
/// gradients and ambiguities inside 0 .. NUnk-1 (or -1 where allowed) with
/// its value array long enough, ambiguity epochs inside the file, and, when
/// the receiver clock file is asked for, one clock per epoch. Returns
/// otherwise and changes nothing.
void CheckStaticSolution(const gCPosC& gc);
