#pragma once
// Zenith delays of the Vienna products: per-site series of hydrostatic
// ("zh") and wet ("zw") zenith delays in metres, interpolated in time.
#include "delays/VMF1Series.h"
#include "delays/gTropDelay.h"
#include "geodesy/mjd.h"

class gTM_VMF1 : public VMF1Series {
public:
    /// Finds the point's "zh"/"ZH" and "zw"/"ZW" series; for each one that is
    /// missing a warning names point and file, and its delay stays 0.
    void SetPoint(const char* name);

    /// Writes the hydrostatic and wet zenith delays (m) of the point at epoch
    /// eph to td.tdry and td.twet; outside the series the first or last
    /// value, a missing series 0. Boehm, Werl & Schuh (2006), J. Geophys.
    /// Res. 111, B02406.
    void GetZenithDelay(gTropDelay& td, const mjd& eph);
};
