#include "observations/Rinex3Observation.h"

#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string_view>
#include <vector>

#include "numerics/FieldText.h"
#include "numerics/InputFile.h"
#include "numerics/ProgramError.h"
#include "observations/CompactRinex.h"
#include "observations/RINEXData.h"

namespace {

using sv = std::string_view;
const char* const Prog = "Orvo";

// The systems of the record store, in the order of the table's columns.
constexpr char Systems[] = "GRE";
constexpr int NSys = 3;
// Systems of RINEX 3 that the program does not process: their records are
// left out of the text.
constexpr char OtherSystems[] = "CJIS";

constexpr std::size_t LabelCol = 60;
constexpr std::size_t FieldWidth = 16, ValueWidth = 14, FirstField = 3;
constexpr int FieldsPerLine2 = 5, SatsPerLine2 = 12;
constexpr std::size_t SatCol2 = 32, ClockCol2 = 68;
// Where the satellite list of a Compact RINEX 3 epoch line begins.
constexpr std::size_t FirstSatCol3 = 41;
// Codes on a SYS / # / OBS TYPES line, from column 8 every 4 columns.
constexpr int CodesPerLine = 13;
// The RINEX 2 epoch line has a two-digit year: 80-99 are 19yy, 00-79 20yy.
constexpr int FirstYear = 1980, LastYear = 2079;

// RINEX 2 type <- RINEX 3 codes in order of preference. A type takes, for
// each system and for the whole file, the first code of its list that the
// file's SYS / # / OBS TYPES lists and that holds a value in at least one
// record; signals are never mixed within a file. D and S take the signal of
// their band's carrier first, then the carrier's order, so that signal
// strength and Doppler belong to the phase they go with.
//
//   type   GPS                       GLONASS   Galileo
//   C1     C1C                       C1C       C1C C1X C1B
//   P1     C1W C1P C1Y               C1P       -
//   L1     L1C L1W L1P L1Y L1L L1X L1S
//                                    L1C L1P   L1C L1X L1B
//   C2     C2L C2X C2S C2C           C2C       -
//   P2     C2W C2P C2Y C2D           C2P       -
//   L2     L2W L2P L2Y L2D L2L L2X L2S L2C
//                                    L2P L2C   -
//   C5 L5  .5Q .5X .5I               -         .5Q .5X .5I
//   C7 L7  -                         -         .7Q .7X .7I
//   C8 L8  -                         -         .8Q .8X .8I
//   Dn Sn  the attribute chosen for Ln, then the list of Ln
//
// Bands 3 and 6 (GLONASS CDMA, Galileo E6) and the other signals of the
// bands are not mapped: no stage uses them. SYS / PHASE SHIFT is not
// applied: phases are taken as recorded, as from a RINEX 2 file, and a
// float ambiguity absorbs a constant shift of one signal.
struct Row {
    char type2[3];
    char kind, band;
    const char* attrs[NSys];
    int carrier;  // row of the phase whose signal D and S follow, -1 for none
};
constexpr Row Table[] = {
    {"C1", 'C', '1', {"C", "C", "CXB"}, -1},       {"P1", 'C', '1', {"WPY", "P", ""}, -1},
    {"L1", 'L', '1', {"CWPYLXS", "CP", "CXB"}, -1}, {"D1", 'D', '1', {"", "", ""}, 2},
    {"S1", 'S', '1', {"", "", ""}, 2},              {"C2", 'C', '2', {"LXSC", "C", ""}, -1},
    {"P2", 'C', '2', {"WPYD", "P", ""}, -1},        {"L2", 'L', '2', {"WPYDLXSC", "PC", ""}, -1},
    {"D2", 'D', '2', {"", "", ""}, 7},              {"S2", 'S', '2', {"", "", ""}, 7},
    {"C5", 'C', '5', {"QXI", "", "QXI"}, -1},       {"L5", 'L', '5', {"QXI", "", "QXI"}, -1},
    {"D5", 'D', '5', {"", "", ""}, 11},             {"S5", 'S', '5', {"", "", ""}, 11},
    {"C7", 'C', '7', {"", "", "QXI"}, -1},          {"L7", 'L', '7', {"", "", "QXI"}, -1},
    {"D7", 'D', '7', {"", "", ""}, 15},             {"S7", 'S', '7', {"", "", ""}, 15},
    {"C8", 'C', '8', {"", "", "QXI"}, -1},          {"L8", 'L', '8', {"", "", "QXI"}, -1},
    {"D8", 'D', '8', {"", "", ""}, 19},             {"S8", 'S', '8', {"", "", ""}, 19}};
constexpr int NRows = sizeof Table / sizeof Table[0];

// Record lines carried over: those the RINEX 2 reader knows, comments, and
// the GLONASS channels. The others are RINEX 3 records whose layout or
// meaning RINEX 2 has not (per-system types, phase shifts, biases).
const char* const KeptLabels[] = {
    "COMMENT", "PGM / RUN BY / DATE", "MARKER NAME", "MARKER NUMBER", "OBSERVER / AGENCY",
    "REC # / TYPE / VERS", "ANT # / TYPE", "APPROX POSITION XYZ", "ANTENNA: DELTA H/E/N", "INTERVAL",
    "TIME OF FIRST OBS", "TIME OF LAST OBS", "RCV CLOCK OFFS APPL", "LEAP SECONDS", "GLONASS SLOT / FRQ #"};

int SysIndex(char c)
{
    const char* p = std::strchr(Systems, c);
    return c != '\0' && p ? static_cast<int>(p - Systems) : -1;
}
bool IsOtherSystem(char c) { return c != '\0' && std::strchr(OtherSystems, c) != nullptr; }
bool Digit(char c) { return c >= '0' && c <= '9'; }

// Columns [pos, pos + len) of a line, shorter or empty where it ends.
sv Cut(sv l, std::size_t pos, std::size_t len) { return pos >= l.size() ? sv() : l.substr(pos, len); }

std::string Trim(sv s)
{
    const std::size_t b = s.find_first_not_of(' ');
    if (b == sv::npos) return std::string();
    return std::string(s.substr(b, s.find_last_not_of(' ') - b + 1));
}
bool Blank(sv s) { return s.find_first_not_of(' ') == sv::npos; }

// Lines of the text, each without its line end (LF or CR LF).
struct Cursor {
    const std::string& t;
    std::size_t pos = 0;
    long no = 0;
    bool ended = true;  // the last line read had its line end
    bool Next(sv& l)
    {
        if (pos >= t.size()) return false;
        const char* b = t.data() + pos;
        const void* e = std::memchr(b, '\n', t.size() - pos);
        std::size_t n = e ? static_cast<std::size_t>(static_cast<const char*>(e) - b) : t.size() - pos;
        ended = e != nullptr;
        pos += n + (ended ? 1 : 0);
        if (n > 0 && b[n - 1] == '\r') --n;
        l = sv(b, n);
        ++no;
        return true;
    }
};

[[noreturn]] void Fail(const std::string& path, long line, const std::string& text)
{
    ProgramError(Prog, path + ": " + text + " -> line: " + std::to_string(line));
}

// The label of a header record, columns 61-80. A line that ends before
// them is no record at all: its label may stand in the next line.
std::string Label(sv l, const std::string& path, long no)
{
    if (l.size() <= LabelCol) Fail(path, no, "HEADER LINE SHORTER THAN ITS LABEL (COLUMNS 61-80)");
    return Trim(Cut(l, LabelCol, 20));
}


// A value other than zero somewhere in the field: "0.000" and blanks are
// missing observations.
bool HasValue(sv f)
{
    for (char c : f.substr(0, std::min(f.size(), ValueWidth)))
        if (c >= '1' && c <= '9') return true;
    return false;
}

// True when a row of the table can take code for system s.
bool Named(const std::string& code, int s)
{
    for (const Row& r : Table) {
        const Row& ph = r.carrier >= 0 ? Table[r.carrier] : r;
        if (code[0] == r.kind && code[1] == r.band && std::strchr(ph.attrs[s], code[2])) return true;
    }
    return false;
}

struct Header {
    std::string kept;        // carried-over records, each with its line end
    std::string sysText;     // columns 41-60 of the version record
    std::string version;     // as written, trimmed
    std::vector<std::string> codes[NSys];
    bool declared[NSys] = {false, false, false};
};

long WholeField(sv l, std::size_t pos, std::size_t len, const std::string& path, long no, const char* what)
{
    const std::string f = Trim(Cut(l, pos, len));
    long v = 0;
    if (!f.empty() && !fieldtext::ToLong(f, v)) Fail(path, no, "\"" + f + "\" IN " + what + " IS NOT A NUMBER");
    return v;
}

// SYS / # / OBS TYPES: a system letter and count, then 13 codes a line;
// continuation lines have blank columns 1-6.
void ReadObsTypes(Cursor& c, sv first, Header& h, const std::string& path)
{
    const char sys = first[0];
    if (SysIndex(sys) < 0 && !IsOtherSystem(sys))
        Fail(path, c.no, "SATELLITE SYSTEM \"" + std::string(1, sys) + "\" OF SYS / # / OBS TYPES NOT VALID");
    const long n = WholeField(first, 3, 3, path, c.no, "SYS / # / OBS TYPES");
    std::vector<std::string> codes;
    sv l = first;
    for (long i = 0; i < n; i++) {
        if (i > 0 && i % CodesPerLine == 0) {
            if (!c.Next(l) || Label(l, path, c.no) != "SYS / # / OBS TYPES" || !Blank(Cut(l, 0, 6)))
                Fail(path, c.no, "SYS / # / OBS TYPES OF " + std::string(1, sys) + " LISTS FEWER CODES THAN "
                                     + std::to_string(n));
        }
        const std::string code(Cut(l, 7 + 4 * static_cast<std::size_t>(i % CodesPerLine), 3));
        if (Blank(code))
            Fail(path, c.no, "SYS / # / OBS TYPES OF " + std::string(1, sys) + " LISTS FEWER CODES THAN "
                                 + std::to_string(n));
        const bool ok = code.size() == 3 && std::strchr("CLDSIX", code[0]) && Digit(code[1])
                        && ((code[2] >= 'A' && code[2] <= 'Z'));
        if (!ok) Fail(path, c.no, "OBSERVATION CODE \"" + code + "\" OF SYSTEM " + std::string(1, sys) + " NOT VALID");
        codes.push_back(code);
    }
    const int s = SysIndex(sys);
    if (s < 0) return;
    h.codes[s] = codes;
    h.declared[s] = true;
}

// The header up to END OF HEADER; c stands after it on return.
Header ReadHeader(Cursor& c, const std::string& path)
{
    Header h;
    sv l;
    c.Next(l);  // the version record, checked by IsRinex3Observation
    h.version = Trim(Cut(l, 0, 9));
    h.sysText = std::string(Cut(l, 40, 20));
    const char fileSys = l.size() > 40 ? l[40] : ' ';
    for (;;) {
        if (!c.Next(l)) ProgramError(Prog, path + ": NO END OF HEADER");
        const std::string label = Label(l, path, c.no);
        if (label == "END OF HEADER") break;
        if (label == "SYS / # / OBS TYPES") {
            ReadObsTypes(c, l, h, path);
            continue;
        }
        // Stored values are multiples of the factor: copying their text
        // would scale every value by it.
        if (label == "SYS / SCALE FACTOR") {
            const long f = WholeField(l, 2, 4, path, c.no, "SYS / SCALE FACTOR");
            if (f != 0 && f != 1 && SysIndex(l[0]) >= 0)
                Fail(path, c.no, "SYS / SCALE FACTOR " + std::to_string(f) + " OF SYSTEM " + std::string(1, l[0])
                                     + " NOT SUPPORTED");
            continue;
        }
        bool keep = false;
        for (const char* k : KeptLabels) keep = keep || label == k;
        if (!keep) continue;
        std::string line(l);
        // A single-system file may leave its time system blank: it is that
        // system's time.
        if (label == "TIME OF FIRST OBS" && Blank(Cut(l, 48, 3)) && SysIndex(fileSys) >= 0) {
            static const char* const names[NSys] = {"GPS", "GLO", "GAL"};
            line.replace(48, 3, names[SysIndex(fileSys)]);
        }
        h.kept += line;
        h.kept += '\n';
    }
    return h;
}

struct Epoch {
    long line = 0;
    int flag = 0;
    long count = 0;
    bool dated = false;
    long y = 0, mo = 0, d = 0, hh = 0, mi = 0;
    long double sec = 0.0L;
    bool hasClock = false;
    long double clock = 0.0L;
};

// > yyyy mm dd hh mm ss.sssssss  f nnn      clock (F15.12 at column 42)
Epoch ParseEpoch(sv l, long no, const std::string& path)
{
    Epoch e;
    e.line = no;
    const char* what = "EPOCH LINE";
    const std::string flag = Trim(Cut(l, 31, 1));
    if (!flag.empty() && (!Digit(flag[0]) || flag[0] > '6'))
        Fail(path, no, "EPOCH FLAG \"" + flag + "\" NOT VALID (0 TO 6)");
    e.flag = flag.empty() ? 0 : flag[0] - '0';
    e.count = WholeField(l, 32, 3, path, no, what);
    if (e.count < 0) Fail(path, no, "NEGATIVE COUNT IN EPOCH LINE");
    e.dated = !Blank(Cut(l, 1, 28));
    if (!e.dated && (e.flag <= 1 || e.flag == 6)) Fail(path, no, "EPOCH LINE WITHOUT DATE");
    if (e.dated) {
        e.y = WholeField(l, 2, 4, path, no, what);
        e.mo = WholeField(l, 7, 2, path, no, what);
        e.d = WholeField(l, 10, 2, path, no, what);
        e.hh = WholeField(l, 13, 2, path, no, what);
        e.mi = WholeField(l, 16, 2, path, no, what);
        const std::string s = Trim(Cut(l, 18, 11));
        if (!fieldtext::ToLongDouble(s, e.sec)) Fail(path, no, "\"" + s + "\" IN EPOCH LINE IS NOT A NUMBER");
        if (e.y < FirstYear || e.y > LastYear)
            Fail(path, no, "YEAR " + std::to_string(e.y) + " OUTSIDE 1980 TO 2079 (TWO DIGITS IN RINEX 2)");
        if (e.mo < 1 || e.mo > 12 || e.d < 1 || e.d > 31 || e.hh < 0 || e.hh > 23 || e.mi < 0 || e.mi > 59
            || e.sec < 0.0L || e.sec >= 61.0L)
            Fail(path, no, "EPOCH TIME NOT VALID");
    }
    const std::string clock = Trim(Cut(l, 41, 15));
    e.hasClock = !clock.empty();
    if (e.hasClock && !fieldtext::ToLongDouble(clock, e.clock))
        Fail(path, no, "RECEIVER CLOCK OFFSET \"" + clock + "\" IS NOT A NUMBER");
    return e;
}

// The next epoch line, passing over blank lines between epochs; false at
// the end of the text. Anything else where an epoch must begin means that
// the previous epoch's count does not match its records.
bool NextEpoch(Cursor& c, Epoch& e, long previous, const std::string& path)
{
    sv l;
    do {
        if (!c.Next(l)) return false;
    } while (Blank(l));
    if (l[0] != '>') {
        if (previous > 0)
            Fail(path, c.no, "EPOCH LINE (>) EXPECTED: THE COUNT OF THE EPOCH OF LINE " + std::to_string(previous)
                                 + " DOES NOT MATCH ITS RECORDS");
        Fail(path, c.no, "EPOCH LINE (>) EXPECTED");
    }
    e = ParseEpoch(l, c.no, path);
    return true;
}

// Record line k of an epoch: it must be there and must not be the next
// epoch's line.
sv RecordLine(Cursor& c, const Epoch& e, const std::string& path)
{
    sv l;
    if (!c.Next(l)) ProgramError(Prog, path + ": FILE ENDS INSIDE THE EPOCH OF LINE " + std::to_string(e.line));
    if (!l.empty() && l[0] == '>')
        Fail(path, c.no, "NEW EPOCH INSIDE THE " + std::to_string(e.count) + " RECORDS OF THE EPOCH OF LINE "
                             + std::to_string(e.line) + ": THE COUNT DOES NOT MATCH");
    return l;
}

// The store's system of a record (-1 for a system left out); a satellite
// field that is none stops the run.
int RecordSystem(sv r, long no, const std::string& path, const Header& h)
{
    const bool ok = r.size() >= 3 && (Digit(r[1]) || r[1] == ' ') && Digit(r[2])
                    && !((r[1] == '0' || r[1] == ' ') && r[2] == '0');  // no satellite number 0
    const int s = ok ? SysIndex(r[0]) : -1;
    if (!ok || (s < 0 && !IsOtherSystem(r[0])))
        Fail(path, no, "SATELLITE \"" + std::string(Cut(r, 0, 3)) + "\" NOT VALID");
    if (s >= 0 && !h.declared[s])
        Fail(path, no, "SYSTEM " + std::string(1, r[0]) + " HAS NO SYS / # / OBS TYPES");
    return s;
}

struct Choice {
    int col[NSys][NRows];   // column of the record chosen for each row, -1 none
    int rows[NRows];        // rows written, in order
    int nOut = 0;
};

// The codes of each system that a row of the table can take, as columns
// of its records.
struct Wanted {
    std::vector<int> cols[NSys];
    explicit Wanted(const Header& h)
    {
        for (int s = 0; s < NSys; s++)
            for (std::size_t k = 0; k < h.codes[s].size(); k++)
                if (Named(h.codes[s][k], s)) cols[s].push_back(static_cast<int>(k));
    }
    long Count() const { return static_cast<long>(cols[0].size() + cols[1].size() + cols[2].size()); }
};

// The rows' columns, from which codes hold a value in some record
// (seen[s][k] for code k of system s).
Choice ChoiceOf(const Header& h, const std::vector<char> (&seen)[NSys])
{
    Choice ch;
    for (int s = 0; s < NSys; s++)
        for (int i = 0; i < NRows; i++) {
            const Row& r = Table[i];
            const Row& ph = r.carrier >= 0 ? Table[r.carrier] : r;
            std::string attrs = ph.attrs[s];
            if (r.carrier >= 0 && ch.col[s][r.carrier] >= 0)
                attrs.insert(attrs.begin(), h.codes[s][ch.col[s][r.carrier]][2]);
            ch.col[s][i] = -1;
            for (char a : attrs) {
                for (std::size_t k = 0; k < h.codes[s].size() && ch.col[s][i] < 0; k++) {
                    const std::string& code = h.codes[s][k];
                    if (code[0] == r.kind && code[1] == r.band && code[2] == a && seen[s][k])
                        ch.col[s][i] = static_cast<int>(k);
                }
                if (ch.col[s][i] >= 0) break;
            }
        }
    for (int i = 0; i < NRows; i++)
        if (ch.col[0][i] >= 0 || ch.col[1][i] >= 0 || ch.col[2][i] >= 0) ch.rows[ch.nOut++] = i;
    return ch;
}

// First pass: which listed codes hold a value somewhere. It ends as soon as
// every code that a row could take has been seen.
Choice Choose(Cursor c, const Header& h, const std::string& path)
{
    const Wanted wanted(h);
    std::vector<char> seen[NSys];
    for (int s = 0; s < NSys; s++) seen[s].assign(h.codes[s].size(), 0);
    long left = wanted.Count();
    Epoch e;
    long previous = 0;
    while (left > 0 && NextEpoch(c, e, previous, path)) {
        previous = e.line;
        for (long k = 0; k < e.count; k++) {
            const sv r = RecordLine(c, e, path);
            if (e.flag > 1) continue;  // events and cycle slips hold no observations
            const int s = RecordSystem(r, c.no, path, h);
            if (s < 0) continue;
            for (int col : wanted.cols[s])
                if (!seen[s][col] && HasValue(Cut(r, FirstField + FieldWidth * col, ValueWidth))) {
                    seen[s][col] = 1;
                    left--;
                }
        }
    }
    return ChoiceOf(h, seen);
}

// The codes of the processed systems that no row of the table names.
void WarnUnmappedCodes(const Header& h, const std::string& path)
{
    std::string list;
    for (int s = 0; s < NSys; s++) {
        std::string sys;
        for (const std::string& code : h.codes[s])
            if (!Named(code, s)) sys += " " + code;
        if (!sys.empty()) list += std::string(list.empty() ? "" : ",") + " " + Systems[s] + ":" + sys;
    }
    if (!list.empty())
        ProgramWarningCout(Prog, path + ": OBSERVATION CODES WITHOUT A RINEX 2 TYPE, NOT USED:" + list);
}

void AppendHeaderLine(std::string& out, const std::string& data, const char* label)
{
    out += data;
    out.append(LabelCol - std::min(LabelCol, data.size()), ' ');
    out += label;
    out += '\n';
}

void AppendTypes(std::string& out, const Choice& ch)
{
    char buf[16];
    std::snprintf(buf, sizeof buf, "%6d", ch.nOut);
    std::string line = buf;
    for (int i = 0; i < ch.nOut; i++) {
        if (i > 0 && i % 9 == 0) {
            AppendHeaderLine(out, line, "# / TYPES OF OBSERV");
            line.assign(6, ' ');
        }
        line += "    ";
        line += Table[ch.rows[i]].type2;
    }
    AppendHeaderLine(out, line, "# / TYPES OF OBSERV");
}

// The RINEX 2 header of the translation.
void AppendRinex2Header(std::string& out, const Header& h, const Choice& ch)
{
    AppendHeaderLine(out, "     2.11           OBSERVATION DATA    " + h.sysText, "RINEX VERSION / TYPE");
    AppendHeaderLine(out, "TRANSLATED FROM RINEX " + h.version + " BY ORVO", "COMMENT");
    out += h.kept;
    AppendTypes(out, ch);
    AppendHeaderLine(out, "", "END OF HEADER");
}

// A header record inside the data may not change the types: the choice is
// made once for the whole file.
void CheckEventRecord(sv l, long no, const std::string& path)
{
    const std::string label = l.size() > LabelCol ? Trim(Cut(l, LabelCol, 20)) : std::string();
    if (label == "SYS / # / OBS TYPES" || label == "SYS / SCALE FACTOR")
        Fail(path, no, "OBSERVATION TYPES CHANGE INSIDE THE DATA (" + label + ")");
}

void WarnLeftOut(const std::map<char, long>& left, const std::string& path)
{
    if (left.empty()) return;
    std::string counts;
    for (const auto& [sys, n] : left) counts += std::string(counts.empty() ? "" : ", ") + sys + " " + std::to_string(n);
    ProgramWarningCout(Prog, path + ": RECORDS OF SYSTEMS NOT PROCESSED LEFT OUT (" + counts + ")");
}

void TrimLineEnd(std::string& out, std::size_t start)
{
    while (out.size() > start && out.back() == ' ') out.pop_back();
    out += '\n';
}

// The RINEX 2 epoch line(s): date (blank for events and cycle-slip
// records, which the reader then passes over as it stores no events and
// would take slip records for observations), flag, count, satellites twelve
// a line, clock offset at column 69 of the first line.
void AppendEpoch(std::string& out, const Epoch& e, long n, const std::vector<sv>& recs)
{
    char buf[64];
    if (e.dated && e.flag <= 1)
        std::snprintf(buf, sizeof buf, "%3ld%3ld%3ld%3ld%3ld%11.7Lf%3d%3ld", e.y % 100, e.mo, e.d, e.hh, e.mi, e.sec,
                      e.flag, n);
    else
        std::snprintf(buf, sizeof buf, "%26s%3d%3ld", "", e.flag, n);
    const std::size_t start = out.size();
    out += buf;
    for (long s = 0; s < static_cast<long>(recs.size()); s++) {
        if (s > 0 && s % SatsPerLine2 == 0) {
            if (s == SatsPerLine2 && e.hasClock && e.flag <= 1) {
                std::snprintf(buf, sizeof buf, "%12.9Lf", e.clock);
                out += buf;
            }
            out += '\n';
            out.append(SatCol2, ' ');
        }
        const sv r = recs[s];
        out += r[0];
        out += r[1] == ' ' ? '0' : r[1];
        out += r[2];
    }
    if (e.hasClock && e.flag <= 1 && recs.size() <= static_cast<std::size_t>(SatsPerLine2)) {
        out.append(start + ClockCol2 - std::min(start + ClockCol2, out.size()), ' ');
        std::snprintf(buf, sizeof buf, "%12.9Lf", e.clock);
        out += buf;
    }
    out += '\n';
}

void AppendRecord(std::string& out, sv r, int s, const Choice& ch, const Header& h, long no,
                  bool cutAtEnd, const std::string& path)
{
    const std::size_t declared = FirstField + FieldWidth * h.codes[s].size();
    if (r.size() > declared && !Blank(r.substr(declared)))
        Fail(path, no, "RECORD OF " + std::string(r.substr(0, 3)) + " HAS MORE FIELDS THAN THE "
                           + std::to_string(h.codes[s].size()) + " TYPES OF ITS SYSTEM");
    // A last line without its line end that stops inside a value's 14
    // columns was cut: its last value would read short of its last digits.
    if (cutAtEnd && r.size() > FirstField) {
        const std::size_t part = (r.size() - FirstField) % FieldWidth;
        if (part > 0 && part < ValueWidth && !Blank(r.substr(r.size() - part)))
            Fail(path, no, "FILE ENDS INSIDE AN OBSERVATION VALUE");
    }
    std::size_t start = out.size();
    for (int i = 0; i < ch.nOut; i++) {
        const int col = ch.col[s][ch.rows[i]];
        if (col < 0) {
            out.append(FieldWidth, ' ');
        } else {
            const sv f = Cut(r, FirstField + FieldWidth * static_cast<std::size_t>(col), FieldWidth);
            const char lli = f.size() > ValueWidth ? f[ValueWidth] : ' ';
            const char ssi = f.size() > ValueWidth + 1 ? f[ValueWidth + 1] : ' ';
            if (!fieldtext::IsNumberOrBlank(f.data(), std::min(f.size(), ValueWidth)) || !IsFlagText(lli)
                || !IsFlagText(ssi))
                Fail(path, no, h.codes[s][col] + " OF " + std::string(r.substr(0, 3)) + " IS NOT A NUMBER: \""
                                   + std::string(f) + "\"");
            out.append(f.data(), f.size());
            out.append(FieldWidth - f.size(), ' ');
        }
        if ((i + 1) % FieldsPerLine2 == 0 || i + 1 == ch.nOut) {
            TrimLineEnd(out, start);
            start = out.size();
        }
    }
}

// ---- Compact RINEX 3 straight into the record store ----------------------
// The decoder's integers go to the store without the RINEX 3 and RINEX 2
// texts between them, which cost three times the reading itself; every value
// and message must be the ones the texts would have given.

// The text of a receiver clock offset of v units of 1e-12 s as the decoder
// writes it in RINEX 3 (F15.12, leading zero kept), read back as the
// translation reads it, then written and read as RINEX 2 (F12.9, whose first
// 12 characters the RINEX 2 reader takes).
long double Rinex2ClockOffset(int64_t v)
{
    const uint64_t a = v < 0 ? 0 - static_cast<uint64_t>(v) : static_cast<uint64_t>(v);
    char buf[48];
    std::snprintf(buf, sizeof buf, "%s%llu.%012llu", v < 0 ? "-" : "", static_cast<unsigned long long>(a / 1000000000000ULL),
                  static_cast<unsigned long long>(a % 1000000000000ULL));
    long double clock = 0.0L;
    fieldtext::ToLongDouble(buf, clock);
    std::snprintf(buf, sizeof buf, "%12.9Lf", clock);
    long double offset = 0.0L;
    fieldtext::ToLongDouble(Trim(sv(buf, std::min<std::size_t>(12, std::strlen(buf)))), offset);
    return offset;
}

// The time of a RINEX 3 epoch as the RINEX 2 reader takes it from the
// translated epoch line: the seconds written F11.7 and read back.
ymdhms Rinex2EpochTime(const Epoch& e)
{
    char buf[32];
    std::snprintf(buf, sizeof buf, "%11.7Lf", e.sec);
    return ymdhms(static_cast<unsigned short>(e.y), static_cast<unsigned short>(e.mo), static_cast<unsigned short>(e.d),
                  static_cast<unsigned short>(e.hh), static_cast<unsigned short>(e.mi), std::strtold(buf + 1, nullptr));
}

// First look: how many epochs and records of processed systems the file
// holds, so that the store is sized once.
class CountSink : public CompactRinexSink {
public:
    void Start(bool) override {}
    void HeaderLine(sv, long) override {}
    void EventLine(sv, bool, long) override {}
    void EpochLine(const std::string& text, int count, bool, int64_t, long) override
    {
        long kept = 0;
        for (std::size_t k = 0; k < static_cast<std::size_t>(count); k++) {
            const std::size_t c = FirstSatCol3 + 3 * k;
            kept += c < text.size() && SysIndex(text[c]) >= 0;
        }
        records += kept;
    }
    void Record(const char*, std::size_t, const int64_t*, const char*, const char*, long) override {}
    long records = 0;
};

// The second pass stores each record's values straight into the store: for
// every type and system those of the code that the choice takes when all
// its listed codes hold values (the first of each list). Which codes do hold
// values is known only at the end; the fields of the other codes of a list
// are kept aside, and a type whose choice turns out otherwise is rewritten
// from them.
class StoreSink : public CompactRinexSink {
public:
    StoreSink(const std::string& path, RINEXData& d, long records) : path_(path), d_(d), nRecords_(records) {}

