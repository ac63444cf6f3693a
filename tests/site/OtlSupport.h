#pragma once
// The published hardisp test cases, read from the reference vectors: the
// BLQ blocks as printed, the official hourly series and the secondary one.
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "geodesy/mjd.h"
#include "site/OceanTideLoading.h"

namespace otltest {

using Row = std::vector<long double>;

/// Lines of the hardisp section of the reference vectors, with the
/// typographic minus (U+2212) made ASCII.
inline std::vector<std::string> HardispSection()
{
    std::istringstream in(orvotest::ReadFile(orvotest::Reference("test_vectors.md")));
    std::vector<std::string> out;
    bool inside = false;
    for (std::string l; std::getline(in, l);) {
        if (l.rfind("## ", 0) == 0) inside = l.rfind("## 3.", 0) == 0;
        for (std::size_t p; inside && (p = l.find("\xE2\x88\x92")) != std::string::npos;) l.replace(p, 3, "-");
        if (inside) out.push_back(l);
    }
    return out;
}

/// The lines of the n-th fenced block of the section (0: the BLQ blocks,
/// 1: the secondary Onsala series).
inline std::vector<std::string> Fenced(int n)
{
    std::vector<std::string> out;
    int fence = 0;
    for (const std::string& l : HardispSection()) {
        if (l.rfind("```", 0) == 0) ++fence;
        else if (fence == 2 * n + 1) out.push_back(l);
    }
    return out;
}

/// Numbers of a text line, read left to right, ignoring '|'.
inline Row Numbers(std::string l)
{
    for (char& c : l) if (c == '|') c = ' ';
    std::istringstream in(l);
    Row r;
    for (long double x; in >> x;) r.push_back(x);
    return r;
}

/// The official table: per hour h, dU dS dW of Onsala, then of Reykjavik.
inline std::vector<Row> OfficialSeries()
{
    std::vector<Row> out;
    for (const std::string& l : HardispSection())
        if (l.size() > 2 && l.rfind("| ", 0) == 0 && std::isdigit(static_cast<unsigned char>(l[2]))) out.push_back(Numbers(l));
    return out;
}

/// The BLQ blocks as printed, behind a header, in a scratch file.
inline std::string VectorBlq(std::size_t dropLast = 0)
{
    std::vector<std::string> lines = Fenced(0);
    std::string text = "$$ Ocean loading displacement\n$$ END HEADER\n";
    for (std::size_t i = 0; i + dropLast < lines.size(); ++i) text += lines[i] + "\n";
    return orvotest::WriteTemp("vectors" + std::to_string(dropLast) + ".blq", text);
}

/// hardisp's UTC epoch on 2009-06-25 (MJD 55007), sec seconds after 0h.
/// GetDisplacement reads its epoch as UTC (it adds TT - UTC = GPS - UTC +
/// 19 s + 32.184 s and takes the hour angle from the same second of day),
/// so hardisp's epoch given unchanged is the same instant.
inline mjd Jun25(long double sec) { mjd t(55007, 0.0L); t += sec; return t; }

}  // namespace otltest
