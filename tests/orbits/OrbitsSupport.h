#pragma once
// The real orbit, clock and channel files of the two data sets, their text
// cut into lines, and the reading and comparing that the orbit tests share.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "geodesy/mjd.h"
#include "geodesy/xyz.h"
#include "numerics/NearLD.h"

namespace orbtest {

using orvotest::ReadFile;
using orvotest::WriteTemp;

inline const std::string kEsbc = orvotest::Data("esbc-2020-177/"), kZimm = orvotest::Data("zimm-2015-235/");
inline const std::string kSp3 = kEsbc + "GRG0MGXFIN_20201770000_01D_15M_ORB.SP3", kNav = kEsbc + "esbc1770.20g",
                         kSp3Before = kEsbc + "GRG0MGXFIN_20201760000_01D_15M_ORB.SP3",
                         kClk = kEsbc + "GRG0MGXFIN_20201770000_01D_30S_CLK.CLK", kChannels = kEsbc + "esbc1770.20o.glnfc";
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

}  // namespace orbtest
