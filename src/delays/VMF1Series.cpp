#include "delays/VMF1Series.h"

#include "numerics/Interpolation.h"
#include "numerics/ProgramError.h"

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace gTMns {
short intType = 0;
}

namespace {

// Values of one series at most: a century of values every five minutes,
// far beyond any product, and far from overflowing the 3 n numbers counted.
constexpr long MaxSeriesLength = 10000000;

std::string Upper(std::string s)
{
    for (char& ch : s) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    return s;
}

}  // namespace

VMF1Series::VMF1Series() { file[0] = '\0'; }

void VMF1Series::SetFile(const char* name)
{
    std::strncpy(file, name ? name : "", sizeof(file) - 1);
    file[sizeof(file) - 1] = '\0';
}

void VMF1Series::CheckData()
{
    Scan(false);
}

void VMF1Series::ReadFile()
{
    CheckData();
    pt.Resize(npts, 1);
    label.Resize(npts, 1);
    ndata.Resize(npts, 1, 0L);
    ephs.Resize(npts, nrec, 0.0L);
    data.Resize(npts, nrec, 0.0L);
    Scan(true);
}

void VMF1Series::Scan(bool store)
{
    const std::string name(file);
    if (name.empty())
        ProgramError("Orvo", "NO VMF1 TROPOSPHERE MODEL FILE GIVEN!");
    std::ifstream in(name);
    if (!in)
        ProgramError("Orvo", name + ": VMF1 TROPOSPHERE MODEL FILE CAN NOT BE OPENED!");

    const std::string bad = name + ": VMF1 TROPOSPHERE MODEL FILE CORRUPTED ";
    long heads = 0, longest = 0;
    long expected = 0;   // values the open series must still deliver
    long nvals = 0;      // values of the open series so far
    long i = -1;         // row of the open series
    long lineNo = 0;
    long double triple[3];
    std::string line;

    // A series must deliver exactly its 3n numbers before the next head;
    // otherwise values of one point would be taken for another's.
    auto closeSeries = [&](long atLine) {
        if (i >= 0 && nvals != expected)
            ProgramError("Orvo", bad + "(SERIES ENDING BEFORE LINE "
                                     + std::to_string(atLine) + " HAS "
                                     + std::to_string(nvals) + " OF "
                                     + std::to_string(expected) + " NUMBERS)!");
    };

    while (std::getline(in, line)) {
        ++lineNo;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() || line[0] == '#') continue;
        std::istringstream words(line);
        if (!std::isspace(static_cast<unsigned char>(line[0]))) {
            closeSeries(lineNo);
            std::string p, l, extra;
            long n = 0;
            if (!(words >> p >> l >> n) || n < 1 || n > MaxSeriesLength)
                ProgramError("Orvo", bad + "(SERIES HEAD AT LINE "
                                         + std::to_string(lineNo) + ")!");
            ++i;
            ++heads;
            if (store) {
                // The first pass fixed the sizes; more heads now means the
                // file changed under us.
                if (i >= npts || n > nrec)
                    ProgramError("Orvo", "ERROR READING VMF1 TROPOSPHERE MODEL FILE (I>N)!");
                pt(i) = p;
                label(i) = l;
                ndata(i) = n;
            }
            if (n > longest) longest = n;
            expected = 3 * n;
            nvals = 0;
            continue;
        }
        std::string w;
        while (words >> w) {
            char* end = nullptr;
            const long double v = std::strtold(w.c_str(), &end);
            if (i < 0 || end == w.c_str() || *end != '\0' || nvals >= expected)
                ProgramError("Orvo", bad + "(DATA AT LINE " + std::to_string(lineNo) + ")!");
            triple[nvals % 3] = v;
            ++nvals;
            if (store && nvals % 3 == 0) {
                const long j = nvals / 3 - 1;
                const long double ep = triple[0] + triple[1] / 86400.0L;
                // Interpolation needs rising epochs: a repeated or reversed
                // epoch would give a zero or negative interval.
                if (j > 0 && !(ep > ephs(i, j - 1)))
                    ProgramError("Orvo", bad + "(EPOCHS NOT RISING AT LINE "
                                             + std::to_string(lineNo) + ")!");
                ephs(i, j) = ep;
                data(i, j) = triple[2];
            }
        }
    }
    closeSeries(lineNo + 1);
    if (heads == 0)
        ProgramError("Orvo", bad + "(NO SERIES)!");
    if (store) {
        if (heads != npts)
            ProgramError("Orvo", "ERROR READING VMF1 TROPOSPHERE MODEL FILE (I>N)!");
    } else {
        npts = heads;
        nrec = longest;
    }
}

void VMF1Series::FindSeries(const char* name, const std::string& hLabel,
                            const std::string& wLabel)
{
    ixH = -1;
    ixW = -1;
    const std::string p(name ? name : "");
    const std::string hU = Upper(hLabel), wU = Upper(wLabel);
    for (long i = 0; i < npts; ++i) {
        if (pt(i) != p) continue;
        if (label(i) == hLabel || label(i) == hU) ixH = i;
        if (label(i) == wLabel || label(i) == wU) ixW = i;
    }
}

long double VMF1Series::Interpolate(long double mjdec, long iT)
{
    if (iT < 0) return 0.0L;
    const long n = ndata(iT);
    if (mjdec <= ephs(iT, 0)) return data(iT, 0);
    if (mjdec >= ephs(iT, n - 1)) return data(iT, n - 1);
    long i = 1;
    while (i < n - 1 && !(ephs(iT, i - 1) <= mjdec && mjdec <= ephs(iT, i))) ++i;

    const long double x1 = ephs(iT, i - 1), x2 = ephs(iT, i);
    const long double y1 = data(iT, i - 1), y2 = data(iT, i);
    if (gTMns::intType == 0 || i < 2 || i + 1 > n - 1) {
        const long double p = (x2 - mjdec) / (x2 - x1);
        return p * y1 + (1.0L - p) * y2;
    }
    // Lagrange cubic through two epochs on each side: exact for any cubic
    // course of the value, and free of the node-spacing scale that a Hermite
    // form with difference slopes would need.
    return CubicInterpolate(mjdec, ephs(iT, i - 2), x1, x2, ephs(iT, i + 1),
                            data(iT, i - 2), y1, y2, data(iT, i + 1));
}
