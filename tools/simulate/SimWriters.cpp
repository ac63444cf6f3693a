#include "SimWriters.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <vector>

#include "geodesy/GPSws.h"
#include "geodesy/TimeConverse.h"
#include "geodesy/mjd.h"
#include "geodesy/ymdhms.h"
#include "numerics/ProgramError.h"

namespace {

constexpr long double Pi = 3.14159265358979323846264338327950288L;

std::string Fmt(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Fmt(const char* format, ...)
{
    char buf[512];
    va_list ap;
    va_start(ap, format);
    std::vsnprintf(buf, sizeof buf, format, ap);
    va_end(ap);
    return buf;
}

// A header record: content in columns 1-60, label from column 61.
std::string Label(std::string content, const std::string& label)
{
    content.resize(60, ' ');
    return content + label + "\n";
}

std::string RightTrim(std::string s)
{
    while (!s.empty() && s.back() == ' ') s.pop_back();
    return s;
}

char SystemLetter(short sat) { return sat < 100 ? 'G' : (sat < 200 ? 'R' : 'E'); }
int Prn(short sat) { return sat % 100; }
std::string SatId(short sat) { return Fmt("%c%02d", SystemLetter(sat), Prn(sat)); }

ymdhms Calendar(const SimData& d, long double t)
{
    mjd m(d.mjday, 0.0L);
    m += t;
    return mjd2ymdhms(m);
}

std::string Now()
{
    const std::time_t now = std::time(nullptr);
    char buf[32] = "";
    const std::tm* u = std::gmtime(&now);
    if (u) std::strftime(buf, sizeof buf, "%Y%m%d %H%M%S UTC", u);
    return buf;
}

std::ofstream Open(const std::string& path)
{
    std::ofstream out(path, std::ios::binary);
    if (!out) ProgramError("Orvo", "orvo-simulate: file " + path + " can not be written");
    return out;
}

void Close(std::ofstream& out, const std::string& path)
{
    out.close();
    if (!out) ProgramError("Orvo", "orvo-simulate: writing file " + path + " failed");
}

char FileSystem(const SimOptions& o)
{
    const int n = int(o.useGPS) + int(o.useGLN) + int(o.useGAL);
    if (n > 1) return 'M';
    return o.useGPS ? 'G' : (o.useGLN ? 'R' : 'E');
}

// One 16-column RINEX field: F14.3, loss-of-lock digit, blank strength.
std::string ObsField(long double v, unsigned short lli)
{
    if (std::fabs(v) < 1e-9L) return std::string(16, ' ');
    return Fmt("%14.3Lf%c ", v, lli ? static_cast<char>('0' + lli) : ' ');
}

}  // namespace

SimFileNames FileNames(const SimData& d)
{
    const ymdhms day = Calendar(d, 0.0L);
    const unsigned long jan1 = ymdhms2mjd(ymdhms(day.GetYear(), 1, 1, 0, 0, 0.0L)).GetMJDay();
    const std::string base = d.opt.marker + Fmt("%03lu0", d.mjday - jan1 + 1);
    SimFileNames n;
    n.obs = base + Fmt(".%02do", day.GetYear() % 100);
    n.glnfc = n.obs + ".glnfc";
    n.sp3 = base + ".sp3";
    n.clk = base + ".clk";
    n.truth = base + ".truth";
    return n;
}

void WriteRinexObs(const SimData& d, const std::string& path)
{
    const SimOptions& o = d.opt;
    std::ofstream out = Open(path);
    const char sys = FileSystem(o);
    const char* sysText = sys == 'M' ? "M (MIXED)" : (sys == 'G' ? "G (GPS)" : (sys == 'R' ? "R (GLONASS)" : "E (GALILEO)"));
    out << Label(Fmt("%9.2f%11s%-20s%-20s", 2.11, "", "OBSERVATION DATA", sysText), "RINEX VERSION / TYPE");
    out << Label(Fmt("%-20s%-20s%-20s", "orvo-simulate", "Orvo", Now().c_str()), "PGM / RUN BY / DATE");
    out << Label("SIMULATED DATA: TRUTH IN THE .truth FILE", "COMMENT");
    out << Label(o.marker, "MARKER NAME");
    out << Label(o.marker + " SIM", "MARKER NUMBER");
    out << Label(Fmt("%-20s%-40s", "simulator", "Orvo"), "OBSERVER / AGENCY");
    out << Label(Fmt("%-20s%-20s%-20s", "SIM00001", "SIMULATED RECEIVER", "1.0"), "REC # / TYPE / VERS");
    out << Label(Fmt("%-20s%-20s", "SIM00001", "SIMULATED ANT   NONE"), "ANT # / TYPE");
    out << Label(Fmt("%14.4Lf%14.4Lf%14.4Lf", d.approx.x, d.approx.y, d.approx.z), "APPROX POSITION XYZ");
    out << Label(Fmt("%14.4Lf%14.4Lf%14.4Lf", o.eccH, o.eccE, o.eccN), "ANTENNA: DELTA H/E/N");
    out << Label(Fmt("%6d%6d", 1, 1), "WAVELENGTH FACT L1/2");
    out << Label(Fmt("%6d    C1    P1    P2    L1    L2    C7    L7", 7), "# / TYPES OF OBSERV");
    out << Label(Fmt("%10.3Lf", o.interval), "INTERVAL");
    const ymdhms first = Calendar(d, d.epochs.front().t);
    const ymdhms last = Calendar(d, d.epochs.back().t);
    for (int k = 0; k < 2; ++k) {
        const ymdhms& c = k == 0 ? first : last;
        out << Label(Fmt("%6u%6u%6u%6u%6u%13.7Lf%5s%3s", c.GetYear(), c.GetMonth(), c.GetDay(),
                         c.GetHour(), c.GetMinute(), c.GetSecond(), "", "GPS"),
                     k == 0 ? "TIME OF FIRST OBS" : "TIME OF LAST OBS");
    }
    out << Label("", "END OF HEADER");

    for (const SimEpoch& ep : d.epochs) {
        const ymdhms c = Calendar(d, ep.t);
        std::string line = Fmt(" %02u %2u %2u %2u %2u%11.7Lf  %1d%3zu", c.GetYear() % 100,
                               c.GetMonth(), c.GetDay(), c.GetHour(), c.GetMinute(),
                               c.GetSecond(), 0, ep.recs.size());
        for (std::size_t k = 0; k < ep.recs.size(); ++k) {
            if (k > 0 && k % 12 == 0) {
                out << line << "\n";
                line = std::string(32, ' ');
            }
            line += SatId(ep.recs[k].sat);
        }
        out << line << "\n";
        for (const SimRecord& r : ep.recs) {
            const std::string f[7] = {ObsField(r.C1, 0),     ObsField(r.P1, 0),
                                      ObsField(r.P2, 0),     ObsField(r.L1, r.lli),
                                      ObsField(r.L2, r.lli), ObsField(r.C7, 0),
                                      ObsField(r.L7, r.lli)};
            out << RightTrim(f[0] + f[1] + f[2] + f[3] + f[4]) << "\n"
                << RightTrim(f[5] + f[6]) << "\n";
        }
    }
    Close(out, path);
}

void WriteSP3(const SimData& d, const std::string& path)
{
    const SimOptions& o = d.opt;
    std::ofstream out = Open(path);
    const long double t0 = d.orbitTimes.front();
    const ymdhms c0 = Calendar(d, t0);
    mjd m0(d.mjday, 0.0L);
    m0 += t0;
    const GPSws w0 = mjd2GPSws(m0);
    out << Fmt("#cP%4u %2u %2u %2u %2u %11.8Lf %7zu ORBIT IGS14 FIT  SIM\n", c0.GetYear(),
               c0.GetMonth(), c0.GetDay(), c0.GetHour(), c0.GetMinute(), c0.GetSecond(),
               d.orbitTimes.size());
    out << Fmt("## %4u %15.8Lf %14.8Lf %5lu %15.13Lf\n", w0.GetWeek(), w0.GetSecond(),
               d.orbitTimes[1] - d.orbitTimes[0], m0.GetMJDay(), m0.GetSecond() / 86400.0L);
    // SP3-c wants at least five satellite lines of 17 entries.
    const std::size_t nLines = std::max<std::size_t>(5, (d.sats.size() + 16) / 17);
    for (std::size_t l = 0; l < nLines; ++l) {
        std::string line = l == 0 ? Fmt("+  %3zu   ", d.sats.size()) : std::string("+        ");
        for (std::size_t j = 17 * l; j < 17 * l + 17; ++j)
            line += j < d.sats.size() ? SatId(d.sats[j].number) : std::string("  0");
        out << line << "\n";
    }
    for (std::size_t l = 0; l < nLines; ++l) {
        std::string line = "++       ";
        // Accuracy exponent 2: 1.25^2 mm, the simulator's exactness being
        // limited by the file's millimetre resolution.
        for (std::size_t j = 17 * l; j < 17 * l + 17; ++j) line += j < d.sats.size() ? "  2" : "  0";
        out << line << "\n";
    }
    const char sys = FileSystem(o);
    out << Fmt("%%c %c  cc GPS ccc cccc cccc cccc cccc ccccc ccccc ccccc ccccc\n", sys);
    out << "%c cc cc ccc ccc cccc cccc cccc cccc ccccc ccccc ccccc ccccc\n";
    out << "%f  1.2500000  1.025000000  0.00000000000  0.000000000000000\n";
    out << "%f  0.0000000  0.000000000  0.00000000000  0.000000000000000\n";
    out << "%i    0    0    0    0      0      0      0      0         0\n";
    out << "%i    0    0    0    0      0      0      0      0         0\n";
    out << "/* orvo-simulate: simulated Keplerian orbits with J2 drift\n";
    out << "/* clocks: polynomial without periodic relativistic term\n";
    out << "/* time system GPS, Earth-fixed frame of the simulator\n";
    out << "/* created " << Now() << "\n";
    for (long double t : d.orbitTimes) {
        const ymdhms c = Calendar(d, t);
        out << Fmt("*  %4u %2u %2u %2u %2u %11.8Lf\n", c.GetYear(), c.GetMonth(), c.GetDay(),
                   c.GetHour(), c.GetMinute(), c.GetSecond());
        for (const SimSatellite& s : d.sats) {
            const SimVec p = EarthFixedPosition(s, t);
            out << Fmt("P%s%14.6Lf%14.6Lf%14.6Lf%14.6Lf\n", SatId(s.number).c_str(), p.x / 1000.0L,
                       p.y / 1000.0L, p.z / 1000.0L, ClockModel(s, t) * 1e6L);
        }
    }
    out << "EOF\n";
    Close(out, path);
}

void WriteClockRinex(const SimData& d, const std::string& path)
{
    std::ofstream out = Open(path);
    out << Label(Fmt("%9.2f%11s%-20s%-20s", 3.00, "", "C", std::string(1, FileSystem(d.opt)).c_str()),
                 "RINEX VERSION / TYPE");
    out << Label(Fmt("%-20s%-20s%-20s", "orvo-simulate", "Orvo", Now().c_str()), "PGM / RUN BY / DATE");
    out << Label("SIMULATED SATELLITE CLOCKS (POLYNOMIAL, NO PERIODIC", "COMMENT");
    out << Label("RELATIVISTIC TERM), TIME SYSTEM GPS", "COMMENT");
    out << Label("   GPS", "TIME SYSTEM ID");
    out << Label(Fmt("%6d    AS", 1), "# / TYPES OF DATA");
    out << Label("SIM  Orvo simulator", "ANALYSIS CENTER");
    out << Label(Fmt("%6d    %-50s", 0, "IGS14"), "# OF SOLN STA / TRF");
    out << Label(Fmt("%6zu", d.sats.size()), "# OF SOLN SATS");
    for (std::size_t l = 0; l < (d.sats.size() + 14) / 15; ++l) {
        std::string line;
        for (std::size_t j = 15 * l; j < std::min(d.sats.size(), 15 * l + 15); ++j)
            line += SatId(d.sats[j].number) + " ";
        out << Label(line, "PRN LIST");
    }
    out << Label("", "END OF HEADER");
    for (long double t : d.clockTimes) {
        const ymdhms c = Calendar(d, t);
        for (const SimSatellite& s : d.sats)
            out << Fmt("AS %-4s %4u %2u %2u %2u %2u%10.6Lf%3d  %19.12LE\n", SatId(s.number).c_str(),
                       c.GetYear(), c.GetMonth(), c.GetDay(), c.GetHour(), c.GetMinute(),
                       c.GetSecond(), 1, ClockModel(s, t));
    }
    Close(out, path);
}

void WriteGlonassChannels(const SimData& d, const std::string& path)
{
    std::ofstream out = Open(path);
    out << "# GLONASS frequency channels of the simulated constellation (orvo-simulate)\n";
    out << "# slot     from                    to (blank: open)    channel\n";
    const ymdhms c = Calendar(d, d.orbitTimes.front());
    for (const SimSatellite& s : d.sats)
        if (s.number > 100 && s.number < 200)
            out << Fmt("R%02d       %4u %02u %02u %02u %02u%5.1Lf%20s%d\n", Prn(s.number), c.GetYear(),
                       c.GetMonth(), c.GetDay(), c.GetHour(), c.GetMinute(), c.GetSecond(), "",
                       s.channel);
    Close(out, path);
}

void WriteTruth(const SimData& d, const std::string& path)
{
    const SimOptions& o = d.opt;
    std::ofstream out = Open(path);
    out << "# orvo-simulate truth of station " << o.marker << "\n";
    out << Fmt("MARKER XYZ (m)          %15.4Lf %15.4Lf %15.4Lf\n", d.marker.x, d.marker.y, d.marker.z);
    out << Fmt("ARP XYZ (m)             %15.4Lf %15.4Lf %15.4Lf\n", d.arp.x, d.arp.y, d.arp.z);
    out << Fmt("ECCENTRICITY H/E/N (m)  %15.4Lf %15.4Lf %15.4Lf\n", o.eccH, o.eccE, o.eccN);
    out << Fmt("HEADER XYZ (m)          %15.4Lf %15.4Lf %15.4Lf\n", d.approx.x, d.approx.y, d.approx.z);
    out << Fmt("ARP LAT LON (deg) H (m) %15.10Lf %15.10Lf %15.4Lf\n", d.lat * 180.0L / Pi,
               d.lon * 180.0L / Pi, d.h);
    out << Fmt("NOISE CODE PHASE (m)    %15.4Lf %15.4Lf\n", o.sigCode, o.sigPhase);
    out << "# epoch: MJD, second of day (time tag), zenith hydrostatic and wet delay (m),\n";
    out << "#        receiver clock (s, with millisecond steps)\n";
    for (const SimEpoch& ep : d.epochs) {
        mjd m(d.mjday, 0.0L);
        m += ep.t;
        out << Fmt("%6lu %9.3Lf %10.6Lf %10.6Lf %18.12Lf\n", m.GetMJDay(), m.GetSecond(), ep.zhd,
                   ep.zwd, ep.rxClock);
    }
    Close(out, path);
}

SimFileNames WriteAll(const SimData& d)
{
    const SimFileNames n = FileNames(d);
    const std::string dir = d.opt.outDir + "/";
    {
        // All checks before the first result file: a folder that takes no
        // files must not leave half a data set behind.
        const std::string probe = dir + n.truth;
        std::ofstream test(probe, std::ios::binary);
        if (!test) ProgramError("Orvo", "orvo-simulate: folder " + d.opt.outDir + " can not be written");
    }
    WriteRinexObs(d, dir + n.obs);
    WriteSP3(d, dir + n.sp3);
    WriteClockRinex(d, dir + n.clk);
    if (d.opt.useGLN) WriteGlonassChannels(d, dir + n.glnfc);
    WriteTruth(d, dir + n.truth);
    return n;
}
