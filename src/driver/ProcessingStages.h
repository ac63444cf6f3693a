#pragma once
// The three blocks of stages that follow the reading of the input files, in
// their fixed order; main runs them one after the other. Split so that a
// caller can look at or change the context between the blocks.
#include "driver/gCPosC.h"

/// Preprocessing: PrepareObservations, then phase wind-up, eclipsing and
/// the unknowns. Needs ReadFiles done.
void RunPreprocessing(gCPosC& gpos);

/// The first part of RunPreprocessing: problem satellites, receiver
/// properties, corrections, antenna calibrations, code copies and code
/// filters, combinations, epoch
/// checks, clock pre-solution, ambiguity arcs and their clean-up, up to the
/// final a-priori ambiguities.
void PrepareObservations(gCPosC& gpos);

/// Frees what only the preprocessing reads, so that the adjustment's peak of
/// memory does not carry it: the raw observation types but the codes C1,
/// P1 and P2 (Doppler and signal strength go before the preprocessing), the
/// screening combinations PC1, L4, MW, PC4, PP4, CL1, CLI, and the satellite
/// positions and distances at emission.
void ReleasePreprocessingStore(gCPosC& gpos);

/// Final processing: the static adjustment, the outlier check and, when it
/// rejected anything, one more adjustment without the rejected observations.
void RunEstimation(gCPosC& gpos);

/// Results: the static report and files, the residual file, then the
/// kinematic solution, which overwrites the cofactors and variances the
/// static report reads, and the pseudo-range correction file.
void RunResults(gCPosC& gpos);
