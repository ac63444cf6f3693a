// The program's own receiver clock file (-ic).
#include "FuzzSupport.h"
#include "orbits/ClkErr.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "receiver.clk");
    orvofuzz::Run([&] {
        ClkErr c;
        c.SetFile(path.c_str());
        c.ReadFile();
    });
    return 0;
}
