// The whole program on a simulated data set: static PPP with the ion-free
// code and phase must find the simulated marker.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "SimSupport.h"

namespace {

// Two hours of 2 mm phase noise on about 24 satellites give a formal
// precision of 1 to 2 mm per coordinate; 1 cm is over five sigma. A missing
// or wrongly signed model term of the chain (path delay 2 cm, periodic
// relativity metres, Earth rotation tens of metres, troposphere metres)
// moves the solution well beyond.
constexpr long double PositionTol_m = 0.01L;

TEST(SimEndToEnd, StaticSolutionFindsSimulatedMarker)
{
    const simtest::DataSet& set = simtest::Noisy();
    const std::string out = set.dir + "/orvo_out.txt";
    // The program keeps a scratch file in its working folder: run it in
    // the data set's folder, not in the repository.
    const std::string cmd = "cd '" + set.dir + "' && '" + orvotest::OrvoBinary() + "' -csGRE -r"
                            + set.names.obs + " -ep" + set.names.sp3 + " -ec" + set.names.clk
                            + " -gf" + set.names.glnfc
                            + " -lL3,Pp3 -tmSAAST,NIELL -ti01:00:00 -me5 -xSTA > orvo_out.txt 2>&1";
    ASSERT_EQ(std::system(cmd.c_str()), 0) << orvotest::ReadFile(out);
    std::istringstream in(orvotest::ReadFile(out));
    std::string line;
    const long double truth[3] = {set.d.opt.x, set.d.opt.y, set.d.opt.z};
    int found = 0;
    bool inBlock = false;
    while (std::getline(in, line)) {
        if (line.find("ECEF COORDINATES:") != std::string::npos) inBlock = true;
        if (!inBlock || line.size() < 7 || line.compare(0, 4, "    ") != 0) continue;
        const std::string tag = line.substr(4, 2);
        const int axis = tag == "X:" ? 0 : (tag == "Y:" ? 1 : (tag == "Z:" ? 2 : -1));
        if (axis < 0) continue;
        std::istringstream f(line.substr(6));
        long double approx = 0.0L, corr = 0.0L, est = 0.0L, sig = 0.0L;
        f >> approx >> corr >> est >> sig;
        ASSERT_FALSE(f.fail()) << line;
        EXPECT_NEAR(est, truth[axis], PositionTol_m) << line;
        ++found;
        if (found == 3) break;
    }
    EXPECT_EQ(found, 3) << orvotest::ReadFile(out);
}

}  // namespace
