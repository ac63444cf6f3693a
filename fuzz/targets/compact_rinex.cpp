// Compact RINEX observation file (-r, .crx/.yyd, possibly gzip): decoded to
// the plain RINEX text the readers take.
#include "FuzzSupport.h"
#include "numerics/InputFile.h"
#include "observations/CompactRinex.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "obs.crx");
    orvofuzz::Run([&] {
        const std::string text = ReadInputFile(path, "Orvo");
        if (IsCompactRinex(text)) DecodeCompactRinex(text, path);
    });
    return 0;
}
