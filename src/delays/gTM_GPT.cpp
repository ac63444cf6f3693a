#include "delays/gTM_GPT.h"

#include "delays/stdAtm.h"
#include "numerics/MathConstants.h"
#include "numerics/Trigonometry.h"

#include <algorithm>
#include <cmath>

namespace {
long double Sum(const long double* a, const long double* b,
                const long double* aP, const long double* bP)
{
    long double s = 0.0L;
    for (int r = 0; r < gTM_GPT::N; ++r) s += a[r] * aP[r] + b[r] * bP[r];
    return s;
}
}  // namespace

gTM_GPT::gTM_GPT()
{
    std::copy(gTM_GPTcoef::aG, gTM_GPTcoef::aG + N, aG);
    std::copy(gTM_GPTcoef::bG, gTM_GPTcoef::bG + N, bG);
    std::copy(gTM_GPTcoef::apM, gTM_GPTcoef::apM + N, apM);
    std::copy(gTM_GPTcoef::bpM, gTM_GPTcoef::bpM + N, bpM);
    std::copy(gTM_GPTcoef::apA, gTM_GPTcoef::apA + N, apA);
    std::copy(gTM_GPTcoef::bpA, gTM_GPTcoef::bpA + N, bpA);
    std::copy(gTM_GPTcoef::atM, gTM_GPTcoef::atM + N, atM);
    std::copy(gTM_GPTcoef::btM, gTM_GPTcoef::btM + N, btM);
    std::copy(gTM_GPTcoef::atA, gTM_GPTcoef::atA + N, atA);
    std::copy(gTM_GPTcoef::btA, gTM_GPTcoef::btA + N, btA);
    std::fill(aP, aP + N, 0.0L);
    std::fill(bP, bP + N, 0.0L);
}

void gTM_GPT::SetAtmParams(const flh& pos)
{
    const long double t = trig::Sin(pos.f);
    // Factorials up to (2n+1)! = 19! < 2^64: exact in long double.
    long double dfac[2 * n + 2];
    dfac[0] = 1.0L;
    for (int i = 1; i <= 2 * n + 1; ++i) dfac[i] = dfac[i - 1] * i;

    // 1 - t^2 is cos^2(latitude); round-off may push it a hair below 0 at a
    // pole, where the root must be 0.
    const long double c2 = std::max(0.0L, 1.0L - t * t);
    int r = 0;
    for (int i = 0; i <= n; ++i) {
        for (int j = 0; j <= i; ++j) {
            const int ir = (i - j) / 2;
            long double sum = 0.0L;
            for (int k = 0; k <= ir; ++k) {
                const long double term = dfac[2 * i - 2 * k]
                                         / (dfac[k] * dfac[i - k] * dfac[i - j - 2 * k])
                                         * std::pow(t, i - j - 2 * k);
                sum += (k % 2 == 0) ? term : -term;
            }
            const long double P = sum * std::sqrt(std::pow(c2, j)) / std::pow(2.0L, i);
            aP[r] = P * trig::Cos(j * pos.l);
            bP[r] = P * trig::Sin(j * pos.l);
            ++r;
        }
    }
    gHeight = Sum(aG, bG, aP, bP);
    H = pos.h - gHeight;
    apMean = Sum(apM, bpM, aP, bP);
    apAmp = Sum(apA, bpA, aP, bP);
    atMean = Sum(atM, btM, aP, bP);
    atAmp = Sum(atA, btA, aP, bP);
}

void gTM_GPT::GetZenithDelay(gTropDelay& td, const flh& pos, const mjd& eph)
{
    using namespace stdAtm;
    // Whole days from 28 January 1980, the phase origin of the annual term.
    const long double doy =
        static_cast<long double>(eph.GetMJDay()) - 44239.0L + 1.0L - 28.0L;
    const long double season = trig::Cos(2.0L * Pi * doy / 365.25L);
    // Above 44 km above the geoid the base turns negative: no atmosphere.
    const long double base = std::max(0.0L, 1.0L - 0.0000226L * H);
    pres = (apMean + apAmp * season) * std::pow(base, 5.225L);
    temp = atMean + atAmp * season - 0.0065L * H;
    const long double tK = temp + 273.16L;
    const long double hum = H0 * std::exp(-0.0006369L * (pos.h - h0));
    const long double e = WaterVapourPressure(hum, tK);
    const long double g = GravityFactor(pos.f, pos.h);
    td.tdry = SaastamoinenDry(pres, g);
    td.twet = SaastamoinenWet(tK, e, g);
}
