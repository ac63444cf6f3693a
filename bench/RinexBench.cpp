// Reading the real 24-hour, 30 s ESBC observation file (G+R+E, 22 types,
// 83 558 satellite records): both passes, allocation and decoding.
#include <benchmark/benchmark.h>

#include <fstream>

#include "observations/RINEX.h"

namespace {

// Relative to the repository root, where the benchmarks run.
const char* const kEsbcObs = "../shared/data/esbc-2020-177/esbc1770.20o";

void BM_ReadRinexObservationFile(benchmark::State& state)
{
    if (!std::ifstream(kEsbcObs).good()) {
        state.SkipWithError("ESBC observation file not found (run from the repository root)");
        return;
    }
    long records = 0, fields = 0;
    for (auto _ : state) {
        RINEXHeader h;
        RINEXData d(h);
        RINEX r(h, d);
        r.SetFile(kEsbcObs);
        r.ReadFile();
        records = d.GetNObs();
        fields = records * h.GetNObs();
        benchmark::DoNotOptimize(d.L1(records - 1).obs);
    }
    state.counters["records/s"] = benchmark::Counter(
        static_cast<double>(records) * static_cast<double>(state.iterations()),
        benchmark::Counter::kIsRate);
    state.counters["observations/s"] = benchmark::Counter(
        static_cast<double>(fields) * static_cast<double>(state.iterations()),
        benchmark::Counter::kIsRate);
}

}  // namespace

BENCHMARK(BM_ReadRinexObservationFile)->Unit(benchmark::kMillisecond)->UseRealTime();
