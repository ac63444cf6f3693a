// Header lines of RINEX 2: labels, fixed columns and the type list.
#include "ObsSupport.h"

using namespace obstest;

static RINEXHeader Read(const std::string& text)
{
    std::istringstream in(text);
    RINEXHeader h;
    in >> h;
    return h;
}

TEST(RinexHeader, FixedColumnFieldsOfTheTwoRealStations)
{
    // Fields cut from fixed columns and trimmed, the antenna ones with their
    // blanks; the codes each type list names.
    const Loaded &e = Load(kEsbc), &z = Load(kZimm);
    const auto text = [](const RINEXHeader& h) {
        return h.pgm + "|" + h.mname + "|" + h.mnumber + "|" + h.observer + "|" + h.agency + "|" + h.rectype + "|" + h.recversion
               + "|" + h.antnumb + "|" + h.anttype + "|" + h.type + h.satsystems + h.wavelengthDefL1 + h.wavelengthDefL2;
    };
    EXPECT_EQ(text(e.h), "rnx3to2|ESBC00DNK|10118M001|SDFE|SDFE|SEPT POLARX5|5.2.0|CR5200327016        "
                         "|ASH701945E_M    SCIS|OM11");
    EXPECT_EQ(text(z.h) + z.h.date, "teqc  2015Jun23|ZIMM|14001M004|TRIMBLE NETR9|SWISSTOPO|TRIMBLE NETR9|5.03|"
                         "99390               |TRM29659.00     NONE|OG1120150824 00:11:18UTC");
    // Version and interval are floats: 1e-6 is a few float steps at 2.11 and
    // less than one at 30. 1e-9 m: reading 4-decimal text loses only
    // round-off (1e-10 m); a wrong digit or column shows as 1e-4 m or more.
    EXPECT_NEAR_LD(e.h.version, 2.11f, 1e-6f);
    EXPECT_NEAR_LD(z.h.GetInterval(), 30.0f, 1e-6f);
    EXPECT_TRUE(e.h.xyz0read && e.h.neuread && e.h.nlines == 26);
    EXPECT_NEAR_LD(e.h.GetX0().GetX(), 3582105.2910L, 1e-9L);
    EXPECT_NEAR_LD(e.h.GetX0().GetZ(), 5232754.8054L, 1e-9L);
    EXPECT_NEAR_LD(z.h.GetX0().GetY(), 567556.0704L, 1e-9L);
    EXPECT_NEAR_LD(e.h.GetECC().GetU(), 0.2160L, 1e-9L);  // the line gives up, east, north
    EXPECT_FALSE(e.h.HasL3R() || e.h.HasC3R() || e.h.HasL3() || e.h.HasPC3() || e.d.IfTimeCorr);
    // ZIMM has C1 without P1; C2 is not copied to P2 unless asked.
    EXPECT_TRUE(z.h.HasC1() && z.h.HasP2() && !z.h.HasP1());

    const RINEXHeader empty = Read("");
    EXPECT_TRUE(empty.GetNObs() == 0 && empty.wavelengthDefL1 == '1' && empty.GetInterval() < -0.5f && !empty.xyz0read && !empty.HasC1());
}

TEST(RinexHeader, TypeListOfEveryCodeOnFullLines)
{
    // 36 types fill four lines exactly: the list must end there and not eat
    // the next line as a continuation. Unknown codes are read over.
    const std::vector<std::string> all = {"C1", "P1", "L1", "S1", "D1", "C2", "P2", "L2", "S2", "D2", "C3", "L3",
                                          "S3", "D3", "C5", "L5", "D5", "S5", "C6", "L6", "D6", "S6", "C7", "L7",
                                          "D7", "S7", "C8", "L8", "D8", "S8", "X9", "L9", "C4", "P4", "L4", "XX"};
    RINEXHeader h = Read(TypesLines(all) + HLine("MARK", "MARKER NAME") + HLine("", "END OF HEADER"));
    ASSERT_EQ(h.GetNObs(), 36);
    EXPECT_EQ(h.mname, "MARK");
    for (unsigned short t = 0; t < 36; t++)
        EXPECT_TRUE(t < 30 ? h.obs(t) == t && h.PresenceFlag(t) && *h.PresenceFlag(t) : h.obs(t) == RINEXObs::Unknown) << all[t];
    // The band-3 observed types are the R names, not the combinations.
    EXPECT_TRUE(h.HasL3R() && h.HasC3R() && RINEXHeader::GetObsString(RINEXObs::L3R) == "L3");
    EXPECT_FALSE(h.HasL3() || h.HasPC3() || h.HasPP3() || h.HasL4());
}

