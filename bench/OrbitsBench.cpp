// Satellite states from the real GRG products of the ESBC day: the light-time
// solution from the SP3 file and the 30-s clock, per satellite and epoch, as
// the observation loop asks for them; iterated from scratch (hinted:0) or
// started from the satellite's last epoch as the loops do (hinted:1).
#include <benchmark/benchmark.h>

#include <fstream>

#include "orbits/GNSSpClk.h"
#include "orbits/GNSSpEph.h"
#include "orbits/LightTimeHints.h"

namespace {

// Relative to the repository root, where the benchmarks run.
const char* const kSp3 = "../shared/data/esbc-2020-177/GRG0MGXFIN_20201770000_01D_15M_ORB.SP3";
const char* const kClk = "../shared/data/esbc-2020-177/GRG0MGXFIN_20201770000_01D_30S_CLK.CLK";

void BM_PreciseSatelliteStates(benchmark::State& state)
{
    if (!std::ifstream(kSp3).good() || !std::ifstream(kClk).good()) {
        state.SkipWithError("GRG products not found (run from the repository root)");
        return;
    }
    GNSSpEph eph;
    eph.SetFile(kSp3);
    eph.ReadFile();
    GNSSpClk clk;
    clk.SetFile(kClk);
    clk.ReadFile();
    xyz rec(3582104.7655L, 532590.1789L, 5232755.1393L);
    long states = 0;
    const bool hinted = state.range(0) == 1;
    for (auto _ : state) {
        LightTimeHints hints;
        // One hour of 30-s epochs, every satellite of the file.
        mjd t0 = eph.GetMJD(40);
        clk.SetEpochIndex(t0);
        for (int e = 0; e < 120; ++e) {
            mjd t = t0;
            t += 30.0L * e;
            clk.SetEpochIndex(t, clk.GetEpochIx());
            for (short j = 0; j < eph.GetNSat(); ++j) {
                short sat = eph.GetSatList(j);
                xyzt ps, vs;
                long double dt = 0.0L;
                const long double dist = eph.CalcSatPosition(static_cast<unsigned short>(sat), t, rec, ps, vs,
                                                             hinted ? hints.Predict(sat, t) : 0.0L);
                if (hinted && eph.PSisOK && dist > 0.0L) hints.Keep(sat, t, eph.LastState().tau, rec, ps, vs);
                benchmark::DoNotOptimize(dist);
                clk.GetSatelliteClock(sat, t, dt);
                benchmark::DoNotOptimize(dt);
                ++states;
            }
        }
    }
    state.counters["observations/s"] = benchmark::Counter(static_cast<double>(states),
                                                          benchmark::Counter::kIsRate);
}

// Reading the products, a fixed cost of every run whatever its length: the
// orbit file, and the 30-s clock file for the first span:hours of the day
// (24 the whole file), the part the run keeps.
void BM_ReadPreciseProducts(benchmark::State& state)
{
    if (!std::ifstream(kSp3).good() || !std::ifstream(kClk).good()) {
        state.SkipWithError("GRG products not found (run from the repository root)");
        return;
    }
    for (auto _ : state) {
        GNSSpEph eph;
        eph.SetFile(kSp3);
        eph.ReadFile();
        GNSSpClk clk;
        clk.SetFile(kClk);
        mjd first = eph.GetMJD(0), last = first;
        last += 3600.0L * static_cast<long double>(state.range(0));
        clk.SetSpan(first, last);
        clk.ReadFile();
        benchmark::DoNotOptimize(clk.GetNEpoch());
    }
}

}  // namespace

BENCHMARK(BM_ReadPreciseProducts)->ArgName("span")->Arg(6)->Arg(24)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PreciseSatelliteStates)->ArgName("hinted")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
