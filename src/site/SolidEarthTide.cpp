#include "site/SolidEarthTide.h"

#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <utility>

#include "geodesy/LeapSecond.h"
#include "numerics/MathConstants.h"
#include "numerics/Trigonometry.h"

namespace {

constexpr int NDiurnal = 31, NLong = 5;
// One term of a band: the whole multipliers of S, H, P, ZNS and PS, and its
// four amplitudes (mm).
struct TideTerm {
    int m[5];
    long double amp[4];
};
constexpr long double DaySec = 86400.0L;
constexpr long double DaysPerCentury = 36525.0L;
constexpr long double J2000MJD = 51544.5L;
// TAI - GPS and TT - TAI (s): with GPS - UTC they give TT - UTC.
constexpr long double TAIminusGPS = 19.0L, TTminusTAI = 32.184L;

// Diurnal band (IERS Conventions 2010, ch. 7.1.1): radial in-phase,
// out-of-phase; transverse in-phase, out-of-phase.
constexpr TideTerm DATDIU[NDiurnal] = {
    {{-3, 0, 2, 0, 0}, {-0.01L, 0, 0, 0}},      {{-3, 2, 0, 0, 0}, {-0.01L, 0, 0, 0}},
    {{-2, 0, 1, -1, 0}, {-0.02L, 0, 0, 0}},     {{-2, 0, 1, 0, 0}, {-0.08L, 0, -0.01L, 0.01L}},
    {{-2, 2, -1, 0, 0}, {-0.02L, 0, 0, 0}},     {{-1, 0, 0, -1, 0}, {-0.1L, 0, 0, 0}},
    {{-1, 0, 0, 0, 0}, {-0.51L, 0, -0.02L, 0.03L}}, {{-1, 2, 0, 0, 0}, {0.01L, 0, 0, 0}},
    {{0, -2, 1, 0, 0}, {0.01L, 0, 0, 0}},       {{0, 0, -1, 0, 0}, {0.02L, 0, 0, 0}},
    {{0, 0, 1, 0, 0}, {0.06L, 0, 0, 0}},        {{0, 0, 1, 1, 0}, {0.01L, 0, 0, 0}},
    {{0, 2, -1, 0, 0}, {0.01L, 0, 0, 0}},       {{1, -3, 0, 0, 1}, {-0.06L, 0, 0, 0}},
    {{1, -2, 0, -1, 0}, {0.01L, 0, 0, 0}},      {{1, -2, 0, 0, 0}, {-1.23L, -0.07L, 0.06L, 0.01L}},
    {{1, -1, 0, 0, -1}, {0.02L, 0, 0, 0}},      {{1, -1, 0, 0, 1}, {0.04L, 0, 0, 0}},
    {{1, 0, 0, -1, 0}, {-0.22L, 0.01L, 0.01L, 0}}, {{1, 0, 0, 0, 0}, {12, -0.8L, -0.67L, -0.03L}},
    {{1, 0, 0, 1, 0}, {1.73L, -0.12L, -0.1L, 0}}, {{1, 0, 0, 2, 0}, {-0.04L, 0, 0, 0}},
    {{1, 1, 0, 0, -1}, {-0.5L, -0.01L, 0.03L, 0}}, {{1, 1, 0, 0, 1}, {0.01L, 0, 0, 0}},
    {{0, 1, 0, 1, -1}, {-0.01L, 0, 0, 0}},      {{1, 2, -2, 0, 0}, {-0.01L, 0, 0, 0}},
    {{1, 2, 0, 0, 0}, {-0.11L, 0.01L, 0.01L, 0}}, {{2, -2, 1, 0, 0}, {-0.01L, 0, 0, 0}},
    {{2, 0, -1, 0, 0}, {-0.02L, 0, 0, 0}},      {{3, 0, 0, 0, 0}, {0, 0, 0, 0}},
    {{3, 0, 0, 1, 0}, {0, 0, 0, 0}}};

// Long-period band (same source): radial in-phase, transverse in-phase,
// radial out-of-phase, transverse out-of-phase.
constexpr TideTerm DATLON[NLong] = {
    {{0, 0, 0, 1, 0}, {0.47L, 0.23L, 0.16L, 0.07L}},     {{0, 2, 0, 0, 0}, {-0.2L, -0.12L, -0.11L, -0.05L}},
    {{1, 0, -1, 0, 0}, {-0.11L, -0.08L, -0.09L, -0.04L}}, {{2, 0, 0, 0, 0}, {-0.13L, -0.11L, -0.15L, -0.07L}},
    {{2, 0, 0, 1, 0}, {-0.05L, -0.05L, -0.06L, -0.03L}}};

// The argument multipliers of both bands lie from -3 to 3.
constexpr int MaxMultiple = 3;
template <std::size_t N>
constexpr bool SmallMultipliers(const TideTerm (&terms)[N])
{
    for (const TideTerm& t : terms)
        for (int k : t.m)
            if (k < -MaxMultiple || k > MaxMultiple) return false;
    return true;
}
static_assert(SmallMultipliers(DATDIU) && SmallMultipliers(DATLON), "multiplier out of range");

// A point on the unit circle, (cos a, sin a): the sum of two angles is the
// product of their points, which costs four products where a sine and a
// cosine cost two series and a reduction.
struct Turn {
    long double c = 1.0L, s = 0.0L;
};
Turn operator*(const Turn& a, const Turn& b) { return {a.c * b.c - a.s * b.s, a.s * b.c + a.c * b.s}; }
Turn TurnOf(long double rad)
{
    Turn t;
    trig::SinCos(rad, t.s, t.c);
    return t;
}

// The multiples -3 to 3 of an angle.
class Multiples {
public:
    explicit Multiples(long double rad)
    {
        const Turn one = TurnOf(rad);
        at_[MaxMultiple + 1] = one;
        at_[MaxMultiple + 2] = one * one;
        at_[MaxMultiple + 3] = at_[MaxMultiple + 2] * one;
        for (int m = 1; m <= MaxMultiple; ++m) at_[MaxMultiple - m] = {at_[MaxMultiple + m].c, -at_[MaxMultiple + m].s};
    }
    const Turn& operator[](int m) const { return at_[MaxMultiple + m]; }

private:
    Turn at_[2 * MaxMultiple + 1];
};

}  // namespace

