#include "observations/CheckRNXEpochs.h"

#include <algorithm>
#include <iomanip>
#include <iostream>

#include "driver/Console.h"
#include "geodesy/TimeConverse.h"
#include "geodesy/ymdhms.h"
#include "numerics/ProgramError.h"

namespace {

const char* const Echo = "Orvo::CheckRNXEpochs(): ";

/// Satellites a single-system epoch needs: three coordinates and a clock;
/// each further system adds its own clock.
constexpr int MinSatFixed = 3;

// The type is listed, its matrix holds the record and the value is there.
bool Present(bool listed, const matrix<gnssobs>& m, long r)
{
    return listed && r < m.Length() && !m(r).IsNull();
}

bool FirstCode(const RINEXHeader& h, const RINEXData& d, long r)
{
    return Present(h.iC1, d.C1, r) || Present(h.iP1, d.P1, r);
}

bool SecondCode(const RINEXHeader& h, const RINEXData& d, long r)
{
    return Present(h.iC2, d.C2, r) || Present(h.iP2, d.P2, r);
}

bool Counts(const RINEXHeader& h, const RINEXData& d, long r)
{
    switch (CheckType) {
    case 0: return FirstCode(h, d, r);
    case 1: return SecondCode(h, d, r);
    case 2: return FirstCode(h, d, r) && SecondCode(h, d, r);
    case 3:
        return Present(h.iPC3, d.PC3, r) || Present(h.iPP3, d.PP3, r)
               || Present(h.iL3, d.L3, r);
    default: return false;
    }
}

}  // namespace

void CheckRNXEpochs(RINEXHeader& rnxh, RINEXData& rnxd, bool iG, bool iR, bool iE, bool verbose)
{
    if (verbose) std::cerr << Echo << "CHECKING EPOCHS IN RINEX FILE!\n";
    const long nep = rnxd.nepochall;

    ProgramSubSubTitle("VERIFICATION OF HEALTHY EPOCHS:", 0);
    if (verbose)
        std::cerr << Echo << "      Testing epochs in RINEX file - sequence of epochs!\n";
    long nBack = 0;
    for (long i = 1; i < nep; ++i)
        if (!(rnxd.epoch(i) > rnxd.epoch(i - 1))) nBack++;
    std::cout << "  Testing consecutive epochs in RINEX: ";
    if (nBack > 0) {
        // Every later stage walks the epochs as a time series; a repeated or
        // backward epoch would break the clock and arc bookkeeping.
        std::cout << " PROBLEM - ABORTING PROCESSING!!!!" << std::endl;
        ProgramError("Orvo", "RINEX FILE HAS EPOCHS THAT ARE NOT CONSECUTIVE!");
    }
    std::cout << " OK\n\n";

    if (verbose) std::cerr << Echo << "      Eliminating inappropriate epochs in RINEX file!\n";
    const int MinNSat = MinSatFixed + static_cast<int>(iG) + static_cast<int>(iR)
                        + static_cast<int>(iE);
    const int MinNObs = MinNSat;
    rnxd.IsEpochOKG.Resize(nep, 1, 0);
    rnxd.IsEpochOKR.Resize(nep, 1, 0);
    rnxd.NBadEphSat = rnxd.NBadEphObs = rnxd.NOKEph = 0;
    std::cout << "  # of Minimum satellites per epoch  : " << std::setw(5) << MinNSat << "\n"
              << "  # of Minimum observations per epoch: " << std::setw(5) << MinNObs << "\n"
              << "  Checking for problematic epochs    : ";

    long r = 0;
    for (long i = 0; i < nep; ++i) {
        const long end = std::min(r + static_cast<long>(rnxd.nsat(i)), rnxd.nsatall);
        short mark = 0;
        if (rnxd.nsat(i) < MinNSat) {
            mark = 1;
            rnxd.NBadEphSat++;
        } else {
            long n = 0;
            for (long k = r; k < end; ++k)
                if (Counts(rnxh, rnxd, k)) n++;
            if (n < MinNObs) {
                mark = 2;
                rnxd.NBadEphObs++;
            }
        }
        r = std::max(r, end);
        rnxd.IsEpochOKG(i) = rnxd.IsEpochOKR(i) = mark;
        if (mark == 0) continue;
        if (rnxd.NBadEphSat + rnxd.NBadEphObs == 1) std::cout << "\n";
        std::cout << "     Epoch: " << mjd2ymdhms(rnxd.epoch(i))
                  << (mark == 1 ? "    -> # OF SATELLITES PROBLEM"
                                : "    -> # OF OBSERVATIONS PROBLEM")
                  << "\n";
    }
    if (rnxd.NBadEphSat + rnxd.NBadEphObs == 0) std::cout << " NO PROBLEM\n";
    std::cout << "\n";

    rnxd.NOKEph = nep - rnxd.NBadEphSat - rnxd.NBadEphObs;
    if (verbose)
        std::cerr << Echo << "     # of satellites  : " << rnxd.NBadEphSat << "\n"
                  << Echo << "     # of observations: " << rnxd.NBadEphObs << "\n"
                  << Echo << "     # of OK epochs   : " << rnxd.NOKEph << "\n";

    std::cout << "  # of ALL epochs: " << std::setw(10) << nep << "\n"
              << "  # of OK epochs:  " << std::setw(10) << rnxd.NOKEph << "\n"
              << "  # of BAD epochs: " << std::setw(10) << rnxd.NBadEphSat + rnxd.NBadEphObs
              << "         # of BAD SAT: " << std::setw(5) << rnxd.NBadEphSat
              << "    # of BAD OBS: " << std::setw(5) << rnxd.NBadEphObs << "\n\n\n\n\n";
}
