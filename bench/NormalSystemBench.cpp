// The static adjustment's inner step: every observation of every iteration
// adds its row to the normal equations, and every epoch then reduces its
// clock. Sized like the ESBC day: 175 unknowns, 30 records of two
// observations an epoch, 11 used slots a row.
#include <benchmark/benchmark.h>

#include "estimation/NormalSystem.h"

namespace {

void BM_NormalEquationsOneEpoch(benchmark::State& state)
{
    long int nUnk = 175, ieph = 0;
    const int nObs = 60;
    matrix<long double> N(nUnk, nUnk, 0.0L), t(nUnk, 1, 0.0L), Nt(nUnk, nUnk, 0.0L), tt(nUnk, 1, 0.0L);
    matrix<long double> N21(1, nUnk, 0.0L), N22(1, 1, 0.0L), t2(1, 1, 0.0L);
    // Coordinates, system bias, one ambiguity of 120, two delay and four
    // gradient nodes; slot 4 (code bias) unused.
    long int iB[ProcStaticns::NSlots] = {0, 1, 2, 3, -1, 0, 140, 141, 150, 151, 160, 161};
    long double B[ProcStaticns::NSlots] = {0.3L, -0.5L, 0.8L, -1.0L, -1.0L, -1.0L,
                                           -1.2L, -0.8L, -0.1L, -0.2L, 0.05L, 0.1L};
    for (auto _ : state) {
        for (int o = 0; o < nObs; ++o) {
            iB[5] = 10 + o % 30 * 4;
            long double f = 0.01L * o, p = 1.0L + 0.01L * o;
            SetCRDNormalSystem(N, t, B, f, p, iB, N21, N22, t2, ieph);
        }
        SetElimNormalSystem(Nt, tt, N21, N22, t2, ieph, nUnk);
        benchmark::DoNotOptimize(Nt.v);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * nObs);
}

}  // namespace

BENCHMARK(BM_NormalEquationsOneEpoch)->Unit(benchmark::kMicrosecond);
