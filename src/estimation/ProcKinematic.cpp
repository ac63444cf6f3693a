#include "estimation/ProcKinematic.h"

#include <array>
#include <cmath>
#include <iomanip>
#include <iostream>

#include "driver/Console.h"
#include "estimation/EpochProgress.h"
#include "estimation/StoredTypes.h"
#include "geodesy/CoordinateTransforms.h"
#include "numerics/ProgramError.h"
#include "numerics/inv.h"
#include "observations/SatelliteSystem.h"
#include "reporting/FixedColumn.h"

namespace {

// The position and clock columns of one output line, common to the report
// and the plot file.
void SolutionFields(std::ostream& os, const mjd& t, const long* nobs,
                    const xyz& pos, const long double* dt)
{
    os << t;
    for (int s = 0; s < 4; ++s) os << std::setw(7) << nobs[s];
    FixedColumn(os, pos.x, 16, 4);
    FixedColumn(os, pos.y, 16, 4);
    FixedColumn(os, pos.z, 16, 4);
    for (int s = 0; s < 3; ++s) FixedColumn(os, dt[s] * ProcKinematicns::multip, 15, 6);
}

}  // namespace

void SetNormalSystem(matrix<long double>& N, matrix<long double>& t, long double& bx,
                     long double& by, long double& bz, long double& f, long double& p,
                     long double& ff, int& ixT)
{
    N(0, 0) += bx * bx * p;
    N(1, 1) += by * by * p;
    N(2, 2) += bz * bz * p;
    N(0, 1) += bx * by * p;
    N(0, 2) += bx * bz * p;
    N(1, 2) += by * bz * p;
    t(0) += bx * f * p;
    t(1) += by * f * p;
    t(2) += bz * f * p;
    N(ixT, ixT) += p;
    N(0, ixT) += -bx * p;
    N(1, ixT) += -by * p;
    N(2, ixT) += -bz * p;
    t(ixT) += -f * p;
    ff += f * p * f;
}

