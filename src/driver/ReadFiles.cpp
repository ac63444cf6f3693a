#include "driver/ReadFiles.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "driver/CheckArguments.h"
#include "geodesy/TimeConverse.h"
#include "geodesy/ymdhms.h"
#include "numerics/InputFile.h"
#include "numerics/ProgramError.h"
#include "orbits/Rinex3Navigation.h"

namespace {

const char* const Prog = "Orvo";
// Every step echo of the log starts with this text.
const char* const EchoHead = "Orvo::ReadFiles():        ";

void Echo(bool verbose, const std::string& text)
{
    if (verbose) std::cerr << EchoHead << text << "\n";
}

void ReadAll(gCPosC& gc)
{
    const bool v = gc.verbose;
    if (gc.isRnx) {
        gc.rnxd.KeepAuxiliary(false);
        gc.rnx.ReadFile();
        Echo(v, "reading RINEX file - " + std::to_string(gc.rnxd.GetNEpoch()) + " epochs, "
                    + std::to_string(gc.rnxd.GetNObs()) + " C1 observations, "
                    + std::to_string(gc.rnxh.GetNObs()) + " obs types");
    }
    if (gc.isClkErr) {
        gc.clkerr.ReadFile();
        Echo(v, "reading APRIORI RECEIVER CLOCK ERROR file - "
                    + std::to_string(gc.clkerr.GetNEpoch()) + " epochs!");
    }
    if (gc.isGPSnav) {
        gc.gpsnav.ReadFile();
        Echo(v, "reading GPS NAVIGATION file - " + std::to_string(gc.gpsnav.GetNSat()) + " records");
    }
    if (gc.isGLNnav) {
        gc.glnnav.ReadFile();
        Echo(v, "reading GLONASS NAVIGATION file - " + std::to_string(gc.glnnav.GetNSat())
                    + " records");
    }
    if (gc.isGALnav) {
        gc.galnav.SetSystem('E');
        gc.galnav.ReadFile();
        Echo(v, "reading GALILEO NAVIGATION file - " + std::to_string(gc.galnav.GetNSat()) + " records");
    }
    if (gc.isPEph) {
        gc.pephM.ReadFile();
        Echo(v, "reading MULTI-GNSS PRECISE EPHEMERIS file - "
                    + std::to_string(gc.pephM.GetNEpoch()) + " epochs "
                    + std::to_string(gc.pephM.GetNSat()) + " satellites");
    }
    if (gc.isPclk) {
        // The observations are read: only their span of the clocks is kept.
        const long n = gc.rnxd.GetNEpoch();
        if (n > 0) gc.pclkM.SetSpan(gc.rnxd.epoch(0), gc.rnxd.epoch(n - 1));
        gc.pclkM.ReadFile();
        Echo(v, "reading MULTI-GNSS PRECISE SATELLITE CLOCK file - "
                    + std::to_string(gc.pclkM.GetNEpoch()) + " epochs "
                    + std::to_string(gc.pclkM.GetNSatList()) + " satellites");
    }
    if (gc.isGLNfrch) {
        gc.glnfc.ReadFile();
        Echo(v, "reading GLONASS FREQUENCY CHANNEL file");
    }
    if (gc.isPTide) {
        gc.ptide.ReadFile();
        Echo(v, "reading EARTH ROTATION PARAMETERS file - " + std::to_string(gc.ptide.GetNEpoch())
                    + " epochs ");
    }
    if (gc.isOTide) {
        gc.otide.ReadFile();
        Echo(v, "reading OCEAN LOADING TIDE file - " + std::to_string(gc.otide.GetNStation())
                    + " stations ");
    }
    if (gc.isSCrx) {
        gc.scrx.ReadFile();
        Echo(v, "reading GPS AND GLONASS SATELLITE PROBLEM file - "
                    + std::to_string(gc.scrx.GetNSat()) + " problematic epochs/satellites!");
    }
    if (gc.isMP1) {
        gc.mp1.ReadFile();
        Echo(v, "reading MULTIPATH ON C1/P1 file - " + std::to_string(gc.mp1.NEph()) + " epochs "
                    + std::to_string(gc.mp1.NObs()) + " observations");
    }
    if (gc.isMP2) {
        gc.mp2.ReadFile();
        Echo(v, "reading MULTIPATH ON P2 file - " + std::to_string(gc.mp2.NEph()) + " epochs "
                    + std::to_string(gc.mp2.NObs()) + " observations");
    }
    if (gc.isKlob) {
        Echo(v, "reading KLOBUCHAR ionosphere file");
        if (!std::ifstream(gc.ionkfile)) ProgramError(Prog, "KLOBUCHAR IONOSPHERE FILE CAN NOT BE OPENED!");
        const std::string text = ReadInputFile(gc.ionkfile, Prog);
        // RINEX 3 writes the coefficients as IONOSPHERIC CORR GPSA/GPSB
        // among labels that the RINEX 2 header reader does not know.
        if (IsRinex3Navigation(text)) {
            const Rinex3NavHeader h = ReadRinex3NavHeader(text, gc.ionkfile, Prog);
            std::copy(h.alfa, h.alfa + 4, gc.ionk.alfa);
            std::copy(h.beta, h.beta + 4, gc.ionk.beta);
        } else {
            std::istringstream in(text);
            in >> gc.ionk;
        }
        // Broadcast coefficients are never all zero (the vertical delay
        // term alpha0 alone is some nanoseconds): all zero means the file
        // has none (a RINEX 4 file keeps them in ION records), and a model
        // of zeros would leave the ionosphere out without a word.
        const bool none = std::all_of(gc.ionk.alfa, gc.ionk.alfa + 4, [](long double a) { return a == 0.0L; })
                          && std::all_of(gc.ionk.beta, gc.ionk.beta + 4, [](long double b) { return b == 0.0L; });
        if (none)
            ProgramError(Prog, std::string("KLOBUCHAR IONOSPHERE FILE ") + gc.ionkfile
                                   + ": NO ION ALPHA/BETA OR IONOSPHERIC CORR GPSA/GPSB COEFFICIENTS IN ITS HEADER!");
        Echo(v, "reading KLOBUCHAR ionosphere file");
    }
    if (gc.isIonx) {
        gc.ionx.ReadFile();
        Echo(v, "reading IONEX ionosphere file");
    }
    if (gc.isMyion) {
        gc.myion.ReadFile();
        Echo(v, "reading MYIONO file!");
    }
    if (gc.isAtx) {
        gc.atx.ReadFile();
        Echo(v, "reading ANTEX file - " + std::to_string(gc.atx.GetNGPSSat()) + " GPS SWs  "
                    + std::to_string(gc.atx.GetNGLNSat()) + " GLONASS SWs  "
                    + std::to_string(gc.atx.GetNGALSat()) + " GALILEO SWs  "
                    + std::to_string(gc.atx.GetNRec()) + " RECs");
    }
    if (gc.isP1P2) {
        gc.p1p2.ReadFile();
        Echo(v, "reading P1P2 DCB file!");
    }
    if (gc.isP1C1) {
        gc.p1c1.ReadFile();
        Echo(v, "reading P1C1 DCB file!");
    }
    if (gc.isP2C2) {
        gc.p2c2.ReadFile();
        Echo(v, "reading P2C2 DCB file!");
    }
    if (gc.isMyDCB) {
        gc.mydcb.ReadFile();
        Echo(v, "reading Meskal - DCB file!");
    }
    if (gc.isVMF1file) {
        gc.trpmodel.ReadFile();
        Echo(v, "reading VIENNA TROP. MODEL/MAPP. FUNCTION file!");
    }
    if (gc.isGPT2file) {
        gc.trpmodel.ReadFile();
        Echo(v, "reading GPT2 TROP. MODEL/MAPP. FUNCTION file!");
    }
}

// Touching the day is enough: a file that ends at the day's first epoch or
// starts at its last still belongs to it.
void CheckDailyData(const gCPosC& gc)
{
    const long n = gc.rnxd.GetNEpoch();
    if (n < 1) return;  // the reader refuses a file without epochs
    const long double c1 = gc.DateChkDaily.GetMJDDec();
    const long double c2 = c1 + 1.0L;
    const long double r1 = gc.rnxd.epoch(0).GetMJDDec();
    const long double r2 = gc.rnxd.epoch(n - 1).GetMJDDec();
    if (r2 > c1 && c2 > r1) return;
    const ymdhms day = mjd2ymdhms(gc.DateChkDaily);
    ProgramError(Prog, "CHECKING DAILY DATA PROBLEM: GNSS DATA NOT FOR DAY "
                           + std::to_string(day.GetYear()) + "-" + std::to_string(day.GetMonth())
                           + "-" + std::to_string(day.GetDay()) + "!");
}

void DropSystem(bool& isSys, bool& isXdcb, const std::string& name)
{
    isSys = false;
    isXdcb = false;
    ProgramWarningCout(Prog, "NO OR NOT ENOUGH " + name
                                 + " DATA IN RINEX FILE - NOT USING " + name
                                 + " OBSERVATIONS IN PROCESSING!");
}

}  // namespace

