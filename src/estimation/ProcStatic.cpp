#include "estimation/ProcStatic.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <iomanip>
#include <iostream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "driver/Console.h"
#include "geodesy/CoordinateTransforms.h"
#include "geodesy/TimeConverse.h"
#include "geodesy/ymdhms.h"
#include "numerics/ProgramError.h"
#include "numerics/lur.h"
#include "numerics/norm.h"
#include "estimation/EpochProgress.h"
#include "numerics/MathConstants.h"
#include "observations/GLONASSc.h"
#include "observations/SatelliteSystem.h"
#include "orbits/LightTimeHints.h"
#include "preprocessing/BroadcastSatellite.h"
#include "preprocessing/SetAmbiguities.h"

namespace {

// A saved light-time solution is moved, not interpolated again, while the
// receiver clock has changed by less than this: over 10 µs the move misses a
// fresh interpolation by less than 1e-10 m in range and 1e-6 m in the orbit
// file's clock, which it keeps (drifts up to 3e-10 s/s were seen).
constexpr long double MaxStateShift_s = 1e-5L;
// The same where the clock file gives the clock, and the move only carries
// the orbit: over 2 ms it misses by less than 1e-9 m in range and 4e-8 m in
// the relativity term (GNSSpEph::MovedSatPosition), so the solutions of the
// preprocessing, made without the receiver clock (a receiver keeps it within
// a millisecond), start the first iteration. A clock standing off further
// (no steering, a reset) has the satellite interpolated afresh.
constexpr long double MaxMovedShift_s = 2e-3L;
// An iteration solves its step with the factors of the normal matrix of an
// earlier one while the coordinates have since moved by less than this in
// all, and the clocks (as ranges) by less than MaxKeptClockMove_m, over the
// same equations. The matrix changes by the move over the satellite
// distance, 5e-7 for 10 m, and the step by that fraction of itself: where
// the iteration stops (a step below 1e-4 m), by 5e-11 m at most. The right
// side is formed afresh at every iteration, so the solution reached is that
// of the full system. From a header position the first iteration's matrix
// thus serves to the end.
constexpr long double MaxKeptMove_m = 10.0L;
// A range of 1 km of clock moves a satellite by 0.013 m in its flight.
constexpr long double MaxKeptClockMove_m = 1000.0L;

// One code observation type as it enters the adjustment.
struct CodeType {
    bool on;                      // switched on, in the header and stored
    matrix<gnssobs>* obs;
    matrix<long double>* f;       // misclosure per record
    matrix<bool>* used;
    matrix<bool>* rejected;
    bool dcb;                     // code bias unknowns of this type
    matrix<long int>* ixdcb;
    matrix<long double>* dcbValue;
    long double* fTf;             // weighted square sum without base weight
    const char* label;            // outlier line, nullptr for none
    int kind;                     // 0 C1, 1 P1, 2 P2, 3 Pc3, 4 Pp3
};

void WeightLine(const char* label, long double sigma, long double weight)
{
    std::cout << label << "  S: " << std::setw(6) << std::setprecision(4) << sigma
              << "     W: " << std::setw(8) << std::setprecision(4) << weight << "\n";
}

// The framed-less report line of an observation rejected by the blunder
// bound; extra text may follow before the end of the line.
void OutlierLine(short prn, long i, const mjd& t, const char* label, long double f)
{
    std::cout << "    Outlier detection:  PRN" << std::setw(4) << prn << "   EPOCH: " << std::setw(5)
              << i + 1 << " [" << mjd2ymdhms(t) << "]" << label << std::setw(12)
              << std::setprecision(3) << f;
}

// Standard deviation in mm of a variance. A type variance below zero (each
// type sum loses the whole x'tc, so a type with few observations can end
// there) has no root and prints as not-a-number: a clamp to zero would read
// as a perfect fit and would make the outlier check's phase bound zero.
long double StdMM(long double var) { return std::sqrt(var) * 1000.0L; }

bool Sized(long rows, long need) { return rows >= need; }

}  // namespace

std::string NoObservationReason(const gCPosC& gc)
{
    const RINEXData& d = gc.rnxd;
    const long n = std::min({d.GetNObs(), gc.OKSAT.NRow(), gc.ELV.NRow()});
    const long double minElevation = static_cast<long double>(gc.MinElevation) * Deg2Rad;
    bool orbit = false, above = false;
    for (long k = 0; k < n; ++k) {
        if (!gc.UsesSystem(d.sat(k)) || !gc.OKSAT(k)) continue;
        orbit = true;
        above = above || gc.ELV(k) > minElevation;
    }
    if (!orbit) return "NO ORBIT OR CLOCK FOR THE OBSERVATION EPOCHS";
    if (!above) return "NO SATELLITE ABOVE THE ELEVATION CUT-OFF";
    return "NO OBSERVATION OF THE CHOSEN TYPES LEFT";
}

