#include "reporting/PrintStaticVariances.h"

#include <cmath>
#include <iostream>

#include "reporting/FixedColumn.h"

namespace {

void Line(const char* label, long double std_mm)
{
    std::cout << label;
    FixedColumn(std::cout, std_mm, 15, 1);
    std::cout << " mm\n";
}

}  // namespace

void PrintStaticVariances(const gCPosC& gc)
{
    Line("  REF. STD. APRIORI                              : ", gc.sig0 * 1000.0L);
    Line("  REF. STD. APOSTERIORI                          : ", std::sqrt(gc.s0apost) * 1000.0L);
    if (gc.ifC1)
        Line("  REF. STD. APOSTERIORI - C1                     : ",
             std::sqrt(gc.s0apost_C1) * 1000.0L);
    if (gc.ifP1)
        Line("  REF. STD. APOSTERIORI - P1                     : ",
             std::sqrt(gc.s0apost_P1) * 1000.0L);
    if (gc.ifP2)
        Line("  REF. STD. APOSTERIORI - P2                     : ",
             std::sqrt(gc.s0apost_P2) * 1000.0L);
    if (gc.ifPc3)
        Line("  REF. STD. APOSTERIORI - Pc3                    : ",
             std::sqrt(gc.s0apost_Pc3) * 1000.0L);
    if (gc.ifPp3)
        Line("  REF. STD. APOSTERIORI - Pp3                    : ",
             std::sqrt(gc.s0apost_Pp3) * 1000.0L);
    if (gc.ifL3)
        Line("  REF. STD. APOSTERIORI - L3                     : ",
             std::sqrt(gc.s0apost_L3) * 1000.0L);

    std::cout << "  REFERENCE VARIANCE OF UNIT WEIGHT [GLOBAL TEST]: ";
    FixedColumn(std::cout, gc.s0apost / gc.sig0 / gc.sig0, 15, 2);
    std::cout << "         [SQRT]";
    FixedColumn(std::cout, std::sqrt(gc.s0apost) / gc.sig0, 10, 2);
    std::cout << "\n\n";
}
