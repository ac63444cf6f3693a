#pragma once
// Shared by the report tests: a context holding a small static solution set
// by hand, the capture of a standard stream, and the line formats of the
// report built from printf conversions (independent of the stream code
// under test).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "driver/gCPosC.h"
#include "geodesy/CoordinateTransforms.h"
#include "geodesy/mjd.h"
#include "geodesy/xyz.h"
#include "observations/RINEX.h"
#include "observations/RINEXData.h"
#include "observations/RINEXHeader.h"

namespace reporttest {

constexpr long double C = 299792458.0L;

/// Owns what a context refers to, built in the order main builds it.
struct Context {
    RINEXHeader rnxh;
    RINEXData rnxd{rnxh};
    RINEX rnx{rnxh, rnxd};
    gCPosC gc{rnxh, rnxd, rnx};
};

using orvotest::Capture;

/// printf into a string.
inline std::string F(const char* fmt, ...)
{
    char buf[512];
    va_list ap;
    va_start(ap, fmt);
    std::vsnprintf(buf, sizeof(buf), fmt, ap);
    va_end(ap);
    return buf;
}

/// The text split at new lines (the last, unterminated piece included).
inline std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> out;
    std::istringstream in(text);
    std::string l;
    while (std::getline(in, l)) out.push_back(l);
    return out;
}

/// Index of the first line starting with prefix at or after from; -1 if none.
inline long Find(const std::vector<std::string>& lines, const std::string& prefix, long from = 0)
{
    for (long i = from; i < static_cast<long>(lines.size()); ++i)
        if (lines[static_cast<size_t>(i)].compare(0, prefix.size(), prefix) == 0) return i;
    return -1;
}

/// Number of unknowns of the hand-made layout, and the column of the code
/// bias constraint behind them.
constexpr long NUnk = 18;

