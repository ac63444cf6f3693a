#include "driver/CheckArguments.h"

#include <cmath>
#include <filesystem>
#include <iostream>
#include <string>

#include "numerics/ProgramError.h"
#include "numerics/cfilef.h"
#include "observations/GALILEOc.h"
#include "observations/GLONASSc.h"
#include "observations/GPSc.h"
#include "observations/Rinex3Observation.h"

namespace {

const char* const Prog = "Orvo";

void Head(bool verbose, const char* text)
{
    if (verbose) std::cerr << "Orvo::CheckArguments():         " << text << "\n";
}

// An empty name means the option was not given: only a named file can fail.
bool NamedButUnopenable(const char* name)
{
    return name[0] != '\0' && !FileExists(name);
}

void RequireOpens(const char* name, const char* text)
{
    if (NamedButUnopenable(name)) ProgramError(Prog, text);
}

void DropUnopenable(const char* name, bool& flag, const char* text)
{
    if (NamedButUnopenable(name)) {
        ProgramWarning(Prog, text);
        flag = false;
    }
}

// A system without any orbit source cannot give a single satellite position.
void DropSystemWithoutEphemeris(bool& isSys, bool isNav, bool isPEph,
                                const std::string& name)
{
    if (isSys && !isNav && !isPEph) {
        ProgramWarning(Prog, name + " SYSTEM SET BUT NO EPHEMERIS FOR " + name
                                 + " SET (PRECISE AND NAVIGATION) - NOT PROCESSING "
                                 + name + " SYSTEM!");
        isSys = false;
    }
}

// The channel fixes every GLONASS carrier: without one, GLONASS code would
// be combined on wrong frequencies and its phase not at all. The channel
// file, the GLONASS navigation file and a RINEX 3 header carry channels.
void DropGlonassWithoutChannels(gCPosC& gc)
{
    if (!gc.isGLN || gc.isGLNfrch || gc.isGLNnav) return;
    // A RINEX 3 header lists the channel of every slot (GLONASS SLOT / FRQ #).
    if (gc.isRnx && ObservationHeaderHasGlonassChannels(gc.rnxfile)) return;
    if (!gc.isGPS && !gc.isGAL)
        ProgramError(Prog, "GLONASS IS THE ONLY SYSTEM SET BUT NO FREQUENCY CHANNEL FILE [-gf] NOR GLONASS "
                           "NAVIGATION FILE [-er] GIVES ITS CHANNELS!");
    ProgramWarning(Prog, "NO FREQUENCY CHANNEL FILE [-gf] NOR GLONASS NAVIGATION FILE [-er] GIVES THE GLONASS "
                         "CHANNELS - NOT PROCESSING GLONASS SYSTEM!");
    gc.isGLN = false;
}

void DropBiasOfAbsentSystem(bool& isXdcb, bool isSys, const std::string& name)
{
    if (isXdcb && !isSys) {
        ProgramWarning(Prog, name + " OBSERVATIONS WILL NOT BE PROCESSED -> " + name
                                 + " DCB VALUES UNKONWNS UNSET!");
        isXdcb = false;
    }
}

// Model and mapping codes that live on a file (VMF1 series, GPT2 grid) fall
// back on the file-free defaults when that file is gone.
void ResetTropoCodes(gCPosC& gc, short fileModel, short fileMapping)
{
    if (gc.TrpModel == fileModel) {
        gc.TrpModel = 0;
        ProgramWarning(Prog, "TROPOSPHERE MODEL SET TO DEFAULT - SAASTAMOINEN!");
    }
    if (gc.TrpMappFun == fileMapping) {
        gc.TrpMappFun = 0;
        ProgramWarning(Prog, "TROPOSPHERE MAPPING FUNCTION SET TO DEFAULT - NIELL!");
    }
}

void CheckSystems(gCPosC& gc)
{
    Head(gc.verbose, "SATELLITE SYSTEMS!");
    if (!gc.isGPS && !gc.isGLN && !gc.isGAL) {
        ProgramWarning(Prog, "NO SATELLITE SYSTEM SET [-cs[G|R|E]] - SETTING ALL!");
        gc.isGPS = gc.isGLN = gc.isGAL = true;
    }
}

void CheckRinex(gCPosC& gc)
{
    Head(gc.verbose, "RINEX file!");
    if (gc.rnxfile[0] == '\0') ProgramError(Prog, "NO RINEX (OBSERVATION) FILE SET!");
    if (!FileExists(gc.rnxfile))
        ProgramError(Prog, "RINEX (OBSERVATION) FILE CAN NOT BE OPENED!");
}

void CheckEphemerides(gCPosC& gc)
{
    Head(gc.verbose, "Ephemeris files!");
    if (gc.gnavfile[0] == '\0' && gc.rnavfile[0] == '\0' && gc.enavfile[0] == '\0'
        && gc.sp3file[0] == '\0')
        ProgramError(Prog, "NO EPHEMERIS FILE SET!");
    RequireOpens(gc.gnavfile, "GPS NAVIGATION FILE CAN NOT BE OPENED!");
    RequireOpens(gc.rnavfile, "GLONAS NAVIGATION FILE CAN NOT BE OPENED!");
    RequireOpens(gc.enavfile, "GALILEO NAVIGATION FILE CAN NOT BE OPENED!");
    RequireOpens(gc.sp3file, "MULTI-GNSS PRECISE EPHEMERIS FILE CAN NOT BE OPENED!");

    // Precise orbits are consistent with the precise clocks; broadcast
    // orbits mixed in would bias the satellites that use them.
    if (gc.isPEph && (gc.isGPSnav || gc.isGLNnav || gc.isGALnav)) {
        ProgramWarning(Prog, "BOTH PRECISE EPHEMERIS AND (SOME) NAVIGATION FILES FOR SET -> "
                             "USING ONLY PRECISE EPHEMERIS FILE!");
        gc.isGPSnav = gc.isGLNnav = gc.isGALnav = false;
    }
    // These read the navigation flags as left by the test above.
    DropSystemWithoutEphemeris(gc.isGPS, gc.isGPSnav, gc.isPEph, "GPS");
    DropSystemWithoutEphemeris(gc.isGLN, gc.isGLNnav, gc.isPEph, "GLONASS");
    DropSystemWithoutEphemeris(gc.isGAL, gc.isGALnav, gc.isPEph, "GALILEO");

    DropUnopenable(gc.pclkfile, gc.isPclk,
                   "PRECISE MULTI-GNSS SATELLITE CLOCK FILE CAN NOT BE OPENED!");
    DropUnopenable(gc.clkFName, gc.isClkErr,
                   "APRIORI RECEIVER CLOCK ERROR FILE CAN NOT BE OPENED!");
    DropUnopenable(gc.scrxfile, gc.isSCrx,
                   "GPS AND GLONASS SATELLITE PROBLEM FILE CAN NOT BE OPENED!");

    DropGlonassWithoutChannels(gc);

    // These read the system flags as left by the ephemeris and channel tests.
    DropBiasOfAbsentSystem(gc.isGPSxdcb, gc.isGPS, "GPS");
    DropBiasOfAbsentSystem(gc.isGLNxdcb, gc.isGLN, "GLONASS");
    DropBiasOfAbsentSystem(gc.isGALxdcb, gc.isGAL, "GALILEO");

    DropUnopenable(gc.mp1file, gc.isMP1, "MULTIPATH FILE (P1) CAN NOT BE OPENED!");
    DropUnopenable(gc.mp2file, gc.isMP2, "MULTIPATH FILE (P2) CAN NOT BE OPENED!");

    if (NamedButUnopenable(gc.vmf1file)) {
        ProgramWarning(Prog, "VMF1 AND/OR VIENNA TROPOSPHERE MODEL FILE CAN NOT BE OPENED!");
        gc.isVMF1file = false;
        ResetTropoCodes(gc, 4, 5);
    }
    if (NamedButUnopenable(gc.gpt2file)) {
        ProgramWarning(Prog, "GPT2 TROPOSPHERE MODEL FILE CAN NOT BE OPENED!");
        gc.isGPT2file = false;
        ResetTropoCodes(gc, 3, 6);
    }
    // Either file may carry either kind (the troposphere selector tells them
    // by their first line), so only a run with neither has nothing to read:
    // the VMF1 and GPT2 choices would then give zero delays or stop late.
    const bool needsFile = gc.TrpModel == 3 || gc.TrpModel == 4 || gc.TrpMappFun == 5 || gc.TrpMappFun == 6;
    if (needsFile && !gc.isVMF1file && !gc.isGPT2file) {
        ProgramWarning(Prog, "TROPOSPHERE MODEL/MAPPING FUNCTION [-tm] NEEDS A VMF1 OR GPT2 FILE [-vm|-g2] - NONE SET!");
        ResetTropoCodes(gc, 4, 5);
        ResetTropoCodes(gc, 3, 6);
    }
}

void CheckIonosphere(gCPosC& gc)
{
    Head(gc.verbose, "Ionosphere files!");
    DropUnopenable(gc.ionkfile, gc.isKlob, "KLOBUCHAR IONOSPHERE FILE CAN NOT BE OPENED!");
    RequireOpens(gc.ionxfile, "IONEX IONOSPHERE FILE CAN NOT BE OPENED!");
    DropUnopenable(gc.myionfile, gc.isMyion, "MYIONO IONOSPHERE FILE CAN NOT BE OPENED!");
    // Each model is a full slant delay: two of them would count it twice.
    const int nIono = int(gc.isKlob) + int(gc.isIonx) + int(gc.isMyion);
    if (nIono > 1) ProgramError(Prog, "MULTIPLE IONOSPHERE MODELS SET IN PROCESSING!");
}

void CheckModelFiles(gCPosC& gc)
{
    Head(gc.verbose, "ANTEX - antenna phase variation file!");
    RequireOpens(gc.atxfile, "ANTEX FILE CAN NOT BE OPENED!");

    Head(gc.verbose, "Differential Code Biases files!");
    RequireOpens(gc.dcbp1p2file, "DCB FILE - P1P2 CAN NOT BE OPENED!");
    RequireOpens(gc.dcbp1c1file, "DCB FILE - P1C1 CAN NOT BE OPENED!");
    RequireOpens(gc.dcbp2c2file, "DCB FILE - P2C2 CAN NOT BE OPENED!");
    RequireOpens(gc.mydbcfile, "DCB FILE - Meskal RESULT CAN NOT BE OPENED!");
    DropUnopenable(gc.ptidefile, gc.isPTide,
                   "EARTH ROTATION PARAMETERS FILE CAN NOT BE OPENED!");
    DropUnopenable(gc.otidefile, gc.isOTide,
                   "OCEAN LOADING TIDE FILE (BLQ) CAN NOT BE OPENED!");

    Head(gc.verbose, "A-priori coordinate file!");
    DropUnopenable(gc.aprcrdfile, gc.isAprCrd,
                   "APRIORI COORDINATE FILE CAN NOT BE OPENED - USING RINEX VALUES!");

    Head(gc.verbose, "GLONASS frequency channel file!");
    RequireOpens(gc.glnfreqch, "GLONASS FREQUENCY CHANNEL FILE CAN NOT BE OPENED!");
}

// The same rules SetTropoIntervals applies, here before anything is read.
void CheckTropoInterval(long double tI, long double tS)
{
    if (!(tI > 0.0L) || !std::isfinite(tI))
        ProgramError(Prog, "TROPOSPHERE ESTIMATION INTERVAL [-ti] MUST BE A POSITIVE NUMBER OF SECONDS!");
    if (!std::isfinite(tS) || !(std::fabs(tS) < tI))
        ProgramError(Prog, "TROPOSPHERE EPOCH SHIFT [-ti...d] MUST BE SMALLER THAN THE INTERVAL!");
}

void CheckEstimation(gCPosC& gc)
{
    Head(gc.verbose, "Estimation type!!");
    if (!gc.ifEstKin && !gc.ifEstSta) {
        ProgramWarning(Prog, "TYPE OF ESTIMATION IS NOT SET [-x option]: USING DEFAULT "
                             "SETTING - STATIC ESTIMATION!");
        gc.ifEstSta = true;
    }

    Head(gc.verbose, "Observations in processing!!");
    if (!gc.ifC1 && !gc.ifP1 && !gc.ifP2 && !gc.ifPc3 && !gc.ifPp3 && !gc.ifL3) {
        ProgramWarning(Prog, "LIST OF OBSERVATIONS IS NOT SET [-l option]: USING ONLY C1 "
                             "OBSERVATIONS!");
        gc.ifC1 = true;
    }
    // The estimated wet delay needs an a-priori model to be a correction to.
    if (gc.ifEstTropo && !gc.isTrpModel) {
        ProgramWarning(Prog, "TROPOSPHERE ESTIMATION SET WITHOUT TROPOSPHERE MODEL - WILL "
                             "NOT ESTIMATE TROPOSPHERE PARAMETERS!");
        gc.ifEstTropo = false;
    }
    // Gradients share the zenith delay's mapping and cannot stand alone.
    if (gc.ifEstTropoGrad && !gc.ifEstTropo) {
        ProgramWarning(Prog, "ONLY TROPOSPHERE GRADIENTS SET FOR ESTIMATION - ABORTING!");
        gc.ifEstTropoGrad = false;
    }
    if (gc.ifEstTropoGrad && gc.nTropoGradInt < 0) {
        ProgramWarning(Prog, "NUMBER OF TROPOSPHERE GRADIENT INTERVALS MUST BE POZITIVE "
                             "NUMBER - SETTING TO 1!");
        gc.nTropoGradInt = 1;
    }
    if (gc.ifEstTropo) CheckTropoInterval(gc.TropoInterval, gc.TropoShift);
    // The iteration stops on the threshold long before; a huge count only
    // turns a threshold that is never met into a run without end.
    if (gc.MaxIter > CheckArgumentsns::MaxIterations)
        ProgramError(Prog, "MAXIMUM NUMBER OF ITERATIONS [-mi] " + std::to_string(gc.MaxIter) + " ABOVE "
                               + std::to_string(CheckArgumentsns::MaxIterations) + "!");
    if (gc.isOutDCBFile && !gc.isGPSxdcb && !gc.isGLNxdcb && !gc.isGALxdcb) {
        ProgramWarning(Prog, "DCB ESTIMATION IS NOT SET: NO DCB OUTPUT FILE WILL BE WRITTEN!");
        gc.isOutDCBFile = false;
    }
    if (gc.isOutTropFile && !gc.ifEstTropo) {
        ProgramWarning(Prog, "ESTIMATION OF TROPOSPHERE DELAYS IS NOT SET: NO TROPOSPHERE "
                             "OUTPUT FILE WILL BE WRITTEN!");
        gc.isOutTropFile = false;
    }
    if (gc.isMinDailyObs
        && (gc.MinDailyObs < 0.0 || gc.MinDailyObs > CheckArgumentsns::MaxDailyObsShare)) {
        ProgramWarning(Prog, "MINIMUM DAILY NUMBER OF DATA MUST BE IN RANGE  0% - 100%: NOT "
                             "USING THIS PARAMETER!");
        gc.isMinDailyObs = false;
    }
    if (gc.isThresL4 && gc.ThresL40 < 0.0L) {
        ProgramWarning(Prog, "L4 THRESHOLD SET NEGATIVE - USING DEFAULT 5cm!");
        gc.ThresL40 = CheckArgumentsns::DefaultThresL40;
    }
    // The message names 3 cm, but the default the rest of the run is tuned
    // to is 2 cm.
    if (gc.isThresL4 && gc.dThresL4 < 0.0L) {
        ProgramWarning(Prog, "Delta L4 THRESHOLD SET NEGATIVE - USING DEFAULT 3cm!");
        gc.dThresL4 = CheckArgumentsns::DefaultdThresL4;
    }
}

long double Weight(long double sig0, long double sigma)
{
    const long double r = sig0 / sigma;
    return r * r;
}

void DeriveWeights(gCPosC& gc)
{
    if (gc.ifL3) gc.sig0 = CheckArgumentsns::Sig0WithPhase;
    gc.p0C = Weight(gc.sig0, gc.sigC);
    gc.p0P = Weight(gc.sig0, gc.sigP);

    // Phase and P-code combinations have equal sigmas on both carriers, so
    // they scale by sqrt(a^2 + b^2), the value IonoFreeSigma gives for 1.
    const long double kG =
        IonoFreeSigma(1.0L, 1.0L, GPSc::freq1, GPSc::freq2);
    const long double kR =
        IonoFreeSigma(1.0L, 1.0L, GLONASSc::freq10, GLONASSc::freq20);
    const long double kE =
        IonoFreeSigma(1.0L, 1.0L, GALILEOc::freq1, GALILEOc::freq2);

    gc.sigPc3G = IonoFreeSigma(gc.sigC, gc.sigP, GPSc::freq1, GPSc::freq2);
    gc.sigPc3R = IonoFreeSigma(gc.sigC, gc.sigP, GLONASSc::freq10, GLONASSc::freq20);
    gc.sigPc3E = IonoFreeSigma(gc.sigC, gc.sigP, GALILEOc::freq1, GALILEOc::freq2);
    gc.sigPp3G = kG * gc.sigP;
    gc.sigPp3R = kR * gc.sigP;
    gc.sigPp3E = kE * gc.sigP;
    gc.sigL3G = kG * gc.sigL1;
    gc.sigL3R = kR * gc.sigL1;
    gc.sigL3E = kE * gc.sigL1;

    gc.p0Pc3G = Weight(gc.sig0, gc.sigPc3G);
    gc.p0Pc3R = Weight(gc.sig0, gc.sigPc3R);
    gc.p0Pc3E = Weight(gc.sig0, gc.sigPc3E);
    gc.p0Pp3G = Weight(gc.sig0, gc.sigPp3G);
    gc.p0Pp3R = Weight(gc.sig0, gc.sigPp3R);
    gc.p0Pp3E = Weight(gc.sig0, gc.sigPp3E);
    gc.p0L3G = Weight(gc.sig0, gc.sigL3G);
    gc.p0L3R = Weight(gc.sig0, gc.sigL3R);
    gc.p0L3E = Weight(gc.sig0, gc.sigL3E);
}

}  // namespace

