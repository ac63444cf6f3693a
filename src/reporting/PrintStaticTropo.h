#pragma once
// Estimated troposphere of the static solution: zenith delays and gradients.
#include "driver/gCPosC.h"

/// When ifEstTropo: prints each zenith delay node with its epoch, the
/// modelled dry delay of the last model evaluation, the estimated wet delay,
/// their sum and the precision sqrt(Q * s0apost), all in metres; an
/// undetermined node is marked. With isOutTropFile the determined nodes go
/// also to esttropfile under the marker name. With ifEstTropoGrad as well,
/// the east and north gradient nodes follow in the same way (report only).
void PrintStaticTropo(const gCPosC& gc);
