// RINEX 2 observation file (-r): header and data, both passes.
#include "FuzzSupport.h"
#include "observations/RINEX.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "obs.20o");
    orvofuzz::Run([&] {
        RINEXHeader h;
        RINEXData d(h);
        RINEX rnx(h, d);
        rnx.SetFile(path);
        rnx.ReadFile();
        // ReadFiles' next step when a file has C2 but no P2.
        if (!h.HasP2() && h.HasC2()) rnx.copyC2toP2();
    });
    return 0;
}
