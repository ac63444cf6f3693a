// The Meskal code bias file (-cbm), then the biases of G05.
#include "FuzzSupport.h"
#include "delays/myDCB.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "meskal.dcb");
    orvofuzz::Run([&] {
        myDCB d;
        d.SetFile(path.c_str());
        d.ReadFile();
        long double v1, r1, v2, r2;
        d.GetDCB(5, v1, r1, v2, r2);
    });
    return 0;
}
