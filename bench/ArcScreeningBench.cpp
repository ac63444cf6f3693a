// Arc screening of the real 24-hour, 30 s ESBC day (83 558 records): the
// L4 screen by either method followed by the MW screen, as the ambiguity
// stage runs them, all records taken as high.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>

#include "observations/RINEX.h"

namespace {

// Relative to the repository root, where the benchmarks run.
const char* const kEsbcObs = "../shared/data/esbc-2020-177/esbc1770.20o";
const char* const kArcFile = "Ambiq_bench.b";

void ScreenArcs(benchmark::State& state, bool linear)
{
    if (!std::ifstream(kEsbcObs).good()) {
        state.SkipWithError("ESBC observation file not found (run from the repository root)");
        return;
    }
    RINEXHeader h;
    RINEXData d(h);
    RINEX r(h, d);
    r.SetFile(kEsbcObs);
    r.ReadFile();
    d.SetLC_L4();
    d.SetLC_MW(false);
    d.SetAmbFile(kArcFile);
    const matrix<long double> elev(d.nsatall, 1, 1.0L);
    const long double minElev = 0.17453292519943295769L;  // 10 degrees
    long nAmb = 0;
    for (auto _ : state) {
        if (linear)
            d.ScreenL4Linear(elev, minElev, 15, 0.05L, 0.02L, 150.5L, nAmb);
        else
            d.ScreenL4(elev, minElev, 15, 0.05L, 0.02L, 150.5L, nAmb);
        d.ScreenMW(0.86L, 15, elev, nAmb);
        benchmark::DoNotOptimize(nAmb);
    }
    std::remove(kArcFile);
    state.counters["observations/s"] = benchmark::Counter(
        static_cast<double>(d.nsatall) * static_cast<double>(state.iterations()),
        benchmark::Counter::kIsRate);
}

void BM_ScreenArcsL4LinearAndMW(benchmark::State& state) { ScreenArcs(state, true); }
void BM_ScreenArcsL4ConstantAndMW(benchmark::State& state) { ScreenArcs(state, false); }

}  // namespace

BENCHMARK(BM_ScreenArcsL4LinearAndMW)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ScreenArcsL4ConstantAndMW)->Unit(benchmark::kMillisecond)->UseRealTime();
