// Reading the real 24-hour, 30 s ESBC observation day (G+R+E, 22 types,
// 83 558 satellite records): both passes, allocation and decoding, from the
// RINEX 2 file and from the station's gzipped Compact RINEX 3 file it was
// made from (inflating, Hatanaka decoding and translation included).
#include <benchmark/benchmark.h>

#include <fstream>

#include "observations/RINEX.h"

namespace {

// Relative to the repository root, where the benchmarks run.
const char* const kEsbcFiles[] = {"../shared/data/esbc-2020-177/esbc1770.20o",
                                   "../shared/data/esbc-2020-177/ESBC00DNK_R_20201770000_01D_30S_MO.crx.gz"};

void BM_ReadRinexObservationFile(benchmark::State& state)
{
    const char* const kEsbcObs = kEsbcFiles[state.range(0)];
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

// 0: RINEX 2 text, 1: gzipped Compact RINEX 3.
BENCHMARK(BM_ReadRinexObservationFile)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
