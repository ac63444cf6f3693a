#include "preprocessing/GetReceiverProperties.h"

#include <cmath>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>

#include "driver/Console.h"
#include "geodesy/CoordinateTransforms.h"
#include "geodesy/TimeConverse.h"
#include "geodesy/ymdhms.h"
#include "numerics/ProgramError.h"

namespace {

const char* const Prog = "Orvo";

void Log(bool verbose, const std::string& text)
{
    if (verbose) std::cerr << "Orvo::GetReceiverProperties(): " << text << "\n";
}

// Calendar date and time of an epoch as yyyy-mm-dd hh:mm:ss.sss.
std::string Calendar(const mjd& t)
{
    const ymdhms c = mjd2ymdhms(t);
    std::ostringstream os;
    os << std::fixed << std::setfill('0') << std::setw(4) << c.GetYear() << "-" << std::setw(2) << c.GetMonth()
       << "-" << std::setw(2) << c.GetDay() << " ";
    ymdhmsns::PrintHMS(os, c.GetHour(), c.GetMinute(), c.GetSecond(), 3);
    return os.str();
}

std::string DecimalMJD(const mjd& t)
{
    std::ostringstream os;
    os << std::fixed << std::setprecision(8) << t.GetMJDDec();
    return os.str();
}

// One share test of the daily data amount; below the minimum the run ends.
void TestShare(const gCPosC& gc, const char* label, long double share)
{
    // One decimal and no field width: the value follows the label as the
    // settings report prints its per-cent values.
    std::cout << label << std::fixed << std::setprecision(1) << share << "%\n";
    if (static_cast<long double>(gc.MinDailyObs) > share) {
        std::cout << "  *** PROBLEMATIC QUANTITY OF DATA ... ABORTING PROCESS!!\n";
        std::cout.flush();
        std::ostringstream os;
        // Three decimals: the one-decimal report line rounds a share just
        // below the minimum up to it.
        os << std::fixed << std::setprecision(3) << "DAILY GNSS DATA " << share
           << "% BELOW THE MINIMUM " << gc.MinDailyObs << "%!";
        ProgramError(Prog, os.str());
    }
}

void PrintStation(const gCPosC& gc)
{
    const RINEXHeader& h = gc.rnxh;
    std::cout << "  MARKER NAME / MARKER NUMBER         : " << h.mname << " / " << h.mnumber << "\n";
    std::cout << "  GNSS antenna type / serial          : " << h.anttype << " / " << h.antnumb << "\n";
    std::cout << "  GNSS receiver type / serial         : " << h.rectype << " / " << h.recnumb
              << "\n\n";
}

// Prints the data span and returns it (s).
long double PrintDataSpan(const gCPosC& gc)
{
    const RINEXData& d = gc.rnxd;
    const long n = d.GetNEpoch();
    if (n < 1) ProgramError(Prog, "RINEX FILE HOLDS NO EPOCH - NO STATION DATA!");
    const mjd& first = d.epoch(0);
    const mjd& last = d.epoch(n - 1);
    const long double span = last - first;

    const long total = std::lround(span);
    std::cout << "  GNSS observation data interval      : " << std::setfill('0') << std::setw(2)
              << total / 3600 << "h " << std::setw(2) << (total % 3600) / 60 << "m "
              << std::setw(2) << total % 60 << "s" << std::setfill(' ') << "  [" << std::fixed
              << std::setprecision(1) << span << " s]\n";
    std::cout << "  First epoch [calendar / MJD]        : " << Calendar(first) << " / "
              << DecimalMJD(first) << "\n";
    std::cout << "  Last epoch  [calendar / MJD]        : " << Calendar(last) << " / "
              << DecimalMJD(last) << "\n";
    std::cout << "  Sampling interval (RINEX header)    : " << std::fixed << std::setprecision(3)
              << gc.rnxh.GetInterval() << " s\n";
    std::cout << "  Number of epochs                    : " << n << "\n\n";
    return span;
}

void PrintPosition(const xyz& p, const flh& g)
{
    std::cout << "         X / Y / Z [m]                : " << p << "\n";
    std::cout << "         LAT / LON / H [dms, m]       : " << g << "\n";
}

}  // namespace

