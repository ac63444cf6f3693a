// GLONASS frequency channel file (-gf), then the channel of its first slot
// at the start of its first period.
#include "FuzzSupport.h"
#include "orbits/GLNSat.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "channels.glnfc");
    orvofuzz::Run([&] {
        GLNSat g;
        g.SetFile(path.c_str());
        g.ReadFile();
        if (g.GetNSat() < 1) return;
        mjd t = g.GetEph(0, GLNSat::FROM);
        g.GetFreqNum(g.GetSat(0), t);
    });
    return 0;
}
