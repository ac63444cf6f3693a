#pragma once
// The processing context: every setting and every piece of data that passes
// from one stage of a run to the next. One object, owned by main, taken by
// reference by all stages.
#include <fstream>
#include <vector>

#include "delays/CompactTEQC.h"
#include "delays/DCB.h"
#include "delays/IONEX.h"
#include "delays/IonKlobuchar.h"
#include "delays/antex.h"
#include "delays/RecCodeTrack.h"
#include "delays/myDCB.h"
#include "delays/myIono.h"
#include "delays/gTropDelay.h"
#include "delays/gTropModel.h"
#include "geodesy/elipsoid.h"
#include "geodesy/flh.h"
#include "geodesy/mjd.h"
#include "geodesy/neu.h"
#include "geodesy/xyz.h"
#include "numerics/matrix.h"
#include "observations/RINEX.h"
#include "observations/RINEXData.h"
#include "observations/RINEXHeader.h"
#include "observations/SatCRX.h"
#include "observations/SatelliteSystem.h"
#include "orbits/ClkErr.h"
#include "orbits/GNSSpClk.h"
#include "orbits/GLNSat.h"
#include "orbits/GLNbEph.h"
#include "orbits/GNSSpEph.h"
#include "orbits/GPSbEph.h"
#include "site/LuniSolarPosition.h"
#include "site/gCRD.h"
#include "site/OceanTideLoading.h"
#include "site/PoleTide.h"
#include "site/SolidEarthTide.h"

namespace gCPosCns {
/// Room of a file name member, terminator included.
constexpr int FileNameSize = 256;
/// Rows of the eclipse tables: satellites that can be in eclipse season.
constexpr long EclipsRows = 100;
}  // namespace gCPosCns

class gCPosC {
public:
    /// Weighting modes of obsP: equal weights or sin²(elevation) weights.
    enum { OBSP1 = 0, COSZ = 1 };

    /// Builds the context on the observation file objects owned by the
    /// caller, which must outlive it; every setting at its default.
    gCPosC(RINEXHeader& rnxhIn, RINEXData& rnxdIn, RINEX& rnxIn);

    gCPosC(const gCPosC&) = delete;
    gCPosC& operator=(const gCPosC&) = delete;

    // Group 1: the observation file, owned by main.
    RINEXHeader& rnxh;
    RINEXData& rnxd;
    RINEX& rnx;

    // Group 2: model and file objects and reference ellipsoids.
    ClkErr clkerr;
    GPSbEph gpsnav, galnav;
    GLNbEph glnnav;
    GNSSpEph pephM;
    SatCRX scrx;
    GNSSpClk pclkM;
    gTropModel trpmodel;
    gTropDelay trpdelay;
    GLNSat glnfc;
    IonKlobuchar ionk;
    IONEX ionx;
    myIono myion;
    antex atx;
    DCB p1p2, p1c1, p2c2;
    myDCB mydcb;
    RecCodeTrack rctrack;
    CompactTEQC mp1, mp2;
    LuniSolarPosition lsp;
    SolidEarthTide nset;
    OceanTideLoading otide;
    PoleTide ptide;
    gCRD acrd;
    elipsoid eGPS, eGAL, eGLN;

    // Group 3: file names, empty until the command line names them.
    char rnxfile[gCPosCns::FileNameSize], clkFName[gCPosCns::FileNameSize],
        gnavfile[gCPosCns::FileNameSize], rnavfile[gCPosCns::FileNameSize],
        enavfile[gCPosCns::FileNameSize], sp3file[gCPosCns::FileNameSize],
        scrxfile[gCPosCns::FileNameSize], pclkfile[gCPosCns::FileNameSize],
        vmf1file[gCPosCns::FileNameSize], gpt2file[gCPosCns::FileNameSize],
        ionxfile[gCPosCns::FileNameSize], ionkfile[gCPosCns::FileNameSize],
        myionfile[gCPosCns::FileNameSize], dcbp1p2file[gCPosCns::FileNameSize],
        dcbp1c1file[gCPosCns::FileNameSize], dcbp2c2file[gCPosCns::FileNameSize],
        mydbcfile[gCPosCns::FileNameSize], mp1file[gCPosCns::FileNameSize],
        mp2file[gCPosCns::FileNameSize], atxfile[gCPosCns::FileNameSize],
        rctrackfile[gCPosCns::FileNameSize], aprcrdfile[gCPosCns::FileNameSize],
        glnfreqch[gCPosCns::FileNameSize], ptidefile[gCPosCns::FileNameSize],
        otidefile[gCPosCns::FileNameSize];
    char clkfile[gCPosCns::FileNameSize], resfile[gCPosCns::FileNameSize],
        estdcbfile[gCPosCns::FileNameSize], esttropfile[gCPosCns::FileNameSize],
        esttropephfile[gCPosCns::FileNameSize], skyplotfile[gCPosCns::FileNameSize],
        prcorrfile[gCPosCns::FileNameSize], CoutFile[gCPosCns::FileNameSize],
        CerrFile[gCPosCns::FileNameSize];
    bool isCoutFile, isCerrFile;
    char gnuplotKin[gCPosCns::FileNameSize], gnuplotStat[gCPosCns::FileNameSize];
    std::fstream gplotKin, gplotStat;
    // The SINEX result file of the static solution (-os).
    char sinexfile[gCPosCns::FileNameSize] = {};
    bool isSinexFile = false;

