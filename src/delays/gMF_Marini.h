#pragma once
// Marini (1972) mapping function in its one-parameter form: one value for
// the hydrostatic and the wet delay.
#include "delays/gTropDelay.h"
#include "geodesy/flh.h"

class gMF_Marini {
public:
    long double g = 1.0L;    // gravity factor of the site
    long double ksi = 0.0L;  // fraction coefficient of the site

    /// Site setup from the geodetic latitude (radians) and ellipsoidal height
    /// (metres) of pos: g = 1 - 0.0026 cos 2f - 0.0028 h/1000 and
    /// ksi = 0.02644 exp(-0.14372 h/1000)/g.
    void SetAtmParams(const flh& pos);

    /// Writes (1 + ksi)/(sin E + (ksi/(1 + ksi))/(sin E + 0.015)) to
    /// td.mfdry and td.mfwet, for elevation E in radians. Marini (1972),
    /// Radio Sci. 7(2), 223-231. Meant for 0 < E <= pi/2. Not normalised: at
    /// the zenith it gives (1 + ksi)/(1 + ksi/(1.015 (1 + ksi))), about 1.001.
    void GetMappFunction(gTropDelay& td, long double E) const;
};
