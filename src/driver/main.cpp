// Entry point of Orvo: one context, the stages in their fixed order. The
// order is the only guard on the phases of the context: each stage relies on
// what the ones before it have filled in.
#include "driver/CheckArguments.h"
#include "driver/Console.h"
#include "driver/ParseArguments.h"
#include "driver/PrintArguments.h"
#include "driver/ProgramRun.h"
#include "driver/ReadFiles.h"
#include "driver/SetFiles.h"
#include "driver/gCPosC.h"
#include "estimation/ProcStatic.h"
#include "estimation/SetUnknowns.h"
#include "observations/CheckRNXEpochs.h"
#include "observations/ExcludeProblemSat.h"
#include "observations/RINEX.h"
#include "observations/RINEXData.h"
#include "observations/RINEXHeader.h"
#include "preprocessing/ApplyCorrections.h"
#include "preprocessing/GetReceiverProperties.h"
#include "preprocessing/L3Filter.h"
#include "preprocessing/MWAmbiguities.h"
#include "preprocessing/ProcClock.h"
#include "preprocessing/SetAmbiguities.h"
#include "preprocessing/SetLinearCombinations.h"
#include "preprocessing/SetRNXCheckType.h"
#include "preprocessing/SplitMidnightAmbs.h"
#include "reporting/PrintStatic.h"

#include <iostream>

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

        ProgramSubTitle("PREPROCESSING OF PHASE/CODE GNSS DATA:", 0);
        std::cout << "\n";

        ExcludeProblemSat(rnxh, rnxd, gpos.GetSatCRX(), gpos.GetIsSCRX(), gpos.GetVerbose());
        GetReceiverProperties(gpos);
        ApplyCorrections(gpos);
        SetLinearCombinations(gpos);
        SetRNXCheckType(gpos);
        CheckRNXEpochs(rnxh, rnxd, gpos.GetIsGPS(), gpos.GetIsGLN(), gpos.GetIsGAL(),
                       gpos.GetVerbose());
        ProcClock(gpos);
        SetAmbiguities(gpos);
        SplitMidnightAmbs(gpos);
        MWAmbiguities(gpos);
        L3Filter(gpos);

        SetUnknowns(gpos);

        ProgramSubTitle("FINAL PROCESSING OF PHASE/CODE GNSS DATA:", 0);
        std::cout << "\n";

        ProcStatic(gpos);

        ProgramSubTitle("PPP PROCESSING RESULTS:", 0);
        std::cout << "\n";

        PrintStatic(gpos);
    }

    EndProg(gpos.GetVerbose(), 1);
    return 0;
}
