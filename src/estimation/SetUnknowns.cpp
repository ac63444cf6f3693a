#include "estimation/SetUnknowns.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>

#include "driver/Console.h"
#include "numerics/MathConstants.h"
#include "numerics/ProgramError.h"
#include "observations/SatelliteSystem.h"

namespace {

constexpr long double MiB = 1048576.0L;

// One kind of code bias: its switch, header presence, observable and the
// column table it fills.
struct DCBKind {
    bool& is;
    bool present;
    matrix<gnssobs>& obs;
    matrix<long double>& value;
    matrix<long int>& ix;
    long int& n;
    const char* title;  // verbose heading
    const char* label;  // verbose count label
};

// Whether the system of satellite prn estimates code biases.
bool SystemEstimatesDCB(const gCPosC& gc, short prn)
{
    switch (SystemOf(prn)) {
    case SysGPS: return gc.isGPSxdcb;
    case SysGLN: return gc.isGLNxdcb;
    case SysGAL: return gc.isGALxdcb;
    default: return false;
    }
}

void CountLine(const char* text, long n)
{
    std::cout << text << std::setw(6) << n << "\n";
}

}  // namespace

namespace {

// The first node: the last multiple of tI on the day of eS, shifted by tS,
// that is not after eS. The interval and shift are checked by the caller.
mjd FirstTropoNode(const mjd& eS, long double tI, long double tS)
{
    const long double s0 = eS.GetSecond();
    long double sec = std::floor(s0 / tI) * tI + tS;
    // |tS| < tI, so one step back is always enough.
    if (sec > s0) sec -= tI;
    mjd first(eS.GetMJDay(), 0.0L);
    first += sec;
    return first;
}

void CheckTropoInterval(long double tI, long double tS)
{
    // A zero or negative step would never pass the last epoch.
    if (!(tI > 0.0L) || !std::isfinite(tI))
        ProgramError("Orvo", "TROPOSPHERE ESTIMATION INTERVAL [-ti] MUST BE A POSITIVE NUMBER OF SECONDS!");
    // A shift of a whole interval or more only renames the nodes, and one
    // that is not finite could never be stepped back to the first epoch.
    if (!std::isfinite(tS) || !(std::fabs(tS) < tI))
        ProgramError("Orvo", "TROPOSPHERE EPOCH SHIFT [-ti...d] MUST BE SMALLER THAN THE INTERVAL!");
}

// Nodes from `first` on, every tI, up to the first one strictly after eE,
// when they number at most `limit`; limit + 1 otherwise, so that a huge
// count is never formed.
long TropoNodesFrom(const mjd& first, const mjd& eE, long double tI, long limit)
{
    // Nodes are formed as first + i*tI, not by repeated addition, so that a
    // whole-second interval stays exact over the day.
    const long double ratio = std::floor((eE - first) / tI);
    if (!(ratio < static_cast<long double>(limit))) return limit + 1;
    long n = static_cast<long>(ratio) + 1;  // nodes up to eE
    // Round-off of span/tI could misplace the node nearest eE; settle it
    // against the exact rule "a node strictly after eE ends the list".
    while (n > 1) {
        mjd last = first;
        last += static_cast<long double>(n - 1) * tI;
        if (last > eE) --n;
        else break;
    }
    for (;;) {
        mjd next = first;
        next += static_cast<long double>(n) * tI;
        if (next > eE) break;
        ++n;
    }
    return std::min(n + 1, limit + 1);
}

}  // namespace

long TropoNodeCount(const mjd& eS, const mjd& eE, long double tI, long double tS, long limit)
{
    CheckTropoInterval(tI, tS);
    if (eE < eS)
        ProgramError("Orvo", "TROPOSPHERE INTERVALS: LAST EPOCH LIES BEFORE THE FIRST!");
    return TropoNodesFrom(FirstTropoNode(eS, tI, tS), eE, tI, limit);
}

