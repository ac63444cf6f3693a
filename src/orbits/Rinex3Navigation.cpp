#include "orbits/Rinex3Navigation.h"

#include <cmath>
#include <cstdlib>
#include <sstream>

#include "geodesy/TimeConverse.h"
#include "numerics/FieldText.h"
#include "numerics/ProgramError.h"

using fieldtext::TrimmedField;

namespace {

// The file's lines without their carriage returns.
std::vector<std::string> Lines(const std::string& content)
{
    std::vector<std::string> out;
    std::istringstream in(content);
    for (std::string l; fieldtext::NextLine(in, l);) out.push_back(l);
    return out;
}

// The header label: RINEX puts it in columns 61-80, and matching it there
// keeps a comment text from being taken for one.
bool Label(const std::string& line, const char* label)
{
    return line.size() > 60 && line.compare(60, std::string(label).size(), label) == 0;
}

bool Blank(const std::string& line) { return line.find_first_not_of(" \t") == std::string::npos; }

// A continuation line starts with 4 blanks (4X); a line of other text
// inside a record would shift every value after it.
bool Continues(const std::string& line) { return line.compare(0, 4, "    ") == 0; }

// Everything a reader of one file needs to name the place of a fault.
struct Where {
    const std::string& path;
    const std::string& prog;
    [[noreturn]] void Stop(long line, const std::string& text) const
    {
        ProgramErrorCout(prog, path + ": LINE " + std::to_string(line) + ": " + text);
    }
    // The number in [pos, pos + len) of line n: blank reads 0 (RINEX leaves
    // spare and unknown fields blank), a D exponent reads as E, anything
    // else that is no number ends the run rather than reading a shifted 0.
    long double Number(const std::string& line, long n, std::size_t pos, std::size_t len) const
    {
        std::string f = TrimmedField(line, pos, len);
        if (f.empty()) return 0.0L;
        for (char& c : f) c = (c == 'D' || c == 'd') ? 'E' : c;
        long double v = 0.0L;
        if (!fieldtext::ToLongDouble(f, v))
            Stop(n, "FIELD \"" + TrimmedField(line, pos, len) + "\" IS NOT A NUMBER!");
        return v;
    }
};

const char* const NoRecordLine = "LINE NEITHER STARTS NOR CONTINUES A RECORD!";

// Satellite (cols 1-3) and epoch (cols 5-23, I4 and five I2.2) of a
// record's first line; sys the wanted system letter. The fields are checked
// here, where the line is known, before ymdhms would stop on them unnamed.
void SatelliteAndEpoch(const std::string& line, long n, char sys, const Where& w, Rinex3NavRecord& r)
{
    static const int Days[12] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    static const struct { std::size_t pos, len; long lo, hi; } F[] = {
        {4, 4, 1901, 2199}, {9, 2, 1, 12}, {12, 2, 1, 31}, {15, 2, 0, 23}, {18, 2, 0, 59}, {21, 2, 0, 59}};
    long prn = 0, v[6] = {};
    bool ok = !line.empty() && line[0] == sys && fieldtext::ToLong(TrimmedField(line, 1, 2), prn)
              && prn >= 1 && prn <= 99;
    for (int i = 0; ok && i < 6; ++i)
        ok = fieldtext::ToLong(TrimmedField(line, F[i].pos, F[i].len), v[i]) && v[i] >= F[i].lo && v[i] <= F[i].hi;
    ok = ok && v[2] <= Days[v[1] - 1] && (v[1] != 2 || v[2] <= 28 || ymdhms::LeapYear(v[0]));
    if (!ok) w.Stop(n, "SATELLITE OR EPOCH \"" + line.substr(0, 23) + "\" NOT VALID!");
    r.sat = static_cast<short>((sys == 'R' ? 100 : sys == 'E' ? 200 : 0) + prn);
    r.toc.Set(static_cast<unsigned short>(v[0]), static_cast<unsigned short>(v[1]),
              static_cast<unsigned short>(v[2]), static_cast<unsigned short>(v[3]),
              static_cast<unsigned short>(v[4]), static_cast<long double>(v[5]));
    r.line = n;
}

// The record of system sys whose record line is lines[start] and whose
// lines run up to (not including) lines[end]; RINEX 4 puts the epoch line
// after the record line. Blank lines carry no field and are passed over, so
// that one inside a record shifts no value.
Rinex3NavRecord Record(const std::vector<std::string>& lines, std::size_t start, std::size_t end, bool v4,
                       char sys, const Where& w)
{
    using namespace Rinex3Navns;
    std::vector<std::size_t> k;
    for (std::size_t i = v4 ? start + 1 : start; i < end; ++i)
        if (!Blank(lines[i])) k.push_back(i);
    const int nValues = sys == 'R' ? NGlonassValues : NKeplerValues;
    // The epoch line's three values, then lines of four, rounded up.
    const std::size_t need = 1 + static_cast<std::size_t>((nValues - 3 + 3) / 4);
    if (k.size() < need)
        w.Stop(static_cast<long>(start) + 1, "RECORD \"" + TrimmedField(lines[start], 0, 14) + "\" IS CUT: "
                                                 + std::to_string(k.size()) + " OF " + std::to_string(need) + " LINES!");
    for (std::size_t i = 1; i < k.size(); ++i)
        if (!Continues(lines[k[i]])) w.Stop(static_cast<long>(k[i]) + 1, NoRecordLine);
    Rinex3NavRecord r;
    SatelliteAndEpoch(lines[k[0]], static_cast<long>(k[0]) + 1, sys, w, r);
    for (int j = 0; j < nValues; ++j) {
        const std::size_t line = k[j < 3 ? 0 : 1 + static_cast<std::size_t>((j - 3) / 4)];
        const std::size_t col = j < 3 ? EpochLineFirst + FieldWidth * static_cast<std::size_t>(j)
                                      : ContinuationFirst + FieldWidth * static_cast<std::size_t>((j - 3) % 4);
        r.values.push_back(w.Number(lines[line], static_cast<long>(line) + 1, col, FieldWidth));
    }
    return r;
}

// Galileo: F/NAV by message type (RINEX 4) or by data source bit 1 without
// the I/NAV bits 0 and 2 (RINEX 3, line 5 field 2).
bool IsFnav(const Rinex3NavRecord& r, const std::string& message)
{
    if (!message.empty()) return message == "FNAV";
    const long double ds = r.values[20];
    if (!(ds >= 0.0L && ds < 1024.0L)) return false;  // no source bits: taken as I/NAV
    const long bits = std::lround(ds);
    return (bits & 2) != 0 && (bits & 5) == 0;
}

// The Galileo records as the header comment of Rinex3Navigation.h tells.
std::vector<Rinex3NavRecord> ChooseGalileo(const std::vector<Rinex3NavRecord>& all, const std::vector<bool>& fnav)
{
    std::vector<mjd> t;
    for (const Rinex3NavRecord& r : all) t.push_back(ymdhms2mjd(r.toc));
    auto near = [&](std::size_t i, bool ofFnav, long double gap) {
        for (std::size_t j = 0; j < all.size(); ++j)
            if (fnav[j] == ofFnav && all[j].sat == all[i].sat && std::fabs(t[j] - t[i]) <= gap) return j;
        return all.size();
    };
    std::vector<Rinex3NavRecord> out;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (near(i, fnav[i], 0.0L) != i) continue;  // a repeat of an earlier record
        if (fnav[i] && near(i, false, Rinex3Navns::FnavGap_s) < all.size()) continue;
        out.push_back(all[i]);
    }
    return out;
}

}  // namespace

