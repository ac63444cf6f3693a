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
    if (gc.isGLNnav) {
        Echo(v, "setting GLONASS NAVIGATION file!");
        gc.glnnav.SetFile(gc.rnavfile);
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
    if (gc.isAtx) {
        Echo(v, "setting ANTEX file!");
        gc.atx.SetFile(gc.atxfile);
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
