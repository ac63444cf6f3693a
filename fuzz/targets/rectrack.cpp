// Receiver code tracking list (-ct): the class of ESBC's receiver.
#include "FuzzSupport.h"
#include "delays/RecCodeTrack.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "receivers.txt");
    orvofuzz::Run([&] {
        RecCodeTrack r;
        r.SetFile(path.c_str());
        r.GetRecCodeTrack("SEPT POLARX5");
    });
    return 0;
}
