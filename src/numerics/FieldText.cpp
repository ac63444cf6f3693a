#include "numerics/FieldText.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace fieldtext {

bool NextLine(std::istream& in, std::string& line)
{
    if (!std::getline(in, line)) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

namespace {
// Large enough that the calls to the kernel cost nothing next to the scan,
// small enough to come from the heap's reused memory: a fresh mapping would
// fault in every page again.
constexpr std::size_t ScanBlock = std::size_t(64) << 10;
}  // namespace

LineScanner::LineScanner(std::istream& in) : in_(in), buf_(new char[ScanBlock]), size_(ScanBlock) {}

bool LineScanner::Refill()
{
    if (!in_) return false;
    if (pos_ > 0) {
        std::memmove(buf_.get(), buf_.get() + pos_, end_ - pos_);
        consumed_ += pos_;
        end_ -= pos_;
        pos_ = 0;
    }
    // A line longer than the block (no text file of ours has one) grows it.
    if (end_ == size_) {
        std::unique_ptr<char[]> wider(new char[2 * size_]);
        std::memcpy(wider.get(), buf_.get(), end_);
        buf_ = std::move(wider);
        size_ *= 2;
    }
    in_.read(buf_.get() + end_, static_cast<std::streamsize>(size_ - end_));
    const std::size_t got = static_cast<std::size_t>(in_.gcount());
    end_ += got;
    return got > 0;
}

bool LineScanner::Next(std::string_view& line)
{
    const char* nl = nullptr;
    while ((nl = static_cast<const char*>(std::memchr(buf_.get() + pos_, '\n', end_ - pos_))) == nullptr)
        if (!Refill()) break;
    if (nl == nullptr && pos_ == end_) return false;
    const std::size_t stop = nl != nullptr ? static_cast<std::size_t>(nl - buf_.get()) : end_;
    std::size_t len = stop - pos_;
    if (len > 0 && buf_[pos_ + len - 1] == '\r') --len;
    line = std::string_view(buf_.get() + pos_, len);
    lineStart_ = consumed_ + pos_;
    pos_ = nl != nullptr ? stop + 1 : end_;
    return true;
}

std::string TrimmedField(const std::string& line, std::size_t pos, std::size_t len)
{
    if (pos >= line.size()) return "";
    const std::string f = line.substr(pos, len);
    const std::size_t a = f.find_first_not_of(" \t");
    if (a == std::string::npos) return "";
    return f.substr(a, f.find_last_not_of(" \t") - a + 1);
}

bool ToLong(const std::string& text, long& value)
{
    const std::size_t i = (!text.empty() && (text[0] == '-' || text[0] == '+')) ? 1 : 0;
    if (i == text.size()) return false;
    for (std::size_t j = i; j < text.size(); ++j)
        if (!std::isdigit(static_cast<unsigned char>(text[j]))) return false;
    errno = 0;
    value = std::strtol(text.c_str(), nullptr, 10);
    return errno == 0;
}

namespace {

// Powers of ten that long double holds exactly: 10^n = 2^n 5^n, and 5^27
// still fits the 64-bit significand.
constexpr int MaxExactPower = 27;
constexpr long double ExactPowerOfTen[MaxExactPower + 1] = {
    1e0L,  1e1L,  1e2L,  1e3L,  1e4L,  1e5L,  1e6L,  1e7L,  1e8L,  1e9L,  1e10L, 1e11L, 1e12L, 1e13L,
    1e14L, 1e15L, 1e16L, 1e17L, 1e18L, 1e19L, 1e20L, 1e21L, 1e22L, 1e23L, 1e24L, 1e25L, 1e26L, 1e27L};
// Digits whose integer is exact in the significand (10^19 < 2^64).
constexpr int MaxExactDigits = 19;

// A plain decimal of at most 19 digits and a small exponent, the form of
// nearly every field of the product files: its digits make an integer that
// long double holds exactly, and one division (or product) by an exact power
// of ten rounds once, correctly, as strtold does. False for anything else,
// which then goes to strtold.
bool ExactDecimal(const char* t, long double& value)
{
    const bool negative = *t == '-';
    if (*t == '-' || *t == '+') ++t;
    unsigned long long digits = 0;
    int nDigits = 0, scale = 0;
    bool point = false;
    for (;; ++t) {
        if (*t >= '0' && *t <= '9') {
            if (++nDigits > MaxExactDigits) return false;
            digits = digits * 10 + static_cast<unsigned>(*t - '0');
            if (point) ++scale;
        } else if (*t == '.' && !point) {
            point = true;
        } else {
            break;
        }
    }
    if (nDigits == 0) return false;
    int exponent = 0;
    if (*t == 'E' || *t == 'e') {
        ++t;
        const bool minus = *t == '-';
        if (*t == '-' || *t == '+') ++t;
        int n = 0;
        for (; *t >= '0' && *t <= '9'; ++t) {
            if (++n > 3) return false;
            exponent = exponent * 10 + (*t - '0');
        }
        if (n == 0) return false;
        if (minus) exponent = -exponent;
    }
    if (*t != '\0') return false;
    const int down = scale - exponent;
    if (down > MaxExactPower || -down > MaxExactPower) return false;
    const long double m = static_cast<long double>(digits);
    value = down >= 0 ? m / ExactPowerOfTen[down] : m * ExactPowerOfTen[-down];
    if (negative) value = -value;
    return true;
}

}  // namespace

bool ToLongDouble(const char* text, long double& value)
{
    if (*text == '\0') return false;
    if (ExactDecimal(text, value)) return true;
    char* end = nullptr;
    errno = 0;
    value = std::strtold(text, &end);
    return errno == 0 && end != text && *end == '\0' && std::isfinite(value);
}

bool ToLongDouble(const std::string& text, long double& value) { return ToLongDouble(text.c_str(), value); }

bool IsNumberOrBlank(const char* f, std::size_t n)
{
    std::size_t i = 0;
    while (i < n && f[i] == ' ') i++;
    if (i == n) return true;
    std::size_t j = i + (f[i] == '-' || f[i] == '+' ? 1 : 0), digits = 0;
    for (bool point = false; j < n && ((f[j] >= '0' && f[j] <= '9') || (f[j] == '.' && !point)); j++) {
        if (f[j] == '.') point = true;
        else digits++;
    }
    while (j < n && f[j] == ' ') j++;
    if (j == n && digits > 0) return true;
    long double v;
    return ToLongDouble(TrimmedField(std::string(f, n), 0, n), v);
}

void CopyTrimmedField(std::string_view line, std::size_t pos, std::size_t len, char* out, std::size_t n)
{
    // In place, with no string made: readers call it for every record.
    std::size_t a = std::min(pos, line.size()), b = a + std::min(len, line.size() - a);
    while (a < b && (line[a] == ' ' || line[a] == '\t')) ++a;
    while (b > a && (line[b - 1] == ' ' || line[b - 1] == '\t')) --b;
    const std::size_t used = std::min(b - a, n - 1);
    std::memcpy(out, line.data() + a, used);
    out[used] = '\0';
}

long double FortranNumber(const std::string& line, std::size_t pos, std::size_t len)
{
    if (pos >= line.size()) return 0.0L;
    std::string f = line.substr(pos, len);
    for (char& ch : f)
        if (ch == 'D' || ch == 'd') ch = 'E';
    return std::strtold(f.c_str(), nullptr);
}

long double MantissaExponent(const std::string& line, std::size_t pos, std::size_t len, std::size_t epos)
{
    return FortranNumber(line, pos, len) * std::pow(10.0L, FortranNumber(line, epos, 3));
}

}  // namespace fieldtext
