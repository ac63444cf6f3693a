#include "reporting/PrintStaticCoordinates.h"

#include <iomanip>
#include <iostream>

#include "driver/Console.h"
#include "numerics/AngleConversion.h"
#include "reporting/FixedColumn.h"
#include "reporting/StaticPrecision.h"

namespace {

// Decimals of the arc seconds: 1e-5" is 0.3 mm on the ground.
constexpr int DmsDecimals = 5;

void EcefLine(const char* label, long double apr, long double corr, long double est,
              long double prec)
{
    std::cout << label;
    FixedColumn(std::cout, apr, 16, 4);
    FixedColumn(std::cout, corr, 12, 4);
    FixedColumn(std::cout, est, 16, 4);
    FixedColumn(std::cout, prec, 12, 4);
    std::cout << "\n";
}

void AngleLine(const char* label, long double apr_rad, long double corr, long double est_rad,
               long double prec)
{
    std::cout << label << std::setw(17) << dms2dms(rad2dms(apr_rad), DmsDecimals);
    FixedColumn(std::cout, corr, 12, 4);
    std::cout << std::setw(20) << dms2dms(rad2dms(est_rad), DmsDecimals);
    FixedColumn(std::cout, prec, 12, 4);
    std::cout << "\n";
}

}  // namespace

void PrintStaticCoordinates(const gCPosC& gc, const matrix<long double>& Qddg)
{
    std::ostream& os = std::cout;
    const long double s0 = gc.s0apost;

    ProgramSubSubSubTitle("ECEF COORDINATES:", 2);
    os << std::setw(23) << "Approximate" << std::setw(12) << "Correction" << std::setw(16)
       << "Estimated" << std::setw(12) << "Precision" << "\n";
    PrintChar('-', 59, 4);
    EcefLine("    X: ", gc.RecPos0.x, gc.xAll(0), gc.RecPosEst.x,
             StaticPrecision(gc.QxxAll(0, 0), s0));
    EcefLine("    Y: ", gc.RecPos0.y, gc.xAll(1), gc.RecPosEst.y,
             StaticPrecision(gc.QxxAll(1, 1), s0));
    EcefLine("    Z: ", gc.RecPos0.z, gc.xAll(2), gc.RecPosEst.z,
             StaticPrecision(gc.QxxAll(2, 2), s0));
    PrintChar('-', 59, 4);
    os << "\n";

    ProgramSubSubSubTitle("GEODETIC COORDINATES:", 2);
    os << std::setw(24) << "Approximate" << std::setw(12) << "Correction" << std::setw(20)
       << "Estimated" << std::setw(12) << "Precision" << "\n";
    PrintChar('-', 64, 4);
    AngleLine("    N: ", gc.RecPos0G.f, gc.RecPosCorrG.GetN(), gc.RecPosEstG.f,
              StaticPrecision(Qddg(0, 0), s0));
    AngleLine("    E: ", gc.RecPos0G.l, gc.RecPosCorrG.GetE(), gc.RecPosEstG.l,
              StaticPrecision(Qddg(1, 1), s0));
    os << "    U: ";
    FixedColumn(os, gc.RecPos0G.h, 17, 4);
    FixedColumn(os, gc.RecPosCorrG.GetU(), 12, 4);
    FixedColumn(os, gc.RecPosEstG.h, 20, 4);
    FixedColumn(os, StaticPrecision(Qddg(2, 2), s0), 12, 4);
    os << "\n";
    PrintChar('-', 64, 4);
    os << "\n";
}
