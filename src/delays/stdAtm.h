#pragma once
// Standard atmosphere at the reference height, and the small formulas that
// the zenith-delay models share.

namespace stdAtm {

constexpr long double p0 = 1013.25L;  // surface pressure, hPa
constexpr long double T0 = 18.0L;     // surface temperature, degrees Celsius
constexpr long double H0 = 50.0L;     // relative humidity, percent
constexpr long double e0 = 8.5L;      // water vapour pressure, hPa
constexpr long double h0 = 0.0L;      // reference height, m

/// Gravity factor 1 - 0.0026 cos(2 lat) - 0.00028 h/1000 of the delay models
/// (Saastamoinen 1972; Davis et al. 1985): the ratio of mean gravity in the
/// column above a site at geodetic latitude lat_rad and height h_m to its
/// value at 45 degrees and sea level. Dimensionless, about 0.997 to 1.003 on
/// the Earth's surface; any finite input gives a finite result.
long double GravityFactor(long double lat_rad, long double h_m);

/// Water vapour pressure (hPa) at relative humidity H_pct (percent) and
/// temperature T_K (kelvin), from the saturation fit
/// exp(-37.2456 + 0.213166 T - 0.000256908 T^2) of the Berg (1948) standard
/// atmosphere as used with the Saastamoinen model. Meant for 200 K to 330 K;
/// outside that the fit still returns a positive number, but not physics.
long double WaterVapourPressure(long double H_pct, long double T_K);

/// Saastamoinen zenith hydrostatic delay (m), 0.002277 p/g, for surface
/// pressure p_hPa and gravity factor g (GravityFactor). Saastamoinen (1972).
long double SaastamoinenDry(long double p_hPa, long double g);

/// Saastamoinen zenith wet delay (m), 0.002277 (1255/T + 0.05) e/g, for
/// temperature T_K (kelvin, positive), water vapour pressure e_hPa and
/// gravity factor g. Saastamoinen (1972).
long double SaastamoinenWet(long double T_K, long double e_hPa, long double g);

}  // namespace stdAtm
