#include "preprocessing/C1P2Filter.h"

#include <cmath>
#include <iomanip>
#include <iostream>
#include <vector>

#include "driver/Console.h"
#include "numerics/chr.h"
#include "preprocessing/AmbiguityTable.h"
#include "preprocessing/CodeBiasFilter.h"

namespace {

// The powers x^(r-i) of one row of the design, highest first, by
// multiplication: the library's pow costs a hundred times more.
void Powers(long double x, long r, long double* a)
{
    a[r] = 1.0L;
    for (long i = r - 1; i >= 0; --i) a[i] = a[i + 1] * x;
}

void AddNormals(long double x, long double y, long double p, long r, matrix<long double>& N,
                matrix<long double>& t, long double& fpf, long double sign)
{
    long double a[3];
    Powers(x, r, a);
    for (long i = 0; i <= r; ++i) {
        for (long j = 0; j <= r; ++j) N(i, j) += sign * a[i] * a[j] * p;
        t(i) += sign * a[i] * p * y;
    }
    fpf += sign * y * y * p;
}

struct Arc {
    short sat;
    SatRecordSpan recs;  // the qualifying records, in time order
    long nObs = 0, nOut = 0, degree = 0;
};

}  // namespace

void UpdateNormalSystem(long double x, long double y, long double p, long r,
                        matrix<long double>& N, matrix<long double>& t, long double& fpf)
{
    AddNormals(x, y, p, r, N, t, fpf, 1.0L);
}

void ReduceNormalSystem(long double x, long double y, long double p, long r,
                        matrix<long double>& N, matrix<long double>& t, long double& fpf)
{
    AddNormals(x, y, p, r, N, t, fpf, -1.0L);
}

long double GetResidual(long double y, long double x, const matrix<long double>& X, long r)
{
    if (r == 0) return X(0) - y;
    if (r == 1) return X(0) * x + X(1) - y;
    return X(0) * x * x + X(1) * x + X(2) - y;
}

long double GetResidualQ(long double p, long double x, const matrix<long double>& QX, long r)
{
    if (r == 0) return 1.0L / p - QX(0, 0);
    if (r == 1) return 1.0L / p - (QX(0, 0) * x * x + 2.0L * x * (QX(1, 0) + QX(0, 1)) + QX(1, 1));
    return 1.0L / p
           - (QX(0, 0) * x * x * x * x + QX(1, 1) * x * x + QX(2, 2)
              + 2.0L * ((QX(1, 0) + QX(0, 1)) * x * x * x + (QX(2, 0) + QX(0, 2)) * x * x
                        + (QX(2, 1) + QX(1, 2)) * x));
}

