// Epoch clock pre-elimination against the full system with the clocks as
// explicit unknowns, solved by the test's own elimination.
#include "estimation/NormalSystem.h"

#include "EstimationSupport.h"
#include "numerics/lur.h"

using namespace esttest;
using orvotest::SameBits;

// Exact made-up data of unit-sized coefficients: both routes solve the
// same well-conditioned 8 + 21 unknown problem in long double, where
// round-off stays near 1e-15; 1e-9 leaves room without hiding a wrong term.
constexpr long double SolveTol = 1e-9L;

// Records of two systems (the second with a bias column), each with a code
// equation and a phase equation with its own column, summed by record into
// the shared block and spread with the epoch's node factors, against the
// full system with the clocks as explicit unknowns. Odd epochs also put a
// gradient slot on coordinate column 0, so that a column met twice takes
// its cross term twice. More epochs than the reduction holds back, and not
// a multiple of them: the terms are added both when the block is full and
// at its end. A second summation of the same calls with the matrix sums
// off must give the same right sides and clock rows bit for bit, and leave
// its matrices as they were.
TEST(NormalSystem, PreEliminatedClocksGiveTheDirectSolution)
{
    using ProcStaticns::NSlots;
    const long nUnk = 8, nEp = EpochNormals::PendingEpochs + 5;
    const long double xTrue[nUnk] = {0.8L, -1.3L, 2.1L, 0.25L, -0.6L, 0.4L, 1.7L, -0.9L};
    long double cTrue[nEp];
    for (long e = 0; e < nEp; ++e) cTrue[e] = 3.0L - 1.25L * static_cast<long double>(e % 7);
    unsigned long long lcg = 12345;  // deterministic values in [-1, 1)
    auto next = [&lcg] {
        lcg = lcg * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<long double>((lcg >> 11) % 2000001ULL) / 1000000.0L - 1.0L;
    };
    matrix<long double> Nc(nUnk, nUnk, 0.0L), tc(nUnk, 1, 0.0L), Nt(nUnk, nUnk, 0.0L), tt(nUnk, 1, 0.0L);
    matrix<long double> N22(nEp, 1, 0.0L), t2(nEp, 1, 0.0L);
    std::vector<long> rowStart{0};
    LargeVector<long> rowCol;
    LargeVector<long double> rowVal;
    EpochNormals sums(nUnk), rhs(nUnk);
    rhs.SumMatrix(false);
    const long double untouched = 7.5L;
    matrix<long double> Nc2(nUnk, nUnk, untouched), tc2(nUnk, 1, 0.0L), Nt2(nUnk, nUnk, untouched), tt2(nUnk, 1, 0.0L);
    matrix<long double> N22b(nEp, 1, 0.0L), t2b(nEp, 1, 0.0L);
    LargeVector<long> rowCol2;
    LargeVector<long double> rowVal2;
    const size_t n = static_cast<size_t>(nUnk + nEp);
    std::vector<long double> A(n * n, 0.0L), b(n, 0.0L);
    for (long e = 0; e < nEp; ++e) {
        long iB[NSlots];
        long double factor[NSlots];
        for (int s = 0; s < NSlots; ++s) iB[s] = -1, factor[s] = 1.0L;
        iB[0] = 0, iB[1] = 1, iB[2] = 2, iB[6] = 4, iB[7] = 5;
        factor[6] = static_cast<long double>(e + 1) / static_cast<long double>(nEp + 1), factor[7] = 1.0L - factor[6];
        if (e % 2 == 1) iB[11] = 0, factor[11] = 0.5L;
        sums.Begin(iB, factor);
        rhs.Begin(iB, factor);
        for (int r = 0; r < 6; ++r) {
            const int sys = r % 2;
            long double g[EpochNormals::NShared];
            for (long double& v : g) v = next();
            g[3] = -1.0L;
            iB[3] = sys == 1 ? 3 : -1;
            std::vector<long double> row(n, 0.0L);
            const int slots[] = {0, 1, 2, 6, 7, 11}, values[] = {0, 1, 2, 4, 4, 6};
            for (int q = 0; q < 6; ++q) {
                const int s = slots[q];
                if (iB[s] >= 0) row[static_cast<size_t>(iB[s])] += g[values[q]] * factor[s];
            }
            if (sys == 1) row[3] += -1.0L;
            row[static_cast<size_t>(nUnk + e)] = -1.0L;
            long double fCode = -cTrue[e];
            for (size_t c = 0; c < static_cast<size_t>(nUnk); ++c) fCode += row[c] * xTrue[c];
            const long double pCode = 0.5L + 0.1L * r, pPhase = 2.0L + 0.3L * r;
            AddRow(A, b, row, pCode, fCode);
            const long own = 6 + r % 2;
            row[static_cast<size_t>(own)] = -1.0L;
            const long double fPhase = fCode - xTrue[own];
            AddRow(A, b, row, pPhase, fPhase);
            sums.AddOwn(Nc, tc, own, iB[3], g, fPhase, pPhase);
            sums.AddRecord(sys, iB[3], g, pCode + pPhase, pCode * fCode + pPhase * fPhase);
            rhs.AddOwn(Nc2, tc2, own, iB[3], g, fPhase, pPhase);
            rhs.AddRecord(sys, iB[3], g, pCode + pPhase, pCode * fCode + pPhase * fPhase);
        }
        sums.End(Nc, tc, Nt, tt, N22(e), t2(e), rowCol, rowVal);
        rhs.End(Nc2, tc2, Nt2, tt2, N22b(e), t2b(e), rowCol2, rowVal2);
        rowStart.push_back(static_cast<long>(rowCol.size()));
    }
    sums.Finish(Nt, tt, rowCol, rowVal);
    rhs.Finish(Nt2, tt2, rowCol2, rowVal2);
    for (long i = 0; i < nUnk; ++i) {
        EXPECT_TRUE(SameBits(tc2(i), tc(i)) && SameBits(tt2(i), tt(i))) << i;
        for (long j = 0; j < nUnk; ++j) EXPECT_TRUE(Nc2(i, j) == untouched && Nt2(i, j) == untouched) << i << " " << j;
    }
    for (long e = 0; e < nEp; ++e) EXPECT_TRUE(SameBits(N22b(e), N22(e)) && SameBits(t2b(e), t2(e))) << e;
    ASSERT_EQ(rowCol2.size(), rowCol.size());
    for (size_t q = 0; q < rowCol.size(); ++q)
        EXPECT_TRUE(rowCol2[q] == rowCol[q] && SameBits(rowVal2[q], rowVal[q])) << q;
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
    // Back-substitution of the clocks from the kept rows: (t2 - N21 x) / N22.
    for (long e = 0; e < nEp; ++e) {
        long double nx = 0.0L;
        for (long r = rowStart[static_cast<size_t>(e)]; r < rowStart[static_cast<size_t>(e) + 1]; ++r)
            nx += rowVal[static_cast<size_t>(r)] * x(rowCol[static_cast<size_t>(r)]);
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
