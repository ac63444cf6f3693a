// Klobuchar coefficients (-ik), read from the navigation header as
// ReadFiles does, then one delay.
#include "FuzzSupport.h"

#include <fstream>

#include "delays/IonKlobuchar.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "klobuchar.20n");
    orvofuzz::Run([&] {
        IonKlobuchar k;
        std::ifstream in(path);
        in >> k;
        k.CalcIonDelay(55.5L, 8.5L, 30.0L, 120.0L, 43200.0L);
    });
    return 0;
}