    // Group 4: presence (is...) and switch flags.
    bool verbose, iCout;
    bool isRnx, isClkErr, isGLNnav, isGPSnav, isGALnav, isPEph, isSCrx, isPclk,
        isVMF1file, isGPT2file, isIonx, isKlob, isMyion, isAtx, isP1P2, isP1C1,
        isP2C2, isMyDCB, isMP1, isMP2, isRCodTrc, isTrpModel, isAprCrd, isGLNfrch,
        isPTide, isOTide, isClkFile, isresfile;
    bool isGPS, isGLN, isGAL;
    bool isGPSxdcb, isGLNxdcb, isGALxdcb;
    bool ifEstTropo, ifEstTropoGrad;
    bool isOutDCBFile, isOutTropFile, isOutTropEphFile, isSkyPlot, isPRCorr,
        isDateChkDaily, isThresL4, isL4ScreenConst, doCopyFilterC, isHelp;
    bool RunProg;
    bool CorrAmbig;
    bool splitMidnightAmbs;
    bool isSolidTide;
    bool isGNUPlotKin, isGNUPlotStat;

    // Group 5: settings.
    mjd DateChkDaily;
    short obsP;
    short TrpModel, TrpMappFun;  // -1: not chosen on the command line
    int IonexUnit, IonexProc, IonexTECV;
    bool ifC1, ifP1, ifP2, ifPc3, ifPp3, ifL3;
    bool ifEstKin, ifEstSta;
    double MinElevation;  // degrees
    bool isMinElev;
    double MinDailyObs;   // per cent of the epochs of a day
    bool isMinDailyObs;
    long double ThresBlunder;
    bool isThresBlunder;
    long double MaxfDiff;
    bool isMaxfDiff;
    short RecCodeTrackType;
    long double sigC, sigP, sigL1, sig0;
    long double sigPc3G, sigPc3R, sigPc3E, sigPp3G, sigPp3R, sigPp3E, sigL3G,
        sigL3R, sigL3E;
    long double p0C, p0P, p0Pc3G, p0Pc3R, p0Pc3E, p0Pp3G, p0Pp3R, p0Pp3E, p0L3G,
        p0L3R, p0L3E;
    bool isAzmOffAtx;
    double AzmOffAtx;  // degrees
    long MinObsAmb;
    long double MaxAmbTimeGap;
    long double ThresL40, dThresL4;
    long double MWRMSThres;
    long double MWOutliersThres, P3OutliersThres;
    long double satEclipsThres;
    int MaxIter, IterDone;
    double IterThres, IterThresFin;

    // Group 6: estimation state.
    // Direction cosines of each record's design row (its coordinate
    // entries) as the static adjustment last formed them; the rest of the
    // row follows from the epoch (StoredDesignRow).
    matrix<long double> mB;
    // Light-time solution of each record's satellite (precise orbits) with
    // the receiver clock (m) it was made for: the later iterations and the
    // second adjustment move it instead of interpolating again.
    struct SavedSatellite {
        GNSSpEph::LightTimeState state;
        long double recClk = 0.0L;
        bool saved = false, clockOK = false;
        using ZeroBytesDefault = void;
    };
    matrix<SavedSatellite> savedSat;
    /// Position and clock (relativity term off) at emission of record k's
    /// satellite as the preprocessing found them: from the record's saved
    /// light-time solution (precise orbits), else from SAT_POS (navigation
    /// files). Read only before the adjustment, which renews the solutions.
    xyzt SatellitePosition(long k) const;
    /// The position alone, the same as SatellitePosition's: the many
    /// callers that need no clock are spared the relativity term and the
    /// copy, a record at a time over the day.
    const xyz& SatelliteXYZ(long k) const { return HasSavedSolution(k) ? savedSat(k).state.pos : SAT_POS(k); }
    /// Whether record k has a saved light-time solution.
    bool HasSavedSolution(long k) const { return k >= 0 && k < savedSat.NRow() && savedSat(k).saved; }
    /// sin(ELV(k)), as trig::Sin gives it.
    long double SinElevation(long k) const;
    /// True when SatellitePosition answers for the first n records.
    bool HasSatellitePositions(long n) const { return savedSat.NRow() >= n || SAT_POS.NRow() >= n; }

