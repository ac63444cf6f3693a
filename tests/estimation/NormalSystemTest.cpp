// Epoch clock pre-elimination against the full system with the clocks as
// explicit unknowns, solved by the test's own elimination.
#include <gtest/gtest.h>

#include "EstimationSupport.h"
#include "estimation/NormalSystem.h"
#include "numerics/lur.h"
#include "numerics/NearLD.h"

using namespace esttest;

namespace {

// Exact made-up data of unit-sized coefficients: both routes solve the
// same well-conditioned 5 + 4 unknown problem in long double, where
// round-off stays near 1e-15; 1e-9 leaves room without hiding a wrong term.
constexpr long double SolveTol = 1e-9L;

// Deterministic coefficients in [-1, 1).
struct Lcg {
    unsigned long long s = 12345;
    long double Next()
    {
        s = s * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<long double>((s >> 11) % 2000001ULL) / 1000000.0L - 1.0L;
    }
};

struct Equation {
    long epoch;
    long double B[ProcStaticns::NSlots];
    long int iB[ProcStaticns::NSlots];
    long double f, p;
};

}  // namespace

TEST(NormalSystem, PreEliminatedClocksGiveTheDirectSolution)
{
    const long nUnk = 5, nEp = 4;
    const long double xTrue[nUnk] = {0.8L, -1.3L, 2.1L, 0.25L, -0.6L};
    const long double cTrue[nEp] = {3.0L, -2.0L, 0.5L, 7.0L};
    Lcg rnd;
    std::vector<Equation> eqs;
    for (long e = 0; e < nEp; ++e)
        for (int n = 0; n < 6; ++n) {
            Equation q;
            q.epoch = e;
            long double bx = 0.0L;
            for (int s = 0; s < ProcStaticns::NSlots; ++s) {
                q.B[s] = rnd.Next();
                // Slots 0-2 always, the others on some rows only; slot 11
                // repeats column 0 so that a doubled column is summed.
                q.iB[s] = -1;
                if (s < 3) q.iB[s] = s;
                else if (s == 3 && n % 2 == 0) q.iB[s] = 3;
                else if (s == 6 && n % 3 != 1) q.iB[s] = 4;
                else if (s == 11 && n == 5) q.iB[s] = 0;
                if (q.iB[s] >= 0) bx += q.B[s] * xTrue[q.iB[s]];
            }
            q.f = bx - cTrue[e];  // B x + (-1) c = f
            q.p = 0.5L + 0.1L * n;
            eqs.push_back(q);
        }

    matrix<long double> Nc(nUnk, nUnk, 0.0L), tc(nUnk, 1, 0.0L), Nt(nUnk, nUnk, 0.0L), tt(nUnk, 1, 0.0L);
    matrix<long double> N21(nEp, nUnk, 0.0L), N22(nEp, 1, 0.0L), t2(nEp, 1, 0.0L);
    for (Equation& q : eqs) SetCRDNormalSystem(Nc, tc, q.B, q.f, q.p, q.iB, N21, N22, t2, q.epoch);
    long int nu = nUnk;
    for (long int e = 0; e < nEp; ++e) SetElimNormalSystem(Nt, tt, N21, N22, t2, e, nu);
    matrix<long double> Nr(nUnk, nUnk), tr(nUnk, 1);
    for (long i = 0; i < nUnk; ++i) {
        tr(i) = tc(i) - tt(i);
        for (long j = 0; j <= i; ++j) Nr(i, j) = Nr(j, i) = Nc(j, i) - Nt(j, i);
    }
    lur<long double> lu;
    lu.dcmp(Nr);
    const matrix<long double> x = lu.solve(tr);

    // The full system over [x; c] built directly from the rows.
    const size_t n = static_cast<size_t>(nUnk + nEp);
    std::vector<long double> A(n * n, 0.0L), b(n, 0.0L);
    for (const Equation& q : eqs) {
        std::vector<long double> row(n, 0.0L);
        for (int s = 0; s < ProcStaticns::NSlots; ++s)
            if (q.iB[s] >= 0) row[static_cast<size_t>(q.iB[s])] += q.B[s];
        row[static_cast<size_t>(nUnk + q.epoch)] = -1.0L;
        for (size_t i = 0; i < n; ++i) {
            b[i] += row[i] * q.p * q.f;
            for (size_t j = 0; j < n; ++j) A[i * n + j] += row[i] * q.p * row[j];
        }
    }
    const std::vector<long double> full = DenseSolve(A, b);

    for (long i = 0; i < nUnk; ++i) {
        EXPECT_NEAR_LD(x(i), full[static_cast<size_t>(i)], SolveTol) << i;
        EXPECT_NEAR_LD(x(i), xTrue[i], SolveTol) << i;
    }
    // Back-substitution of the clocks: (t2 - N21 x) / N22.
    for (long e = 0; e < nEp; ++e) {
        long double nx = 0.0L;
        for (long k = 0; k < nUnk; ++k) nx += N21(e, k) * x(k);
        EXPECT_NEAR_LD((t2(e) - nx) / N22(e), full[static_cast<size_t>(nUnk + e)], SolveTol) << e;
        EXPECT_NEAR_LD((t2(e) - nx) / N22(e), cTrue[e], SolveTol) << e;
    }
}

TEST(NormalSystem, EpochWithoutWeightAddsNothing)
{
    matrix<long double> Nt(3, 3, 0.0L), tt(3, 1, 0.0L);
    matrix<long double> N21(2, 3, 1.0L), N22(2, 1, 0.0L), t2(2, 1, 5.0L);
    long int e = 0, nu = 3;
    SetElimNormalSystem(Nt, tt, N21, N22, t2, e, nu);
    for (long i = 0; i < 3; ++i) {
        EXPECT_EQ(tt(i), 0.0L);
        for (long j = 0; j < 3; ++j) EXPECT_EQ(Nt(i, j), 0.0L);
    }
    // Only the upper triangle is formed.
    N22(1) = 2.0L;
    e = 1;
    SetElimNormalSystem(Nt, tt, N21, N22, t2, e, nu);
    EXPECT_EQ(Nt(0, 2), 0.5L);
    EXPECT_EQ(Nt(2, 0), 0.0L);
    EXPECT_EQ(tt(1), 2.5L);
}

TEST(NormalSystem, GetIndexSatDCBFindsPositionAndColumn)
{
    matrix<short> list(3, 1);
    list(0) = 3;
    list(1) = 7;
    list(2) = 205;
    matrix<long> ix(3, 1);
    ix(0) = 10;
    ix(1) = -1;
    ix(2) = 12;
    long n = 3, col = 0, k = 0;
    short prn = 205;
    GetIndexSatDCB(prn, list, ix, n, col, k);
    EXPECT_EQ(k, 2);
    EXPECT_EQ(col, 12);
    prn = 7;
    GetIndexSatDCB(prn, list, ix, n, col, k);
    EXPECT_EQ(k, 1);
    EXPECT_EQ(col, -1);
    prn = 8;
    GetIndexSatDCB(prn, list, ix, n, col, k);
    EXPECT_EQ(k, -1);
    EXPECT_EQ(col, -1);
}
