#include "reporting/CheckStaticSolution.h"

#include <string>

#include "numerics/ProgramError.h"

namespace {

[[noreturn]] void Refuse(const std::string& what)
{
    ProgramError("Orvo", "STATIC SOLUTION REPORT: " + what + "!");
}

// An unknown's column must lie in the solved system; -1 passes only where
// the unknown may be absent.
void CheckColumn(long ix, long nunk, bool mayBeAbsent, const std::string& what)
{
    if (ix == -1 && mayBeAbsent) return;
    if (ix < 0 || ix >= nunk)
        Refuse(what + " COLUMN " + std::to_string(ix) + " OUTSIDE 0.." + std::to_string(nunk - 1));
}

void CheckLength(long have, long need, const std::string& what)
{
    if (have < need)
        Refuse(what + " HOLDS " + std::to_string(have) + " VALUES, " + std::to_string(need)
               + " NEEDED");
}

void CheckCodeBiasKind(const gCPosC& gc, bool active, const matrix<long int>& ix,
                       const matrix<long double>& val, const std::string& kind)
{
    if (!active) return;
    const long nsat = gc.rnxd.satList.Length();
    CheckLength(ix.Length(), nsat, kind + " CODE BIAS INDEX LIST");
    CheckLength(val.Length(), nsat, kind + " CODE BIAS LIST");
    for (long j = 0; j < nsat; ++j) CheckColumn(ix(j), gc.NUnk, true, kind + " CODE BIAS");
}

void CheckNodes(const gCPosC& gc, long n, const matrix<mjd>& epochs,
                const matrix<long double>& val, const matrix<long int>& ix,
                const std::string& what)
{
    if (n < 0) Refuse(what + " COUNT IS NEGATIVE");
    CheckLength(epochs.Length(), n, what + " EPOCH LIST");
    CheckLength(val.Length(), n, what + " LIST");
    CheckLength(ix.Length(), n, what + " INDEX LIST");
    for (long i = 0; i < n; ++i) CheckColumn(ix(i), gc.NUnk, false, what);
}

}  // namespace

void CheckStaticSolution(const gCPosC& gc)
{
    const RINEXData& d = gc.rnxd;
    if (d.nepochall < 1) Refuse("NO OBSERVATION EPOCHS");
    CheckLength(d.epoch.Length(), d.nepochall, "EPOCH LIST");
    // sig0 divides the global test; CheckArguments never leaves it at 0.
    if (!(gc.sig0 > 0.0L)) Refuse("A-PRIORI REFERENCE STANDARD DEVIATION IS NOT POSITIVE");

    // The coordinates are columns 0..2 of every static layout.
    if (gc.NUnk < 3) Refuse("NO STATIC SOLUTION (FEWER THAN 3 UNKNOWNS)");
    if (gc.QxxAll.NRow() < gc.NUnk || gc.QxxAll.NCol() < gc.NUnk)
        Refuse("COFACTOR MATRIX SMALLER THAN THE " + std::to_string(gc.NUnk) + " UNKNOWNS");
    CheckLength(gc.xAll.Length(), gc.NUnk, "SOLUTION VECTOR");
    CheckLength(gc.IsUnkOK.Length(), gc.NUnk, "UNKNOWN STATUS LIST");

    for (int s = 0; s < 3; ++s)
        CheckColumn(gc.ixDTsys[s], gc.NUnk, true, "INTER-SYSTEM CLOCK BIAS");

    if (gc.isGPSxdcb || gc.isGLNxdcb || gc.isGALxdcb) {
        CheckCodeBiasKind(gc, gc.isdcbC1, gc.ixdcbC1, gc.dcbC1, "C1");
        CheckCodeBiasKind(gc, gc.isdcbP1, gc.ixdcbP1, gc.dcbP1, "P1");
        CheckCodeBiasKind(gc, gc.isdcbP2, gc.ixdcbP2, gc.dcbP2, "P2");
        CheckCodeBiasKind(gc, gc.isdcbPc3, gc.ixdcbPc3, gc.dcbPc3, "P3[C]");
        CheckCodeBiasKind(gc, gc.isdcbPp3, gc.ixdcbPp3, gc.dcbPp3, "P3[P]");
    }

    if (gc.ifEstTropo) {
        CheckNodes(gc, gc.nTropoUnk, gc.TropoEpoch, gc.xTropo, gc.ixTropo, "TROPOSPHERE NODE");
        if (gc.ifEstTropoGrad) {
            // East and north share the node epochs and are printed side by side.
            if (gc.nTropoUnkGradE != gc.nTropoUnkGradN)
                Refuse("EAST AND NORTH GRADIENT NODE COUNTS DIFFER");
            CheckNodes(gc, gc.nTropoUnkGradE, gc.TropoGradEpoch, gc.xTropoGradE,
                       gc.ixTropoGradE, "EAST GRADIENT NODE");
            CheckNodes(gc, gc.nTropoUnkGradN, gc.TropoGradEpoch, gc.xTropoGradN,
                       gc.ixTropoGradN, "NORTH GRADIENT NODE");
        }
    }

    if (gc.nAmb < 0) Refuse("AMBIGUITY COUNT IS NEGATIVE");
    if (gc.nAmb > 0) {
        CheckLength(gc.xAmb.Length(), gc.nAmb, "AMBIGUITY LIST");
        CheckLength(gc.ixAmb.Length(), gc.nAmb, "AMBIGUITY INDEX LIST");
        CheckLength(gc.AmbSat.Length(), gc.nAmb, "AMBIGUITY SATELLITE LIST");
        CheckLength(gc.AmbIndex.NRow(), gc.nAmb, "AMBIGUITY ARC TABLE");
        if (gc.AmbIndex.NCol() < 4) Refuse("AMBIGUITY ARC TABLE HAS FEWER THAN 4 COLUMNS");
        for (long i = 0; i < gc.nAmb; ++i) {
            CheckColumn(gc.ixAmb(i), gc.NUnk, false, "AMBIGUITY");
            for (int c : {0, 2})
                if (gc.AmbIndex(i, c) < 0 || gc.AmbIndex(i, c) >= d.nepochall)
                    Refuse("AMBIGUITY " + std::to_string(i + 1) + " HAS EPOCH "
                           + std::to_string(gc.AmbIndex(i, c)) + " OUTSIDE THE FILE");
        }
    }

    if (gc.isClkFile && gc.dtAll.Length() != d.epoch.Length())
        Refuse("RECEIVER CLOCK LIST HOLDS " + std::to_string(gc.dtAll.Length()) + " VALUES FOR "
               + std::to_string(d.epoch.Length()) + " EPOCHS");
}