SolidEarthTide::SolidEarthTide()
    : RSUN(0.0L), RMON(0.0L), RSTA(0.0L), H20(0.6078L), L20(0.0847L), H3(0.292L), L3(0.015L),
      MASS_RATIO_SUN(332946.0482L), MASS_RATIO_MOON(0.0123000371L), RE(6378136.6L), SINPHI(0.0L),
      COSPHI(1.0L), SINLA(0.0L), COSLA(1.0L),
      FAC2SUN(0.0L), FAC2MON(0.0L), FAC3SUN(0.0L), FAC3MON(0.0L), T(0.0L), LON(0.0L)
{
}

void SolidEarthTide::SetSunPosition(const xyz& Pos, long double Mag) { XSUN = Pos; RSUN = Mag; }

void SolidEarthTide::SetMoonPosition(const xyz& Pos, long double Mag) { XMON = Pos; RMON = Mag; }

void SolidEarthTide::SetStaPosition(const xyz& Pos, long double Mag)
{
    XSTA = Pos;
    RSTA = Mag;
    SINPHI = Pos.z;
    COSPHI = std::hypot(Pos.x, Pos.y);
    LON = std::atan2(Pos.y, Pos.x);
    // On the rotation axis the longitude is undefined; 0 is taken, as
    // atan2(0, 0) does for LON. Every term is a smooth field on the
    // sphere, so the Earth-fixed result is the limit of nearby sites
    // whatever the longitude chosen.
    if (COSPHI > 0.0L) {
        SINLA = Pos.y / COSPHI;
        COSLA = Pos.x / COSPHI;
    } else {
        SINLA = 0.0L;
        COSLA = 1.0L;
    }
}

xyz SolidEarthTide::ToEarthFixed(long double DN, long double DE, long double DR) const
{
    return xyz(DR * COSLA * COSPHI - DE * SINLA - DN * SINPHI * COSLA,
               DR * SINLA * COSPHI + DE * COSLA - DN * SINPHI * SINLA, DR * SINPHI + DN * COSPHI);
}