/// A solved static adjustment of three systems: coordinates (0-2),
/// GLONASS and Galileo biases (3, 4), C1 bias of G05 (5), P2 biases of G05,
/// G12, E11 (6, 7, 8; 8 undetermined), two delay nodes (9, 10; 10
/// undetermined), two east (11, 12) and two north (13, 14; 14 undetermined)
/// gradient nodes, three ambiguities (15-17; 16 undetermined), one code bias
/// constraint. R03 has no code bias. The cofactor matrix has a strongly
/// correlated position block, so that a rotation without the off-diagonal
/// terms gives visibly other local precisions.
inline void FillSolution(Context& ctx)
{
    gCPosC& gc = ctx.gc;
    RINEXData& d = ctx.rnxd;
    ctx.rnxh.mname = "ESBC";
    ctx.rnxh.mnumber = "10118M001";

    d.nepochall = 4;
    d.NOKEph = 4;
    d.epoch.Resize(4, 1);
    for (long i = 0; i < 4; ++i) d.epoch(i) = mjd(59025UL, 3600.0L + 30.0L * i);
    d.satList.Resize(4, 1);
    const short sats[] = {5, 12, 103, 211};
    for (long j = 0; j < 4; ++j) d.satList(j) = sats[j];

    gc.ifEstSta = true;
    gc.isGPS = gc.isGLN = gc.isGAL = true;
    gc.ifC1 = gc.ifP2 = true;
    gc.sig0 = 0.02L;
    gc.s0apost = 9.0e-4L;
    gc.s0apost_C1 = 0.04L;
    gc.s0apost_P2 = 0.0625L;
    gc.IterDone = 3;
    gc.IterThresFin = 3.4e-5;

    gc.NObs = 1000; gc.NObsG = 600; gc.NObsR = 300; gc.NObsE = 100;
    gc.NObsOutl = 10; gc.NObsOutlG = 6; gc.NObsOutlR = 4; gc.NObsOutlE = 0;
    gc.NUnk = NUnk; gc.NXcrd = 3; gc.nDTsys = 2; gc.NUnkDCB = 4; gc.nAmb = 3;
    gc.nTropoUnk = 2; gc.nTropoUnkGradE = 2; gc.nTropoUnkGradN = 2; gc.nTropoUnkGrad = 4;
    gc.NClk = 4; gc.ndcbConstr = 1; gc.NUnkUndef = 3;

    gc.ixX = 0; gc.ixY = 1; gc.ixZ = 2;
    gc.ixDTsys[0] = -1; gc.ixDTsys[1] = 3; gc.ixDTsys[2] = 4;
    gc.dtGNSS[1] = 299.792458L;  // 1 µs of clock
    gc.dtGNSS[2] = -3.21L;

    const long n = NUnk + 1;
    gc.QxxAll.Resize(n, n, 0.0L);
    const long double qc[3][3] = {{0.04L, 0.01L, 0.02L}, {0.01L, 0.01L, 0.005L},
                                  {0.02L, 0.005L, 0.05L}};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) gc.QxxAll(i, j) = qc[i][j];
    for (long i = 3; i < NUnk; ++i) gc.QxxAll(i, i) = 0.01L * static_cast<long double>(i);
    gc.IsUnkOK.Resize(NUnk, 1, true);
    gc.IsUnkOK(8) = gc.IsUnkOK(10) = gc.IsUnkOK(14) = gc.IsUnkOK(16) = false;
    gc.xAll.Resize(n, 1, 0.0L);
    gc.xAll(0) = 0.1234L;
    gc.xAll(1) = -0.2345L;
    gc.xAll(2) = 0.3456L;

    gc.RecPos0 = xyz(3582104.5L, 532590.25L, 5232755.0L);
    gc.RecPos0G = xyz2flh(gc.RecPos0, gc.eGPS);
    gc.RecPosCorr = xyz(gc.xAll(0), gc.xAll(1), gc.xAll(2));
    gc.RecPosEst = gc.RecPos0 + gc.RecPosCorr;
    gc.RecPosEstG = xyz2flh(gc.RecPosEst, gc.eGPS);
    gc.RecPosFC = gc.RecPosEst;
    gc.RecPosFCG = xyz2flh(gc.RecPosFC, gc.eGPS);
    gc.RecPosCorrG = g2lg(gc.RecPosCorr, gc.RecPosEstG);

    gc.isGPSxdcb = gc.isGALxdcb = true;
    gc.isdcbC1 = gc.isdcbP2 = true;
    gc.ndcbC1 = 1;
    gc.ndcbP2 = 3;
    gc.ixdcbC1.Resize(4, 1, -1);
    gc.ixdcbC1(0) = 5;
    gc.ixdcbP2.Resize(4, 1, -1);
    gc.ixdcbP2(0) = 6;
    gc.ixdcbP2(1) = 7;
    gc.ixdcbP2(3) = 8;
    gc.dcbC1.Resize(4, 1, 0.0L);
    gc.dcbC1(0) = 1.2345L;
    gc.dcbP2.Resize(4, 1, 0.0L);
    gc.dcbP2(0) = -0.5678L;
    gc.dcbP2(1) = 2.25L;
    gc.dcbP2(3) = 0.75L;

    gc.ifEstTropo = gc.ifEstTropoGrad = true;
    gc.trpdelay.tdry = 2.3456L;
    gc.TropoEpoch.Resize(2, 1);
    gc.TropoEpoch(0) = mjd(59025UL, 0.0L);
    gc.TropoEpoch(1) = mjd(59025UL, 7200.0L);
    gc.xTropo.Resize(2, 1, 0.0L);
    gc.xTropo(0) = 0.1234L;
    gc.xTropo(1) = 0.2L;
    gc.ixTropo.Resize(2, 1);
    gc.ixTropo(0) = 9;
    gc.ixTropo(1) = 10;
    gc.TropoGradEpoch = gc.TropoEpoch;
    gc.xTropoGradE.Resize(2, 1, 0.0L);
    gc.xTropoGradE(0) = 0.0012L;
    gc.xTropoGradE(1) = -0.0008L;
    gc.xTropoGradN.Resize(2, 1, 0.0L);
    gc.xTropoGradN(0) = -0.0021L;
    gc.xTropoGradN(1) = 0.0005L;
    gc.ixTropoGradE.Resize(2, 1);
    gc.ixTropoGradE(0) = 11;
    gc.ixTropoGradE(1) = 12;
    gc.ixTropoGradN.Resize(2, 1);
    gc.ixTropoGradN(0) = 13;
    gc.ixTropoGradN(1) = 14;

    gc.AmbSat.Resize(3, 1);
    gc.AmbSat(0) = 5;
    gc.AmbSat(1) = 5;
    gc.AmbSat(2) = 211;
    gc.AmbIndex.Resize(3, 4, 0);
    const long ai[3][4] = {{0, 0, 1, 25}, {2, 20, 3, 30}, {0, 0, 3, 60}};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 4; ++j) gc.AmbIndex(i, j) = ai[i][j];
    gc.ixAmb.Resize(3, 1);
    gc.ixAmb(0) = 15;
    gc.ixAmb(1) = 16;
    gc.ixAmb(2) = 17;
    gc.xAmb.Resize(3, 1, 0.0L);
    gc.xAmb(0) = 123.4567L;
    gc.xAmb(1) = -7.5L;
    gc.xAmb(2) = 0.0042L;

    gc.dtAll.Resize(4, 1, 0.0L);
    gc.dtAll(0) = 299.792458L;  // 1 µs
    gc.dtAll(1) = -149.896229L; // -0.5 µs
    gc.dtAll(2) = 0.0L;         // an epoch without clock solution
    gc.dtAll(3) = 1234.5678L;
}

/// Sets every output file flag and names the files in the test's folder
/// with the given prefix.
inline void AskForFiles(gCPosC& gc, const std::string& prefix)
{
    const std::string dir = orvotest::TempDir() + "/" + prefix;
    auto name = [&](char* dst, const char* suffix) {
        std::snprintf(dst, 256, "%s%s", dir.c_str(), suffix);
        std::remove(dst);
    };
    gc.isOutDCBFile = gc.isOutTropFile = gc.isGNUPlotStat = gc.isClkFile = true;
    name(gc.estdcbfile, "_dcb.txt");
    name(gc.esttropfile, "_trop.txt");
    name(gc.gnuplotStat, "_plot.txt");
    name(gc.clkfile, "_clk.txt");
}

}  // namespace reporttest
