#include "SimOptions.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <iostream>

#include "numerics/ProgramError.h"

namespace {

[[noreturn]] void BadOption(const std::string& opt, const std::string& why)
{
    ProgramError("Orvo", "orvo-simulate option " + opt + ": " + why);
}

// Whole text must be a number: a silent 0 from a typo would simulate a
// different station or day without anyone noticing.
long double Number(const std::string& opt, const std::string& text)
{
    if (text.empty()) BadOption(opt, "value missing");
    errno = 0;
    char* end = nullptr;
    const long double v = std::strtold(text.c_str(), &end);
    if (end == text.c_str() || *end != '\0' || errno == ERANGE)
        BadOption(opt, "'" + text + "' is not a number");
    return v;
}

long Integer(const std::string& opt, const std::string& text)
{
    if (text.empty()) BadOption(opt, "value missing");
    errno = 0;
    char* end = nullptr;
    const long v = std::strtol(text.c_str(), &end, 10);
    if (end == text.c_str() || *end != '\0' || errno == ERANGE)
        BadOption(opt, "'" + text + "' is not a whole number");
    return v;
}

std::vector<std::string> Split(const std::string& text, char sep)
{
    std::vector<std::string> parts;
    std::string::size_type start = 0;
    while (true) {
        const std::string::size_type pos = text.find(sep, start);
        parts.push_back(text.substr(start, pos == std::string::npos ? std::string::npos : pos - start));
        if (pos == std::string::npos) break;
        start = pos + 1;
    }
    return parts;
}

short SatelliteNumber(const std::string& opt, const std::string& text)
{
    if (text.size() != 3) BadOption(opt, "satellite '" + text + "' is not like G05");
    const long prn = Integer(opt, text.substr(1));
    if (prn < 1 || prn > 99) BadOption(opt, "satellite '" + text + "' has no valid PRN");
    switch (text[0]) {
        case 'G': return static_cast<short>(prn);
        case 'R': return static_cast<short>(100 + prn);
        case 'E': return static_cast<short>(200 + prn);
        default: BadOption(opt, "satellite '" + text + "' is of no simulated system");
    }
}

void CheckRange(const std::string& opt, long double v, long double lo, long double hi)
{
    if (!(v >= lo && v <= hi))
        BadOption(opt, "value out of range [" + std::to_string(static_cast<double>(lo)) + ", "
                           + std::to_string(static_cast<double>(hi)) + "]");
}

// Does arg start with the selector? Then rest receives the glued value.
bool Take(const std::string& arg, const char* sel, std::string& rest)
{
    const std::string s(sel);
    if (arg.compare(0, s.size(), s) != 0) return false;
    rest = arg.substr(s.size());
    return true;
}

}  // namespace

void PrintSimHelp()
{
    std::cout
        << "orvo-simulate: writes a consistent simulated data set of one station and one day\n"
        << "  -o<dir>          output folder (default .)\n"
        << "  -m<name>         four-character marker name (default SIMU)\n"
        << "  -x<X>,<Y>,<Z>    marker position, Earth-fixed, m\n"
        << "  -d<yyyy>-<mm>-<dd>  day, GPS time (default 2020-06-25)\n"
        << "  -i<s>            observation interval, s (default 30)\n"
        << "  -h<hours>        span from 00:00, at most 24 (default 24)\n"
        << "  -s<GRE>          systems, any of G, R, E (default GRE)\n"
        << "  -e<deg>          elevation cut-off, 0 to 5 deg (default 5)\n"
        << "  -nc<m>           code noise, m (default 0.3)\n"
        << "  -np<m>           phase noise, m (default 0.002)\n"
        << "  -ion<TECU>       daytime vertical TEC, 0 = no ionosphere (default 30)\n"
        << "  -notrop          no troposphere\n"
        << "  -wv<frac>        daily swing of the zenith wet delay, 0 to 0.9 (default 0.3)\n"
        << "  -ecc<H>,<E>,<N>  antenna eccentricity, m (default 0.1,0,0)\n"
        << "  -apr<m>          header position offset from the truth, m (default 3)\n"
        << "  -slip<sat>,<epoch>,<n1>,<n2>  cycle slip, e.g. -slipG05,120,3,-2 (epoch from 0)\n"
        << "  -jump<epoch>     receiver clock step of +1 ms at that epoch (from 0)\n"
        << "  -seed<n>         random stream (default 1)\n"
        << "  -help, --help    this list\n"
        << "orvo-simulate --compare TRUTH PLOTFILE [TROPOFILE]\n"
        << "                   north, east, up of orvo's static plot file (-gps) minus the\n"
        << "                   truth, and the zenith wet delay of its troposphere file (-ot)\n";
}

