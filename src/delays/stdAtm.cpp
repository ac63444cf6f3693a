#include "delays/stdAtm.h"

#include <cmath>

#include "numerics/Trigonometry.h"

namespace stdAtm {

long double GravityFactor(long double lat_rad, long double h_m)
{
    return 1.0L - 0.0026L * trig::Cos(2.0L * lat_rad) - 0.00028L * h_m / 1000.0L;
}

long double WaterVapourPressure(long double H_pct, long double T_K)
{
    return (H_pct / 100.0L)
           * std::exp(-37.2456L + 0.213166L * T_K - 0.000256908L * T_K * T_K);
}

long double SaastamoinenDry(long double p_hPa, long double g)
{
    return 0.002277L * p_hPa / g;
}

long double SaastamoinenWet(long double T_K, long double e_hPa, long double g)
{
    return 0.002277L * (1255.0L / T_K + 0.05L) * e_hPa / g;
}

}  // namespace stdAtm
