// The troposphere selector: codes and their fall-backs, names, site setup
// and the forwarding of each request to the chosen model.
#include "delays/gTropModel.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include "numerics/NearLD.h"

namespace {

const long double Pi = 3.14159265358979323846264338327950288L;
long double Rad(long double deg) { return deg * Pi / 180.0L; }

// Series values interpolated at a node or halfway: round-off only.
constexpr long double SeriesTol_m = 1e-15L;
// Mapping values near 3 from the same fraction with coefficients
// interpolated once more: round-off only.
constexpr long double RoundOffTol = 1e-13L;
// Day-to-day pressure swings near 10 hPa are 2.3 cm of delay; 5 cm covers
// them and the spread of the climatologies.
constexpr long double WeatherTol_m = 0.05L;

std::string ModelName(const gTropModel& t)
{
    char name[64];
    t.GetTropModel(name);
    return name;
}

std::string MappingName(const gTropModel& t)
{
    char name[64];
    t.GetTropMappF(name);
    return name;
}

const flh kSite(Rad(46.8771L), Rad(7.4650L), 956.345L);  // Zimmerwald
const mjd kDay(57257, 43200.0L);

}  // namespace

TEST(TropModel, CodesNameTheirModels)
{
    gTropModel t;
    const char* models[] = {"Saastamoinen", "Hopfield", "GPT", "GPT2", "VIENNA"};
    for (short m = 0; m <= 4; ++m) {
        t.SetTropModel(m);
        EXPECT_EQ(ModelName(t), models[m]);
    }
    const char* maps[] = {"Niell", "Chao", "Davis", "Marini", "UNB3", "VMF1", "GPT2"};
    for (short m = 0; m <= 6; ++m) {
        t.SetMappFunction(m);
        EXPECT_EQ(MappingName(t), maps[m]);
    }
    t.TropM = 9;
    t.MappF = 9;
    EXPECT_EQ(ModelName(t), " *** No troposphere model used");
    EXPECT_EQ(MappingName(t), " *** No troposphere mapping function used");
}

TEST(TropModel, UnknownCodesWarnAndFallBack)
{
    gTropModel t;
    t.SetTropModel(2);
    t.SetMappFunction(3);
    testing::internal::CaptureStderr();
    t.SetTropModel(5);
    t.SetMappFunction(7);
    t.SetInterpType(2);
    const std::string w = testing::internal::GetCapturedStderr();
    EXPECT_NE(w.find("#### Orvo: Warning -> TROPOSPHERE MODEL NOT SET CORRECTLY - USING DEFAULT: SAASTAMOINEN! ####"),
              std::string::npos) << w;
    EXPECT_NE(w.find("TROPOSPHERE MAPPING FUNCTION NOT SET CORRECTLY - USING DEFAULT: NIELL!"),
              std::string::npos) << w;
    EXPECT_NE(w.find("INTERPOLATION ALGORITHM OF VMF1 DATA NOT SET CORRECTLY - USING DEFAULT: LINEAR!"),
              std::string::npos) << w;
    EXPECT_EQ(t.TropM, 0);
    EXPECT_EQ(t.MappF, 0);
    EXPECT_EQ(ModelName(t), "Saastamoinen");
    EXPECT_EQ(MappingName(t), "Niell");
    EXPECT_EQ(gTMns::intType, 0);
    t.SetInterpType(1);
    EXPECT_EQ(gTMns::intType, 1);
    EXPECT_EQ(t.IntT, 1);
    t.SetInterpType(0);
}

TEST(TropModel, NoModelWarnsAtSiteSetupAndGivesNoDelay)
{
    gTropModel t;
    t.TropM = 9;
    t.MappF = 9;
    testing::internal::CaptureStderr();
    t.SetAtmParams(kSite);
    const std::string w = testing::internal::GetCapturedStderr();
    EXPECT_NE(w.find("TROPOSHPERE MODEL NOT SELECTED!"), std::string::npos) << w;
    EXPECT_NE(w.find("TROPOSHPERE MAPPING FUNCTION NOT SELECTED!"), std::string::npos) << w;
    gTropDelay td;
    td.tdry = 5.0L;
    t.GetZenithDelay(td, kSite, kDay);
    t.GetMappFunction(td, kSite, kDay, Rad(10.0L));
    EXPECT_EQ(td.Delay(), 0.0L);
    EXPECT_EQ(td.mfdry, 1.0L);
}

