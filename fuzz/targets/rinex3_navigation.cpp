// RINEX 3 or 4 navigation file (-eg, -er, -ee with one mixed file): the
// GPS, Galileo and GLONASS readers in turn, each followed by its first
// record's satellite a quarter of an hour after its epoch.
#include "FuzzSupport.h"
#include "orbits/GLNbEph.h"
#include "orbits/GPSbEph.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "nav.rnx");
    const xyz rec(3582105.291L, 532589.731L, 5232754.805L);
    for (char sys : {'G', 'E'})
        orvofuzz::Run([&] {
            GPSbEph n;
            n.SetFile(path.c_str());
            n.SetSystem(sys);
            n.ReadFile();
            if (n.GetNSat() < 1) return;
            mjd t = n.GetMJD(0);
            t += 900.0L;
            mjd tindex = t;
            xyz r = rec;
            xyzt pos;
            n.CalcSatPosition(static_cast<unsigned short>(n.GetData().sat(0)), t, tindex, r, pos, nullptr, 0, 0);
        });
    orvofuzz::Run([&] {
        GLNbEph n;
        n.SetFile(path.c_str());
        n.ReadFile();
        if (n.GetNSat() < 1) return;
        mjd t = n.GetMJD(0);
        t += 900.0L;
        mjd tindex = t;
        xyz r = rec;
        xyzt pos, vel;
        n.CalcSatPosition(n.GetData().sat(0), t, tindex, r, pos, vel, 0);
    });
    return 0;
}
