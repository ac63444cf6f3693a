#include "reporting/PrintStaticSysBiases.h"

#include <iostream>

#include "driver/Console.h"
#include "numerics/MathConstants.h"
#include "reporting/FixedColumn.h"
#include "reporting/StaticPrecision.h"

namespace {

// Microseconds of clock per metre of range.
constexpr long double MicrosecondsPerMetre = 1.0e6L / SpeedOfLight_mps;

void BiasLine(const char* label, long double bias, long double prec)
{
    std::cout << label;
    FixedColumn(std::cout, bias, 12, 4);
    std::cout << " +- ";
    FixedColumn(std::cout, prec, 10, 4);
    std::cout << " m" << "   [";
    FixedColumn(std::cout, bias * MicrosecondsPerMetre, 12, 6);
    std::cout << " +- ";
    FixedColumn(std::cout, prec * MicrosecondsPerMetre, 10, 6);
    std::cout << " mics]\n";
}

}  // namespace

void PrintStaticSysBiases(const gCPosC& gc)
{
    if (gc.nDTsys == 0) return;
    ProgramSubSubSubTitle("GNSS INTER-SYSTEM CLOCK BIASES:", 2);
    // The epoch clock refers to the first system present (GPS, GLONASS,
    // Galileo), so a Galileo bias is against GPS whenever GPS takes part.
    for (int s = 1; s <= 2; ++s) {
        const long ix = gc.ixDTsys[s];
        if (ix < 0) continue;
        const char* label = (s == 1) ? "    GPS-GLN: " : (gc.isGPS ? "    GPS-GAL: " : "    GLN-GAL: ");
        BiasLine(label, gc.dtGNSS[s], StaticPrecision(gc.QxxAll(ix, ix), gc.s0apost));
    }
    std::cout << "\n";
}
