#include "reporting/PrintStaticAmbiguities.h"

#include <iomanip>
#include <iostream>
#include <limits>

#include "driver/Console.h"
#include "geodesy/TimeConverse.h"
#include "geodesy/ymdhms.h"
#include "observations/RINEXData.h"
#include "reporting/FixedColumn.h"
#include "reporting/StaticPrecision.h"

void PrintStaticAmbiguities(const gCPosC& gc)
{
    if (gc.nAmb <= 0) return;
    std::ostream& os = std::cout;
    const short type = ymdhmsns::PrintType, format = ymdhmsns::PrintFormat;
    ymdhmsns::PrintType = 2;
    ymdhmsns::PrintFormat = 0;

    ProgramSubSubSubTitle("PHASE L3 AMBIGUITIES (REAL VALUES):", 2);
    os << "    Number of all ambiguities      : " << std::setw(10) << gc.nAmb << "\n\n";
    os << "    ID     PRN        START_EPOCH              END_EPOCH                     L3 AMBIGUITY[m]         #OBS/AMB\n";
    PrintChar('-', 106, 3);

    long double precSum = 0.0L;
    long nDetermined = 0;
    for (long i = 0; i < gc.nAmb; ++i) {
        const short prn = gc.AmbSat(i);
        if (i > 0 && prn != gc.AmbSat(i - 1)) os << "\n";
        os << std::setw(6) << i + 1 << std::setw(6) << RINEXSatLetter(prn) << std::setw(2)
           << (prn >= 0 ? prn % 100 : 0);
        os << "   " << mjd2ymdhms(gc.rnxd.epoch(gc.AmbIndex(i, 0)));
        os << "   " << mjd2ymdhms(gc.rnxd.epoch(gc.AmbIndex(i, 2)));
        const long ix = gc.ixAmb(i);
        if (gc.IsUnkOK(ix)) {
            const long double prec = StaticPrecision(gc.QxxAll(ix, ix), gc.s0apost);
            precSum += prec;
            ++nDetermined;
            FixedColumn(os, gc.xAmb(i), 20, 4);
            os << " +- ";
            FixedColumn(os, prec, 10, 4);
            os << std::setw(15) << gc.AmbIndex(i, 3);
        } else {
            os << std::setw(34) << " **** UNDETERMINED ****" << std::setw(15) << 0;
        }
        os << "\n";
    }
    PrintChar('-', 106, 3);
    // A list without a determined arc has no mean; NaN says so.
    const long double mean = nDetermined > 0 ? precSum / static_cast<long double>(nDetermined)
                                             : std::numeric_limits<long double>::quiet_NaN();
    os << "                                                     AVERAGE AMBIGUITY PRECISION:";
    FixedColumn(os, mean, 13, 4);
    os << "\n\n\n";

    ymdhmsns::PrintType = type;
    ymdhmsns::PrintFormat = format;
}