TEST(TropModel, EachModelGivesAPlausibleDelayAtZimmerwald)
{
    // About 905 hPa at 956 m: 2.06 m of hydrostatic delay within a few cm
    // for every model of the surface pressure (weather swings near 10 hPa,
    // 2.3 cm); Hopfield keeps the sea-level pressure and only lowers its
    // layer top by 2 % (6.2 K colder, 148.72 m per K of 42.8 km), so it
    // stays between 2.2 m and the 2.31 m of the standard sea level.
    gTropModel t;
    t.SetMappFunction(0);
    for (short m = 0; m <= 3; ++m) {
        t.SetTropModel(m);
        if (m == 3) {
            t.SetFile(orvotest::Data("models/gpt2_5.grd").c_str());
            t.ReadFile();
        }
        t.SetAtmParams(kSite);
        gTropDelay td;
        t.GetZenithDelay(td, kSite, kDay);
        if (m == 1) {
            EXPECT_GT(td.tdry, 2.20L);
            EXPECT_LT(td.tdry, 2.31L);
        } else {
            EXPECT_NEAR_LD(td.tdry, 2.06L, WeatherTol_m) << m;
        }
        EXPECT_GT(td.twet, 0.03L) << m;
        EXPECT_LT(td.twet, 0.30L) << m;
    }
}

TEST(TropModel, GPT2MappingUsesTheGridCoefficientsOfTheEpoch)
{
    const std::string grid = orvotest::Data("models/gpt2_5.grd");
    const long double E = Rad(7.0L);
    // Model GPT2 with its own coefficients.
    gTropModel t;
    t.SetTropModel(3);
    t.SetMappFunction(6);
    t.SetFile(grid.c_str());
    t.ReadFile();
    t.SetAtmParams(kSite);
    gTropDelay td;
    t.GetZenithDelay(td, kSite, kDay);
    t.GetMappFunction(td, kSite, kDay, E);
    EXPECT_GT(t.tGPT2.GetCoeffAH(), 0.0011L);  // published range 1.1e-3..1.3e-3
    EXPECT_LT(t.tGPT2.GetCoeffAH(), 0.0014L);
    gMF_VMF1 direct;
    gTropDelay ref;
    direct.GetMappFunction(ref, kSite, kDay, E, t.tGPT2.GetCoeffAH(), t.tGPT2.GetCoeffAW());
    EXPECT_EQ(td.mfdry, ref.mfdry);
    EXPECT_EQ(td.mfwet, ref.mfwet);
    // Saastamoinen delays with the GPT2 mapping: the grid is read for the
    // coefficients alone, and the mapping values are the same.
    gTropModel s;
    s.SetTropModel(0);
    s.SetMappFunction(6);
    s.SetFile(grid.c_str());
    s.ReadFile();
    s.SetAtmParams(kSite);
    gTropDelay sd;
    s.GetZenithDelay(sd, kSite, kDay);
    s.GetMappFunction(sd, kSite, kDay, E);
    EXPECT_EQ(sd.mfdry, td.mfdry);
    EXPECT_EQ(sd.mfwet, td.mfwet);
    gTropDelay saas;
    s.tSaas.GetZenithDelay(saas);
    EXPECT_EQ(sd.tdry, saas.tdry);
}

