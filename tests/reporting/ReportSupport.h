#pragma once
// Shared by the report tests: a small static solution set by hand in a
// context built as main builds it, and the report's lines rebuilt from printf
// conversions (independent of the stream code under test).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <initializer_list>
#include <iostream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "driver/gCPosC.h"
#include "geodesy/CoordinateTransforms.h"
#include "numerics/NearLD.h"
#include "reporting/PrintStatic.h"

namespace reporttest {

constexpr long double C = 299792458.0L;
/// Unknowns of the hand-made layout; the code bias constraint is column 18.
constexpr long NUnk = 18;
const std::string Undetermined = " **** UNDETERMINED ****";

/// printf into a string.
template <class... A>
std::string F(const char* fmt, A... a) { char buf[512]; std::snprintf(buf, sizeof(buf), fmt, a...); return buf; }

/// Precision of unknown ix of the fixture: cofactor 0.01 ix, s0apost 9e-4 m^2.
inline long double Prec(long ix) { return std::sqrt(0.01L * static_cast<long double>(ix) * 9e-4L); }

/// A column vector holding the given values.
template <class T>
void Set(matrix<T>& m, std::initializer_list<T> v)
{
    m.Resize(static_cast<long>(v.size()), 1);
    for (size_t i = 0; i < v.size(); ++i) m(static_cast<long>(i)) = v.begin()[i];
}

/// The n characters of the table behind title, its underline and the blank
/// line below ("" when the title is absent).
inline std::string Table(const std::string& text, const std::string& title, size_t n)
{
    const size_t at = text.find("\n" + title);
    return at == std::string::npos ? "" : text.substr(at + 2 * title.size() + 4, n);
}

/// A solved static adjustment of three systems: coordinates (0-2), GLONASS
/// and Galileo biases (3, 4), C1 bias of G05 (5), P2 biases of G05, G12, E11
/// (6, 7, 8; 8 undetermined), two delay nodes (9, 10; 10 undetermined), two
/// east (11, 12) and two north (13, 14; 14 undetermined) gradient nodes,
/// three ambiguities (15-17; 16 undetermined). R03 has no code bias. The
/// position cofactors are strongly correlated, so that a rotation without
/// the off-diagonal terms gives visibly other local precisions.
class Report : public ::testing::Test {
protected:
    RINEXHeader rnxh;
    RINEXData rnxd{rnxh};
    RINEX rnx{rnxh, rnxd};
    gCPosC gc{rnxh, rnxd, rnx};

