// Earth rotation parameter file (-eo), then the pole tide at ESBC on the
// seed day, as the corrections ask for it.
#include "FuzzSupport.h"
#include "site/PoleTide.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = orvofuzz::WriteInput(data, size, "rotation.erp");
    orvofuzz::Run([&] {
        PoleTide p;
        p.SetFile(path.c_str());
        p.ReadFile();
        const mjd t(59025UL, 43200.0L);
        p.SetCalcEpoch(t);
        p.SetMeanPole();
        neu d;
        p.GetPoleTide(t, flh(0.9639L, 0.1476L, 60.0L), d);
    });
    return 0;
}
