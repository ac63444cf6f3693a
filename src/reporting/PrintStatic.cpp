#include "reporting/PrintStatic.h"

#include <iostream>

#include "driver/Console.h"
#include "geodesy/CoordinateTransforms.h"
#include "geodesy/mjd.h"
#include "geodesy/ymdhms.h"
#include "numerics/matrix.h"
#include "reporting/CheckStaticSolution.h"
#include "reporting/PrintStaticAmbiguities.h"
#include "reporting/PrintStaticCoordinates.h"
#include "reporting/PrintStaticCounters.h"
#include "reporting/PrintStaticDCB.h"
#include "reporting/PrintStaticSysBiases.h"
#include "reporting/PrintStaticTropo.h"
#include "reporting/PrintStaticVariances.h"
#include "reporting/StaticRefEpoch.h"
#include "reporting/WriteStaticClock.h"
#include "reporting/WriteSinex.h"
#include "reporting/WriteStaticPlot.h"

void PrintStatic(gCPosC& gc)
{
    if (!gc.ifEstSta) return;
    // Every check that can end the run comes before the first line and file.
    CheckStaticSolution(gc);

    mjdns::NDecSecond = 1;
    ymdhmsns::NDecSecond = 0;
    const short mjdFormat = mjdns::PrintFormat;
    mjdns::PrintFormat = 0;

    const mjd RefEpoch = StaticRefEpoch(gc.rnxd);
    matrix<long double> Qddg;
    g2lg(gc.QxxAll, gc.RecPosFCG, Qddg);

    if (gc.verbose) std::cerr << "Orvo::PrintStatic(): PRINTING STATIC SOLUTION!\n";
    std::cout << std::fixed;
    ProgramSubSubTitle("STATIC SOLUTION:", 0);
    PrintStaticCounters(gc);
    PrintStaticVariances(gc);
    PrintStaticCoordinates(gc, Qddg);
    PrintStaticSysBiases(gc);
    PrintStaticDCB(gc, RefEpoch);
    PrintStaticTropo(gc);
    PrintStaticAmbiguities(gc);
    WriteStaticPlot(gc, RefEpoch);
    WriteStaticClock(gc);
    WriteSinex(gc, RefEpoch);

    mjdns::PrintFormat = mjdFormat;
}
