#include "estimation/ResCheck.h"

#include <array>
#include <cmath>
#include <iomanip>
#include <iostream>

#include "driver/Console.h"
#include "estimation/EpochProgress.h"
#include "estimation/NormalSystem.h"
#include "estimation/ProcStatic.h"
#include "estimation/StoredTypes.h"
#include "numerics/ProgramError.h"
#include "observations/SatelliteSystem.h"
#include "preprocessing/SetAmbiguities.h"

long double GetQVV(const long double (&b)[ProcStaticns::NSlots], const long (&col)[ProcStaticns::NSlots],
                   const matrix<long double>& Qxx, long double p)
{
    using ProcStaticns::NSlots;
    // The row's columns and entries first, each column tried once on Qxx
    // (one outside stops the run there); the products then read Qxx
    // directly, in the order of the slots.
    long c[NSlots];
    long double v[NSlots];
    int n = 0;
    for (int i = 0; i < NSlots; ++i) {
        if (col[i] == -1) continue;
        static_cast<void>(Qxx(col[i], col[i]));
        c[n] = col[i];
        v[n++] = b[i];
    }
    long double qv = 1.0L / p;
    for (int i = 0; i < n; ++i) {
        const long double bi = v[i];
        // Doubling is exact: q·v·2·b and q·v·(2b) round alike.
        const long double twice = 2.0L * bi;
        const long double* const row = Qxx.v + Qxx.c * c[i];
        qv -= row[c[i]] * bi * bi;
        for (int j = i + 1; j < n; ++j) qv -= row[c[j]] * v[j] * twice;
    }
    return qv;
}

