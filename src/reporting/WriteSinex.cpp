#include "reporting/WriteSinex.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <iostream>
#include <sstream>

#include "geodesy/TimeConverse.h"
#include "numerics/FieldText.h"
#include "numerics/MathConstants.h"
#include "numerics/ProgramError.h"
#include "reporting/StaticPrecision.h"

namespace {

const char* const Prog = "Orvo";
// One solution per file: every site record belongs to it.
const char* const SolutionId = "1";
// The range of the format's two-digit year (00-50 is 2000-2050).
constexpr int FirstYear = 1951, LastYear = 2050;
// The Unix epoch 1970-01-01 as MJD, for the creation time.
constexpr unsigned long UnixEpochMJD = 40587UL;
// Tenths of an arc second in a full turn, and in a degree.
constexpr long long TenthsPerTurn = 360LL * 36000LL, TenthsPerDegree = 36000LL;

template <class... A>
std::string Format(const char* fmt, A... a)
{
    char buf[160];
    std::snprintf(buf, sizeof(buf), fmt, a...);
    return buf;
}

// A text field of the format: cut to width, left-justified; an empty one is
// filled with "-", the format's mark for "not given".
std::string Field(const std::string& text, size_t width)
{
    const size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) return std::string(width, '-');
    std::string t = text.substr(0, width);
    t.resize(width, ' ');
    return t;
}

std::string Trimmed(const std::string& s) { return fieldtext::TrimmedField(s, 0, s.size()); }

// Degrees, minutes and seconds (0.1") of an angle in degrees, as
// I3,1X,I2,1X,F4.1. Rounding is done once on the tenths, so that 59.96"
// becomes the next minute and not "60.0".
std::string Dms(long double deg)
{
    long long tenths = std::llround(std::fabs(deg) * static_cast<long double>(TenthsPerDegree));
    const bool south = deg < 0.0L && tenths > 0;
    const std::string d = (south ? "-" : "") + std::to_string(tenths / TenthsPerDegree);
    tenths %= TenthsPerDegree;
    return Format("%3s %2lld %4.1f", d.c_str(), tenths / 600LL, static_cast<double>(tenths % 600LL) / 10.0);
}

// The creation time, UTC from the system clock.
mjd Now()
{
    const std::time_t t = std::time(nullptr);
    const long long s = static_cast<long long>(t);
    return mjd(UnixEpochMJD + static_cast<unsigned long>(s / 86400), static_cast<long double>(s % 86400));
}

}  // namespace

std::string SinexEpoch(const mjd& t)
{
    const long long sec = std::llround(t.GetSecond());
    const ymdhms day = mjd2ymdhms(mjd(t.GetMJDay(), 0.0L));
    const int year = day.GetYear();
    if (year < FirstYear || year > LastYear)
        ProgramError(Prog, "SINEX FILE: EPOCH OF YEAR " + std::to_string(year) + " OUTSIDE " +
                               std::to_string(FirstYear) + "-" + std::to_string(LastYear) +
                               " OF THE TWO-DIGIT YEAR!");
    return Format("%02d:%03d:%05lld", year % 100, static_cast<int>(day.GetDayOfYear()), sec);
}

std::string SinexSiteCode(const std::string& markerName, const std::string& obsFile)
{
    std::string code = Trimmed(markerName);
    if (code.empty()) {
        const size_t slash = obsFile.find_last_of('/');
        code = slash == std::string::npos ? obsFile : obsFile.substr(slash + 1);
    }
    code = code.substr(0, 4);
    code.resize(4, '_');
    for (char& c : code) c = c == ' ' ? '_' : static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return code;
}

std::string SinexDomes(const std::string& markerNumber)
{
    const std::string d = Trimmed(markerNumber);
    bool ok = d.size() == 9 && (d[5] == 'M' || d[5] == 'S');
    for (size_t i = 0; ok && i < 9; ++i)
        if (i != 5 && !std::isdigit(static_cast<unsigned char>(d[i]))) ok = false;
    return ok ? d : std::string(9, '-');
}

