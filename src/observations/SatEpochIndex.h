#pragma once
// Where each satellite stands in each epoch's block of records. The arc
// screens follow one satellite through all epochs; finding its record by
// reading each epoch's block would read every record once per satellite.
#include <vector>

class RINEXData;

/// The first record of each of d's epochs (nepochall, nsat), and behind them
/// the record count: the blocks' bounds.
std::vector<long> EpochFirstRecords(const RINEXData& d);

class SatEpochIndex {
public:
    /// Indexes the records of d's epochs (nepochall, nsat, sat), whose
    /// counts the caller has checked against the store.
    explicit SatEpochIndex(const RINEXData& d);

    /// The first record of sat in epoch i (0 <= i < nepochall), or -1
    /// where the epoch has none.
    long Of(short sat, long i) const;
    /// The first record of epoch i (0 <= i <= nepochall, the last being the
    /// record count).
    long FirstOfEpoch(long i) const { return first_[static_cast<std::size_t>(i)]; }

private:
    long nEpoch_ = 0;
    std::vector<long> first_;  // EpochFirstRecords
    std::vector<short> sats_;  // the satellite numbers present, ascending
    std::vector<int> rec_;     // by satellite (as in sats_), then epoch
    // The row of the satellite asked last: a screen asks for one at a time.
    mutable short lastSat_ = 0;
    mutable long lastRow_ = -1;
};