void ProcKinematic(gCPosC& gc)
{
    using namespace ProcKinematicns;
    if (!gc.ifEstKin) return;
    RINEXData& d = gc.rnxd;
    const long nEp = d.nepochall, nRec = d.nsatall;
    if (gc.mB.NRow() < nRec || gc.mB.NCol() < 3 || d.nsat.NRow() < nEp || d.sat.NRow() < nRec
        || d.epoch.NRow() < nEp || gc.WGHT.NRow() < nRec)
        ProgramError("Orvo", "KINEMATIC SOLUTION: THE STATIC SOLUTION HAS NOT STORED ITS OBSERVATIONS!");

    gc.Nc.Resize(NUnkEpoch, NUnkEpoch, 0.0L);
    gc.tc.Resize(NUnkEpoch, 1, 0.0L);
    matrix<long double> xtemp(NUnkEpoch, 1, 0.0L), Qddlg(3, 3, 0.0L);

    if (gc.verbose)
        std::cerr << "Orvo::ProcKinematic(): PROCESSING OF CODE/PHASE OBSERVATIONS!\n"
                  << "Orvo::ProcKinematic():         Process:       ";
    ProgramSubSubTitle("KINEMATIC SOLUTION:", 0);
    std::cout << std::fixed
              << "     EPOCH[MJD]    NOBS   #GPS   #GLN   #GAL            X[m]            Y[m]"
                 "            Z[m]      dTG[mics]      dTR[mics]      dTE[mics]          s0[m]"
                 "     sX[m]     sY[m]     sZ[m]  sdTG[mics]  sdTR[mics]  sdTE[mics]\n";
    std::fstream& plot = gc.gplotKin;
    if (gc.isGNUPlotKin) {
        if (plot.is_open()) plot.close();
        plot.open(gc.gnuplotKin, std::ios::out | std::ios::trunc);
        plot << std::fixed
             << "#   EPOCH[MJD]   NOBS   #GPS   #GLN   #GAL            X[m]            Y[m]"
                "            Z[m]      dTG[mics]      dTR[mics]      dTE[mics]          s0[m]"
                "     sX[m]     sY[m]     sZ[m] sdTG[mics] sdTR[mics] sdTE[mics]     dN[m]"
                "     dE[m]     dU[m]    sdN[m]    sdE[m]    sdU[m]\n";
    }

    const std::array<StoredType, 6> types = StoredTypes(gc);
    const bool sysOn[3] = {gc.isGPS, gc.isGLN, gc.isGAL};
    long* const sysCount[3] = {&gc.NObsG, &gc.NObsR, &gc.NObsE};

    const short ndec = mjdns::NDecSecond;
    mjdns::NDecSecond = 1;
    EpochProgress progress(gc.verbose);
    long k = 0;
    for (long i = 0; i < nEp; ++i) {
        progress.Step(i, nEp);
        gc.Nc *= 0.0L;
        gc.tc *= 0.0L;
        gc.NObs = gc.NObsG = gc.NObsR = gc.NObsE = 0;
        long double ff = 0.0L;
        const long i2 = k + d.nsat(i);
        if (d.nsat(i) < 0 || i2 > nRec)
            ProgramError("Orvo", "KINEMATIC SOLUTION: RECORD COUNT OF EPOCH " + std::to_string(i + 1)
                                     + " EXCEEDS THE RECORD STORE!");
        for (; k < i2; ++k) {
            const SatSystem sys = SystemOf(d.sat(k));
            if (sys == SysNone || !sysOn[sys]) continue;
            int ixT = 3 + sys;
            for (const StoredType& ty : types) {
                if (!ty.on || !ty.used(k) || ty.rejected(k)) continue;
                long double p = gc.WGHT(k) * ty.p0[sys];
                long double f = ty.f(k);
                long double bx = gc.mB(k, 0), by = gc.mB(k, 1), bz = gc.mB(k, 2);
                ++gc.NObs;
                ++*sysCount[sys];
                SetNormalSystem(gc.Nc, gc.tc, bx, by, bz, f, p, ff, ixT);
            }
        }
        if (gc.NObs <= 3) {
            std::cout << "\n";
            continue;
        }

        // A system without observations keeps a free column that does not
        // count as an unknown.
        long nrReal = 0;
        for (int in = 0; in < NUnkEpoch; ++in) {
            if (std::fabs(gc.Nc(in, in)) < FreeDiag)
                gc.Nc(in, in) = 1.0L;
            else
                ++nrReal;
            for (int jn = in + 1; jn < NUnkEpoch; ++jn) gc.Nc(jn, in) = gc.Nc(in, jn);
        }
        gc.QxxAll = inv(gc.Nc, -1);
        xtemp = gc.QxxAll * gc.tc;

        const xyz dFC(xtemp(0), xtemp(1), xtemp(2));
        long double dt[3];
        for (int s = 0; s < 3; ++s) dt[s] = sysOn[s] ? xtemp(3 + s) : 0.0L;
        const neu dFClg = g2lg(dFC, gc.RecPosFCG);
        g2lg(gc.QxxAll, gc.RecPosEstG, Qddlg);

        long double xtc = 0.0L;
        for (int in = 0; in < NUnkEpoch; ++in) xtc += xtemp(in) * gc.tc(in);
        gc.vtPv = ff - xtc;
        const long nRed = gc.NObs - nrReal;
        gc.s0apost = nRed != 0 ? gc.vtPv / static_cast<long double>(nRed) : 0.0L;

        const long nobs[4] = {gc.NObs, gc.NObsG, gc.NObsR, gc.NObsE};
        const xyz pos = gc.RecPosEst + dFC;
        long double sPos[3], sClk[3];
        for (int s = 0; s < 3; ++s) {
            sPos[s] = std::sqrt(gc.QxxAll(s, s) * gc.s0apost);
            sClk[s] = std::sqrt(gc.QxxAll(3 + s, 3 + s) * gc.s0apost) * multip;
        }

        std::cout << "  ";
        SolutionFields(std::cout, d.epoch(i), nobs, pos, dt);
        FixedColumn(std::cout, std::sqrt(gc.s0apost), 15, 4);
        for (int s = 0; s < 3; ++s) FixedColumn(std::cout, sPos[s], 10, 4);
        for (int s = 0; s < 3; ++s) {
            if (sysOn[s])
                FixedColumn(std::cout, sClk[s], 12, 6);
            else
                std::cout << std::setw(12) << 0;
        }
        std::cout << "\n";

        if (gc.isGNUPlotKin) {
            SolutionFields(plot, d.epoch(i), nobs, pos, dt);
            FixedColumn(plot, std::sqrt(gc.s0apost), 15, 6);
            for (int s = 0; s < 3; ++s) FixedColumn(plot, sPos[s], 10, 4);
            for (int s = 0; s < 3; ++s) {
                if (sysOn[s])
                    FixedColumn(plot, sClk[s], 11, 6);
                else
                    plot << std::setw(11) << 0;
            }
            FixedColumn(plot, dFClg.n, 10, 4);
            FixedColumn(plot, dFClg.e, 10, 4);
            FixedColumn(plot, dFClg.u, 10, 4);
            for (int s = 0; s < 3; ++s)
                FixedColumn(plot, std::sqrt(Qddlg(s, s) * gc.s0apost), 10, 4);
            plot << "\n";
        }
    }
    mjdns::NDecSecond = ndec;
    progress.Close();
    if (gc.verbose) std::cerr << "\n";
    if (gc.isGNUPlotKin) plot.close();
}
