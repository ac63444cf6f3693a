// RINEX 3 or 4 navigation file (-eg, -er, -ee with one mixed file): the
// GPS, Galileo and GLONASS readers in turn, each followed by its first
// record's satellite a quarter of an hour after its epoch.
#include "NavigationFlight.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "nav.rnx");
    orvofuzz::FlyKeplerian(path, 'G');
    orvofuzz::FlyKeplerian(path, 'E');
    orvofuzz::FlyGlonass(path);
    return 0;
}
