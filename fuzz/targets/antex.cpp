// ANTEX file (-pv), then the receiver antenna of ESBC and satellite G05 on
// its day, as ApplyATXVal selects them, with one pattern value.
#include "FuzzSupport.h"
#include "delays/antex.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "antennas.atx");
    orvofuzz::Run([&] {
        antex a;
        a.SetFile(path.c_str());
        a.ReadFile();
        const mjd t(59025UL, 0.0L);
        long double g1, g2, r1, r2, e1, e7;
        neu off;
        if (a.SetAntenna("ASH701945E_M    SCIS", "CR5200327016", t) || a.SetAntenna("ASH701945E_M    SCIS")) {
            a.GetAntennaOffset(off, 1);
            a.GetAntennaPCV(12.5L, 100.0L, g1, g2, r1, r2, e1, e7);
        }
        if (a.SetSatellite(5, t)) {
            a.GetAntennaOffset(off, 1);
            a.GetAntennaPCV(7.0L, 0.0L, g1, g2, r1, r2, e1, e7);
        }
    });
    return 0;
}