    matrix<long double> dcbC1, dcbP1, dcbP2, dcbPc3, dcbPp3;
    matrix<long int> ixdcbC1, ixdcbP1, ixdcbP2, ixdcbPc3, ixdcbPp3;
    long int ndcbC1, ndcbP1, ndcbP2, ndcbPc3, ndcbPp3, ndcbConstr;
    bool isdcbC1, isdcbP1, isdcbP2, isdcbPc3, isdcbPp3;
    bool isDCB_Gc, isDCB_Rc, isDCB_Ec;

    long double TropoInterval, TropoShift, TropoGradInterval;
    matrix<mjd> TropoEpoch, TropoGradEpoch;
    matrix<long double> xTropo, xTropoGradN, xTropoGradE;
    matrix<long int> ixTropo, ixTropoGradN, ixTropoGradE;
    long int nTropoUnk, nTropoUnkGrad, nTropoUnkGradN, nTropoUnkGradE;
    int nTropoGradInt;

    long nAmb;
    matrix<long double> xAmb;
    matrix<long> AmbIndex;
    matrix<short> AmbSat;
    matrix<long int> ixAmb;

    matrix<long double> TROP, MFTROP, MFGRAD, ION, SETIDE, PTIDE, OTIDE, ELV, AZM,
        WGHT, REL2;
    // The sine of ELV, formed once: half a dozen stages weight by it.
    matrix<long double> SINELV;
    matrix<xyzt> SAT_POS;
    matrix<bool> OKSAT;
    matrix<xyz> posSunUnit;
    matrix<long double> SunMag;

    matrix<long double> prcdDst, prcdTs, prcdRel, prcdTr, prcTrop, prcIon, prcAtx,
        prcTid;

    matrix<short> EclipsSat;
    matrix<long> EclipsNObs;
    long NEclipsSat;

    xyz RecPos0;
    flh RecPos0G;
    xyz RecPosFC;
    flh RecPosFCG;
    neu RecPosEccLG;
    xyz RecPosEcc;
    xyz RecPosUnit;
    long double RecMag;

    xyz RecPosCorr;
    neu RecPosCorrG;
    xyz RecPosEst;
    flh RecPosEstG;

    long int ixX, ixY, ixZ;
    long int ixDTsys[3];
    long int nDTsys;
    long double dtGNSS[3];  // inter-system biases, metres

    matrix<long double> NFin, Nc, Nt, tc, tt, tall, QxxAll, xAll, dtAll, xtemp;
    matrix<bool> IsUnkOK;
    matrix<long double> QdtAll;

    matrix<long double> fc1, fp1, fp2, fc3, fp3, fl3;
    matrix<bool> ifOc1, ifOp1, ifOp2, ifOc3, ifOp3, ifOl3;
    matrix<bool> ifXc1, ifXp1, ifXp2, ifXc3, ifXp3, ifXl3;

    long double vtPv, s0apost, s0apost_C1, s0apost_P1, s0apost_P2, s0apost_Pc3,
        s0apost_Pp3, s0apost_L3;

    long NObs, NObsG, NObsR, NObsE, NObsOutl, NObsOutlPh, NObsOutlCd, NObsOutlG,
        NObsOutlR, NObsOutlE, NObsOutlGPh, NObsOutlRPh, NObsOutlEPh, NObsOutlGCd,
        NObsOutlRCd, NObsOutlECd;

    long NXcrd, NUnkDCB, NUnk, NClk, NUnkUndef;

    /// True when a multipath file on P1 was given.
    bool GetIsMP1() const { return isMP1; }
    /// True when a multipath file on P2 was given.
    bool GetIsMP2() const { return isMP2; }
    /// True in verbose mode (-v): the progress log is written.
    bool GetVerbose() const { return verbose; }
    /// True when a Meskal code bias file was given.
    bool GetIsMyDBC() const { return isMyDCB; }
    /// True when GPS takes part in the run.
    bool GetIsGPS() const { return isGPS; }
    /// True when GLONASS takes part in the run.
    bool GetIsGLN() const { return isGLN; }
    /// True when the system of satellite number sat takes part in the run.
    bool UsesSystem(short sat) const
    {
        const SatSystem s = SystemOf(sat);
        return (s == SysGPS && isGPS) || (s == SysGLN && isGLN) || (s == SysGAL && isGAL);
    }
    /// True when Galileo takes part in the run.
    bool GetIsGAL() const { return isGAL; }
    /// True when a satellite problem file was given.
    bool GetIsSCRX() const { return isSCrx; }
    /// The satellite problem list (empty unless a problem file was read).
    SatCRX& GetSatCRX() { return scrx; }
    /// False when the run stops after the command line (help printed).
    bool GetRunProg() const { return RunProg; }
    /// True when the outlier check rejected at least one observation.
    bool GetNOutl() const { return NObsOutl != 0; }
};