    void Start(bool) override {}
    void HeaderLine(sv text, long) override;
    void EventLine(sv text, bool first, long line) override;
    void EpochLine(const std::string& text, int count, bool hasClock, int64_t clock, long line) override;
    // The records of systems left out are counted, their values never decoded.
    bool Keep(const char* id, long line) override
    {
        if (!IsOtherSystem(id[0])) return true;
        RecordSystem(sv(id, 3), line, path_, h_);
        left_[id[0]]++;
        return false;
    }
    void Record(const char* id, std::size_t ntypes, const int64_t* vals, const char* have, const char* flags,
                long line) override;

    // Everything decoded: the choice settled, the header, epochs and checks.
    void Fill(RINEXHeader& rh);

private:
    // An epoch of observations: its time and flag as the RINEX 2 reader
    // takes them, the records of processed systems it holds.
    struct Held {
        ymdhms t;
        char flag;
        int kept;
        bool hasClock;
        long double clock_s;
        long line;
    };
    // A cycle-slip record (epoch flag 6): checked as the translation
    // checks it once the types are chosen, never stored.
    struct Slip {
        std::string text;
        int sys;
        long line;
    };
    // A store type of a system and one of its codes.
    struct Slot {
        int row, col;
    };
    // A field of a code that is not (yet) the one stored.
    struct Aside {
        long rec;
        int row, col;
        int64_t val;
        char have, lli, ssi;
    };
    // The first field of a code whose LLI or SSI is no digit: an error if
    // the code is chosen.
    struct BadFlags {
        long rec, line;
        std::string field;
    };

