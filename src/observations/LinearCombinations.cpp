#include "observations/LinearCombinations.h"

#include "observations/GLC.h"
#include "observations/GLONASSc.h"

long double GNSS_L3(const long double& l1, const long double& l2)
{
    return GLC::LCion1 * GLC::lamb1 * l1 - GLC::LCion2 * GLC::lamb2 * l2;
}

gnssobs GNSS_L3(const gnssobs& l1, const gnssobs& l2)
{
    return (GLC::LCion1 * GLC::lamb1) * l1 - (GLC::LCion2 * GLC::lamb2) * l2;
}

long double GNSS_P3(const long double& p1, const long double& p2)
{
    return GLC::LCion1 * p1 - GLC::LCion2 * p2;
}

gnssobs GNSS_P3(const gnssobs& p1, const gnssobs& p2)
{
    return GLC::LCion1 * p1 - GLC::LCion2 * p2;
}

long double GNSS_P3R(const long double& p1, const long double& p2)
{
    return GLONASSc::LCion1 * p1 - GLONASSc::LCion2 * p2;
}

long double GNSS_L4(const long double& l1, const long double& l2)
{
    return GLC::lamb1 * l1 - GLC::lamb2 * l2;
}

gnssobs GNSS_L4(const gnssobs& l1, const gnssobs& l2)
{
    return GLC::lamb1 * l1 - GLC::lamb2 * l2;
}

long double GNSS_P4(const long double& p1, const long double& p2) { return p2 - p1; }

gnssobs GNSS_P4(const gnssobs& p1, const gnssobs& p2) { return p2 - p1; }

long double GNSS_L5(const long double& l1, const long double& l2)
{
    return GLC::LCwl1 * GLC::lamb1 * l1 - GLC::LCwl2 * GLC::lamb2 * l2;
}

gnssobs GNSS_L5(const gnssobs& l1, const gnssobs& l2)
{
    return (GLC::LCwl1 * GLC::lamb1) * l1 - (GLC::LCwl2 * GLC::lamb2) * l2;
}

long double GNSS_P5(const long double& p1, const long double& p2)
{
    return GLC::LCwl1 * p1 - GLC::LCwl2 * p2;
}

gnssobs GNSS_P5(const gnssobs& p1, const gnssobs& p2)
{
    return GLC::LCwl1 * p1 - GLC::LCwl2 * p2;
}

long double GNSS_NLL(const long double& l1, const long double& l2)
{
    return GLC::LCnl1 * GLC::lamb1 * l1 + GLC::LCnl2 * GLC::lamb2 * l2;
}

gnssobs GNSS_NLL(const gnssobs& l1, const gnssobs& l2)
{
    return (GLC::LCnl1 * GLC::lamb1) * l1 + (GLC::LCnl2 * GLC::lamb2) * l2;
}

long double GNSS_NLP(const long double& p1, const long double& p2)
{
    return GLC::LCnl1 * p1 + GLC::LCnl2 * p2;
}

gnssobs GNSS_NLP(const gnssobs& p1, const gnssobs& p2)
{
    return GLC::LCnl1 * p1 + GLC::LCnl2 * p2;
}

long double GNSS_MW(const long double& l1, const long double& l2,
                    const long double& p1, const long double& p2)
{
    return GNSS_L5(l1, l2) - GNSS_NLP(p1, p2);
}

gnssobs GNSS_MW(const gnssobs& l1, const gnssobs& l2,
                const gnssobs& p1, const gnssobs& p2)
{
    return GNSS_L5(l1, l2) - GNSS_NLP(p1, p2);
}

long double GNSS_CL1(const long double& c1, const long double& l1)
{
    return c1 - GLC::lamb1 * l1;
}

long double GNSS_CLI(const long double& c1, const long double& l1)
{
    return c1 / 2.0L + GLC::lamb1 * l1 / 2.0L;
}
