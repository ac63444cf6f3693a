// The static adjustment's inner step: every observation of every iteration
// adds its row to the normal equations, and every epoch then reduces its
// clock; the time is that of a block of epochs. Sized like the ESBC day:
// 175 unknowns, 30 records of two observations (code and phase) an epoch,
// 11 used slots a row.
#include <benchmark/benchmark.h>

#include "estimation/NormalSystem.h"

namespace {

void BM_NormalEquationsOneEpoch(benchmark::State& state)
{
    const long nUnk = 175;
    const int nRec = 30;
    matrix<long double> N(nUnk, nUnk, 0.0L), t(nUnk, 1, 0.0L), Nt(nUnk, nUnk, 0.0L), tt(nUnk, 1, 0.0L);
    long double n22 = 0.0L, t2 = 0.0L;
    LargeVector<long> cols;
    LargeVector<long double> vals;
    EpochNormals sums(nUnk);
    // Coordinates, system bias, one ambiguity of 120, two delay and four
    // gradient nodes; slot 4 (code bias) unused.
    long iB[ProcStaticns::NSlots] = {0, 1, 2, 3, -1, 0, 140, 141, 150, 151, 160, 161};
    const long double factor[ProcStaticns::NSlots] = {1.0L, 1.0L, 1.0L, 1.0L, 1.0L, 1.0L,
                                                      0.6L, 0.4L, 0.3L, 0.7L, 0.3L, 0.7L};
    const long double g[EpochNormals::NShared] = {0.3L, -0.5L, 0.8L, -1.0L, -2.0L, -0.3L, 0.15L};
    // Epochs as the adjustment runs them: a block of those whose clock
    // reductions are added together.
    const int nEp = EpochNormals::PendingEpochs;
    for (auto _ : state) {
        cols.clear();
        vals.clear();
        for (int e = 0; e < nEp; ++e) {
            sums.Begin(iB, factor);
            for (int o = 0; o < nRec; ++o) {
                iB[5] = 10 + o * 4;
                const long double f = 0.01L * o, p = 1.0L + 0.01L * o;
                sums.AddOwn(N, t, iB[5], iB[3], g, f, p);
                sums.AddRecord(o % 3, o % 3 == 0 ? -1 : 2 + o % 3, g, 2.0L * p, 2.0L * p * f);
            }
            sums.End(N, t, Nt, tt, n22, t2, cols, vals);
        }
        sums.Finish(Nt, tt, cols, vals);
        benchmark::DoNotOptimize(Nt.v);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * nEp * 2 * nRec);
}

}  // namespace

BENCHMARK(BM_NormalEquationsOneEpoch)->Unit(benchmark::kMicrosecond);
