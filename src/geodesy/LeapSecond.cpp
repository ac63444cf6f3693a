#include "geodesy/LeapSecond.h"

#include <cstddef>

namespace {
struct LeapStep {
    long double offset;     // GPS - UTC (s) from this day on
    unsigned long firstDay; // MJD at which it starts to hold
};

// IERS Bulletin C history, each TAI - UTC reduced by TAI - GPS = 19 s.
constexpr LeapStep LeapTable[] = {
    {-9.0L, 41317}, {-8.0L, 41499}, {-7.0L, 41683}, {-6.0L, 42048}, {-5.0L, 42413},
    {-4.0L, 42778}, {-3.0L, 43144}, {-2.0L, 43509}, {-1.0L, 43874}, {0.0L, 44239},
    {1.0L, 44786},  {2.0L, 45151},  {3.0L, 45516},  {4.0L, 46247},  {5.0L, 47161},
    {6.0L, 47892},  {7.0L, 48257},  {8.0L, 48804},  {9.0L, 49169},  {10.0L, 49534},
    {11.0L, 50083}, {12.0L, 50630}, {13.0L, 51179}, {14.0L, 53736}, {15.0L, 54832},
    {16.0L, 56109}, {17.0L, 57204}, {18.0L, 57754}};
constexpr std::size_t NLeap = sizeof(LeapTable) / sizeof(LeapTable[0]);
}  // namespace

long double LeapSecond(const mjd& t)
{
    const unsigned long d = t.GetMJDay();
    if (d < LeapTable[0].firstDay) return LeapTable[0].offset;
    std::size_t i = NLeap - 1;
    while (d < LeapTable[i].firstDay) --i;
    return LeapTable[i].offset;
}
