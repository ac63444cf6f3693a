#include "preprocessing/ApplyCorrections.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <map>
#include <string>

#include "driver/Console.h"
#include "geodesy/CoordinateTransforms.h"
#include "geodesy/TimeConverse.h"
#include "geodesy/ymdhms.h"
#include "numerics/MathConstants.h"
#include "numerics/ProgramError.h"
#include "numerics/Trigonometry.h"
#include "observations/GALILEOc.h"
#include "observations/GLONASSc.h"
#include "observations/GPSc.h"
#include "observations/SatelliteSystem.h"
#include "orbits/LightTimeHints.h"
#include "preprocessing/AmbiguityTable.h"
#include "preprocessing/BroadcastSatellite.h"

namespace {

const char* const Prog = "Orvo";

// The ellipsoid of a satellite's system frame, or null for a system that
// is not processed.
const elipsoid* SystemEllipsoid(const gCPosC& gc, short s)
{
    if (SystemOf(s) == SysGPS) return gc.isGPS ? &gc.eGPS : nullptr;
    if (SystemOf(s) == SysGLN) return gc.isGLN ? &gc.eGLN : nullptr;
    if (SystemOf(s) == SysGAL) return gc.isGAL ? &gc.eGAL : nullptr;
    return nullptr;
}

void SizeArrays(gCPosC& gc)
{
    const long n = gc.rnxd.GetNObs();
    const long ne = gc.rnxd.GetNEpoch();
    gc.ELV.Resize(n, 1, 0.0L);
    gc.SINELV.Resize(n, 1, 0.0L);
    // The light-time solutions of the precise orbits start the adjustment,
    // which moves them to its receiver clock rather than interpolate the
    // orbits again, and give the satellite positions until then; fresh
    // storage holds nothing saved. The positions of the navigation files
    // have their own array, which a run on precise orbits alone does
    // without (8 MB a day).
    gc.savedSat.Resize(0);
    if (gc.isPEph) gc.savedSat.Resize(n);
    gc.AZM.Resize(n, 1, 0.0L);
    gc.WGHT.Resize(n, 1, 1.0L);
    gc.SETIDE.Resize(n, 1, 0.0L);
    // Pole and ocean tide only when they are modelled: a day of either is
    // 1.3 MB that would hold zeros.
    gc.PTIDE.Resize(gc.isPTide ? n : 0, 1, 0.0L);
    gc.OTIDE.Resize(gc.isOTide ? n : 0, 1, 0.0L);
    gc.TROP.Resize(n, 1, 0.0L);
    gc.MFTROP.Resize(n, 1, 0.0L);
    gc.MFGRAD.Resize(n, 2, 0.0L);
    gc.ION.Resize(n, 1, 0.0L);
    gc.REL2.Resize(n, 1, 0.0L);
    const bool navigation = gc.isGPSnav || gc.isGLNnav || gc.isGALnav || !gc.isPEph;
    gc.SAT_POS.Resize(navigation ? n : 0, 1, xyzt());
    gc.OKSAT.Resize(n, 1, false);
    gc.posSunUnit.Resize(ne, 1, xyz());
    gc.SunMag.Resize(ne, 1, 0.0L);
    if (gc.isPRCorr) {
        for (matrix<long double>* m : {&gc.prcdDst, &gc.prcdTs, &gc.prcdRel, &gc.prcdTr,
                                       &gc.prcTrop, &gc.prcIon, &gc.prcAtx, &gc.prcTid})
            m->Resize(n, 1, 0.0L);
    }
}

// Records of the precise products not used, counted by satellite and by
// reason.
struct PreciseRefusals {
    std::map<short, long> outside, onMissingNode, noClock, orbitClock;
};

// Satellite position and clock at transmission for a signal received at
// calcEph with the receiver clock recClk (m); true when both the orbit and a
// clock exist. A record refused for want of either is counted in refused; a
// record with an orbit keeps its light-time solution as record k.
bool PreciseSatellite(gCPosC& gc, long k, short prn, mjd& calcEph, long double recClk, xyzt& posSat,
                      long double& dist, PreciseRefusals& refused, LightTimeHints& hints)
{
    if (!gc.isPEph) return false;
    xyz rec = gc.RecPosFC;
    xyzt velSat;
    dist = gc.pephM.CalcSatPosition(static_cast<unsigned short>(prn), calcEph, rec, posSat, velSat, hints);
    if (gc.pephM.OutOfSpan) ++refused.outside[prn];
    if (!gc.pephM.PSisOK) {
        if (gc.pephM.NodeMissing) ++refused.onMissingNode[prn];
        return false;
    }
    bool clockOK = gc.pephM.DTisOK;
    gc.savedSat(k) = {gc.pephM.LastState(), recClk, true, clockOK};
    if (gc.isPclk) {
        // Only the existence of the clock is asked here; the estimator reads
        // its value again at its own epoch. Where the clock file has none
        // (beyond it, across a gap, no value) the orbit file's clock stands:
        // between its 15-min nodes it misses the 30-s clocks by centimetres
        // (GRG, 2020-06-25: 4 cm RMS, 1.2 m at worst), so those records are
        // counted for the report.
        long double dtClk = 0.0L;
        gc.pclkM.GetSatelliteClock(prn, calcEph, dtClk);
        if (gc.pclkM.DTisOK)
            clockOK = true;
        else if (clockOK)
            ++refused.orbitClock[prn];
    }
    if (!clockOK) ++refused.noClock[prn];
    return clockOK;
}

// The calendar epoch of t as "2020-06-25 00:00:00.0".
std::string DateText(const mjd& t)
{
    const ymdhms c = mjd2ymdhms(t);
    char s[40];
    std::snprintf(s, sizeof s, "%04d-%02d-%02d %02d:%02d:%04.1f", c.GetYear(), c.GetMonth(), c.GetDay(),
                  c.GetHour(), c.GetMinute(), static_cast<double>(c.GetSecond()));
    return s;
}

// A product whose span holds no observation epoch (within the second its
// readers extrapolate) is of another day or station time: every record
// would be refused, and the run would end with nothing said of the cause.
void CheckProductSpan(const RINEXData& d, const char* kind, const char* file, const mjd& first,
                      const mjd& last)
{
    const long n = d.GetNEpoch();
    for (long i = 0; i < n; ++i)
        if (!(first - d.epoch(i) > GNSSpEphns::MaxExtrapolation_s)
            && !(d.epoch(i) - last > GNSSpEphns::MaxExtrapolation_s))
            return;
    if (n == 0) return;
    ProgramError(Prog, std::string(kind) + " " + file + " SPANS " + DateText(first) + " TO " + DateText(last)
                           + ", THE OBSERVATIONS " + DateText(d.epoch(0)) + " TO " + DateText(d.epoch(n - 1))
                           + " - NO OBSERVATION EPOCH WITHIN THE PRODUCT (A FILE OF ANOTHER DAY?)!");
}

void PrintModels(const gCPosC& gc)
{
    if (gc.isSolidTide) std::cout << "  Solid Earth tide\n";
    if (gc.isPTide) std::cout << "  Pole tide\n";
    if (gc.isOTide) std::cout << "  Ocean tide loading\n";
    std::cout << "  Relativistic path range effect\n";
    if (gc.isTrpModel || gc.ifEstTropo) std::cout << "  Troposphere modelling/estimation\n";
    if (gc.isIonx || gc.isKlob || gc.isMyion) std::cout << "  Ionosphere modelling\n";
    if (gc.obsP == gCPosC::COSZ) std::cout << "  Elevation dependent observation weighting\n";
    std::cout << "\n";
}

void ModelTroposphere(gCPosC& gc, long k, mjd& calcEph, const SkyDirection& sky)
{
    gc.trpmodel.GetZenithDelay(gc.trpdelay, gc.RecPosFCG, calcEph);
    gc.trpmodel.GetMappFunction(gc.trpdelay, gc.RecPosFCG, calcEph, gc.ELV(k), gc.SINELV(k));
    gc.TROP(k) = gc.trpdelay.DelayDry();
    if (gc.ifEstTropo) {
        gc.MFTROP(k) = gc.trpdelay.MappFunWet();
        if (gc.ifEstTropoGrad) {
            // 1 / (tan(e) sin(e) + C); straight overhead the gradients map
            // to nothing.
            const long double mg = sky.cosE > 0.0L
                                       ? 1.0L / (sky.sinE * sky.sinE / sky.cosE + ApplyCorrectionsns::GradMappingC)
                                       : 0.0L;
            gc.MFGRAD(k, 0) = sky.cosA * mg;
            gc.MFGRAD(k, 1) = sky.sinA * mg;
        }
    } else {
        gc.TROP(k) += gc.trpdelay.DelayWet();
    }
    if (gc.isOutTropEphFile) gc.MFTROP(k) = gc.trpdelay.MappFunWet();
}

// Where the ionosphere models look from: geodetic and geocentric latitude
// and longitude of the antenna, degrees.
struct IonoSite {
    long double fi_deg, beta_deg, la_deg;
};

void ModelIonosphere(gCPosC& gc, long k, mjd& calcEph, const IonoSite& site)
{
    namespace ns = ApplyCorrectionsns;
    const long double edeg = gc.ELV(k) * Rad2Deg, adeg = gc.AZM(k) * Rad2Deg;
    long double sod = calcEph.GetSecond();
    if (gc.isKlob) gc.ION(k) = gc.ionk.CalcIonDelay(site.fi_deg, site.la_deg, edeg, adeg, sod);
    if (gc.isIonx) {
        long double beta = site.beta_deg, la = site.la_deg, e = edeg;
        gc.ION(k) = gc.ionx.CalcIonDelay(sod, beta, la, e, gc.IonexUnit, gc.IonexProc, gc.IonexTECV);
    }
    if (gc.isMyion) {
        gc.myion.GetIonoDelay(calcEph, gc.ION(k));
        // The series is vertical: the thin-shell slant factor at the
        // pierce point turns it into the line of sight.
        const long double z = std::asin(trig::Cos(gc.ELV(k)) * ns::ShellRadius_km
                                        / (ns::ShellRadius_km + ns::ShellHeight_km));
        gc.ION(k) /= trig::Cos(z);
    }
}

// One report section: the records not used for one reason, per satellite,
// then the warning with their total.
void PrintNotUsed(const std::map<short, long>& bySat, const char* title, const char* what,
                  const char* fate = "not used")
{
    if (bySat.empty()) return;
    std::string upper = fate;
    for (char& ch : upper) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    std::cout << "  " << title << " (" << fate << "):\n";
    const long total = PrintSatelliteCounts(bySat);
    ProgramWarningCout(Prog, std::string(what) + " - " + std::to_string(total) + " OBSERVATIONS " + upper + "!");
}

}  // namespace

