// tools/orvo-plot on the result files of a real two-hour run: every kind
// draws a picture with more in it than an empty frame, and wrong calls fail
// with a reason and no picture.
#include "driver/ContextFixture.h"

namespace {

using namespace drivertest;

const std::string Plot = orvotest::SourceDir() + "/tools/orvo-plot";
// Small pictures keep the test quick; the script takes the size from here.
const std::string PlotSize = "640,480";

int Shell(const std::string& cmd) {
    const int rc = std::system(cmd.c_str());
    return WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
}
long long Bytes(const std::string& path) {
    std::error_code ec;
    const auto n = std::filesystem::file_size(path, ec);
    return ec ? -1 : static_cast<long long>(n);
}
int RunPlot(const std::string& dir, const std::string& args) {
    return Shell("cd '" + dir + "' && ORVO_PLOT_SIZE=" + PlotSize + " '" + Plot + "' " + args + " > plot.out 2> plot.err");
}

TEST(OrvoPlot, EveryKindDrawsMoreThanAnEmptyFrame) {
    if (Shell("command -v gnuplot > /dev/null 2>&1") != 0) GTEST_SKIP() << "gnuplot is not installed: orvo-plot cannot draw";
    const RunResult r = RunOrvo("plots", "-r" + CutObs("plots.20o", 240) + " -ep" + kSp3 + " -ec" + kClk +
                                " -csGE -lPc3,L3 -tmSAAST,NIELL -ti00:30:00 -xSTA,KIN -otz.trp -cfc.txt -sps.txt -gpkk.txt");
    ASSERT_EQ(r.status, 0) << r.err;
    const std::string dir = orvotest::TempDir() + "/plots";
    // The baseline: frame, tics and nothing else, by the terminal the script picks.
    const std::string terminal = Shell("gnuplot -e 'set terminal pngcairo' > /dev/null 2>&1") == 0
                                     ? "pngcairo size " + PlotSize + " font \"Sans,10\"" : "png size " + PlotSize;
    ASSERT_EQ(Shell("cd '" + dir + "' && gnuplot -e 'set terminal " + terminal +
                    "; set output \"empty.png\"; set xrange [0:1]; set yrange [0:1]; plot -1 notitle'"), 0);
    const long long empty = Bytes(dir + "/empty.png");
    ASSERT_GT(empty, 0);
    const struct { const char* kind; const char* input; } rows[] = {{"ztd", "z.trp"}, {"clock", "c.txt"}, {"kin", "k.txt"}, {"sky", "s.txt"}};
    for (const auto& row : rows) {
        const std::string png = std::string(row.kind) + ".png";
        EXPECT_EQ(RunPlot(dir, std::string(row.kind) + " " + row.input + " " + png + " 'ESBC two hours'"), 0)
            << row.kind << ": " << orvotest::ReadFile(dir + "/plot.err");
        EXPECT_EQ(orvotest::ReadFile(dir + "/" + png).substr(0, 4), "\x89PNG") << row.kind;
        EXPECT_GT(Bytes(dir + "/" + png), empty) << row.kind;
    }
}

TEST(OrvoPlot, WrongCallsFailWithTheirReasonAndNoPicture) {
    if (Shell("command -v gnuplot > /dev/null 2>&1") != 0) GTEST_SKIP() << "gnuplot is not installed: orvo-plot cannot draw";
    const std::string dir = orvotest::TempDir();
    orvotest::WriteTemp("head_only.trp", "# GNSS-STATION         TROPOSPHERE_EPOCH\n#----\n");
    const struct { std::string args, reason; } rows[] = {
        {"", "usage: orvo-plot"},
        {"map head_only.trp out.png", "usage: orvo-plot"},
        {"ztd head_only.trp out.png title extra", "usage: orvo-plot"},
        {"clock missing.txt out.png", "cannot read missing.txt"},
        {"ztd head_only.trp out.png", "no data lines in head_only.trp"},
    };
    for (const auto& row : rows) {
        std::remove((dir + "/out.png").c_str());
        EXPECT_EQ(RunPlot(dir, row.args), 1) << row.args;
        EXPECT_TRUE(Has(orvotest::ReadFile(dir + "/plot.err"), row.reason)) << row.args;
        EXPECT_LT(Bytes(dir + "/out.png"), 0) << row.args;
    }
}

}  // namespace
