#include "observations/CompactRinex.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "numerics/LargeMemory.h"
#include "numerics/ProgramError.h"

namespace crxns {
// F14.3 in thousandths: 9999999999.999 and -999999999.999 fill the 14 columns.
constexpr int64_t MaxObs = 9999999999999, MinObs = -999999999999;
// Receiver clock, F15.12 (RINEX 3) in 1e-12 s and F12.9 (RINEX 2) in 1e-9 s.
constexpr int64_t MaxClock3 = 99999999999999, MinClock3 = -9999999999999;
constexpr int64_t MaxClock2 = 99999999999, MinClock2 = -9999999999;
// 18 digits stay below 2^63 whatever they are; a valid file needs 16.
constexpr int MaxDigits = 18;
// A type count has three digits in RINEX 3; RINEX 2 allows six, but no file
// has more types than RINEX 3 can list.
constexpr int MaxTypes = 999;
// The arc order is one digit.
constexpr int MaxOrder = 9;
}  // namespace crxns

namespace {

using std::string_view;

// One numeric series: its differences of orders 0..order of the last epoch.
struct Series {
    int64_t d[crxns::MaxOrder + 1];
    int order = 0, maxOrder = 0;
    bool running = false;
};

// What one satellite carries from one epoch to the next.
struct SatState {
    char id[3] = {' ', ' ', ' '};
    bool claimed = false;
    std::vector<Series> series;
    std::string flags;  // LLI and SSI of every type, 2T characters
};

bool Digit(char c) { return c >= '0' && c <= '9'; }

void TrimRight(std::string& s)
{
    size_t n = s.size();
    while (n > 0 && s[n - 1] == ' ') --n;
    s.resize(n);
}

// The common field of a data line, a difference: an optional minus and at
// most MaxDigits digits up to a blank or the line end, read in one pass;
// c then stands behind it. False for anything else (an arc start "n&v", a
// stray character, a number too long), which the full reader takes.
bool QuickDifference(const char*& c, const char* end, int64_t& v)
{
    const char* p = c;
    const bool neg = p < end && *p == '-';
    p += neg;
    const char* const digits = p;
    int64_t x = 0;
    while (p < end && Digit(*p)) x = 10 * x + (*p++ - '0');
    if (p == digits || p - digits > crxns::MaxDigits || (p < end && *p != ' ')) return false;
    v = neg ? -x : x;
    c = p;
    return true;
}

// Writes v / 10^decimals right-justified into the width characters at w,
// the leading zero kept below 1 as Fortran F writes it ("-0.123"). The
// caller's range check makes the text fit the width.
void PutFixed(char* w, int64_t v, int width, int decimals)
{
    char* q = w + width;
    uint64_t a = v < 0 ? 0 - static_cast<uint64_t>(v) : static_cast<uint64_t>(v);
    for (int k = 0; k < decimals; ++k, a /= 10) *--q = static_cast<char>('0' + a % 10);
    *--q = '.';
    do *--q = static_cast<char>('0' + a % 10); while ((a /= 10) != 0);
    if (v < 0) *--q = '-';
    while (q > w) *--q = ' ';
}

// The decoded text, written in place: it is some 3.5 times the compact text,
// and appending field by field through std::string costs a library call each.
class TextOut {
public:
    void Reserve(size_t n)
    {
        // A day file decodes to some 30 MB, faulted in page by page.
        buf_.reserve(n);
        PrepareLargeBlock(buf_.data(), n);
        buf_.resize(n);
    }
    // Room for k more characters; valid until the next call.
    char* Room(size_t k)
    {
        if (n_ + k > buf_.size()) buf_.resize(std::max(2 * buf_.size(), n_ + k));
        return &buf_[n_];
    }
    void Advance(size_t k) { n_ += k; }
    void Put(const char* s, size_t k) { std::memcpy(Room(k), s, k), n_ += k; }
    void Blanks(size_t k) { std::memset(Room(k), ' ', k), n_ += k; }
    void Fixed(int64_t v, int width, int decimals)
    {
        PutFixed(Room(static_cast<size_t>(width)), v, width, decimals), n_ += static_cast<size_t>(width);
    }
    // Ends the line begun at lineStart, its trailing blanks cut.
    void EndLine(size_t lineStart)
    {
        while (n_ > lineStart && buf_[n_ - 1] == ' ') --n_;
        *Room(1) = '\n', ++n_;
    }
    size_t Size() const { return n_; }
    char& At(size_t i) { return buf_[i]; }
    std::string Take() { buf_.resize(n_); return std::move(buf_); }

private:
    std::string buf_;
    size_t n_ = 0;
};

// The plain RINEX text, written as the decoder hands it on.
class TextSink : public CompactRinexSink {
public:
    explicit TextSink(size_t compactSize) { out_.Reserve(4 * compactSize + 4096); }
    std::string Take() { return out_.Take(); }

