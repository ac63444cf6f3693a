#pragma once
// Davis et al. (1985) CfA-2.2 mapping function, evaluated for the standard
// atmosphere: one value for the hydrostatic and the wet delay.
#include "delays/gTropDelay.h"

class gMF_Davis {
public:
    long double a, b, c;  // coefficients of the fraction
    long double alpha;    // temperature lapse rate, K/km (negative)

    /// Sets a, b, c and alpha from the standard atmosphere (stdAtm).
    gMF_Davis();

    /// Writes 1/(sin E + a/(tan E + b/(sin E + c))) to td.mfdry and td.mfwet,
    /// for elevation E in radians. Davis et al. (1985), Radio Sci. 20(6),
    /// 1593-1607, with surface pressure, temperature and vapour pressure of
    /// the standard atmosphere and tropopause height 11.231 km folded into
    /// the coefficients. Meant for E above about 5 degrees; at the zenith tan E
    /// is huge and the value is 1 within round-off.
    void GetMappFunction(gTropDelay& td, long double E) const;
};