bool IsRinex3Navigation(const std::string& content)
{
    std::istringstream in(content);
    std::string line;
    if (!fieldtext::NextLine(in, line) || !Label(line, "RINEX VERSION / TYPE")) return false;
    return fieldtext::FortranNumber(line, 0, 9) >= 3.0L;
}

Rinex3NavHeader ReadRinex3NavHeader(const std::string& content, const std::string& path, const std::string& prog)
{
    const Where w{path, prog};
    const std::vector<std::string> lines = Lines(content);
    Rinex3NavHeader h;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string& l = lines[i];
        const long n = static_cast<long>(i) + 1;
        if (Label(l, "END OF HEADER")) return h;
        if (Label(l, "RINEX VERSION / TYPE")) {
            h.version = TrimmedField(l, 0, 9), h.type = TrimmedField(l, 20, 20);
            static const char* const Known[] = {"3.02", "3.03", "3.04", "3.05", "4.00"};
            bool known = false;
            for (const char* k : Known) known = known || h.version == k;
            if (!known)
                ProgramErrorCout(prog, path + ": RINEX " + h.version
                                           + " NAVIGATION FILE - ONLY VERSIONS 3.02-3.05 AND 4.00 CAN BE READ!");
            if (l.size() < 21 || l[20] != 'N')
                ProgramErrorCout(prog, path + ": RINEX " + h.version + " FILE OF TYPE \"" + h.type
                                           + "\" - NOT A NAVIGATION FILE!");
        } else if (Label(l, "PGM / RUN BY / DATE")) {
            h.pgm = TrimmedField(l, 0, 20), h.runby = TrimmedField(l, 20, 20), h.date = TrimmedField(l, 40, 20);
        } else if (Label(l, "IONOSPHERIC CORR") && (l.compare(0, 4, "GPSA") == 0 || l.compare(0, 4, "GPSB") == 0)) {
            const bool a = l[3] == 'A';
            for (std::size_t k = 0; k < 4; ++k) (a ? h.alfa : h.beta)[k] = w.Number(l, n, 5 + 12 * k, 12);
        } else if (Label(l, "TIME SYSTEM CORR") && l.compare(0, 4, "GPUT") == 0) {
            h.a0 = w.Number(l, n, 5, 17), h.a1 = w.Number(l, n, 22, 16);
            h.T = std::lround(w.Number(l, n, 39, 6)), h.W = std::lround(w.Number(l, n, 46, 4));
        } else if (Label(l, "LEAP SECONDS")) {
            h.leaps = static_cast<short>(std::lround(w.Number(l, n, 0, 6)));
        }
    }
    ProgramErrorCout(prog, path + ": NO END OF HEADER IN THE NAVIGATION FILE!");
}

