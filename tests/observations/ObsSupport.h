#pragma once
// Shared by the observation tests: the real files (read once per process,
// or cut at epoch boundaries), RINEX 2 texts and record stores made up by
// the tests, the program-wide GLONASS tables kept per test, and stops.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <tuple>

#include "TestSupport.h"
#include "numerics/NearLD.h"
#include "observations/AmbRecord.h"
#include "observations/CheckRNXEpochs.h"
#include "observations/ExcludeProblemSat.h"
#include "observations/GLC.h"
#include "observations/LinearCombinations.h"
#include "numerics/InputFile.h"
#include "observations/CompactRinex.h"
#include "observations/RINEX.h"

// A statement that must end the run with status 1 and text matching re.
// The frames go to the output stream, which a death test does not see.
#define EXPECT_STOP(stmt, re) \
    EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); stmt; }, ::testing::ExitedWithCode(1), re)

namespace obstest {

using namespace orvotest;

const std::string kEsbc = "esbc-2020-177/esbc1770.20o", kZimm = "zimm-2015-235/ZIMM2350.15O";
// Speed of light, m/s, and one millisecond of receiver clock as range, m.
constexpr long double C = 299792458.0L, MSm = 299792.458L;

/// Header and data of a file read by the program's reader.
struct Loaded {
    RINEXHeader h;
    RINEXData d{h};
    RINEX r{h, d};
    explicit Loaded(const std::string& path, bool keepAuxiliary = true)
    {
        d.KeepAuxiliary(keepAuxiliary);
        r.SetFile(path);
        r.ReadFile();
    }
};

/// A whole real file, read once per process: reading the ESBC day takes a
/// few tenths of a second. A test that changes it puts it back.
inline Loaded& Load(const std::string& rel)
{
    static std::map<std::string, std::unique_ptr<Loaded>> cache;
    if (!cache[rel]) cache[rel] = std::make_unique<Loaded>(Data(rel));
    return *cache[rel];
}

/// The first nEpochs epochs of a real file, written once per process. An
/// epoch line of these files begins with a blank and the two-digit year,
/// so the cut falls before the epoch line that opens epoch nEpochs + 1.
inline std::string CutFile(const std::string& rel, int nEpochs)
{
    const std::string name = "cut_" + std::to_string(nEpochs) + "_" + rel.substr(rel.find('/') + 1);
    if (!ReadFile(TempDir() + "/" + name).empty()) return TempDir() + "/" + name;
    std::ifstream in(Data(rel));
    std::string line, out, year;
    for (int epochs = 0; std::getline(in, line); out += line + "\n") {
        if (line.find("TIME OF FIRST OBS") != std::string::npos) year = " " + line.substr(4, 2) + " ";
        if (line.size() > 32 && line.compare(0, 4, year) == 0 && line[18] == '.' && ++epochs > nEpochs) break;
    }
    return WriteTemp(name, out);
}

/// Fills the GLONASS tables from the real side file ("R01 1" per line).
inline void SetGlonassChannels()
{
    std::ifstream in(Data("esbc-2020-177/esbc1770.20o.glofrq"));
    std::string slot;
    for (long double k = 0; in >> slot >> k;) GLONASSc::SetFrequency(k, static_cast<short>(std::stoi(slot.substr(1)) - 1));
}

/// The program-wide working coefficients and GLONASS tables.
inline auto Globals()
{
    return std::tie(GLC::LCion1, GLC::LCion2, GLC::LCwl1, GLC::LCwl2, GLC::LCnl1, GLC::LCnl2, GLC::lamb1, GLC::lamb2,
                    GLC::lamb5, GLC::lamb3, GLC::lamb8, GLC::alpha, GLONASSc::freq, GLONASSc::lamb,
                    GLONASSc::lambWL, GLONASSc::lambNL, GLONASSc::alphaG);
}
inline auto GlobalsCopy() { return std::apply([](auto&... g) { return std::make_tuple(g...); }, Globals()); }

/// Keeps the globals of before a test, clears every GLONASS row (as at
/// program start), and puts everything back afterwards.
class GlobalsGuard {
public: GlobalsGuard()
    {
        for (auto* m : {&GLONASSc::freq, &GLONASSc::lamb, &GLONASSc::lambWL, &GLONASSc::lambNL, &GLONASSc::alphaG})
            m->Resize(GLONASSc::NSlots, m->NCol(), 0.0L);
    }
    ~GlobalsGuard() { Globals() = saved_; }

private: decltype(GlobalsCopy()) saved_ = GlobalsCopy();
};

/// First record of each epoch of a store, then nsatall.
inline std::vector<long> EpochStarts(const RINEXData& d)
{
    std::vector<long> start{0};
    for (long i = 0; i < d.nepochall; ++i) start.push_back(start.back() + d.nsat(i));
    return start;
}

/// A made-up record store: epochs at t (s after midnight of 2020-06-25, MJD
/// 59025; 30 s apart where t is short), each holding the satellites listed
/// for it; the given types present, sized and null; elevations 1 rad.
struct Store {
    RINEXHeader h;
    RINEXData d{h};
    matrix<long double> elev;
    std::vector<long> start;