    void Start(bool v1) override { v1_ = v1; }
    void HeaderLine(string_view text, long) override { out_.Put(text.data(), text.size()), out_.Put("\n", 1); }
    void EventLine(string_view text, bool first, long) override
    {
        const size_t from = out_.Size();
        out_.Put(text.data(), text.size()), out_.Put("\n", 1);
        // The '&' that marks a RINEX 2 event line in the compact text is a blank in RINEX.
        if (v1_ && first) out_.At(from) = ' ';
    }
    void EpochLine(const std::string& ref, int count, bool hasClock, int64_t clock, long) override
    {
        const size_t head = v1_ ? 32 : 41;
        size_t from = out_.Size();
        out_.Put(ref.data(), std::min(head, ref.size()));
        if (!v1_) {
            out_.Blanks(from + head - out_.Size());
            if (hasClock) out_.Fixed(clock, 15, 12);
            out_.EndLine(from);
            return;
        }
        // RINEX 2: twelve satellites a line, the clock in columns 69-80 of the first.
        for (int g = 0; g == 0 || g < count; g += 12) {
            if (g > 0) from = out_.Size(), out_.Blanks(32);
            const size_t at = head + 3 * static_cast<size_t>(g);
            if (at < ref.size())
                out_.Put(ref.data() + at, std::min(ref.size() - at, 3 * static_cast<size_t>(std::min(12, count - g))));
            if (g == 0 && hasClock) out_.Blanks(from + 68 - out_.Size()), out_.Fixed(clock, 12, 9);
            out_.EndLine(from);
        }
    }
    void Record(const char* id, size_t t, const int64_t* vals, const char* have, const char* flags, long) override
    {
        // At most 17 characters a type: a value, two flags and, in RINEX 2,
        // a line end after every fifth.
        char* const w0 = out_.Room(4 + 17 * t);
        char* w = w0;
        char* lineStart = w0;
        if (!v1_) std::memcpy(w, id, 3), w += 3;
        for (size_t k = 0; k < t; ++k) {
            if (v1_ && k % 5 == 0 && k > 0) {
                while (w > lineStart && w[-1] == ' ') --w;
                *w++ = '\n';
                lineStart = w;
            }
            if (have[k]) PutFixed(w, vals[k], 14, 3);
            else std::memset(w, ' ', 14);
            w[14] = flags[2 * k];
            w[15] = flags[2 * k + 1];
            w += 16;
        }
        while (w > lineStart && w[-1] == ' ') --w;
        *w++ = '\n';
        out_.Advance(static_cast<size_t>(w - w0));
    }

private:
    bool v1_ = false;
    TextOut out_;
};

class Decoder {
public:
    Decoder(const std::string& text, const std::string& path, CompactRinexSink& sink, bool epochsOnly = false)
        : text_(text), path_(path), sink_(sink), epochsOnly_(epochsOnly) {}
    void Run();

private:
    [[noreturn]] void Fail(const std::string& what) const
    {
        ProgramError("Orvo", "COMPACT RINEX FILE " + path_ + ": line " + std::to_string(lineNo_) + ": " + what);
    }
    bool NextLine(string_view& line);
    string_view Need(const char* where);
    int64_t Number(string_view s) const;
    int Count(string_view line, size_t col, size_t width) const;
    int64_t Rebuild(Series& s, string_view field, int64_t lo, int64_t hi) const;
    int64_t Difference(Series& s, int64_t diff, string_view field, int64_t lo, int64_t hi) const;
    void ReadHeader();
    void TakeTypes(string_view line);
    void Event(string_view line, int flag, int count);
    void Epoch(int count);
    void ListedId(int i, char* id) const;
    SatState& Claim(int i, const char* id);