void SetTropoIntervals(mjd& eS, mjd& eE, long double tI, long double tS,
                       matrix<mjd>& tropoEpochs, long int& nTEpochs)
{
    nTEpochs = TropoNodeCount(eS, eE, tI, tS, SetUnknownsns::MaxTropoNodes);
    if (nTEpochs > SetUnknownsns::MaxTropoNodes)
        ProgramError("Orvo", "TROPOSPHERE INTERVAL [-ti] GIVES MORE THAN "
                                 + std::to_string(SetUnknownsns::MaxTropoNodes) + " NODES!");
    const mjd first = FirstTropoNode(eS, tI, tS);
    tropoEpochs.Resize(nTEpochs, 1);
    for (long int i = 0; i < nTEpochs; ++i) {
        mjd node = first;
        node += static_cast<long double>(i) * tI;
        tropoEpochs(i) = node;
    }
}

long double AdjustmentBytes(long double nUnk, long double nEpochs)
{
    const long double cell = static_cast<long double>(sizeof(long double));
    return (SetUnknownsns::DenseCopies * nUnk + nEpochs) * nUnk * cell;
}

void CheckUnknownSizes(const gCPosC& gc, long nAmb)
{
    const RINEXData& d = gc.rnxd;
    const long nEpochs = d.nepochall > 0 ? d.nepochall : 0;
    long nodes = 0, gradNodes = 0;
    if (gc.ifEstTropo && nEpochs > 0 && d.epoch.NRow() >= nEpochs) {
        // More delay intervals than epochs leave nodes that no epoch
        // touches: nothing determines them, and each costs a row and a
        // column of every normal matrix.
        const long maxNodes = nEpochs + 1;
        nodes = TropoNodeCount(d.epoch(0), d.epoch(nEpochs - 1), gc.TropoInterval, gc.TropoShift, maxNodes);
        if (nodes > maxNodes) {
            std::ostringstream text;
            text << "TROPOSPHERE INTERVAL [-ti] OF " << std::fixed << std::setprecision(1) << gc.TropoInterval
                 << " s GIVES MORE ZENITH DELAY INTERVALS THAN THE " << nEpochs
                 << " EPOCHS OF THE DATA - USE A LONGER INTERVAL!";
            ProgramError("Orvo", text.str());
        }
        if (gc.ifEstTropoGrad) {
            // Gradients are weaker in the data than the zenith delay: steps
            // finer than the delay's own leave them undetermined.
            if (gc.nTropoGradInt > nodes - 1)
                ProgramError("Orvo", "NUMBER OF TROPOSPHERE GRADIENT INTERVALS [-tgi] "
                                         + std::to_string(gc.nTropoGradInt) + " EXCEEDS THE "
                                         + std::to_string(nodes - 1) + " ZENITH DELAY INTERVALS!");
            gradNodes = 2 * ((gc.nTropoGradInt <= 0 ? nodes - 1 : gc.nTropoGradInt) + 1);
        }
    }
    const long nSys = static_cast<long>(gc.isGPS) + static_cast<long>(gc.isGLN) + static_cast<long>(gc.isGAL);
    const long nUnk = 3 + (nSys > 1 ? nSys - 1 : 0) + gc.NUnkDCB + gc.ndcbConstr + nodes + gradNodes + nAmb;
    const long double bytes = AdjustmentBytes(static_cast<long double>(nUnk), static_cast<long double>(nEpochs));
    if (bytes > SetUnknownsns::MaxAdjustmentBytes) {
        std::ostringstream text;
        text << "THE ADJUSTMENT WOULD NEED " << nUnk << " UNKNOWNS (" << nodes << " TROPOSPHERE NODES [-ti], "
             << gradNodes << " GRADIENT NODES [-tg], " << nAmb << " AMBIGUITIES [-tc]) OVER " << nEpochs
             << " EPOCHS: ABOUT " << std::fixed << std::setprecision(0) << bytes / MiB << " MB, MORE THAN THE LIMIT OF "
             << SetUnknownsns::MaxAdjustmentBytes / MiB << " MB!";
        ProgramError("Orvo", text.str());
    }
}

