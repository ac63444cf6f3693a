#pragma once
// Shared by the estimation tests: a context with its observation objects,
// a dense reference solver, and noise-free observations of a known station
// generated from the real precise orbits of the ESBC day with the test's own
// signal geometry (light time, Earth rotation, periodic relativity).
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "driver/gCPosC.h"
#include "geodesy/mjd.h"
#include "geodesy/xyz.h"
#include "observations/RINEX.h"
#include "observations/RINEXData.h"
#include "observations/RINEXHeader.h"

namespace esttest {

constexpr long double C = 299792458.0L;
constexpr long double OmegaE = 7.2921151467e-5L;  // Earth rotation rate, rad/s (IS-GPS-200)
constexpr long double Pi = 3.14159265358979323846264338327950288L;

inline std::string Sp3() { return orvotest::Data("esbc-2020-177/GRG0MGXFIN_20201770000_01D_15M_ORB.SP3"); }
inline std::string Clk() { return orvotest::Data("esbc-2020-177/GRG0MGXFIN_20201770000_01D_30S_CLK.CLK"); }
inline std::string Obs() { return orvotest::Data("esbc-2020-177/esbc1770.20o"); }

/// ESBC00DNK marker, IGb14 at 2020-06-25 (data README / set.env).
inline xyz TrueStation() { return xyz(3582104.7655L, 532590.1789L, 5232755.1393L); }

/// Owns what a context refers to, built in the order main builds it.
struct Context {
    RINEXHeader rnxh;
    RINEXData rnxd{rnxh};
    RINEX rnx{rnxh, rnxd};
    gCPosC gc{rnxh, rnxd, rnx};
};

using orvotest::Capture;

/// Solves the dense system A x = b by Gaussian elimination with partial
/// pivoting; A is n by n, row-major. Independent of the program's solvers.
inline std::vector<long double> DenseSolve(std::vector<long double> A, std::vector<long double> b)
{
    const size_t n = b.size();
    for (size_t j = 0; j < n; ++j) {
        size_t p = j;
        for (size_t i = j + 1; i < n; ++i)
            if (std::fabs(A[i * n + j]) > std::fabs(A[p * n + j])) p = i;
        for (size_t k = 0; k < n; ++k) std::swap(A[j * n + k], A[p * n + k]);
        std::swap(b[j], b[p]);
        for (size_t i = j + 1; i < n; ++i) {
            const long double m = A[i * n + j] / A[j * n + j];
            for (size_t k = j; k < n; ++k) A[i * n + k] -= m * A[j * n + k];
            b[i] -= m * b[j];
        }
    }
    std::vector<long double> x(n);
    for (size_t i = n; i-- > 0;) {
        long double s = b[i];
        for (size_t k = i + 1; k < n; ++k) s -= A[i * n + k] * x[k];
        x[i] = s / A[i * n + i];
    }
    return x;
}

/// Signal of one satellite to the station, by the test's own geometry.
struct Signal {
    bool ok = false;
    long double rho = 0;      // geometric distance, m
    long double satClk = 0;   // satellite clock with periodic relativity, s
    long double elev = 0;     // geocentric elevation, rad
};

/// Satellite prn seen at true reception time tRec from station X: the
/// emission time follows from the flight time by fixed-point iteration; the
/// satellite position is rotated by the Earth's turn during the flight; the
/// clock carries the periodic relativity -2 r.v/c^2 (IS-GPS-200 20.3.3.3.3.1).
inline Signal Observe(gCPosC& gc, short prn, const mjd& tRec, const xyz& X)
{
    Signal s;
    long double tau = 0.07L;
    xyzt ps, vs;
    xyz rot;
    for (int it = 0; it < 6; ++it) {
        mjd te = tRec;
        te += -tau;
        gc.pephM.CalcSatPosition(static_cast<unsigned short>(prn), te, ps, vs);
        if (!gc.pephM.PSisOK || !gc.pephM.DTisOK) return s;
        const long double a = OmegaE * tau;
        rot = xyz(ps.x * std::cos(a) + ps.y * std::sin(a), -ps.x * std::sin(a) + ps.y * std::cos(a), ps.z);
        const xyz d = rot - X;
        tau = std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z) / C;
    }
    const xyz d = rot - X;
    s.rho = std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
    s.satClk = ps.dt - 2.0L * (ps.x * vs.x + ps.y * vs.y + ps.z * vs.z) / (C * C);
    const long double rX = std::sqrt(X.x * X.x + X.y * X.y + X.z * X.z);
    s.elev = std::asin((d.x * X.x + d.y * X.y + d.z * X.z) / (s.rho * rX));
    s.ok = true;
    return s;
}

/// What the generator puts into the data, beyond the geometry.
struct Truth {
    xyz station = TrueStation();
    long double clk0_m = 300.0L;        // receiver clock at the first epoch, m
    long double clkRate_m = 0.5L;       // per epoch, m
    long double zwd_m = 0.0L;           // zenith wet delay added with 1/sin(E)
    long double galBias_m = 0.0L;       // Galileo inter-system bias, m
    long double gloBias_m = 0.0L;       // GLONASS inter-system bias, m
};

