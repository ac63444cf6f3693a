#include "preprocessing/ApplyATXVal.h"

#include <cmath>
#include <iomanip>
#include <iostream>
#include <set>
#include <string>

#include "driver/Console.h"
#include "geodesy/CoordinateTransforms.h"
#include "numerics/MathConstants.h"
#include "numerics/ProgramError.h"
#include "numerics/Trigonometry.h"
#include "observations/GLC.h"
#include "observations/SatelliteSystem.h"

namespace {

const char* const Prog = "Orvo";

// Offsets (m) of the six carriers of the current ANTEX record, in the
// order of the frequency numbers: G01, G02, R01, R02, E01, E07.
struct CarrierOffsets {
    neu pc[6];
};

// Variations (m) of the six carriers at one direction.
struct CarrierVariations {
    long double v[6] = {0.0L, 0.0L, 0.0L, 0.0L, 0.0L, 0.0L};
};

// Index of the first carrier of a system in the six-carrier tables.
int FirstCarrier(SatSystem s) { return s == SysGPS ? 0 : s == SysGLN ? 2 : 4; }

bool HasGeometry(const gCPosC& gc, long k)
{
    return !(std::fabs(gc.AZM(k)) < ApplyATXValns::NoGeometry_rad
             && std::fabs(gc.ELV(k)) < ApplyATXValns::NoGeometry_rad);
}

CarrierVariations Variations(gCPosC& gc, long double zen_deg, long double azm_deg)
{
    CarrierVariations c;
    gc.atx.GetAntennaPCV(zen_deg, azm_deg, c.v[0], c.v[1], c.v[2], c.v[3], c.v[4], c.v[5]);
    return c;
}

// Adds `v` to the non-null value of record k of a type the header holds.
void AddIfPresent(matrix<gnssobs>& m, bool inHeader, long k, long double v)
{
    if (inHeader && k < m.NRow() && !m(k).IsNull()) m(k) += v;
}

// Shifts the codes of record k by atxL1, atxL2 (m) and its phases by the
// same in cycles. A GLONASS satellite without a frequency channel has no
// wavelength: its phase never enters a combination, so only its codes move.
void ShiftRecord(gCPosC& gc, long k, short sat, long double atxL1, long double atxL2)
{
    RINEXData& d = gc.rnxd;
    const RINEXHeader& h = gc.rnxh;
    const bool galileo = SystemOf(sat) == SysGAL;
    AddIfPresent(d.C1, h.HasC1(), k, atxL1);
    AddIfPresent(d.P1, h.HasP1(), k, atxL1);
    if (galileo)
        AddIfPresent(d.C7, h.HasC7(), k, atxL2);
    else
        AddIfPresent(d.P2, h.HasP2(), k, atxL2);
    if (!GLC::LoadSystem(sat)) return;
    AddIfPresent(d.L1, h.HasL1(), k, atxL1 / GLC::lamb1);
    if (galileo)
        AddIfPresent(d.L7, h.HasL7(), k, atxL2 / GLC::lamb2);
    else
        AddIfPresent(d.L2, h.HasL2(), k, atxL2 / GLC::lamb2);
}

void PrintOffsets(const char* label, const neu& a, const neu& b)
{
    std::cout << label << a << b << "\n";
}

// Receiver part; false when the antenna is not in the file.
bool CorrectReceiver(gCPosC& gc)
{
    const RINEXData& d = gc.rnxd;
    if (d.GetNEpoch() < 1) return false;
    const mjd first = d.epoch(0);
    if (gc.atx.SetAntenna(gc.rnxh.anttype.c_str(), gc.rnxh.antnumb.c_str(), first)) {
        std::cout << "  GNSS antenna match criterium: TYPE and SERIAL and DATE VALIDITY\n";
    } else if (gc.atx.SetAntenna(gc.rnxh.anttype.c_str())) {
        std::cout << "  GNSS antenna match criterium: TYPE [and DATE VALIDITY]\n";
    } else {
        ProgramWarning(Prog, "RECEIVER ANTENNA -" + gc.rnxh.anttype
                                 + "- NOT FOUND IN ANTEX FILE - NO OFFSET AND VARIATIONS APPLED!");
        std::cout << "   NOT FOUND IN ANTEX FILE -> SETTING ALL PARAMETERS TO 0.0\n";
        return false;
    }

    CarrierOffsets off;
    for (short f = 0; f < 6; ++f) gc.atx.GetAntennaOffset(off.pc[f], f);
    const int nDecNE = neuns::NDecNE, nDecU = neuns::NDecU, widthNE = neuns::WidthNE,
              widthU = neuns::WidthU;
    const long double unit = neuns::Unit;
    neuns::NDecNE = neuns::NDecU = 2;
    neuns::WidthNE = neuns::WidthU = 8;
    neuns::Unit = 1000.0L;
    PrintOffsets("     GPS carriers [L1/L2]    [NEU][mm]:", off.pc[0], off.pc[1]);
    PrintOffsets("     GLONASS carriers [L1/L2][NEU][mm]:", off.pc[2], off.pc[3]);
    PrintOffsets("     GALILEO carriers [L1/L7][NEU][mm]:", off.pc[4], off.pc[5]);
    neuns::NDecNE = nDecNE;
    neuns::NDecU = nDecU;
    neuns::WidthNE = widthNE;
    neuns::WidthU = widthU;
    neuns::Unit = unit;
    std::cout << "  Reduction to Antenna Reference Point (ARP)!\n";

    for (long k = 0; k < d.GetNObs(); ++k) {
        if (!HasGeometry(gc, k)) continue;
        const short sat = d.sat(k);
        const SatSystem sys = SystemOf(sat);
        if (!gc.UsesSystem(sat)) continue;
        const long double elv = gc.ELV(k), azm = gc.AZM(k);
        long double azm_deg = azm * Rad2Deg;
        if (gc.isAzmOffAtx) {
            azm_deg += gc.AzmOffAtx;
            if (azm_deg < 0.0L) azm_deg += 360.0L;
            if (azm_deg > 360.0L) azm_deg -= 360.0L;
        }
        const CarrierVariations pcv = Variations(gc, 90.0L - elv * Rad2Deg, azm_deg);
        const int c1 = FirstCarrier(sys);
        const neu& o1 = off.pc[c1];
        const neu& o2 = off.pc[c1 + 1];
        // Line of sight in east, north, up.
        const long double x = trig::Sin(azm) * trig::Cos(elv), y = trig::Cos(azm) * trig::Cos(elv),
                          z = trig::Sin(elv);
        const long double atxL1 = o1.e * x + o1.n * y + o1.u * z - pcv.v[c1];
        const long double atxL2 = o2.e * x + o2.n * y + o2.u * z - pcv.v[c1 + 1];
        if (gc.isPRCorr && k < gc.prcAtx.NRow()) gc.prcAtx(k) = atxL1;
        ShiftRecord(gc, k, sat, atxL1, atxL2);
    }
    return true;
}

bool OffsetFromNavigation(const gCPosC& gc, SatSystem s)
{
    return (s == SysGPS && gc.isGPSnav) || (s == SysGLN && gc.isGLNnav)
           || (s == SysGAL && gc.isGALnav);
}

void CorrectSatellites(gCPosC& gc)
{
    namespace ns = ApplyATXValns;
    std::cout << "  GNSS satellite phase center offset  :";
    const RINEXData& d = gc.rnxd;
    // A satellite without a record would report at every one of its
    // observations; one line and one warning per satellite say the same.
    std::set<short> missing;
    const short printWarns = antexns::PrintWarns;
    long k = 0;
    for (long i = 0; i < d.GetNEpoch(); ++i) {
        const xyz posSun = gc.posSunUnit(i) * gc.SunMag(i);
        const mjd eph = d.epoch(i);
        for (long j = 0; j < d.nsat(i); ++j, ++k) {
            const short sat = d.sat(k);
            const SatSystem sys = SystemOf(sat);
            if (!gc.OKSAT(k) || !HasGeometry(gc, k) || !gc.UsesSystem(sat)) continue;
            const xyzt satPos = gc.SatellitePosition(k);
            const long double satDist = satPos.GetLength();
            if (satDist < ns::MinSatDistance_m) continue;
            const long double nadir_deg = std::asin(trig::Cos(gc.ELV(k)) * gc.RecMag / satDist) * Rad2Deg;
            const bool reported = missing.count(sat) > 0;
            if (reported) antexns::PrintWarns = 0;
            const bool found = gc.atx.SetSatellite(sat, eph);
            antexns::PrintWarns = printWarns;
            if (!found && !reported) {
                missing.insert(sat);
                std::cout << "\n    Satellite: " << std::setw(4) << sat << "    epoch: " << eph
                          << "     -> NO PCV INFORMATION FOUND";
            }
            const CarrierVariations pcv = Variations(gc, nadir_deg, 0.0L);
            const int c1 = FirstCarrier(sys);
            neu off;
            if (!OffsetFromNavigation(gc, sys)) gc.atx.GetAntennaOffset(off, static_cast<short>(c1));
            xyz satX, satY, satZ;
            GNSSSatBasis(satX, satY, satZ, satPos, posSun);
            // The three values of a satellite record are body-frame x, y, z.
            const xyz dPosSat = satX * off.n + satY * off.e + satZ * off.u;
            const xyz satRec = (gc.RecPosFC - satPos).GetUnitVector(1.0L);
            const long double proj = satRec * dPosSat;
            ShiftRecord(gc, k, sat, proj - pcv.v[c1], proj - pcv.v[c1 + 1]);
        }
    }
    if (missing.empty()) std::cout << " All satellites OK";
    std::cout << "\n\n";
}

}  // namespace

void ApplyATXVal(gCPosC& gc)
{
    if (!gc.isAtx) return;
    ProgramSubSubTitle("ANTENNA PHASE CENTER PARAMETERS (OFFSET, VARIATIONS):", 0);
    const long n = gc.rnxd.GetNObs();
    if (gc.ELV.NRow() < n || gc.AZM.NRow() < n || gc.OKSAT.NRow() < n
        || !gc.HasSatellitePositions(n) || gc.posSunUnit.NRow() < gc.rnxd.GetNEpoch()
        || gc.SunMag.NRow() < gc.rnxd.GetNEpoch())
        ProgramError(Prog, "ANTENNA CORRECTION: OBSERVATION CORRECTIONS NOT SET FOR ALL OBSERVATIONS!");
    CorrectReceiver(gc);
    CorrectSatellites(gc);
}