void SetUnknowns_SatDCB(gCPosC& gc, long int& ix)
{
    RINEXHeader& h = gc.rnxh;
    RINEXData& d = gc.rnxd;
    DCBKind kinds[5] = {
        {gc.isdcbC1, h.iC1, d.C1, gc.dcbC1, gc.ixdcbC1, gc.ndcbC1, "C1 DCB values:", "  #C1 DCB "},
        {gc.isdcbP1, h.iP1, d.P1, gc.dcbP1, gc.ixdcbP1, gc.ndcbP1, "P1 DCB values:", "  #P1 DCB "},
        {gc.isdcbP2, h.iP2, d.P2, gc.dcbP2, gc.ixdcbP2, gc.ndcbP2, "P2 DCB values:", "  #P2 DCB "},
        {gc.isdcbPc3, h.iC1 && (h.iP2 || h.iC7), d.PC3, gc.dcbPc3, gc.ixdcbPc3, gc.ndcbPc3,
         "P3[C1,P2/C7] DCB values:", "  #Pc3 DCB "},
        {gc.isdcbPp3, h.iP1 && (h.iP2 || h.iC7), d.PP3, gc.dcbPp3, gc.ixdcbPp3, gc.ndcbPp3,
         "P3[P1,P2/C7] DCB values:", "  #Pp3 DCB "},
    };
    const long nSatList = d.satList.NRow();
    const long double minElev = Pi * static_cast<long double>(gc.MinElevation) / 180.0L;

    for (DCBKind& kd : kinds) {
        kd.ix.Resize(nSatList, 1, -1);
        kd.n = 0;
        if (!(kd.is && kd.present)) {
            kd.is = false;
            continue;
        }
        kd.value.Resize(nSatList, 1, 0.0L);
        // Usable records per satellite, counted in one walk of the file;
        // only whether a satellite reaches the minimum matters.
        matrix<long> count(nSatList, 1, 0L);
        if (kd.obs.NRow() >= d.nsatall && gc.ELV.NRow() >= d.nsatall && gc.OKSAT.NRow() >= d.nsatall)
            for (long k = 0; k < d.nsatall; ++k) {
                if (!(gc.ELV(k) > minElev) || !gc.OKSAT(k) || kd.obs(k).IsNull()) continue;
                for (long s = 0; s < nSatList; ++s)
                    if (d.satList(s) == d.sat(k)) {
                        ++count(s);
                        break;
                    }
            }
        for (long s = 0; s < nSatList; ++s) {
            if (!SystemEstimatesDCB(gc, d.satList(s))) continue;
            if (count(s) < SetUnknownsns::MinDCBRecords) continue;
            kd.ix(s) = ++ix;
            ++kd.n;
        }
        if (gc.verbose) {
            std::cerr << "Orvo::SetUnknowns():         " << kd.title << "\n";
            std::cerr << kd.label << std::setw(4) << kd.n << "\n";
        }
    }

    gc.isDCB_Gc = gc.isDCB_Rc = gc.isDCB_Ec = false;
    for (long s = 0; s < nSatList; ++s) {
        bool has = false;
        for (const DCBKind& kd : kinds)
            if (kd.is && kd.ix(s) >= 0) has = true;
        if (!has) continue;
        const short prn = d.satList(s);
        if (SystemOf(prn) == SysGPS && gc.isGPSxdcb) gc.isDCB_Gc = true;
        if (SystemOf(prn) == SysGLN && gc.isGLNxdcb) gc.isDCB_Rc = true;
        if (SystemOf(prn) == SysGAL && gc.isGALxdcb) gc.isDCB_Ec = true;
    }
    gc.ndcbConstr = static_cast<long int>(gc.isDCB_Gc) + static_cast<long int>(gc.isDCB_Rc) +
                    static_cast<long int>(gc.isDCB_Ec);
    if (gc.verbose)
        std::cerr << "Orvo::SetUnknowns():         # of DCB constraints: " << gc.ndcbConstr << "\n";
}

