#pragma once
// Shared by the staging and correction tests: a context owned with its
// observation objects, cut variants of the real ESBC day, the stages run as
// main runs them, and an independent signal geometry from the SP3 nodes.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "TestSupport.h"
#include "driver/ReadFiles.h"
#include "driver/SetFiles.h"
#include "numerics/NearLD.h"
#include "preprocessing/ApplyCorrections.h"
#include "preprocessing/GetReceiverProperties.h"
#include "driver/CheckArguments.h"
#include "driver/ParseArguments.h"
#include "driver/ProcessingStages.h"

namespace stagingtest {

using orvotest::Capture;
using V3 = std::array<long double, 3>;

constexpr long double C = 299792458.0L;            // m/s
constexpr long double OmegaE = 7.2921151467e-5L;   // rad/s, IERS
constexpr long double NodeStep_s = 900.0L;         // SP3 node spacing

const std::string kSet = "esbc-2020-177/";
inline std::string Obs() { return orvotest::Data(kSet + "esbc1770.20o"); }
inline std::string Sp3() { return orvotest::Data(kSet + "GRG0MGXFIN_20201770000_01D_15M_ORB.SP3"); }
inline std::string Clk() { return orvotest::Data(kSet + "GRG0MGXFIN_20201770000_01D_30S_CLK.CLK"); }
inline std::string Nav() { return orvotest::Data(kSet + "esbc1770.20g"); }
inline std::string NavG() { return orvotest::Data(kSet + "esbc1770.20n"); }
inline std::string Channels() { return orvotest::Data(kSet + "esbc1770.20o.glnfc"); }

// Reference marker of the data set (IGb14, 2020.4822) and antenna height.
const V3 kRef = {3582104.7655L, 532590.1789L, 5232755.1393L};
constexpr long double kAntennaUp_m = 0.2160L;

/// Owns what a context refers to, built in the order main builds it.
struct Context {
    RINEXHeader rnxh;
    RINEXData rnxd{rnxh};
    RINEX rnx{rnxh, rnxd};
    gCPosC gc{rnxh, rnxd, rnx};
};

inline bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }
inline bool IsGlonass(short prn) { return prn > 100 && prn < 200; }
inline std::string SatName(short prn)
{
    char s[8];
    std::snprintf(s, sizeof s, "%c%02d", prn > 200 ? 'E' : (prn > 100 ? 'R' : 'G'), prn % 100);
    return s;
}

/// Writes into the scratch folder a copy of a file with every line passed
/// through `edit`, which may change it or return false to drop it.
inline std::string EditFile(const std::string& from, const std::string& name,
                            const std::function<bool(std::string&)>& edit)
{
    std::ifstream in(from);
    std::ostringstream out;
    for (std::string line; std::getline(in, line);)
        if (edit(line)) out << line << "\n";
    return orvotest::WriteTemp(name, out.str());
}

inline void SetName(char* member, const std::string& name)
{
    ASSERT_LT(name.size(), static_cast<size_t>(gCPosCns::FileNameSize));
    std::strcpy(member, name.c_str());
}

/// Chooses the records of one epoch to keep from its satellite fields
/// ("G05", "E11", ...).
using Selector = std::function<std::vector<bool>(const std::vector<std::string>&)>;
inline std::vector<bool> KeepAll(const std::vector<std::string>& sats) { return std::vector<bool>(sats.size(), true); }

/// Writes into the scratch folder a RINEX file cut from the real one: its
/// header (with `replaceFrom` replaced by `replaceTo` in the header, when
/// given), then `nEpochs` epochs from epoch `first`, each with the records
/// that `keep` chooses. Returns the path.
inline std::string CutObs(const std::string& name, long first, long nEpochs, const Selector& keep = KeepAll,
                          const std::string& replaceFrom = "", const std::string& replaceTo = "")
{
    std::ifstream in(Obs());
    std::ostringstream out;
    std::string line;
    int nTypes = 0;
    while (std::getline(in, line)) {
        if (line.find("# / TYPES OF OBSERV") != std::string::npos && nTypes == 0)
            nTypes = std::atoi(line.substr(0, 6).c_str());
        const size_t p = replaceFrom.empty() ? std::string::npos : line.find(replaceFrom);
        if (p != std::string::npos && p < 60) line.replace(p, replaceFrom.size(), replaceTo);
        out << line << "\n";
        if (line.find("END OF HEADER") != std::string::npos) break;
    }
    const int linesPerRecord = (nTypes + 4) / 5;
    for (long e = 0; e < first + nEpochs && std::getline(in, line); ++e) {
        const std::string head = line.substr(0, 29);
        const int n = std::atoi(line.substr(29, 3).c_str());
        std::vector<std::string> sats, records(n);
        for (int s = 0; s < n; ++s) {
            if (s > 0 && s % 12 == 0) std::getline(in, line);
            sats.push_back(line.substr(32 + 3 * (s % 12), 3));
        }
        for (int s = 0; s < n; ++s)
            for (int l = 0; l < linesPerRecord && std::getline(in, line); ++l) records[s] += line + "\n";
        if (e < first) continue;
        const std::vector<bool> k = keep(sats);
        std::vector<int> idx;
        for (int s = 0; s < n; ++s)
            if (k[s]) idx.push_back(s);
        char count[8];
        std::snprintf(count, sizeof count, "%3d", static_cast<int>(idx.size()));
        out << head << count;
        for (size_t s = 0; s < idx.size(); ++s) out << (s > 0 && s % 12 == 0 ? "\n" + std::string(32, ' ') : "") << sats[idx[s]];
        out << "\n";
        for (int s : idx) out << records[s];
    }
    return orvotest::WriteTemp(name, out.str());
}

