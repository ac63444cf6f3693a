// SP3 precise orbit file (-ep), then one satellite at the middle epoch, as
// the corrections ask for it.
#include "FuzzSupport.h"
#include "orbits/GNSSpEph.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "orbit.sp3");
    orvofuzz::Run([&] {
        GNSSpEph e;
        e.SetFile(path.c_str());
        e.ReadFile();
        if (e.GetNEpoch() < 1 || e.GetNSat() < 1) return;
        mjd t = e.GetMJD(e.GetNEpoch() / 2);
        xyz rec(3582105.291L, 532589.731L, 5232754.805L);
        xyzt pos, vel;
        e.CalcSatPosition(static_cast<unsigned short>(e.GetSatList(0)), t, rec, pos, vel);
    });
    return 0;
}