void SetDCBConstraints(gCPosC& gc)
{
    if (!(gc.isGPSxdcb || gc.isGLNxdcb || gc.isGALxdcb)) return;
    if (gc.verbose)
        std::cerr << "Orvo::SetUnknowns():         Setting DCB constraints: " << gc.ndcbConstr << "\n";
    const bool flags[5] = {gc.isdcbC1, gc.isdcbP1, gc.isdcbP2, gc.isdcbPc3, gc.isdcbPp3};
    const matrix<long int>* ix[5] = {&gc.ixdcbC1, &gc.ixdcbP1, &gc.ixdcbP2, &gc.ixdcbPc3, &gc.ixdcbPp3};
    const long nSatList = gc.rnxd.satList.NRow();
    // Rows of the systems that have code bias unknowns, in the order GPS,
    // GLONASS, Galileo.
    const bool active[3] = {gc.isDCB_Gc, gc.isDCB_Rc, gc.isDCB_Ec};
    const short lo[3] = {1, 101, 201}, hi[3] = {99, 199, 299};
    long int row = gc.NUnk;
    for (int sys = 0; sys < 3; ++sys) {
        if (!active[sys]) continue;
        for (long s = 0; s < nSatList; ++s) {
            const short prn = gc.rnxd.satList(s);
            if (prn < lo[sys] || prn > hi[sys]) continue;
            for (int kd = 0; kd < 5; ++kd) {
                if (!flags[kd] || ix[kd]->NRow() <= s) continue;
                const long int col = (*ix[kd])(s);
                if (col < 0) continue;
                gc.NFin(row, col) = 1.0L;
                gc.NFin(col, row) = 1.0L;
            }
        }
        ++row;
    }
}

