// Epoch sequence check and the usable-epoch marks.
#include <gtest/gtest.h>

#include <string>

#include "ConditioningSupport.h"
#include "observations/CheckRNXEpochs.h"

using namespace condtest;

namespace {

// Sets CheckType for one test and puts the previous value back.
class CheckTypeScope {
public:
    explicit CheckTypeScope(short t) : old_(CheckType) { CheckType = t; }
    ~CheckTypeScope() { CheckType = old_; }

private:
    short old_;
};

TEST(CheckRNXEpochs, RealDayOfThreeSystemsIsAllUsable)
{
    CheckTypeScope ct(2);
    Loaded f(CutFile(kEsbc, 30));
    Capture out(std::cout);
    CheckRNXEpochs(f.h, f.d, true, true, true, false);
    ASSERT_EQ(f.d.IsEpochOKG.Length(), 30);
    for (long i = 0; i < 30; ++i) {
        EXPECT_EQ(f.d.IsEpochOKG(i), 0);
        EXPECT_EQ(f.d.IsEpochOKR(i), 0);
    }
    EXPECT_EQ(f.d.NOKEph, 30);
    const std::string t = out.Text();
    EXPECT_NE(t.find("  Testing consecutive epochs in RINEX:  OK\n\n"), std::string::npos);
    EXPECT_NE(t.find("  # of Minimum satellites per epoch  :     6\n"), std::string::npos);
    EXPECT_NE(t.find("  Checking for problematic epochs    :  NO PROBLEM\n\n"), std::string::npos);
    EXPECT_NE(t.find("  # of ALL epochs:         30\n  # of OK epochs:          30\n"
                     "  # of BAD epochs:          0         # of BAD SAT:     0    # of BAD OBS:     0\n"),
              std::string::npos)
        << t;
}

// Epoch 0: 7 satellites of which 4 have L3; epoch 1: 5 satellites, all
// with L3; epoch 2: 6 satellites with L3.
struct ThreeEpochs : Synthetic {
    ThreeEpochs()
        : Synthetic({{1, 2, 3, 4, 5, 6, 7}, {1, 2, 3, 4, 5}, {1, 2, 3, 4, 5, 6}},
                    {RINEXObs::C1, RINEXObs::P2})
    {
        h.iL3 = true;
        d.L3.Resize(d.nsatall, 1, gnssobs());
        for (long r = 0; r < d.nsatall; ++r) d.L3(r) = 2.0e7L;
        for (long r = 4; r < 7; ++r) d.L3(r) = 0.0L;
    }
};

TEST(CheckRNXEpochs, TooFewSatellitesOrObservationsMarkTheEpoch)
{
    CheckTypeScope ct(3);
    ThreeEpochs s;
    Capture out(std::cout);
    CheckRNXEpochs(s.h, s.d, true, true, true, false);
    EXPECT_EQ(s.d.IsEpochOKG(0), 2);
    EXPECT_EQ(s.d.IsEpochOKG(1), 1);
    EXPECT_EQ(s.d.IsEpochOKG(2), 0);
    for (long i = 0; i < 3; ++i) EXPECT_EQ(s.d.IsEpochOKR(i), s.d.IsEpochOKG(i));
    EXPECT_EQ(s.d.NBadEphSat, 1);
    EXPECT_EQ(s.d.NBadEphObs, 1);
    EXPECT_EQ(s.d.NOKEph, 1);
    const std::string t = out.Text();
    EXPECT_EQ(Occurrences(t, "    -> # OF OBSERVATIONS PROBLEM\n"), 1);
    EXPECT_EQ(Occurrences(t, "    -> # OF SATELLITES PROBLEM\n"), 1);
    EXPECT_EQ(t.find("NO PROBLEM"), std::string::npos);
    EXPECT_NE(t.find("  # of BAD epochs:          2         # of BAD SAT:     1    # of BAD OBS:     1\n"),
              std::string::npos);
}

TEST(CheckRNXEpochs, OneSystemNeedsFourSatellites)
{
    CheckTypeScope ct(3);
    ThreeEpochs s;
    Capture out(std::cout);
    CheckRNXEpochs(s.h, s.d, true, false, false, false);
    // 4 of 7 with L3 is enough for one system; so are 5 satellites.
    EXPECT_EQ(s.d.IsEpochOKG(0), 0);
    EXPECT_EQ(s.d.IsEpochOKG(1), 0);
    EXPECT_EQ(s.d.NOKEph, 3);
    EXPECT_NE(out.Text().find("  # of Minimum observations per epoch:     4\n"), std::string::npos);
}

TEST(CheckRNXEpochs, CheckTypeDecidesWhichObservationsCount)
{
    // Four GPS satellites; C1 on all, P2 on two of them.
    Synthetic s({{1, 2, 3, 4}}, {RINEXObs::C1, RINEXObs::P2});
    for (long r = 0; r < 4; ++r) s.d.C1(r) = 2.0e7L;
    s.d.P2(0) = s.d.P2(1) = 2.0e7L;
    Capture out(std::cout);
    for (short type : {0, 1, 2}) {
        CheckTypeScope ct(type);
        CheckRNXEpochs(s.h, s.d, true, false, false, false);
        EXPECT_EQ(s.d.IsEpochOKG(0), type == 0 ? 0 : 2) << type;
    }
    // A header without C2 and P2 lets no record pass the second-code test.
    s.h.iP2 = false;
    for (long r = 0; r < 4; ++r) s.d.P2(r) = 2.0e7L;
    CheckTypeScope ct(1);
    CheckRNXEpochs(s.h, s.d, true, false, false, false);
    EXPECT_EQ(s.d.IsEpochOKG(0), 2);
}

TEST(CheckRNXEpochs, VerboseLogGivesTheCounts)
{
    CheckTypeScope ct(3);
    ThreeEpochs s;
    Capture out(std::cout);
    Capture err(std::cerr);
    CheckRNXEpochs(s.h, s.d, true, true, true, true);
    const std::string e = err.Text();
    EXPECT_NE(e.find("Orvo::CheckRNXEpochs(): CHECKING EPOCHS IN RINEX FILE!\n"), std::string::npos);
    EXPECT_NE(e.find("Orvo::CheckRNXEpochs():      # of satellites  : 1\n"
                     "Orvo::CheckRNXEpochs():      # of observations: 1\n"
                     "Orvo::CheckRNXEpochs():      # of OK epochs   : 1\n"),
              std::string::npos)
        << e;
}

TEST(CheckRNXEpochsDeath, BackwardEpochEndsTheRun)
{
    ThreeEpochs s;
    s.d.epoch(2) = mjd(59025, 10.0L);
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            CheckRNXEpochs(s.h, s.d, true, false, false, false);
        },
        ::testing::ExitedWithCode(1),
        "Testing consecutive epochs in RINEX:  PROBLEM - ABORTING PROCESSING!!!!\n(.|\n)*"
        "\\*\\*\\*\\* Orvo: Error -> RINEX FILE HAS EPOCHS THAT ARE NOT CONSECUTIVE! \\*\\*\\*\\*");
}

TEST(CheckRNXEpochsDeath, RepeatedEpochEndsTheRun)
{
    ThreeEpochs s;
    s.d.epoch(1) = s.d.epoch(0);
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            CheckRNXEpochs(s.h, s.d, true, false, false, false);
        },
        ::testing::ExitedWithCode(1),
        "\\*\\*\\*\\* Orvo: Error -> RINEX FILE HAS EPOCHS THAT ARE NOT CONSECUTIVE! \\*\\*\\*\\*");
}

}  // namespace
