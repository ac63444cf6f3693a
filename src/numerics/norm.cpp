#include "numerics/norm.h"

#include <cmath>

#include "numerics/MError.h"

long double subnorm(const matrix<long double>& A, long nr, long double p)
{
    if (A.r == 0 && A.c == 0) MError::invError("Function:   subnorm\nMatrix/Vector is not defined: ", A.r, A.c);
    if (nr > A.r * A.c)
        MError::subnormError("Function:   subnorm\nNumber of elements for subnorm greater than vector size: ", nr,
                             A.r, A.c);
    // A negative count has no meaning; taking it as 0 would hide a caller's
    // wrong bookkeeping of the constraint rows.
    if (nr < 0) MError::subnormError("Function:   subnorm\nNumber of elements for subnorm is negative: ", nr, A.r, A.c);

    int& kind = normns::norm;
    if (kind != 0 && kind != 1 && kind != 2 && kind != 1000 && kind != 64536) {
        MError::normWarning("Function:   norm\nNORM type is not properly set - Using default NORM2!");
        kind = 1;
    }
    if (A.r != 1 && A.c != 1) {
        MError::normWarning("Function:   norm\nMatrix norm is not evaluated!");
        return 0.0L;
    }

    long double s = 0.0L;
    switch (kind) {
    case 0:
        for (long i = 0; i < nr; ++i) s += std::fabs(A(i));
        return s;
    case 1:
        for (long i = 0; i < nr; ++i) s += A(i) * A(i);
        return std::sqrt(s);
    case 2:
        for (long i = 0; i < nr; ++i) s += std::pow(std::fabs(A(i)), p);
        return std::pow(s, 1.0L / p);
    case 1000:
        s = std::fabs(A(0));
        for (long i = 1; i < nr; ++i) s = std::fmax(s, std::fabs(A(i)));
        return s;
    default:  // 64536
        s = std::fabs(A(0));
        for (long i = 1; i < nr; ++i) s = std::fmin(s, std::fabs(A(i)));
        return s;
    }
}