    void Store(long r, int row, int64_t val, bool have, char lli, char ssi);
    std::string FieldText(int64_t val, bool have, char lli, char ssi) const;

    const std::string& path_;
    RINEXData& d_;
    const long nRecords_;
    std::string headerText_;
    Header h_;
    Choice first_;                    // the choice if every listed code held values
    std::vector<int> wanted_[NSys];   // codes a type can take
    std::vector<char> seen_[NSys];    // codes that held a value
    std::vector<Slot> direct_[NSys];  // (type, code of first_) stored as read
    std::vector<Slot> others_[NSys];  // the other codes of each type
    bool settled_[NSys][NRows] = {};  // the choice is first_'s whatever follows
    matrix<gnssobs>* obs_[NRows] = {};
    matrix<gnssobsshort>* short_[NRows] = {};
    std::vector<Aside> aside_;
    std::map<std::pair<int, int>, BadFlags> badFlags_;  // by (system, code)
    std::map<char, long> left_;
    std::vector<Held> held_;
    int eventFlag_ = 0;  // flag of the event block being read, 0 outside one
    std::vector<Slip> slips_;
    std::vector<short> sat_;  // per record
    std::vector<char> sys_;
    std::vector<long> line_;
};

void StoreSink::HeaderLine(sv text, long)
{
    headerText_.append(text.data(), text.size());
    headerText_ += '\n';
    if (text.size() < LabelCol + 13 || text.substr(LabelCol, 13) != "END OF HEADER") return;
    if (!IsRinex3Observation(headerText_, path_)) ProgramError(Prog, path_ + ": NOT A RINEX 3 OR 4 OBSERVATION FILE");
    Cursor c{headerText_};
    h_ = ReadHeader(c, path_);
    WarnUnmappedCodes(h_, path_);
    const Wanted w(h_);
    std::vector<char> listed[NSys];
    for (int s = 0; s < NSys; s++) {
        wanted_[s] = w.cols[s];
        seen_[s].assign(h_.codes[s].size(), 0);
        listed[s].assign(h_.codes[s].size(), 1);
    }
    first_ = ChoiceOf(h_, listed);
    for (int i = 0; i < NRows; i++) {
        const Row& row = Table[i];
        const Row& ph = row.carrier >= 0 ? Table[row.carrier] : row;
        bool used = false;
        for (int s = 0; s < NSys; s++) {
            const int chosen = first_.col[s][i];
            if (chosen < 0) continue;
            used = true;
            direct_[s].push_back({i, chosen});
            for (std::size_t k = 0; k < h_.codes[s].size(); k++) {
                const std::string& code = h_.codes[s][k];
                if (static_cast<int>(k) != chosen && code[0] == row.kind && code[1] == row.band
                    && std::strchr(ph.attrs[s], code[2]))
                    others_[s].push_back({i, static_cast<int>(k)});
            }
        }
        if (!used || nRecords_ <= 0) continue;
        const unsigned short type = RINEXHeader::GetObsType(row.type2);
        if ((obs_[i] = d_.StoredMatrix(type)) != nullptr) NullColumn(*obs_[i], nRecords_);
        else if ((short_[i] = d_.ShortMatrix(type)) != nullptr) NullColumn(*short_[i], nRecords_);
    }
    sat_.reserve(static_cast<std::size_t>(std::max(0L, nRecords_)));
    sys_.reserve(sat_.capacity());
    line_.reserve(sat_.capacity());
}

void StoreSink::EventLine(sv text, bool first, long line)
{
    if (first) {
        const Epoch e = ParseEpoch(text, line, path_);
        eventFlag_ = e.flag;
        return;
    }
    if (eventFlag_ == 6) {
        const int s = RecordSystem(text, line, path_, h_);
        if (s < 0) left_[text[0]]++;
        else slips_.push_back({std::string(text), s, line});
        return;
    }
    CheckEventRecord(text, line, path_);
}

void StoreSink::EpochLine(const std::string& text, int, bool hasClock, int64_t clock, long line)
{
    eventFlag_ = 0;
    // Columns 42 on hold the satellite list in the compact text.
    const Epoch e = ParseEpoch(Cut(text, 0, FirstSatCol3), line, path_);
    held_.push_back({Rinex2EpochTime(e), static_cast<char>('0' + e.flag), 0, hasClock,
                     hasClock ? Rinex2ClockOffset(clock) : 0.0L, line});
}

// A value and its flags as the RINEX 2 reader takes them from the text.
void StoreSink::Store(long r, int row, int64_t val, bool have, char lli, char ssi)
{
    const long double value = have ? static_cast<long double>(val) / 1000.0L : 0.0L;
    if (obs_[row]) (*obs_[row])(r) = gnssobs(value, FlagDigit(lli), FlagDigit(ssi));
    else if (short_[row]) (*short_[row])(r) = gnssobsshort(value);
}

std::string StoreSink::FieldText(int64_t val, bool have, char lli, char ssi) const
{
    char value[40] = "              ";
    if (have) std::snprintf(value, sizeof value, "%14.3Lf", static_cast<long double>(val) / 1000.0L);
    return std::string(value) + lli + ssi;
}

void StoreSink::Record(const char* id, std::size_t ntypes, const int64_t* vals, const char* have, const char* flags,
                       long line)
{
    const sv name(id, 3);
    // Keep has refused the systems left out: s is a processed one.
    const int s = RecordSystem(name, line, path_, h_);
    if (ntypes != h_.codes[s].size())
        Fail(path_, line, "RECORD OF " + std::string(name) + " DOES NOT HOLD THE " + std::to_string(h_.codes[s].size())
                              + " TYPES OF ITS SYSTEM");
    const long r = static_cast<long>(sat_.size());
    if (r >= nRecords_ || held_.empty())
        Fail(path_, line, "RECORDS DO NOT AGREE WITH THE EPOCH LINES OF THE FIRST LOOK AT THE FILE");
    held_.back().kept++;
    sat_.push_back(RINEXSatNumber(id));
    sys_.push_back(static_cast<char>(s));
    line_.push_back(line);
    bool newlySeen = false;
    for (int col : wanted_[s])
        if (have[col] && vals[col] != 0 && !seen_[s][col]) seen_[s][col] = 1, newlySeen = true;
    // A type is settled once the first code of its list holds a value (and,
    // for Doppler and strength, once their phase is settled): nothing can
    // take its place, and its other codes need not be kept aside any longer.
    if (newlySeen)
        for (int i = 0; i < NRows; i++) {
            const int c = first_.col[s][i], carrier = Table[i].carrier;
            settled_[s][i] = c >= 0 && seen_[s][static_cast<std::size_t>(c)] && (carrier < 0 || settled_[s][carrier]);
        }
    const auto checkFlags = [&](int col) {
        const char lli = flags[2 * col], ssi = flags[2 * col + 1];
        if ((!IsFlagText(lli) || !IsFlagText(ssi)) && !badFlags_.count({s, col}))
            badFlags_[{s, col}] = {r, line, FieldText(vals[col], have[col] != 0, lli, ssi)};
    };
    for (const Slot& x : direct_[s]) {
        Store(r, x.row, vals[x.col], have[x.col] != 0, flags[2 * x.col], flags[2 * x.col + 1]);
        checkFlags(x.col);
    }
    for (const Slot& x : others_[s]) {
        if (settled_[s][x.row]) continue;
        const char lli = flags[2 * x.col], ssi = flags[2 * x.col + 1];
        if (!have[x.col] && lli == ' ' && ssi == ' ') continue;  // a blank field reads as none
        aside_.push_back({r, x.row, x.col, vals[x.col], have[x.col], lli, ssi});
        checkFlags(x.col);
    }
}

void StoreSink::Fill(RINEXHeader& rh)
{
    WarnLeftOut(left_, path_);
    const Choice ch = ChoiceOf(h_, seen_);
    std::string scratch;
    for (const Slip& x : slips_) AppendRecord(scratch, x.text, x.sys, ch, h_, x.line, false, path_);
    if (static_cast<long>(sat_.size()) != std::max(0L, nRecords_))
        Fail(path_, line_.empty() ? 0 : line_.back(), "RECORDS DO NOT AGREE WITH THE EPOCH LINES OF THE FIRST LOOK AT THE FILE");

    // The first chosen field, in file order, whose flags are no digits.
    const BadFlags* bad = nullptr;
    std::string badCode;
    for (const auto& [key, b] : badFlags_) {
        const auto [s, col] = key;
        bool chosen = false;
        for (int i = 0; i < NRows; i++) chosen = chosen || ch.col[s][i] == col;
        if (!chosen || (bad && bad->rec <= b.rec)) continue;
        bad = &b;
        badCode = h_.codes[s][static_cast<std::size_t>(col)];
    }
    if (bad)
        Fail(path_, bad->line, badCode + " OF " + RINEXSatName(sat_[static_cast<std::size_t>(bad->rec)])
                                   + " IS NOT A NUMBER: \"" + bad->field + "\"");

    // Types whose choice is not the first code: rewritten from the fields kept aside.
    for (int s = 0; s < NSys; s++)
        for (int i = 0; i < NRows; i++) {
            const int want = ch.col[s][i];
            if (want == first_.col[s][i]) continue;
            for (long r = 0; r < nRecords_; r++)
                if (sys_[static_cast<std::size_t>(r)] == s) Store(r, i, 0, false, ' ', ' ');
            for (const Aside& x : aside_)
                if (x.row == i && x.col == want && sys_[static_cast<std::size_t>(x.rec)] == s)
                    Store(x.rec, i, x.val, x.have != 0, x.lli, x.ssi);
        }
    // A type no system fills is not in the header.
    for (int i = 0; i < NRows; i++) {
        if (ch.col[0][i] >= 0 || ch.col[1][i] >= 0 || ch.col[2][i] >= 0) continue;
        if (obs_[i]) *obs_[i] = matrix<gnssobs>();
        if (short_[i]) *short_[i] = matrix<gnssobsshort>();
    }

    std::string head;
    AppendRinex2Header(head, h_, ch);
    {
        TextStream in(head);
        in >> rh;
    }
    long ne = 0;
    bool timeCorr = false;
    for (const Held& e : held_) {
        if (e.kept == 0) continue;  // records of left-out systems only
        if (ne == 0) timeCorr = e.hasClock;
        ne++;
    }
    d_.SetNRecords(ne, nRecords_);
    d_.SetTimeCorr(timeCorr);
    d_.SetEpochData();
    RecordStoreFill fill(d_);
    const int ntypes = rh.nobs;
    std::size_t rec = 0;
    for (const Held& e : held_) {
        if (e.kept == 0) continue;
        fill.Epoch(e.t, e.flag, e.kept, e.clock_s, e.line);
        const long first = static_cast<long>(rec);
        for (int k = 0; k < e.kept; k++, rec++) fill.CheckCodes(fill.Record(sat_[rec], line_[rec]));
        // Copies read the same in every stored field: equal values come
        // from equal integers, so the comparison is exact.
        fill.EndEpoch([&](int p, int q) {
            const long a = first + p, b = first + q;
            for (int t = 0; t < ntypes; t++) {
                if (const matrix<gnssobs>* m = fill.Obs(t)) {
                    const gnssobs &x = (*m)(a), &y = (*m)(b);
                    if (!(x.obs == y.obs) || x.lli != y.lli || x.ss != y.ss) return false;
                } else if (const matrix<gnssobsshort>* m = fill.Short(t)) {
                    if (!((*m)(a).obs == (*m)(b).obs)) return false;
                }
            }
            return true;
        });
    }
    fill.Finish();
}

}  // namespace