void SolidEarthTide::GetDisplacement(const mjd& eph, xyz& DXTIDE)
{
    const long double SCSUN = XSUN * XSTA, SCMON = XMON * XSTA;
    const long double lat = 1.0L - 1.5L * COSPHI * COSPHI;
    const long double H2 = H20 - 0.0006L * lat, L2 = L20 + 0.0002L * lat;
    const long double rs = RE / RSUN, rm = RE / RMON;
    FAC2SUN = MASS_RATIO_SUN * RE * rs * rs * rs;
    FAC2MON = MASS_RATIO_MOON * RE * rm * rm * rm;
    FAC3SUN = FAC2SUN * rs;
    FAC3MON = FAC2MON * rm;

    auto degree23 = [&](const xyz& B, long double SC, long double F2, long double F3) {
        const long double P2 = 3.0L * (H2 / 2.0L - L2) * SC * SC - H2 / 2.0L;
        const long double P3 = 2.5L * (H3 - 3.0L * L3) * SC * SC * SC + 1.5L * (L3 - H3) * SC;
        const long double X2 = 3.0L * L2 * SC, X3 = 1.5L * L3 * (5.0L * SC * SC - 1.0L);
        return F2 * (X2 * B + P2 * XSTA) + F3 * (X3 * B + P3 * XSTA);
    };
    DXTIDE = degree23(XSUN, SCSUN, FAC2SUN, FAC3SUN) + degree23(XMON, SCMON, FAC2MON, FAC3MON);

    DXTIDE += ST1IDIU();
    DXTIDE += ST1ISEM();
    DXTIDE += ST1L1();

    const long double DTT = LeapSecond(eph) + TAIminusGPS + TTminusTAI;
    T = ((static_cast<long double>(eph.GetMJDay()) - J2000MJD) + eph.GetSecond() / DaySec) / DaysPerCentury
      + DTT / (DaySec * DaysPerCentury);
    xyz diurnal, longPeriod;
    Step2(eph, diurnal, longPeriod);
    DXTIDE += diurnal;
    DXTIDE += longPeriod;
}

xyz SolidEarthTide::ST1IDIU() const
{
    const long double DHI = -0.0025L, DLI = -0.0007L;
    const long double COS2PHI = COSPHI * COSPHI - SINPHI * SINPHI;
    long double DR = 0.0L, DN = 0.0L, DE = 0.0L;
    for (const auto& [B, F] : {std::pair<xyz, long double>{XSUN, FAC2SUN}, {XMON, FAC2MON}}) {
        const long double a = B.z * (B.x * SINLA - B.y * COSLA), b = B.z * (B.x * COSLA + B.y * SINLA);
        DR += -3.0L * DHI * SINPHI * COSPHI * F * a;
        DN += -3.0L * DLI * COS2PHI * F * a;
        DE += -3.0L * DLI * SINPHI * F * b;
    }
    return ToEarthFixed(DN, DE, DR);
}

xyz SolidEarthTide::ST1ISEM() const
{
    const long double DHI = -0.0022L, DLI = -0.0007L;
    const long double C2 = COSLA * COSLA - SINLA * SINLA, S2 = 2.0L * COSLA * SINLA;
    long double DR = 0.0L, DN = 0.0L, DE = 0.0L;
    for (const auto& [B, F] : {std::pair<xyz, long double>{XSUN, FAC2SUN}, {XMON, FAC2MON}}) {
        const long double XY = B.x * B.x - B.y * B.y, ZZ = B.x * B.y;
        DR += -0.75L * DHI * COSPHI * COSPHI * F * (XY * S2 - 2.0L * ZZ * C2);
        DN += 1.5L * DLI * SINPHI * COSPHI * F * (XY * S2 - 2.0L * ZZ * C2);
        DE += -1.5L * DLI * COSPHI * F * (XY * C2 + 2.0L * ZZ * S2);
    }
    return ToEarthFixed(DN, DE, DR);
}

xyz SolidEarthTide::ST1L1() const
{
    const long double L1D = 0.0012L, L1SD = 0.0024L;
    const long double C2 = COSLA * COSLA - SINLA * SINLA, S2 = 2.0L * COSLA * SINLA;
    const long double S2PHI = SINPHI * SINPHI, C2PHI = COSPHI * COSPHI;
    long double DN = 0.0L, DE = 0.0L;
    for (const auto& [B, F] : {std::pair<xyz, long double>{XSUN, FAC2SUN}, {XMON, FAC2MON}}) {
        const long double XY = B.x * B.x - B.y * B.y, ZZ = B.x * B.y;
        DN += -L1D * S2PHI * F * B.z * (B.x * COSLA + B.y * SINLA)
            - (L1SD / 2.0L) * SINPHI * COSPHI * F * (XY * C2 + 2.0L * ZZ * S2);
        DE += L1D * SINPHI * (C2PHI - S2PHI) * F * B.z * (B.x * SINLA - B.y * COSLA)
            - (L1SD / 2.0L) * S2PHI * COSPHI * F * (XY * S2 - 2.0L * ZZ * C2);
    }
    return ToEarthFixed(3.0L * DN, 3.0L * DE, 0.0L);
}

