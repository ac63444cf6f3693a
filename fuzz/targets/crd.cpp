// Coordinate catalogue (-ac): the a-priori position of ESBC as
// GetReceiverProperties takes it, and the whole table.
#include "FuzzSupport.h"
#include "site/gCRD.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "stations.crd");
    orvofuzz::Run([&] {
        gCRD c;
        c.SetFile(path.c_str());
        const xyz header(3582105.291L, 532589.731L, 5232754.805L);
        AprioriPosition(c, "ESBC", "10118M001", mjd(59025UL, 43200.0L), header);
        matrix<std::string> pt;
        matrix<xyz> pos, vel;
        matrix<mjd> eph;
        c.ReadCRDs(pt, pos, vel, eph);
    });
    return 0;
}
