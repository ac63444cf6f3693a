// BLQ ocean loading file (-bq), then the displacement of its first station
// at noon of the seed day.
#include "FuzzSupport.h"
#include "site/OceanTideLoading.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "loading.blq");
    orvofuzz::Run([&] {
        OceanTideLoading o;
        o.SetFile(path.c_str());
        o.ReadFile();
        if (o.GetNStation() < 1) return;
        o.SetStation(o.GetStation(0).pt);
        neu d;
        o.GetDisplacement(mjd(57257UL, 43200.0L), d);
    });
    return 0;
}
