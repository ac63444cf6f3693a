// orvo-simulate: writes a simulated data set with known truth for one
// station and one day, for testing the positioning program end to end.
#include <iostream>

#include "SimObservations.h"
#include "SimOptions.h"
#include "SimWriters.h"

int main(int argc, char** argv)
{
    const SimOptions o = ParseSimOptions(argc, argv);
    const SimData d = Simulate(o);
    const SimFileNames n = WriteAll(d);
    std::cout << "orvo-simulate: " << d.epochs.size() << " epochs, " << d.sats.size()
              << " satellites\n"
              << "  observations : " << n.obs << "\n"
              << "  orbits       : " << n.sp3 << "\n"
              << "  clocks       : " << n.clk << "\n";
    if (o.useGLN) std::cout << "  channels     : " << n.glnfc << "\n";
    std::cout << "  truth        : " << n.truth << "\n";
    return 0;
}
