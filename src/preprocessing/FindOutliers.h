#pragma once
// The robust mean of one epoch's code misclosures: the a-priori receiver
// clock must not be dragged off by a single blundered code.

namespace FindOutliersns {
/// Change of the mean (m) at which the reweighting stops: a tenth of a
/// millimetre, far below the metre-level noise of code misclosures.
constexpr long double MeanChangeStop_m = 0.0001L;
/// Most reweighting rounds. The Cauchy reweighting lowers its objective in
/// every round and settles within a few dozen rounds on real data; the
/// bound only keeps non-finite input from looping for ever.
constexpr long MaxRounds = 10000;
}  // namespace FindOutliersns

/// Robust mean (m) of the n values f(0..n-1) (metres): starting from the
/// plain mean, each round weights every value by 1/((f - mean)^2 + 1) and
/// takes the weighted mean, until it moves by less than
/// FindOutliersns::MeanChangeStop_m; the mean of that last round is
/// returned (not the newer weighted one). fo(j) tells whether value j lay
/// more than ThresBlunder (m) from that mean (strictly); the flags only
/// report, no value is dropped, since far values already weigh almost
/// nothing. n is not changed. With n not above 0 the result is 0 and no
/// flag is touched; a round whose weighted mean is not finite stops the
/// iteration with the mean before it.
long double FindOutliers(long double* f, bool* fo, long& n, long double ThresBlunder);
