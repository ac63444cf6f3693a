// CODE differential code bias file (-cb1, -cb2, -cb3), then the bias of G05.
#include "FuzzSupport.h"
#include "delays/DCB.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "P1C1.DCB");
    orvofuzz::Run([&] {
        DCB d;
        d.SetFile(path.c_str());
        d.ReadFile();
        d.GetDCBVAL(5);
    });
    return 0;
}
