// The site models CalculateAE asks once per epoch: Sun and Moon, the solid
// Earth tide, and the ocean loading of the real ZIMM coefficients, which
// rebuilds its admittance splines at every call.
#include <benchmark/benchmark.h>

#include <fstream>
#include <iostream>
#include <string>

#include "geodesy/mjd.h"
#include "site/LuniSolarPosition.h"
#include "site/OceanTideLoading.h"
#include "site/SolidEarthTide.h"

namespace {

// Relative to the repository root, where the benchmarks run.
const std::string kBlq = "../shared/data/zimm-2015-235/zimm.blq";
const xyz kZimm(4331296.9165L, 567556.0689L, 4633134.0586L);

// Epoch i of a 30 s day.
mjd Epoch(long i) { return mjd(57257, 30.0L * (i % 2880)); }

void BM_SunMoonSolidTide(benchmark::State& state)
{
    LuniSolarPosition lsp;
    SolidEarthTide tide;
    tide.SetStaPosition(kZimm.GetUnitVector(1.0L), kZimm.GetLength());
    long i = 0;
    for (auto _ : state) {
        const mjd t = Epoch(i++);
        xyz sun, moon, d;
        long double rs = 0.0L, rm = 0.0L;
        lsp.SunPosition(t, sun, rs);
        lsp.MoonPosition(t, moon, rm);
        tide.SetSunPosition(sun, rs);
        tide.SetMoonPosition(moon, rm);
        tide.GetDisplacement(t, d);
        benchmark::DoNotOptimize(d);
    }
}
BENCHMARK(BM_SunMoonSolidTide);

void BM_OceanLoading(benchmark::State& state)
{
    if (!std::ifstream(kBlq).good()) {
        state.SkipWithError("ZIMM BLQ file missing");
        return;
    }
    OceanTideLoading otl;
    otl.SetFile(kBlq.c_str());
    otl.ReadFile();
    otl.SetStation("ZIMM");
    long i = 0;
    for (auto _ : state) {
        neu d;
        otl.GetDisplacement(Epoch(i++), d);
        benchmark::DoNotOptimize(d);
    }
}
BENCHMARK(BM_OceanLoading);

}  // namespace