void GetReceiverProperties(gCPosC& gc)
{
    namespace ns = GetReceiverPropertiesns;
    ProgramSubSubTitle("GETTING STATION DATA PROPERTIES:", 0);

    Log(gc.verbose, "station, antenna and receiver");
    PrintStation(gc);

    Log(gc.verbose, "data span");
    const long double dataspan = PrintDataSpan(gc);

    if (gc.isMinDailyObs) {
        Log(gc.verbose, "quantity of daily data");
        TestShare(gc, "  Quantity of daily GNSS data span    : ", dataspan / 864.0L);
        // A full day holds 86400/interval + 1 epochs when both ends are kept.
        const long double interval = gc.rnxh.GetInterval();
        TestShare(gc, "  Number of daily GNSS data           : ",
                  static_cast<long double>(gc.rnxd.GetNEpoch()) * interval * 100.0L
                      / (interval + ns::SecondsPerDay));
        std::cout << "\n";
    }

    flhns::Unit = 4;
    flhns::NDecFL = 5;
    flhns::WidthFL = 16;
    flhns::WidthH = 12;
    xyzns::Width = 16;

    gc.RecCodeTrackType = 0;
    if (gc.isRCodTrc) gc.RecCodeTrackType = gc.rctrack.GetRecCodeTrack(gc.rnxh.rectype.c_str());

    Log(gc.verbose, "a-priori coordinates");
    gc.RecPos0 = gc.rnxh.X0;
    if (gc.isAprCrd && gc.rnxd.GetNEpoch() > 0)
        gc.RecPos0 = AprioriPosition(gc.acrd, gc.rnxh.mname.c_str(), gc.rnxh.mnumber.c_str(),
                                     gc.rnxd.epoch(gc.rnxd.GetNEpoch() / 2), gc.rnxh.X0);
    if (gc.RecPos0.GetLength() < ns::MinGeocentricDistance_m)
        ProgramError(Prog, "NO VALID APRIORI RECEIVER POSITION IN RINEX HEADER (APPROX POSITION "
                           "XYZ) - CAN NOT MODEL OBSERVATIONS!");
    gc.RecPosFC = gc.RecPos0;
    gc.RecPos0G = xyz2flh(gc.RecPos0, gc.eGPS);
    std::cout << "  A-priori coordinates (stabilization):\n";
    PrintPosition(gc.RecPos0, gc.RecPos0G);

    gc.RecPosEccLG = neu();
    gc.RecPosEccLG += gc.rnxh.Dp;
    gc.RecPosEcc = lg2g(gc.RecPosEccLG, gc.RecPos0, gc.eGPS);
    gc.RecPosFC += gc.RecPosEcc;
    std::cout << "  RINEX header eccentricity [NEU]     :" << gc.RecPosEccLG << "\n";

    gc.RecPosFCG = xyz2flh(gc.RecPosFC, gc.eGPS);
    std::cout << "  A-priori PHASE CENTER coordinates   :\n";
    PrintPosition(gc.RecPosFC, gc.RecPosFCG);

    if (gc.isTrpModel) {
        Log(gc.verbose, "troposphere site parameters");
        gc.trpmodel.SetPoint(gc.rnxh.mname.c_str());
        gc.trpmodel.SetAtmParams(gc.RecPosFCG);
    }

    gc.RecPosUnit = gc.RecPos0.GetUnitVector(1.0L);
    gc.RecMag = gc.RecPos0.GetLength();
    // The tide moves the monument: the model sees the marker, all other
    // models the antenna reference point.
    gc.nset.SetStaPosition(gc.RecPosUnit, gc.RecMag);
    std::cout << "  Solid Earth tide parameters         :\n";
    std::cout << "         RECEIVER UNIT VECTOR         : " << gc.RecPosUnit << "\n";
    std::cout << "         RECEIVER DISTANCE FROM ORIGIN: " << std::fixed << std::setprecision(1)
              << std::setw(12) << gc.RecMag << " m \n\n";

    xyzns::NDec = 10;
}
