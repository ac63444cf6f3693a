// orvo-simulate: writes a simulated data set with known truth for one
// station and one day, for testing the positioning program end to end, and
// compares a result of the program with that truth.
#include <iostream>
#include <string>

#include "SimCompare.h"
#include "SimObservations.h"
#include "SimOptions.h"
#include "SimWriters.h"
#include "numerics/ProgramError.h"

int main(int argc, char** argv)
{
    const std::string first = argc > 1 && argv[1] ? argv[1] : "";
    if (first == "--help") {
        PrintSimHelp();
        return 0;
    }
    if (first == "--compare") {
        // Truth and plot file are a must; the troposphere file is optional.
        if (argc != 4 && argc != 5)
            ProgramError("Orvo", "orvo-simulate --compare needs TRUTH PLOTFILE [TROPOFILE]");
        CompareWithTruth(argv[2], argv[3], argc == 5 ? argv[4] : "");
        return 0;
    }
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
