#include "preprocessing/SetLinearCombinations.h"

#include <iostream>

#include "driver/Console.h"

void SetLinearCombinations(gCPosC& gc)
{
    RINEXData& d = gc.rnxd;
    ProgramSubSubTitle("SETTING LINEAR COMBINATION OF OBSERVATIONS:", 0);

    // A jump left in the phases would show as a cycle slip of a hundred
    // thousand cycles in every arc; it must go before L3, L4 and MW exist.
    if (gc.ifL3) {
        long nMSJumps = 0;
        d.CorrMSJumps(nMSJumps);
        std::cout << "  Correcting observations for MS jumps: " << nMSJumps << "\n";
    }

    std::cout << "  Observations linear combinations    :\n";
    if (gc.ifPc3) {
        d.SetLC_PC3();
        std::cout << "     P3[C1,P2/C7] Linear combination!\n";
    }
    if (gc.ifPp3) {
        d.SetLC_PP3();
        std::cout << "     P3[P1,P2/C7] Linear combination!\n";
    }
    if (gc.ifL3) {
        d.SetLC_L3();
        std::cout << "     L3[L1,L2/L7] Linear combination!\n";
        d.SetLC_L4();
        std::cout << "     L4[L1,L2/L7] Linear combination - cycle slip detection!\n";
        // The wide-lane code must be the one of the P3 in use, so that the
        // MW and P3 see the same code biases.
        if (gc.ifPc3) {
            d.SetLC_MW(true);
            std::cout << "     Melbourne-Wuebbena[L1,L2/L7,C1,P2/C7] Linear combination!\n";
        } else {
            d.SetLC_MW(false);
            std::cout << "     Melbourne-Wuebbena[L1,L2/L7,P1,P2/C7] Linear combination!\n";
        }
    }
    std::cout << "\n\n";
}
