// teqc compact multipath file (-mp1, -mp2).
#include "FuzzSupport.h"
#include "delays/CompactTEQC.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "multipath.mp1");
    orvofuzz::Run([&] {
        CompactTEQC t;
        t.SetFile(path.c_str());
        t.ReadFile();
    });
    return 0;
}
