#include "observations/SatEpochIndex.h"

#include <algorithm>
#include <limits>

#include "observations/RINEXData.h"

std::vector<long> EpochFirstRecords(const RINEXData& d)
{
    std::vector<long> first(static_cast<std::size_t>(d.nepochall > 0 ? d.nepochall : 0) + 1, 0);
    for (long i = 0; i < d.nepochall; ++i)
        first[static_cast<std::size_t>(i) + 1] = first[static_cast<std::size_t>(i)] + d.nsat(i);
    return first;
}

SatEpochIndex::SatEpochIndex(const RINEXData& d)
    : nEpoch_(d.nepochall > 0 ? d.nepochall : 0), first_(EpochFirstRecords(d))
{
    // Record numbers are kept as int: a quarter of the index's size.
    if (d.nsatall > std::numeric_limits<int>::max())
        RINEXData::RINEXDataError("ARC SCREENING: MORE OBSERVATION RECORDS THAN CAN BE INDEXED!");
    for (long r = 0; r < d.nsatall; ++r) sats_.push_back(d.sat(r));
    std::sort(sats_.begin(), sats_.end());
    sats_.erase(std::unique(sats_.begin(), sats_.end()), sats_.end());
    rec_.assign(sats_.size() * static_cast<std::size_t>(nEpoch_), -1);
    for (long i = 0; i < nEpoch_; ++i)
        for (long r = FirstOfEpoch(i); r < FirstOfEpoch(i + 1); ++r) {
            const std::size_t s = static_cast<std::size_t>(
                std::lower_bound(sats_.begin(), sats_.end(), d.sat(r)) - sats_.begin());
            int& at = rec_[s * static_cast<std::size_t>(nEpoch_) + static_cast<std::size_t>(i)];
            if (at < 0) at = static_cast<int>(r);
        }
}

long SatEpochIndex::Of(short sat, long i) const
{
    if (lastRow_ < 0 || sat != lastSat_) {
        const auto it = std::lower_bound(sats_.begin(), sats_.end(), sat);
        if (it == sats_.end() || *it != sat) return -1;
        lastSat_ = sat;
        lastRow_ = it - sats_.begin();
    }
    if (i < 0 || i >= nEpoch_) return -1;
    return rec_[static_cast<std::size_t>(lastRow_ * nEpoch_ + i)];
}
