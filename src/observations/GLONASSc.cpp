#include "observations/GLONASSc.h"

#include "observations/GPSc.h"

namespace GLONASSc {

matrix<long double> freq(NSlots, 2, 0.0L);
matrix<long double> lamb(NSlots, 2, 0.0L);
matrix<long double> lambWL(NSlots, 1, 0.0L);
matrix<long double> lambNL(NSlots, 1, 0.0L);
matrix<long double> alphaG(NSlots, 2, 0.0L);

void SetFrequency(long double k, short prn)
{
    freq(prn, 0) = freq10 + dfreq10 * k;
    freq(prn, 1) = freq20 + dfreq20 * k;
    for (long i = 0; i < 2; i++)
        lamb(prn, i) = c / freq(prn, i);
    const long double l1 = lamb(prn, 0);
    const long double l2 = lamb(prn, 1);
    lambWL(prn) = l1 * l2 / (l2 - l1);
    lambNL(prn) = l1 * l2 / (l1 + l2);
    for (long i = 0; i < 2; i++) {
        const long double ratio = GPSc::freq1 / freq(prn, i);
        alphaG(prn, i) = ratio * ratio;
    }
}

}  // namespace GLONASSc
