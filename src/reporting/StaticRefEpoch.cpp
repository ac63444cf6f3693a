#include "reporting/StaticRefEpoch.h"

#include "numerics/ProgramError.h"

mjd StaticRefEpoch(const RINEXData& rnxd)
{
    // Without epochs there is no span, and epoch(-1) would be read.
    if (rnxd.nepochall < 1 || rnxd.epoch.Length() < rnxd.nepochall)
        ProgramError("Orvo", "STATIC SOLUTION REPORT: NO OBSERVATION EPOCHS TO TAG THE SOLUTION!");
    mjd ref = rnxd.epoch(0);
    ref += (rnxd.epoch(rnxd.nepochall - 1) - rnxd.epoch(0)) / 2.0L;
    return ref;
}
