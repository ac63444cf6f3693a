#pragma once
// Hopfield zenith delays for the standard atmosphere: the hydrostatic layer
// top follows the site temperature, pressure and humidity stay standard.
#include "delays/gTropDelay.h"
#include "geodesy/flh.h"

class gTM_Hopfield {
public:
    long double K1 = 1.55208L;  // refractivity constant 77.6e-6/5, scaled by 1e5
    long double T = 0.0L;       // site temperature, degrees Celsius

    /// Site setup: T = T0 - 0.0065 (h - h0) from pos.h (metres).
    void SetAtmParams(const flh& pos);

    /// Writes the Hopfield zenith delays (m) to td.tdry and td.twet:
    /// hydrostatic K1 1e-5 p0/Ts Hd/g with layer top Hd = 148.72 T + 40136 m
    /// and Ts = T0 + 273.16 K; wet (-0.0282 e0/Ts + 830.72 e0/Ts^2)/g; g
    /// from the latitude and height of pos. Hopfield (1969), J. Geophys. Res.
    /// 74(18), 4487-4499. Surface pressure and humidity are the standard
    /// values at any height.
    void GetZenithDelay(gTropDelay& td, const flh& pos) const;
};
