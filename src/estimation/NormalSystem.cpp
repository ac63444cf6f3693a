#include "estimation/NormalSystem.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "numerics/ProgramError.h"

EpochNormals::EpochNormals(long nUnk)
    : nUnk_(nUnk > 0 ? nUnk : 0), row21_(static_cast<std::size_t>(nUnk_), 0.0L),
      touched_(static_cast<std::size_t>(nUnk_ + 63) / 64, 0), placeOf_(static_cast<std::size_t>(nUnk_), -1)
{
    for (int s = 0; s < NSharedSlots; ++s) col_[s] = -1, factor_[s] = 0.0L;
    for (int y = 0; y < NSys; ++y) sysCol_[y] = -1, sysUsed_[y] = false;
    n22_ = t2_ = 0.0L;
}

void EpochNormals::CheckColumn(long col) const
{
    if (col >= nUnk_) MError::MatrixAccessError(col, col, nUnk_, nUnk_);
}

void EpochNormals::CheckSystem(const matrix<long double>& N, const matrix<long double>& t) const
{
    if (nUnk_ > N.r || nUnk_ > N.c || nUnk_ > t.Length()) MError::MatrixAccessError(nUnk_ - 1, nUnk_ - 1, N.r, N.c);
}

void EpochNormals::SumMatrix(bool on)
{
    // Terms held back under the other setting would be added under this one.
    if (nPend_ != 0) ProgramError("Orvo", "NORMAL EQUATIONS: MATRIX SUMS SWITCHED WITH EPOCHS HELD BACK!");
    matrix_ = on;
}

void EpochNormals::Begin(const long* iB, const long double* factor)
{
    for (int s = 0; s < NSharedSlots; ++s) {
        const int slot = SharedSlot[s];
        col_[s] = slot == 3 ? -1 : iB[slot];
        factor_[s] = slot == 3 ? 1.0L : factor[slot];
        CheckColumn(col_[s]);
    }
    for (int y = 0; y < NSys; ++y) {
        sysUsed_[y] = false;
        held_[y].clear();
    }
    n22_ = t2_ = 0.0L;
}

namespace {

// Sums over the records h of (p g_a) g_b for the NB values b0... of b, each
// in the records' order, as a running sum would take them; NB sums at once
// share the loads of a record and the product p g_a, and stay in registers.
template <class Held, int NB>
void SumProducts(const std::vector<Held>& h, int a, int b0, long double* out)
{
    long double s[NB] = {};
    for (const Held& r : h) {
        const long double pa = r.p * r.g[a];
        for (int m = 0; m < NB; ++m) s[m] += pa * r.g[b0 + m];
    }
    for (int m = 0; m < NB; ++m) out[m] = s[m];
}

}  // namespace

void EpochNormals::SumHeld(int sys)
{
    // The records in the order they came, as a running sum would take them,
    // and each term the same product of p g_a (in extended precision, as it
    // would be stored) with the other factor.
    const std::vector<Held>& h = held_[sys];
    for (int a = 0; a < NShared; ++a) {
        long double spg = 0.0L, spfg = 0.0L;
        for (const Held& r : h) {
            spg += r.p * r.g[a];
            spfg += r.pf * r.g[a];
        }
        pg_[sys][a] = spg;
        pfg_[sys][a] = spfg;
        if (!matrix_) continue;
        long double* const row = gg_[sys][a];
        int b = a;
        for (; b + 4 <= NShared; b += 4) SumProducts<Held, 4>(h, a, b, row + b);
        switch (NShared - b) {
        case 3: SumProducts<Held, 3>(h, a, b, row + b); break;
        case 2: SumProducts<Held, 2>(h, a, b, row + b); break;
        case 1: SumProducts<Held, 1>(h, a, b, row + b); break;
        default: break;
        }
    }
}

void EpochNormals::AddRecord(int sys, long sysCol, const long double* g, long double p, long double pf)
{
    if (sys < 0 || sys >= NSys) return;
    CheckColumn(sysCol);
    sysUsed_[sys] = true;
    sysCol_[sys] = sysCol;
    n22_ += p;
    t2_ -= pf;
    Held& r = held_[sys].emplace_back();
    std::copy(g, g + NShared, r.g);
    r.p = p;
    r.pf = pf;
}

void EpochNormals::AddOwn(matrix<long double>& N, matrix<long double>& t, long col, long sysCol,
                          const long double* g, long double f, long double p)
{
    if (col < 0) return;
    CheckColumn(col);
    CheckColumn(sysCol);
    CheckSystem(N, t);
    t.v[col] -= p * f;
    row21_[static_cast<std::size_t>(col)] += p;
    Touch(col);
    if (!matrix_) return;
    long double* const base = N.v;
    const long nc = N.c;
    base[nc * col + col] += p;
    for (int s = 0; s < NSharedSlots; ++s) {
        const long c = SharedSlot[s] == 3 ? sysCol : col_[s];
        if (c < 0) continue;
        // The row entry, as the design row holds it.
        const long double b = g[ValueOfSlot[s]] * factor_[s];
        const long double v = -p * b;
        if (c > col) base[nc * col + c] += v;
        else base[nc * c + col] += v;
    }
}

