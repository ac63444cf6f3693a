// Epoch sequence check and the usable-epoch marks.
#include "ObsSupport.h"

using namespace obstest;

// Sets CheckType for one test and puts the previous value back.
struct CheckTypeScope {
    const short old = CheckType;
    explicit CheckTypeScope(short t) { CheckType = t; }
    ~CheckTypeScope() { CheckType = old; }
};

// Epoch 0: 7 satellites of which 4 have L3; epoch 1: 5 satellites, all
// with L3; epoch 2: 6 satellites with L3.
struct ThreeEpochs : Store {
    ThreeEpochs() : Store({{1, 2, 3, 4, 5, 6, 7}, {1, 2, 3, 4, 5}, {1, 2, 3, 4, 5, 6}}, {RINEXObs::C1, RINEXObs::P2})
    {
        h.iL3 = true;
        d.L3.Resize(d.nsatall, 1, gnssobs());
        for (long r = 0; r < d.nsatall; ++r) d.L3(r) = r >= 4 && r < 7 ? 0.0L : 2.0e7L;
    }
};

TEST(CheckRNXEpochs, RealDayOfThreeSystemsIsAllUsable)
{
    CheckTypeScope ct(2);
    Loaded f(CutFile(kEsbc, 30));
    Capture out(std::cout);
    CheckRNXEpochs(f.h, f.d, true, true, true, false);
    ASSERT_TRUE(f.d.IsEpochOKG.Length() == 30 && f.d.NOKEph == 30);
    for (long i = 0; i < 30; ++i) EXPECT_EQ(f.d.IsEpochOKG(i) + f.d.IsEpochOKR(i), 0);
    EXPECT_NE(out.Text().find("  Testing consecutive epochs in RINEX:  OK\n\n  # of Minimum satellites per epoch  :     6\n"
                              "  # of Minimum observations per epoch:     6\n  Checking for problematic epochs    :  NO PROBLEM\n\n"
                              "  # of ALL epochs:         30\n  # of OK epochs:          30\n"
                              "  # of BAD epochs:          0         # of BAD SAT:     0    # of BAD OBS:     0\n"), std::string::npos) << out.Text();
}

TEST(CheckRNXEpochs, TooFewSatellitesOrObservationsMarkTheEpoch)
{
    CheckTypeScope ct(3);
    ThreeEpochs s;
    Capture out(std::cout);
    CheckRNXEpochs(s.h, s.d, true, true, true, false);
    const std::vector<short> marks = {2, 1, 0};
    for (long i = 0; i < 3; ++i) EXPECT_TRUE(s.d.IsEpochOKG(i) == marks[i] && s.d.IsEpochOKR(i) == marks[i]) << i;
    EXPECT_EQ((std::vector<long>{s.d.NBadEphSat, s.d.NBadEphObs, s.d.NOKEph}), (std::vector<long>{1, 1, 1}));
    const std::string t = out.Text();
    EXPECT_EQ((std::vector<int>{Occurrences(t, "    -> # OF OBSERVATIONS PROBLEM\n"), Occurrences(t, "    -> # OF SATELLITES PROBLEM\n")}),
              (std::vector<int>{1, 1}));
    EXPECT_EQ(t.find("NO PROBLEM"), std::string::npos);
    EXPECT_NE(t.find("  # of BAD epochs:          2         # of BAD SAT:     1    # of BAD OBS:     1\n"), std::string::npos);
}

TEST(CheckRNXEpochsDeath, RepeatedEpochEndsTheRun)
{
    ThreeEpochs s;
    s.d.epoch(2) = s.d.epoch(1);
    EXPECT_STOP(CheckRNXEpochs(s.h, s.d, true, false, false, false),
                "Testing consecutive epochs in RINEX:  PROBLEM - ABORTING PROCESSING!!!!\n(.|\n)*"
                "\\*\\*\\*\\* Orvo: Error -> RINEX FILE HAS EPOCHS THAT ARE NOT CONSECUTIVE! \\*\\*\\*\\*");
}
