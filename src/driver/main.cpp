// Entry point of Orvo: one context, the stages in their fixed order. The
// order is the only guard on the phases of the context: each stage relies on
// what the ones before it have filled in.
#include "driver/CheckArguments.h"
#include "driver/ParseArguments.h"
#include "driver/PrintArguments.h"
#include "driver/ProcessingStages.h"
#include "driver/ProgramRun.h"
#include "driver/ReadFiles.h"
#include "driver/SetFiles.h"
#include "driver/gCPosC.h"
#include "observations/RINEX.h"
#include "observations/RINEXData.h"
#include "observations/RINEXHeader.h"

int main(int argc, char** argv)
{
    RINEXHeader rnxh;
    RINEXData rnxd(rnxh);
    RINEX rnx(rnxh, rnxd);
    gCPosC gpos(rnxh, rnxd, rnx);

    ParseArguments(gpos, argc, const_cast<const char**>(argv));

    // A help run reads no file and goes straight to the closing title.
    if (gpos.GetRunProg()) {
        CheckArguments(gpos);
        PrintArguments(gpos);
        SetFiles(gpos);
        ReadFiles(gpos);

        RunPreprocessing(gpos);
        RunEstimation(gpos);
        RunResults(gpos);
    }

    EndProg(gpos.GetVerbose(), 1);
    return 0;
}
