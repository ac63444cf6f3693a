// RINEX GPS (or Galileo) navigation file (-eg, -ee), then the first
// record's satellite a quarter of an hour after its epoch.
#include "FuzzSupport.h"
#include "orbits/GPSbEph.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "nav.20n");
    orvofuzz::Run([&] {
        GPSbEph n;
        n.SetFile(path.c_str());
        n.ReadFile();
        if (n.GetNSat() < 1) return;
        mjd t = n.GetMJD(0);
        t += 900.0L;
        mjd tindex = t;
        xyz rec(3582105.291L, 532589.731L, 5232754.805L);
        xyzt pos;
        n.CalcSatPosition(static_cast<unsigned short>(n.GetData().sat(0)), t, tindex, rec, pos,
                          nullptr, 0, 0);
    });
    return 0;
}
