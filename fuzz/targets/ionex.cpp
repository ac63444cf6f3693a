// IONEX file (-ii), then the code bias of G05 and one slant delay at 00:30.
#include "FuzzSupport.h"
#include "delays/IONEX.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "maps.ionex");
    orvofuzz::Run([&] {
        IONEX x;
        x.SetFile(path.c_str());
        x.ReadFile();
        short sat = 5;
        x.GetDCB(sat);
        long double sod = 1800.0L, beta = 46.9L, la = 7.5L, elev = 30.0L;
        int unit = 0, type = 0, tecv = 0;
        x.CalcIonDelay(sod, beta, la, elev, unit, type, tecv);
    });
    return 0;
}