void SolidEarthTide::FundamentalArguments(long double FHR, long double& S, long double& TAU, long double& H,
                                          long double& P, long double& ZNS, long double& PS) const
{
    const long double T2 = T * T, T3 = T2 * T, T4 = T3 * T;
    S = 218.31664563L + 481267.88194L * T - 0.0014663889L * T2 + 0.00000185139L * T3;
    TAU = 280.4606184L + 15.0L * FHR + 36000.7700536L * T + 0.00038793L * T2 - 0.0000000258L * T3 - S;
    S += 1.396971278L * T + 0.000308889L * T2 + 0.000000021L * T3 + 0.000000007L * T4;
    H = 280.46645L + 36000.7697489L * T + 0.00030322222L * T2 + 0.00000002L * T3 - 0.00000000654L * T4;
    P = 83.35324312L + 4069.01363525L * T - 0.01032172222L * T2 - 0.0000124991L * T3 + 0.00000005263L * T4;
    ZNS = 234.95544499L + 1934.13626197L * T - 0.00207561111L * T2 - 0.00000213944L * T3 + 0.0000000165L * T4;
    PS = 282.93734098L + 1.71945766667L * T + 0.00045688889L * T2 - 0.00000001778L * T3 - 0.00000000334L * T4;
    for (long double* a : {&S, &TAU, &H, &P, &ZNS, &PS}) *a = std::fmod(*a, 360.0L);
}

void SolidEarthTide::Step2(const mjd& eph, xyz& diurnal, xyz& longPeriod) const
{
    long double S, TAU, H, P, ZNS, PS;
    FundamentalArguments(eph.GetSecond() / 3600.0L, S, TAU, H, P, ZNS, PS);
    // The 36 arguments are sums of whole multiples of five angles: six
    // sines and cosines an epoch instead of 36. The products differ from
    // direct sines by a few units of the last place, 1e-20 m of a term of
    // at most 12 mm.
    const Multiples s(S * Deg2Rad), h(H * Deg2Rad), p(P * Deg2Rad), n(ZNS * Deg2Rad), ps(PS * Deg2Rad);
    const auto turn = [&](Turn t, const int* m) {
        if (m[0] != 0) t = t * s[m[0]];
        if (m[1] != 0) t = t * h[m[1]];
        if (m[2] != 0) t = t * p[m[2]];
        if (m[3] != 0) t = t * n[m[3]];
        if (m[4] != 0) t = t * ps[m[4]];
        return t;
    };

    const Turn local = TurnOf(TAU * Deg2Rad + LON);
    const long double C2PHI = COSPHI * COSPHI - SINPHI * SINPHI;
    diurnal = xyz();
    for (const TideTerm& term : DATDIU) {
        const long double* const c = term.amp;
        const Turn a = turn(local, term.m);
        const long double DR = 2.0L * SINPHI * COSPHI * (c[0] * a.s + c[1] * a.c);
        const long double DN = C2PHI * (c[2] * a.s + c[3] * a.c);
        const long double DE = SINPHI * (c[2] * a.c - c[3] * a.s);
        diurnal += ToEarthFixed(DN, DE, DR);
    }
    diurnal /= 1000.0L;

    longPeriod = xyz();
    for (const TideTerm& term : DATLON) {
        const long double* const c = term.amp;
        const Turn a = turn(Turn{}, term.m);
        const long double DR = ((3.0L * SINPHI * SINPHI - 1.0L) / 2.0L) * (c[0] * a.c + c[2] * a.s);
        const long double DN = 2.0L * COSPHI * SINPHI * (c[1] * a.c + c[3] * a.s);
        longPeriod += ToEarthFixed(DN, 0.0L, DR);
    }
    longPeriod /= 1000.0L;
}
