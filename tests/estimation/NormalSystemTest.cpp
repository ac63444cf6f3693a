// Epoch clock pre-elimination against the full system with the clocks as
// explicit unknowns, solved by the test's own elimination.
#include "estimation/NormalSystem.h"

#include "EstimationSupport.h"
#include "numerics/lur.h"

using namespace esttest;

// Exact made-up data of unit-sized coefficients: both routes solve the
// same well-conditioned 5 + 4 unknown problem in long double, where
// round-off stays near 1e-15; 1e-9 leaves room without hiding a wrong term.
constexpr long double SolveTol = 1e-9L;

TEST(NormalSystem, PreEliminatedClocksGiveTheDirectSolution)
{
    const long nUnk = 5, nEp = 4;
    const long double xTrue[nUnk] = {0.8L, -1.3L, 2.1L, 0.25L, -0.6L}, cTrue[nEp] = {3.0L, -2.0L, 0.5L, 7.0L};
    unsigned long long lcg = 12345;  // deterministic coefficients in [-1, 1)
    matrix<long double> Nc(nUnk, nUnk, 0.0L), tc(nUnk, 1, 0.0L), Nt(nUnk, nUnk, 0.0L), tt(nUnk, 1, 0.0L);
    matrix<long double> N21(nEp, nUnk, 0.0L), N22(nEp, 1, 0.0L), t2(nEp, 1, 0.0L);
    // The full system over [x; c] built directly from the same rows.
    const size_t n = static_cast<size_t>(nUnk + nEp);
    std::vector<long double> A(n * n, 0.0L), b(n, 0.0L);
    for (long e = 0; e < nEp; ++e)
        for (int r = 0; r < 6; ++r) {
            long double B[ProcStaticns::NSlots], f = -cTrue[e], p = 0.5L + 0.1L * r;  // B x + (-1) c = f
            long int iB[ProcStaticns::NSlots];
            std::vector<long double> row(n, 0.0L);
            for (int s = 0; s < ProcStaticns::NSlots; ++s) {
                lcg = lcg * 6364136223846793005ULL + 1442695040888963407ULL;
                B[s] = static_cast<long double>((lcg >> 11) % 2000001ULL) / 1000000.0L - 1.0L;
                // Slots 0-2 always, the others on some rows only; slot 11
                // repeats column 0 so that a doubled column is summed.
                iB[s] = s < 3 ? s : (s == 3 && r % 2 == 0) ? 3 : (s == 6 && r % 3 != 1) ? 4 : (s == 11 && r == 5) ? 0 : -1;
                if (iB[s] < 0) continue;
                f += B[s] * xTrue[iB[s]];
                row[static_cast<size_t>(iB[s])] += B[s];
            }
            row[static_cast<size_t>(nUnk + e)] = -1.0L;
            AddRow(A, b, row, p, f);
            long int ie = e;
            SetCRDNormalSystem(Nc, tc, B, f, p, iB, N21, N22, t2, ie);
        }
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

TEST(NormalSystem, GetIndexSatDCBFindsPositionAndColumn)
{
    matrix<short> list(3, 1);
    matrix<long> ix(3, 1);
    std::tie(list(0), list(1), list(2), ix(0), ix(1), ix(2)) = std::make_tuple(3, 7, 205, 10, -1, 12);
    const long rows[][3] = {{205, 2, 12}, {7, 1, -1}, {8, -1, -1}};  // prn, position, column
    for (const auto& r : rows) {
        short prn = static_cast<short>(r[0]);
        long n = 3, col = 0, k = 0;
        GetIndexSatDCB(prn, list, ix, n, col, k);
        EXPECT_EQ(k, r[1]) << prn;
        EXPECT_EQ(col, r[2]) << prn;
    }
}
