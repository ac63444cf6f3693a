// The arc clean-up stages (connection, midnight split, MW and L3 screening)
// and the kinematic pass against one static pass, on the real 24-hour ESBC
// day (G+R+E, Pc3 and L3), the context built by the stages before them.
#include <benchmark/benchmark.h>

#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "driver/CheckArguments.h"
#include "driver/ParseArguments.h"
#include "driver/ProcessingStages.h"
#include "driver/ReadFiles.h"
#include "driver/SetFiles.h"
#include "estimation/ProcKinematic.h"
#include "estimation/ProcStatic.h"
#include "preprocessing/ConAmbiguities.h"
#include "preprocessing/L3Filter.h"
#include "preprocessing/MWAmbiguities.h"
#include "preprocessing/SplitMidnightAmbs.h"

namespace {

// Relative to the repository root, where the benchmarks run.
const std::string kDir = "../shared/data/esbc-2020-177/";

struct Day {
    RINEXHeader h;
    RINEXData d{h};
    RINEX r{h, d};
    gCPosC gc{h, d, r};
};

// One context read and processed through all stages; the report goes
// nowhere. Null when the data are missing.
Day* Processed()
{
    static std::unique_ptr<Day> day;
    if (day || !std::ifstream(kDir + "esbc1770.20o").good()) return day.get();
    day = std::make_unique<Day>();
    const std::string args = "orvo -csGRE -r" + kDir + "esbc1770.20o -ep" + kDir
        + "GRG0MGXFIN_20201770000_01D_15M_ORB.SP3 -ec" + kDir
        + "GRG0MGXFIN_20201770000_01D_30S_CLK.CLK -gf" + kDir
        + "esbc1770.20o.glnfc -lPc3,L3 -tmSAAST,NIELL -ti02:00:00 -tg -xSTA,KIN";
    std::vector<std::string> words;
    std::istringstream in(args);
    for (std::string w; in >> w;) words.push_back(w);
    std::vector<const char*> argv;
    for (const std::string& w : words) argv.push_back(w.c_str());
    std::ostringstream sink;
    std::streambuf* old = std::cout.rdbuf(sink.rdbuf());
    ParseArguments(day->gc, static_cast<int>(argv.size()), argv.data());
    CheckArguments(day->gc);
    SetFiles(day->gc);
    ReadFiles(day->gc);
    RunPreprocessing(day->gc);
    RunEstimation(day->gc);
    std::cout.rdbuf(old);
    return day.get();
}

// Runs f with the output stream sent nowhere.
template <class F>
void Quiet(F f)
{
    std::ostringstream sink;
    std::streambuf* old = std::cout.rdbuf(sink.rdbuf());
    f();
    std::cout.rdbuf(old);
}

void Counters(benchmark::State& state, const gCPosC& gc)
{
    state.counters["observations/s"] = benchmark::Counter(
        static_cast<double>(gc.rnxd.nsatall) * static_cast<double>(state.iterations()),
        benchmark::Counter::kIsRate);
}

// The stages change the phase and the arc table in place: each round
// starts again from the copies taken before the first.
void BM_ArcCleanup(benchmark::State& state)
{
    Day* day = Processed();
    if (!day) return state.SkipWithError("ESBC data not found (run from the repository root)");
    gCPosC& gc = day->gc;
    RINEXData& d = day->d;
    const std::vector<matrix<gnssobs>> obs = {d.L1, d.L2, d.L7, d.L3, d.L4, d.MW, d.PC3, d.PP3};
    const matrix<long> ai = gc.AmbIndex;
    const matrix<short> as = gc.AmbSat;
    const matrix<long double> xa = gc.xAmb;
    const long n = gc.nAmb;
    for (auto _ : state) {
        state.PauseTiming();
        matrix<gnssobs>* m[] = {&d.L1, &d.L2, &d.L7, &d.L3, &d.L4, &d.MW, &d.PC3, &d.PP3};
        for (std::size_t i = 0; i < obs.size(); ++i) *m[i] = obs[i];
        gc.AmbIndex = ai, gc.AmbSat = as, gc.xAmb = xa, gc.nAmb = n;
        state.ResumeTiming();
        Quiet([&] {
            ConAmbiguities(gc);
            SplitMidnightAmbs(gc);
            MWAmbiguities(gc);
            L3Filter(gc);
        });
    }
    Counters(state, gc);
}

void BM_StaticPass(benchmark::State& state)
{
    Day* day = Processed();
    if (!day) return state.SkipWithError("ESBC data not found (run from the repository root)");
    for (auto _ : state) Quiet([&] { ProcStatic(day->gc); });
    Counters(state, day->gc);
    state.counters["iterations/pass"] = day->gc.IterDone;
}

void BM_KinematicPass(benchmark::State& state)
{
    Day* day = Processed();
    if (!day) return state.SkipWithError("ESBC data not found (run from the repository root)");
    for (auto _ : state) Quiet([&] { ProcKinematic(day->gc); });
    Counters(state, day->gc);
}

}  // namespace

BENCHMARK(BM_ArcCleanup)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_StaticPass)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_KinematicPass)->Unit(benchmark::kMillisecond)->UseRealTime();