void C1P2Filter(gCPosC& gc)
{
    namespace ns = C1P2Filterns;
    RINEXData& d = gc.rnxd;
    const RINEXHeader& h = gc.rnxh;
    if (!(gc.ifPc3 || gc.ifPp3 || gc.ifL3) || !h.HasC1() || !(h.HasP2() || h.HasC7())) return;
    const long nObs = d.GetNObs();
    if (d.C1.NRow() < nObs || gc.ELV.NRow() < nObs) return;
    // The second code of a record: P2, or C7 for Galileo; null when the
    // header lacks it.
    const auto second = [&](short sat, long k) -> gnssobs* {
        matrix<gnssobs>& m = SystemOf(sat) == SysGAL ? d.C7 : d.P2;
        const bool has = SystemOf(sat) == SysGAL ? h.HasC7() : h.HasP2();
        return has && k < m.NRow() ? &m(k) : nullptr;
    };
    const auto qualifies = [&](short sat, long k) {
        const gnssobs* s = second(sat, k);
        return s != nullptr && !s->IsNull() && !d.C1(k).IsNull();
    };

    // The qualifying records side by side, satellite after satellite: an
    // arc is a run of them.
    LargeVector<SatRecord> qualifying;
    qualifying.reserve(static_cast<std::size_t>(nObs));
    std::vector<std::size_t> arcStart;
    std::vector<Arc> arcs;
    for (const auto& [sat, recs] : RecordsBySatellite(d)) {
        if (!gc.UsesSystem(sat)) continue;
        long last = -1;
        for (const SatRecord& r : recs) {
            if (!qualifies(sat, r.k)) continue;
            if (last < 0 || d.epoch(r.epoch) - d.epoch(last) > ns::ArcGap_s) {
                arcs.push_back({sat, {}});
                arcStart.push_back(qualifying.size());
            }
            qualifying.push_back(r);
            last = r.epoch;
        }
    }
    arcStart.push_back(qualifying.size());
    for (std::size_t a = 0; a < arcs.size(); ++a)
        arcs[a].recs = SatRecordSpan(qualifying.data() + arcStart[a], arcStart[a + 1] - arcStart[a]);

    long nAll = 0, nOutAll = 0;
    // Per record of an arc its time (h) and weight, for the fit and the test.
    std::vector<long double> hoursOf, weightOf;
    for (Arc& arc : arcs) {
        const mjd first = d.epoch(arc.recs.front().epoch);
        const long double hours = (d.epoch(arc.recs.back().epoch) - first) / 3600.0L;
        arc.degree = hours <= 1.0L ? 0 : hours <= 4.0L ? 1 : 2;
        const long r = arc.degree;
        matrix<long double> N(r + 1, r + 1, 0.0L), t(r + 1, 1, 0.0L);
        long double fpf = 0.0L;
        hoursOf.clear();
        weightOf.clear();
        for (const SatRecord& rec : arc.recs) {
            hoursOf.push_back((d.epoch(rec.epoch) - first) / 3600.0L);
            weightOf.push_back(CodeWeight(gc, rec.k));
            const long double obs = second(arc.sat, rec.k)->obs - d.C1(rec.k).obs;
            if (std::fabs(obs) > ns::Outlier_m) continue;
            UpdateNormalSystem(hoursOf.back(), obs, weightOf.back(), r, N, t, fpf);
            ++arc.nObs;
        }
        nAll += static_cast<long>(arc.recs.size());
        if (arc.nObs <= r) continue;
        chr<long double> ch;
        ch.dcmp(N);
        const matrix<long double> X = ch.solve(t), QX = ch.inv();
        long double vtpv = fpf;
        for (long i = 0; i <= r; ++i) vtpv -= t(i) * X(i);
        // Without redundancy there is no variance to test against.
        const long dof = arc.nObs - 1 - r;
        if (dof <= 0) continue;
        const long double s02 = vtpv / dof;
        for (std::size_t m = 0; m < arc.recs.size(); ++m) {
            const long k = arc.recs[m].k;
            gnssobs* s = second(arc.sat, k);
            const long double x = hoursOf[m];
            const long double v = GetResidual(s->obs - d.C1(k).obs, x, X, r);
            const long double q = s02 * GetResidualQ(weightOf[m], x, QX, r);
            // A cofactor that is not positive (the doubled cross terms can
            // take it below zero) or a singular fit leaves the record as is.
            if (!(q > 0.0L) || !std::isfinite(v)) continue;
            if (std::fabs(v / std::sqrt(q)) > ns::Threshold) {
                *s = gnssobs();
                ++arc.nOut;
            }
        }
        nOutAll += arc.nOut;
    }
    if (nAll == 0 || nOutAll == nAll) return;

    ProgramSubSubTitle("FILTERING  P2/C7-C1/P1 OBSERVATIONS:", 0);
    const std::ios::fmtflags flags = std::cout.flags();
    const std::streamsize prec = std::cout.precision();
    std::cout << std::fixed << std::setprecision(2) << "  Outlier detection threshold         : " << ns::Threshold
              << " * STD_V\n\n"
              << "      ID   PRN       START EPOCH         END EPOCH                #OBS     OUTLIERS-STATS  POLYNOMIAL\n";
    for (std::size_t i = 0; i < arcs.size(); ++i) {
        const Arc& a = arcs[i];
        if (i > 0 && a.sat != arcs[i - 1].sat) std::cout << "\n";
        const long n = static_cast<long>(a.recs.size());
        PrintArcColumns(static_cast<long>(i + 1), a.sat, a.recs.front().epoch, a.recs.back().epoch);
        std::cout << std::setw(20) << n << std::setw(10) << a.nOut << std::setprecision(1) << std::setw(8)
                  << 100.0L * a.nOut / n << "%" << std::setw(12) << a.degree << "\n";
    }
    std::cout << "\n  Number of all P2-C1 observations: " << nAll << "\n"
              << "  Number of P2-C1 outliers        : " << nOutAll << "\n\n";
    std::cout.flags(flags);
    std::cout.precision(prec);
}
