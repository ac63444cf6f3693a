#include "delays/IonKlobuchar.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

#include "numerics/FieldText.h"
#include "numerics/MathConstants.h"
#include "numerics/ProgramError.h"
#include "numerics/Trigonometry.h"
#include "observations/GPSc.h"

using fieldtext::CopyTrimmedField;
using fieldtext::HoldsLabel;

namespace {

const char* const Prog = "Klobuchar iono";

// Up to len characters from pos; a field beyond the end of a short line is
// empty and so reads as 0.
std::string Field(const std::string& line, std::size_t pos, std::size_t len)
{
    return pos < line.size() ? line.substr(pos, len) : std::string();
}

}  // namespace

std::istream& operator>>(std::istream& in, IonKlobuchar& k)
{
    std::string line;
    long lineNo = 0;
    while (true) {
        if (!std::getline(in, line))
            ProgramError(Prog, "NAVIGATION FILE HEADER ENDS BEFORE \"END OF HEADER\" (LINE "
                                   + std::to_string(lineNo) + ")!!");
        ++lineNo;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (HoldsLabel(line, "END OF HEADER")) break;
        if (HoldsLabel(line, "RINEX VERSION / TYPE")) {
            k.version = std::strtof(Field(line, 0, 9).c_str(), nullptr);
            CopyTrimmedField(line, 20, 19, k.type, sizeof k.type);
        } else if (HoldsLabel(line, "PGM / RUN BY / DATE")) {
            CopyTrimmedField(line, 0, 20, k.pgm, sizeof k.pgm);
            CopyTrimmedField(line, 20, 20, k.runby, sizeof k.runby);
            CopyTrimmedField(line, 40, 20, k.date, sizeof k.date);
        } else if (HoldsLabel(line, "ION ALPHA") || HoldsLabel(line, "ION BETA")) {
            long double* c = HoldsLabel(line, "ION ALPHA") ? k.alfa : k.beta;
            for (std::size_t i = 0; i < 4; ++i) c[i] = fieldtext::MantissaExponent(line, 12 * i + 2, 8, 12 * i + 11);
        } else if (HoldsLabel(line, "DELTA-UTC: A0,A1,T,W")) {
            k.a0 = fieldtext::MantissaExponent(line, 3, 15, 19);
            k.a1 = fieldtext::MantissaExponent(line, 22, 15, 38);
            k.T = std::atol(Field(line, 41, 9).c_str());
            k.W = std::atol(Field(line, 50, 9).c_str());
        } else if (HoldsLabel(line, "LEAP SECONDS")) {
            k.leaps = static_cast<short>(std::atoi(Field(line, 0, 6).c_str()));
        } else if (!HoldsLabel(line, "COMMENT")) {
            ProgramWarning(Prog, Field(line, 60, std::string::npos) + " -> UNKNOWN HEADER LABEL");
        }
    }
    // Checked at the end so that a file without its version line fails too.
    if (k.type[0] != 'N') ProgramError(Prog, "FILE VERSION IS NOT \"NAVIGATION DATA\"!!");
    return in;
}

long double IonKlobuchar::CalcIonDelay(long double fi_deg, long double la_deg, long double elev_deg,
                                       long double azm_deg, long double sod) const
{
    // The model works in semicircles.
    const long double fi = fi_deg / 180.0L, la = la_deg / 180.0L;
    const long double elev = elev_deg / 180.0L, azm = azm_deg / 180.0L;

    // Earth angle between site and pierce point, then the pierce point and
    // its geomagnetic latitude.
    const long double ea = 0.0137L / (elev + 0.11L) - 0.022L;
    long double fi1 = fi + ea * trig::Cos(Pi * azm);
    if (fi1 > 0.416L) fi1 = 0.416L;
    if (fi1 < -0.416L) fi1 = -0.416L;
    const long double la1 = la + ea * trig::Sin(Pi * azm) / trig::Cos(Pi * fi1);
    const long double fim = fi1 + 0.064L * trig::Cos(Pi * (la1 - 1.617L));

    long double t = 43200.0L * la1 + sod;  // local time at the pierce point (s)
    if (t > 86400.0L)
        t -= 86400.0L;
    else if (t < 0.0L)
        t += 86400.0L;

    const long double d = 0.53L - elev;
    const long double sf = 1.0L + 16.0L * d * d * d;  // obliquity factor

    long double amp = alfa[0] + fim * (alfa[1] + fim * (alfa[2] + fim * alfa[3]));
    if (amp < 0.0L) amp = 0.0L;
    long double per = beta[0] + fim * (beta[1] + fim * (beta[2] + fim * beta[3]));
    if (per < 72000.0L) per = 72000.0L;

    const long double x = 2.0L * Pi * (t - 50400.0L) / per;
    const long double dc = 5e-9L;  // night-time delay (s)
    const long double x2 = x * x;
    const long double delay = std::fabs(x) > 1.57L ? sf * dc : sf * (dc + amp * (1.0L - x2 / 2.0L + x2 * x2 / 24.0L));
    return delay * GPSc::c;
}