TropoSlots EpochTropoSlots(gCPosC& gc, mjd& t)
{
    TropoSlots s;
    if (!gc.ifEstTropo || gc.nTropoUnk <= 1) return s;
    long iTropo = -1;
    GetTropoIndex(t, gc.TropoEpoch, iTropo);
    if (iTropo < 0) return s;
    const long double dtTropoI = gc.TropoEpoch(iTropo + 1) - gc.TropoEpoch(iTropo);
    s.factor[0] = (gc.TropoEpoch(iTropo + 1) - t) / dtTropoI;
    s.factor[1] = (t - gc.TropoEpoch(iTropo)) / dtTropoI;
    s.zenith = gc.xTropo(iTropo) * s.factor[0] + gc.xTropo(iTropo + 1) * s.factor[1];
    s.col[0] = gc.ixTropo(iTropo);
    s.col[1] = gc.ixTropo(iTropo + 1);
    if (!gc.ifEstTropoGrad || gc.nTropoUnkGradN <= 1) return s;
    long iGrad = -1;
    GetTropoIndex(t, gc.TropoGradEpoch, iGrad);
    if (iGrad < 0) return s;
    const long double dtI = gc.TropoGradEpoch(iGrad + 1) - gc.TropoGradEpoch(iGrad);
    s.factor[2] = s.factor[4] = (gc.TropoGradEpoch(iGrad + 1) - t) / dtI;
    s.factor[3] = s.factor[5] = (t - gc.TropoGradEpoch(iGrad)) / dtI;
    s.north = gc.xTropoGradN(iGrad) * s.factor[2] + gc.xTropoGradN(iGrad + 1) * s.factor[3];
    s.east = gc.xTropoGradE(iGrad) * s.factor[2] + gc.xTropoGradE(iGrad + 1) * s.factor[3];
    s.col[2] = gc.ixTropoGradN(iGrad);
    s.col[3] = gc.ixTropoGradN(iGrad + 1);
    s.col[4] = gc.ixTropoGradE(iGrad);
    s.col[5] = gc.ixTropoGradE(iGrad + 1);
    return s;
}

void StoredDesignRow(const gCPosC& gc, long k, int sys, const TropoSlots& tropo,
                     long double (&b)[ProcStaticns::NSlots], long (&col)[ProcStaticns::NSlots])
{
    // A troposphere entry is the record's mapping value (negated) times the
    // epoch's node weight, the product the adjustment's normals are made of.
    const long double mf = -gc.MFTROP(k);
    const long double mfN = tropo.col[2] >= 0 ? -gc.MFGRAD(k, 0) : 0.0L;
    const long double mfE = tropo.col[2] >= 0 ? -gc.MFGRAD(k, 1) : 0.0L;
    const long double mapping[6] = {mf, mf, mfN, mfN, mfE, mfE};
    const long xyzCol[3] = {gc.ixX, gc.ixY, gc.ixZ};
    for (int s = 0; s < 3; ++s) {
        b[s] = gc.mB(k, s);
        col[s] = xyzCol[s];
    }
    b[3] = b[4] = b[5] = -1.0L;
    col[3] = gc.ixDTsys[sys];
    col[4] = col[5] = -1;
    for (int s = 0; s < 6; ++s) {
        b[6 + s] = mapping[s] * tropo.factor[s];
        col[6 + s] = tropo.col[s];
    }
}

