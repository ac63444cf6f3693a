#pragma once
// Saastamoinen zenith delays with the standard atmosphere carried to the
// site height.
#include "delays/gTropDelay.h"
#include "geodesy/flh.h"

class gTM_Saastamoinen {
public:
    long double p = 0.0L;  // surface pressure at the site, hPa
    long double T = 0.0L;  // surface temperature at the site, K
    long double H = 0.0L;  // relative humidity at the site, percent
    long double e = 0.0L;  // water vapour pressure at the site, hPa
    long double g = 1.0L;  // gravity factor of the site

    /// Site setup: carries the standard atmosphere (stdAtm) from its
    /// reference height to pos.h (metres): p = p0 (1 - 2.26e-5 dh)^5.225,
    /// T = T0 - 0.0065 dh (in kelvin), H = H0 exp(-6.369e-4 dh), e from H
    /// and T; g from the latitude and height. Berg (1948). Meant for heights
    /// below about 10 km; the pressure base stays positive up to 44 km and
    /// is clamped to 0 above, where there is no atmosphere to speak of.
    void SetAtmParams(const flh& pos);

    /// Writes the zenith hydrostatic delay 0.002277 p/g and the zenith wet
    /// delay 0.002277 (1255/T + 0.05) e/g (m) of the site to td.tdry and
    /// td.twet. Saastamoinen (1972), Geophys. Monogr. 15, 247-251.
    void GetZenithDelay(gTropDelay& td) const;
};
