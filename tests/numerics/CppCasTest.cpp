#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>

#include "numerics/CppCas.h"

TEST(CppCas, AsciiIsTwentyCharactersAndAgreesWithTheFieldGetters)
{
    CppCas cas;
    // The clock may tick between calls: accept a reading only when the text
    // is the same before and after the getters ran.
    bool consistent = false;
    for (int attempt = 0; attempt < 5 && !consistent; ++attempt) {
        const std::string before = cas.Ascii();
        const int year = cas.LetoDt(), month0 = cas.MesecDt(), day = cas.DanDt();
        const int hour = cas.Ura(), minute = cas.Min(), second = cas.Sec();
        const std::string after = cas.Ascii();
        if (before != after) continue;
        consistent = true;

        ASSERT_EQ(before.size(), 20u);
        // Digits everywhere except the separators of "YYYY-MM-DD  hh:mm:ss".
        const std::string layout = "dddd-dd-dd  dd:dd:dd";
        for (std::size_t i = 0; i < layout.size(); ++i) {
            if (layout[i] == 'd')
                EXPECT_TRUE(before[i] >= '0' && before[i] <= '9') << before;
            else
                EXPECT_EQ(before[i], layout[i]) << before;
        }
        // The text holds the calendar month; the getter the 0-based one.
        char expected[32];
        std::snprintf(expected, sizeof expected, "%4d-%02d-%02d  %02d:%02d:%02d", year, month0 + 1,
                      day, hour, minute, second);
        EXPECT_EQ(before, expected);
        EXPECT_GE(month0, 0);
        EXPECT_LE(month0, 11);
        EXPECT_GE(day, 1);
        EXPECT_LE(day, 31);
        EXPECT_GE(year, 2020);  // this code postdates the data it processes
    }
    EXPECT_TRUE(consistent);
}

TEST(CppCas, StopReturnsProcessorTimeOfARunningMeasurementOnly)
{
    CppCas cas;
    EXPECT_DOUBLE_EQ(cas.Stop(), 0.0);  // nothing started
    EXPECT_FALSE(cas.casTece);

    cas.Start();
    EXPECT_TRUE(cas.casTece);
    // Pocakaj polls the same processor clock that Stop reads, so the elapsed
    // time cannot fall short of the wait by more than one clock tick.
    const long double wait_s = 0.02L;
    cas.Pocakaj(wait_s);
    const double elapsed_s = cas.Stop();
    EXPECT_GE(elapsed_s, static_cast<double>(wait_s) - 1.0 / CLOCKS_PER_SEC);
    EXPECT_FALSE(cas.casTece);
    EXPECT_DOUBLE_EQ(cas.Stop(), 0.0);  // the measurement ended with the first Stop
}