void ApplyDCB(gCPosC& gc)
{
    if (!(gc.isGPSnav || gc.isIonx || gc.isP1P2 || (gc.isP1C1 && gc.RecCodeTrackType != 0))) return;
    ProgramSubSubTitle("APPLYING DCB VALUES TO CODE OBSERVATIONS:", 0);
    const char* source = "Navigation time group delay";
    if (gc.isIonx) source = "IONEX DCB values";
    if (gc.isP1P2 || gc.isP1C1 || gc.isP2C2) source = "DCB values provided by CODE";
    std::cout << "  Differential code bias (DCB) source : " << source << "\n";

    const std::ios_base::fmtflags flags = std::cout.flags();
    const std::streamsize precision = std::cout.precision();
    std::cout << std::fixed << std::setprecision(4);
    RINEXData& d = gc.rnxd;
    const RINEXHeader& h = gc.rnxh;
    const long double c = GPSc::c;
    // One walk gives every satellite its records.
    const SatelliteRecords bySat = RecordsBySatellite(d);
    for (long s = 0; s < d.GetNSat(); ++s) {
        const short prn = d.GetSat(s);
        const SatSystem sys = SystemOf(prn);
        if ((sys == SysGPS && !gc.isGPS) || (sys == SysGLN && !gc.isGLN)) continue;
        const long double lcIon1 = sys == SysGLN ? GLONASSc::LCion1 : sys == SysGAL ? GALILEOc::LCion1 : GPSc::LCion1;
        const long double lcIon2 = sys == SysGLN ? GLONASSc::LCion2 : sys == SysGAL ? GALILEOc::LCion2 : GPSc::LCion2;
        long double tgd = 0.0L, dtL1 = 0.0L, dtL2 = 0.0L;
        std::cout << "    Satellite: " << std::setw(6) << prn;
        if (sys == SysGPS && gc.isGPSnav) {
            const GPSbEphData& nav = gc.gpsnav.GetData();
            for (long r = 0; r < nav.sat.NRow(); ++r)
                if (nav.sat(r) == prn) {
                    tgd = nav.data(r, GPSbEphData::TGD);
                    break;
                }
            dtL1 = -tgd * c;
            dtL2 = GPSc::alpha * dtL1;
        }
        if (gc.isIonx) {
            short sat = prn;
            tgd = gc.ionx.GetDCB(sat);
            dtL1 = lcIon2 * tgd * c;
            dtL2 = lcIon1 * tgd * c;
        }
        if (gc.isP1P2) {
            tgd = gc.p1p2.GetDCBVAL(prn);
            dtL1 = lcIon2 * tgd * c;
            dtL2 = lcIon1 * tgd * c;
        }
        // A receiver that tracks C1 in place of P1 (type 1, C1P2) has its
        // first code on the C1 datum; one that also tracks a cross-correlated
        // second code (type 2, C1X2) has both.
        if (gc.isP1C1 && gc.RecCodeTrackType != 0) {
            tgd = gc.p1c1.GetDCBVAL(prn);
            dtL1 += tgd * c;
            if (gc.RecCodeTrackType == 2) dtL2 += tgd * c;
        }
        std::cout << std::setw(10) << dtL1 << std::setw(10) << dtL2;
        // A centimetre in sum is below what any code solution can see.
        if (std::fabs(dtL1) + std::fabs(dtL2) < ApplyCorrectionsns::MinCodeBias_m) {
            std::cout << "\n";
            continue;
        }
        long nC1 = 0, nP1 = 0, nP2 = 0;
        for (const SatRecord& r : bySat[prn]) {
            const long k = r.k;
            if (h.HasC1() && k < d.C1.NRow() && !d.C1(k).IsNull()) d.C1(k) += dtL1, ++nC1;
            if (h.HasP1() && k < d.P1.NRow() && !d.P1(k).IsNull()) d.P1(k) += dtL1, ++nP1;
            if (h.HasP2() && k < d.P2.NRow() && !d.P2(k).IsNull()) d.P2(k) += dtL2, ++nP2;
        }
        std::cout << "    [#C1:" << std::setw(8) << nC1 << "     #P1:" << std::setw(8) << nP1
                  << "     #P2:" << std::setw(8) << nP2 << "]\n";
    }
    std::cout << "\n";
    std::cout.flags(flags);
    std::cout.precision(precision);
}