void ReadFiles(gCPosC& gc)
{
    if (gc.verbose) std::cerr << "Orvo::ReadFiles(): READING INPUT DATA FILES!\n";
    ReadAll(gc);

    if (gc.isDateChkDaily) CheckDailyData(gc);
    CheckTroposphereSite(gc);

    if (gc.isGPS && !gc.rnxd.HasGPSObs()) DropSystem(gc.isGPS, gc.isGPSxdcb, "GPS");
    if (gc.isGLN && !gc.rnxd.HasGLONASSObs()) DropSystem(gc.isGLN, gc.isGLNxdcb, "GLONASS");
    if (gc.isGAL && !gc.rnxd.HasGALILEOObs()) DropSystem(gc.isGAL, gc.isGALxdcb, "GALILEO");
    if (!gc.isGPS && !gc.isGLN && !gc.isGAL)
        ProgramError(Prog, "NO OR NOT ENOUGH GNSS (G|R|E) DATA IN RINEX FILE - PROBLEMATIC RINEX FILE!");

    // Entry i of the clock file belongs to observation epoch i, so a file of
    // another length would put every clock on the wrong epoch.
    if (gc.isClkErr && gc.clkerr.GetNEpoch() != gc.rnxd.GetNEpoch()) {
        ProgramWarningCout(Prog, "RINEX FILE AND APRIORI CLOCK ERROR FILE HAVE DIFFERENT NUMBER OF "
                                 "EPOCHS - NOT USING RECEIVER CLOCK ERROR FILE!");
        gc.isClkErr = false;
    }

    // The reader has already put P1 in place of a missing C1.
    if (!gc.rnxh.HasC1() || !gc.rnxh.HasL1()) {
        std::cout << "  *** PROBLEMATIC DATA - FIRST CARRIER OBSERVATIONS ARE MISSING (C1, L1)!!\n\n";
        std::cout.flush();
        ProgramError(Prog, "OBSERVATIONS (C1, L1) ON FIRST CARRIER ARE MISSING!");
    }

    if (!gc.rnxh.HasP2() && gc.rnxh.HasC2()) {
        ProgramWarning(Prog, "RINEX FILE HAS ONLY C2 CODE OBSERVATIONS ON L2 - COPYING VALUES TO P2!");
        gc.rnx.copyC2toP2();
    }
}
