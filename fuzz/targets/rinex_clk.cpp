// RINEX clock file of satellite clocks (-ec), then one clock on the day of
// the seed files, as the corrections ask for it.
#include "FuzzSupport.h"
#include "orbits/GNSSpClk.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "clock.clk");
    orvofuzz::Run([&] {
        GNSSpClk c;
        c.SetFile(path.c_str());
        c.ReadFile();
        if (c.GetNEpoch() < 1) return;
        mjd t(59025UL, 3600.0L);  // 2020-06-25 01:00
        c.SetEpochIndex(t);
        short prn = 5;
        long double dt = 0.0L;
        c.GetSatelliteClock(prn, t, dt);
    });
    return 0;
}
