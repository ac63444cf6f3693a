#pragma once
#include "numerics/MathConstants.h"
// Simulated data sets shared by the simulator's tests, each simulated and
// written once per test process into the scratch folder, and their files
// read back through the program's own readers.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>
#include <sys/stat.h>

#include "SimObservations.h"
#include "SimOptions.h"
#include "SimWriters.h"
#include "TestSupport.h"
#include "numerics/NearLD.h"
#include "observations/GALILEOc.h"
#include "observations/GLONASSc.h"
#include "observations/GPSc.h"
#include "observations/RINEX.h"
#include "orbits/GNSSpClk.h"
#include "orbits/GNSSpEph.h"

namespace simtest {

constexpr long double C = 299792458.0L;

/// An observation file through the program's RINEX reader.
struct Loaded {
    RINEXHeader h;
    RINEXData d{h};
    RINEX r{h, d};
    explicit Loaded(const std::string& path) { r.SetFile(path), r.ReadFile(); }
    // The second carrier's phase and code: L7, C7 for Galileo, else L2, P2.
    long double L2(long k, short sat) const { return sat >= 200 ? d.L7(k).obs : d.L2(k).obs; }
    long double P2(long k, short sat) const { return sat >= 200 ? d.C7(k).obs : d.P2(k).obs; }
};

/// A simulated data set, its files, and its observation file read back.
struct DataSet {
    SimData d;
    SimFileNames names;
    std::string dir;
    std::shared_ptr<const Loaded> rinex;
    std::string Path(const std::string& name) const { return dir + "/" + name; }
};

// Slip and jump of the noise-free set: G05 is in view from 00:00 to past
// 01:30, so epoch 100 (00:50) lies inside its arc.
constexpr short SlipSat = 5;
constexpr long SlipEpoch = 100, SlipN1 = 3, SlipN2 = -2, JumpEpoch = 150;

/// Simulates o into sub-folder sub of the scratch folder and writes its files.
inline DataSet Make(SimOptions o, const std::string& sub)
{
    DataSet s;
    s.dir = o.outDir = orvotest::TempDir() + "/" + sub;
    mkdir(s.dir.c_str(), 0755);
    s.d = Simulate(o);
    s.names = WriteAll(s.d);
    s.rinex = std::make_shared<const Loaded>(s.Path(s.names.obs));
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
        o.sigCode = o.sigPhase = 0.0L;
        o.slips.push_back(SimSlip{SlipSat, SlipEpoch, SlipN1, SlipN2});
        o.msJumpEpoch = JumpEpoch;
        return Make(o, "noisefree");
    }();
    return set;
}

/// The orbit or clock file of a set through the program's reader.
template <class Reader>
void Load(Reader& reader, const std::string& path) { reader.SetFile(path.c_str()), reader.ReadFile(); }

/// Carrier frequencies from the program's constants, independent of the
/// simulator's own table; GLONASS channels as the channel file gives them
/// (slot at index 1, channel at index 51 of each data line).
inline void Frequencies(const DataSet& set, short sat, long double& f1, long double& f2)
{
    if (sat < 100) f1 = GPSc::freq1, f2 = GPSc::freq2;
    if (sat >= 200) f1 = GALILEOc::freq1, f2 = GALILEOc::freq2;
    if (sat >= 100 && sat < 200) {
        const std::string text = orvotest::ReadFile(set.Path(set.names.glnfc));
        char slot[8];
        std::snprintf(slot, sizeof slot, "\nR%02d", sat - 100);
        const size_t at = text.find(slot);
        const short row = static_cast<short>(sat - 101);
        GLONASSc::SetFrequency(at == std::string::npos ? NAN : std::atoi(text.c_str() + at + 52), row);
        f1 = GLONASSc::freq(row, 0), f2 = GLONASSc::freq(row, 1);
    }
}

/// Calls f(epoch index, epoch, record, index of the record in the file) for
/// every record of a set.
template <class Fn>
void ForEachRecord(const DataSet& set, Fn f)
{
    long k = 0;
    for (std::size_t i = 0; i < set.d.epochs.size(); ++i)
        for (const SimRecord& r : set.d.epochs[i].recs) f(static_cast<long>(i), set.d.epochs[i], r, k++);
}

}  // namespace simtest