TEST(RinexHeaderDeath, TooManyTypesOrAnInvalidFirstTimeStop)
{
    EXPECT_STOP(Read(TypesLines(std::vector<std::string>(61, "L1"))),
                "#### RINEXHeader: Error -> NUMBER OF OBSERVATION TYPES NOT VALID \\(0 TO 60\\) -> line: 1 ####");
    EXPECT_STOP(Read(HLine("  2015    13    23     0     0    0.0000000     GPS", "TIME OF FIRST OBS")),
                "ymdhms: Error -> MONTH not valid");
}

// An APPROX POSITION XYZ line at geocentric distance r_m, longitude lon_rad
// on the equator, or 0, 0, 0.
static std::string Position(long double r_m, long double lon_rad = 0.0L)
{
    char t[64];
    std::snprintf(t, sizeof t, "%14.4Lf%14.4Lf%14.4Lf", r_m * std::cos(lon_rad), r_m * std::sin(lon_rad), 0.0L);
    return HLine(t, "APPROX POSITION XYZ");
}

TEST(RinexHeader, PositionsOnTheEarthAndMonumentEccentricitiesPass)
{
    // Not given (zero), on the surface anywhere (the adjustment iterates from
    // there), at the shell's edges; eccentricities just within their bounds;
    // label text outside column 60 is a comment read by the atof rule.
    for (const std::string& line : {Position(0.0L), Position(6378.137e3L, 2.0L), Position(6350.001e3L), Position(6399.999e3L),
                                    HLine("    99.9990       -9.9990        9.9990", "ANTENNA: DELTA H/E/N"),
                                    HLine("DELTA nan AS IN ANTENNA: DELTA H/E/N", "COMMENT")}) {
        const RINEXHeader h = Read(line + HLine("", "END OF HEADER"));
        EXPECT_TRUE(h.xyz0read || h.neuread) << line;
    }
}

TEST(RinexHeaderDeath, FieldsThatAreNoNumberAndPlacesOffTheEarthOrMonumentStop)
{
    const std::string delta = "ANTENNA: DELTA H/E/N BEYOND ANY MONUMENT \\(\\|H\\| ABOVE 100 M OR \\|E\\|, \\|N\\| ABOVE 10 M\\) -> line: 2";
    const std::string off = "APPROX POSITION XYZ IS NOT ON THE EARTH \\(GEOCENTRIC DISTANCE OUTSIDE 6350 TO 6400 KM\\) -> line: 2";
    const std::pair<std::string, std::string> cases[] = {
        {HLine("   100.0010        0.0000        0.0000", "ANTENNA: DELTA H/E/N"), delta},
        {HLine("     0.2160        0.0000      -10.0010", "ANTENNA: DELTA H/E/N"), delta},
        {Position(6349.999e3L), off}, {Position(6400.001e3L, 1.0L), off}, {Position(12756.0e3L), off},
        {HLine("  3582105.2910   532589.7313           nan", "APPROX POSITION XYZ"), "\"nan\" IN APPROX POSITION XYZ IS NOT A NUMBER -> line: 2"},
        {HLine("    30.0x0", "INTERVAL"), "\"30.0x0\" IN INTERVAL IS NOT A NUMBER -> line: 2"}};
    for (const auto& [line, re] : cases)
        EXPECT_STOP(Read(HLine("MARK", "MARKER NAME") + line), "#### RINEXHeader: Error -> " + re + " ####") << line;
}
