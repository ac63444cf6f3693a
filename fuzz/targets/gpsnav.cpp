// RINEX GPS (or Galileo) navigation file (-eg, -ee), then the first
// record's satellite a quarter of an hour after its epoch.
#include "NavigationFlight.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    orvofuzz::FlyKeplerian(orvofuzz::WriteInput(data, size, "nav.20n"), 'G');
    return 0;
}
