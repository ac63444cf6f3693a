#pragma once
// Each satellite's last light-time solution, carried forward along its
// range rate and the rate's change since the solution before: where the
// next epoch's iteration starts, so that the precise orbit is interpolated
// once a record instead of three or four times, and the iteration then
// takes two steps. Over 30 s the rate alone misses by up to 3e-7 s, with
// its change by 1e-9 s.
#include <array>

#include "geodesy/mjd.h"
#include "geodesy/xyz.h"

class LightTimeHints {
public:
    /// A solution older than this (s) gives no hint: the range rate changes
    /// by up to 0.2 m/s², which over 300 s leaves 3e-5 s of flight time,
    /// well inside what the hinted solution takes (GNSSpEphns::MaxHintError_s).
    static constexpr long double MaxAge_s = 300.0L;

    /// The flight time (s) expected for satellite sat received at t: the
    /// kept one moved along its rate and the rate's change. 0, no hint, for a number outside the
    /// shared numbering, none kept, or one kept more than MaxAge_s from t.
    long double Predict(short sat, const mjd& t) const;

    /// Keeps the solution for sat received at t: flight time tau (s),
    /// receiver prec, satellite position psat and velocity vsat at emission.
    void Keep(short sat, const mjd& t, long double tau, const xyz& prec, const xyzt& psat, const xyzt& vsat);

private:
    static constexpr int Numbers = 300;
    struct Solution {
        mjd t;
        long double tau = 0.0L, rate = 0.0L, change = 0.0L;  // s, s/s, s/s²
        bool kept = false;
    };
    std::array<Solution, Numbers> last{};
};
