#pragma once
// GPT, the global pressure and temperature model: mean and annual surface
// pressure and temperature on the geoid as spherical harmonics of degree and
// order 9, carried to the site height, feeding the Saastamoinen delays.
#include "delays/gTropDelay.h"
#include "geodesy/flh.h"
#include "geodesy/mjd.h"

class gTM_GPT {
public:
    static constexpr int N = 55;  // coefficients per table
    static constexpr int n = 9;   // degree
    static constexpr int m = 9;   // order
    // Published tables (Boehm, Heinkelmann & Schuh 2007), index
    // r = i(i+1)/2 + j for degree i and order j.
    long double aG[N], bG[N];    // geoid undulation, m
    long double apM[N], bpM[N];  // mean pressure, hPa
    long double apA[N], bpA[N];  // annual pressure amplitude, hPa
    long double atM[N], btM[N];  // mean temperature, degrees Celsius
    long double atA[N], btA[N];  // annual temperature amplitude, degrees Celsius
    long double gHeight = 0.0L;  // geoid undulation at the site, m
    long double H = 0.0L;        // height of the site above the geoid, m
    long double apMean = 0.0L, apAmp = 0.0L;  // site pressure terms, hPa
    long double atMean = 0.0L, atAmp = 0.0L;  // site temperature terms, Celsius
    long double pres = 0.0L;     // pressure at the site of the last epoch, hPa
    long double temp = 0.0L;     // temperature of the last epoch, degrees Celsius

    /// Loads the published tables.
    gTM_GPT();

    /// Site setup from the latitude and longitude (radians) and ellipsoidal
    /// height (metres) of pos: evaluates the geoid undulation and the
    /// pressure and temperature terms with unnormalised associated Legendre
    /// functions of sin(latitude). Boehm, Heinkelmann & Schuh (2007),
    /// J. Geod. 81(10), 679-683.
    void SetAtmParams(const flh& pos);

    /// Writes the Saastamoinen zenith delays (m) to td.tdry and td.twet for
    /// the GPT pressure and temperature of the site on the day of eph (the
    /// annual term has its phase on 28 January; the day fraction is not
    /// used), with the standard relative humidity carried to pos.h. Fills
    /// pres and temp. SetAtmParams for the same site must come first.
    void GetZenithDelay(gTropDelay& td, const flh& pos, const mjd& eph);

private:
    long double aP[N], bP[N];  // Legendre values times cos, sin of j*longitude
};

namespace gTM_GPTcoef {
extern const long double aG[gTM_GPT::N], bG[gTM_GPT::N];
extern const long double apM[gTM_GPT::N], bpM[gTM_GPT::N];
extern const long double apA[gTM_GPT::N], bpA[gTM_GPT::N];
extern const long double atM[gTM_GPT::N], btM[gTM_GPT::N];
extern const long double atA[gTM_GPT::N], btA[gTM_GPT::N];
}  // namespace gTM_GPTcoef
