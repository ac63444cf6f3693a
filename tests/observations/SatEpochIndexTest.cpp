// The satellite-by-epoch record index of the arc screens against the walk
// through each epoch's block that it replaces.
#include "ObsSupport.h"
#include "observations/SatEpochIndex.h"

using namespace obstest;

TEST(SatEpochIndex, FindsTheFirstRecordOfEachSatelliteInEachEpoch)
{
    // A satellite twice in one epoch (the first record answers), an empty
    // epoch, numbers of three systems and a blank (0), and questions that
    // alternate between satellites.
    const Store s({{3, 105, 3}, {}, {205, 0, 3}, {105}});
    const SatEpochIndex idx(s.d);
    const struct {
        short sat;
        long epoch, record;
    } rows[] = {{3, 0, 0},   {105, 0, 1}, {3, 1, -1},   {3, 2, 5},    {205, 2, 3}, {0, 2, 4},  {105, 3, 6},
                {205, 0, -1}, {7, 0, -1}, {3, -1, -1},  {3, 4, -1},   {105, 2, -1}, {3, 0, 0}};
    for (const auto& r : rows) EXPECT_EQ(idx.Of(r.sat, r.epoch), r.record) << r.sat << " " << r.epoch;

    // The same answers as the block walk, record for record, on a real day.
    const RINEXData& d = Load(kEsbc).d;
    const SatEpochIndex real(d);
    for (long i = 0, first = 0; i < d.nepochall; first += d.nsat(i++))
        for (long t = 0; t < d.satList.NRow(); ++t) {
            const short sat = d.satList(t);
            long walk = -1;
            for (long j = 0; j < d.nsat(i) && walk < 0; ++j)
                if (d.sat(first + j) == sat) walk = first + j;
            ASSERT_EQ(real.Of(sat, i), walk) << sat << " " << i;
        }
}
