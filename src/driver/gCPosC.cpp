#include "driver/gCPosC.h"

#include "numerics/MathConstants.h"
#include "numerics/Trigonometry.h"

namespace {

// Pi to more digits than long double holds, so the eclipse threshold is
// rounded once.
}  // namespace

gCPosC::gCPosC(RINEXHeader& rnxhIn, RINEXData& rnxdIn, RINEX& rnxIn)
    : rnxh(rnxhIn), rnxd(rnxdIn), rnx(rnxIn)
{
    eGPS.Set(0);
    eGAL.Set(0);
    eGLN.Set(2);

    char* const names[] = {
        rnxfile, clkFName, gnavfile, rnavfile, enavfile, sp3file, scrxfile,
        pclkfile, vmf1file, gpt2file, ionxfile, ionkfile, myionfile, dcbp1p2file,
        dcbp1c1file, dcbp2c2file, mydbcfile, mp1file, mp2file, atxfile,
        rctrackfile, aprcrdfile, glnfreqch, ptidefile, otidefile, clkfile,
        resfile, estdcbfile, esttropfile, esttropephfile, skyplotfile,
        prcorrfile, CoutFile, CerrFile, gnuplotKin, gnuplotStat};
    for (char* name : names) name[0] = '\0';
    isCoutFile = isCerrFile = false;

    verbose = iCout = false;
    isRnx = isClkErr = isGLNnav = isGPSnav = isGALnav = isPEph = isSCrx = isPclk =
        false;
    isVMF1file = isGPT2file = isIonx = isKlob = isMyion = isAtx = isP1P2 = isP1C1 =
        false;
    isP2C2 = isMyDCB = isMP1 = isMP2 = isRCodTrc = isTrpModel = isAprCrd =
        isGLNfrch = false;
    isPTide = isOTide = isClkFile = isresfile = false;
    isGPS = isGLN = isGAL = false;
    isGPSxdcb = isGLNxdcb = isGALxdcb = false;
    ifEstTropo = ifEstTropoGrad = false;
    isOutDCBFile = isOutTropFile = isOutTropEphFile = isSkyPlot = isPRCorr = false;
    isDateChkDaily = isThresL4 = isL4ScreenConst = doCopyFilterC = isHelp = false;
    RunProg = true;
    CorrAmbig = true;
    splitMidnightAmbs = false;
    isSolidTide = true;
    isGNUPlotKin = isGNUPlotStat = false;

    obsP = COSZ;
    TrpModel = TrpMappFun = -1;
    IonexUnit = 0;
    IonexProc = 1;
    IonexTECV = 0;
    ifC1 = ifP1 = ifP2 = ifPc3 = ifPp3 = ifL3 = false;
    ifEstKin = ifEstSta = false;
    MinElevation = 10.0;
    isMinElev = false;
    MinDailyObs = 50.0;
    isMinDailyObs = false;
    ThresBlunder = 4.0L;
    isThresBlunder = false;
    MaxfDiff = 500.0L;
    isMaxfDiff = false;
    RecCodeTrackType = 0;
    sigC = 0.2L;
    sigP = 0.2L;
    sigL1 = sigC / 100.0L;
    sig0 = sigP / 10.0L;
    sigPc3G = sigPc3R = sigPc3E = sigPp3G = sigPp3R = sigPp3E = 0.0L;
    sigL3G = sigL3R = sigL3E = 0.0L;
    p0C = p0P = p0Pc3G = p0Pc3R = p0Pc3E = p0Pp3G = p0Pp3R = p0Pp3E = 0.0L;
    p0L3G = p0L3R = p0L3E = 0.0L;
    isAzmOffAtx = false;
    AzmOffAtx = 0.0;
    MinObsAmb = 120;
    MaxAmbTimeGap = 30.5L;
    ThresL40 = 0.05L;
    dThresL4 = 0.02L;
    MWRMSThres = 0.86L;
    MWOutliersThres = 4.0L;
    P3OutliersThres = 4.0L;
    satEclipsThres = 14.0L * Pi / 180.0L;
    MaxIter = 10;
    IterDone = 0;
    IterThres = 0.0001;
    IterThresFin = 0.0;

    ndcbC1 = ndcbP1 = ndcbP2 = ndcbPc3 = ndcbPp3 = ndcbConstr = 0;
    isdcbC1 = isdcbP1 = isdcbP2 = isdcbPc3 = isdcbPp3 = false;
    isDCB_Gc = isDCB_Rc = isDCB_Ec = false;

    TropoInterval = TropoShift = TropoGradInterval = 0.0L;
    nTropoUnk = nTropoUnkGrad = nTropoUnkGradN = nTropoUnkGradE = 0;
    nTropoGradInt = 1;

    nAmb = 0;

    EclipsSat.Resize(gCPosCns::EclipsRows, 1, 0);
    EclipsNObs.Resize(gCPosCns::EclipsRows, 1, 0);
    NEclipsSat = 0;

    RecMag = 0.0L;

    ixX = ixY = ixZ = -1;
    for (int i = 0; i < 3; ++i) {
        ixDTsys[i] = -1;
        dtGNSS[i] = 0.0L;
    }
    nDTsys = 0;

    vtPv = s0apost = s0apost_C1 = s0apost_P1 = s0apost_P2 = 0.0L;
    s0apost_Pc3 = s0apost_Pp3 = s0apost_L3 = 0.0L;

    NObs = NObsG = NObsR = NObsE = 0;
    NObsOutl = NObsOutlPh = NObsOutlCd = NObsOutlG = NObsOutlR = NObsOutlE = 0;
    NObsOutlGPh = NObsOutlRPh = NObsOutlEPh = 0;
    NObsOutlGCd = NObsOutlRCd = NObsOutlECd = 0;

    NXcrd = NUnkDCB = NUnk = NClk = NUnkUndef = 0;
}

long double gCPosC::SinElevation(long k) const
{
    // Elevations set without the modelling stage have no sines kept.
    return k < SINELV.NRow() ? SINELV(k) : trig::Sin(ELV(k));
}

xyzt gCPosC::SatellitePosition(long k) const
{
    if (HasSavedSolution(k)) return GNSSpEph::SolvedPosition(savedSat(k).state);
    return SAT_POS(k);
}
