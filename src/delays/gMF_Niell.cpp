#include "delays/gMF_Niell.h"

#include "delays/MappingFraction.h"
#include "numerics/MathConstants.h"
#include "numerics/Trigonometry.h"

#include <cmath>

namespace {
// Published table (Niell 1996, table 3). The amplitudes b at 60 degrees
// (7.2562722e-5) and c at 75 degrees (1.7037206e-3) are the published
// values, found alike in several independent copies of the table.
const long double kAdavg[5] = {1.2769934e-3L, 1.2683230e-3L, 1.2465397e-3L,
                               1.2196049e-3L, 1.2045996e-3L};
const long double kBdavg[5] = {2.9153695e-3L, 2.9152299e-3L, 2.9288445e-3L,
                               2.9022565e-3L, 2.9024912e-3L};
const long double kCdavg[5] = {62.610505e-3L, 62.837393e-3L, 63.721774e-3L,
                               63.824265e-3L, 64.258455e-3L};
const long double kAdamp[5] = {0.0L, 1.2709626e-5L, 2.6523662e-5L,
                               3.4000452e-5L, 4.1202191e-5L};
const long double kBdamp[5] = {0.0L, 2.1414979e-5L, 3.0160779e-5L,
                               7.2562722e-5L, 11.723375e-5L};
const long double kCdamp[5] = {0.0L, 9.0128400e-5L, 4.3497037e-5L,
                               84.795348e-5L, 170.37206e-5L};
const long double kAwpov[5] = {5.8021897e-4L, 5.6794847e-4L, 5.8118019e-4L,
                               5.9727542e-4L, 6.1641693e-4L};
const long double kBwpov[5] = {1.4275268e-3L, 1.5138625e-3L, 1.4572752e-3L,
                               1.5007428e-3L, 1.7599082e-3L};
const long double kCwpov[5] = {4.3472961e-2L, 4.6729510e-2L, 4.3908931e-2L,
                               4.4626982e-2L, 5.4736038e-2L};
}  // namespace

gMF_Niell::gMF_Niell()
    : fiNiell(15.0L * Pi / 180.0L),
      adht(2.53e-5L), bdht(5.49e-3L), cdht(1.14e-3L)
{
    for (int i = 0; i < 5; ++i) {
        adavg[i] = kAdavg[i];  bdavg[i] = kBdavg[i];  cdavg[i] = kCdavg[i];
        adamp[i] = kAdamp[i];  bdamp[i] = kBdamp[i];  cdamp[i] = kCdamp[i];
        awpov[i] = kAwpov[i];  bwpov[i] = kBwpov[i];  cwpov[i] = kCwpov[i];
    }
}

void gMF_Niell::SetAtmParams(const flh& pos)
{
    // Band number of |latitude| in table steps. A node latitude (30, 45,
    // 60, 75 degrees) may come out a hair below its whole number; 1e-12
    // (6e-12 degree) puts it into the band above, as its value says.
    const long double band = std::fabs(pos.f) / fiNiell + 1e-12L;
    int lo, hi;
    if (band < 1.0L) {
        ix = lo = hi = 0;
    } else {
        ix = static_cast<int>(band) - 1;
        // From 75 degrees on (ix 4) the bracketing row would lie beyond the
        // table: the last row stands alone, as for higher latitudes.
        if (ix >= 4) {
            ix = lo = hi = 4;
        } else {
            lo = ix;
            hi = ix + 1;
        }
    }
    auto mean = [lo, hi](const long double* t) { return (t[lo] + t[hi]) / 2.0L; };
    ad1 = mean(adavg);  bd1 = mean(bdavg);  cd1 = mean(cdavg);
    ad2 = mean(adamp);  bd2 = mean(bdamp);  cd2 = mean(cdamp);
    aw = mean(awpov);   bw = mean(bwpov);   cw = mean(cwpov);
}

void gMF_Niell::GetMappFunction(gTropDelay& td, const flh& pos, const mjd& eph,
                                long double E)
{
    GetMappFunctionOfSine(td, pos, eph, trig::Sin(E));
}

void gMF_Niell::GetMappFunctionOfSine(gTropDelay& td, const flh& pos, const mjd& eph, long double s)
{
    // Whole days from 28 January 1980, the phase origin of the seasonal term.
    // The seasonal term changes once a day; its cosine of a large angle
    // costs a full argument reduction.
    if (eph.GetMJDay() != seasonDay) {
        const long double dy =
            static_cast<long double>(eph.GetMJDay()) - 44239.0L + 1.0L - 28.0L;
        season = trig::Cos(2.0L * Pi * dy / 365.25L);
        seasonDay = eph.GetMJDay();
    }
    ad = ad1 + ad2 * season;
    bd = bd1 + bd2 * season;
    cd = cd1 + cd2 * season;
    td.mfdry = dryTop_.Fraction(ad, bd, cd, s) + heightTop_.HeightCorrection(pos.h, s, adht, bdht, cdht);
    td.mfwet = wetTop_.Fraction(aw, bw, cw, s);
}