bool IsRinex3Observation(const std::string& text, const std::string& path)
{
    const std::size_t end = text.find('\n');
    sv l(text.data(), end == std::string::npos ? text.size() : end);
    if (!l.empty() && l.back() == '\r') l.remove_suffix(1);
    if (Trim(Cut(l, LabelCol, 20)) != "RINEX VERSION / TYPE" || Cut(l, 20, 1) != "O") return false;
    const std::string v = Trim(Cut(l, 0, 9));
    long double version = 0.0L;
    if (!fieldtext::ToLongDouble(v, version) || version < 3.0L) return false;
    static const char* const known[] = {"3.02", "3.03", "3.04", "3.05", "4.00"};
    for (const char* k : known)
        if (v == k) return true;
    ProgramError(Prog, path + ": UNKNOWN RINEX VERSION " + v);
}

std::string Rinex3ToRinex2(const std::string& text, const std::string& path)
{
    if (!IsRinex3Observation(text, path))
        ProgramError(Prog, path + ": NOT A RINEX 3 OR 4 OBSERVATION FILE");
    Cursor c{text};
    const Header h = ReadHeader(c, path);
    WarnUnmappedCodes(h, path);
    const Choice ch = Choose(c, h, path);

    std::string out;
    out.reserve(text.size() + 4096);
    AppendRinex2Header(out, h, ch);

    std::map<char, long> left;  // records of systems left out, by letter
    std::vector<sv> recs;
    std::vector<int> sysOf;
    std::vector<long> lineOf;
    Epoch e;
    long previous = 0;
    while (NextEpoch(c, e, previous, path)) {
        previous = e.line;
        if (e.flag >= 2 && e.flag <= 5) {
            AppendEpoch(out, e, e.count, {});
            for (long k = 0; k < e.count; k++) {
                const sv l = RecordLine(c, e, path);
                CheckEventRecord(l, c.no, path);
                out.append(l.data(), l.size());
                out += '\n';
            }
            continue;
        }
        recs.clear();
        sysOf.clear();
        lineOf.clear();
        for (long k = 0; k < e.count; k++) {
            const sv r = RecordLine(c, e, path);
            const int s = RecordSystem(r, c.no, path, h);
            if (s < 0) {
                left[r[0]]++;
                continue;
            }
            recs.push_back(r);
            sysOf.push_back(s);
            lineOf.push_back(c.ended ? c.no : -c.no);
        }
        // An epoch of left-out systems only has nothing to give.
        if (recs.empty()) continue;
        AppendEpoch(out, e, static_cast<long>(recs.size()), recs);
        for (std::size_t k = 0; k < recs.size(); k++)
            AppendRecord(out, recs[k], sysOf[k], ch, h, std::labs(lineOf[k]), lineOf[k] < 0, path);
    }
    WarnLeftOut(left, path);
    return out;
}

