// GPT2 grid file (-g2), then the site parameters and delays at ESBC.
#include "FuzzSupport.h"
#include "delays/gTM_GPT2.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "grid.grd");
    orvofuzz::Run([&] {
        gTM_GPT2 g;
        g.SetFile(path.c_str());
        g.ReadFile();
        g.SetAtmParams(flh(0.9639L, 0.1476L, 60.0L));
        gTropDelay td;
        g.GetZenithDelay(td, mjd(59025UL, 43200.0L));
    });
    return 0;
}
