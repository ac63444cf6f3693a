// Broadcast satellite states from the ESBC navigation files: one light-time
// solution per call, as the observation loop asks for it when no precise
// orbit is given. GPS solves Kepler's equation; GLONASS integrates a 15-min
// arc, the longest its half-hourly records need.
#include <benchmark/benchmark.h>

#include <fstream>

#include "orbits/GLNbEph.h"
#include "orbits/GPSbEph.h"

namespace {

// Relative to the repository root, where the benchmarks run.
const char* const kGpsNav = "../shared/data/esbc-2020-177/esbc1770.20n";
const char* const kGlnNav = "../shared/data/esbc-2020-177/esbc1770.20g";
// ESBC marker (IGb14), the receiver of the light time.
const xyz kMarker(3582104.7655L, 532590.1789L, 5232755.1393L);
// A record in the middle of the day and an epoch 15 min after it.
constexpr long Record = 100;
constexpr long double Arc_s = 900.0L;

template <class Nav> bool Loaded(benchmark::State& state, Nav& nav, const char* file)
{
    if (!std::ifstream(file).good()) {
        state.SkipWithError("ESBC navigation file not found (run from the repository root)");
        return false;
    }
    nav.SetFile(file);
    nav.ReadFile();
    return true;
}

void BM_GpsBroadcastLightTime(benchmark::State& state)
{
    GPSbEph nav;
    if (!Loaded(state, nav, kGpsNav)) return;
    const unsigned short sat = static_cast<unsigned short>(nav.GetData().sat(Record));
    mjd t = nav.GetMJD(Record);
    t += Arc_s;
    xyz rec = kMarker;
    xyzt psat;
    for (auto _ : state) benchmark::DoNotOptimize(nav.CalcSatPosition(sat, t, t, rec, psat, nullptr, 0, 0));
    state.counters["observations/s"] = benchmark::Counter(static_cast<double>(state.iterations()),
                                                          benchmark::Counter::kIsRate);
}

void BM_GlonassBroadcastLightTime(benchmark::State& state)
{
    GLNbEph nav;
    if (!Loaded(state, nav, kGlnNav)) return;
    const short slot = nav.GetData().sat(Record);
    mjd t = nav.GetMJD(Record);
    t += Arc_s;
    xyz rec = kMarker;
    xyzt psat, vsat;
    for (auto _ : state) benchmark::DoNotOptimize(nav.CalcSatPosition(slot, t, t, rec, psat, vsat, 0));
    state.counters["observations/s"] = benchmark::Counter(static_cast<double>(state.iterations()),
                                                          benchmark::Counter::kIsRate);
}

}  // namespace

BENCHMARK(BM_GpsBroadcastLightTime)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_GlonassBroadcastLightTime)->Unit(benchmark::kMicrosecond);
