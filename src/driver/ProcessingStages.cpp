#include "driver/ProcessingStages.h"

#include <initializer_list>
#include <iostream>

#include "driver/Console.h"
#include "estimation/ProcKinematic.h"
#include "estimation/ProcStatic.h"
#include "estimation/ResCheck.h"
#include "estimation/SetUnknowns.h"
#include "observations/CheckRNXEpochs.h"
#include "observations/ExcludeProblemSat.h"
#include "preprocessing/ApplyATXVal.h"
#include "preprocessing/ApplyCorrections.h"
#include "preprocessing/C1P2Filter.h"
#include "preprocessing/CodeBiasFilter.h"
#include "preprocessing/CodeCopy.h"
#include "preprocessing/ConAmbiguities.h"
#include "preprocessing/GetEclipsing.h"
#include "preprocessing/GetReceiverProperties.h"
#include "preprocessing/L3Filter.h"
#include "preprocessing/MWAmbiguities.h"
#include "preprocessing/PhaseWindUp.h"
#include "preprocessing/ProcClock.h"
#include "preprocessing/SetAmbiguities.h"
#include "preprocessing/SetLinearCombinations.h"
#include "preprocessing/SetRNXCheckType.h"
#include "preprocessing/SplitMidnightAmbs.h"
#include "reporting/PrintPRCs.h"
#include "reporting/PrintResStatic.h"
#include "reporting/PrintStatic.h"

namespace {

// Gives the storage of each array back: a stage that no longer reads it.
template <class T>
void Release(std::initializer_list<matrix<T>*> arrays)
{
    for (matrix<T>* m : arrays) m->Resize(0, 0);
}

}  // namespace

void RunPreprocessing(gCPosC& gpos)
{
    // Sizes that the options multiply fail here, before any stage works or
    // writes; the ambiguities are counted again when they are known.
    CheckUnknownSizes(gpos, 0);
    PrepareObservations(gpos);
    PhaseWindUp(gpos);
    GetEclipsing(gpos);

    ReleasePreprocessingStore(gpos);
    SetUnknowns(gpos);
}

void ReleasePreprocessingStore(gCPosC& gpos)
{
    // Arc screening, ambiguity setting and the antenna and eclipse stages
    // are done with these; the adjustment and the reports read none of them,
    // and a day of them is some 60 MB that the adjustment's peak need not
    // carry. Of the raw types, which went into the combinations, the
    // adjustment reads the codes C1, P1 and P2 alone.
    RINEXData& d = gpos.rnxd;
    Release({&d.PC1, &d.L4, &d.MW, &d.PC4, &d.PP4, &d.CL1, &d.CLI, &d.C2, &d.C3R, &d.C5, &d.C6, &d.C7, &d.C8, &d.L1,
             &d.L2, &d.L3R, &d.L5, &d.L6, &d.L7, &d.L8});
    Release({&gpos.SAT_POS});
}

void PrepareObservations(gCPosC& gpos)
{
    ProgramSubTitle("PREPROCESSING OF PHASE/CODE GNSS DATA:", 0);
    std::cout << "\n";

    ExcludeProblemSat(gpos.rnxh, gpos.rnxd, gpos.GetSatCRX(), gpos.GetIsSCRX(), gpos.GetVerbose());
    GetReceiverProperties(gpos);
    ApplyCorrections(gpos);
    ApplyATXVal(gpos);
    C1P1Copy(gpos);
    C2P2Copy(gpos);
    C1P1Filter(gpos);
    C2P2Filter(gpos);
    C1P2Filter(gpos);
    SetLinearCombinations(gpos);
    SetRNXCheckType(gpos);
    CheckRNXEpochs(gpos.rnxh, gpos.rnxd, gpos.GetIsGPS(), gpos.GetIsGLN(), gpos.GetIsGAL(),
                   gpos.GetVerbose());
    ProcClock(gpos);
    SetAmbiguities(gpos);
    ConAmbiguities(gpos);
    SplitMidnightAmbs(gpos);
    MWAmbiguities(gpos);
    L3Filter(gpos);
}

void RunEstimation(gCPosC& gpos)
{
    ProgramSubTitle("FINAL PROCESSING OF PHASE/CODE GNSS DATA:", 0);
    std::cout << "\n";

    ProcStatic(gpos);
    ResCheck(gpos);
    // One more pass without the rejected observations; the outlier counters
    // keep describing the first.
    if (gpos.GetNOutl()) ProcStatic(gpos);
}

void RunResults(gCPosC& gpos)
{
    ProgramSubTitle("PPP PROCESSING RESULTS:", 0);
    std::cout << "\n";

    PrintStatic(gpos);
    PrintResStatic(gpos);
    ProcKinematic(gpos);
    PrintPRCs(gpos);
}
