#include "numerics/inv.h"

#include <cmath>

#include "numerics/MError.h"

matrix<long double> inv(const matrix<long double>& M, long dim)
{
    matrix<long double> temp(M);
    long m = temp.r;
    long n = temp.c;
    if (dim >= 0) {
        if (dim > m || dim > n)
            MError::invError("Function:   inv\nDimension of submatrix inproper: ", m - dim, n - dim);
        m = dim;
        n = dim;
    }
    if (m == 0 && n == 0) MError::invError("Function:   inv\nMatrix is not defined: ", m, n);
    if (m != n) MError::invError("Function:   inv\nMatrix is not square: ", m, n);

    // A stale flag from an earlier call must not speak for this one.
    invns::IsSingular = false;
    if (n == 1) return matrix<long double>(1, 1, 1.0L / temp(0, 0));

    matrix<long double> minv = I(n, 1.0L);
    const long double thres = invns::thres;
    for (long j = 0; j + 1 < n; ++j) {
        long p = j;
        for (long i = j + 1; i < n; ++i)
            if (std::fabs(temp(i, j)) > std::fabs(temp(p, j))) p = i;
        if (p != j)
            for (long k = 0; k < n; ++k) {
                SWAP(temp(p, k), temp(j, k));
                SWAP(minv(p, k), minv(j, k));
            }
        for (long i = j + 1; i < n; ++i) {
            if (std::fabs(temp(i, j)) > thres) {
                if (std::fabs(temp(j, j)) < thres) {
                    invns::IsSingular = true;
                    return minv;
                }
                const long double f = -temp(i, j) / temp(j, j);
                for (long k = 0; k < n; ++k) {
                    temp(i, k) += f * temp(j, k);
                    minv(i, k) += f * minv(j, k);
                }
            }
            // A column with nothing above thres from the diagonal down has
            // no pivot: the matrix is singular however the rows below read.
            if (std::fabs(temp(j, j)) < thres) {
                invns::IsSingular = true;
                return minv;
            }
        }
    }
    if (std::fabs(temp(n - 1, n - 1)) < thres) {
        MError::invWarning("Function:   inv\nMatrix is SINGULAR: ", temp(n - 1, n - 1) / thres, n - 1);
        invns::IsSingular = true;
        return minv;
    }
    for (long j = n - 1; j >= 1; --j)
        for (long i = j - 1; i >= 0; --i)
            if (std::fabs(temp(i, j)) > thres) {
                const long double f = -temp(i, j) / temp(j, j);
                for (long k = 0; k < n; ++k) {
                    temp(i, k) += f * temp(j, k);
                    minv(i, k) += f * minv(j, k);
                }
            }
    for (long i = 0; i < n; ++i) {
        const long double d = temp(i, i);
        for (long k = 0; k < n; ++k) minv(i, k) /= d;
    }
    return minv;
}
