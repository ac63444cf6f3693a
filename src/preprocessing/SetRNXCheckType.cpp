#include "preprocessing/SetRNXCheckType.h"

#include "observations/CheckRNXEpochs.h"

void SetRNXCheckType(gCPosC& gpos)
{
    const bool first = gpos.ifC1 || gpos.ifP1;
    CheckType = 0;
    if (first && !gpos.ifP2) CheckType = 0;
    if (!first && gpos.ifP2) CheckType = 1;
    if (first && gpos.ifP2) CheckType = 2;
    if (gpos.ifPc3 || gpos.ifPp3) CheckType = 2;
    if (gpos.ifL3) CheckType = 3;
}
