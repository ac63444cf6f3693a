#include "reporting/PrintStaticDCB.h"

#include <fstream>
#include <iomanip>
#include <iostream>
#include <limits>
#include <string>

#include "driver/Console.h"
#include "observations/RINEXData.h"
#include "reporting/FixedColumn.h"
#include "reporting/StaticPrecision.h"

namespace {

struct Kind {
    bool active;
    long count;
    const matrix<long int>& ix;
    const matrix<long double>& value;
    const char* countLabel;
    const char* title;
    const char* name;
    const char* meanLabel;
    long double precSum;
    long nDetermined;
};

// Column of satellite position j in kind k, -1 when it has none.
long Column(const Kind& k, long j)
{
    return (k.active && j < k.ix.Length()) ? k.ix(j) : -1;
}

void Rule(const Kind* kinds, int nk)
{
    std::cout << "    ---";
    for (int k = 0; k < nk; ++k)
        if (kinds[k].active) PrintCharNoEndl('-', 20);
    std::cout << "\n";
}

}  // namespace

void PrintStaticDCB(const gCPosC& gc, const mjd& RefEpoch)
{
    if (!gc.isGPSxdcb && !gc.isGLNxdcb && !gc.isGALxdcb) return;
    std::ostream& os = std::cout;

    std::ofstream file;
    if (gc.isOutDCBFile) {
        file.open(gc.estdcbfile);
        file << std::fixed;
    }
    ProgramSubSubSubTitle("GNSS SATELLITE/RECEIVER DIFFERENTIAL CODE BIASES:", 2);

    Kind kinds[] = {
        {gc.isdcbC1, gc.ndcbC1, gc.ixdcbC1, gc.dcbC1, "    C1: ", "C1 DCB[m +- m]", "C1",
         "        C1", 0.0L, 0},
        {gc.isdcbP1, gc.ndcbP1, gc.ixdcbP1, gc.dcbP1, "    P1: ", "P1 DCB[m +- m]", "P1",
         "        P1", 0.0L, 0},
        {gc.isdcbP2, gc.ndcbP2, gc.ixdcbP2, gc.dcbP2, "    P2: ", "P2 DCB[m +- m]", "P2",
         "        P2", 0.0L, 0},
        {gc.isdcbPc3, gc.ndcbPc3, gc.ixdcbPc3, gc.dcbPc3, " P3[C]: ", "P3[C] DCB[m +- m]",
         "P3[C]", "     P3[C]", 0.0L, 0},
        {gc.isdcbPp3, gc.ndcbPp3, gc.ixdcbPp3, gc.dcbPp3, " P3[P]: ", "P3[P] DCB[m +- m]",
         "P3[P]", "     P3[P]", 0.0L, 0},
    };
    const int nk = static_cast<int>(sizeof(kinds) / sizeof(kinds[0]));

    os << "    DCBs: ";
    for (const Kind& k : kinds)
        if (k.active) os << k.countLabel << std::setw(3) << k.count;
    os << "\n";
    os << "    PRN";
    for (const Kind& k : kinds)
        if (k.active) os << std::setw(20) << k.title;
    os << "\n";
    Rule(kinds, nk);

    const matrix<short>& sats = gc.rnxd.satList;
    for (long j = 0; j < sats.Length(); ++j) {
        bool any = false;
        for (const Kind& k : kinds) any = any || Column(k, j) != -1;
        if (!any) continue;
        const short prn = sats(j);
        const char letter = RINEXSatLetter(prn);
        const int number = prn >= 0 ? prn % 100 : 0;
        os << "    " << letter << std::setfill('0') << std::setw(2) << number << std::setfill(' ');
        if (file.is_open())
            file << gc.rnxh.mname << "   " << letter << std::setfill('0') << std::setw(2) << number
                 << std::setfill(' ');
        for (Kind& k : kinds) {
            const long ix = Column(k, j);
            if (ix < 0 || !gc.IsUnkOK(ix)) continue;
            const long double prec = StaticPrecision(gc.QxxAll(ix, ix), gc.s0apost);
            k.precSum += prec;
            ++k.nDetermined;
            FixedColumn(os, k.value(j), 10, 4);
            os << " +-";
            FixedColumn(os, prec, 7, 4);
            if (file.is_open()) {
                file << std::setw(8) << RefEpoch.GetMJDay() << std::setw(8) << k.name;
                FixedColumn(file, k.value(j), 10, 4);
                file << " +-";
                FixedColumn(file, prec, 7, 4);
            }
        }
        os << "\n";
        if (file.is_open()) file << "\n";
    }
    Rule(kinds, nk);
    if (file.is_open()) file.close();

    os << "   ADCB";
    for (const Kind& k : kinds) {
        if (!k.active) continue;
        // A kind without a determined bias has no mean; NaN says so.
        const long double mean = k.nDetermined > 0
                                     ? k.precSum / static_cast<long double>(k.nDetermined)
                                     : std::numeric_limits<long double>::quiet_NaN();
        os << k.meanLabel;
        FixedColumn(os, mean, 10, 4);
    }
    os << "\n\n\n";
}
