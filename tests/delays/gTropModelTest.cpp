// The delay record and its printed form, and the troposphere selector:
// codes and their fall-backs, names, site setup and the forwarding of each
// request to the chosen model.
#include <iomanip>
#include <sstream>

#include "DelaysSupport.h"
#include "delays/gTropModel.h"

using namespace deltest;

namespace {

// Series values interpolated at a node or halfway, and mapping values near
// 3 from the same fraction with coefficients interpolated once more:
// round-off only.
constexpr long double SeriesTol_m = 1e-15L, RoundOffTol = 1e-13L;

std::string Names(const gTropModel& t) { char model[64], mapping[64]; t.GetTropModel(model), t.GetTropMappF(mapping); return std::string(model) + "/" + mapping; }

// The zenith delays and mapping values at elevation E of a selector of the
// model and mapping codes that has read the files, at Zimmerwald.
gTropDelay Select(gTropModel& t, short model, short mapping, const std::vector<std::string>& files, long double E)
{
    t.SetTropModel(model), t.SetMappFunction(mapping);
    for (const std::string& f : files) t.SetFile(f.c_str());
    for (std::size_t i = 0; i < files.size(); ++i) t.ReadFile();
    gTropDelay td;
    t.SetPoint("ZIMMERWALD"), t.SetAtmParams(kSite), t.GetZenithDelay(td, kSite, kDay), t.GetMappFunction(td, kSite, kDay, E);
    return td;
}

// The VMF1 mapping values for the coefficients ah and aw.
gTropDelay Vmf(long double E, long double ah, long double aw) { gTropDelay ref; return gMF_VMF1().GetMappFunction(ref, kSite, kDay, E, ah, aw), ref; }

}  // namespace

TEST(TropModel, CodesNameTheirModelsAndUnknownOnesWarnAndFallBack)
{
    gTropModel t;
    const char* models[] = {"Saastamoinen", "Hopfield", "GPT", "GPT2", "VIENNA"};
    const char* maps[] = {"Niell", "Chao", "Davis", "Marini", "UNB3", "VMF1", "GPT2"};
    for (short m = 0; m <= 6; ++m) {
        t.SetTropModel(m % 5), t.SetMappFunction(m);
        EXPECT_EQ(Names(t), std::string(models[m % 5]) + "/" + maps[m]);
    }
    testing::internal::CaptureStderr(), t.SetTropModel(5), t.SetMappFunction(7), t.SetInterpType(2);
    const std::string w = testing::internal::GetCapturedStderr();
    for (const char* text : {"#### Orvo: Warning -> TROPOSPHERE MODEL NOT SET CORRECTLY - USING DEFAULT: SAASTAMOINEN! ####",
                             "TROPOSPHERE MAPPING FUNCTION NOT SET CORRECTLY - USING DEFAULT: NIELL!",
                             "INTERPOLATION ALGORITHM OF VMF1 DATA NOT SET CORRECTLY - USING DEFAULT: LINEAR!"})
        EXPECT_NE(w.find(text), std::string::npos) << w;
    EXPECT_EQ(Names(t) + std::to_string(t.TropM + t.MappF + gTMns::intType), "Saastamoinen/Niell0");
    EXPECT_EQ((t.SetInterpType(1), gTMns::intType + t.IntT), 2);
    t.SetInterpType(0);
    // No valid code: named so, warned at site setup, and no delay at all.
    t.TropM = t.MappF = 9;
    EXPECT_EQ(Names(t), " *** No troposphere model used/ *** No troposphere mapping function used");
    testing::internal::CaptureStderr(), t.SetAtmParams(kSite);
    const std::string none = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(none.find("TROPOSHPERE MODEL NOT SELECTED!") != std::string::npos
                && none.find("TROPOSHPERE MAPPING FUNCTION NOT SELECTED!") != std::string::npos) << none;
    gTropDelay td; td.tdry = 5.0L, t.GetZenithDelay(td, kSite, kDay), t.GetMappFunction(td, kSite, kDay, Rad(10.0L));
    EXPECT_TRUE(td.Delay() == 0.0L && td.mfdry == 1.0L);
}