TEST(TropModel, ViennaSeriesThroughTheSelector)
{
    const std::string file = orvotest::WriteTemp(
        "selector.vmf",
        "ZIMMERWALD zh 2\n 57257 0 2.05 57258 0 2.07\n"
        "ZIMMERWALD zw 2\n 57257 0 0.10 57258 0 0.12\n"
        "ZIMMERWALD ah 2\n 57257 0 0.00120 57258 0 0.00122\n"
        "ZIMMERWALD aw 2\n 57257 0 0.00050 57258 0 0.00052\n");
    gTropModel t;
    t.SetTropModel(4);
    t.SetMappFunction(5);
    t.SetFile(file.c_str());
    t.ReadFile();
    t.SetPoint("ZIMMERWALD");
    t.SetAtmParams(kSite);
    gTropDelay td;
    t.GetZenithDelay(td, kSite, kDay);  // noon: halfway
    EXPECT_NEAR_LD(td.tdry, 2.06L, SeriesTol_m);
    EXPECT_NEAR_LD(td.twet, 0.11L, SeriesTol_m);
    t.GetMappFunction(td, kSite, kDay, Rad(20.0L));
    gMF_VMF1 direct;
    gTropDelay ref;
    direct.GetMappFunction(ref, kSite, kDay, Rad(20.0L), 0.00121L, 0.00051L);
    EXPECT_NEAR_LD(td.mfdry, ref.mfdry, RoundOffTol);
    EXPECT_NEAR_LD(td.mfwet, ref.mfwet, RoundOffTol);
}

TEST(TropModel, ViennaDelaysWithGPT2MappingTakeEachItsFile)
{
    // Both files through the one SetFile, in the order the driver gives
    // them; each goes to the consumer of its kind.
    const std::string series = orvotest::WriteTemp(
        "mixed.vmf", "# site series\nZIMMERWALD zh 1\n 57257 0 2.05\nZIMMERWALD zw 1\n 57257 0 0.10\n");
    gTropModel t;
    t.SetTropModel(4);
    t.SetMappFunction(6);
    t.SetFile(series.c_str());
    t.SetFile(orvotest::Data("models/gpt2_5.grd").c_str());
    t.ReadFile();
    t.ReadFile();
    t.SetPoint("ZIMMERWALD");
    t.SetAtmParams(kSite);
    gTropDelay td;
    t.GetZenithDelay(td, kSite, kDay);
    EXPECT_NEAR_LD(td.tdry, 2.05L, SeriesTol_m);
    EXPECT_NEAR_LD(td.twet, 0.10L, SeriesTol_m);
    t.GetMappFunction(td, kSite, kDay, Rad(7.0L));
    // The zenith delays stay those of the series; the mapping uses the
    // grid's coefficients, which lie in their published range.
    EXPECT_NEAR_LD(td.tdry, 2.05L, SeriesTol_m);
    EXPECT_GT(t.tGPT2.GetCoeffAH(), 0.0011L);
    EXPECT_LT(t.tGPT2.GetCoeffAH(), 0.0014L);
    gMF_VMF1 direct;
    gTropDelay ref;
    direct.GetMappFunction(ref, kSite, kDay, Rad(7.0L), t.tGPT2.GetCoeffAH(), t.tGPT2.GetCoeffAW());
    EXPECT_EQ(td.mfdry, ref.mfdry);
}

TEST(TropModelDeath, ChosenModelWithoutItsFileStops)
{
    // Only a GPT2 grid for the Vienna model: nothing to read the series from.
    gTropModel t;
    t.SetTropModel(4);
    t.SetMappFunction(0);
    t.SetFile(orvotest::Data("models/gpt2_5.grd").c_str());
    EXPECT_EXIT(t.ReadFile(), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> NO VMF1 TROPOSPHERE MODEL FILE GIVEN!");
    gTropModel g;
    g.SetTropModel(0);
    g.SetMappFunction(6);
    EXPECT_EXIT(g.ReadFile(), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> NO GPT2 TROPOSPHERE MODEL FILE GIVEN!");
    // A file that does not open goes to the reader, which names it.
    g.SetFile("/nonexistent/dir/gpt2.grd");
    EXPECT_EXIT(g.ReadFile(), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> /nonexistent/dir/gpt2.grd: GPT2 TROPOSPHERE MODEL FILE CAN NOT BE OPENED!");
}
