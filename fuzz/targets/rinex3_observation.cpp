// RINEX 3/4 observation text: translated into RINEX 2, which the RINEX 2
// reader then reads, as -r will chain them.
#include "FuzzSupport.h"
#include "observations/RINEX.h"
#include "observations/Rinex3Observation.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    orvofuzz::Run([&] {
        if (!IsRinex3Observation(text, "obs.rnx")) return;
        const std::string rnx2 = Rinex3ToRinex2(text, "obs.rnx");
        const std::string path =
            orvofuzz::WriteInput(reinterpret_cast<const uint8_t*>(rnx2.data()), rnx2.size(), "obs.20o");
        RINEXHeader h;
        RINEXData d(h);
        RINEX rnx(h, d);
        rnx.SetFile(path);
        rnx.ReadFile();
    });
    return 0;
}