    explicit Store(const std::vector<std::vector<short>>& sats, const std::vector<unsigned short>& types = {},
                   std::vector<long double> t = {})
    {
        const long ne = static_cast<long>(sats.size());
        d.SetNRecords(ne, 0);
        d.epoch.Resize(ne, 1);
        d.flag.Resize(ne, 1, '0');
        d.nsat.Resize(ne, 1);
        for (long i = 0; i < ne; d.nsatall += d.nsat(i++)) {
            d.epoch(i) = mjd(59025, i < static_cast<long>(t.size()) ? t[i] : 30.0L * i);
            d.nsat(i) = static_cast<short>(sats[i].size());
        }
        d.sat.Resize(d.nsatall, 1);
        start = EpochStarts(d);
        for (long i = 0; i < ne; ++i) std::copy(sats[i].begin(), sats[i].end(), &d.sat(start[i]));
        d.satList = UniqList(d.sat);
        for (unsigned short ty : types) *h.PresenceFlag(ty) = true, d.ObsMatrix(ty)->Resize(d.nsatall, 1, gnssobs());
        d.iend = ne;
        elev.Resize(d.nsatall, 1, 1.0L);
    }
    /// Record of satellite s at epoch i, -1 when absent.
    long Rec(long i, short s) const
    {
        for (long r = start[i]; r < start[i + 1]; ++r)
            if (d.sat(r) == s) return r;
        return -1;
    }
    /// m of satellite s at every epoch i that holds it set to f(i).
    void Set(matrix<gnssobs>& m, short s, const std::function<long double(long)>& f)
    {
        for (long i = 0; i < d.nepochall; ++i)
            if (Rec(i, s) >= 0) m(Rec(i, s)) = f(i);
    }
};

// ---- RINEX 2 text made up by the tests --------------------------------

/// A header line: text in columns 0-59, the label from column 60.
inline std::string HLine(std::string text, const std::string& label) { return text.resize(60, ' '), text + label + "\n"; }

/// "# / TYPES OF OBSERV" lines, nine types a line.
inline std::string TypesLines(const std::vector<std::string>& types)
{
    char n[8];
    std::snprintf(n, sizeof n, "%6zu", types.size());
    std::string out, text = n;
    for (std::size_t k = 0; k < types.size(); k++) {
        if (k > 0 && k % 9 == 0) out += HLine(text, "# / TYPES OF OBSERV"), text = "      ";
        text += "    " + types[k];
    }
    return out + HLine(text, "# / TYPES OF OBSERV");
}

struct Epoch {
    int yy, mo, dd, hh, mi;
    double sec;
    std::vector<std::string> sats;
    char flag = '0';
    bool clock = false;
    double clk = 0.0;
};

/// Value of satellite s, type k at epoch i: distinct for every field, so a
/// field read into the wrong column or record shows.
inline double Value(long i, long s, long k) { return 20000000.0 + 100000.0 * i + 1000.0 * s + k + 0.125; }

/// A whole file: version line, types, extra header lines, END OF HEADER,
/// then the epochs (twelve satellites a line, the clock offset at column
/// 68) with every field Value(i, s, k), lli k % 10, ss 5, five a line.
inline std::string File(const std::vector<std::string>& types, const std::vector<Epoch>& epochs,
                        const std::string& extraHeader = "")
{
    std::string out = HLine("     2.11           OBSERVATION DATA    M (MIXED)", "RINEX VERSION / TYPE")
                      + TypesLines(types) + extraHeader + HLine("", "END OF HEADER");
    char buf[128];
    for (std::size_t i = 0; i < epochs.size(); i++) {
        const Epoch& e = epochs[i];
        std::snprintf(buf, sizeof buf, " %02d %2d %2d %2d %2d%11.7f  %c%3zu", e.yy, e.mo, e.dd, e.hh, e.mi, e.sec,
                      e.flag, e.sats.size());
        std::string line = buf;
        for (std::size_t s = 0; s < e.sats.size(); s++) {
            if (s > 0 && s % 12 == 0) out += line + "\n", line = std::string(32, ' ');
            line += e.sats[s];
            if (s == std::min<std::size_t>(11, e.sats.size() - 1) && e.clock)
                std::snprintf(buf, sizeof buf, "%12.9f", e.clk), line.resize(68, ' '), line += buf;
        }
        out += line + "\n";
        for (std::size_t s = 0; s < e.sats.size(); s++)
            for (std::size_t k = 0; k < types.size(); k++) {
                std::snprintf(buf, sizeof buf, "%14.3f%zu5%s", Value(i, s, k), k % 10, k % 5 == 4 || k + 1 == types.size() ? "\n" : "");
                out += buf;
            }
    }
    return out;
}

/// Satellites letter01 .. letterNN.
inline std::vector<std::string> Sats(const std::string& letter, int n)
{
    std::vector<std::string> v;
    for (int p = 1; p <= n; p++) v.push_back(letter + (p < 10 ? "0" : "") + std::to_string(p));
    return v;
}

/// Number of times pattern occurs in text.
inline int Occurrences(const std::string& text, const std::string& pattern)
{
    int n = 0;
    for (std::size_t p = text.find(pattern); p != std::string::npos; p = text.find(pattern, p + 1)) n++;
    return n;
}

}  // namespace obstest
