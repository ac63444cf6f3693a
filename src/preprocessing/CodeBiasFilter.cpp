#include "preprocessing/CodeBiasFilter.h"

#include <cmath>
#include <iomanip>
#include <iostream>
#include <vector>

#include "driver/Console.h"
#include "numerics/MathConstants.h"
#include "numerics/Trigonometry.h"
#include "preprocessing/AmbiguityTable.h"

namespace {

// Which pair a filter works on and how it merges.
struct Pair {
    matrix<gnssobs>* first;   // C1 or C2: the code that is subtracted
    matrix<gnssobs>* second;  // P1 or P2
    bool mergeIntoFirst;      // C1 takes the merge (true) or P2 (false)
    const char *title, *bias, *diff, *pairName;
};

// Weighted sums of OBS - x0.
struct Sums {
    long double spll = 0.0L, spl = 0.0L, sp = 0.0L;
    long n = 0;
    void Add(long double l, long double p) { spll += p * l * l, spl += p * l, sp += p, ++n; }
    long double Mean() const { return spl / sp; }
    long double Svv() const { return spll - (spl / sp) * spl; }
};

void Filter(gCPosC& gc, const Pair& pr)
{
    namespace ns = CodeBiasFilterns;
    matrix<gnssobs>& a = *pr.first;
    matrix<gnssobs>& b = *pr.second;
    const long nObs = gc.rnxd.GetNObs();
    if (a.NRow() < nObs || b.NRow() < nObs || gc.ELV.NRow() < nObs) return;
    struct Row {
        short sat;
        long double x, sx;
        long n, nOut, merged;
    };
    std::vector<Row> rows;
    long double svvAll = 0.0L;
    long nAll = 0, nOutAll = 0;
    const auto both = [&](long k) { return !a(k).IsNull() && !b(k).IsNull(); };
    for (const auto& [sat, recs] : RecordsBySatellite(gc.rnxd)) {
        if (!gc.UsesSystem(sat)) continue;
        Sums s1;
        long double x0 = 0.0L;
        for (const SatRecord& r : recs) {
            if (!both(r.k)) continue;
            const long double obs = b(r.k).obs - a(r.k).obs;
            if (std::fabs(obs) > ns::Outlier_m) continue;
            if (s1.n == 0) x0 = obs;
            s1.Add(obs - x0, CodeWeight(gc, r.k));
        }
        if (s1.n == 0) continue;
        long double x = s1.Mean() + x0, qx = 1.0L / s1.sp;
        long double v0 = s1.n > 1 ? s1.Svv() / (s1.n - 1) : 0.0L;
        // Second pass: every pair is tested, also those kept out of the
        // first mean; a failing pair loses both codes.
        Sums s2;
        long nOut = 0;
        for (const SatRecord& r : recs) {
            if (!both(r.k)) continue;
            const long double obs = b(r.k).obs - a(r.k).obs, p = CodeWeight(gc, r.k);
            const long double q = (1.0L / p - qx) * v0;
            const long double w = q > 0.0L ? (x - obs) / std::sqrt(q) : 0.0L;
            if (std::fabs(w) > gc.P3OutliersThres) {
                a(r.k) = gnssobs();
                b(r.k) = gnssobs();
                ++nOut;
            } else {
                s2.Add(obs - x0, p);
            }
        }
        long double sx = 0.0L;
        if (s2.n > 0) {
            x = s2.Mean() + x0;
            qx = 1.0L / s2.sp;
            v0 = s2.n > 1 ? s2.Svv() / (s2.n - 1) : 0.0L;
            svvAll += s2.Svv();
            sx = std::sqrt(v0 * qx);
        }
        nAll += s2.n + nOut;
        nOutAll += nOut;
        // The merge: one code on the datum of the first (C1) or the second
        // (P2) of the pair.
        long merged = 0;
        for (const SatRecord& r : recs) {
            const bool hasA = !a(r.k).IsNull(), hasB = !b(r.k).IsNull();
            if (pr.mergeIntoFirst) {
                if (hasB && !hasA) a(r.k).SetObs(b(r.k).obs - x), ++merged;
                else if (hasA && hasB) a(r.k).SetObs((a(r.k).obs + b(r.k).obs - x) / 2.0L), ++merged;
            } else {
                if (hasA && !hasB) b(r.k).SetObs(a(r.k).obs + x), ++merged;
                else if (hasA && hasB) b(r.k).SetObs((a(r.k).obs + b(r.k).obs + x) / 2.0L), ++merged;
            }
        }
        rows.push_back({sat, x, sx, s2.n + nOut, nOut, merged});
    }
    if (nAll == 0) return;

    ProgramSubSubTitle(pr.title, 0);
    const std::ios::fmtflags flags = std::cout.flags();
    const std::streamsize prec = std::cout.precision();
    std::cout << std::fixed << std::setprecision(2) << "  Outlier detection threshold         : "
              << gc.P3OutliersThres << " * STD_V\n\n"
              << "      ID   PRN          " << pr.bias << " BIAS       STD           #OBS     OUTLIERS-STATS     #COMBINED\n";
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const Row& r = rows[i];
        PrintSatColumns(static_cast<long>(i + 1), r.sat);
        std::cout << std::setprecision(4) << std::setw(20) << r.x
                  << std::setw(10) << r.sx << std::setw(15) << r.n << std::setw(10) << r.nOut
                  << std::setprecision(1) << std::setw(8)
                  << (r.n > 0 ? 100.0L * r.nOut / r.n : 0.0L) << "%" << std::setw(14) << r.merged << "\n";
    }
    std::cout << "\n  Number of all " << pr.bias << " observations: " << nAll << "\n"
              << "  Number of " << pr.bias << " outliers        : " << nOutAll << "\n"
              << "  Estimated precision of " << pr.diff << " obs: ";
    PrintPrecision_cm(svvAll, nAll - 1, 1.0L);
    std::cout << "\n  Estimated precision of " << pr.pairName << " obs: ";
    PrintPrecision_cm(svvAll, nAll - 1, 2.0L);
    std::cout << "\n\n";
    std::cout.flags(flags);
    std::cout.precision(prec);
}

bool Runs(const gCPosC& gc) { return gc.doCopyFilterC && (gc.ifPc3 || gc.ifPp3 || gc.ifL3); }

}  // namespace

long double CodeWeight(const gCPosC& gc, long k)
{
    static const long double lowest = CodeBiasFilterns::MinWeightElevation_deg * Deg2Rad;
    static const long double sinLowest = trig::Sin(lowest);
    const long double s = gc.ELV(k) < lowest ? sinLowest : gc.SinElevation(k);
    return s * s;
}

void C1P1Filter(gCPosC& gc)
{
    if (!Runs(gc) || !gc.rnxh.HasC1() || !gc.rnxh.HasP1()) return;
    Filter(gc, {&gc.rnxd.C1, &gc.rnxd.P1, true, "FILTERING  C1/P1 OBSERVATIONS:", "P1-C1", "C1-P1", "C1/P1"});
}

void C2P2Filter(gCPosC& gc)
{
    if (!Runs(gc) || !gc.rnxh.HasC2() || !gc.rnxh.HasP2()) return;
    Filter(gc, {&gc.rnxd.C2, &gc.rnxd.P2, false, "FILTERING  C2/P2 OBSERVATIONS:", "P2-C2", "C2-P2", "C2/P2"});
}
