#pragma once
// UNB3 mapping functions: the Niell continued fraction with coefficients
// linear in height and cos(latitude).
#include "delays/gTropDelay.h"
#include "geodesy/flh.h"

class gMF_UNB3 {
public:
    long double ad = 0.0L, bd = 0.0L, cd = 0.0L;  // hydrostatic coefficients
    long double aw = 0.0L, bw = 0.0L, cw = 0.0L;  // wet coefficients

    /// Site setup from the geodetic latitude (radians) and ellipsoidal height
    /// (metres) of pos. Collins & Langley (1997), UNB3 (University of New
    /// Brunswick technical report 187).
    void SetAtmParams(const flh& pos);

    /// Writes F(ad,bd,cd,E) to td.mfdry and F(aw,bw,cw,E) to td.mfwet
    /// (MappingFraction), for elevation E in radians; exactly 1 at the zenith.
    void GetMappFunction(gTropDelay& td, long double E) const;
};