/// The clock file cut to the satellite records of minutes [from, to] of
/// the day, without satellite `drop`, so that a stage reads little.
inline std::string CutClk(const std::string& name, int from, int to, const std::string& drop = "")
{
    bool body = false;
    return EditFile(Clk(), name, [&](std::string& line) {
        if (!body) return body = Has(line, "END OF HEADER"), true;
        if (line.size() < 30 || line.compare(0, 2, "AS") != 0) return false;
        const int minute = std::atoi(line.substr(19, 2).c_str()) * 60 + std::atoi(line.substr(22, 2).c_str());
        return minute >= from && minute <= to && (drop.empty() || line.compare(3, 3, drop) != 0);
    });
}

/// What a stage run needs beyond the observation file; the stages run in
/// main's order up to `upTo`: 0 read, 1 station properties, 2 corrections.
struct Options {
    std::string obs, sp3 = Sp3(), clk, channels, nav, sky, rcvClock, atx, blq, erp, gnav;
    bool gal = true, gln = false, tropo = false, estTropo = false, tropEphFile = false;
    int upTo = 2;
    bool quiet = true;  // false: both streams stay as they are (death tests read them)
    std::function<void(Context&)> beforeProps;  // a change to the file as read
};

/// Runs the stages on c; returns what they printed on the output stream
/// (the error stream goes to err when given).
inline std::string Stage(Context& c, const Options& o, std::string* err = nullptr)
{
    gCPosC& g = c.gc;
    SetName(g.rnxfile, o.obs);
    g.isRnx = g.isGPS = true;
    g.isGAL = o.gal;
    g.isGLN = o.gln;
    const std::tuple<const std::string&, char*, bool&> files[] = {
        {o.sp3, g.sp3file, g.isPEph},        {o.clk, g.pclkfile, g.isPclk}, {o.channels, g.glnfreqch, g.isGLNfrch},
        {o.nav, g.rnavfile, g.isGLNnav}, {o.sky, g.skyplotfile, g.isSkyPlot}, {o.rcvClock, g.clkFName, g.isClkErr},
        {o.atx, g.atxfile, g.isAtx}, {o.blq, g.otidefile, g.isOTide}, {o.erp, g.ptidefile, g.isPTide},
        {o.gnav, g.gnavfile, g.isGPSnav}};
    for (const auto& f : files)
        if (!std::get<0>(f).empty()) {
            SetName(std::get<1>(f), std::get<0>(f));
            std::get<2>(f) = true;
        }
    if (o.tropo) {
        g.isTrpModel = true;
        g.TrpModel = g.TrpMappFun = 0;  // Saastamoinen, Niell
        g.ifEstTropo = g.ifEstTropoGrad = o.estTropo;
        g.isOutTropEphFile = o.tropEphFile;
    }
    std::unique_ptr<Capture> out(o.quiet ? new Capture(std::cout) : nullptr), e(o.quiet ? new Capture(std::cerr) : nullptr);
    SetFiles(g);
    ReadFiles(g);
    if (o.beforeProps) o.beforeProps(c);
    if (o.upTo >= 1) GetReceiverProperties(g);
    if (o.upTo >= 2) ApplyCorrections(g);
    if (err != nullptr && e) *err = e->Text();
    return out ? out->Text() : "";
}

/// Record indices of epoch ix of a store.
inline std::vector<long> Records(const RINEXData& d, long ix)
{
    long k = 0;
    for (long i = 0; i < ix; ++i) k += d.nsat(i);
    std::vector<long> out(d.nsat(ix));
    for (long& r : out) r = k++;
    return out;
}

