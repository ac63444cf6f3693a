// RINEX 2 GLONASS navigation file (-er), then the first record's satellite
// integrated to its own epoch plus a quarter of an hour.
#include "NavigationFlight.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    orvofuzz::FlyGlonass(orvofuzz::WriteInput(data, size, "nav.20g"));
    return 0;
}