void SetGlonassFrequency(gCPosC& gc)
{
    // The header's GLONASS SLOT / FRQ # (RINEX 3) is the last source.
    const bool fromHeader = !gc.isGLNfrch && !gc.isGLNnav && gc.rnxh.nGlonassChannels > 0;
    if (!((gc.isGLNfrch || gc.isGLNnav || fromHeader) && gc.isGLN)) return;
    ProgramSubSubTitle("SETTING GLONASS FREQUENCY CHANNEL:", 0);
    const char* const source = gc.isGLNfrch ? "GLONASS FREQUENCY CHANNEL FILE"
                               : gc.isGLNnav ? "GLONASS BROADCAST EPHEMERIS FILE"
                                             : "OBSERVATION FILE HEADER (GLONASS SLOT / FRQ #)";
    std::cout << "    Channels from the " << source << "\n";
    for (long i = 0; i < gc.rnxd.GetNSat(); ++i) {
        const short prn = gc.rnxd.GetSat(i);
        if (prn <= 100 || prn > 199) continue;
        const int slot = prn - 100;
        std::cout << "    Satellite:  R" << std::setfill('0') << std::setw(2) << slot
                  << std::setfill(' ');
        // The tables have one row per slot of the constellation; a higher
        // slot number cannot be stored and its wavelengths stay 0, which
        // keeps the satellite out of every phase combination.
        if (slot > GLONASSc::NSlots) {
            std::cout << "    f. channel:  NO FREQUENCY TABLE ROW -> NOT SET\n";
            ProgramWarning(Prog, "GLONASS SATELLITE " + std::to_string(prn)
                                     + " OUTSIDE THE FREQUENCY TABLES - NO FREQ. CHANNEL SET!");
            continue;
        }
        // The channel file wins over the navigation file.
        long double k = 0.0L;
        bool found = false;
        if (gc.isGLNfrch) {
            if (gc.rnxd.GetNEpoch() > 0) {
                mjd first = gc.rnxd.epoch(0);
                k = gc.glnfc.GetFreqNum(prn, first);
                found = gc.glnfc.GetIsGLNSat();
            }
        } else if (fromHeader) {
            found = gc.rnxh.HasGlonassChannel(slot);
            if (found) k = gc.rnxh.glonassChannel[slot];
        } else {
            const GLNbEphData& nav = gc.glnnav.GetData();
            for (long r = 0; r < nav.nsatall && !found; ++r) {
                if (nav.sat(r) != slot) continue;
                k = nav.data(r, GLNbEphData::FRQNUM);
                found = true;
            }
        }
        if (found) {
            const std::ios_base::fmtflags flags = std::cout.flags();
            const std::streamsize precision = std::cout.precision();
            std::cout << "    f. channel: " << std::fixed << std::setprecision(1) << std::setw(5)
                      << k << "\n";
            std::cout.flags(flags);
            std::cout.precision(precision);
        } else {
            k = 0.0L;
            char text[160];
            std::snprintf(text, sizeof text,
                          "GLONASS SATELLITE %3d NOT LISTED IN %s - USING FREQ. CHANNEL k = 0!",
                          prn, source);
            ProgramWarning(Prog, text);
            std::cout << "    f. channel:  NOT FOUND -> SETTING TO 0.0\n";
        }
        GLONASSc::SetFrequency(k, static_cast<short>(prn - 101));
    }
    std::cout << "\n";
}