SimOptions ParseSimOptions(int argc, const char* const* argv)
{
    SimOptions o;
    for (int a = 1; a < argc; ++a) {
        const std::string arg(argv[a] ? argv[a] : "");
        std::string v;
        if (arg == "-help") {
            PrintSimHelp();
            std::exit(0);
        } else if (arg == "-notrop") {
            o.useTrop = false;
        } else if (Take(arg, "-ion", v)) {
            o.vtecMax_TECU = Number(arg, v);
            CheckRange(arg, o.vtecMax_TECU, 0.0L, 300.0L);
        } else if (Take(arg, "-ecc", v)) {
            const std::vector<std::string> p = Split(v, ',');
            if (p.size() != 3) BadOption(arg, "needs H,E,N");
            o.eccH = Number(arg, p[0]);
            o.eccE = Number(arg, p[1]);
            o.eccN = Number(arg, p[2]);
            CheckRange(arg, o.eccH, -10.0L, 10.0L);
            CheckRange(arg, o.eccE, -10.0L, 10.0L);
            CheckRange(arg, o.eccN, -10.0L, 10.0L);
        } else if (Take(arg, "-apr", v)) {
            o.aprioriOffset = Number(arg, v);
            CheckRange(arg, o.aprioriOffset, 0.0L, 1000.0L);
        } else if (Take(arg, "-slip", v)) {
            const std::vector<std::string> p = Split(v, ',');
            if (p.size() != 4) BadOption(arg, "needs satellite,epoch,n1,n2");
            SimSlip s;
            s.sat = SatelliteNumber(arg, p[0]);
            s.epoch = Integer(arg, p[1]);
            s.n1_cyc = Integer(arg, p[2]);
            s.n2_cyc = Integer(arg, p[3]);
            if (s.epoch < 0) BadOption(arg, "epoch index is negative");
            o.slips.push_back(s);
        } else if (Take(arg, "-jump", v)) {
            o.msJumpEpoch = Integer(arg, v);
            if (o.msJumpEpoch < 0) BadOption(arg, "epoch index is negative");
        } else if (Take(arg, "-seed", v)) {
            const long s = Integer(arg, v);
            if (s < 0) BadOption(arg, "seed is negative");
            o.seed = static_cast<unsigned long>(s);
        } else if (Take(arg, "-nc", v)) {
            o.sigCode = Number(arg, v);
            CheckRange(arg, o.sigCode, 0.0L, 100.0L);
        } else if (Take(arg, "-np", v)) {
            o.sigPhase = Number(arg, v);
            CheckRange(arg, o.sigPhase, 0.0L, 0.05L);
        } else if (Take(arg, "-wv", v)) {
            o.wetVar = Number(arg, v);
            CheckRange(arg, o.wetVar, 0.0L, 0.9L);
        } else if (Take(arg, "-o", v)) {
            if (v.empty()) BadOption(arg, "folder missing");
            o.outDir = v;
        } else if (Take(arg, "-m", v)) {
            if (v.size() != 4) BadOption(arg, "marker name must have four characters");
            for (char ch : v)
                if (!std::isalnum(static_cast<unsigned char>(ch)))
                    BadOption(arg, "marker name must be letters and digits");
            o.marker = v;
        } else if (Take(arg, "-x", v)) {
            const std::vector<std::string> p = Split(v, ',');
            if (p.size() != 3) BadOption(arg, "needs X,Y,Z");
            o.x = Number(arg, p[0]);
            o.y = Number(arg, p[1]);
            o.z = Number(arg, p[2]);
            // The models are for a ground station: well below the orbits and
            // not inside the Earth.
            const long double r = std::sqrt(o.x * o.x + o.y * o.y + o.z * o.z);
            if (r < 6.3e6L || r > 6.4e6L) BadOption(arg, "position is not near the Earth's surface");
        } else if (Take(arg, "-d", v)) {
            const std::vector<std::string> p = Split(v, '-');
            if (p.size() != 3) BadOption(arg, "needs yyyy-mm-dd");
            const long yy = Integer(arg, p[0]), mm = Integer(arg, p[1]), dd = Integer(arg, p[2]);
            // 1981..2078: two-digit RINEX years and GPS weeks stay unambiguous.
            if (yy < 1981 || yy > 2078 || mm < 1 || mm > 12 || dd < 1 || dd > 31)
                BadOption(arg, "date not valid");
            static const int mdays[12] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
            const bool leap = (yy % 4 == 0 && yy % 100 != 0) || yy % 400 == 0;
            if (dd > mdays[mm - 1] || (mm == 2 && dd == 29 && !leap)) BadOption(arg, "date not valid");
            o.year = static_cast<unsigned short>(yy);
            o.month = static_cast<unsigned short>(mm);
            o.day = static_cast<unsigned short>(dd);
        } else if (Take(arg, "-i", v)) {
            o.interval = Number(arg, v);
            // Whole seconds keep every epoch exact in the files' fixed columns.
            if (o.interval < 1.0L || o.interval > 900.0L
                || std::fabs(o.interval - std::round(o.interval)) > 1e-9L)
                BadOption(arg, "interval must be whole seconds from 1 to 900");
        } else if (Take(arg, "-h", v)) {
            o.hours = Number(arg, v);
            CheckRange(arg, o.hours, 0.1L, simoptns::MaxHours);
        } else if (Take(arg, "-s", v)) {
            o.useGPS = o.useGLN = o.useGAL = false;
            if (v.empty()) BadOption(arg, "no system given");
            for (char ch : v) {
                if (ch == 'G') o.useGPS = true;
                else if (ch == 'R') o.useGLN = true;
                else if (ch == 'E') o.useGAL = true;
                else BadOption(arg, std::string("unknown system ") + ch);
            }
        } else if (Take(arg, "-e", v)) {
            o.elevMask_deg = Number(arg, v);
            CheckRange(arg, o.elevMask_deg, 0.0L, simoptns::MaxElevMask_deg);
        } else {
            BadOption(arg, "unknown option");
        }
    }
    // The RINEX epoch count must reach past every requested event, or the
    // user would believe a slip or jump is in the data when it is not.
    const long nEpoch = static_cast<long>(std::floor(o.hours * 3600.0L / o.interval + 1e-9L));
    if (nEpoch < 2) BadOption("-h", "the span holds fewer than two epochs of the interval");
    for (const SimSlip& s : o.slips)
        if (s.epoch >= nEpoch) BadOption("-slip", "epoch index beyond the last epoch");
    if (o.msJumpEpoch >= nEpoch) BadOption("-jump", "epoch index beyond the last epoch");
    for (const SimSlip& s : o.slips) {
        const bool on = s.sat < 100 ? o.useGPS : (s.sat < 200 ? o.useGLN : o.useGAL);
        if (!on) BadOption("-slip", "satellite of a system that is not simulated");
    }
    return o;
}
