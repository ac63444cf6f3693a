#include "SimCompare.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>

#include "geodesy/TimeConverse.h"
#include "geodesy/mjd.h"
#include "geodesy/ymdhms.h"
#include "numerics/ProgramError.h"

// Geodetic lives with the observations: the comparison uses the same
// ellipsoid and iteration as the simulation that placed the marker.
#include "SimObservations.h"

namespace {

[[noreturn]] void BadFile(const std::string& path, const std::string& why)
{
    ProgramError("Orvo", "orvo-simulate --compare: " + path + ": " + why);
}

std::ifstream OpenOrStop(const std::string& path)
{
    std::ifstream in(path);
    if (!in) BadFile(path, "can not be opened");
    return in;
}

// Three numbers behind a label of the truth head: the label text ends
// before column 25, the numbers follow in free form.
bool ReadVector(const std::string& line, const std::string& label, SimVec& v)
{
    if (line.compare(0, label.size(), label) != 0) return false;
    std::istringstream f(line.substr(label.size()));
    f >> v.x >> v.y >> v.z;
    return !f.fail();
}

// Seconds from the first truth epoch to day number and second of day.
long double SecondsFrom(unsigned long day0, long double sec0, unsigned long day, long double sec)
{
    const long double days = static_cast<long double>(day) - static_cast<long double>(day0);
    return days * 86400.0L + (sec - sec0);
}

}  // namespace

SimTruth ReadTruth(const std::string& path)
{
    std::ifstream in = OpenOrStop(path);
    SimTruth t;
    bool hasMarker = false, hasArp = false, hasApprox = false, hasEcc = false;
    std::string line;
    long lineNo = 0;
    while (std::getline(in, line)) {
        ++lineNo;
        if (line.empty() || line[0] == '#') continue;
        SimVec ecc;
        if (ReadVector(line, "MARKER XYZ (m)", t.marker)) { hasMarker = true; continue; }
        if (ReadVector(line, "ARP XYZ (m)", t.arp)) { hasArp = true; continue; }
        if (ReadVector(line, "HEADER XYZ (m)", t.approx)) { hasApprox = true; continue; }
        if (ReadVector(line, "ECCENTRICITY H/E/N (m)", ecc)) {
            t.eccH = ecc.x;
            t.eccE = ecc.y;
            t.eccN = ecc.z;
            hasEcc = true;
            continue;
        }
        // Remaining head records (geodetic position, noise) carry letters
        // in the first column; epoch lines start with blanks and digits.
        if (std::isalpha(static_cast<unsigned char>(line[0]))) continue;
        std::istringstream f(line);
        long double day = 0.0L, sec = 0.0L, zhd = 0.0L, zwd = 0.0L, clk = 0.0L;
        f >> day >> sec >> zhd >> zwd >> clk;
        if (f.fail() || day < 0.0L || sec < 0.0L || sec > 86401.0L)
            BadFile(path, "epoch line " + std::to_string(lineNo) + " is not readable");
        t.mjday.push_back(static_cast<unsigned long>(day));
        t.second.push_back(sec);
        t.zhd.push_back(zhd);
        t.zwd.push_back(zwd);
        t.rxClock.push_back(clk);
    }
    if (!hasMarker || !hasArp || !hasApprox || !hasEcc)
        BadFile(path, "no truth file of orvo-simulate (position records missing)");
    return t;
}

SimVec ReadStaticPlot(const std::string& path)
{
    std::ifstream in = OpenOrStop(path);
    std::string head, data;
    // The head line opens with "#   EPOCH"; the data line follows it.
    if (!std::getline(in, head) || head.compare(0, 9, "#   EPOCH") != 0)
        BadFile(path, "no static plot file of orvo (head line missing)");
    if (!std::getline(in, data) || data.empty()) BadFile(path, "no data line");
    if (data[0] == '#') BadFile(path, "the adjustment gave no solution (data line commented out)");
    // Read from the end: X, Y, Z stand before the six cofactors and the
    // marker name (one word, as the simulator writes it). Counting from the
    // front would fail on a bad solution, whose s0 and global test overflow
    // their 10 columns and run into one word.
    std::istringstream f(data);
    std::vector<std::string> words;
    for (std::string w; f >> w;) words.push_back(w);
    if (words.size() < 12) BadFile(path, "data line has no coordinates");
    const std::size_t ix = words.size() - 10;
    SimVec p;
    std::istringstream xyz(words[ix] + " " + words[ix + 1] + " " + words[ix + 2]);
    xyz >> p.x >> p.y >> p.z;
    if (xyz.fail()) BadFile(path, "data line has no coordinates");
    return p;
}