/// Fills the record store and per-record arrays of ctx with P3 (from C1)
/// observations of every listed satellite with an orbit, nEpochs epochs
/// spaced step_s from 01:00 GPS time of 2020-06-25, and their L3 as P3 plus
/// a per-satellite constant (ambiguity 0.1 m * prn). Records below 5 degrees
/// are left out; the elevation cut-off of the context decides on the rest.
inline void Generate(Context& ctx, const std::vector<short>& sats, long nEpochs, long double step_s,
                     const Truth& tr)
{
    gCPosC& gc = ctx.gc;
    RINEXData& d = ctx.rnxd;
    const mjd t0(59025UL, 3600.0L);
    std::vector<short> recSat;
    std::vector<Signal> recSig;
    std::vector<long> nsat;
    std::vector<long double> recObs;
    for (long i = 0; i < nEpochs; ++i) {
        mjd t = t0;
        t += step_s * static_cast<long double>(i);
        long n = 0;
        for (short prn : sats) {
            const Signal s = Observe(gc, prn, t, tr.station);
            if (!s.ok || s.elev < 5.0L * Pi / 180.0L) continue;
            long double bias = 0.0L;
            if (prn > 200) bias = tr.galBias_m;
            else if (prn > 100) bias = tr.gloBias_m;
            const long double clk = tr.clk0_m + tr.clkRate_m * static_cast<long double>(i);
            recObs.push_back(s.rho - C * s.satClk + clk + bias + tr.zwd_m / std::sin(s.elev));
            recSat.push_back(prn);
            recSig.push_back(s);
            ++n;
        }
        nsat.push_back(n);
    }
    const long nRec = static_cast<long>(recSat.size());
    d.nepochall = nEpochs;
    d.nsatall = nRec;
    d.NOKEph = nEpochs;
    d.epoch.Resize(nEpochs, 1);
    d.nsat.Resize(nEpochs, 1);
    for (long i = 0; i < nEpochs; ++i) {
        mjd t = t0;
        // The time tag is read on the receiver clock.
        t += step_s * static_cast<long double>(i) + (tr.clk0_m + tr.clkRate_m * static_cast<long double>(i)) / C;
        d.epoch(i) = t;
        d.nsat(i) = static_cast<short>(nsat[static_cast<size_t>(i)]);
    }
    d.sat.Resize(nRec, 1);
    d.PC3.Resize(nRec, 1);
    d.L3.Resize(nRec, 1);
    gc.ELV.Resize(nRec, 1, 0.0L);
    gc.WGHT.Resize(nRec, 1, 1.0L);
    gc.MFTROP.Resize(nRec, 1, 0.0L);
    gc.MFGRAD.Resize(nRec, 2, 0.0L);
    gc.OKSAT.Resize(nRec, 1, true);
    for (matrix<long double>* m : {&gc.TROP, &gc.ION, &gc.SETIDE, &gc.PTIDE, &gc.OTIDE, &gc.REL2})
        m->Resize(nRec, 1, 0.0L);
    std::vector<short> list;
    for (long k = 0; k < nRec; ++k) {
        const size_t kk = static_cast<size_t>(k);
        d.sat(k) = recSat[kk];
        d.PC3(k) = recObs[kk];
        d.L3(k) = recObs[kk] + 0.1L * static_cast<long double>(recSat[kk]);
        gc.ELV(k) = recSig[kk].elev;
        gc.MFTROP(k) = 1.0L / std::sin(recSig[kk].elev);
        bool seen = false;
        for (short s : list) seen = seen || s == recSat[kk];
        if (!seen) list.push_back(recSat[kk]);
    }
    std::sort(list.begin(), list.end());
    d.satList.Resize(static_cast<long>(list.size()), 1);
    for (size_t s = 0; s < list.size(); ++s) d.satList(static_cast<long>(s)) = list[s];

    ctx.rnxh.iC1 = ctx.rnxh.iP2 = ctx.rnxh.iPC3 = ctx.rnxh.iL3 = true;
    gc.ifPc3 = true;
    gc.p0Pc3G = gc.p0Pc3R = gc.p0Pc3E = 1.0L;
    gc.p0L3G = gc.p0L3R = gc.p0L3E = 10000.0L;
    gc.sigPc3G = gc.sigPc3R = gc.sigPc3E = 0.05L;
    gc.sigL3G = gc.sigL3R = gc.sigL3E = 0.0005L;
    gc.sig0 = 0.05L;
    gc.dtAll.Resize(nEpochs, 1, 0.0L);
}

/// Reads the real orbits into the context; with clk also the clock file.
inline void LoadProducts(Context& ctx, bool clk)
{
    ctx.gc.pephM.SetFile(Sp3().c_str());
    ctx.gc.pephM.ReadFile();
    ctx.gc.isPEph = true;
    if (clk) {
        ctx.gc.pclkM.SetFile(Clk().c_str());
        ctx.gc.pclkM.ReadFile();
        ctx.gc.isPclk = true;
    }
}

/// Places the a-priori marker and phase centre at pos.
inline void SetApriori(gCPosC& gc, const xyz& pos)
{
    gc.RecPos0 = pos;
    gc.RecPosFC = pos;
}

inline long double Dist(const xyz& a, const xyz& b)
{
    const xyz d = a - b;
    return std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
}

}  // namespace esttest
