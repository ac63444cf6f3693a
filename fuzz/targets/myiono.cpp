// The Meskal vertical ionosphere series (-im), then the delay at its first
// record, as the corrections walk it.
#include "FuzzSupport.h"
#include "delays/myIono.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "iono.txt");
    orvofuzz::Run([&] {
        myIono m;
        m.SetFile(path.c_str());
        m.ReadFile();
        mjd t(59025UL, 43200.0L);
        m.SetIonoIndex(t);
        long double delay = 0.0L;
        m.GetIonoDelay(t, delay);
    });
    return 0;
}
