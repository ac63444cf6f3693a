#include "driver/PrintArguments.h"

#include <iomanip>
#include <iostream>

#include "driver/Console.h"
#include "driver/ProgramRun.h"

namespace {

// Room that gTropModel asks for when it writes a model or mapping name.
constexpr int TropNameSize = 64;

const char* YesOrNone(bool flag) { return flag ? "YES" : " ---"; }
const char* YesOrNo(bool flag) { return flag ? "YES" : "NO"; }

// One report line of a file: its name when in use, " ---" otherwise.
void FileLine(const char* label, bool flag, const char* name)
{
    std::cout << label << (flag ? name : " ---") << "\n";
}

void Fixed(int width, int decimals, long double value)
{
    std::cout << std::fixed << std::setprecision(decimals) << std::setw(width) << value;
}

void PrintInputFiles(const gCPosC& gc)
{
    ProgramSubSubTitle("INPUT DATA (FILE NAMES):", 0);
    FileLine("  Apriori coordinate file             : ", gc.isAprCrd, gc.aprcrdfile);
    FileLine("  Observation (RINEX) file            : ", true, gc.rnxfile);
    FileLine("  Apriori receiver clock error file   : ", gc.isClkErr, gc.clkFName);
    FileLine("  Satellite problem file              : ", gc.isSCrx, gc.scrxfile);
    FileLine("  GPS broadcast navigation file       : ", gc.isGPSnav, gc.gnavfile);
    FileLine("  GLONASS broadcast navigation file   : ", gc.isGLNnav, gc.rnavfile);
    FileLine("  GALILEO broadcast navigation file   : ", gc.isGALnav, gc.enavfile);
    FileLine("  MULTI-GNSS precise ephemeris file   : ", gc.isPEph, gc.sp3file);
    FileLine("  MULTI-GNSS precise clock file       : ", gc.isPclk, gc.pclkfile);
    FileLine("  GLONASS frequency channel file      : ", gc.isGLNfrch, gc.glnfreqch);
    FileLine("  Earth rotation parameters file      : ", gc.isPTide, gc.ptidefile);
    FileLine("  Ocean tide loading file (BLQ)       : ", gc.isOTide, gc.otidefile);
    FileLine("  VMF1 mapping function / model file  : ", gc.isVMF1file, gc.vmf1file);
    FileLine("  GPT2 mapping function / model file  : ", gc.isGPT2file, gc.gpt2file);
    FileLine("  Ionosphere IONEX model file         : ", gc.isIonx, gc.ionxfile);
    FileLine("  Ionosphere Klobuchar model file     : ", gc.isKlob, gc.ionkfile);
    FileLine("  Ionosphere MyIono model file        : ", gc.isMyion, gc.myionfile);
    FileLine("  Antenna phase center variation file : ", gc.isAtx, gc.atxfile);
    FileLine("  Differential code bias file (P1P2)  : ", gc.isP1P2, gc.dcbp1p2file);
    FileLine("  Differential code bias file (P1C1)  : ", gc.isP1C1, gc.dcbp1c1file);
    FileLine("  Differential code bias file (P2C2)  : ", gc.isP2C2, gc.dcbp2c2file);
    FileLine("  Receiver code tracking type file    : ", gc.isRCodTrc, gc.rctrackfile);
    FileLine("  Multipath on P1/C1 file             : ", gc.isMP1, gc.mp1file);
    FileLine("  Multipath on P2 file                : ", gc.isMP2, gc.mp2file);
}

void PrintOutputFiles(const gCPosC& gc)
{
    std::cout << "\n";
    ProgramSubSubTitle("OUTPUT/RESULT FILES:", 0);
    FileLine("  Clock correction file               : ", gc.isClkFile, gc.clkfile);
    FileLine("  Differential code bias output file  : ", gc.isOutDCBFile, gc.estdcbfile);
    FileLine("  Estimated troposphere delays file   : ", gc.isOutTropFile, gc.esttropfile);
    FileLine("  Estimated epoch tropo. delays file  : ", gc.isOutTropEphFile,
             gc.esttropephfile);
    FileLine("  Pseudo-range correction values file : ", gc.isPRCorr, gc.prcorrfile);
    // Only when asked for: the report of a run without it keeps its layout.
    if (gc.isSinexFile) FileLine("  SINEX solution file                 : ", true, gc.sinexfile);
    FileLine("  File with redirected COUT content   : ", gc.isCoutFile, gc.CoutFile);
    FileLine("  File with redirected CERR content   : ", gc.isCerrFile, gc.CerrFile);
    std::cout << "\n\n";

    ProgramSubSubTitle("PLOTING FILES (GNUPLOT):", 0);
    FileLine("  Kinematic coordinates GNU Plot file : ", gc.isGNUPlotKin, gc.gnuplotKin);
    FileLine("  Static coordinates GNU Plot file    : ", gc.isGNUPlotStat, gc.gnuplotStat);
    FileLine("  Skyplot GNU Plot file               : ", gc.isSkyPlot, gc.skyplotfile);
    std::cout << "\n\n";
}

void PrintSystemsAndObservations(const gCPosC& gc)
{
    std::cout << "  Satellite systems used in processing:" << (gc.isGPS ? " GPS" : "")
              << (gc.isGLN ? " GLONASS" : "") << (gc.isGAL ? " GALILEO" : "") << "\n";
    std::cout << "  Code observations used in program   :" << (gc.ifC1 ? " C/A" : "")
              << (gc.ifP1 ? " P1" : "") << (gc.ifP2 ? " P2" : "")
              << (gc.ifPc3 ? " P3[C/A,P2]" : "") << (gc.ifPp3 ? " P3[P1,P2]" : "")
              << "\n";
    std::cout << "  Phase observations used in program  :" << (gc.ifL3 ? " L3" : "") << "\n";
    std::cout << "  Minimum elevation angle             : ";
    Fixed(0, 1, gc.MinElevation);
    std::cout << (gc.isMinElev ? " [MANUALLY SET]" : " [DEFAULT VALUE]") << "\n";
}

void PrintModels(gCPosC& gc)
{
    std::cout << "  Troposphere modeling                :\n";
    std::cout << "     Troposphere model                : ";
    if (gc.isTrpModel) {
        gc.trpmodel.SetTropModel(gc.TrpModel);
        gc.trpmodel.SetMappFunction(gc.TrpMappFun);
        char model[TropNameSize], mapping[TropNameSize];
        gc.trpmodel.GetTropModel(model);
        gc.trpmodel.GetTropMappF(mapping);
        std::cout << model << "\n"
                  << "     Troposphere mapping function     : " << mapping << "\n";
    } else {
        std::cout << " ---\n"
                  << "     Troposphere mapping function     : " << " ---\n";
    }

    std::cout << "  Ionosphere modeling                 :\n";
    std::cout << "     IONEX model                      : " << YesOrNone(gc.isIonx) << "\n";
    std::cout << "     Global Klobuchar parameters      : " << YesOrNone(gc.isKlob) << "\n";
    std::cout << "     Iono-free linear combination     : "
              << YesOrNone(gc.ifPc3 || gc.ifPp3) << "\n";

    // Later sources of the biases take precedence over earlier ones.
    const char* dcb = " ---";
    if (gc.isGPSnav) dcb = "Navigation time group delay";
    if (gc.isIonx) dcb = "IONEX DCB values";
    if (gc.isP1P2 || gc.isP1C1 || gc.isP2C2) dcb = "DCB values provided by CODE";
    std::cout << "  Differential code biases            : " << dcb << "\n";
    std::cout << "  Differential code biases - Meskal   : ";
    if (gc.isMyDCB)
        std::cout << "YES - " << gc.mydbcfile << "\n";
    else
        std::cout << " ---\n";
    std::cout << "  Solid Earth Tide modelling          : " << YesOrNone(gc.isSolidTide)
              << "\n";
    std::cout << "  Observation weighting               : "
              << (gc.obsP == gCPosC::COSZ ? "COS(Z) model" : " ---") << "\n";
}

void PrintAccuracyAndThresholds(const gCPosC& gc)
{
    std::cout << "  Reference standard deviatons        :\n";
    std::cout << "      observation C/A             [m] : ";
    Fixed(6, 4, gc.sigC);
    std::cout << "\n      observation P1/P2           [m] : ";
    Fixed(6, 4, gc.sigP);
    std::cout << "\n      observation L1/L2           [m] : ";
    Fixed(6, 4, gc.sigL1);
    std::cout << "\n      reference std. dev. apriori [m] : ";
    Fixed(6, 4, gc.sig0);
    std::cout << "\n";

    std::cout << "  Blunder detection in observations   : \n";
    std::cout << "      Misclosure vector f [threshold] : ";
    if (gc.isMaxfDiff) {
        std::cout << "YES [";
        Fixed(6, 2, gc.MaxfDiff);
        std::cout << " m]\n";
    } else {
        std::cout << "NO\n";
    }
    std::cout << "      Residual vector v [threshold]   : ";
    if (gc.isThresBlunder) {
        std::cout << "YES [";
        Fixed(0, 2, gc.ThresBlunder);
        std::cout << " * STD_V]\n";
    } else {
        std::cout << "NO\n";
    }

    std::cout << "  Threshold for L4 cycle slip screen. : " << YesOrNo(gc.isThresL4) << "\n";
    std::cout << "      L4 threshold                [m] : ";
    Fixed(6, 3, gc.ThresL40);
    std::cout << "\n      L4-rate threshold   [m/sqrt(s)] : ";
    Fixed(6, 3, gc.dThresL4);
    std::cout << "\n      L4 screening method             : "
              << (gc.isL4ScreenConst ? "CONSTANT" : "LINEAR") << "\n";

    std::cout << "  Antenna phase center modelling      : " << YesOrNone(gc.isAtx) << "\n";
    std::cout << "  Azimuth offset for calibration data : ";
    if (gc.isAzmOffAtx) {
        std::cout << "YES [";
        Fixed(0, 1, gc.AzmOffAtx);
        std::cout << "]\n";
    } else {
        std::cout << " ---\n";
    }
}

void PrintEstimation(const gCPosC& gc)
{
    std::cout << "  Type of processing solution         :\n";
    std::cout << "      KINEMATIC                       : " << YesOrNone(gc.ifEstKin) << "\n";
    std::cout << "      STATIC                          : " << YesOrNone(gc.ifEstSta) << "\n";
    std::cout << "  Estimation of DCB values            :" << (gc.isGPSxdcb ? " GPS" : "")
              << (gc.isGLNxdcb ? " GLONASS" : "") << (gc.isGALxdcb ? " GALILEO" : "")
              << "\n";

    std::cout << "  Estimation of troposphere parameters: " << YesOrNone(gc.ifEstTropo)
              << "\n";
    std::cout << "      Troposphere interval            : ";
    if (gc.ifEstTropo) {
        Fixed(0, 1, gc.TropoInterval);
        std::cout << " s\n";
    } else {
        std::cout << " ---\n";
    }
    std::cout << "      Troposphere epoch shift         : ";
    if (gc.ifEstTropo) {
        Fixed(0, 1, gc.TropoShift);
        std::cout << " s\n";
    } else {
        std::cout << " ---\n";
    }

    std::cout << "  Estimation of gradient tropo. par.  : " << YesOrNone(gc.ifEstTropoGrad)
              << "\n";
    std::cout << "      Number of gradient intervals    : ";
    if (!gc.ifEstTropoGrad)
        std::cout << " ---\n";
    else if (gc.nTropoGradInt == 0)
        std::cout << " same as ZTDs\n";
    else
        std::cout << gc.nTropoGradInt << "\n";

    std::cout << "  Check for minimum GNSS data         : ";
    if (gc.isMinDailyObs) {
        std::cout << "YES [";
        Fixed(0, 1, gc.MinDailyObs);
        std::cout << " %]\n";
    } else {
        std::cout << " ---\n";
    }
}

void PrintIteration(const gCPosC& gc)
{
    std::cout << "\n\n";
    ProgramSubSubTitle("ITERATION PROCESS:", 0);
    std::cout << "  Maximum number of iteration         : " << gc.MaxIter << "\n";
    std::cout << "  Iteration process threshold         : " << std::scientific
              << std::setprecision(2) << gc.IterThres << std::fixed << "\n";
    std::cout << "\n\n";
}

}  // namespace

void PrintArguments(gCPosC& gc)
{
    if (gc.verbose) std::cerr << "Orvo::PrintArguments(): PRINTING INPUT ARGUMENTS!\n";

    POut::ProgramName = "Orvo";
    POut::ProgramDescription = "GNSS PRECISE POINT POSITIONING (CODE+PHASE)";
    POut::Release = "07 FEB 2024";
    ProgramTitle();

    ProgramSubTitle("PROGRAM SETTINGS AND INPUT PARAMETERS:", 0);
    std::cout << "\n";

    PrintInputFiles(gc);
    PrintOutputFiles(gc);

    ProgramSubSubTitle("PROCESSING SETTINGS USED:", 0);
    PrintSystemsAndObservations(gc);
    PrintModels(gc);
    PrintAccuracyAndThresholds(gc);
    PrintEstimation(gc);
    PrintIteration(gc);
}
