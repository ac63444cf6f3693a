#include "preprocessing/ApplyCorrections.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <string>

#include "driver/Console.h"
#include "geodesy/CoordinateTransforms.h"
#include "numerics/ProgramError.h"
#include "observations/GLONASSc.h"
#include "observations/SatelliteSystem.h"

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
    gc.AZM.Resize(n, 1, 0.0L);
    gc.WGHT.Resize(n, 1, 1.0L);
    gc.SETIDE.Resize(n, 1, 0.0L);
    gc.PTIDE.Resize(n, 1, 0.0L);
    gc.OTIDE.Resize(n, 1, 0.0L);
    gc.TROP.Resize(n, 1, 0.0L);
    gc.MFTROP.Resize(n, 1, 0.0L);
    gc.MFGRAD.Resize(n, 2, 0.0L);
    gc.ION.Resize(n, 1, 0.0L);
    gc.REL2.Resize(n, 1, 0.0L);
    gc.SAT_DIST.Resize(n, 1, 0.0L);
    gc.SAT_POS.Resize(n, 1, xyzt());
    gc.OKSAT.Resize(n, 1, false);
    gc.posSunUnit.Resize(ne, 1, xyz());
    gc.SunMag.Resize(ne, 1, 0.0L);
    if (gc.isPRCorr) {
        for (matrix<long double>* m : {&gc.prcdDst, &gc.prcdTs, &gc.prcdRel, &gc.prcdTr,
                                       &gc.prcTrop, &gc.prcIon, &gc.prcAtx, &gc.prcTid})
            m->Resize(n, 1, 0.0L);
    }
}

// Satellite position and clock at transmission for a signal received at
// calcEph; true when both the orbit and a clock exist.
bool PreciseSatellite(gCPosC& gc, short prn, mjd& calcEph, xyzt& posSat, long double& dist)
{
    if (!gc.isPEph) return false;
    xyz rec = gc.RecPosFC;
    xyzt velSat;
    dist = gc.pephM.CalcSatPosition(static_cast<unsigned short>(prn), calcEph, rec, posSat,
                                    velSat);
    if (gc.isPclk) {
        // Only the existence of the clock is asked here; the estimator
        // reads its value again at its own epoch index.
        long double dtClk = 0.0L;
        gc.pclkM.GetSatelliteClock(prn, calcEph, dtClk);
        if (gc.pclkM.DTisOK) gc.pephM.DTisOK = true;
    }
    return gc.pephM.PSisOK && gc.pephM.DTisOK;
}

void PrintModels(const gCPosC& gc)
{
    if (gc.isSolidTide) std::cout << "  Solid Earth tide\n";
    if (gc.isPTide) std::cout << "  Pole tide\n";
    if (gc.isOTide) std::cout << "  Ocean tide loading\n";
    std::cout << "  Relativistic path range effect\n";
    if (gc.isTrpModel || gc.ifEstTropo) std::cout << "  Troposphere modelling/estimation\n";
    if (gc.obsP == gCPosC::COSZ) std::cout << "  Elevation dependent observation weighting\n";
    std::cout << "\n";
}

void ModelTroposphere(gCPosC& gc, long k, mjd& calcEph)
{
    gc.trpmodel.GetZenithDelay(gc.trpdelay, gc.RecPosFCG, calcEph);
    gc.trpmodel.GetMappFunction(gc.trpdelay, gc.RecPosFCG, calcEph, gc.ELV(k));
    gc.TROP(k) = gc.trpdelay.DelayDry();
    if (gc.ifEstTropo) {
        gc.MFTROP(k) = gc.trpdelay.MappFunWet();
        if (gc.ifEstTropoGrad) {
            const long double e = gc.ELV(k);
            const long double mg =
                1.0L / (std::tan(e) * std::sin(e) + ApplyCorrectionsns::GradMappingC);
            gc.MFGRAD(k, 0) = std::cos(gc.AZM(k)) * mg;
            gc.MFGRAD(k, 1) = std::sin(gc.AZM(k)) * mg;
        }
    } else {
        gc.TROP(k) += gc.trpdelay.DelayWet();
    }
    if (gc.isOutTropEphFile) gc.MFTROP(k) = gc.trpdelay.MappFunWet();
}

}  // namespace