void CalculateAE(gCPosC& gc)
{
    namespace ns = ApplyCorrectionsns;
    ProgramSubSubTitle("MODELING GNSS BIASES:", 0);
    PrintModels(gc);

    // Every consumer walks the records with a running index behind the
    // epoch counts; counts that disagree would misplace every record.
    long nCounted = 0;
    for (long i = 0; i < gc.rnxd.GetNEpoch(); ++i) nCounted += gc.rnxd.nsat(i);
    if (nCounted != gc.rnxd.GetNObs())
        ProgramError(Prog, "RINEX DATA RECORDS DO NOT MATCH THE EPOCH SATELLITE COUNTS!");
    SizeArrays(gc);

    if (gc.isPEph)
        CheckProductSpan(gc.rnxd, "PRECISE ORBIT FILE", gc.pephM.GetFile(), gc.pephM.GetMJD(0),
                         gc.pephM.GetMJD(gc.pephM.GetNEpoch() - 1));
    if (gc.isPclk)
        CheckProductSpan(gc.rnxd, "RINEX CLOCK FILE", gc.pclkM.GetFile(), gc.pclkM.GetMJD(0),
                         gc.pclkM.GetMJD(gc.pclkM.GetNEpoch() - 1));

    std::ofstream sky;
    if (gc.isSkyPlot) {
        sky.open(gc.skyplotfile);
        if (!sky) ProgramError(Prog, "SKY PLOT FILE CAN NOT BE OPENED!");
        sky << std::fixed;
    }

    if (gc.isOTide) gc.otide.SetStation(gc.rnxh.mname.c_str());
    if (gc.isMyion && gc.rnxd.GetNEpoch() > 0) {
        mjd first = gc.rnxd.epoch(0);
        gc.myion.SetIonoIndex(first);
    }
    IonoSite site{};
    {
        const flh g = xyz2flh(gc.RecPosFC, gc.eGPS);
        const long double e2 = gc.eGPS.f * (2.0L - gc.eGPS.f);
        site.fi_deg = g.f * Rad2Deg;
        site.beta_deg = std::atan(std::tan(g.f) * (1.0L - e2)) * Rad2Deg;
        site.la_deg = std::remainder(g.l * Rad2Deg, 360.0L);
    }

    const long double recDist = gc.RecPosFC.GetLength();
    // The receiver stands still during the loop: its local axes on each
    // system's ellipsoid are made once, not per observation.
    const LocalFrame frameGPS(xyz2flh(gc.RecPosFC, gc.eGPS)), frameGLN(xyz2flh(gc.RecPosFC, gc.eGLN)),
        frameGAL(xyz2flh(gc.RecPosFC, gc.eGAL));
    const RINEXData& d = gc.rnxd;
    const long nEpoch = d.GetNEpoch();
    PreciseRefusals refused;
    LightTimeHints hints;
    long k = 0;
    int lastPercent = -1;
    for (long i = 0; i < nEpoch; ++i) {
        if (gc.verbose) {
            const int percent = static_cast<int>(100 * i / nEpoch) / 5 * 5;
            if (percent != lastPercent) {
                std::cerr << "Orvo::CalculateAE():        modelling epochs " << percent << "%\n";
                lastPercent = percent;
            }
        }
        mjd calcEph = d.epoch(i);
        const long double recClk_s = gc.isClkErr ? gc.clkerr.GetClkErr(i) : 0.0L;
        if (gc.isClkErr) calcEph += -recClk_s;
        // The clock test must look at the nodes around this epoch, not at
        // those the index last stood on.
        if (gc.isPclk) {
            mjd t = d.epoch(i);
            if (i == 0) gc.pclkM.SetEpochIndex(t);
            else gc.pclkM.SetEpochIndex(t, gc.pclkM.GetEpochIx());
        }

        // Sun and Moon move too slowly for the receiver clock to matter.
        xyz moonUnit;
        long double moonMag = 0.0L;
        gc.lsp.SunPosition(d.epoch(i), gc.posSunUnit(i), gc.SunMag(i));
        gc.lsp.MoonPosition(d.epoch(i), moonUnit, moonMag);
        gc.nset.SetSunPosition(gc.posSunUnit(i), gc.SunMag(i));
        gc.nset.SetMoonPosition(moonUnit, moonMag);
        xyz solidTide;
        neu poleTide, oceanTide;
        if (gc.isSolidTide) gc.nset.GetDisplacement(calcEph, solidTide);
        if (gc.isPTide) {
            gc.ptide.SetCalcEpoch(calcEph);
            gc.ptide.SetMeanPole();
            gc.ptide.GetPoleTide(calcEph, gc.RecPosFCG, poleTide);
        }
        if (gc.isOTide) gc.otide.GetDisplacement(calcEph, oceanTide);
        if (gc.isMyion) gc.myion.SetIonoIndex(calcEph, gc.myion.GetIonoIndex());

        const long nRec = d.nsat(i);
        for (long j = 0; j < nRec; ++j, ++k) {
            const short prn = d.sat(k);
            const elipsoid* ell = SystemEllipsoid(gc, prn);
            if (ell == nullptr) continue;

            xyzt posSat;
            long double dist = 0.0L, relativity = 0.0L;
            // A navigation file of the system answers, a satellite being
            // usable while its record is healthy; otherwise the precise
            // products decide.
            bool healthy = false;
            const bool ok = BroadcastSatellite(gc, prn, calcEph, posSat, dist, relativity, healthy)
                                ? healthy
                                : PreciseSatellite(gc, k, prn, calcEph, recClk_s * SpeedOfLight_mps, posSat,
                                                   dist, refused, hints);
            gc.OKSAT(k) = ok;
            if (!ok) {
                gc.ELV(k) = gc.AZM(k) = gc.SINELV(k) = 0.0L;
                continue;
            }
            const LocalFrame& frame = ell == &gc.eGLN ? frameGLN : ell == &gc.eGAL ? frameGAL : frameGPS;
            const SkyDirection dir = SatelliteSkyDirection(gc.RecPosFC, frame, posSat);
            gc.ELV(k) = dir.E;
            gc.SINELV(k) = trig::Sin(dir.E);
            gc.AZM(k) = dir.A;
            const long double satDist = posSat.GetLength();
            if (k < gc.SAT_POS.NRow()) gc.SAT_POS(k) = posSat;

            if (gc.isSkyPlot)
                sky << d.epoch(i) << std::setw(6) << prn << std::setprecision(2) << std::setw(8)
                    << gc.ELV(k) * Rad2Deg << std::setw(8) << gc.AZM(k) * Rad2Deg << "\n";

            gc.REL2(k) = ns::Rel2Const
                         * std::log((satDist + recDist + dist) / (satDist + recDist - dist));
            if (gc.obsP == gCPosC::COSZ) gc.WGHT(k) = dir.sinE * dir.sinE;
            // The solid tide is projected on the line from the satellite to
            // the receiver, pole and ocean tide on the opposite one: a site
            // lifted towards a satellite overhead shortens the range, so the
            // latter two enter with the sign of the former reversed.
            if (gc.isSolidTide) {
                xyz los = gc.RecPosFC - posSat;
                los /= dist;
                gc.SETIDE(k) = los * solidTide;
            }
            if (gc.isPTide || gc.isOTide) {
                const long double xs = dir.sinA * dir.cosE, ys = dir.cosA * dir.cosE, zs = dir.sinE;
                if (gc.isPTide) gc.PTIDE(k) = poleTide.e * xs + poleTide.n * ys + poleTide.u * zs;
                if (gc.isOTide) gc.OTIDE(k) = oceanTide.e * xs + oceanTide.n * ys + oceanTide.u * zs;
            }
            if (gc.isTrpModel) ModelTroposphere(gc, k, calcEph, dir);
            if (gc.isKlob || gc.isIonx || gc.isMyion) ModelIonosphere(gc, k, calcEph, site);
        }
    }
    PrintNotUsed(refused.outside, "Observations beyond the precise orbit file",
                 "OBSERVATION EPOCHS BEYOND THE PRECISE ORBIT FILE");
    PrintNotUsed(refused.onMissingNode, "Observations on missing or refused precise orbit nodes",
                 "OBSERVATIONS ON MISSING OR REFUSED PRECISE ORBIT NODES");
    PrintNotUsed(refused.orbitClock, "Observations without a clock from the clock file",
                 "OBSERVATION EPOCHS BEYOND OR ACROSS A GAP OF THE CLOCK FILE, OR WITHOUT ITS VALUE",
                 "orbit file clock used");
    PrintNotUsed(refused.noClock, "Observations without a precise satellite clock",
                 "OBSERVATION EPOCHS WITHOUT A PRECISE SATELLITE CLOCK (BEYOND OR ACROSS A GAP OF THE"
                 " CLOCK FILE, OR NO VALUE)");
}

void ApplyCorrections(gCPosC& gc)
{
    SetGlonassFrequency(gc);
    ApplyDCB(gc);
    CalculateAE(gc);
}
