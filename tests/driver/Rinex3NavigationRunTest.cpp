// The station's mixed RINEX 3.05 navigation file (gzip) given to -eg, -er,
// -ee and -ik at once: the staging hands each option its system, and a day
// on the broadcast orbits alone lands on the reference.
#include "ContextFixture.h"
#include "driver/ReadFiles.h"
#include "driver/SetFiles.h"

using namespace drivertest;

namespace {

const std::string kMixed = Esbc("ESBC00DNK_R_20201770000_01D_MN.rnx.gz");

// Broadcast orbits are good to a metre or two and their clocks to a few
// nanoseconds; a day of phase averages that to decimetres (0.43 m 3D with
// this file). 2 m is a fault: the GLONASS UTC epochs not moved by the 18
// leap seconds put its satellites 70 m off, a GPS week or time scale off
// costs kilometres.
constexpr long double BroadcastBound_m = 2.0L;
constexpr int MaxIter = 10;  // a run that uses the whole default limit did not converge

}  // namespace

TEST(Rinex3NavigationRun, OneMixedFileFeedsEverySystemAndTheKlobucharModel)
{
    // Staged with the RINEX 2 files and with the mixed file: the same GPS
    // records and Klobuchar coefficients, the GLONASS and Galileo options
    // their own system.
    Context two, three;
    const struct { Context& c; std::string g, r, e; } rows[] = {{two, kNavG, kNavR, kMixed}, {three, kMixed, kMixed, kMixed}};
    for (const auto& row : rows) {
        gCPosC& gc = row.c.gc;
        SetName(gc.rnxfile, CutObs("nav3_20.20o", 20)), gc.isRnx = true;
        gc.isGPS = gc.isGLN = gc.isGAL = gc.isGPSnav = gc.isGLNnav = gc.isGALnav = gc.isKlob = true;
        SetName(gc.gnavfile, row.g), SetName(gc.rnavfile, row.r), SetName(gc.enavfile, row.e), SetName(gc.ionkfile, row.g);
        Capture out(std::cout), err(std::cerr);
        SetFiles(gc), ReadFiles(gc);
    }
    const gCPosC &a = two.gc, &b = three.gc;
    EXPECT_TRUE(b.gpsnav.GetNSat() == a.gpsnav.GetNSat() && b.glnnav.GetNSat() == a.glnnav.GetNSat());
    for (int k = 0; k < 4; ++k) {
        EXPECT_NEAR_LD(b.ionk.alfa[k], a.ionk.alfa[k], 1e-18L * std::fabs(a.ionk.alfa[k]));
        EXPECT_NEAR_LD(b.ionk.beta[k], a.ionk.beta[k], 1e-18L * std::fabs(a.ionk.beta[k]));
    }
    const matrix<short>& e = b.galnav.GetSatList();
    EXPECT_TRUE(e.NRow() > 20 && e(0) > 200 && e(e.NRow() - 1) < 300) << e.NRow();
}

TEST(Rinex3NavigationRun, DayOnTheMixedFileAloneLandsOnTheReference)
{
    const std::string nav = " -eg" + kMixed + " -er" + kMixed + " -ee" + kMixed;
    const RunResult r = RunOrvo("esbc_nav3", "-r" + kObs + nav + " -csGRE -lPc3,L3 -tmSAAST,NIELL -ti02:00:00 -tg -xSTA");
    ASSERT_EQ(r.status, 0) << r.err;
    std::istringstream obs(r.out.substr(std::min(r.out.find("# of OBS        :"), r.out.size())));
    std::string skip;
    long n = 0, g = 0, rr = 0, e = 0;
    obs >> skip >> skip >> skip >> skip >> n >> skip >> g >> skip >> rr >> skip >> e;
    EXPECT_TRUE(g > 10000 && rr > 10000 && e > 10000) << g << " " << rr << " " << e;
    std::istringstream it(r.out.substr(std::min(r.out.find("# of ITERATIONS :") + 17, r.out.size())));
    int iters = 0;
    it >> iters;
    EXPECT_TRUE(iters >= 1 && iters < MaxIter) << iters;
    EXPECT_LT(Distance(Estimated(r.out), Reference("esbc-2020-177")), BroadcastBound_m);
}
