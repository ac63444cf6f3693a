#pragma once
// Shared by the estimation tests: a context with its observation objects,
// made-up record stores, a dense reference solver, and noise-free
// observations of a known station generated from the real precise orbits
// of the ESBC day with the test's own signal geometry (light time, Earth
// rotation, periodic relativity).
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "driver/gCPosC.h"
#include "numerics/NearLD.h"
#include "observations/RINEX.h"

namespace esttest {

using orvotest::Capture;

constexpr long double C = 299792458.0L;
constexpr long double OmegaE = 7.2921151467e-5L;  // Earth rotation rate, rad/s (IS-GPS-200)

/// ESBC00DNK marker, IGb14 at 2020-06-25 (data README / set.env).
inline xyz TrueStation() { return xyz(3582104.7655L, 532590.1789L, 5232755.1393L); }

/// Owns what a context refers to, built in the order main builds it.
struct Context {
    RINEXHeader rnxh;
    RINEXData rnxd{rnxh};
    RINEX rnx{rnxh, rnxd};
    gCPosC gc{rnxh, rnxd, rnx};
};

/// Solves the dense system A x = b by Gaussian elimination; A is n by n,
/// row-major, a normal matrix (symmetric positive definite, so no pivoting
/// is needed). Independent of the program's solvers.
inline std::vector<long double> DenseSolve(std::vector<long double> A, std::vector<long double> b)
{
    const size_t n = b.size();
    for (size_t j = 0; j < n; ++j)
        for (size_t i = j + 1; i < n; ++i) {
            const long double m = A[i * n + j] / A[j * n + j];
            for (size_t k = j; k < n; ++k) A[i * n + k] -= m * A[j * n + k];
            b[i] -= m * b[j];
        }
    std::vector<long double> x(n);
    for (size_t i = n; i-- > 0;) {
        x[i] = b[i];
        for (size_t k = i + 1; k < n; ++k) x[i] -= A[i * n + k] * x[k];
        x[i] /= A[i * n + i];
    }
    return x;
}

/// Adds the weighted observation equation row·x = f to the dense normal system A, b.
inline void AddRow(std::vector<long double>& A, std::vector<long double>& b, const std::vector<long double>& row,
                   long double p, long double f)
{
    const size_t n = b.size();
    for (size_t i = 0; i < n; ++i) {
        b[i] += row[i] * p * f;
        for (size_t j = 0; j < n; ++j) A[i * n + j] += row[i] * p * row[j];
    }
}

/// Signal of one satellite to the station, by the test's own geometry.
struct Signal {
    bool ok = false;
    long double rho = 0;     // geometric distance, m
    long double satClk = 0;  // satellite clock with periodic relativity, s
    long double elev = 0;    // geocentric elevation, rad
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
    xyz d;
    for (int it = 0; it < 6; ++it, tau = d.GetLength() / C) {
        mjd te = tRec;
        te += -tau;
        gc.pephM.CalcSatPosition(static_cast<unsigned short>(prn), te, ps, vs);
        if (!gc.pephM.PSisOK || !gc.pephM.DTisOK) return s;
        const long double a = OmegaE * tau;
        d = xyz(ps.x * std::cos(a) + ps.y * std::sin(a), -ps.x * std::sin(a) + ps.y * std::cos(a), ps.z) - X;
    }
    s.rho = d.GetLength();
    s.satClk = ps.dt - 2.0L * (ps.x * vs.x + ps.y * vs.y + ps.z * vs.z) / (C * C);
    s.elev = std::asin((d.x * X.x + d.y * X.y + d.z * X.z) / (s.rho * X.GetLength()));
    s.ok = true;
    return s;
}

/// The per-record model arrays of n records: zero corrections, unit
/// weights, every satellite with orbit and clock.
inline void SizeRecordArrays(gCPosC& gc, long n)
{
    gc.ELV.Resize(n, 1, 0.0L);
    gc.WGHT.Resize(n, 1, 1.0L);
    gc.MFGRAD.Resize(n, 2, 0.0L);
    gc.OKSAT.Resize(n, 1, true);
    for (matrix<long double>* m : {&gc.TROP, &gc.MFTROP, &gc.ION, &gc.SETIDE, &gc.PTIDE, &gc.OTIDE, &gc.REL2})
        m->Resize(n, 1, 0.0L);
}

/// One record of a made-up store: satellite, code value (m), elevation (rad).
struct Rec {
    short sat;
    long double code, elev;
};

/// Fills the record store of ctx with the epochs (time tags) and their
/// records: every code type and P3 hold the code value, L3 the code plus a
/// per-satellite ambiguity of 0.1 m * prn; the wet mapping is 1/sin(E).
inline void Store(Context& ctx, const std::vector<mjd>& epochs, const std::vector<std::vector<Rec>>& recs)
{
    RINEXData& d = ctx.rnxd;
    long n = 0;
    for (const auto& e : recs) n += static_cast<long>(e.size());
    d.nepochall = d.NOKEph = static_cast<long>(epochs.size());
    d.nsatall = n;
    d.epoch.Resize(d.nepochall, 1);
    d.nsat.Resize(d.nepochall, 1);
    d.sat.Resize(n, 1);
    for (matrix<gnssobs>* m : {&d.C1, &d.P1, &d.P2, &d.PC3, &d.PP3, &d.L3}) m->Resize(n, 1);
    SizeRecordArrays(ctx.gc, n);
    std::vector<short> list;
    long k = 0;
    for (size_t i = 0; i < epochs.size(); ++i) {
        d.epoch(i) = epochs[i];
        d.nsat(i) = static_cast<short>(recs[i].size());
        for (const Rec& r : recs[i]) {
            d.sat(k) = r.sat;
            for (matrix<gnssobs>* m : {&d.C1, &d.P1, &d.P2, &d.PC3, &d.PP3}) (*m)(k) = r.code;
            d.L3(k) = r.code + 0.1L * r.sat;
            ctx.gc.ELV(k) = r.elev;
            ctx.gc.MFTROP(k++) = 1.0L / std::sin(r.elev);
            if (std::find(list.begin(), list.end(), r.sat) == list.end()) list.push_back(r.sat);
        }
    }
    std::sort(list.begin(), list.end());
    d.satList.Resize(static_cast<long>(list.size()), 1);
    for (size_t s = 0; s < list.size(); ++s) d.satList(static_cast<long>(s)) = list[s];
    RINEXHeader& h = ctx.rnxh;
    h.iC1 = h.iP1 = h.iP2 = h.iPC3 = h.iPP3 = h.iL3 = true;
}

/// What the generator puts into the data, beyond the geometry.
struct Truth {
    xyz station = TrueStation();
    long double clk0_m = 300.0L;   // receiver clock at the first epoch, m
    long double clkRate_m = 0.5L;  // per epoch, m
    long double zwd_m = 0.0L;      // zenith wet delay added with 1/sin(E)
    long double galBias_m = 0.0L;  // Galileo inter-system bias, m
    long double Clock(long i) const { return clk0_m + clkRate_m * static_cast<long double>(i); }
};

/// Reads the real orbits of the day and, with clk, its clock file; GPS on.
inline void LoadProducts(gCPosC& gc, bool clk)
{
    gc.pephM.SetFile(orvotest::Data("esbc-2020-177/GRG0MGXFIN_20201770000_01D_15M_ORB.SP3").c_str());
    gc.pephM.ReadFile();
    gc.isPEph = gc.isGPS = gc.ifPc3 = true;
    if (clk) {
        gc.pclkM.SetFile(orvotest::Data("esbc-2020-177/GRG0MGXFIN_20201770000_01D_30S_CLK.CLK").c_str());
        gc.pclkM.ReadFile();
        gc.isPclk = true;
    }
}

/// Loads the products (LoadProducts) and fills the store with P3 observations of GPS and, with gal, Galileo satellites with an
/// orbit: nEpochs epochs spaced step_s from 01:00 GPS time of 2020-06-25,
/// time-tagged on the receiver clock; records below 5 degrees are left
/// out, the context's cut-off decides on the rest. The a-priori position
/// is the station moved by `offset`.
inline void Generate(Context& ctx, bool gal, long nEpochs, long double step_s, const Truth& tr, bool clk = false,
                     const xyz& offset = xyz(4.0L, -3.0L, 6.0L))
{
    gCPosC& gc = ctx.gc;
    LoadProducts(gc, clk);
    gc.isGAL = gal;
    std::vector<mjd> epochs;
    std::vector<std::vector<Rec>> recs(nEpochs);
    for (long i = 0; i < nEpochs; ++i) {
        mjd t(59025UL, 3600.0L + step_s * static_cast<long double>(i));
        for (short prn = 1; prn <= (gal ? 236 : 32); prn = prn == 32 ? 201 : prn + 1) {
            const Signal s = Observe(gc, prn, t, tr.station);
            if (!s.ok || s.elev < 5.0L * Pi / 180.0L) continue;
            const long double bias = prn > 200 ? tr.galBias_m : 0.0L;
            recs[i].push_back({prn, s.rho - C * s.satClk + tr.Clock(i) + bias + tr.zwd_m / std::sin(s.elev), s.elev});
        }
        t += tr.Clock(i) / C;  // the time tag is read on the receiver clock
        epochs.push_back(t);
    }
    Store(ctx, epochs, recs);
    gc.p0Pc3G = gc.p0Pc3R = gc.p0Pc3E = 1.0L;  // 5 cm codes and 0.5 mm phases
    gc.p0L3G = gc.p0L3R = gc.p0L3E = 10000.0L;
    gc.dtAll.Resize(nEpochs, 1, 0.0L);
    gc.RecPos0 = gc.RecPosFC = tr.station + offset;
}

inline long double Dist(const xyz& a, const xyz& b) { return (a - b).GetLength(); }
inline bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

}  // namespace esttest
