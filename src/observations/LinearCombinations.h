#pragma once
// Dual-frequency linear combinations. Phases come in cycles and leave in
// metres; codes are metres. Each reads the current GLC coefficients, so
// GLC::LoadSystem must have been called for the satellite's constellation
// (GNSS_P3R alone always uses the GLONASS factors). The gnssobs forms are
// built from the gnssobs operators: a null operand of the final sum or
// difference gives a null result, and the result's flags are 0.
// Factors: Hofmann-Wellenhof, Lichtenegger, Wasle, GNSS (2008), ch. 7.2.
#include "observations/gnssobs.h"

/// Ionosphere-free phase (m): LCion1·lamb1·l1 - LCion2·lamb2·l2.
long double GNSS_L3(const long double& l1, const long double& l2);
/// Ionosphere-free phase (m), null when l1 or l2 is null.
gnssobs GNSS_L3(const gnssobs& l1, const gnssobs& l2);
/// Ionosphere-free code (m): LCion1·p1 - LCion2·p2.
long double GNSS_P3(const long double& p1, const long double& p2);
/// Ionosphere-free code (m), null when p1 or p2 is null.
gnssobs GNSS_P3(const gnssobs& p1, const gnssobs& p2);
/// Ionosphere-free code (m) with the GLONASS factors 2.53125 and 1.53125,
/// whatever GLC holds.
long double GNSS_P3R(const long double& p1, const long double& p2);
/// Geometry-free phase (m): lamb1·l1 - lamb2·l2 (first minus second).
long double GNSS_L4(const long double& l1, const long double& l2);
/// Geometry-free phase (m), null when l1 or l2 is null.
gnssobs GNSS_L4(const gnssobs& l1, const gnssobs& l2);
/// Geometry-free code (m): p2 - p1, the sign opposite to GNSS_L4 so that
/// both grow with the ionosphere.
long double GNSS_P4(const long double& p1, const long double& p2);
/// Geometry-free code (m), null when p1 or p2 is null.
gnssobs GNSS_P4(const gnssobs& p1, const gnssobs& p2);
/// Wide-lane phase (m): LCwl1·lamb1·l1 - LCwl2·lamb2·l2.
long double GNSS_L5(const long double& l1, const long double& l2);
/// Wide-lane phase (m), null when l1 or l2 is null.
gnssobs GNSS_L5(const gnssobs& l1, const gnssobs& l2);
/// Wide-lane code (m): LCwl1·p1 - LCwl2·p2.
long double GNSS_P5(const long double& p1, const long double& p2);
/// Wide-lane code (m), null when p1 or p2 is null.
gnssobs GNSS_P5(const gnssobs& p1, const gnssobs& p2);
/// Narrow-lane phase (m): LCnl1·lamb1·l1 + LCnl2·lamb2·l2.
long double GNSS_NLL(const long double& l1, const long double& l2);
/// Narrow-lane phase (m), null when l1 or l2 is null.
gnssobs GNSS_NLL(const gnssobs& l1, const gnssobs& l2);
/// Narrow-lane code (m): LCnl1·p1 + LCnl2·p2.
long double GNSS_NLP(const long double& p1, const long double& p2);
/// Narrow-lane code (m), null when p1 or p2 is null.
gnssobs GNSS_NLP(const gnssobs& p1, const gnssobs& p2);
/// Melbourne-Wübbena (m): GNSS_L5(l1,l2) - GNSS_NLP(p1,p2), the wide-lane
/// ambiguity times the wide-lane wavelength plus code noise and biases
/// (Melbourne 1985; Wübbena 1985).
long double GNSS_MW(const long double& l1, const long double& l2,
                    const long double& p1, const long double& p2);
/// Melbourne-Wübbena (m), null when any of the four is null.
gnssobs GNSS_MW(const gnssobs& l1, const gnssobs& l2,
                const gnssobs& p1, const gnssobs& p2);
/// Code minus phase on the first frequency (m): c1 - lamb1·l1.
long double GNSS_CL1(const long double& c1, const long double& l1);
/// Code-phase ionosphere-free mean on the first frequency (GRAPHIC, m):
/// c1/2 + lamb1·l1/2.
long double GNSS_CLI(const long double& c1, const long double& l1);
