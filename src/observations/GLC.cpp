#include "observations/GLC.h"

#include <cmath>

namespace GLC {

bool LoadSystem(short sat)
{
    if (sat >= 0 && sat <= 99) {
        LCion1 = GPSc::LCion1;  LCion2 = GPSc::LCion2;
        LCwl1 = GPSc::LCwl1;    LCwl2 = GPSc::LCwl2;
        LCnl1 = GPSc::LCnl1;    LCnl2 = GPSc::LCnl2;
        lamb1 = GPSc::lamb1;    lamb2 = GPSc::lamb2;
        lamb5 = GPSc::lamb5;    alpha = GPSc::alpha;
        return true;
    }
    if (sat >= 101 && sat <= 199) {
        const long row = sat - 101;
        // An unset row holds zeros: loading it would turn every phase
        // combination into 0 or a division by zero.
        if (row >= GLONASSc::NSlots || std::fabs(GLONASSc::lamb(row, 0)) < 0.01L
            || std::fabs(GLONASSc::lamb(row, 1)) < 0.01L)
            return false;
        LCion1 = GLONASSc::LCion1;  LCion2 = GLONASSc::LCion2;
        LCwl1 = GLONASSc::LCwl1;    LCwl2 = GLONASSc::LCwl2;
        LCnl1 = GLONASSc::LCnl1;    LCnl2 = GLONASSc::LCnl2;
        lamb1 = GLONASSc::lamb(row, 0);
        lamb2 = GLONASSc::lamb(row, 1);
        alpha = GLONASSc::alpha;
        return true;
    }
    if (sat >= 201 && sat <= 299) {
        LCion1 = GALILEOc::LCion1;  LCion2 = GALILEOc::LCion2;
        LCwl1 = GALILEOc::LCwl1;    LCwl2 = GALILEOc::LCwl2;
        LCnl1 = GALILEOc::LCnl1;    LCnl2 = GALILEOc::LCnl2;
        lamb1 = GALILEOc::lamb1;    lamb2 = GALILEOc::lamb2;
        lamb5 = GALILEOc::lamb5;    lamb8 = GALILEOc::lamb8;
        alpha = GALILEOc::alpha;
        return true;
    }
    return false;
}

}  // namespace GLC