/// Parses `options` (files by full path) into c and runs main's stages from
/// the reading up to the L3 filter: what the last two preprocessing stages
/// find. The report goes to `report` when given.
inline void PreprocessDay(Context& c, const std::string& options, std::string* report = nullptr)
{
    std::vector<std::string> words{"orvo"};
    std::istringstream in(options);
    for (std::string w; in >> w;) words.push_back(w);
    std::vector<const char*> argv;
    for (const std::string& w : words) argv.push_back(w.c_str());
    Capture out(std::cout), err(std::cerr);
    gCPosC& g = c.gc;
    ParseArguments(g, static_cast<int>(argv.size()), argv.data());
    CheckArguments(g);
    SetFiles(g);
    ReadFiles(g);
    PrepareObservations(g);
    if (report != nullptr) *report = out.Text();
}

/// Options of a G+R run on the first nEpochs of the ESBC day with its
/// products and channels, ionosphere-free code and phase; extra appended.
inline std::string EsbcDay(long nEpochs, const std::string& extra = "")
{
    const std::string obs = orvotest::CutObs(Obs(), "esbc_day_" + std::to_string(nEpochs) + ".20o", nEpochs);
    return "-csGR -r" + obs + " -ep" + Sp3() + " -ec" + Clk() + " -gf" + Channels()
           + " -lPc3,L3 -tmSAAST,NIELL -ti02:00:00 -tg " + extra;
}

// ---- ANTEX files in the published layout ------------------------------------

/// One frequency of an ANTEX block: offset north, east, up (mm) and the
/// variation (mm) as a function of azimuth and zenith (degrees).
struct AtxFrequency {
    std::string code;  // "G01", "R02", ...
    long double n, e, u;
    std::function<long double(long double, long double)> pcv;
};

/// One antenna block: the 20-column type and the 20-column serial field,
/// the azimuth step (0: no azimuth rows) and a zenith grid 0..zen2.
struct AtxBlock {
    std::string type, serial;
    long double dazi = 0.0L, zen2 = 90.0L, dzen = 5.0L;
    std::vector<AtxFrequency> freqs;
};

inline std::string AtxLine(const std::string& body, const std::string& label)
{
    std::string l = body;
    l.resize(60, ' ');
    return l + label + "\n";
}

/// Writes the blocks as an ANTEX 1.4 file into the scratch folder.
inline std::string WriteAntex(const std::string& name, const std::vector<AtxBlock>& blocks)
{
    auto fmt = [](const char* f, long double v) { char b[32]; std::snprintf(b, sizeof b, f, static_cast<double>(v)); return std::string(b); };
    std::string t = AtxLine("     1.4            M", "ANTEX VERSION / SYST") + AtxLine("A", "PCV TYPE / REFANT") + AtxLine("", "END OF HEADER");
    for (const AtxBlock& b : blocks) {
        std::string ts = b.type;
        ts.resize(20, ' ');
        t += AtxLine("", "START OF ANTENNA") + AtxLine(ts + b.serial, "TYPE / SERIAL NO") + AtxLine(fmt("%8.1f", b.dazi), "DAZI");
        t += AtxLine(fmt("%8.1f", 0.0L) + fmt("%6.1f", b.zen2) + fmt("%6.1f", b.dzen), "ZEN1 / ZEN2 / DZEN");
        t += AtxLine(fmt("%6.0f", b.freqs.size()), "# OF FREQUENCIES");
        const int nz = static_cast<int>(b.zen2 / b.dzen + 0.5L) + 1;
        for (const AtxFrequency& f : b.freqs) {
            t += AtxLine("   " + f.code, "START OF FREQUENCY");
            t += AtxLine(fmt("%10.2f", f.n) + fmt("%10.2f", f.e) + fmt("%10.2f", f.u), "NORTH / EAST / UP");
            const int na = b.dazi > 0.0L ? static_cast<int>(360.0L / b.dazi + 0.5L) + 1 : 0;
            for (int a = -1; a < na; ++a) {
                std::string row = a < 0 ? "   NOAZI" : fmt("%8.1f", a * b.dazi);
                for (int z = 0; z < nz; ++z) row += fmt("%8.2f", f.pcv(a < 0 ? 0.0L : a * b.dazi, z * b.dzen));
                t += row + "\n";
            }
            t += AtxLine("   " + f.code, "END OF FREQUENCY");
        }
        t += AtxLine("", "END OF ANTENNA");
    }
    return orvotest::WriteTemp(name, t);
}