    void SetUp() override
    {
        rnxh.mname = "ESBC", rnxh.mnumber = "10118M001";
        rnxd.nepochall = rnxd.NOKEph = 4;
        Set(rnxd.epoch, {mjd(59025UL, 3600.0L), mjd(59025UL, 3630.0L), mjd(59025UL, 3660.0L), mjd(59025UL, 3690.0L)});
        Set<short>(rnxd.satList, {5, 12, 103, 211});
        gc.ifEstSta = gc.isGPS = gc.isGLN = gc.isGAL = gc.ifC1 = gc.ifP2 = gc.ifPc3 = true;
        gc.sig0 = 0.02L, gc.s0apost = 9.0e-4L, gc.s0apost_C1 = 0.04L, gc.s0apost_P2 = 0.0625L, gc.s0apost_Pc3 = 0.01L;
        gc.IterDone = 3, gc.IterThresFin = 3.4e-5;
        gc.NObs = 1000, gc.NObsG = 600, gc.NObsR = 300, gc.NObsE = 100;
        gc.NObsOutl = 10, gc.NObsOutlG = 6, gc.NObsOutlR = 4, gc.NObsOutlE = 0;
        gc.NUnk = NUnk, gc.NXcrd = 3, gc.nDTsys = 2, gc.NUnkDCB = 4, gc.nAmb = 3, gc.NClk = 4;
        gc.nTropoUnk = gc.nTropoUnkGradE = gc.nTropoUnkGradN = 2, gc.nTropoUnkGrad = 4, gc.ndcbConstr = 1, gc.NUnkUndef = 3;
        gc.ixDTsys[0] = -1, gc.ixDTsys[1] = 3, gc.ixDTsys[2] = 4;
        gc.dtGNSS[1] = 299.792458L, gc.dtGNSS[2] = -3.21L;  // 1 µs of clock, and -10.7 ns

        gc.QxxAll.Resize(NUnk + 1, NUnk + 1, 0.0L);
        const long double qc[9] = {0.04L, 0.01L, 0.02L, 0.01L, 0.01L, 0.005L, 0.02L, 0.005L, 0.05L};
        for (int k = 0; k < 9; ++k) gc.QxxAll(k / 3, k % 3) = qc[k];
        for (long i = 3; i < NUnk; ++i) gc.QxxAll(i, i) = 0.01L * static_cast<long double>(i);
        gc.IsUnkOK.Resize(NUnk, 1, true);
        gc.IsUnkOK(8) = gc.IsUnkOK(10) = gc.IsUnkOK(14) = gc.IsUnkOK(16) = false;
        gc.xAll.Resize(NUnk + 1, 1, 0.0L);
        gc.xAll(0) = 0.1234L, gc.xAll(1) = -0.2345L, gc.xAll(2) = 0.3456L;
        gc.RecPos0 = xyz(3582104.5L, 532590.25L, 5232755.0L);
        gc.RecPos0G = xyz2flh(gc.RecPos0, gc.eGPS);
        gc.RecPosCorr = xyz(gc.xAll(0), gc.xAll(1), gc.xAll(2));
        gc.RecPosFC = gc.RecPosEst = gc.RecPos0 + gc.RecPosCorr;
        gc.RecPosFCG = gc.RecPosEstG = xyz2flh(gc.RecPosEst, gc.eGPS);
        gc.RecPosCorrG = g2lg(gc.RecPosCorr, gc.RecPosEstG);

        gc.isGPSxdcb = gc.isGALxdcb = gc.isdcbC1 = gc.isdcbP2 = true;
        gc.ndcbC1 = 1, gc.ndcbP2 = 3;
        Set<long>(gc.ixdcbC1, {5, -1, -1, -1}), Set<long double>(gc.dcbC1, {1.2345L, 0, 0, 0});
        Set<long>(gc.ixdcbP2, {6, 7, -1, 8}), Set<long double>(gc.dcbP2, {-0.5678L, 2.25L, 0, 0.75L});

        gc.ifEstTropo = gc.ifEstTropoGrad = true;
        gc.trpdelay.tdry = 2.3456L;
        Set(gc.TropoEpoch, {mjd(59025UL, 0.0L), mjd(59025UL, 7200.0L)});
        gc.TropoGradEpoch = gc.TropoEpoch;
        Set<long double>(gc.xTropo, {0.1234L, 0.2L}), Set<long>(gc.ixTropo, {9, 10});
        Set<long double>(gc.xTropoGradE, {0.0012L, -0.0008L}), Set<long>(gc.ixTropoGradE, {11, 12});
        Set<long double>(gc.xTropoGradN, {-0.0021L, 0.0005L}), Set<long>(gc.ixTropoGradN, {13, 14});

        // Two arcs of G05 (epochs 0-1, 2-3) and one of E11 (0-3), with their counts.
        Set<short>(gc.AmbSat, {5, 5, 211});
        gc.AmbIndex.Resize(3, 4, 0);
        const long ai[12] = {0, 0, 1, 25, 2, 20, 3, 30, 0, 0, 3, 60};
        for (int k = 0; k < 12; ++k) gc.AmbIndex(k / 4, k % 4) = ai[k];
        Set<long>(gc.ixAmb, {15, 16, 17}), Set<long double>(gc.xAmb, {123.4567L, -7.5L, 0.0042L});
        // 1 µs, -0.5 µs, an epoch without clock solution, 4.1 µs.
        Set<long double>(gc.dtAll, {299.792458L, -149.896229L, 0.0L, 1234.5678L});
    }

    /// The report on the output stream.
    std::string Run() { orvotest::Capture out(std::cout); PrintStatic(gc); return out.Text(); }

    /// Sets every output file flag and names the files, none of them yet
    /// there, in the scratch folder after prefix.
    void AskForFiles(const std::string& prefix)
    {
        gc.isOutDCBFile = gc.isOutTropFile = gc.isGNUPlotStat = gc.isClkFile = true;
        const char* suffix[] = {"_dcb.txt", "_trop.txt", "_plot.txt", "_clk.txt"};
        for (int k = 0; k < 4; ++k) {
            std::snprintf(Files()[k], 256, "%s/%s%s", orvotest::TempDir().c_str(), prefix.c_str(), suffix[k]);
            std::remove(Files()[k]);
        }
    }
    std::vector<char*> Files() { return {gc.estdcbfile, gc.esttropfile, gc.gnuplotStat, gc.clkfile}; }
    static bool Exists(const char* f) { return std::ifstream(f).good(); }
};

}  // namespace reporttest