    const std::string& text_;
    const std::string& path_;
    CompactRinexSink& sink_;
    const bool epochsOnly_;  // data lines passed over, their values left undecoded
    size_t pos_ = 0;
    long lineNo_ = 0;
    bool v1_ = false;        // CRINEX 1.0 around RINEX 2
    int types_[128];         // T per system letter (RINEX 3); types_[0] in RINEX 2
    std::string ref_;        // the previous epoch line, rebuilt
    bool needInit_ = true;   // no reference: file start or after events
    Series clock_;
    std::vector<SatState> prev_, cur_;
    int nPrev_ = 0;
    std::vector<int64_t> vals_;
    std::vector<char> have_;
};

bool Decoder::NextLine(string_view& line)
{
    if (pos_ >= text_.size()) return false;
    const char* start = text_.data() + pos_;
    const void* nl = std::memchr(start, '\n', text_.size() - pos_);
    size_t len = nl ? static_cast<size_t>(static_cast<const char*>(nl) - start) : text_.size() - pos_;
    pos_ += len + 1;
    if (len > 0 && start[len - 1] == '\r') --len;
    line = string_view(start, len);
    ++lineNo_;
    return true;
}

string_view Decoder::Need(const char* where)
{
    string_view line;
    if (!NextLine(line)) ++lineNo_, Fail(std::string("file ends inside ") + where);
    return line;
}

// Optional minus and at most MaxDigits digits: longer numbers cannot come
// from a valid file and would overflow int64_t.
int64_t Decoder::Number(string_view s) const
{
    const size_t neg = !s.empty() && s[0] == '-';
    if (s.size() == neg) Fail("bad number '" + std::string(s) + "'");
    int64_t v = 0;
    for (size_t i = neg; i < s.size(); ++i) {
        if (!Digit(s[i])) Fail("bad number '" + std::string(s) + "'");
        if (i - neg >= static_cast<size_t>(crxns::MaxDigits)) Fail("value out of range '" + std::string(s) + "'");
        v = 10 * v + (s[i] - '0');
    }
    return neg ? -v : v;
}

// Right-justified integer of columns col..col+width-1 (0-based).
int Decoder::Count(string_view line, size_t col, size_t width) const
{
    if (line.size() < col + width) Fail("line cut short before the count in columns " + std::to_string(col + 1) + "-"
                                        + std::to_string(col + width));
    string_view f = line.substr(col, width);
    while (!f.empty() && f[0] == ' ') f.remove_prefix(1);
    if (f.empty() || f[0] == '-') Fail("bad number '" + std::string(line.substr(col, width)) + "'");
    return static_cast<int>(Number(f));
}

// The series' next value from its field: "n&v" starts an arc of order n,
// anything else is the difference of the running arc at its current order.
int64_t Decoder::Difference(Series& s, int64_t diff, string_view field, int64_t lo, int64_t hi) const
{
    const int m = s.order < s.maxOrder ? s.order + 1 : s.maxOrder;
    s.d[m] = diff;
    for (int k = m - 1; k >= 0; --k)
        if (__builtin_add_overflow(s.d[k + 1], s.d[k], &s.d[k])) Fail("value out of range '" + std::string(field) + "'");
    s.order = m;
    if (s.d[0] < lo || s.d[0] > hi) Fail("value out of range '" + std::string(field) + "'");
    return s.d[0];
}

int64_t Decoder::Rebuild(Series& s, string_view field, int64_t lo, int64_t hi) const
{
    const size_t amp = field.find('&');
    if (amp != string_view::npos) {
        if (amp != 1 || !Digit(field[0])) {
            bool digits = amp > 1;
            for (size_t i = 0; i < amp; ++i) digits = digits && Digit(field[i]);
            if (digits) Fail("differencing order " + std::string(field.substr(0, amp)) + " beyond 9");
            Fail("bad number '" + std::string(field) + "'");
        }
        s.maxOrder = field[0] - '0';
        s.order = 0;
        s.d[0] = Number(field.substr(2));
        s.running = true;
    } else {
        // Only an arc start can follow a gap, a new satellite or an
        // initialisation: a difference there has nothing to add to.
        if (!s.running) Fail("difference '" + std::string(field) + "' where an arc must start with n&");
        return Difference(s, Number(field), field, lo, hi);
    }
    if (s.d[0] < lo || s.d[0] > hi) Fail("value out of range '" + std::string(field) + "'");
    return s.d[0];
}

void Decoder::TakeTypes(string_view line)
{
    if (line.size() < 61) return;
    const string_view label = line.substr(60);
    if (!v1_ && label.substr(0, 19) == "SYS / # / OBS TYPES" && line[0] != ' ') {
        const int n = Count(line, 3, 3);
        if (static_cast<unsigned char>(line[0]) < 128) types_[static_cast<unsigned char>(line[0])] = n;
    } else if (v1_ && label.substr(0, 19) == "# / TYPES OF OBSERV" && line.substr(0, 6) != "      ") {
        const int n = Count(line, 0, 6);
        if (n > crxns::MaxTypes) Fail("more than 999 observation types");
        types_[0] = n;
    }
}

void Decoder::ReadHeader()
{
    string_view line;
    if (!NextLine(line)) lineNo_ = 1;
    if (line.size() < 71 || line.substr(60, 11) != "CRINEX VERS")
        Fail("not a Compact RINEX file (no CRINEX VERS   / TYPE label)");
    string_view v = line.substr(0, 20);
    while (!v.empty() && v.back() == ' ') v.remove_suffix(1);
    while (!v.empty() && v.front() == ' ') v.remove_prefix(1);
    if (v != "1.0" && v != "3.0") Fail("unknown Compact RINEX version '" + std::string(v) + "'");
    v1_ = v == "1.0";
    sink_.Start(v1_);
    Need("the header");
    for (;;) {
        line = Need("the header");
        sink_.HeaderLine(line, lineNo_);
        TakeTypes(line);
        if (line.size() >= 73 && line.substr(60, 13) == "END OF HEADER") break;
    }
}

// Event lines come whole; their records are copied, and header records
// that redefine the types take effect for the epochs after them.
void Decoder::Event(string_view line, int flag, int count)
{
    if (v1_ && flag == 6) Fail("epoch flag 6 (cycle slip records) is not supported in Compact RINEX 1.0");
    sink_.EventLine(line, true, lineNo_);
    for (int k = 0; k < count; ++k) {
        const string_view rec = Need("an event block");
        sink_.EventLine(rec, false, lineNo_);
        if (flag == 3 || flag == 4) TakeTypes(rec);
    }
    needInit_ = true;
}

// The raw ID at position i of the epoch line's satellite list, blanks
// where the line ends.
void Decoder::ListedId(int i, char* id) const
{
    const size_t start = (v1_ ? 32 : 41) + 3 * static_cast<size_t>(i);
    for (size_t c = 0; c < 3; ++c) id[c] = start + c < ref_.size() ? ref_[start + c] : ' ';
}

// The satellite state for position i of this epoch's list, of raw ID id:
// the one of the same ID in the previous epoch's list, else a fresh one.
SatState& Decoder::Claim(int i, const char* id)
{
    SatState& s = cur_[static_cast<size_t>(i)];
    std::memcpy(s.id, id, 3);
    const unsigned char sys = static_cast<unsigned char>(s.id[0]);
    const int t = v1_ ? types_[0] : sys < 128 ? types_[sys] : -1;
    if (t < 0) Fail("no observation types for satellite '" + std::string(s.id, 3) + "'");
    s.claimed = false;
    for (int k = 0; k < nPrev_; ++k) {
        SatState& p = prev_[static_cast<size_t>((i + k) % nPrev_)];
        if (!p.claimed && std::memcmp(p.id, s.id, 3) == 0 && p.series.size() == static_cast<size_t>(t)) {
            p.claimed = true;
            std::swap(p.series, s.series);
            std::swap(p.flags, s.flags);
            return s;
        }
    }
    s.series.assign(static_cast<size_t>(t), Series());
    s.flags.assign(2 * static_cast<size_t>(t), ' ');
    return s;
}

void Decoder::Epoch(int count)
{
    const string_view clk = Need("an epoch block (clock line)");
    const bool hasClock = !clk.empty();
    int64_t clock = 0;
    if (hasClock)
        clock = v1_ ? Rebuild(clock_, clk, crxns::MinClock2, crxns::MaxClock2)
                    : Rebuild(clock_, clk, crxns::MinClock3, crxns::MaxClock3);
    else
        clock_.running = false;
    sink_.EpochLine(ref_, count, hasClock, clock, lineNo_);
    if (epochsOnly_) {
        for (int i = 0; i < count; ++i) Need("an epoch block (data lines)");
        return;
    }

    if (cur_.size() < static_cast<size_t>(count)) cur_.resize(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        const string_view line = Need("an epoch block (data lines)");
        char id[3];
        ListedId(i, id);
        if (!sink_.Keep(id, lineNo_)) {
            // Its arcs are not followed: the slot must match no satellite
            // of the next epoch.
            std::memset(cur_[static_cast<size_t>(i)].id, 0, 3);
            continue;
        }
        SatState& s = Claim(i, id);
        const size_t t = s.series.size();
        vals_.resize(t);
        have_.assign(t, 0);
        // T fields cut at single blanks; all after the T-th blank is the
        // flag difference, blanks and all.
        const char* c = line.data();
        const char* const end = c + line.size();
        size_t j = 0;
        for (; j < t && c <= end; ++j, ++c) {
            Series& series = s.series[j];
            if (c == end || *c == ' ') {
                series.running = false;
                continue;
            }
            const char* const from = c;
            int64_t diff = 0;
            if (series.running && QuickDifference(c, end, diff)) {
                vals_[j] = Difference(series, diff, string_view(from, static_cast<size_t>(c - from)), crxns::MinObs,
                                      crxns::MaxObs);
            } else {
                while (c < end && *c != ' ') ++c;
                vals_[j] = Rebuild(series, string_view(from, static_cast<size_t>(c - from)), crxns::MinObs, crxns::MaxObs);
            }
            have_[j] = 1;
        }
        for (; j < t; ++j) s.series[j].running = false;
        const size_t p = static_cast<size_t>(c - line.data());
        if (p < line.size()) {
            const string_view diff = line.substr(p);
            if (diff.size() > 2 * t) Fail("flag part longer than the " + std::to_string(2 * t) + " flag characters");
            for (size_t q = 0; q < diff.size(); ++q)
                if (diff[q] == '&') s.flags[q] = ' ';
                else if (diff[q] != ' ') s.flags[q] = diff[q];
        }
        // RINEX 2 has no flags without a value; they stay blank as reference too.
        if (v1_)
            for (size_t k = 0; k < t; ++k)
                if (!have_[k]) s.flags[2 * k] = s.flags[2 * k + 1] = ' ';

        sink_.Record(s.id, t, vals_.data(), have_.data(), s.flags.data(), lineNo_);
    }
    std::swap(prev_, cur_);
    nPrev_ = count;
}

void Decoder::Run()
{
    for (int& t : types_) t = -1;
    ReadHeader();
    const size_t flagCol = v1_ ? 28 : 31, countCol = v1_ ? 29 : 32, listCol = v1_ ? 32 : 41;
    const char full = v1_ ? '&' : '>';
    string_view line;
    while (NextLine(line)) {
        if (!v1_ && !line.empty() && line[0] == '&') continue;  // reserved escape line
        if (!line.empty() && line[0] == full) {
            const int count = Count(line, countCol, 3);
            if (!Digit(line[flagCol]) || line[flagCol] > '6') Fail("bad epoch flag in '" + std::string(line) + "'");
            const int flag = line[flagCol] - '0';
            if (flag >= 2) {
                Event(line, flag, count);
                continue;
            }
            ref_.assign(line.data(), line.size());
            if (v1_) ref_[0] = ' ';
            // An initialisation line starts every arc afresh.
            nPrev_ = 0;
            clock_.running = false;
            needInit_ = false;
        } else {
            if (needInit_) Fail("epoch line is a difference but no initialisation line precedes it");
            if (ref_.size() < line.size()) ref_.resize(line.size(), ' ');
            for (size_t c = 0; c < line.size(); ++c)
                if (line[c] == '&') ref_[c] = ' ';
                else if (line[c] != ' ') ref_[c] = line[c];
        }
        TrimRight(ref_);
        const int count = Count(ref_, countCol, 3);
        if (ref_[flagCol] != '0' && ref_[flagCol] != '1') Fail("bad epoch flag in '" + ref_ + "'");
        const size_t ids = ref_.size() > listCol ? (ref_.size() - listCol + 2) / 3 : 0;
        if (ids != static_cast<size_t>(count))
            Fail("satellite count " + std::to_string(count) + " does not match the list of " + std::to_string(ids));
        Epoch(count);
    }
}

}  // namespace

