#pragma once
// The real GPT2 grid read once for the whole test program, the Zimmerwald
// site and day, and the reading that the troposphere tests share.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "delays/gTM_GPT2.h"
#include "geodesy/flh.h"
#include "geodesy/mjd.h"
#include "numerics/NearLD.h"

namespace deltest {

const long double Pi = 3.14159265358979323846264338327950288L;
inline long double Rad(long double deg) { return deg * Pi / 180.0L; }

inline const std::string kGrid = orvotest::Data("models/gpt2_5.grd");
// Zimmerwald pressure sensor (met header of zimm2350.15m) on 2015-08-23.
inline const flh kSite(Rad(46.8771L), Rad(7.4650L), 956.345L);
inline const mjd kDay(57257, 43200.0L);

/// Has the reader r read the file at path.
template <class T> void Read(T& r, const std::string& path) { r.SetFile(path.c_str()), r.ReadFile(); }

/// The real 5-degree grid, read once: it has 2592 nodes.
inline gTM_GPT2& Grid() { static gTM_GPT2* g = nullptr; return g ? *g : (Read(*(g = new gTM_GPT2), kGrid), *g); }

inline std::string Join(const std::vector<std::string>& lines) { std::string s; for (const auto& l : lines) s += l + "\n"; return s; }

/// The framed error text followed by the pattern re.
inline std::string Framed(const std::string& re) { return "\\*\\*\\*\\* Orvo: Error -> " + re; }

}  // namespace deltest