long double IonoFreeSigma(long double sig1, long double sig2, long double f1_Hz,
                          long double f2_Hz)
{
    // Differences of squares taken as a product keep the digits that
    // f1^2 - f2^2 would cancel.
    const long double den = (f1_Hz - f2_Hz) * (f1_Hz + f2_Hz);
    const long double a = f1_Hz * f1_Hz / den;
    const long double b = f2_Hz * f2_Hz / den;
    return std::hypot(a * sig1, b * sig2);
}

// A result file may neither replace an input file nor go to a folder that
// does not exist: the first would destroy data, the second lose the result
// without a word. Both are found before anything is read.
void CheckOutputs(const gCPosC& gc)
{
    namespace fs = std::filesystem;
    const struct {
        bool on;
        const char* name;
    } outputs[] = {{gc.isClkFile, gc.clkfile},         {gc.isOutDCBFile, gc.estdcbfile},
                   {gc.isOutTropFile, gc.esttropfile}, {gc.isOutTropEphFile, gc.esttropephfile},
                   {gc.isSkyPlot, gc.skyplotfile},     {gc.isPRCorr, gc.prcorrfile},
                   {gc.isresfile, gc.resfile},         {gc.isGNUPlotKin, gc.gnuplotKin},
                   {gc.isGNUPlotStat, gc.gnuplotStat}, {gc.isSinexFile, gc.sinexfile}};
    const char* const inputs[] = {gc.rnxfile, gc.clkFName, gc.gnavfile, gc.rnavfile, gc.enavfile, gc.sp3file,
                                  gc.scrxfile, gc.pclkfile, gc.vmf1file, gc.gpt2file, gc.ionxfile, gc.ionkfile,
                                  gc.myionfile, gc.dcbp1p2file, gc.dcbp1c1file, gc.dcbp2c2file, gc.mydbcfile,
                                  gc.mp1file, gc.mp2file, gc.atxfile, gc.rctrackfile, gc.aprcrdfile,
                                  gc.glnfreqch, gc.ptidefile, gc.otidefile};
    for (const auto& o : outputs) {
        if (!o.on || o.name[0] == '\0') continue;
        std::error_code ec;
        const fs::path out(o.name);
        const fs::path folder = out.parent_path().empty() ? fs::path(".") : out.parent_path();
        if (!fs::is_directory(folder, ec))
            ProgramError(Prog, std::string("RESULT FILE -") + o.name + "- LIES IN A FOLDER THAT DOES NOT EXIST!");
        for (const char* in : inputs) {
            if (in[0] == '\0') continue;
            if (std::string(in) == o.name || fs::equivalent(fs::path(in), out, ec))
                ProgramError(Prog, std::string("RESULT FILE -") + o.name + "- WOULD OVERWRITE THE INPUT FILE " + in + "!");
        }
    }
}

