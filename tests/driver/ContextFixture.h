#pragma once
// Shared by the driver tests: a processing context as main builds it, the
// command line fed to it, cut variants of the real observation file, and runs
// of the built program with their report parsed.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <iostream>
#include <memory>
#include <regex>
#include <utility>
#include <vector>

#include "TestSupport.h"
#include "driver/ParseArguments.h"
#include "numerics/NearLD.h"

namespace drivertest {

using orvotest::Capture;

// The real ESBC day: every in-process and whole-program test reads from it.
inline std::string Esbc(const std::string& file) { return orvotest::Data("esbc-2020-177/" + file); }
const std::string kObs = Esbc("esbc1770.20o"), kSp3 = Esbc("GRG0MGXFIN_20201770000_01D_15M_ORB.SP3"),
                  kClk = Esbc("GRG0MGXFIN_20201770000_01D_30S_CLK.CLK"), kNavG = Esbc("esbc1770.20n"),
                  kNavR = Esbc("esbc1770.20g"), kChannels = Esbc("esbc1770.20o.glnfc"),
                  kAtx = Esbc("ngs14_esbc_trimmed.atx");

using Flag = bool gCPosC::*;
using FileMember = char (gCPosC::*)[gCPosCns::FileNameSize];
/// A member of the context, for the tables of the tests.
#define GC(member) &gCPosC::member

/// Owns what a context refers to, built in the order main builds it.
struct Context {
    RINEXHeader rnxh;
    RINEXData rnxd{rnxh};
    RINEX rnx{rnxh, rnxd};
    gCPosC gc{rnxh, rnxd, rnx};
};

/// Runs ParseArguments on "orvo" followed by `args`.
inline void Parse(gCPosC& gc, const std::vector<std::string>& args) {
    std::vector<const char*> argv{"orvo"};
    for (const std::string& a : args) argv.push_back(a.c_str());
    ParseArguments(gc, static_cast<int>(argv.size()), argv.data());
}

inline void SetName(char* member, const std::string& name) {
    ASSERT_LT(name.size(), static_cast<size_t>(gCPosCns::FileNameSize));
    std::strcpy(member, name.c_str());
}

inline bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

inline int Count(const std::string& text, const std::string& what) {
    int n = 0;
    for (size_t p = text.find(what); p != std::string::npos; p = text.find(what, p + 1)) ++n;
    return n;
}

inline std::string Warning(const std::string& msg) { return "#### Orvo: Warning -> " + msg + " ####"; }

using orvotest::KeepAll;
using orvotest::Selector;

/// orvotest::CutObs of the real ESBC file.
inline std::string CutObs(const std::string& name, long nEpochs, const Selector& keep = KeepAll,
                          const std::string& from = "", const std::string& to = "", bool blankPhase = false) {
    return orvotest::CutObs(kObs, name, nEpochs, keep, from, to, blankPhase);
}

struct RunResult { int status = -1; std::string out, err; };  // status 124 is a hang ended by timeout

/// Runs the built program with `args` in the scratch sub-folder `dir` (made when missing); its
/// two streams go to files there. 600 s turn a hang into status 124 and leave a full day of
/// data, which runs in well under a minute, ample room.
inline RunResult RunOrvo(const std::string& dir, const std::string& args) {
    const std::string work = orvotest::TempDir() + "/" + dir;
    const int rc = std::system(("mkdir -p '" + work + "' && cd '" + work + "' && timeout 600 '" + orvotest::OrvoBinary() +
                                "' " + args + " > run.out 2> run.err").c_str());
    return {WIFEXITED(rc) ? WEXITSTATUS(rc) : -1, orvotest::ReadFile(work + "/run.out"), orvotest::ReadFile(work + "/run.err")};
}

struct Xyz { long double x, y, z; };

/// The "Estimated" column (behind approximate and correction) of the X, Y, Z lines of the
/// report's coordinate block; NaN where the block or a line is missing.
inline Xyz Estimated(const std::string& out) {
    long double v[3] = {std::nanl(""), std::nanl(""), std::nanl("")}, approx, corr;
    const size_t block = out.find("ECEF COORDINATES:");
    for (int i = 0; i < 3 && block != std::string::npos; ++i) {
        const size_t at = out.find(std::string("    ") + "XYZ"[i] + ": ", block);
        if (at != std::string::npos) std::istringstream(out.substr(at + 7, 60)) >> approx >> corr >> v[i];
    }
    return {v[0], v[1], v[2]};
}

/// The marker position of a real data set from the REF_X/Y/Z keys of its set.env.
inline Xyz Reference(const std::string& set) {
    const std::string env = orvotest::ReadFile(orvotest::Data(set + "/set.env"));
    auto value = [&](const char* key) { return std::stold(env.substr(env.find("\nREF_" + std::string(key) + "=") + 7)); };
    return {value("X"), value("Y"), value("Z")};
}

inline long double Distance(const Xyz& a, const Xyz& b) {
    return std::sqrt((a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y) + (a.z - b.z) * (a.z - b.z));
}

}  // namespace drivertest