void ProcStatic(gCPosC& gc)
{
    using namespace ProcStaticns;
    RINEXHeader& h = gc.rnxh;
    RINEXData& d = gc.rnxd;
    const long nEp = d.nepochall, nRec = d.nsatall;
    long int nUnk = gc.NUnk;
    const long nAll = gc.NUnk + gc.ndcbConstr;

    // The layout and the per-record model values come from the stages
    // before; without them every index below would be out of range.
    if (nUnk < 3 || gc.Nc.NRow() != nUnk || gc.NFin.NRow() != nAll || gc.xAll.NRow() != nAll)
        ProgramError("Orvo", "STATIC SOLUTION: UNKNOWNS ARE NOT SET!");
    if (nEp <= 0 || d.epoch.NRow() < nEp || d.nsat.NRow() < nEp || d.sat.NRow() < nRec)
        ProgramError("Orvo", "STATIC SOLUTION: NO OBSERVATION EPOCHS!");
    const long perRec[] = {gc.ELV.NRow(), gc.WGHT.NRow(), gc.TROP.NRow(), gc.MFTROP.NRow(),
                           gc.ION.NRow(), gc.SETIDE.NRow(), gc.isPTide ? gc.PTIDE.NRow() : nRec,
                           gc.isOTide ? gc.OTIDE.NRow() : nRec,
                           gc.REL2.NRow(), gc.MFGRAD.NRow()};
    for (long r : perRec)
        if (r < nRec) ProgramError("Orvo", "STATIC SOLUTION: OBSERVATION CORRECTIONS ARE NOT SET!");
    if (gc.ifEstTropoGrad && gc.MFGRAD.NCol() < 2)
        ProgramError("Orvo", "STATIC SOLUTION: GRADIENT MAPPING VALUES ARE NOT SET!");
    // Without an a-priori clock solution the adjustment starts from zero;
    // the clock is re-solved in every iteration.
    if (gc.dtAll.NRow() != nEp) gc.dtAll.Resize(nEp, 1, 0.0L);
    if (gc.isPRCorr) {
        matrix<long double>* prc[] = {&gc.prcdDst, &gc.prcdTs, &gc.prcdRel, &gc.prcdTr,
                                      &gc.prcTrop, &gc.prcIon, &gc.prcTid};
        for (matrix<long double>* m : prc)
            if (m->NRow() != nRec) m->Resize(nRec, 1, 0.0L);
    }
    const bool storeRows = gc.ifEstKin || gc.isThresBlunder;
    if (storeRows && (gc.mB.NRow() != nRec || gc.mB.NCol() != 3)) gc.mB.Resize(nRec, 3, 0.0L);

    const long double minElevation = Pi * static_cast<long double>(gc.MinElevation) / 180.0L;
    matrix<short> SatList = d.satList;
    long nSatList = SatList.NRow();

    long double fTf = 0.0L, fTf_C1 = 0.0L, fTf_P1 = 0.0L, fTf_P2 = 0.0L, fTf_Pc3 = 0.0L,
                fTf_Pp3 = 0.0L, fTf_L3 = 0.0L;
    auto typeOn = [&](bool sw, bool hdr, const matrix<gnssobs>& o, const matrix<long double>& f) {
        return sw && hdr && Sized(o.NRow(), nRec) && Sized(f.NRow(), nRec);
    };
    CodeType codes[5] = {
        {typeOn(gc.ifC1, h.iC1, d.C1, gc.fc1), &d.C1, &gc.fc1, &gc.ifOc1, &gc.ifXc1, gc.isdcbC1,
         &gc.ixdcbC1, &gc.dcbC1, &fTf_C1, "     f(C1) = ", 0},
        {typeOn(gc.ifP1, h.iP1, d.P1, gc.fp1), &d.P1, &gc.fp1, &gc.ifOp1, &gc.ifXp1, gc.isdcbP1,
         &gc.ixdcbP1, &gc.dcbP1, &fTf_P1, nullptr, 1},
        {typeOn(gc.ifP2, h.iP2, d.P2, gc.fp2), &d.P2, &gc.fp2, &gc.ifOp2, &gc.ifXp2, gc.isdcbP2,
         &gc.ixdcbP2, &gc.dcbP2, &fTf_P2, nullptr, 2},
        {typeOn(gc.ifPc3, h.iPC3, d.PC3, gc.fc3), &d.PC3, &gc.fc3, &gc.ifOc3, &gc.ifXc3, gc.isdcbPc3,
         &gc.ixdcbPc3, &gc.dcbPc3, &fTf_Pc3, "     f(PC3) = ", 3},
        {typeOn(gc.ifPp3, h.iPP3, d.PP3, gc.fp3), &d.PP3, &gc.fp3, &gc.ifOp3, &gc.ifXp3, gc.isdcbPp3,
         &gc.ixdcbPp3, &gc.dcbPp3, &fTf_Pp3, "     f(PP3) = ", 4},
    };
    const bool useL3 = typeOn(gc.ifL3, h.iL3, d.L3, gc.fl3) && gc.nAmb > 0 &&
                       gc.ixAmb.NRow() >= gc.nAmb && gc.xAmb.NRow() >= gc.nAmb;

    if (gc.verbose) std::cerr << "Orvo::ProcStatic(): PROCESSING OF CODE/PHASE OBSERVATIONS!\n";
    ProgramSubSubTitle("ESTIMATING GNSS UNKNOWNS WITH PPP:", 0);
    std::cout << std::fixed;
    std::cout << "  Standard deviatons and weights      :\n";
    WeightLine("      observation C/A             [m] :", gc.sigC, gc.p0C);
    WeightLine("      observation P1/P2           [m] :", gc.sigP, gc.p0P);
    WeightLine("      observation P3[C1,P2]-GPS   [m] :", gc.sigPc3G, gc.p0Pc3G);
    WeightLine("      observation P3[C1,P2]-GLN   [m] :", gc.sigPc3R, gc.p0Pc3R);
    WeightLine("      observation P3[C1,C7]-GAL   [m] :", gc.sigPc3E, gc.p0Pc3E);
    WeightLine("      observation P3[P1,P2]-GPS   [m] :", gc.sigPp3G, gc.p0Pp3G);
    WeightLine("      observation P3[P1,P2]-GLN   [m] :", gc.sigPp3R, gc.p0Pp3R);
    WeightLine("      observation P3[P1,C7]-GAL   [m] :", gc.sigPp3E, gc.p0Pp3E);
    WeightLine("      observation L3[L1,L2]-GPS   [m] :", gc.sigL3G, gc.p0L3G);
    WeightLine("      observation L3[L1,L2]-GLN   [m] :", gc.sigL3R, gc.p0L3R);
    WeightLine("      observation L3[L1,L7]-GAL   [m] :", gc.sigL3E, gc.p0L3E);
    std::cout << "      reference std. dev. apriori [m] : " << std::setw(6) << std::setprecision(4)
              << gc.sig0 << "\n\n";
    std::cout << "  PROCESSING GNSS OBSERVATIONS:\n";

    // The clock rows of the epochs, kept as their few non-zero columns for
    // the clocks' back substitution: a full epochs-by-unknowns block would
    // be mostly zeros. A row holds about one column per record and a few
    // shared ones; taken at once, the storage is not copied and faulted in
    // again at every doubling.
    EpochNormals sums(nUnk);
    matrix<long double> N22(nEp, 1, 0.0L), t2(nEp, 1, 0.0L);
    std::vector<long> rowStart(static_cast<std::size_t>(nEp) + 1, 0);
    LargeVector<long> rowCol;
    LargeVector<long double> rowVal;
    const std::size_t rowGuess = static_cast<std::size_t>(nRec + NSlots * nEp);
    rowCol.reserve(rowGuess);
    rowVal.reserve(rowGuess);
    long double nodeFactor[NSlots];
    long int B_OBS_I[NSlots];
    for (long int& s : B_OBS_I) s = -1;
    for (long double& s : nodeFactor) s = 1.0L;
    B_OBS_I[0] = gc.ixX;
    B_OBS_I[1] = gc.ixY;
    B_OBS_I[2] = gc.ixZ;

    const bool sysOn[3] = {gc.isGPS, gc.isGLN, gc.isGAL};
    long* sysCount[3] = {&gc.NObsG, &gc.NObsR, &gc.NObsE};
    const long double p0Pc3[3] = {gc.p0Pc3G, gc.p0Pc3R, gc.p0Pc3E};
    const long double p0Pp3[3] = {gc.p0Pp3G, gc.p0Pp3R, gc.p0Pp3E};
    const long double p0L3[3] = {gc.p0L3G, gc.p0L3R, gc.p0L3E};

    // The light-time solutions of the preprocessing, kept for the second
    // adjustment; sized here where there are none of the record store's
    // size (fresh storage holds nothing saved). Navigation files need none.
    if (gc.isPEph && gc.savedSat.NRow() != nRec) gc.savedSat.Resize(nRec);
    // The ambiguity of each record, looked up in the first iteration: the
    // arcs stay the same through the iterations.
    std::vector<long> ambOfRec(useL3 ? static_cast<std::size_t>(nRec) : 0, -1);
    const AmbiguityLookup arcs(gc.AmbIndex, gc.AmbSat, gc.nAmb);
    // Where a satellite is interpolated afresh (the first iteration), its
    // last epoch's flight time starts the light-time iteration.
    LightTimeHints hints;
    // The factors of the last iteration's system give the covariance.
    lur<long double> lu;
    int niter = 1;
    long double dcorr = 0.0L;
    // Whether this iteration sums the normal matrix; the moves since the
    // last that did, and a fingerprint of the equations it summed.
    bool sumMatrix = true;
    long double moved = 0.0L, clockMoved = 0.0L;
    unsigned long long summedSet = 0;
    for (;;) {
        if (sumMatrix) {
            gc.Nc *= 0.0L;
            gc.Nt *= 0.0L;
        }
        sums.SumMatrix(sumMatrix);
        unsigned long long eqSet = 0;
        const auto addToSet = [&eqSet](long k, int kind) {
            eqSet = (eqSet ^ static_cast<unsigned long long>(k * 8 + kind)) * 0x100000001b3ULL;
        };
        gc.tc *= 0.0L;
        gc.tt *= 0.0L;
        N22 *= 0.0L;
        t2 *= 0.0L;
        rowCol.clear();
        rowVal.clear();
        fTf = fTf_C1 = fTf_P1 = fTf_P2 = fTf_Pc3 = fTf_Pp3 = fTf_L3 = 0.0L;
        gc.NObs = gc.NObsG = gc.NObsR = gc.NObsE = gc.NClk = 0;

        if (gc.isPclk) gc.pclkM.SetEpochIndex(d.epoch(0));
        if (gc.verbose)
            std::cerr << "Orvo::ProcStatic():         " << std::setw(3) << niter << ":   Process:       ";
        EpochProgress progress(gc.verbose);
        long i1 = 0;
        for (long int i = 0; i < nEp; ++i) {
            progress.Step(i, nEp);
            const long i2 = i1 + d.nsat(i);
            if (d.nsat(i) < 0 || i2 > nRec)
                ProgramError("Orvo", "STATIC SOLUTION: RECORD COUNT OF EPOCH " + std::to_string(i + 1) +
                                         " EXCEEDS THE RECORD STORE!");
            if (gc.isPclk) gc.pclkM.SetEpochIndex(d.epoch(i), gc.pclkM.GetEpochIx());

            const TropoSlots tropo = EpochTropoSlots(gc, d.epoch(i));
            for (int s = 6; s < NSlots; ++s) {
                B_OBS_I[s] = tropo.col[s - 6];
                nodeFactor[s] = tropo.factor[s - 6];
            }
            sums.Begin(B_OBS_I, nodeFactor);
            // The receiver clock of each system and the reception epoch on
            // it, the same for all the epoch's records of the system.
            long double sysClock[SysNone];
            mjd sysEpoch[SysNone];
            for (int s = 0; s < SysNone; ++s) {
                sysClock[s] = gc.dtAll(i);
                if (gc.ixDTsys[s] != -1) sysClock[s] += gc.dtGNSS[s];
                sysEpoch[s] = d.epoch(i);
                sysEpoch[s] += -sysClock[s] / C_mps;
            }

            for (long k = i1; k < i2; ++k) {
                if (!(gc.ELV(k) > minElevation)) continue;
                short satprn = d.sat(k);
                const SatSystem sys = SystemOf(satprn);
                if (sys == SysNone || !sysOn[sys]) continue;
                long double alpha1 = 1.0L, alpha2 = AlphaGPS;
                if (sys == SysGLN) {
                    // No frequency table row, no ionosphere scale: the slot
                    // cannot be used.
                    if (satprn - 101 < 0 || satprn - 101 >= GLONASSc::NSlots) continue;
                    alpha1 = GLONASSc::alphaG(satprn - 101, 0);
                    alpha2 = GLONASSc::alphaG(satprn - 101, 1);
                } else if (sys == SysGAL) {
                    alpha2 = AlphaGAL;
                }

                const long double RecClkErr = sysClock[sys];
                mjd CalcEph = sysEpoch[sys];
                B_OBS_I[3] = gc.ixDTsys[sys];

                bool SATisOK = false;
                long double dist = 0.0L, Relativity = 0.0L;
                xyzt PosSat;
                bool healthy = false;
                if (BroadcastSatellite(gc, satprn, CalcEph, PosSat, dist, Relativity, healthy)) {
                    SATisOK = healthy && dist > 0.0L;
                } else if (gc.isPEph) {
                    // The clock file overrules the orbit file's clock, which
                    // stands where the clock file has no value.
                    long double DtPrecise = 0.0L;
                    bool fileClock = false;
                    if (gc.isPclk) {
                        gc.pclkM.GetSatelliteClock(satprn, CalcEph, DtPrecise);
                        fileClock = gc.pclkM.DTisOK;
                    }
                    // Sized to the record store above: k is always a row of it.
                    gCPosC::SavedSatellite& saved = gc.savedSat(k);
                    const long double shift = (saved.recClk - RecClkErr) * PerSpeedOfLight_spm;
                    if (saved.saved && std::fabs(shift) < (fileClock ? MaxMovedShift_s : MaxStateShift_s)) {
                        // Where the clock file gives the clock, the state
                        // carried here replaces the saved one: the next
                        // iteration, whose receiver moved by little, then
                        // starts its light time converged. The orbit file's
                        // clock stays tied to the epoch it was taken at.
                        GNSSpEph::LightTimeState carried;
                        dist = gc.pephM.MovedSatPosition(saved.state, shift, gc.RecPosFC, PosSat,
                                                         fileClock ? &carried : nullptr);
                        if (fileClock) {
                            saved.state = carried;
                            saved.recClk = RecClkErr;
                        }
                        gc.pephM.PSisOK = true;
                        gc.pephM.DTisOK = saved.clockOK;
                    } else {
                        xyzt VelSat;
                        dist = gc.pephM.CalcSatPosition(static_cast<unsigned short>(satprn), CalcEph,
                                                        gc.RecPosFC, PosSat, VelSat, hints);
                        if (gc.pephM.PSisOK && dist > 0.0L)
                            saved = {gc.pephM.LastState(), RecClkErr, true, gc.pephM.DTisOK};
                    }
                    Relativity = gc.pephM.Relativity;
                    if (fileClock) {
                        gc.pephM.DTisOK = true;
                        PosSat.dt = DtPrecise - gc.pephM.Relativity;
                    }
                    SATisOK = gc.OKSAT(k) && gc.pephM.PSisOK && gc.pephM.DTisOK && dist > 0.0L;
                }
                if (!SATisOK) continue;

                // The record's values of the shared slots (direction
                // cosines, system bias, mappings): their row entries are
                // these times the epoch's node factors.
                const xyz dPos = gc.RecPosFC - PosSat;
                // One division for the three direction cosines, at every
                // record of every iteration.
                const long double perDist = 1.0L / dist;
                long double g[EpochNormals::NShared] = {-dPos.x * perDist, -dPos.y * perDist, -dPos.z * perDist, -1.0L,
                                                        -gc.MFTROP(k), 0.0L, 0.0L};
                if (B_OBS_I[8] >= 0) {
                    g[5] = -gc.MFGRAD(k, 0);
                    g[6] = -gc.MFGRAD(k, 1);
                }

                // The tides not modelled have no array: zero, exactly.
                const long double poleTide = gc.isPTide ? gc.PTIDE(k) : 0.0L;
                const long double oceanTide = gc.isOTide ? gc.OTIDE(k) : 0.0L;
                const long double RO = dist + gc.SETIDE(k) + poleTide + oceanTide + gc.REL2(k) -
                                       PosSat.dt * C_mps + RecClkErr;
                long double TROP = gc.TROP(k) + gc.MFTROP(k) * tropo.zenith;
                if (tropo.north != 0.0L || tropo.east != 0.0L)
                    TROP += gc.MFGRAD(k, 0) * tropo.north + gc.MFGRAD(k, 1) * tropo.east;

                if (gc.isPRCorr) {
                    gc.prcdDst(k) = dist;
                    gc.prcdTs(k) = -(PosSat.dt + Relativity) * C_mps;
                    gc.prcdRel(k) = Relativity * C_mps;
                    gc.prcdTr(k) = RecClkErr;
                    gc.prcTrop(k) = TROP;
                    gc.prcIon(k) = gc.ION(k);
                    gc.prcTid(k) = gc.SETIDE(k) + poleTide + oceanTide;
                }

                long double pRec = 0.0L, pfRec = 0.0L;

                if (storeRows) {
                    // The rest of the row follows from the epoch and the
                    // record's mapping values (StoredDesignRow).
                    long double* const rowB = &gc.mB(k, 0);
                    for (int s = 0; s < 3; ++s) rowB[s] = g[s];
                }

                for (CodeType& ct : codes) {
                    if (!ct.on || (*ct.rejected)(k) || (*ct.obs)(k).IsNull()) continue;
                    const long double value = (*ct.obs)(k).obs;
                    long double f = RO + TROP - value;
                    long double p = gc.WGHT(k);
                    switch (ct.kind) {
                    case 0: f += gc.ION(k) * alpha1; p *= gc.p0C; break;
                    case 1: f += gc.ION(k) * alpha1; p *= gc.p0P; break;
                    case 2: f += gc.ION(k) * alpha2; p *= gc.p0P; break;
                    case 3: p *= p0Pc3[sys]; break;
                    default: p *= p0Pp3[sys]; break;
                    }
                    long ixdcb = -1, ixsat = -1;
                    if (ct.dcb) GetIndexSatDCB(satprn, SatList, *ct.ixdcb, nSatList, ixdcb, ixsat);
                    if (gc.isMaxfDiff && !(std::fabs(f) < gc.MaxfDiff)) {
                        if (ct.label != nullptr) {
                            OutlierLine(satprn, i, d.epoch(i), ct.label, f);
                            if (ct.kind == 3) {
                                // Free-width fields in the precision of the misclosure.
                                std::cout << "  " << TROP;
                                if (ixsat >= 0 && ixsat < ct.dcbValue->NRow())
                                    std::cout << "  " << (*ct.dcbValue)(ixsat);
                            }
                            std::cout << " m\n";
                        }
                        (*ct.rejected)(k) = true;
                        continue;
                    }
                    ++gc.NObs;
                    ++*sysCount[sys];
                    fTf += f * f * p;
                    *ct.fTf += f * f * gc.WGHT(k);
                    if (ixdcb >= 0) f += (*ct.dcbValue)(ixsat);
                    (*ct.f)(k) = f;
                    pRec += p;
                    pfRec += p * f;
                    sums.AddOwn(gc.Nc, gc.tc, ixdcb, B_OBS_I[3], g, f, p);
                    addToSet(k, ct.kind);
                    (*ct.used)(k) = true;
                }

                long ixamb = -1;
                if (useL3 && !gc.ifXl3(k) && !d.L3(k).IsNull()) {
                    long& amb = ambOfRec[static_cast<std::size_t>(k)];
                    if (niter == 1) amb = arcs.Find(satprn, i);
                    ixamb = amb;
                }
                if (ixamb >= 0) {
                    const long double f = RO + TROP - d.L3(k).obs + gc.xAmb(ixamb);
                    const long double p = gc.WGHT(k) * p0L3[sys];
                    if (gc.isMaxfDiff && !(std::fabs(f) < gc.MaxfDiff / 2.0L)) {
                        OutlierLine(satprn, i, d.epoch(i), "     f(L3)  = ", f);
                        std::cout << " m\n";
                        gc.ifXl3(k) = true;
                    } else {
                        ++gc.NObs;
                        ++*sysCount[sys];
                        fTf += f * f * p;
                        fTf_L3 += f * f * gc.WGHT(k);
                        gc.fl3(k) = f;
                        pRec += p;
                        pfRec += p * f;
                        sums.AddOwn(gc.Nc, gc.tc, gc.ixAmb(ixamb), B_OBS_I[3], g, f, p);
                        addToSet(k, 5);
                        gc.ifOl3(k) = true;
                    }
                }
                if (pRec > 0.0L) sums.AddRecord(sys, B_OBS_I[3], g, pRec, pfRec);
            }
            sums.End(gc.Nc, gc.tc, gc.Nt, gc.tt, N22(i), t2(i), rowCol, rowVal);
            rowStart[static_cast<std::size_t>(i) + 1] = static_cast<long>(rowCol.size());
            i1 = i2;
        }
        sums.Finish(gc.Nt, gc.tt, rowCol, rowVal);
        progress.Close();
        if (!sumMatrix && eqSet != summedSet) {
            // An equation rejected or taken up since the matrix was summed:
            // the iteration is done again with its own matrix. What the
            // pass rejected stays rejected, and is not reported twice.
            sumMatrix = true;
            continue;
        }

        // The reduced system; the bordering rows behind NUnk keep what
        // SetDCBConstraints wrote.
        for (long ii = 0; ii < nUnk; ++ii) gc.tall(ii) = gc.tc(ii) - gc.tt(ii);
        if (sumMatrix) {
            gc.NUnkUndef = 0;
            for (long ii = 0; ii < nUnk; ++ii) {
                for (long jj = 0; jj <= ii; ++jj) {
                    const long double v = gc.Nc(jj, ii) - gc.Nt(jj, ii);
                    gc.NFin(jj, ii) = v;
                    gc.NFin(ii, jj) = v;
                }
                gc.IsUnkOK(ii) = true;
                if (std::fabs(gc.NFin(ii, ii)) < UndefDiag) {
                    gc.NFin(ii, ii) = 1.0L;
                    gc.IsUnkOK(ii) = false;
                    ++gc.NUnkUndef;
                }
            }
            lu.dcmp(gc.NFin);
            summedSet = eqSet;
            moved = clockMoved = 0.0L;
        }
        gc.xtemp = lu.solve(gc.tall);
        gc.xAll += gc.xtemp;

        dcorr = subnorm(gc.xtemp, nUnk, 2.0L);
        std::cout << "   Processing iteration                : " << std::setw(6) << niter << std::scientific
                  << std::setprecision(2) << std::setw(15) << dcorr << std::fixed << "\n";
        if (gc.verbose)
            std::cerr << std::scientific << std::setprecision(2) << std::setw(12) << dcorr << std::fixed
                      << "\n";

        long double xtc = 0.0L;
        for (long ii = 0; ii < nUnk; ++ii)
            if (gc.IsUnkOK(ii)) xtc += gc.xtemp(ii) * gc.tall(ii);
        gc.vtPv = fTf - xtc;
        fTf_C1 -= xtc;
        fTf_P1 -= xtc;
        fTf_P2 -= xtc;
        fTf_Pc3 -= xtc;
        fTf_Pp3 -= xtc;
        fTf_L3 -= xtc;

        long double clockStep = 0.0L;
        for (int s = 0; s < 3; ++s)
            if (gc.ixDTsys[s] != -1) {
                gc.dtGNSS[s] += gc.xtemp(gc.ixDTsys[s]);
                clockStep = std::max(clockStep, std::fabs(gc.xtemp(gc.ixDTsys[s])));
            }
        long double epochStep = 0.0L;

        gc.NClk = 0;
        for (long ie = 0; ie < nEp; ++ie) {
            if (N22(ie) < ClockMinWeight) {
                gc.dtAll(ie) = 0.0L;
                continue;
            }
            ++gc.NClk;
            long double nxdt = 0.0L;
            // The zero columns of the row, skipped here, add nothing.
            for (long r = rowStart[static_cast<std::size_t>(ie)]; r < rowStart[static_cast<std::size_t>(ie) + 1]; ++r)
                nxdt += gc.xtemp(rowCol[static_cast<std::size_t>(r)]) * rowVal[static_cast<std::size_t>(r)];
            const long double step = (t2(ie) - nxdt) / N22(ie);
            gc.dtAll(ie) += step;
            epochStep = std::max(epochStep, std::fabs(step));
            gc.vtPv -= t2(ie) * t2(ie) / N22(ie);
        }
        // A step solved with a kept matrix leaves the sum off by that
        // matrix's error (5e-7 at most) times its own reduction of it: on
        // data without noise, where the sum is round-off, that can take it
        // below zero, which a sum of squares is not.
        if (gc.vtPv < 0.0L) gc.vtPv = 0.0L;

        const long dof = gc.NObs - gc.NUnk - gc.NClk + gc.ndcbConstr + gc.NUnkUndef;
        if (dof > 0) {
            const long double df = static_cast<long double>(dof);
            gc.s0apost = gc.vtPv / df;
            gc.s0apost_C1 = fTf_C1 / df;
            gc.s0apost_P1 = fTf_P1 / df;
            gc.s0apost_P2 = fTf_P2 / df;
            gc.s0apost_Pc3 = fTf_Pc3 / df;
            gc.s0apost_Pp3 = fTf_Pp3 / df;
            gc.s0apost_L3 = fTf_L3 / df;
        } else {
            // No redundancy: the residuals say nothing about the noise.
            const long double nan = std::numeric_limits<long double>::quiet_NaN();
            gc.s0apost = gc.s0apost_C1 = gc.s0apost_P1 = gc.s0apost_P2 = nan;
            gc.s0apost_Pc3 = gc.s0apost_Pp3 = gc.s0apost_L3 = nan;
        }

        const xyz posStep(gc.xtemp(0), gc.xtemp(1), gc.xtemp(2));
        gc.RecPosFC += posStep;
        moved += posStep.GetLength();
        clockMoved += clockStep + epochStep;
        sumMatrix = !(moved < MaxKeptMove_m && clockMoved < MaxKeptClockMove_m);
        gc.RecPosFCG = xyz2flh(gc.RecPosFC, gc.eGPS);
        gc.RecPosCorr = xyz(gc.xAll(0), gc.xAll(1), gc.xAll(2));
        gc.RecPosEst = gc.RecPos0 + gc.RecPosCorr;
        gc.RecPosEstG = xyz2flh(gc.RecPosEst, gc.eGPS);
        gc.RecPosCorrG = g2lg(gc.RecPosCorr, gc.RecPosEstG);

        for (CodeType& ct : codes) {
            if (!ct.dcb) continue;
            for (long s = 0; s < nSatList && s < ct.ixdcb->NRow() && s < ct.dcbValue->NRow(); ++s) {
                const long int c = (*ct.ixdcb)(s);
                if (c >= 0) (*ct.dcbValue)(s) += gc.xtemp(c);
            }
        }
        if (gc.ifEstTropo)
            for (long ii = 0; ii < gc.nTropoUnk; ++ii) gc.xTropo(ii) += gc.xtemp(gc.ixTropo(ii));
        if (gc.ifEstTropo && gc.ifEstTropoGrad) {
            for (long ii = 0; ii < gc.nTropoUnkGradN; ++ii)
                gc.xTropoGradN(ii) += gc.xtemp(gc.ixTropoGradN(ii));
            for (long ii = 0; ii < gc.nTropoUnkGradE; ++ii)
                gc.xTropoGradE(ii) += gc.xtemp(gc.ixTropoGradE(ii));
        }
        for (long ii = 0; ii < gc.nAmb && ii < gc.ixAmb.NRow(); ++ii) gc.xAmb(ii) += gc.xtemp(gc.ixAmb(ii));

        ++niter;
        if (static_cast<long double>(gc.IterThres) > dcorr) break;
        if (niter > gc.MaxIter) break;
    }
    gc.QxxAll = lu.inv();

    // Nothing observed, nothing estimated: a report of the a-priori values
    // would read as a result.
    if (gc.NObs == 0) ProgramError("Orvo", "NO OBSERVATION ENTERED THE STATIC SOLUTION - " + NoObservationReason(gc) + "!");
    if (!(gc.NObs - gc.NUnk - gc.NClk + gc.ndcbConstr + gc.NUnkUndef > 0))
        ProgramError("Orvo", "NO REDUNDANT OBSERVATIONS IN STATIC SOLUTION: A-POSTERIORI VARIANCES UNDEFINED!");
    const long double offset = gc.RecPosCorr.GetLength();
    if (!(offset <= ProcStaticns::MaxAprioriOffset_m)) {
        std::ostringstream m;
        m << std::fixed << std::setprecision(4) << "THE ESTIMATE " << gc.RecPosEst.x << " " << gc.RecPosEst.y << " "
          << gc.RecPosEst.z << " LIES " << std::setprecision(1) << offset
          << " M FROM THE A-PRIORI POSITION, WHERE THE MODELS WERE COMPUTED - SET IT AS THE APPROXIMATE POSITION "
             "(RINEX HEADER OR -ac FILE) AND RUN AGAIN!";
        ProgramError("Orvo", m.str());
    }

    std::cout << "\n  Estimated reference standard deviations:\n" << std::setprecision(1);
    const struct {
        bool on;
        const char* text;
        const char* rms;
        long double var;
    } lines[] = {{true, "  A-posteriori        : ", "RMS   : ", gc.s0apost},
                 {gc.ifC1, "      A-posteriori C1 : ", "RMS C1: ", gc.s0apost_C1},
                 {gc.ifP1, "      A-posteriori P1 : ", "RMS P1: ", gc.s0apost_P1},
                 {gc.ifP2, "      A-posteriori P2 : ", "RMS P2: ", gc.s0apost_P2},
                 {gc.ifPc3, "      A-posteriori Pc3: ", "RMS Pc3: ", gc.s0apost_Pc3},
                 {gc.ifPp3, "      A-posteriori Pp3: ", "RMS Pp3: ", gc.s0apost_Pp3},
                 {gc.ifL3, "      A-posteriori L3 : ", "RMS L3: ", gc.s0apost_L3}};
    for (const auto& l : lines) {
        if (!l.on) continue;
        std::cout << l.text << std::setw(15) << std::setprecision(1) << StdMM(l.var) << " mm\n";
        if (gc.verbose)
            std::cerr << "Orvo::ProcStatic():         " << l.rms << std::fixed << std::setprecision(1)
                      << StdMM(l.var) << " mm\n";
    }
    gc.IterDone = niter - 1;
    gc.IterThresFin = static_cast<double>(dcorr);
    std::cout << "\n\n";
}
