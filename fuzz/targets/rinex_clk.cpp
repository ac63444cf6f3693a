// RINEX clock file of satellite clocks (-ec), whole or cut to a span of
// observations, then one clock on the day of the seed files, as the
// corrections ask for it.
#include "FuzzSupport.h"
#include "orbits/GNSSpClk.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "clock.clk");
    orvofuzz::Run([&] {
        GNSSpClk c;
        c.SetFile(path.c_str());
        // Odd sizes keep only an observation span of the day.
        if (size % 2 == 1) c.SetSpan(mjd(59025UL, 1800.0L), mjd(59025UL, 7200.0L));
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
