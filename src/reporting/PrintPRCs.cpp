#include "reporting/PrintPRCs.h"

#include <cmath>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <string>

#include "numerics/ProgramError.h"

void PrintPRCs(gCPosC& gc)
{
    if (!gc.isPRCorr) return;
    if (gc.verbose) std::cerr << "Orvo::PrintPRCs(): PRINTING PSEUDO-RANGE CORRECTION VALUES TO FILE!\n";
    std::ofstream out(gc.prcorrfile);
    if (!out) {
        ProgramWarning("Orvo", "PSEUDO-RANGE CORRECTION FILE CAN NOT BE OPENED - NO CORRECTIONS WRITTEN!");
        return;
    }
    out << "#MJD[DAY, SEC]   PRN       GEOM_DIST          DT_SAT          DT_REL          DT_REC            TROP"
           "            IONO             ATX           TIDES\n"
        << std::string(148, '-') << "\n"
        << std::fixed << std::setprecision(4);
    const RINEXData& d = gc.rnxd;
    const long n = d.GetNObs();
    const matrix<long double>* cols[] = {&gc.prcdDst, &gc.prcdTs, &gc.prcdRel, &gc.prcdTr,
                                         &gc.prcTrop, &gc.prcIon, &gc.prcAtx, &gc.prcTid};
    for (const matrix<long double>* c : cols)
        if (c->NRow() < n) return;  // the arrays exist only when the corrections were asked for
    for (long i = 0, k = 0; i < d.GetNEpoch(); ++i) {
        const mjd eph = d.GetMJD(i);
        for (long j = 0; j < d.nsat(i) && k < n; ++j, ++k) {
            if (!(std::fabs(gc.prcdDst(k)) > 1.0L) || !gc.UsesSystem(d.sat(k))) continue;
            out << std::setw(5) << eph.GetMJDay() << std::setprecision(1) << std::setw(9) << eph.GetSecond()
                << std::setw(6) << d.sat(k) << std::setprecision(4);
            for (const matrix<long double>* c : cols) out << std::setw(16) << (*c)(k);
            out << "\n";
        }
    }
}
