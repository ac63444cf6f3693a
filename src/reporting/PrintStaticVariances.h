#pragma once
// Reference standard deviations of the static adjustment.
#include "driver/gCPosC.h"

/// Prints on the output stream the a-priori reference standard deviation
/// sig0 and the a-posteriori ones (overall and of each observation type in
/// use), in millimetres as 15.1, then the global test s0apost / sig0^2 (15.2)
/// and its root (10.2), and an empty line. A negative type variance prints
/// as NaN: a sign of a failed adjustment that must show.
void PrintStaticVariances(const gCPosC& gc);
