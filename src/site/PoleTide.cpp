#include "site/PoleTide.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <istream>

#include "numerics/ProgramError.h"
#include "numerics/Trigonometry.h"

namespace {

constexpr long double DaySec = 86400.0L;
constexpr long double DaysPerYear = 365.25L;
// The mean pole turns from the cubic to the line after this many years.
constexpr long double MeanPoleSwitch_yr = 10.0L;
constexpr long double MaxMJD = 200000.0L;
const char* const CantRead = "EARTH ROTATION PARAMETER FILE CAN NOT BE READ!";

bool NextLine(std::istream& in, std::string& line)
{
    if (!std::getline(in, line)) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

std::size_t TrimmedLength(const std::string& line)
{
    const std::size_t first = line.find_first_not_of(" \t");
    if (first == std::string::npos) return 0;
    return line.find_last_not_of(" \t") - first + 1;
}

bool Holds(const std::string& line, const char* text) { return line.find(text) != std::string::npos; }

}  // namespace

PoleTide::PoleTide()
    : neph(0), version(1), nPoleTideData(3), PoleM(0.00001L), Tm(0.000001L), J2000(51544, 0.0L),
      xpdata{0.0L, 0.0L, 0.0L, 0.0L}, ypdata{0.0L, 0.0L, 0.0L, 0.0L}, xp(0.0L), yp(0.0L), xi(0.0L), yi(0.0L)
{
    file[0] = '\0';
}

void PoleTide::SetFile(const char* name)
{
    if (name == nullptr || std::strlen(name) >= sizeof(file))
        ProgramError("Orvo", std::string(CantRead) + " (name missing or longer than 255 characters)");
    std::strcpy(file, name);
}

void PoleTide::Fail(const std::string& why) const
{
    ProgramError("Orvo", std::string(CantRead) + " (" + file + ": " + why + ")");
}

long PoleTide::SkipHeader(std::istream& in, bool setVersion)
{
    std::string line;
    long lineNo = 0;
    if (setVersion) version = 1;
    do {
        if (!NextLine(in, line)) Fail("no MJD column head");
        ++lineNo;
        if (setVersion && (Holds(line, "version 2") || Holds(line, "VERSION 2"))) version = 2;
    } while (!Holds(line, "MJD"));
    // The units line under the head; a file ending here has no records,
    // which the count reports.
    if (NextLine(in, line)) ++lineNo;
    return lineNo;
}

void PoleTide::ReadFile()
{
    std::ifstream in(file);
    if (!in) Fail("file does not open");
    const long headLines = SkipHeader(in, true);
    std::string line;
    neph = 0;
    while (NextLine(in, line))
        if (TrimmedLength(line) > PoleTidens::MinRecordLength) ++neph;
    // Interpolation needs a record at least; an empty table would leave
    // every later index out of range.
    if (neph < 1) Fail("no records below the column head");

    PoleM = version == 2 ? 0.000001L : 0.00001L;
    Tm = version == 2 ? 0.0000001L : 0.000001L;
    VAL.Resize(neph, nPoleTideData, 0.0L);
    eph.Resize(neph, 1);

    std::ifstream data(file);
    long lineNo = SkipHeader(data, false), i = 0;
    if (lineNo != headLines) Fail("file changed while read");
    while (NextLine(data, line)) {
        ++lineNo;
        if (TrimmedLength(line) <= PoleTidens::MinRecordLength) continue;
        // The file was counted on the first pass; one that grew since
        // would overrun the table.
        if (i >= neph) Fail("file changed while read");
        long double day = 0.0L, x = 0.0L, y = 0.0L, dut = 0.0L;
        const std::string at = "line " + std::to_string(lineNo);
        if (std::sscanf(line.c_str(), "%Lf %Lf %Lf %Lf", &day, &x, &y, &dut) != 4)
            Fail(at + ": record does not hold MJD, x, y, UT1-UTC");
        if (!(day >= 0.0L && day < MaxMJD)) Fail(at + ": MJD out of range");
        eph(i) = day;
        // Each interval is divided by its length: a repeated or earlier
        // epoch would divide by zero or pick the wrong interval.
        if (i > 0 && !(eph(i) - eph(i - 1) > 0.0L)) Fail(at + ": records out of time order");
        VAL(i, X) = x * PoleM;
        VAL(i, Y) = y * PoleM;
        VAL(i, UT1UTC) = dut * Tm;
        ++i;
    }
    if (i != neph) Fail("file changed while read");
}

void PoleTide::SetCalcEpoch(const mjd& t) { CalcEph = t; }

void PoleTide::SetMeanPole()
{
    const long double dyear = (CalcEph - J2000) / DaySec / DaysPerYear;
    if (dyear > MeanPoleSwitch_yr) {
        const long double xl[4] = {0.023513L, 0.0076141L, 0.0L, 0.0L};
        const long double yl[4] = {0.358891L, -0.0006287L, 0.0L, 0.0L};
        std::memcpy(xpdata, xl, sizeof xl);
        std::memcpy(ypdata, yl, sizeof yl);
    } else {
        const long double xc[4] = {0.055974L, 0.0018243L, 0.00018413L, 0.000007024L};
        const long double yc[4] = {0.346346L, 0.0017896L, -0.00010729L, -0.000000908L};
        std::memcpy(xpdata, xc, sizeof xc);
        std::memcpy(ypdata, yc, sizeof yc);
    }
    xp = 0.0L;
    yp = 0.0L;
    long double power = 1.0L;
    for (int i = 0; i < 4; ++i, power *= dyear) {
        xp += xpdata[i] * power;
        yp += ypdata[i] * power;
    }
}

void PoleTide::GetPoleTide(const mjd& t, const flh& pos, neu& dpos)
{
    if (neph < 1) Fail("no records read");
    if (neph == 1) {
        xi = VAL(0, X);
        yi = VAL(0, Y);
    } else {
        const long last = neph - 1;
        long ix = 0;
        if (t < eph(0)) {
            if (eph(0) - t > PoleTidens::MaxOutside_s)
                ProgramWarning("Orvo", "ERP FILE - GETTING INDEX - INPUT EPOCH OUT OF DATA INTERVAL (<1day)");
        } else if (t > eph(last)) {
            ix = neph - 2;
            if (t - eph(last) > PoleTidens::MaxOutside_s)
                ProgramWarning("Orvo", "ERP FILE - GETTING INDEX - INPUT EPOCH OUT OF DATA INTERVAL (>1day)");
        } else {
            // Bisection keeps eph(lo) <= t <= eph(hi); lo ends at neph-2 at most.
            long hi = last;
            while (hi - ix > 1) {
                const long mid = ix + (hi - ix) / 2;
                if (eph(mid) <= t) ix = mid; else hi = mid;
            }
        }
        const long double dt1 = (t - eph(ix)) / DaySec, dtall = (eph(ix + 1) - eph(ix)) / DaySec;
        xi = VAL(ix, X) + (VAL(ix + 1, X) - VAL(ix, X)) * dt1 / dtall;
        yi = VAL(ix, Y) + (VAL(ix + 1, Y) - VAL(ix, Y)) * dt1 / dtall;
    }
    const long double dx = xi - xp, dy = yi - yp;
    const long double sl = trig::Sin(pos.l), cl = trig::Cos(pos.l);
    dpos.u = -0.033L * trig::Sin(2.0L * pos.f) * (dx * cl + dy * sl);
    dpos.e = 0.009L * trig::Sin(pos.f) * (dx * sl - dy * cl);
    dpos.n = -0.009L * trig::Cos(2.0L * pos.f) * (dx * cl + dy * sl);
}