std::string SinexHeaderLine(const std::string& agency, const std::string& created,
                            const std::string& start, const std::string& end, long nEstimates)
{
    const std::string a = Field(agency, 3);
    return Format("%%=SNX 2.02 %s %s %s %s %s P %5ld 2 S", a.c_str(), created.c_str(), a.c_str(),
                  start.c_str(), end.c_str(), nEstimates);
}

std::string SinexSiteIdLine(const std::string& site, const std::string& domes,
                            const std::string& description, long double lon_rad,
                            long double lat_rad, long double h_m)
{
    long double lon_deg = std::fmod(lon_rad * Rad2Deg, 360.0L);
    if (lon_deg < 0.0L) lon_deg += 360.0L;
    // A longitude that rounds up to a full turn is 0 east.
    if (std::llround(lon_deg * TenthsPerDegree) >= TenthsPerTurn) lon_deg = 0.0L;
    return Format(" %4s  A %9s P %s %s %s %7.1f", site.c_str(), domes.c_str(),
                  Field(description, 22).c_str(), Dms(lon_deg).c_str(),
                  Dms(lat_rad * Rad2Deg).c_str(), static_cast<double>(h_m));
}

std::string SinexSiteLine(const std::string& site, const std::string& soln,
                          const std::string& start, const std::string& end)
{
    return Format(" %4s  A %4s P %s %s", site.c_str(), soln.c_str(), start.c_str(), end.c_str());
}

std::string SinexEstimateLine(long index, const std::string& type, const std::string& site,
                              const std::string& soln, const std::string& refEpoch,
                              const std::string& unit, long double value, long double sigma)
{
    return Format(" %5ld %-6s %4s  A %4s %s %-4s 2 %21.14Le %11.5Le", index, type.c_str(),
                  site.c_str(), soln.c_str(), refEpoch.c_str(), unit.c_str(), value, sigma);
}

std::string SinexMatrixLine(long row, long col, const std::vector<long double>& elements)
{
    // The line holds three elements; a fourth would run past column 80.
    if (elements.empty() || elements.size() > 3)
        ProgramError(Prog, "SINEX FILE: A MATRIX LINE HOLDS 1 TO 3 ELEMENTS, NOT " +
                               std::to_string(elements.size()) + "!");
    std::string line = Format(" %5ld %5ld", row, col);
    for (const long double e : elements) line += Format(" %21.14Le", e);
    return line;
}