std::vector<Rinex3NavRecord> ReadRinex3NavRecords(const std::string& content, const std::string& path, char sys,
                                                  const std::string& prog)
{
    const Where w{path, prog};
    const Rinex3NavHeader h = ReadRinex3NavHeader(content, path, prog);
    const bool v4 = h.version[0] == '4';
    const std::vector<std::string> lines = Lines(content);
    std::size_t i = 0;
    while (!Label(lines[i], "END OF HEADER")) ++i;  // the header read found it
    const std::string systems = "GRECJIS";
    // A record starts at a line with a system letter (RINEX 3) or at a ">"
    // line (RINEX 4); its other lines start with blanks.
    auto starts = [&](const std::string& l) { return v4 ? l[0] == '>' : systems.find(l[0]) != std::string::npos; };
    std::vector<Rinex3NavRecord> out;
    std::vector<bool> fnav;
    for (++i; i < lines.size();) {
        const std::string& l = lines[i];
        if (Blank(l)) { ++i; continue; }
        if (!starts(l)) w.Stop(static_cast<long>(i) + 1, NoRecordLine);
        std::size_t end = i + 1;
        while (end < lines.size() && (Blank(lines[end]) || (v4 ? lines[end][0] != '>' : Continues(lines[end])))) ++end;
        // RINEX 4: "> EPH G01 LNAV", the record's own lines after it.
        const std::string kind = v4 ? TrimmedField(l, 2, 3) : "EPH", message = v4 ? TrimmedField(l, 10, 4) : "";
        bool wanted = kind == "EPH" && (v4 ? l.size() > 6 && l[6] == sys : l[0] == sys);
        if (v4 && wanted)
            wanted = sys == 'G' ? message == "LNAV" : sys == 'R' ? message == "FDMA" : message == "INAV" || message == "FNAV";
        if (wanted) {
            out.push_back(Record(lines, i, end, v4, sys, w));
            if (sys == 'E') fnav.push_back(IsFnav(out.back(), message));
        }
        i = end;
    }
    if (sys == 'E') out = ChooseGalileo(out, fnav);
    if (out.empty())
        ProgramErrorCout(prog, path + std::string(": NO ")
                                   + (sys == 'G' ? "GPS LNAV" : sys == 'R' ? "GLONASS FDMA" : "GALILEO")
                                   + " RECORDS IN THE NAVIGATION FILE!");
    return out;
}
