#include "estimation/NormalSystem.h"

#include <cmath>
#include <vector>

namespace {
// Column list of the epoch being eliminated, kept between calls so that
// the per-epoch step allocates nothing once it has grown.
std::vector<long>& ElimColumns()
{
    static std::vector<long> columns;
    return columns;
}
}  // namespace

void SetCRDNormalSystem(matrix<long double>& N, matrix<long double>& t, long double* B,
                        long double& f, long double& p, long int* iB, matrix<long double>& N21,
                        matrix<long double>& N22, matrix<long double>& t2, long int& ieph)
{
    using ProcStaticns::NSlots;
    N22(ieph) += p;
    t2(ieph) += -f * p;
    // The used slots, each column checked once, so that the products below
    // address the storage directly: this runs for every observation of
    // every iteration.
    long col[NSlots];
    long double b[NSlots], bp[NSlots];
    int n = 0;
    for (int i = 0; i < NSlots; ++i) {
        if (iB[i] < 0) continue;
        if (iB[i] >= N.r || iB[i] >= N.c || iB[i] >= N21.c)
            MError::MatrixAccessError(iB[i], iB[i], N.r, N.c);
        col[n] = iB[i];
        b[n] = B[i];
        bp[n] = B[i] * p;
        ++n;
    }
    long double* const row21 = &N21(ieph, 0);
    for (int i = 0; i < n; ++i) {
        t(col[i]) += bp[i] * f;
        row21[col[i]] += -bp[i];
    }
    // Upper triangle only, the one the solution reads, in the order of the
    // full double loop, so that each element sums the same products in the
    // same sequence.
    for (int i = 0; i < n; ++i) {
        long double* const rowN = N.v + N.c * col[i];
        for (int j = 0; j < n; ++j)
            if (col[j] >= col[i]) rowN[col[j]] += bp[i] * b[j];
    }
}

void SetElimNormalSystem(matrix<long double>& N, matrix<long double>& t, matrix<long double>& N21,
                         matrix<long double>& N22, matrix<long double>& t2, long int& ieph,
                         long int& nunk)
{
    const long double n22 = N22(ieph);
    if (!(std::fabs(n22) > ProcStaticns::ElimMinWeight)) return;
    const long double t2i = t2(ieph);
    if (nunk > N21.c || nunk > N.r || nunk > N.c || nunk > t.Length())
        MError::MatrixAccessError(nunk - 1, nunk - 1, N.r, N.c);
    // An epoch touches only the few unknowns of its own rows: the sums run
    // over those alone, in the order of the full loop.
    const long double* const row21 = &N21(ieph, 0);
    std::vector<long>& nz = ElimColumns();
    nz.clear();
    for (long int i = 0; i < nunk; ++i)
        if (row21[i] != 0.0L) nz.push_back(i);
    for (std::size_t ii = 0; ii < nz.size(); ++ii) {
        const long i = nz[ii];
        const long double a = row21[i];
        t.v[i] += t2i * a / n22;
        long double* const rowN = N.v + N.c * i;
        for (std::size_t jj = ii; jj < nz.size(); ++jj) rowN[nz[jj]] += row21[nz[jj]] * a / n22;
    }
}

void GetIndexSatDCB(short& prn, matrix<short>& prnList, matrix<long>& ixbSAT, long& nsat,
                    long& ixdcb, long& k)
{
    ixdcb = -1;
    k = -1;
    const long n = nsat < prnList.Length() ? nsat : prnList.Length();
    for (long s = 0; s < n; ++s)
        if (prnList(s) == prn) {
            k = s;
            if (s < ixbSAT.Length()) ixdcb = ixbSAT(s);
            return;
        }
}

void GetTropoIndex(mjd& ieph, matrix<mjd>& TI, long& itro)
{
    itro = -1;
    const long n = TI.Length();
    if (n < 2 || ieph < TI(0) || !(ieph < TI(n - 1))) return;
    // Bisection: the nodes rise strictly.
    long lo = 0, hi = n - 1;  // TI(lo) <= ieph < TI(hi)
    while (hi - lo > 1) {
        const long mid = (lo + hi) / 2;
        if (ieph < TI(mid)) hi = mid;
        else lo = mid;
    }
    itro = lo;
}
