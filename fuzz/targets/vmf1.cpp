// VMF1 series file (-vm), as the zenith delay model reads it: the series of
// the first point, evaluated at its first epoch.
#include "FuzzSupport.h"
#include "delays/gTM_VMF1.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "series.vmf1");
    orvofuzz::Run([&] {
        gTM_VMF1 v;
        v.SetFile(path.c_str());
        v.ReadFile();
        if (v.npts < 1) return;
        v.SetPoint(v.pt(0).c_str());
        const long double t = v.ephs(0, 0);
        if (!(t > 15020.0L && t < 88069.0L)) return;  // a day mjd can hold
        const unsigned long day = static_cast<unsigned long>(t);
        gTropDelay td;
        v.GetZenithDelay(td, mjd(day, (t - day) * 86400.0L));
    });
    return 0;
}