namespace {
// The first line of a text, without its line end.
string_view FirstLine(const std::string& text)
{
    const size_t nl = text.find('\n');
    return string_view(text.data(), nl == std::string::npos ? text.size() : nl);
}
}  // namespace

bool HasCompactRinexLabel(const std::string& text)
{
    const string_view first = FirstLine(text);
    return first.size() >= 71 && first.substr(60, 11) == "CRINEX VERS";
}

bool IsCompactRinex(const std::string& text)
{
    if (!HasCompactRinexLabel(text)) return false;
    string_view v = FirstLine(text).substr(0, 20);
    while (!v.empty() && v.back() == ' ') v.remove_suffix(1);
    while (!v.empty() && v.front() == ' ') v.remove_prefix(1);
    return v == "1.0" || v == "3.0";
}

std::string DecodeCompactRinex(const std::string& text, const std::string& path)
{
    TextSink sink(text.size());
    Decoder(text, path, sink).Run();
    return sink.Take();
}

void DecodeCompactRinex(const std::string& text, const std::string& path, CompactRinexSink& sink)
{
    Decoder(text, path, sink).Run();
}

void ScanCompactRinexEpochs(const std::string& text, const std::string& path, CompactRinexSink& sink)
{
    Decoder(text, path, sink, true).Run();
}