void SetUnknowns(gCPosC& gc)
{
    RINEXHeader& h = gc.rnxh;
    RINEXData& d = gc.rnxd;
    if (gc.verbose) std::cerr << "Orvo::SetUnknowns(): SETTING UNKNOWNS IN ESTIMATION!\n";
    ProgramSubSubTitle("SETTING UNKNOWNS IN ESTIMATION:", 0);

    if (d.nepochall <= 0 || d.epoch.NRow() < d.nepochall)
        ProgramError("Orvo", "NO OBSERVATION EPOCHS: NO UNKNOWNS CAN BE SET!");

    gc.ixX = 0;
    gc.ixY = 1;
    gc.ixZ = 2;
    gc.NXcrd = 3;
    long int ix = 2;

    // The epoch clock belongs to the first system present (GPS, GLONASS,
    // Galileo); every other system gets a bias against it.
    for (int s = 0; s < 3; ++s) {
        gc.ixDTsys[s] = -1;
        gc.dtGNSS[s] = 0.0L;
    }
    if (gc.isGPS && gc.isGLN) gc.ixDTsys[1] = ++ix;
    if (gc.isGAL && (gc.isGPS || gc.isGLN)) gc.ixDTsys[2] = ++ix;
    gc.nDTsys = ix - 2;

    CountLine("  Coordinate unknowns dX, dY, dZ      : ", gc.NXcrd);
    std::cout << "  GNSS inter-system clock biases      : " << std::setw(6) << gc.nDTsys << "  [YES]\n";

    if (gc.isGPSxdcb || gc.isGLNxdcb || gc.isGALxdcb) {
        gc.isdcbC1 = gc.ifC1 && h.iC1;
        gc.isdcbP1 = gc.ifP1 && h.iP1;
        gc.isdcbP2 = gc.ifP2 && h.iP2;
        gc.isdcbPc3 = gc.ifPc3 && h.iC1 && h.iP2;
        gc.isdcbPp3 = gc.ifPp3 && h.iP1 && h.iP2;
        // A raw code and a combination of it share the same bias; both
        // estimated together would leave the normal system singular.
        if ((gc.isdcbC1 || gc.isdcbP1 || gc.isdcbP2) && (gc.isdcbPc3 || gc.isdcbPp3)) {
            ProgramWarning("Orvo",
                           "COMBINED OBSERVATION PROCESSING (RAW AND LIN. COMBS) -> DCB VALUES UNKONWNS UNSET!");
            gc.isdcbC1 = gc.isdcbP1 = gc.isdcbP2 = gc.isdcbPc3 = gc.isdcbPp3 = false;
        }
    }
    SetUnknowns_SatDCB(gc, ix);
    gc.NUnkDCB = gc.ndcbC1 + gc.ndcbP1 + gc.ndcbP2 + gc.ndcbPc3 + gc.ndcbPp3;
    CountLine("  Differential code biases (DCB)      : ", gc.NUnkDCB);
    CountLine("                         C1 DCB       : ", gc.ndcbC1);
    CountLine("                         P1 DCB       : ", gc.ndcbP1);
    CountLine("                         P2 DCB       : ", gc.ndcbP2);
    CountLine("               P3[C1,P2/C7] DCB       : ", gc.ndcbPc3);
    CountLine("               P3[P1,P2/C7] DCB       : ", gc.ndcbPp3);
    CountLine("                DCB constraints       : ", gc.ndcbConstr);

    // Every size that the options and the data multiply, checked before the
    // first square matrix is formed.
    CheckUnknownSizes(gc, gc.ifL3 && gc.nAmb > 0 ? gc.nAmb : 0);

    gc.nTropoUnk = 0;
    if (gc.ifEstTropo) {
        mjd eS = d.epoch(0), eE = d.epoch(d.nepochall - 1);
        SetTropoIntervals(eS, eE, gc.TropoInterval, gc.TropoShift, gc.TropoEpoch, gc.nTropoUnk);
        gc.ixTropo.Resize(gc.nTropoUnk, 1);
        for (long int i = 0; i < gc.nTropoUnk; ++i) gc.ixTropo(i) = ++ix;
        gc.xTropo.Resize(gc.nTropoUnk, 1, 0.0L);
        CountLine("  Troposphere zenit delays (wet)      : ", gc.nTropoUnk);
    }

    gc.nTropoUnkGradE = gc.nTropoUnkGradN = gc.nTropoUnkGrad = 0;
    if (gc.ifEstTropoGrad && gc.ifEstTropo) {
        if (gc.nTropoGradInt <= 0) gc.nTropoGradInt = static_cast<int>(gc.nTropoUnk - 1);
        const long double span = gc.TropoEpoch(gc.nTropoUnk - 1) - gc.TropoEpoch(0);
        gc.TropoGradInterval = span / static_cast<long double>(gc.nTropoGradInt);
        gc.TropoGradEpoch.Resize(gc.nTropoGradInt + 1, 1);
        for (long int i = 0; i <= gc.nTropoGradInt; ++i) {
            mjd node = gc.TropoEpoch(0);
            node += static_cast<long double>(i) * gc.TropoGradInterval;
            gc.TropoGradEpoch(i) = node;
        }
        // The last gradient node must be the last delay node exactly, or an
        // epoch just before it could fall outside every gradient interval.
        gc.TropoGradEpoch(gc.nTropoGradInt) = gc.TropoEpoch(gc.nTropoUnk - 1);
        gc.nTropoUnkGradN = gc.nTropoUnkGradE = gc.nTropoGradInt + 1;
        gc.nTropoUnkGrad = gc.nTropoUnkGradN + gc.nTropoUnkGradE;
        gc.xTropoGradE.Resize(gc.nTropoUnkGradE, 1, 0.0L);
        gc.xTropoGradN.Resize(gc.nTropoUnkGradN, 1, 0.0L);
        gc.ixTropoGradE.Resize(gc.nTropoUnkGradE, 1);
        gc.ixTropoGradN.Resize(gc.nTropoUnkGradN, 1);
        for (long int i = 0; i < gc.nTropoUnkGradE; ++i) gc.ixTropoGradE(i) = ++ix;
        for (long int i = 0; i < gc.nTropoUnkGradN; ++i) gc.ixTropoGradN(i) = ++ix;
        CountLine("  Troposphere Gradient parameters [E] : ", gc.nTropoUnkGradE);
        CountLine("  Troposphere Gradient parameters [N] : ", gc.nTropoUnkGradN);
    }

    if (!gc.ifL3 || gc.nAmb < 0) gc.nAmb = 0;
    gc.ixAmb.Resize(gc.nAmb, 1);
    for (long int i = 0; i < gc.nAmb; ++i) gc.ixAmb(i) = ++ix;
    if (gc.ifL3) CountLine("  L3 ambiguity parameters             : ", gc.nAmb);

    gc.NUnk = gc.NXcrd + gc.nDTsys + gc.NUnkDCB + gc.nTropoUnk + gc.nTropoUnkGrad + gc.nAmb;
    const long nAll = gc.NUnk + gc.ndcbConstr;
    gc.NFin.Resize(nAll, nAll, 0.0L);
    gc.tall.Resize(nAll, 1, 0.0L);
    gc.NClk = d.NOKEph;
    CountLine("  GNSS clk parameters [preeliminated] : ", gc.NClk);
    std::cout << "\n";

    SetDCBConstraints(gc);

    CountLine("  Number of all estimated unknowns    : ", gc.NUnk);
    CountLine("  Number of all unknowns (+clock unk) : ", gc.NClk + gc.NUnk);
    std::cout << "\n\n";
    if (gc.verbose) {
        std::cerr << "Orvo::SetUnknowns():         Number of all estimated unknowns    : " << gc.NUnk << "\n";
        std::cerr << "Orvo::SetUnknowns():         Number of all unknowns (+clock unk) : "
                  << gc.NClk + gc.NUnk << "\n";
    }

    gc.Nc.Resize(gc.NUnk, gc.NUnk, 0.0L);
    gc.Nt.Resize(gc.NUnk, gc.NUnk, 0.0L);
    gc.tc.Resize(gc.NUnk, 1, 0.0L);
    gc.tt.Resize(gc.NUnk, 1, 0.0L);
    gc.IsUnkOK.Resize(gc.NUnk, 1, true);
    gc.xtemp.Resize(nAll, 1, 0.0L);
    gc.xAll.Resize(nAll, 1, 0.0L);
    gc.QdtAll.Resize(d.nepochall, 1, 0.0L);

    const long n = d.nsatall;
    struct TypeArrays {
        bool on;
        matrix<long double>& f;
        matrix<bool>& used;
        matrix<bool>& rejected;
    } types[6] = {{gc.ifC1, gc.fc1, gc.ifOc1, gc.ifXc1},   {gc.ifP1, gc.fp1, gc.ifOp1, gc.ifXp1},
                  {gc.ifP2, gc.fp2, gc.ifOp2, gc.ifXp2},   {gc.ifPc3, gc.fc3, gc.ifOc3, gc.ifXc3},
                  {gc.ifPp3, gc.fp3, gc.ifOp3, gc.ifXp3},  {gc.ifL3, gc.fl3, gc.ifOl3, gc.ifXl3}};
    for (TypeArrays& t : types) {
        if (!t.on) continue;
        t.f.Resize(n, 1, 0.0L);
        t.used.Resize(n, 1, false);
        t.rejected.Resize(n, 1, false);
    }
    if (gc.ifEstKin || gc.isThresBlunder) {
        gc.mB.Resize(n, 3, 0.0L);
    }
}
