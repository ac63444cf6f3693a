#pragma once
// One field of a GPT2 grid node: mean value and annual and semi-annual
// harmonics.
#include <istream>

namespace gpt2_grdns {
extern long double scale;  // factor applied to each value read
}

class gpt2_grd {
public:
    enum { A0 = 0, A1 = 1, B1 = 2, A2 = 3, B2 = 4 };
    static constexpr int N = 5;
    long double V[N] = {0.0L, 0.0L, 0.0L, 0.0L, 0.0L};  // A0, A1, B1, A2, B2

    /// Element i (0 to 4: A0, A1, B1, A2, B2); any other index ends the run
    /// with a framed error.
    long double& operator()(int i);
    /// Read-only form of the above.
    long double operator()(int i) const;

    /// A0 + A1 cos(w) + B1 sin(w) + A2 cos(2w) + B2 sin(2w), given the four
    /// trigonometric values of the annual angle w = 2 pi t/365.25 d.
    long double Value(long double cosfy, long double sinfy, long double coshy,
                      long double sinhy) const;
};

/// Reads five numbers, each multiplied by gpt2_grdns::scale; on a failed
/// read the stream's fail state tells the caller.
std::istream& operator>>(std::istream& in, gpt2_grd& g);
