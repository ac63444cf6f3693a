#pragma once
// Niell (1996) mapping functions: coefficients tabulated by latitude, with a
// seasonal term for the hydrostatic part and a height correction.
#include "delays/MappingFraction.h"
#include "delays/gTropDelay.h"
#include "geodesy/flh.h"
#include "geodesy/mjd.h"

class gMF_Niell {
public:
    long double fiNiell;  // table spacing, 15 degrees in radians
    // Niell (1996), J. Geophys. Res. 101(B2), table 3, rows for latitudes
    // 15, 30, 45, 60 and 75 degrees.
    long double adavg[5], bdavg[5], cdavg[5];  // hydrostatic averages
    long double adamp[5], bdamp[5], cdamp[5];  // hydrostatic annual amplitudes
    long double adht, bdht, cdht;              // height correction, per km
    long double awpov[5], bwpov[5], cwpov[5];  // wet coefficients
    int ix = 0;                                // lower table row of the site
    // Site values from SetAtmParams (1: average, 2: amplitude) and the
    // epoch's hydrostatic coefficients from GetMappFunction.
    long double ad1 = 0.0L, ad2 = 0.0L, aw = 0.0L, ad = 0.0L;
    long double bd1 = 0.0L, bd2 = 0.0L, bw = 0.0L, bd = 0.0L;
    long double cd1 = 0.0L, cd2 = 0.0L, cw = 0.0L, cd = 0.0L;
    // The seasonal factor of the hydrostatic coefficients and its day.
    long double season = 0.0L;
    unsigned long seasonDay = ~0UL;

    gMF_Niell();

    /// Site setup from the geodetic latitude of pos (radians). Below 15
    /// degrees of |latitude| the 15-degree row is used, from 75 degrees on the
    /// 75-degree row; in between the plain mean of the two rows that bracket
    /// it (no weighting by latitude, so 20 and 29 degrees give equal values).
    void SetAtmParams(const flh& pos);

    /// Writes the Niell hydrostatic mapping value, with its seasonal term
    /// cos(2 pi (MJD - 44239 + 1 - 28)/365.25) (same phase in both
    /// hemispheres) and the height correction for pos.h (metres), to td.mfdry
    /// and the wet value to td.mfwet, for elevation E in radians. Both are
    /// exactly 1 at the zenith. Meant for 3 degrees <= E <= 90 degrees.
    void GetMappFunction(gTropDelay& td, const flh& pos, const mjd& eph,
                         long double E);
    /// As above, for an elevation whose sine sinE the caller holds.
    void GetMappFunctionOfSine(gTropDelay& td, const flh& pos, const mjd& eph, long double sinE);

private:
    // The fractions' numerators of the day's coefficients.
    MappingNumerator dryTop_, heightTop_, wetTop_;
};
