#include "numerics/Interpolation.h"

long double SetP(long double x, long double x1, long double x2) { return (x2 - x) / (x2 - x1); }

long double SetXN(long double x, long double x1, long double x2) { return (x - x1) / (x2 - x1); }

long double LinearInterpolate(long double p1, long double y1, long double p2, long double y2)
{
    return p1 * y1 + p2 * y2;
}

long double LinearInterpolate(long double x, long double x1, long double x2, long double y1,
                              long double y2)
{
    const long double p = SetP(x, x1, x2);
    return p * y1 + (1.0L - p) * y2;
}

long double BiLinearInterpolate(long double x, long double y, long double x1, long double x2,
                                long double y1, long double y2, long double z11, long double z21,
                                long double z22, long double z12)
{
    const long double p = SetP(x, x1, x2);
    const long double zi1 = p * z11 + (1.0L - p) * z21;
    const long double zi2 = p * z12 + (1.0L - p) * z22;
    const long double q = SetP(y, y1, y2);
    return q * zi1 + (1.0L - q) * zi2;
}

long double QuadraticInterpolate(long double x, long double x0, long double x1, long double x2,
                                 long double y0, long double y1, long double y2)
{
    const long double l0 = (x - x1) * (x - x2) / ((x0 - x1) * (x0 - x2));
    const long double l1 = (x - x0) * (x - x2) / ((x1 - x0) * (x1 - x2));
    const long double l2 = (x - x0) * (x - x1) / ((x2 - x0) * (x2 - x1));
    return l0 * y0 + l1 * y1 + l2 * y2;
}

long double CubicInterpolate(long double x, long double x0, long double x1, long double x2,
                             long double x3, long double y0, long double y1, long double y2,
                             long double y3)
{
    const long double l0 = (x - x1) * (x - x2) * (x - x3) / ((x0 - x1) * (x0 - x2) * (x0 - x3));
    const long double l1 = (x - x0) * (x - x2) * (x - x3) / ((x1 - x0) * (x1 - x2) * (x1 - x3));
    const long double l2 = (x - x0) * (x - x1) * (x - x3) / ((x2 - x0) * (x2 - x1) * (x2 - x3));
    const long double l3 = (x - x0) * (x - x1) * (x - x2) / ((x3 - x0) * (x3 - x1) * (x3 - x2));
    return l0 * y0 + l1 * y1 + l2 * y2 + l3 * y3;
}

void SetP(long double x0, long double x1, long double x2, long double x3, long double y0,
          long double y1, long double y2, long double y3, long double& p0, long double& p1,
          long double& p2, long double& p3)
{
    const long double f0 = y1;
    const long double f1 = y2;
    const long double f0c = (y2 - y0) / (x2 - x0);
    const long double f1c = (y3 - y1) / (x3 - x1);
    p0 = 2.0L * f0 - 2.0L * f1 + f0c + f1c;
    p1 = -3.0L * f0 + 3.0L * f1 - 2.0L * f0c - f1c;
    p2 = f0c;
    p3 = f0;
}

long double CubicInterpolate(long double x, long double p0, long double p1, long double p2,
                             long double p3)
{
    return ((p0 * x + p1) * x + p2) * x + p3;
}
