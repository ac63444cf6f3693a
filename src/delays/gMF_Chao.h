#pragma once
// Chao (1972) mapping functions: two-term fractions in sin E and tan E.
#include "delays/gTropDelay.h"

class gMF_Chao {
public:
    /// Writes the Chao hydrostatic mapping value 1/(sin E + 0.00143/(tan E +
    /// 0.0445)) to td.mfdry and the wet value 1/(sin E + 0.00035/(tan E +
    /// 0.0017)) to td.mfwet, for elevation E in radians. Chao (1972), JPL TR
    /// 32-1587. Meant for 0 < E <= pi/2; at exactly 90 degrees tan E is huge
    /// and the value is 1 within round-off. Not exactly 1 at the zenith.
    void GetMappFunction(gTropDelay& td, long double E) const;
};