// ---- Independent geometry from the SP3 nodes ------------------------------

inline long double Norm(const V3& a) { return std::sqrt(a[0] * a[0] + a[1] * a[1] + a[2] * a[2]); }
inline V3 Sub(const V3& a, const V3& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
inline long double Dot(const V3& a, const V3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

/// East, north, up axes of a point on GRS80 (latitude by fixed-point iteration).
inline std::array<V3, 3> Enu(const V3& p)
{
    const long double a = 6378137.0L, f = 1.0L / 298.257222101L, e2 = f * (2.0L - f);
    const long double lon = std::atan2(p[1], p[0]), rho = std::hypot(p[0], p[1]);
    long double lat = std::atan2(p[2], rho * (1.0L - e2));
    for (int i = 0; i < 10; ++i)
        lat = std::atan2(p[2] + e2 * a / std::sqrt(1.0L - e2 * std::sin(lat) * std::sin(lat)) * std::sin(lat), rho);
    const long double sf = std::sin(lat), cf = std::cos(lat), sl = std::sin(lon), cl = std::cos(lon);
    return {V3{-sl, cl, 0.0L}, V3{-sf * cl, -sf * sl, cf}, V3{cf * cl, cf * sl, sf}};
}

/// The antenna point: the marker raised by the antenna height along its normal.
inline V3 AntennaPoint(const V3& m)
{
    const V3 u = Enu(m)[2];
    return {m[0] + kAntennaUp_m * u[0], m[1] + kAntennaUp_m * u[1], m[2] + kAntennaUp_m * u[2]};
}

struct Sp3Sat {
    V3 p;             // m
    long double clk;  // s
};

/// Positions and clocks of all satellites at the SP3 node `minute` of the day.
inline const std::map<std::string, Sp3Sat>& Sp3Node(int minute)
{
    static std::map<int, std::map<std::string, Sp3Sat>> cache;
    if (cache.count(minute)) return cache[minute];
    std::map<std::string, Sp3Sat>& out = cache[minute];
    std::ifstream in(Sp3());
    char want[40];
    std::snprintf(want, sizeof want, "*  2020  6 25 %2d %2d  0.00000000", minute / 60, minute % 60);
    bool inEpoch = false;
    for (std::string line; std::getline(in, line) && !(inEpoch && line[0] == '*');) {
        inEpoch = inEpoch || line.compare(0, std::strlen(want), want) == 0;
        if (!inEpoch || line.size() < 60 || line[0] != 'P') continue;
        Sp3Sat& s = out[line.substr(1, 3)];
        for (int c = 0; c < 3; ++c) s.p[c] = 1000.0L * std::strtold(line.substr(4 + 14 * c, 14).c_str(), nullptr);
        s.clk = 1e-6L * std::strtold(line.substr(46, 14).c_str(), nullptr);
    }
    return out;
}

/// A signal of satellite sat received at rec at the SP3 node `minute`,
/// shifted by the receiver clock rcv_s: the satellite moves on the
/// quadratic through three nodes; the light time is iterated with the
/// Earth's turn during the flight.
struct Emission {
    bool ok = false;
    V3 p{}, xs{}, v{};      // emission position (frame of emission), same turned to reception, velocity
    long double rho = 0.0L; // range in the reception frame, m
};

inline Emission Emit(const std::string& sat, int minute, const V3& rec, long double rcv_s = 0.0L)
{
    Emission e;
    const auto &nm = Sp3Node(minute - 15), &n0 = Sp3Node(minute), &np = Sp3Node(minute + 15);
    if (!nm.count(sat) || !n0.count(sat) || !np.count(sat)) return e;
    const V3 &a = nm.at(sat).p, &b = n0.at(sat).p, &c = np.at(sat).p;
    long double tau = 0.07L;
    for (int it = 0; it < 6; ++it, tau = e.rho / C) {
        const long double s = -(rcv_s + tau), th = OmegaE * tau;
        for (int k = 0; k < 3; ++k) {
            const long double v1 = (c[k] - a[k]) / (2.0L * NodeStep_s), acc = (c[k] - 2.0L * b[k] + a[k]) / (NodeStep_s * NodeStep_s);
            e.p[k] = b[k] + s * v1 + 0.5L * s * s * acc;
            e.v[k] = v1 + s * acc;
        }
        e.xs = {e.p[0] * std::cos(th) + e.p[1] * std::sin(th), -e.p[0] * std::sin(th) + e.p[1] * std::cos(th), e.p[2]};
        e.rho = Norm(Sub(e.xs, rec));
    }
    e.ok = true;
    return e;
}

}  // namespace stagingtest
