// Cost of the checked container and of the static solution's solver: the
// normal equations are filled through checked access and solved and
// inverted by lur once per iteration.
#include <benchmark/benchmark.h>

#include <random>

#include "numerics/lur.h"
#include "numerics/matrix.h"

namespace {

matrix<long double> DominantMatrix(long n)
{
    std::mt19937_64 gen(20200625);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    matrix<long double> A(n, n);
    for (long i = 0; i < n; ++i) {
        long double s = 0.0L;
        for (long j = 0; j < n; ++j) {
            A(i, j) = static_cast<long double>(u(gen));
            s += A(i, j) < 0.0L ? -A(i, j) : A(i, j);
        }
        A(i, i) = s + 1.0L;
    }
    return A;
}

// Rank-one updates of a 12 by 12 block, as one observation adds to the
// normal equations: reads and writes through the checked operator.
void BM_MatrixCheckedAccess(benchmark::State& state)
{
    const long n = 12;
    matrix<long double> N(n, n, 0.0L), a(n, 1, 0.5L);
    for (auto _ : state) {
        for (long i = 0; i < n; ++i)
            for (long j = 0; j < n; ++j) N(i, j) += a(i) * a(j);
        benchmark::DoNotOptimize(N.v);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n * n);  // element updates
}
BENCHMARK(BM_MatrixCheckedAccess);

void BM_MatrixProduct(benchmark::State& state)
{
    const long n = state.range(0);
    const matrix<long double> A = DominantMatrix(n), B = DominantMatrix(n);
    for (auto _ : state) {
        matrix<long double> C = A * B;
        benchmark::DoNotOptimize(C.v);
    }
    state.SetItemsProcessed(state.iterations() * n * n * n);  // multiply-adds
}
BENCHMARK(BM_MatrixProduct)->Arg(100);

void BM_LurDcmp(benchmark::State& state)
{
    const long n = state.range(0);
    const matrix<long double> A = DominantMatrix(n);
    lur<long double> lu;
    for (auto _ : state) {
        lu.dcmp(A);
        benchmark::DoNotOptimize(lu.U.v);
    }
    state.SetItemsProcessed(state.iterations() * n);  // unknowns factored
}
BENCHMARK(BM_LurDcmp)->Arg(300)->Arg(1000)->Unit(benchmark::kMillisecond);

void BM_LurInv(benchmark::State& state)
{
    const long n = state.range(0);
    lur<long double> lu;
    lu.dcmp(DominantMatrix(n));
    for (auto _ : state) {
        matrix<long double> X = lu.inv();
        benchmark::DoNotOptimize(X.v);
    }
    state.SetItemsProcessed(state.iterations() * n);  // unknowns inverted
}
BENCHMARK(BM_LurInv)->Arg(300)->Arg(1000)->Unit(benchmark::kMillisecond);

}  // namespace
