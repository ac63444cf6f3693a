#pragma once
// A fresh processing context per test, and the command line fed to it as the
// program would receive it.
#include <string>
#include <vector>

#include "driver/ParseArguments.h"
#include "driver/gCPosC.h"
#include "observations/RINEX.h"
#include "observations/RINEXData.h"
#include "observations/RINEXHeader.h"

namespace drivertest {

/// Owns what a context refers to, built in the order main builds it.
struct Context {
    RINEXHeader rnxh;
    RINEXData rnxd{rnxh};
    RINEX rnx{rnxh, rnxd};
    gCPosC gc{rnxh, rnxd, rnx};
};

/// Runs ParseArguments on "orvo" followed by `args`.
inline void Parse(gCPosC& gc, const std::vector<std::string>& args)
{
    std::vector<const char*> argv{"orvo"};
    for (const std::string& a : args) argv.push_back(a.c_str());
    ParseArguments(gc, static_cast<int>(argv.size()), argv.data());
}

}  // namespace drivertest
