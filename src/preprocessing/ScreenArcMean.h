#pragma once
// The weighted mean of one arc's observations with one round of outlier
// rejection on standardised residuals: the common core of the
// Melbourne-Wuebbena and the L3 - P3 screening.
#include <vector>

/// One observation of an arc: its record index in the store, its value (m)
/// and its weight (no unit, relative to an observation of weight 1).
struct ArcObs {
    long k;
    long double value;
    long double p;
};

/// What the screening of one arc leaves.
struct ArcMean {
    long n = 0;              // observations kept
    long nOut = 0;           // observations rejected
    long double x = 0.0L;    // weighted mean of the kept values, m; valid for n >= 1
    long double qx = 0.0L;   // cofactor of the mean, 1/sum of weights; valid for n >= 1
    long double v0 = 0.0L;   // variance of unit weight, m²; valid for n >= 2
    long double svv = 0.0L;  // weighted sum of squared residuals of the kept values, m²
    std::vector<long> outliers;  // record indices k of the rejected observations
};

/// Screens the observations of one arc against their own weighted mean.
/// First pass: mean x, cofactor qx and variance of unit weight v0 over all
/// observations. Second pass: the residual v = x - value of each
/// observation divided by its own standard deviation sqrt((1/p - qx)·v0)
/// (the share of the mean taken out); |w| above `thres` rejects it, and the
/// rest give the returned x, qx, v0 and svv. Sums run about the first value,
/// so that metres of ambiguity do not eat the digits of the scatter.
/// Observations with a weight not above 0 carry nothing and are passed over.
/// With fewer than two observations there is no scatter to judge by, and
/// with a scatter of zero no residual either: nothing is rejected then.
/// An empty arc gives n = 0 and everything 0.
ArcMean ScreenArcMean(const std::vector<ArcObs>& obs, long double thres);

/// Totals of the screening over all arcs: observations that took part and
/// those rejected, and the sum of the arcs' svv (m²).
struct ArcTotals {
    long nall = 0, nallo = 0;
    long double svvAll = 0.0L;
    /// Adds one arc's result.
    void Add(const ArcMean& m)
    {
        nall += m.n + m.nOut;
        nallo += m.nOut;
        svvAll += m.svv;
    }
};