void WriteSinex(const gCPosC& gc, const mjd& RefEpoch)
{
    if (!gc.isSinexFile) return;
    if (gc.verbose) std::cerr << "Orvo::PrintStatic():         Writing SINEX SOLUTION FILE!\n";
    const RINEXHeader& h = gc.rnxh;
    const std::string site = SinexSiteCode(h.mname, gc.rnxfile);
    const std::string first = SinexEpoch(gc.rnxd.epoch(0));
    const std::string last = SinexEpoch(gc.rnxd.epoch(gc.rnxd.nepochall - 1));
    const std::string mean = SinexEpoch(RefEpoch);
    const std::string common = SinexSiteLine(site, SolutionId, first, last);
    const std::string file = gc.rnxfile;
    const std::string obsName = file.substr(file.find_last_of('/') + 1);

    std::ostringstream s;
    s << SinexHeaderLine(sinexns::Agency, SinexEpoch(Now()), first, last, 3) << "\n";
    s << "+FILE/REFERENCE\n"
      << "*INFO_TYPE_________ INFO________________________________________________________\n"
      << " DESCRIPTION        " << Field("Orvo precise point positioning, agency code ORV", 60) << "\n"
      << " OUTPUT             " << Field("Static station coordinates of one observation file", 60) << "\n"
      << " SOFTWARE           " << Field("Orvo", 60) << "\n"
      << " INPUT              " << Field(obsName, 60) << "\n"
      << "-FILE/REFERENCE\n";
    s << "+SITE/ID\n"
      << "*CODE PT __DOMES__ T _STATION DESCRIPTION__ _LONGITUDE_ _LATITUDE__ HEIGHT_\n"
      << SinexSiteIdLine(site, SinexDomes(h.mnumber), h.mname, gc.RecPosEstG.l, gc.RecPosEstG.f,
                         gc.RecPosEstG.h)
      << "\n-SITE/ID\n";
    s << "+SITE/RECEIVER\n"
      << "*CODE PT SOLN T _DATA START_ __DATA_END__ ___RECEIVER_TYPE____ _S/N_ _FIRMWARE__\n"
      << common << " " << Field(h.rectype, 20) << " " << Field(Trimmed(h.recnumb), 5) << " "
      << Field(h.recversion, 11) << "\n-SITE/RECEIVER\n";
    // The antenna type keeps its columns: the radome stands in the last four.
    s << "+SITE/ANTENNA\n"
      << "*CODE PT SOLN T _DATA START_ __DATA_END__ ____ANTENNA_TYPE____ _S/N_\n"
      << common << " " << Field(h.anttype, 20) << " " << Field(Trimmed(h.antnumb), 5)
      << "\n-SITE/ANTENNA\n";
    s << "+SITE/ECCENTRICITY\n"
      << "*CODE PT SOLN T _DATA START_ __DATA_END__ REF __DX_U__ __DX_N__ __DX_E__\n"
      << common
      << Format(" UNE %8.4f %8.4f %8.4f", static_cast<double>(h.Dp.u), static_cast<double>(h.Dp.n),
                static_cast<double>(h.Dp.e))
      << "\n-SITE/ECCENTRICITY\n";
    s << "+SOLUTION/EPOCHS\n"
      << "*CODE PT SOLN T _DATA_START_ __DATA_END__ _MEAN_EPOCH_\n"
      << common << " " << mean << "\n-SOLUTION/EPOCHS\n";

    const long double pos[3] = {gc.RecPosEst.x, gc.RecPosEst.y, gc.RecPosEst.z};
    const char* const types[3] = {"STAX", "STAY", "STAZ"};
    s << "+SOLUTION/ESTIMATE\n"
      << "*INDEX _TYPE_ CODE PT SOLN _REF_EPOCH__ UNIT S ___ESTIMATED_VALUE___ __STD_DEV__\n";
    for (long i = 0; i < 3; ++i)
        s << SinexEstimateLine(i + 1, types[i], site, SolutionId, mean, "m", pos[i],
                               StaticPrecision(gc.QxxAll(i, i), gc.s0apost))
          << "\n";
    s << "-SOLUTION/ESTIMATE\n";

    // Scaled like the report's precisions, so that the square roots of the
    // diagonal are the standard deviations above. The elements come from the
    // upper triangle, as in the static plot file: the inverse of the normal
    // matrix is symmetric only to round-off.
    s << "+SOLUTION/MATRIX_ESTIMATE L COVA\n"
      << "*PARA1 PARA2 ____PARA2+0__________ ____PARA2+1__________ ____PARA2+2__________\n";
    for (long i = 0; i < 3; ++i) {
        std::vector<long double> row;
        for (long j = 0; j <= i; ++j) row.push_back(gc.QxxAll(j, i) * gc.s0apost);
        s << SinexMatrixLine(i + 1, 1, row) << "\n";
    }
    s << "-SOLUTION/MATRIX_ESTIMATE L COVA\n%ENDSNX\n";

    std::ofstream out(gc.sinexfile, std::ios::out | std::ios::trunc);
    if (!out) ProgramError(Prog, std::string("SINEX FILE CAN NOT BE OPENED: ") + gc.sinexfile);
    out << s.str();
}
