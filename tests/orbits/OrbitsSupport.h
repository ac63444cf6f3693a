#pragma once
// The real orbit, clock and channel files of the two data sets, their text
// cut into lines, and the reading and comparing that the orbit tests share.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "geodesy/mjd.h"
#include "geodesy/xyz.h"
#include "numerics/NearLD.h"
#include "orbits/GNSSpClk.h"
#include "orbits/GNSSpEph.h"

namespace orbtest {

using orvotest::ReadFile;
using orvotest::WriteTemp;

inline const std::string kEsbc = orvotest::Data("esbc-2020-177/"), kZimm = orvotest::Data("zimm-2015-235/");
inline const std::string kSp3 = kEsbc + "GRG0MGXFIN_20201770000_01D_15M_ORB.SP3", kNav = kEsbc + "esbc1770.20g",
                         kSp3Before = kEsbc + "GRG0MGXFIN_20201760000_01D_15M_ORB.SP3",
                         kClk = kEsbc + "GRG0MGXFIN_20201770000_01D_30S_CLK.CLK", kChannels = kEsbc + "esbc1770.20o.glnfc";
inline const std::string kGpsNav = kEsbc + "esbc1770.20n", kMixedNav = kEsbc + "ESBC00DNK_R_20201770000_01D_MN.rnx.gz";
// The same channels as "Rnn k" per line, from the RINEX 3 header: another
// source, parsed here independently of the reader.
inline const std::string kChannelList = kEsbc + "esbc1770.20o.glofrq";
inline const std::string kIgs234 = kZimm + "igs18586.sp3", kIgs235 = kZimm + "igs18590.sp3", kIgs236 = kZimm + "igs18591.sp3";

constexpr long double C = 299792458.0L;
constexpr unsigned long Jun25 = 59025;  // MJD of 2020-06-25, the ESBC day
// ESBC marker, IGb14 (data set README): a real receiver for the light time.
inline const xyz kMarker(3582104.7655L, 532590.1789L, 5232755.1393L);

inline std::vector<std::string> FileLines(const std::string& path)
{
    std::vector<std::string> out; std::istringstream in(ReadFile(path));
    for (std::string l; std::getline(in, l);) out.push_back(l);
    return out;
}

/// The first n of the lines, each with its newline.
inline std::string Join(const std::vector<std::string>& lines, std::size_t n = std::string::npos)
{ std::string s; for (std::size_t i = 0; i < lines.size() && i < n; ++i) s += lines[i] + "\n"; return s; }

/// A reader of type T that has read the file at path.
template <class T> std::unique_ptr<T> Load(const std::string& path) { auto r = std::make_unique<T>(); r->SetFile(path.c_str()), r->ReadFile(); return r; }

/// One reader of type T per real file for the whole test program, so
/// that the big files are read once.
template <class T> T& Shared(const std::string& path)
{
    static std::map<std::string, std::unique_ptr<T>> readers; std::unique_ptr<T>& r = readers[path];
    return *(r ? r : r = Load<T>(path));
}

/// The framed error text followed by the pattern re.
inline std::string Framed(const std::string& re) { return "\\*\\*\\*\\* Orvo: Error -> " + re; }

/// A broken file (its name and text) and the framed error it must end with.
struct Broken { std::string name, text, error; };

/// Each broken file read by a reader of type T ends the run with its error.
template <class T> void ExpectEachStops(const std::vector<Broken>& cases)
{
    for (const Broken& b : cases)
        EXPECT_EXIT(Load<T>(WriteTemp(b.name, b.text)), ::testing::ExitedWithCode(1), b.error) << b.name;
}

inline long double Dist(const xyz& a, const xyz& b) { return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z); }

/// Name of a satellite of the shared numbering: "G05", "R24", "E01".
inline std::string SatName(int sat) { return std::string(1, sat > 200 ? 'E' : sat > 100 ? 'R' : 'G') + char('0' + sat % 100 / 10) + char('0' + sat % 10); }

/// Epoch t moved by s seconds.
inline mjd Plus(mjd t, long double s) { return t += s; }

/// Plain Lagrange polynomial through (t_i, y_i) at x, written here in
/// seconds without the readers' hours, minutes and stored denominators.
inline long double Lagrange(const long double* t, const long double* y, int n, long double x)
{
    long double sum = 0.0L;
    for (int i = 0; i < n; ++i) {
        long double b = y[i];
        for (int j = 0; j < n; ++j) b *= j == i ? 1.0L : (x - t[j]) / (t[i] - t[j]);
        sum += b;
    }
    return sum;
}

/// Root mean square and largest size of a set of differences.
struct Spread {
    long double sum2 = 0.0L, max = 0.0L; long n = 0;
    void Add(long double v) { sum2 += v * v, max = std::max(max, std::fabs(v)), ++n; }
    long double Rms() const { return n > 0 ? std::sqrt(sum2 / n) : 0.0L; }
};

/// Position and clock spreads as a line for a failure message.
inline std::string Figures(const Spread& pos, const Spread& clk)
{
    char f[160]; std::snprintf(f, sizeof f, "%ld: %.2Lf m RMS, %.2Lf max; clock %.2Lf ns, %.2Lf max", pos.n, pos.Rms(), pos.max, 1e9L * clk.Rms(), 1e9L * clk.max);
    return f;
}

/// A broadcast state of satellite sat at epoch t into p, with p.dt the
/// clock without its relativity term; false where it is not to be compared.
using BroadcastState = std::function<bool(short sat, mjd& t, xyzt& p)>;

/// The broadcast states of the satellites base + list(i) (shared numbering)
/// at every epoch of the day's SP3 file against it and the 30-s clock file:
/// 3D position differences (m) into pos; clock differences (s) less their
/// median over the satellites of the epoch, which takes out the common
/// reference clock of the two clock sets, into clk.
inline void CompareWithPrecise(const matrix<short>& list, short base, const BroadcastState& state, Spread& pos, Spread& clk)
{
    GNSSpEph& sp3 = Shared<GNSSpEph>(kSp3); GNSSpClk& pc = Shared<GNSSpClk>(kClk);
    for (long k = 0; k < sp3.GetNEpoch(); ++k) {
        mjd t = sp3.GetMJD(k); pc.SetEpochIndex(t); std::vector<long double> dc;
        for (long i = 0; i < list.NRow(); ++i) {
            short s = static_cast<short>(base + list(i)); xyzt p, ps, vs; long double c = 0.0L;
            sp3.CalcSatPosition(static_cast<unsigned short>(s), t, ps, vs);
            if (!sp3.PSisOK || !state(s, t, p)) continue;
            pos.Add(Dist(p, ps)), pc.GetSatelliteClock(s, t, c);
            if (pc.DTisOK) dc.push_back(p.dt - c);
        }
        if (dc.size() < 3) continue;  // no median worth the name
        std::sort(dc.begin(), dc.end());
        const std::size_t h = dc.size() / 2; const long double median = dc.size() % 2 ? dc[h] : (dc[h - 1] + dc[h]) / 2.0L;
        for (long double d : dc) clk.Add(d - median);
    }
}

}  // namespace orbtest