void CheckTroposphereSite(gCPosC& gc)
{
    if (!gc.isTrpModel) return;
    const std::string point = gc.rnxh.mname;
    gTropModel& tm = gc.trpmodel;
    // A series file without the site would give zero delays or coefficients
    // at every epoch: the default models stand in, and the report says so.
    if (gc.TrpModel == 4) {
        tm.tVmf1.FindSeries(point.c_str(), "zh", "zw");
        if (tm.tVmf1.ixH < 0 || tm.tVmf1.ixW < 0) {
            ProgramWarningCout(Prog, "ZENITH DELAYS (ZH, ZW) FOR POINT " + point + " NOT IN FILE "
                                         + tm.tVmf1.file + " - TROPOSPHERE MODEL SET TO DEFAULT - SAASTAMOINEN!");
            gc.TrpModel = 0;
            tm.SetTropModel(0);
        }
    }
    if (gc.TrpMappFun == 5) {
        tm.mVmf1.FindSeries(point.c_str(), "ah", "aw");
        if (tm.mVmf1.ixH < 0 || tm.mVmf1.ixW < 0) {
            ProgramWarningCout(Prog, "VMF1 COEFFICIENTS (AH, AW) FOR POINT " + point + " NOT IN FILE "
                                         + tm.mVmf1.file + " - TROPOSPHERE MAPPING FUNCTION SET TO DEFAULT - NIELL!");
            gc.TrpMappFun = 0;
            tm.SetMappFunction(0);
        }
    }
}

void CheckArguments(gCPosC& gc)
{
    if (gc.verbose) std::cerr << "Orvo::CheckArguments(): CHECKING INPUT ARGUMETNS!\n";
    // The order is part of the rules: later tests read flags that earlier
    // ones may clear.
    CheckSystems(gc);
    CheckRinex(gc);
    CheckEphemerides(gc);
    CheckIonosphere(gc);
    CheckModelFiles(gc);
    CheckOutputs(gc);
    CheckEstimation(gc);
    DeriveWeights(gc);
}
