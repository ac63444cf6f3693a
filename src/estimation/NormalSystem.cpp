#include "estimation/NormalSystem.h"

#include <cmath>

void SetCRDNormalSystem(matrix<long double>& N, matrix<long double>& t, long double* B,
                        long double& f, long double& p, long int* iB, matrix<long double>& N21,
                        matrix<long double>& N22, matrix<long double>& t2, long int& ieph)
{
    N22(ieph) += p;
    t2(ieph) += -f * p;
    for (int i = 0; i < ProcStaticns::NSlots; ++i) {
        if (iB[i] < 0) continue;
        const long double bp = B[i] * p;
        t(iB[i]) += bp * f;
        N21(ieph, iB[i]) += -bp;
        for (int j = 0; j < ProcStaticns::NSlots; ++j)
            if (iB[j] >= 0) N(iB[i], iB[j]) += bp * B[j];
    }
}

void SetElimNormalSystem(matrix<long double>& N, matrix<long double>& t, matrix<long double>& N21,
                         matrix<long double>& N22, matrix<long double>& t2, long int& ieph,
                         long int& nunk)
{
    const long double n22 = N22(ieph);
    if (!(std::fabs(n22) > ProcStaticns::ElimMinWeight)) return;
    const long double t2i = t2(ieph);
    // An epoch touches only the few unknowns of its own rows: skip the zero
    // couplings, which leaves every sum unchanged.
    for (long int i = 0; i < nunk; ++i) {
        const long double a = N21(ieph, i);
        if (a == 0.0L) continue;
        t(i) += t2i * a / n22;
        for (long int j = i; j < nunk; ++j) {
            const long double b = N21(ieph, j);
            if (b != 0.0L) N(i, j) += b * a / n22;
        }
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