std::vector<SimTropoNode> ReadTropoFile(const std::string& path)
{
    std::ifstream in = OpenOrStop(path);
    std::vector<SimTropoNode> nodes;
    std::string line;
    long lineNo = 0;
    while (std::getline(in, line)) {
        ++lineNo;
        if (line.empty() || line[0] == '#') continue;
        // Station name in columns 1-20, then the calendar epoch and the
        // delays.
        if (line.size() < 21) BadFile(path, "node line " + std::to_string(lineNo) + " is too short");
        unsigned short yy = 0, mo = 0, dd = 0, hh = 0, mi = 0;
        long double ss = 0.0L;
        SimTropoNode n;
        const int got = std::sscanf(line.c_str() + 20, "%hu-%hu-%hu %hu:%hu:%Lf %Lf %Lf", &yy, &mo,
                                    &dd, &hh, &mi, &ss, &n.dry, &n.wet);
        if (got != 8 || mo < 1 || mo > 12 || dd < 1 || dd > 31 || hh > 23 || mi > 59 || ss < 0.0L
            || ss >= 61.0L)
            BadFile(path, "node line " + std::to_string(lineNo) + " is not readable");
        const mjd m = ymdhms2mjd(ymdhms(yy, mo, dd, hh, mi, ss));
        n.mjday = m.GetMJDay();
        n.second = m.GetSecond();
        nodes.push_back(n);
    }
    return nodes;
}

void NorthEastUp(const SimVec& d, long double lat, long double lon, long double& n,
                 long double& e, long double& u)
{
    const long double sf = std::sin(lat), cf = std::cos(lat);
    const long double sl = std::sin(lon), cl = std::cos(lon);
    n = -sf * cl * d.x - sf * sl * d.y + cf * d.z;
    e = -sl * d.x + cl * d.y;
    u = cf * cl * d.x + cf * sl * d.y + sf * d.z;
}

bool TruthWetDelayAt(const SimTruth& truth, const SimTropoNode& node, long double& zwd)
{
    const std::size_t n = truth.second.size();
    if (n == 0) return false;
    const unsigned long day0 = truth.mjday[0];
    const long double sec0 = truth.second[0];
    const long double t = SecondsFrom(day0, sec0, node.mjday, node.second);
    // A node may coincide with an epoch up to the millisecond decimals of
    // the files.
    constexpr long double SameEpoch_s = 1e-3L;
    for (std::size_t i = 0; i < n; ++i) {
        const long double ti = SecondsFrom(day0, sec0, truth.mjday[i], truth.second[i]);
        if (std::fabs(ti - t) < SameEpoch_s) {
            zwd = truth.zwd[i];
            return true;
        }
        if (i + 1 < n) {
            const long double tj = SecondsFrom(day0, sec0, truth.mjday[i + 1], truth.second[i + 1]);
            if (t > ti && t < tj) {
                zwd = truth.zwd[i] + (truth.zwd[i + 1] - truth.zwd[i]) * (t - ti) / (tj - ti);
                return true;
            }
        }
    }
    return false;
}

void CompareWithTruth(const std::string& truthPath, const std::string& plotPath,
                      const std::string& tropoPath)
{
    // Read everything first: a bad file must stop before half a report.
    const SimTruth truth = ReadTruth(truthPath);
    const SimVec est = ReadStaticPlot(plotPath);
    std::vector<SimTropoNode> nodes;
    if (!tropoPath.empty()) nodes = ReadTropoFile(tropoPath);

    long double lat = 0.0L, lon = 0.0L, h = 0.0L;
    Geodetic(truth.marker, lat, lon, h);
    long double dn = 0.0L, de = 0.0L, du = 0.0L;
    NorthEastUp(est - truth.marker, lat, lon, dn, de, du);
    char buf[200];
    std::cout << "orvo-simulate: estimated marker minus truth\n";
    std::snprintf(buf, sizeof buf, "  north %10.4Lf m\n  east  %10.4Lf m\n  up    %10.4Lf m\n", dn,
                  de, du);
    std::cout << buf;
    if (tropoPath.empty()) return;
    std::cout << "orvo-simulate: zenith wet delay, estimated minus truth\n";
    long double worst = 0.0L;
    long used = 0;
    for (const SimTropoNode& n : nodes) {
        long double zwd = 0.0L;
        if (!TruthWetDelayAt(truth, n, zwd)) continue;
        mjd m(n.mjday, 0.0L);
        m += n.second;
        const ymdhms c = mjd2ymdhms(m);
        std::snprintf(buf, sizeof buf, "  %04u-%02u-%02u %02u:%02u  %10.4Lf m\n",
                      static_cast<unsigned>(c.GetYear()), static_cast<unsigned>(c.GetMonth()),
                      static_cast<unsigned>(c.GetDay()), static_cast<unsigned>(c.GetHour()),
                      static_cast<unsigned>(c.GetMinute()), n.wet - zwd);
        std::cout << buf;
        worst = std::max(worst, std::fabs(n.wet - zwd));
        ++used;
    }
    std::snprintf(buf, sizeof buf, "  largest of %ld nodes %10.4Lf m\n", used, worst);
    std::cout << buf;
}
