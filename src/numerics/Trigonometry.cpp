#include "numerics/Trigonometry.h"

#include <cmath>

namespace trig {
namespace {

// π/2 = P1 + P2 + P3 to 2e-41: P1 and P2 carry 32 bits each, so that k·P1
// and k·P2 are exact for k < 2^32; P3 the next 64.
constexpr long double P1 = 0xc90fdaa2p-31L, P2 = 0x85a308d3p-65L, P3 = 0x98cc51701b839a25p-132L;
constexpr long double TwoOverPi = 0xa2f9836e4e44152ap-64L, PiOver4 = 0xc90fdaa22168c235p-64L;

// The remainder r of x less k·π/2, |r| <= π/4, and k mod 4. x - k·P1 is
// exact (the two lie within a factor 2 of each other for k != 0).
long double Reduce(long double x, int& quadrant)
{
    // lrint is one instruction; nearbyint saves and restores the
    // floating-point state around it, at the cost of a sine.
    const long n = std::lrint(x * TwoOverPi);
    const long double k = static_cast<long double>(n);
    quadrant = static_cast<int>(n & 3);
    return ((x - k * P1) - k * P2) - k * P3;
}

// sin(q·π/2 + r).
long double SineInQuadrant(long double r, int q)
{
    switch (q) {
    case 0: return std::sin(r);
    case 1: return std::cos(r);
    case 2: return -std::sin(r);
    default: return -std::cos(r);
    }
}

bool Direct(long double x) { return std::fabs(x) <= PiOver4 || !(std::fabs(x) <= MaxReduced_rad); }

}  // namespace

void SinCos(long double x, long double& s, long double& c)
{
    if (Direct(x)) {
        s = std::sin(x);
        c = std::cos(x);
        return;
    }
    int q = 0;
    const long double r = Reduce(x, q);
    const long double sr = std::sin(r), cr = std::cos(r);
    switch (q) {
    case 0: s = sr; c = cr; break;
    case 1: s = cr; c = -sr; break;
    case 2: s = -sr; c = -cr; break;
    default: s = -cr; c = sr; break;
    }
}

long double Sin(long double x)
{
    if (Direct(x)) return std::sin(x);
    int q = 0;
    const long double r = Reduce(x, q);
    return SineInQuadrant(r, q);
}

long double Cos(long double x)
{
    // cos x = sin(x + π/2): the same remainder one quadrant on.
    if (Direct(x)) return std::cos(x);
    int q = 0;
    const long double r = Reduce(x, q);
    return SineInQuadrant(r, (q + 1) & 3);
}

}  // namespace trig
