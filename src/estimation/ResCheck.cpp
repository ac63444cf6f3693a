#include "estimation/ResCheck.h"

#include <cmath>
#include <iomanip>
#include <iostream>

#include "driver/Console.h"
#include "estimation/EpochProgress.h"
#include "estimation/NormalSystem.h"
#include "numerics/ProgramError.h"
#include "observations/SatelliteSystem.h"
#include "preprocessing/SetAmbiguities.h"

namespace {

// One code type as the check sees it: what the adjustment stored for it.
struct CheckedCode {
    bool on;
    matrix<long double>& f;
    matrix<bool>& used;
    matrix<bool>& rejected;
    bool dcb;
    matrix<long int>& ixdcb;
    const long double* p0;  // base weight per system
};

bool Covers(long rows, long n) { return rows >= n; }

}  // namespace

long double GetQVV(matrix<long double>& B, matrix<long int>& iB, matrix<long double>& Qxx,
                   long int k, long double p)
{
    using ProcStaticns::NSlots;
    long double qv = 1.0L / p;
    for (int i = 0; i < NSlots; ++i) {
        const long int ci = iB(k, i);
        if (ci == -1) continue;
        const long double bi = B(k, i);
        qv -= Qxx(ci, ci) * bi * bi;
        for (int j = i + 1; j < NSlots; ++j) {
            const long int cj = iB(k, j);
            if (cj == -1) continue;
            qv -= Qxx(ci, cj) * B(k, j) * 2.0L * bi;
        }
    }
    return qv;
}

void ResCheck(gCPosC& gc)
{
    if (!gc.isThresBlunder) return;
    RINEXHeader& h = gc.rnxh;
    RINEXData& d = gc.rnxd;
    const long nEp = d.nepochall, nRec = d.nsatall;
    // The rows are stored by the adjustment for this check; without them
    // there is nothing to test, and reading on would leave the array.
    if (gc.mB.NRow() < nRec || gc.mIB.NRow() < nRec || gc.mB.NCol() < ProcStaticns::NSlots
        || gc.mIB.NCol() < ProcStaticns::NSlots || d.nsat.NRow() < nEp || d.sat.NRow() < nRec
        || gc.WGHT.NRow() < nRec || gc.ELV.NRow() < nRec)
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

    const long double p0C[3] = {gc.p0C, gc.p0C, gc.p0C};
    const long double p0P[3] = {gc.p0P, gc.p0P, gc.p0P};
    const long double p0Pc3[3] = {gc.p0Pc3G, gc.p0Pc3R, gc.p0Pc3E};
    const long double p0Pp3[3] = {gc.p0Pp3G, gc.p0Pp3R, gc.p0Pp3E};
    const long double p0L3[3] = {gc.p0L3G, gc.p0L3R, gc.p0L3E};
    auto sized = [&](const matrix<long double>& f, const matrix<bool>& o, const matrix<bool>& x) {
        return Covers(f.NRow(), nRec) && Covers(o.NRow(), nRec) && Covers(x.NRow(), nRec);
    };
    CheckedCode codes[] = {
        {gc.ifC1 && h.iC1 && sized(gc.fc1, gc.ifOc1, gc.ifXc1), gc.fc1, gc.ifOc1, gc.ifXc1,
         gc.isdcbC1, gc.ixdcbC1, p0C},
        {gc.ifP1 && h.iP1 && sized(gc.fp1, gc.ifOp1, gc.ifXp1), gc.fp1, gc.ifOp1, gc.ifXp1,
         gc.isdcbP1, gc.ixdcbP1, p0P},
        {gc.ifP2 && h.iP2 && sized(gc.fp2, gc.ifOp2, gc.ifXp2), gc.fp2, gc.ifOp2, gc.ifXp2,
         gc.isdcbP2, gc.ixdcbP2, p0P},
        {gc.ifPc3 && h.iPC3 && sized(gc.fc3, gc.ifOc3, gc.ifXc3), gc.fc3, gc.ifOc3, gc.ifXc3,
         gc.isdcbPc3, gc.ixdcbPc3, p0Pc3},
        {gc.ifPp3 && h.iPP3 && sized(gc.fp3, gc.ifOp3, gc.ifXp3), gc.fp3, gc.ifOp3, gc.ifXp3,
         gc.isdcbPp3, gc.ixdcbPp3, p0Pp3},
    };
    const bool checkL3 = gc.ifL3 && h.iL3 && sized(gc.fl3, gc.ifOl3, gc.ifXl3);

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
        for (; k < i2; ++k) {
            short prn = d.sat(k);
            const SatSystem sys = SystemOf(prn);
            if (sys == SysNone) continue;

            for (CheckedCode& ct : codes) {
                if (!ct.on || !ct.used(k)) continue;
                gc.mIB(k, 4) = gc.mIB(k, 5) = -1;
                if (ct.dcb) {
                    long ixdcb = -1, ixsat = -1;
                    GetIndexSatDCB(prn, SatList, ct.ixdcb, nSatList, ixdcb, ixsat);
                    gc.mIB(k, 4) = ixdcb;
                }
                const long double p = gc.WGHT(k) * ct.p0[sys];
                const long double qv = GetQVV(gc.mB, gc.mIB, gc.QxxAll, k, p);
                // A negative cofactor gives a bound that is not a number:
                // the comparison fails and the observation stays.
                if (std::fabs(ct.f(k)) > std::sqrt(s0 * qv) * gc.ThresBlunder) {
                    ++*cdCount[sys];
                    ct.rejected(k) = true;
                }
            }

            if (!checkL3 || !gc.ifOl3(k)) continue;
            long ixamb = -1;
            GetAmbIndex(prn, i, gc.AmbIndex, gc.AmbSat, gc.nAmb, ixamb);
            if (ixamb < 0 || ixamb >= gc.ixAmb.NRow()) {
                gc.ifXl3(k) = true;
                continue;
            }
            gc.mIB(k, 4) = -1;
            gc.mIB(k, 5) = gc.ixAmb(ixamb);
            const long double p = gc.WGHT(k) * p0L3[sys];
            const long double qv = GetQVV(gc.mB, gc.mIB, gc.QxxAll, k, p);
            long double rThres = std::sqrt(s0 * qv) * gc.ThresBlunder;
            // A phase is never judged against less than the a-priori noise of
            // a GPS L3; the fall-back widens towards the horizon.
            if (qv < 0.0L || std::sqrt(s0 * qv) < gc.sigL3G)
                rThres = std::sqrt(gc.s0apost_L3) * gc.ThresBlunder / std::sin(gc.ELV(k));
            if (std::fabs(gc.fl3(k)) > rThres) {
                ++*phCount[sys];
                gc.ifXl3(k) = true;
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