TEST(TropModel, ViennaSeriesAndGPT2CoefficientsReachTheMapping)
{
    const std::string series = orvotest::WriteTemp("selector.vmf",
        "ZIMMERWALD zh 2\n 57257 0 2.05 57258 0 2.07\nZIMMERWALD zw 2\n 57257 0 0.10 57258 0 0.12\n"
        "ZIMMERWALD ah 2\n 57257 0 0.00120 57258 0 0.00122\nZIMMERWALD aw 2\n 57257 0 0.00050 57258 0 0.00052\n");
    const long double E = Rad(7.0L);
    // Vienna delays and mapping from the series at noon, halfway.
    gTropModel v, vg, g, s;
    gTropDelay td = Select(v, 4, 5, {series}, E), ref = Vmf(E, 0.00121L, 0.00051L);
    EXPECT_NEAR_LD(std::fabs(td.tdry - 2.06L) + std::fabs(td.twet - 0.11L), 0.0L, SeriesTol_m);
    EXPECT_NEAR_LD(std::fabs(td.mfdry - ref.mfdry) + std::fabs(td.mfwet - ref.mfwet), 0.0L, RoundOffTol);
    // Vienna delays with the GPT2 mapping: both files through the one
    // SetFile in the order the driver gives them, each to the consumer of
    // its kind; the mapping takes the grid's coefficients of the epoch,
    // which lie in their published range 1.1e-3..1.3e-3.
    td = Select(vg, 4, 6, {series, kGrid}, E), ref = Vmf(E, vg.tGPT2.GetCoeffAH(), vg.tGPT2.GetCoeffAW());
    EXPECT_NEAR_LD(td.tdry, 2.06L, SeriesTol_m);
    EXPECT_NEAR_LD(vg.tGPT2.GetCoeffAH(), 0.00125L, 0.00015L);
    EXPECT_TRUE(td.mfdry == ref.mfdry && td.mfwet == ref.mfwet);
    // GPT2 with its own coefficients, and Saastamoinen delays with the GPT2
    // mapping: the grid is read for the coefficients alone, and the mapping
    // values are the same.
    const gTropDelay gd = Select(g, 3, 6, {kGrid}, E), sd = Select(s, 0, 6, {kGrid}, E);
    ref = Vmf(E, g.tGPT2.GetCoeffAH(), g.tGPT2.GetCoeffAW());
    EXPECT_TRUE(gd.mfdry == ref.mfdry && gd.mfwet == ref.mfwet && sd.mfdry == gd.mfdry && sd.mfwet == gd.mfwet);
    gTropDelay saas; s.tSaas.GetZenithDelay(saas);
    EXPECT_EQ(sd.tdry, saas.tdry);
}

TEST(TropModelDeath, ChosenModelWithoutItsFileStops)
{
    // Only a GPT2 grid for the Vienna model: nothing to read the series
    // from; a file that does not open goes to the reader, which names it.
    gTropModel t, g;
    t.SetTropModel(4), t.SetMappFunction(0), t.SetFile(kGrid.c_str());
    EXPECT_EXIT(t.ReadFile(), ::testing::ExitedWithCode(1), Framed("NO VMF1 TROPOSPHERE MODEL FILE GIVEN!"));
    g.SetTropModel(0), g.SetMappFunction(6);
    EXPECT_EXIT(g.ReadFile(), ::testing::ExitedWithCode(1), Framed("NO GPT2 TROPOSPHERE MODEL FILE GIVEN!"));
    g.SetFile("/nonexistent/dir/gpt2.grd");
    EXPECT_EXIT(g.ReadFile(), ::testing::ExitedWithCode(1),
                Framed("/nonexistent/dir/gpt2.grd: GPT2 TROPOSPHERE MODEL FILE CAN NOT BE OPENED!"));
}

TEST(TropDelay, FormsSlantDelaysAndPrintsFixedColumnsReadBack)
{
    // Products and sums of decimals of order 1 to 25: round-off only. Half
    // a unit of the last printed decimal: 12 for mapping values, 5 for delays.
    constexpr long double RoundOffTol_m = 1e-15L, MapPrintTol = 0.5e-12L, DelayPrintTol_m = 0.5e-5L;
    gTropDelay td;
    EXPECT_TRUE(td.Delay() == 0.0L && td.MappFunDry() == 1.0L && td.MappFunWet() == 1.0L);
    td.tdry = 2.30697L, td.twet = 0.12345L, td.mfdry = 10.123456789012L, td.mfwet = 11.5L;
    EXPECT_NEAR_LD(std::fabs(td.DelayWet() - 1.419675L) + std::fabs(td.Delay() - td.DelayDry() - 1.419675L)
                   + std::fabs(td.DelayDry() / td.ZenithDelayDry() - 10.123456789012L), 0.0L, RoundOffTol_m);
    EXPECT_EQ(td.ZenithDelayWet(), 0.12345L);
    std::ostringstream out; out << std::scientific << std::setprecision(3) << td;
    const std::string s = out.str();
    // 16 columns for the mapping value, then " x "; a delay of metres needs
    // 7 characters for 5 decimals and widens its 6 columns by one.
    ASSERT_EQ(s.size(), 2u * (16u + 3u + 7u)) << s;
    EXPECT_EQ(s.substr(16, 3) + s.substr(42, 3), " x  x ");
    long double a, b, c, d; std::string x;
    std::istringstream(s) >> a >> x >> b >> c >> x >> d;
    EXPECT_NEAR_LD(std::fabs(a - td.mfdry) + std::fabs(c - td.mfwet), 0.0L, MapPrintTol);
    EXPECT_NEAR_LD(std::fabs(b - td.tdry) + std::fabs(d - td.twet), 0.0L, DelayPrintTol_m);
    // The caller's scientific notation survives.
    EXPECT_TRUE((out.flags() & std::ios::scientific) && out.precision() == 3);
}
