#pragma once
// A whole run of the stages in this process on real files, with a hook
// between the reading and the preprocessing: tests change observations
// there and look at the context afterwards.
#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "driver/CheckArguments.h"
#include "driver/ParseArguments.h"
#include "driver/PrintArguments.h"
#include "driver/ProcessingStages.h"
#include "driver/ReadFiles.h"
#include "driver/SetFiles.h"

namespace orvotest {

struct DayRun {
    RINEXHeader h;
    RINEXData d{h};
    RINEX r{h, d};
    gCPosC gc{h, d, r};
    std::string report;  // the output stream of the run
};

/// Runs orvo's stages on the options (files by full path), calling inject
/// after the files are read. The report is captured, not shown.
inline std::unique_ptr<DayRun> RunDay(const std::string& options,
                                      const std::function<void(gCPosC&)>& inject = {})
{
    auto run = std::make_unique<DayRun>();
    std::vector<std::string> words{"orvo"};
    std::istringstream in(options);
    for (std::string w; in >> w;) words.push_back(w);
    std::vector<const char*> argv;
    for (const std::string& w : words) argv.push_back(w.c_str());
    Capture out(std::cout);
    ParseArguments(run->gc, static_cast<int>(argv.size()), argv.data());
    CheckArguments(run->gc);
    PrintArguments(run->gc);
    SetFiles(run->gc);
    ReadFiles(run->gc);
    if (inject) inject(run->gc);
    RunPreprocessing(run->gc);
    RunEstimation(run->gc);
    RunResults(run->gc);
    run->report = out.Text();
    return run;
}

/// The first nEpochs (30 s each) of the ESBC day, G+R with channels, P1/P2
/// code and L3, the troposphere every two hours with gradients; extra
/// options appended.
inline std::string EsbcOptions(const std::string& extra, long nEpochs = 720)
{
    const std::string obs = CutObs(Data("esbc-2020-177/esbc1770.20o"),
                                   "esbc_" + std::to_string(nEpochs) + ".20o", nEpochs);
    const std::string dir = Data("esbc-2020-177/");
    return "-csGR -r" + obs + " -ep" + dir + "GRG0MGXFIN_20201770000_01D_15M_ORB.SP3 -ec" + dir
           + "GRG0MGXFIN_20201770000_01D_30S_CLK.CLK -gf" + dir
           + "esbc1770.20o.glnfc -lPp3,L3 -tmSAAST,NIELL -ti02:00:00 -tg " + extra;
}

}  // namespace orvotest