void ResCheck(gCPosC& gc)
{
    if (!gc.isThresBlunder) return;
    RINEXData& d = gc.rnxd;
    const long nEp = d.nepochall, nRec = d.nsatall;
    // The rows are stored by the adjustment for this check; without them
    // there is nothing to test, and reading on would leave the array.
    if (gc.mB.NRow() < nRec || gc.mB.NCol() < 3 || d.nsat.NRow() < nEp || d.sat.NRow() < nRec
        || gc.WGHT.NRow() < nRec || gc.ELV.NRow() < nRec || gc.MFTROP.NRow() < nRec
        || (gc.ifEstTropoGrad && (gc.MFGRAD.NRow() < nRec || gc.MFGRAD.NCol() < 2)))
        ProgramError("Orvo", "OUTLIER CHECK: THE STATIC SOLUTION HAS NOT STORED ITS OBSERVATIONS!");

    ProgramSubSubTitle("OUTLIER DETECTION AND ELIMINATION - OBSERVATION CORRECTIONS CHECK:", 0);
    if (gc.verbose) std::cerr << "Orvo::ResCheck(): OUTLIER DETECTION AND ELIMINATION!\n";
    std::cout << std::fixed << "  Outlier detection parameters        :\n"
              << "   Phase/code residual threshold      : " << std::setw(6) << std::setprecision(3)
              << gc.ThresBlunder << " * STD_V\n\n";

    long* const cdCount[3] = {&gc.NObsOutlGCd, &gc.NObsOutlRCd, &gc.NObsOutlECd};
    long* const phCount[3] = {&gc.NObsOutlGPh, &gc.NObsOutlRPh, &gc.NObsOutlEPh};
    gc.NObsOutl = gc.NObsOutlPh = gc.NObsOutlCd = 0;
    gc.NObsOutlG = gc.NObsOutlR = gc.NObsOutlE = 0;
    for (int s = 0; s < 3; ++s) *cdCount[s] = *phCount[s] = 0;

    std::array<StoredType, 6> types = StoredTypes(gc);
    const AmbiguityLookup arcs(gc.AmbIndex, gc.AmbSat, gc.nAmb);
    StoredType& l3 = types[5];

    matrix<short> SatList = d.satList;
    long nSatList = SatList.NRow();
    const long double s0 = gc.s0apost;

    if (gc.verbose) std::cerr << "Orvo::ResCheck():         Process:       ";
    EpochProgress progress(gc.verbose);
    long k = 0;
    for (long i = 0; i < nEp; ++i) {
        progress.Step(i, nEp);
        const long i2 = k + d.nsat(i);
        if (d.nsat(i) < 0 || i2 > nRec)
            ProgramError("Orvo", "OUTLIER CHECK: RECORD COUNT OF EPOCH " + std::to_string(i + 1)
                                     + " EXCEEDS THE RECORD STORE!");
        const TropoSlots tropo = EpochTropoSlots(gc, d.epoch(i));
        for (; k < i2; ++k) {
            short prn = d.sat(k);
            const SatSystem sys = SystemOf(prn);
            if (sys == SysNone) continue;
            long double row[ProcStaticns::NSlots];
            long col[ProcStaticns::NSlots];
            bool formed = false;

            for (int t = 0; t < 5; ++t) {
                StoredType& ct = types[t];
                if (!ct.on || !ct.used(k)) continue;
                if (!formed) {
                    StoredDesignRow(gc, k, sys, tropo, row, col);
                    formed = true;
                }
                col[4] = col[5] = -1;
                if (ct.dcb) {
                    long ixdcb = -1, ixsat = -1;
                    GetIndexSatDCB(prn, SatList, ct.ixdcb, nSatList, ixdcb, ixsat);
                    col[4] = ixdcb;
                }
                const long double p = gc.WGHT(k) * ct.p0[sys];
                const long double qv = GetQVV(row, col, gc.QxxAll, p);
                // A negative cofactor gives a bound that is not a number:
                // the comparison fails and the observation stays.
                if (std::fabs(ct.f(k)) > std::sqrt(s0 * qv) * gc.ThresBlunder) {
                    ++*cdCount[sys];
                    ct.rejected(k) = true;
                }
            }

            if (!l3.on || !l3.used(k)) continue;
            const long ixamb = arcs.Find(prn, i);
            if (ixamb < 0 || ixamb >= gc.ixAmb.NRow()) {
                l3.rejected(k) = true;
                continue;
            }
            if (!formed) StoredDesignRow(gc, k, sys, tropo, row, col);
            col[4] = -1;
            col[5] = gc.ixAmb(ixamb);
            const long double p = gc.WGHT(k) * l3.p0[sys];
            const long double qv = GetQVV(row, col, gc.QxxAll, p);
            long double rThres = std::sqrt(s0 * qv) * gc.ThresBlunder;
            // A phase is never judged against less than the a-priori noise of
            // a GPS L3; the fall-back widens towards the horizon.
            if (qv < 0.0L || std::sqrt(s0 * qv) < gc.sigL3G)
                rThres = std::sqrt(gc.s0apost_L3) * gc.ThresBlunder / gc.SinElevation(k);
            if (std::fabs(l3.f(k)) > rThres) {
                ++*phCount[sys];
                l3.rejected(k) = true;
            }
        }
    }
    progress.Close();
    if (gc.verbose) std::cerr << "\n";

    gc.NObsOutlPh = gc.NObsOutlGPh + gc.NObsOutlRPh + gc.NObsOutlEPh;
    gc.NObsOutlCd = gc.NObsOutlGCd + gc.NObsOutlRCd + gc.NObsOutlECd;
    gc.NObsOutl = gc.NObsOutlPh + gc.NObsOutlCd;
    gc.NObsOutlG = gc.NObsOutlGPh + gc.NObsOutlGCd;
    gc.NObsOutlR = gc.NObsOutlRPh + gc.NObsOutlRCd;
    gc.NObsOutlE = gc.NObsOutlEPh + gc.NObsOutlECd;
    const long double nOutP =
        100.0L * static_cast<long double>(gc.NObsOutl) / static_cast<long double>(gc.NObs);

    std::cout << "  Outlier detection results           :\n";
    auto line = [](const char* text, long all, long g, long r, long e) {
        std::cout << text << std::setw(10) << all << "     G: " << std::setw(6) << g << "     R: "
                  << std::setw(6) << r << "     E: " << std::setw(6) << e << "\n";
    };
    line("   # of Code residual outliers        : ", gc.NObsOutlCd, gc.NObsOutlGCd, gc.NObsOutlRCd,
         gc.NObsOutlECd);
    line("   # of Phase residual outliers       : ", gc.NObsOutlPh, gc.NObsOutlGPh, gc.NObsOutlRPh,
         gc.NObsOutlEPh);
    line("   # of All residual outliers         : ", gc.NObsOutl, gc.NObsOutlG, gc.NObsOutlR,
         gc.NObsOutlE);
    std::cout << "  Percentage of detected outliers     : " << std::setw(10) << std::setprecision(2)
              << nOutP << " %\n\n\n";
    if (gc.verbose)
        std::cerr << "Orvo::ResCheck():         Outliers: code: " << gc.NObsOutlCd
                  << "  /  phase: " << gc.NObsOutlPh << "  /  %: " << std::fixed
                  << std::setprecision(1) << nOutP << "\n";
}
