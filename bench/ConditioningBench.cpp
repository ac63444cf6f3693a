// Conditioning of the real 24-hour, 30 s ESBC day: the millisecond-step
// search and the combinations that the preprocessing forms, in its order.
#include <benchmark/benchmark.h>

#include <fstream>
#include <string>

#include "observations/GLONASSc.h"
#include "observations/RINEX.h"

namespace {

// Relative to the repository root, where the benchmarks run.
const char* const kEsbcObs = "../shared/data/esbc-2020-177/esbc1770.20o";
const char* const kEsbcFreq = "../shared/data/esbc-2020-177/esbc1770.20o.glofrq";

void BM_ConditionDay(benchmark::State& state)
{
    if (!std::ifstream(kEsbcObs).good()) {
        state.SkipWithError("ESBC observation file not found (run from the repository root)");
        return;
    }
    std::ifstream freq(kEsbcFreq);
    std::string slot;
    long double k = 0;
    while (freq >> slot >> k)
        GLONASSc::SetFrequency(k, static_cast<short>(std::stoi(slot.substr(1)) - 1));
    RINEXHeader h;
    RINEXData d(h);
    RINEX r(h, d);
    r.SetFile(kEsbcObs);
    r.ReadFile();
    for (auto _ : state) {
        long nJumps = 0;
        d.CorrMSJumps(nJumps);
        d.SetLC_PC3();
        d.SetLC_L3();
        d.SetLC_L4();
        d.SetLC_MW(true);
        benchmark::DoNotOptimize(nJumps);
    }
    state.counters["observations/s"] = benchmark::Counter(
        static_cast<double>(d.nsatall) * static_cast<double>(state.iterations()),
        benchmark::Counter::kIsRate);
}

}  // namespace

BENCHMARK(BM_ConditionDay)->Unit(benchmark::kMillisecond);
