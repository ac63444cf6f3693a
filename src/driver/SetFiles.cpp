#include "driver/SetFiles.h"

#include <iostream>
#include <string>

namespace {

// Every step echo of the log starts with this text.
const char* const EchoHead = "Orvo::SetFiles():         ";

void Echo(bool verbose, const std::string& text)
{
    if (verbose) std::cerr << EchoHead << text << "\n";
}

}  // namespace

void SetFiles(gCPosC& gc)
{
    const bool v = gc.verbose;
    if (v) std::cerr << "Orvo::SetFiles(): SETTING INPUT FILE NAMES AND PROCESSING SETTINGS!\n";

    if (gc.isRnx) {
        Echo(v, "setting RINEX file!");
        gc.rnx.SetFile(gc.rnxfile);
    }
    if (gc.isClkErr) {
        Echo(v, "setting APRIORI RECEIVER CLOCK ERROR file!");
        gc.clkerr.SetFile(gc.clkFName);
    }
    if (gc.isGPSnav) {
        Echo(v, "setting GPS NAVIGATION file!");
        gc.gpsnav.SetFile(gc.gnavfile);
    }
    if (gc.isGLNnav) {
        Echo(v, "setting GLONASS NAVIGATION file!");
        gc.glnnav.SetFile(gc.rnavfile);
    }
    if (gc.isGALnav) {
        Echo(v, "setting GALILEO NAVIGATION file!");
        gc.galnav.SetFile(gc.enavfile);
    }
    if (gc.isPEph) {
        Echo(v, "setting MULTI-GNSS PRECISE EPHEMERIS file!");
        gc.pephM.SetFile(gc.sp3file);
    }
    if (gc.isPclk) {
        Echo(v, "setting MULTI-GNSS PRECISE SATELLITE CLOCK file!");
        gc.pclkM.SetFile(gc.pclkfile);
    }
    if (gc.isGLNfrch) {
        Echo(v, "setting GLONASS FREQUENCY CHANNEL file!");
        gc.glnfc.SetFile(gc.glnfreqch);
    }
    if (gc.isPTide) {
        Echo(v, "setting EARTH ROTATION PARAMETERS file!");
        gc.ptide.SetFile(gc.ptidefile);
    }
    if (gc.isOTide) {
        Echo(v, "setting OCEAN LOADING TIDE file!");
        gc.otide.SetFile(gc.otidefile);
    }
    if (gc.isSCrx) {
        Echo(v, "setting GPS AND GLONASS SATELLITE PROBLEM file!");
        gc.scrx.SetFile(gc.scrxfile);
    }
    if (gc.isMP1) {
        Echo(v, "MULTIPATH ON C1/P1 file!");
        gc.mp1.SetFile(gc.mp1file);
    }
    if (gc.isMP2) {
        Echo(v, "MULTIPATH ON P2 file!");
        gc.mp2.SetFile(gc.mp2file);
    }
    if (gc.isIonx) {
        Echo(v, "setting IONEX file!");
        gc.ionx.SetFile(gc.ionxfile);
    }
    if (gc.isMyion) {
        Echo(v, "setting MYIONO file!");
        gc.myion.SetFile(gc.myionfile);
    }
    if (gc.isAtx) {
        Echo(v, "setting ANTEX file!");
        gc.atx.SetFile(gc.atxfile);
    }
    if (gc.isP1P2) {
        Echo(v, "setting P1P2 DCB file!");
        gc.p1p2.SetFile(gc.dcbp1p2file);
    }
    if (gc.isP1C1) {
        Echo(v, "setting P1C1 DCB file!");
        gc.p1c1.SetFile(gc.dcbp1c1file);
    }
    if (gc.isP2C2) {
        Echo(v, "setting P2C2 DCB file!");
        gc.p2c2.SetFile(gc.dcbp2c2file);
    }
    if (gc.isMyDCB) {
        Echo(v, "setting Meskal - DCB file!");
        gc.mydcb.SetFile(gc.mydbcfile);
    }
    if (gc.isRCodTrc) {
        Echo(v, "setting RECEIVER CODE TRACKING file!");
        gc.rctrack.SetFile(gc.rctrackfile);
    }
    if (gc.isAprCrd) {
        Echo(v, "setting APRIORI COORDINATE file!");
        gc.acrd.SetFile(gc.aprcrdfile);
    }
    // The model codes go first: SetFile hands the name to the consumers that
    // the chosen model and mapping function need.
    if (gc.isTrpModel) {
        Echo(v, "setting TROPOSPHERE model and mapping function: " + std::to_string(gc.TrpModel)
                    + "/" + std::to_string(gc.TrpMappFun));
        gc.trpmodel.SetTropModel(gc.TrpModel);
        gc.trpmodel.SetMappFunction(gc.TrpMappFun);
    }
    if (gc.isVMF1file) {
        Echo(v, "setting VIENNA TROPOSPHERE MODEL/MAPPING FUNCTION file!");
        gc.trpmodel.SetFile(gc.vmf1file);
    }
    if (gc.isGPT2file) {
        Echo(v, "setting GPT2 TROPOSPHERE MODEL/MAPPING FUNCTION file!");
        gc.trpmodel.SetFile(gc.gpt2file);
    }
}
