#include <gtest/gtest.h>

#include <cmath>

#include "EstimationSupport.h"
#include "RealDayRun.h"
#include "estimation/ProcKinematic.h"
#include "geodesy/CoordinateTransforms.h"

namespace {

// The day up to 23:45, the last node of the orbit file: beyond it the
// orbits are extrapolated by metres.
const orvotest::DayRun& Kin()
{
    static auto run = orvotest::RunDay(
        orvotest::EsbcOptions("-xSTA,KIN -gpk" + orvotest::TempDir() + "/kin.txt", 2850),
        // Epoch 100 keeps three satellites: too few for a position.
        [](gCPosC& gc) {
            long k = 0;
            for (long i = 0; i < 100; ++i) k += gc.rnxd.nsat(i);
            for (long j = 3; j < gc.rnxd.nsat(100); ++j)
                for (matrix<gnssobs>* m : {&gc.rnxd.C1, &gc.rnxd.P1, &gc.rnxd.P2, &gc.rnxd.L1,
                                           &gc.rnxd.L2})
                    if (m->NRow() > k + j) (*m)(k + j) = gnssobs();
        });
    return *run;
}

struct Line {
    long double n, e, u;
};

std::vector<Line> FileLines()
{
    std::vector<Line> out;
    std::istringstream in(orvotest::ReadFile(orvotest::TempDir() + "/kin.txt"));
    std::string line;
    std::getline(in, line);  // head
    while (std::getline(in, line)) {
        std::istringstream w(line);
        std::vector<long double> v;
        for (long double x; w >> x;) v.push_back(x);
        if (v.size() == 25) out.push_back({v[19], v[20], v[21]});
    }
    return out;
}

TEST(ProcKinematicRealDay, EpochPositionsScatterAboutTheStaticSolution)
{
    const long nEp = Kin().gc.rnxd.nepochall;
    const auto lines = FileLines();
    // The epoch with three satellites has no file line and an empty line in
    // the report's table, which has a line for every epoch.
    EXPECT_EQ(static_cast<long>(lines.size()), nEp - 1);
    std::istringstream report(Kin().report.substr(Kin().report.find("     EPOCH[MJD]    NOBS")));
    std::string line;
    std::getline(report, line);
    long empty = 0;
    for (long i = 0; i < nEp && std::getline(report, line); ++i) empty += line.empty();
    EXPECT_EQ(empty, 1);
    Line mean{0, 0, 0}, rms{0, 0, 0};
    for (const Line& l : lines) mean.n += l.n, mean.e += l.e, mean.u += l.u;
    const long double n = static_cast<long double>(lines.size());
    mean.n /= n, mean.e /= n, mean.u /= n;
    for (const Line& l : lines) {
        rms.n += (l.n - mean.n) * (l.n - mean.n);
        rms.e += (l.e - mean.e) * (l.e - mean.e);
        rms.u += (l.u - mean.u) * (l.u - mean.u);
    }
    // The static solution is the weighted mean of the same equations: the
    // unweighted mean of the epochs stays within 5 mm of it.
    EXPECT_LT(std::fabs(mean.n), 5e-3L);
    EXPECT_LT(std::fabs(mean.e), 5e-3L);
    EXPECT_LT(std::fabs(mean.u), 5e-3L);
    // No tide is modelled yet, so the epochs carry the solid Earth tide (a
    // few centimetres horizontal at this latitude) besides the noise of one
    // epoch's geometry; the day gives 3.3, 1.5 and 3.0 cm in N, E and U.
    // 5 cm in each keeps a solution that lost its clocks or weights (metres).
    EXPECT_LT(std::sqrt((rms.n + rms.e) / n), 0.05L);
    EXPECT_LT(std::sqrt(rms.u / n), 0.05L);
}

// The last solved epoch again by a dense least squares of its own, from the
// stored rows: position plus one clock per system.
TEST(ProcKinematicRealDay, LastEpochEqualsIndependentDenseSolution)
{
    const gCPosC& gc = Kin().gc;
    const RINEXData& d = gc.rnxd;
    long k0 = d.nsatall;
    const long last = d.nepochall - 1;
    k0 -= d.nsat(last);
    std::vector<long double> N(36, 0.0L), t(6, 0.0L);
    const long double p0L3[3] = {gc.p0L3G, gc.p0L3R, gc.p0L3E};
    const long double p0Pp3[3] = {gc.p0Pp3G, gc.p0Pp3R, gc.p0Pp3E};
    for (long k = k0; k < d.nsatall; ++k) {
        const int sys = d.sat(k) < 100 ? 0 : 1;
        struct {
            bool use;
            long double f, p;
        } obs[] = {{gc.ifOp3(k) && !gc.ifXp3(k), gc.fp3(k), gc.WGHT(k) * p0Pp3[sys]},
                   {gc.ifOl3(k) && !gc.ifXl3(k), gc.fl3(k), gc.WGHT(k) * p0L3[sys]}};
        for (const auto& o : obs) {
            if (!o.use) continue;
            long double a[6] = {gc.mB(k, 0), gc.mB(k, 1), gc.mB(k, 2), 0, 0, 0};
            a[3 + sys] = -1.0L;
            for (int i = 0; i < 6; ++i) {
                t[i] += a[i] * o.p * o.f;
                for (int j = 0; j < 6; ++j) N[i * 6 + j] += a[i] * o.p * a[j];
            }
        }
    }
    N[5 * 6 + 5] = 1.0L;  // no Galileo in the run: a free column
    const std::vector<long double> x = esttest::DenseSolve(N, t);
    for (int i = 0; i < 3; ++i) {
        long double xi = 0.0L;
        for (int j = 0; j < 6; ++j) xi += gc.QxxAll(i, j) * gc.tc(j);
        EXPECT_NEAR(static_cast<double>(xi), static_cast<double>(x[i]), 1e-9) << "axis " << i;
    }
}

}  // namespace
