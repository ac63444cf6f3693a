#include "preprocessing/ScreenArcMean.h"

#include <cmath>

namespace {

struct Sums {
    long double spll = 0.0L, spl = 0.0L, sp = 0.0L;
    long n = 0;
    void Add(long double l, long double p)
    {
        spll += p * l * l;
        spl += p * l;
        sp += p;
        ++n;
    }
};

// Mean, cofactor and variance of unit weight from the sums about x0.
void Close(const Sums& s, long double x0, ArcMean& m)
{
    m.n = s.n;
    if (s.n == 0) return;
    m.x = s.spl / s.sp + x0;
    m.qx = 1.0L / s.sp;
    // Round-off can push the sum of squares a hair below zero.
    const long double svv = s.spll - (s.spl / s.sp) * s.spl;
    m.svv = svv > 0.0L ? svv : 0.0L;
    m.v0 = s.n > 1 ? m.svv / static_cast<long double>(s.n - 1) : 0.0L;
}

}  // namespace

ArcMean ScreenArcMean(const std::vector<ArcObs>& obs, long double thres)
{
    ArcMean first;
    long double x0 = 0.0L;
    bool haveX0 = false;
    Sums s1;
    for (const ArcObs& o : obs) {
        if (!(o.p > 0.0L)) continue;
        if (!haveX0) x0 = o.value, haveX0 = true;
        s1.Add(o.value - x0, o.p);
    }
    Close(s1, x0, first);

    ArcMean out;
    Sums s2;
    for (const ArcObs& o : obs) {
        if (!(o.p > 0.0L)) continue;
        if (first.n > 1) {
            const long double var = (1.0L / o.p - first.qx) * first.v0;
            // A residual of zero variance cannot be judged: keep it.
            if (var > 0.0L && std::fabs((first.x - o.value) / std::sqrt(var)) > thres) {
                out.outliers.push_back(o.k);
                continue;
            }
        }
        s2.Add(o.value - x0, o.p);
    }
    Close(s2, x0, out);
    out.nOut = static_cast<long>(out.outliers.size());
    return out;
}
