// RINEX 2 GLONASS navigation file (-er), then the first record's satellite
// integrated to its own epoch plus a quarter of an hour.
#include "FuzzSupport.h"
#include "orbits/GLNbEph.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "nav.20g");
    orvofuzz::Run([&] {
        GLNbEph n;
        n.SetFile(path.c_str());
        n.ReadFile();
        if (n.GetNSat() < 1) return;
        mjd t = n.GetMJD(0);
        t += 900.0L;
        mjd tindex = t;
        xyz rec(3582105.291L, 532589.731L, 5232754.805L);
        xyzt pos, vel;
        n.CalcSatPosition(n.GetData().sat(0), t, tindex, rec, pos, vel, 0);
    });
    return 0;
}
