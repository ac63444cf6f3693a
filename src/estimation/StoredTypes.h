#pragma once
// The observation types as the static adjustment left them for the passes
// after it: per record the misclosure, the used and the rejection flag,
// and per system the base weight.
#include <array>

#include "driver/gCPosC.h"

/// One observation type's stored state.
struct StoredType {
    bool on;  // switched on, in the header, and stored for every record
    matrix<long double>& f;
    matrix<bool>& used;
    matrix<bool>& rejected;
    bool dcb;                  // code bias unknowns of this type
    matrix<long int>& ixdcb;   // their columns by satellite list position
    long double p0[3];         // base weight of GPS, GLONASS, Galileo
};

/// C1, P1, P2, P3 from C1, P3 from P1 and L3, in that order. A type whose
/// arrays do not cover every record of the store counts as off.
inline std::array<StoredType, 6> StoredTypes(gCPosC& gc)
{
    const RINEXHeader& h = gc.rnxh;
    const long n = gc.rnxd.nsatall;
    auto on = [n](bool sw, const matrix<long double>& f, const matrix<bool>& o,
                  const matrix<bool>& x) {
        return sw && f.NRow() >= n && o.NRow() >= n && x.NRow() >= n;
    };
    return {{
        {on(gc.ifC1 && h.iC1, gc.fc1, gc.ifOc1, gc.ifXc1), gc.fc1, gc.ifOc1, gc.ifXc1, gc.isdcbC1,
         gc.ixdcbC1, {gc.p0C, gc.p0C, gc.p0C}},
        {on(gc.ifP1 && h.iP1, gc.fp1, gc.ifOp1, gc.ifXp1), gc.fp1, gc.ifOp1, gc.ifXp1, gc.isdcbP1,
         gc.ixdcbP1, {gc.p0P, gc.p0P, gc.p0P}},
        {on(gc.ifP2 && h.iP2, gc.fp2, gc.ifOp2, gc.ifXp2), gc.fp2, gc.ifOp2, gc.ifXp2, gc.isdcbP2,
         gc.ixdcbP2, {gc.p0P, gc.p0P, gc.p0P}},
        {on(gc.ifPc3 && h.iPC3, gc.fc3, gc.ifOc3, gc.ifXc3), gc.fc3, gc.ifOc3, gc.ifXc3,
         gc.isdcbPc3, gc.ixdcbPc3, {gc.p0Pc3G, gc.p0Pc3R, gc.p0Pc3E}},
        {on(gc.ifPp3 && h.iPP3, gc.fp3, gc.ifOp3, gc.ifXp3), gc.fp3, gc.ifOp3, gc.ifXp3,
         gc.isdcbPp3, gc.ixdcbPp3, {gc.p0Pp3G, gc.p0Pp3R, gc.p0Pp3E}},
        {on(gc.ifL3 && h.iL3, gc.fl3, gc.ifOl3, gc.ifXl3), gc.fl3, gc.ifOl3, gc.ifXl3, false,
         gc.ixdcbC1, {gc.p0L3G, gc.p0L3R, gc.p0L3E}},
    }};
}
