// Satellite problem file (-sx), then the problem of its first satellite at
// the start of its first period, as ExcludeProblemSat asks.
#include "FuzzSupport.h"
#include "observations/SatCRX.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "problems.crx");
    orvofuzz::Run([&] {
        SatCRX s;
        s.SetFile(path);
        s.ReadFile();
        if (s.GetNSat() < 1) return;
        short problem = 0, action = 0;
        s.GetSatelliteProblem(s.sat(0), s.eph(0, SatCRX::FROM), problem, action);
    });
    return 0;
}