void EpochNormals::End(matrix<long double>& N, matrix<long double>& t, matrix<long double>& Nt,
                       matrix<long double>& tt, long double& n22, long double& t2, LargeVector<long>& cols,
                       LargeVector<long double>& vals)
{
    CheckSystem(N, t);
    CheckSystem(Nt, tt);
    long double* const row21 = row21_.data();
    for (int y = 0; y < NSys; ++y) {
        if (!sysUsed_[y]) continue;
        SumHeld(y);
        long c[NSharedSlots];
        for (int s = 0; s < NSharedSlots; ++s) c[s] = SharedSlot[s] == 3 ? sysCol_[y] : col_[s];
        for (int s = 0; s < NSharedSlots; ++s) {
            if (c[s] < 0) continue;
            const int a = ValueOfSlot[s];
            t.v[c[s]] += factor_[s] * pfg_[y][a];
            row21[c[s]] -= factor_[s] * pg_[y][a];
            Touch(c[s]);
            if (!matrix_) continue;
            long double* const rowN = N.v + N.c * c[s];
            // Every ordered pair of slots whose second column is not left
            // of the first: a column met in two slots takes their cross
            // term twice, as the square of the row's sum must.
            for (int u = 0; u < NSharedSlots; ++u) {
                if (c[u] < c[s]) continue;
                const int b = ValueOfSlot[u];
                const long double gab = a <= b ? gg_[y][a][b] : gg_[y][b][a];
                rowN[c[u]] += factor_[s] * factor_[u] * gab;
            }
        }
    }
    n22 = n22_;
    t2 = t2_;
    const bool reduce = std::fabs(n22_) > ProcStaticns::ElimMinWeight;
    // The unknowns of this epoch's rows are the few non-zero columns: the
    // reduction runs over those alone, in ascending order for the upper
    // triangle.
    const std::size_t first = cols.size();
    for (std::size_t w = 0; w < touched_.size(); ++w) {
        for (unsigned long long bits = touched_[w]; bits != 0; bits &= bits - 1) {
            const long i = static_cast<long>(w * 64 + static_cast<std::size_t>(__builtin_ctzll(bits)));
            if (row21[i] != 0.0L) {
                cols.push_back(i);
                vals.push_back(row21[i]);
                row21[i] = 0.0L;
            }
        }
        touched_[w] = 0;
    }
    if (!reduce) return;
    pend_[nPend_++] = {n22_, t2_, first, cols.size()};
    if (nPend_ == PendingEpochs) Finish(Nt, tt, cols, vals);
}

void EpochNormals::Finish(matrix<long double>& Nt, matrix<long double>& tt, const LargeVector<long>& cols,
                          const LargeVector<long double>& vals)
{
    if (nPend_ == 0) return;
    CheckSystem(Nt, tt);
    // The epochs held share most of their columns (the coordinates, delay
    // nodes and the arcs in view): each element of Nt is loaded once, takes
    // the terms of all the epochs in their order, and is stored once, where
    // adding epoch by epoch stored every element of every epoch in the
    // extended format. An epoch without the column adds a zero product,
    // which leaves every non-zero sum as it was.
    const int np = nPend_;
    union_.clear();
    for (int e = 0; e < np; ++e)
        for (std::size_t q = pend_[e].first; q < pend_[e].last; ++q)
            if (placeOf_[static_cast<std::size_t>(cols[q])] < 0) {
                placeOf_[static_cast<std::size_t>(cols[q])] = 0;
                union_.push_back(cols[q]);
            }
    std::sort(union_.begin(), union_.end());
    const std::size_t nu = union_.size();
    for (std::size_t u = 0; u < nu; ++u) placeOf_[static_cast<std::size_t>(union_[u])] = static_cast<long>(u);
    if (matrix_) val_.assign(nu * PendingEpochs, 0.0L);
    scaled_.assign(nu * PendingEpochs, 0.0L);
    for (int e = 0; e < np; ++e) {
        const Pending& p = pend_[e];
        for (std::size_t q = p.first; q < p.last; ++q) {
            const std::size_t at = static_cast<std::size_t>(placeOf_[static_cast<std::size_t>(cols[q])]) *
                                       PendingEpochs + static_cast<std::size_t>(e);
            if (matrix_) val_[at] = vals[q];
            scaled_[at] = vals[q] / p.n22;
        }
    }
    for (std::size_t u = 0; u < nu; ++u) {
        const long i = union_[u];
        const long double* const a = &scaled_[u * PendingEpochs];
        long double s = tt.v[i];
        for (int e = 0; e < np; ++e) s += pend_[e].t2 * a[e];
        tt.v[i] = s;
        if (!matrix_) continue;
        long double* const rowN = Nt.v + Nt.c * i;
        for (std::size_t w = u; w < nu; ++w) {
            const long double* const v = &val_[w * PendingEpochs];
            long double sum = rowN[union_[w]];
            for (int e = 0; e < np; ++e) sum += v[e] * a[e];
            rowN[union_[w]] = sum;
        }
    }
    for (const long c : union_) placeOf_[static_cast<std::size_t>(c)] = -1;
    nPend_ = 0;
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
