#include "reporting/WriteStaticPlot.h"

#include <cmath>
#include <fstream>
#include <iomanip>
#include <iostream>

#include "geodesy/xyz.h"
#include "reporting/FixedColumn.h"

namespace {

// Below this a-posteriori variance (m^2) the adjustment had no redundancy
// worth the name: the line is kept, but as a comment.
constexpr long double NoSolutionVariance = 1e-10L;

}  // namespace

void WriteStaticPlot(gCPosC& gc, const mjd& RefEpoch)
{
    if (!gc.isGNUPlotStat) return;
    if (gc.verbose) std::cerr << "Orvo::PrintStatic():         Printing STATIC COORDINATES!\n";

    std::fstream& f = gc.gplotStat;
    if (f.is_open()) f.close();
    f.open(gc.gnuplotStat, std::ios::out | std::ios::trunc);
    f << std::fixed;
    f << "#   EPOCH[MJD]      NEPH      NOBS    #GPS    #GLN    #GAL NOUTLIERS   #OGPS   #OGLN   "
         "#OGAL        S0     GTEST               X               Y               Z";
    for (const char* q : {"Q11", "Q22", "Q33", "Q12", "Q13", "Q23"}) f << std::setw(22) << q;
    f << "   MARKER NAME\n";

    // An undefined variance (NaN, no redundancy) is no solution either.
    if (!(gc.s0apost >= NoSolutionVariance)) f << "#";
    f << RefEpoch << std::setw(10) << gc.rnxd.nepochall << std::setw(10) << gc.NObs
      << std::setw(8) << gc.NObsG << std::setw(8) << gc.NObsR << std::setw(8) << gc.NObsE
      << std::setw(10) << gc.NObsOutl << std::setw(8) << gc.NObsOutlG << std::setw(8)
      << gc.NObsOutlR << std::setw(8) << gc.NObsOutlE;
    FixedColumn(f, std::sqrt(gc.s0apost), 10, 6);
    FixedColumn(f, gc.s0apost / gc.sig0 / gc.sig0, 10, 4);
    const int width = xyzns::Width, ndec = xyzns::NDec;
    xyzns::Width = 16;
    xyzns::NDec = 4;
    f << gc.RecPosEst;
    xyzns::Width = width;
    xyzns::NDec = ndec;
    const matrix<long double>& Q = gc.QxxAll;
    for (const long double q : {Q(0, 0), Q(1, 1), Q(2, 2), Q(0, 1), Q(0, 2), Q(1, 2)})
        FixedColumn(f, q, 22, 15);
    f << "   " << gc.rnxh.mname << "\n";
    f.close();
}
