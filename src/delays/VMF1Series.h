#pragma once
// Per-site time series of the Vienna troposphere products (zenith delays or
// VMF1 mapping coefficients), read from one text file and interpolated in
// time. Shared by the VMF1 zenith-delay model and the VMF1 mapping function.
//
// File: '#' starts a comment line; a line starting with any other visible
// character is a series head "point label n"; it is followed by n triples
// "MJD second-of-day value" on lines that start with white space.
#include "numerics/matrix.h"

#include <string>

namespace gTMns {
extern short intType;  // 0 linear, otherwise cubic interpolation of the series
}

namespace VMF1Seriesns {
/// Most values a series head may announce: 6-hourly values over four
/// centuries are some 600000; the bound keeps 3n far from overflow.
constexpr long MaxSeriesLength = 1000000;
}

class VMF1Series {
public:
    char file[1024];              // file name
    long npts = 0;                // number of series (heads)
    long nrec = 0;                // length of the longest series
    matrix<std::string> pt;       // point name of each series
    matrix<std::string> label;    // label of each series
    matrix<long> ndata;           // number of values of each series
    matrix<long double> ephs;     // epochs, MJD with day fraction, npts x nrec
    matrix<long double> data;     // values, npts x nrec
    long ixH = -1;                // row of the point's hydrostatic series
    long ixW = -1;                // row of the point's wet series

    VMF1Series();

    /// Sets the file name (cut to 1023 characters).
    void SetFile(const char* name);

    /// First pass over the file: counts the series into npts and the longest
    /// into nrec, and checks the layout (every head "point label n" with
    /// 1 <= n <= MaxSeriesLength followed by exactly 3n finite numbers). A
    /// file that does not open, holds no series or breaks the layout ends the
    /// run with a framed error naming the file and the line.
    void CheckData();

    /// CheckData, then reads all series. A series whose epochs do not rise
    /// strictly ends the run with a framed error, as does a file that grew
    /// between the two passes ("(I>N)").
    void ReadFile();

    /// Looks up the series of point name whose labels are hLabel or its
    /// upper-case form (into ixH) and wLabel likewise (into ixW); a series
    /// not found leaves its index -1.
    void FindSeries(const char* name, const std::string& hLabel,
                    const std::string& wLabel);

    /// Value of series iT at epoch mjdec (MJD with day fraction): 0 for iT of
    /// -1; the first value at or before the first epoch and the last value at
    /// or after the last (no extrapolation); otherwise linear interpolation,
    /// or with gTMns::intType other than 0 the Lagrange cubic through two
    /// epochs on each side (linear in the first and last interval). Any other
    /// iT outside the table ends the run through the matrix index check.
    long double Interpolate(long double mjdec, long iT);

private:
    // One pass over the file; counts only, or also stores when store is set.
    void Scan(bool store);
};
