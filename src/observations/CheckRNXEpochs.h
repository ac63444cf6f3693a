#pragma once
// Marks every epoch of the observation file as usable or not, by the number
// of satellites and of observations of the kind the run uses.
#include "observations/RINEXData.h"
#include "observations/RINEXHeader.h"

/// What an observation must hold to count in CheckRNXEpochs: 0 a
/// first-frequency code (C1 or P1), 1 a second-frequency code (C2 or P2),
/// 2 both, 3 an ionosphere-free combination (PC3, PP3 or L3). Set by
/// SetRNXCheckType from the observation types of the run.
inline short CheckType = 0;

/// Stops the run with "RINEX FILE HAS EPOCHS THAT ARE NOT CONSECUTIVE!" when
/// an epoch is not later than the one before; otherwise sizes IsEpochOKG and
/// IsEpochOKR and marks each epoch 0 (usable), 1 (fewer satellites than 3
/// plus the number of systems in use: three coordinates and one clock per
/// system) or 2 (fewer records passing the CheckType test than that), sets
/// NBadEphSat, NBadEphObs, NOKEph and reports on the output stream (the
/// counts also on the error stream when verbose). iG, iR, iE: GPS, GLONASS,
/// Galileo in use.
void CheckRNXEpochs(RINEXHeader& rnxh, RINEXData& rnxd, bool iG, bool iR, bool iE, bool verbose);