bool ObservationHeaderHasGlonassChannels(const std::string& path)
{
    gzFile f = gzopen(path.c_str(), "rb");
    if (f == nullptr) return false;
    char buf[512];
    bool found = false;
    // A header is far shorter; the bound keeps a file without END OF HEADER
    // from being read to its end.
    for (int n = 0; n < 10000 && !found && gzgets(f, buf, sizeof buf) != nullptr; n++) {
        const sv l(buf);
        if (l.find("END OF HEADER") != sv::npos) break;
        found = l.size() > LabelCol && l.compare(LabelCol, 20, "GLONASS SLOT / FRQ #") == 0 && !Blank(Cut(l, 4, 3));
    }
    gzclose(f);
    return found;
}

bool IsCompactRinex3Observation(const std::string& text, const std::string& path)
{
    if (!IsCompactRinex(text)) return false;
    // The RINEX version record is the third line, behind the two CRINEX lines.
    std::size_t at = 0;
    for (int k = 0; k < 2; k++) {
        at = text.find('\n', at);
        if (at == std::string::npos) return false;
        at++;
    }
    const std::size_t end = text.find('\n', at);
    const std::string third = text.substr(at, end == std::string::npos ? std::string::npos : end - at);
    return Trim(Cut(sv(text), 0, 20)) == "3.0" && IsRinex3Observation(third, path);
}

void ReadCompactRinex3(const std::string& text, const std::string& path, RINEXHeader& h, RINEXData& d)
{
    CountSink count;
    ScanCompactRinexEpochs(text, path, count);
    StoreSink sink(path, d, count.records);
    DecodeCompactRinex(text, path, sink);
    sink.Fill(h);
}
