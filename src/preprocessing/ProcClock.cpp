#include "preprocessing/ProcClock.h"

#include <iomanip>
#include <iostream>
#include <memory>
#include <string>

#include "driver/Console.h"
#include "geodesy/TimeConverse.h"
#include "geodesy/ymdhms.h"
#include "numerics/MathConstants.h"
#include "observations/SatelliteSystem.h"
#include "numerics/ProgramError.h"
#include "preprocessing/FindOutliers.h"

namespace {

// The report's calendar form of an epoch, whatever the print settings of
// ymdhms stand at.
void PrintDate(const mjd& t)
{
    const short type = ymdhmsns::PrintType, format = ymdhmsns::PrintFormat,
                ndec = ymdhmsns::NDecSecond;
    ymdhmsns::PrintType = 2;
    ymdhmsns::PrintFormat = 0;
    ymdhmsns::NDecSecond = 1;
    std::cout << mjd2ymdhms(t);
    ymdhmsns::PrintType = type;
    ymdhmsns::PrintFormat = format;
    ymdhmsns::NDecSecond = ndec;
}

// The per-record arrays come from ApplyCorrections; the stage order is the
// only guard, so say plainly when it was broken instead of failing on an
// index deep inside the loop.
void CheckArrays(const gCPosC& gc)
{
    const long n = gc.rnxd.GetNObs();
    if (gc.OKSAT.NRow() < n || gc.ELV.NRow() < n || !gc.HasSatellitePositions(n))
        ProgramError("Orvo", "A-PRIORI CLOCK: OBSERVATION CORRECTIONS NOT SET FOR ALL "
                             "OBSERVATIONS!");
    const RINEXHeader& h = gc.rnxh;
    const RINEXData& d = gc.rnxd;
    if ((h.iC1 && d.C1.NRow() < n) || (h.iP1 && d.P1.NRow() < n) || (h.iP2 && d.P2.NRow() < n)
        || (h.iC7 && d.C7.NRow() < n))
        ProgramError("Orvo", "A-PRIORI CLOCK: CODE OBSERVATIONS NOT STORED FOR ALL "
                             "OBSERVATIONS!");
    long total = 0;
    for (long i = 0; i < d.GetNEpoch(); ++i) total += d.nsat(i);
    if (total != n)
        ProgramError("Orvo", "A-PRIORI CLOCK: EPOCH SATELLITE COUNTS DISAGREE WITH THE "
                             "NUMBER OF OBSERVATIONS!");
}

}  // namespace

void ProcClock(gCPosC& gc)
{
    const RINEXHeader& h = gc.rnxh;
    const RINEXData& d = gc.rnxd;
    const long nepoch = d.GetNEpoch();
    CheckArrays(gc);

    const long double minElevation =
        Pi * static_cast<long double>(gc.MinElevation) / 180.0L;
    const long double limit = 2.0L * gc.MaxfDiff;
    const bool inUse[SysNone] = {gc.isGPS, gc.isGLN, gc.isGAL};
    const char* const missing[SysNone] = {"NO GPS OBSERVATIONS!", "NO GLONASS OBSERVATIONS!",
                                           "NO GALILEO OBSERVATIONS!"};

    // The codes in the order they enter the sample; a type the header does
    // not list has no matrix to read.
    const matrix<gnssobs>* codes[4];
    int ncodes = 0;
    if (h.iC1) codes[ncodes++] = &d.C1;
    if (h.iP1) codes[ncodes++] = &d.P1;
    if (h.iP2) codes[ncodes++] = &d.P2;
    if (h.iC7) codes[ncodes++] = &d.C7;

    // Sized for the busiest epoch, every code of every record, so that no
    // epoch can overrun the sample.
    long maxSample = 0;
    for (long i = 0; i < nepoch; ++i)
        if (d.nsat(i) > maxSample) maxSample = d.nsat(i);
    maxSample *= ncodes;
    std::unique_ptr<long double[]> fval(new long double[maxSample > 0 ? maxSample : 1]);
    std::unique_ptr<bool[]> fout(new bool[maxSample > 0 ? maxSample : 1]());

    gc.dtAll.Resize(nepoch, 1, 0.0L);

    ProgramSubSubTitle("DETERMINATION OF A-PRIORI CLOCK ERORRS:", 0);
    ProgramSubSubSubTitle("Epoch-by-epoch screening:", 2);

    long goodEpochs[SysNone] = {0, 0, 0};
    long goodGNSS = 0, nExceeded = 0, nOutliers = 0;
    long k = 0;
    for (long i = 0; i < nepoch; ++i) {
        long double clk = 0.0L;
        long count[SysNone] = {0, 0, 0};
        long n = 0;
        for (long j = 0; j < d.nsat(i); ++j, ++k) {
            if (!gc.OKSAT(k)) continue;
            const xyzt PosSat = gc.SatellitePosition(k);
            xyz los = PosSat;
            los -= gc.RecPosFC;
            const long double dist = los.GetLength();
            if (!(gc.ELV(k) > minElevation)) continue;
            const int s = SystemOf(d.sat(k));
            if (s == SysNone || !inUse[s]) continue;
            for (int c = 0; c < ncodes; ++c) {
                const gnssobs& code = (*codes[c])(k);
                if (code.IsNull()) continue;
                fval[n] = code.GetObs() - dist + PosSat.dt * ProcClockns::C;
                fout[n] = true;
                ++n;
                ++count[s];
            }
        }

        const long nobsM = count[SysGPS] + count[SysGLN] + count[SysGAL];
        long nOi = 0;
        if (nobsM > 0) {
            long nm = nobsM;
            clk = FindOutliers(fval.get(), fout.get(), nm, limit);
            for (long j = 0; j < nobsM; ++j)
                if (fout[j]) ++nOi;
        }
        if (nOi > 0) {
            ++nExceeded;
            nOutliers += nOi;
        }
        gc.dtAll(i) = clk;

        for (int s = 0; s < SysNone; ++s) {
            if (!inUse[s]) continue;
            if (count[s] == 0) {
                std::cout << "    EPOCH: " << std::setw(7) << i + 1 << " [";
                PrintDate(d.epoch(i));
                std::cout << "]     " << missing[s] << "\n";
            } else {
                ++goodEpochs[s];
            }
        }
        if (nobsM > 0) ++goodGNSS;
    }

    std::cout << "\n";
    std::cout << "  # of ALL EPOCHS IN RINEX FILE: " << std::setw(18) << d.GetNEpoch() << "\n";
    if (gc.isGPS)
        std::cout << "    # of GPS EPOCHS            : " << std::setw(18) << goodEpochs[SysGPS] << "\n";
    if (gc.isGLN)
        std::cout << "    # of GLONASS EPOCHS        : " << std::setw(18) << goodEpochs[SysGLN]
                  << "\n";
    if (gc.isGAL)
        std::cout << "    # of GALILEO EPOCHS        : " << std::setw(18) << goodEpochs[SysGAL]
                  << "\n";
    std::cout << "    # of ALL GNSS OK EPOCHS    : " << std::setw(18) << goodGNSS << "\n";
    std::cout << "\n";
    std::cout << "  # of EXCEEDED F VALUES : " << std::setw(10) << nExceeded << "\n";
    std::cout << "  # of ESTIMATED OUTLIERS: " << std::setw(10) << nOutliers << "\n";
    std::cout << "\n\n";
}
