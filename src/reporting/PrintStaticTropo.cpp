#include "reporting/PrintStaticTropo.h"

#include <fstream>
#include <iomanip>
#include <iostream>
#include <string>

#include "driver/Console.h"
#include "geodesy/TimeConverse.h"
#include "geodesy/ymdhms.h"
#include "reporting/FixedColumn.h"
#include "reporting/StaticPrecision.h"

namespace {

const char* const Undetermined = " **** UNDETERMINED ****";

// One gradient with its precision, or the mark when it has no observations.
void GradientField(const gCPosC& gc, long double value, long ix, int width)
{
    if (gc.IsUnkOK(ix)) {
        FixedColumn(std::cout, value, width, 4);
        std::cout << " +- ";
        FixedColumn(std::cout, StaticPrecision(gc.QxxAll(ix, ix), gc.s0apost), 8, 4);
    } else {
        std::cout << std::setw(27) << Undetermined;
    }
}

void PrintGradients(const gCPosC& gc)
{
    std::ostream& os = std::cout;
    os << "  TROPOSPHERE EAST AND NORTH GRADIENTS\n"
       << "    Parameter type: continuous piece-wise linear function\n"
       << "    Units: meters\n\n";
    os << "    ID         TROPO_GRAD_EPOCH          E-W GRAD   PRECISION       S-N GRAD   PRECISION\n";
    PrintChar('-', 85, 3);
    for (long i = 0; i < gc.nTropoUnkGradE; ++i) {
        os << std::setw(6) << i + 1 << "     " << mjd2ymdhms(gc.TropoGradEpoch(i));
        GradientField(gc, gc.xTropoGradE(i), gc.ixTropoGradE(i), 18);
        GradientField(gc, gc.xTropoGradN(i), gc.ixTropoGradN(i), 15);
        os << "\n";
    }
    PrintChar('-', 85, 3);
    os << "\n\n";
}

}  // namespace

void PrintStaticTropo(const gCPosC& gc)
{
    if (!gc.ifEstTropo) return;
    std::ostream& os = std::cout;
    // The tables print epochs in the calendar layout YYYY-MM-DD hh:mm:ss.
    const short type = ymdhmsns::PrintType, format = ymdhmsns::PrintFormat;
    ymdhmsns::PrintType = 2;
    ymdhmsns::PrintFormat = 0;

    ProgramSubSubSubTitle("SITE SPECIEFIC TROPOSPHERE PARAMETERS:", 2);
    os << "  ZENITH TROPOSPHERE DELAYS\n"
       << "    Parameter type: continuous piece-wise linear function\n"
       << "    Units: meters\n\n";
    os << "    ID              TROPO_EPOCH    DRY[MOD]  WET[EST]     TOTAL   PRECISION\n";
    PrintChar('-', 72, 3);

    std::ofstream file;
    if (gc.isOutTropFile) {
        file.open(gc.esttropfile);
        file << std::fixed;
        file << "# GNSS-STATION         TROPOSPHERE_EPOCH       DRY[MOD]  WET[EST]     TOTAL   PRECISION\n";
        file << "#" << std::string(86, '-') << "\n";
    }

    // The dry part is not estimated: it is the model value of the last
    // evaluation, the same for every node.
    const long double td1 = gc.trpdelay.ZenithDelayDry();
    for (long i = 0; i < gc.nTropoUnk; ++i) {
        const ymdhms epoch = mjd2ymdhms(gc.TropoEpoch(i));
        os << std::setw(6) << i + 1 << "     " << epoch;
        const long ix = gc.ixTropo(i);
        if (gc.IsUnkOK(ix)) {
            const long double wet = gc.xTropo(i);
            const long double prec = StaticPrecision(gc.QxxAll(ix, ix), gc.s0apost);
            FixedColumn(os, td1, 12, 4);
            FixedColumn(os, wet, 10, 4);
            FixedColumn(os, td1 + wet, 10, 4);
            os << " +- ";
            FixedColumn(os, prec, 8, 4);
            if (file.is_open()) {
                file << std::left << std::setw(20) << gc.rnxh.mname << std::right << epoch;
                FixedColumn(file, td1, 15, 4);
                FixedColumn(file, wet, 10, 4);
                FixedColumn(file, td1 + wet, 10, 4);
                file << " +- ";
                FixedColumn(file, prec, 8, 4);
                file << "\n";
            }
        } else {
            os << std::setw(34) << Undetermined;
        }
        os << "\n";
    }
    if (file.is_open()) file.close();
    PrintChar('-', 72, 3);
    os << "\n\n";

    if (gc.ifEstTropoGrad) PrintGradients(gc);
    ymdhmsns::PrintType = type;
    ymdhmsns::PrintFormat = format;
}
