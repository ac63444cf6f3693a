#pragma once
// Simulated data sets shared by the simulator's tests: each is simulated
// and written once per test process into the scratch folder.
#include <string>
#include <sys/stat.h>

#include "SimObservations.h"
#include "SimWriters.h"
#include "TestSupport.h"

namespace simtest {

struct DataSet {
    SimData d;
    SimFileNames names;
    std::string dir;
    std::string Path(const std::string& name) const { return dir + "/" + name; }
};

// Slip and jump of the noise-free set: G05 is in view from 00:00 to past
// 01:30, so epoch 100 (00:50) lies inside its arc.
constexpr short SlipSat = 5;
constexpr long SlipEpoch = 100;
constexpr long SlipN1 = 3, SlipN2 = -2;
constexpr long JumpEpoch = 150;

inline DataSet Make(SimOptions o, const std::string& sub)
{
    DataSet s;
    s.dir = orvotest::TempDir() + "/" + sub;
    mkdir(s.dir.c_str(), 0755);
    o.outDir = s.dir;
    s.d = Simulate(o);
    s.names = WriteAll(s.d);
    return s;
}

/// Three hours without noise, with ionosphere, troposphere, one slip and
/// one millisecond clock step: every difference to a model is the model's
/// or the files' rounding.
inline const DataSet& NoiseFree()
{
    static const DataSet set = [] {
        SimOptions o;
        o.hours = 3.0L;
        o.sigCode = 0.0L;
        o.sigPhase = 0.0L;
        SimSlip sl;
        sl.sat = SlipSat;
        sl.epoch = SlipEpoch;
        sl.n1_cyc = SlipN1;
        sl.n2_cyc = SlipN2;
        o.slips.push_back(sl);
        o.msJumpEpoch = JumpEpoch;
        return Make(o, "noisefree");
    }();
    return set;
}

/// Two hours with the default noise, for the noise statistics.
inline const DataSet& Noisy()
{
    static const DataSet set = [] {
        SimOptions o;
        o.hours = 2.0L;
        o.seed = 7;
        return Make(o, "noisy");
    }();
    return set;
}

}  // namespace simtest
