#include "geodesy/elipsoid.h"

#include <cmath>

#include "numerics/ProgramError.h"

elipsoid::elipsoid(int elp) : a(0.0L), f(0.0L)
{
    Set(elp);
}

void elipsoid::Set(int elp)
{
    // f as the reciprocal of each published 1/f, beyond long double
    // precision, so that every frame's ellipsoid is reproduced exactly.
    switch (elp) {
    case 0: a = 6378137.0L;   f = 0.00335281068118231878952L; break;  // GRS 80
    case 1: a = 6378137.0L;   f = 0.00335281066474748049022L; break;  // WGS 84
    case 2: a = 6378136.0L;   f = 0.00335280374301947636101L; break;  // PZ-90
    case 3: a = 6377397.155L; f = 0.00334277318217480589463L; break;  // Bessel 1841
    case 4: a = 6371000.0L;   f = 0.0L; break;                        // sphere
    default: ProgramError("Orvo", "Improper ELLIPSOID setting!");
    }
}

long double elipsoid::GetE() const
{
    return std::sqrt(GetESQR());
}

long double elipsoid::GetE2() const
{
    return GetE() / (1.0L - f);
}
