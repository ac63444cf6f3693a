#pragma once
// Estimated satellite differential code biases: report table and file.
#include "driver/gCPosC.h"
#include "geodesy/mjd.h"

/// When code biases are estimated for any system: prints the counts per
/// active kind (C1, P1, P2, P3 from C1, P3 from P1), one line per satellite
/// of rnxd.satList that has a bias column, with each determined bias (m)
/// and its precision sqrt(Q * s0apost) (m), and the mean precision of each
/// kind (NaN when no bias of the kind is determined). With isOutDCBFile the
/// same values go to estdcbfile, tagged with the marker name and the day of
/// RefEpoch. A file that does not open swallows its lines without message.
void PrintStaticDCB(const gCPosC& gc, const mjd& RefEpoch);