void SetGlonassFrequency(gCPosC& gc)
{
    if (!((gc.isGLNfrch || gc.isGLNnav) && gc.isGLN)) return;
    ProgramSubSubTitle("SETTING GLONASS FREQUENCY CHANNEL:", 0);
    const char* const source = gc.isGLNfrch ? "GLONASS FREQUENCY CHANNEL FILE"
                                            : "GLONASS BROADCAST EPHEMERIS FILE";
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

    std::ofstream sky;
    if (gc.isSkyPlot) {
        sky.open(gc.skyplotfile);
        if (!sky) ProgramError(Prog, "SKY PLOT FILE CAN NOT BE OPENED!");
        sky << std::fixed;
    }

    if (gc.isOTide) gc.otide.SetStation(gc.rnxh.mname.c_str());

    const long double recDist = gc.RecPosFC.GetLength();
    // The receiver stands still during the loop: its geodetic position on
    // each system's ellipsoid is converted once, not per observation.
    const flh recGeodGPS = xyz2flh(gc.RecPosFC, gc.eGPS);
    const flh recGeodGLN = xyz2flh(gc.RecPosFC, gc.eGLN);
    const flh recGeodGAL = xyz2flh(gc.RecPosFC, gc.eGAL);
    const RINEXData& d = gc.rnxd;
    const long nEpoch = d.GetNEpoch();
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
        if (gc.isClkErr) calcEph += -gc.clkerr.GetClkErr(i);

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

        const long nRec = d.nsat(i);
        for (long j = 0; j < nRec; ++j, ++k) {
            const short prn = d.sat(k);
            const elipsoid* ell = SystemEllipsoid(gc, prn);
            if (ell == nullptr) continue;

            xyzt posSat;
            long double dist = 0.0L;
            const bool ok = PreciseSatellite(gc, prn, calcEph, posSat, dist);
            gc.OKSAT(k) = ok;
            gc.SAT_DIST(k) = 0.0L;
            if (!ok) {
                gc.ELV(k) = gc.AZM(k) = 0.0L;
                continue;
            }
            const flh& recGeod = ell == &gc.eGLN ? recGeodGLN : ell == &gc.eGAL ? recGeodGAL : recGeodGPS;
            SatelliteAzimuthElevation(gc.RecPosFC, recGeod, posSat, &gc.ELV(k), &gc.AZM(k));
            const long double satDist = posSat.GetLength();
            gc.SAT_DIST(k) = satDist;
            gc.SAT_POS(k) = posSat;

            if (gc.isSkyPlot)
                sky << d.epoch(i) << std::setw(6) << prn << std::setprecision(2) << std::setw(8)
                    << gc.ELV(k) * ns::Deg << std::setw(8) << gc.AZM(k) * ns::Deg << "\n";

            gc.REL2(k) = ns::Rel2Const
                         * std::log((satDist + recDist + dist) / (satDist + recDist - dist));
            if (gc.obsP == gCPosC::COSZ) {
                const long double s = std::sin(gc.ELV(k));
                gc.WGHT(k) = s * s;
            }
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
                const long double ce = std::cos(gc.ELV(k));
                const long double xs = std::sin(gc.AZM(k)) * ce, ys = std::cos(gc.AZM(k)) * ce,
                                  zs = std::sin(gc.ELV(k));
                if (gc.isPTide) gc.PTIDE(k) = poleTide.e * xs + poleTide.n * ys + poleTide.u * zs;
                if (gc.isOTide) gc.OTIDE(k) = oceanTide.e * xs + oceanTide.n * ys + oceanTide.u * zs;
            }
            if (gc.isTrpModel) ModelTroposphere(gc, k, calcEph);
        }
    }
}

void ApplyCorrections(gCPosC& gc)
{
    SetGlonassFrequency(gc);
    CalculateAE(gc);
}
