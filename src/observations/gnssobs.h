#pragma once
// The value types in which every RINEX observable is held. A missing or
// rejected observation is stored as 0; there is no separate validity flag,
// so IsNull is the test for "absent".
#include <cmath>
#include <cstring>
#include <ostream>

namespace gnssobsns {
/// Values smaller than this in size are missing observations (stored 0).
inline constexpr long double NullLimit = 0.0001L;
/// The same for Doppler and signal strength.
inline constexpr long double ShortNullLimit = 0.00001L;
inline int PrintType = 1;  // 0 RINEX-like, 1 listing with "*.***", 2 value only
inline int Width = 14;     // field width of PrintType 2
}  // namespace gnssobsns

namespace gnssobsshortns {
inline int PrintType = 1;
inline int Width = 14;
}  // namespace gnssobsshortns

/// True for a loss-of-lock or signal-strength column as RINEX writes it: a
/// blank or one digit.
inline bool IsFlagText(char c) { return c == ' ' || (c >= '0' && c <= '9'); }
/// The value of such a column, a blank giving 0 (and any other character
/// its code minus that of '0').
inline unsigned short FlagDigit(char c) { return c == ' ' ? 0 : static_cast<unsigned short>(c - '0'); }

/// An extended-precision number held in its ten value bytes alone, so that
/// the flags of an observation fit beside it in 16 bytes: a long double
/// member pads to 16 bytes by itself, and a day's observation arrays then
/// took twice the memory. Every read and write moves exactly those ten
/// bytes, the value unchanged; zero bytes are the number 0.
class PackedExtended {
public:
    PackedExtended() = default;
    explicit PackedExtended(long double v) { Store(v); }
    operator long double() const { return Load(); }
    PackedExtended& operator=(long double v) { Store(v); return *this; }
    PackedExtended& operator+=(long double d) { Store(Load() + d); return *this; }
    PackedExtended& operator-=(long double d) { Store(Load() - d); return *this; }
    PackedExtended& operator*=(long double d) { Store(Load() * d); return *this; }
    PackedExtended& operator/=(long double d) { Store(Load() / d); return *this; }

private:
    static constexpr int Bytes = 10;
#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
    // One 80-bit load or store: copied through memory, the value would
    // cross a store that the load cannot take it from.
    long double Load() const
    {
        long double v;
        asm("fldt %1" : "=t"(v) : "m"(bytes_));
        return v;
    }
    void Store(long double v) { asm("fstpt %0" : "=m"(bytes_) : "t"(v) : "st"); }
#else
    long double Load() const
    {
        long double v = 0.0L;
        std::memcpy(&v, bytes_, Bytes);
        return v;
    }
    void Store(long double v) { std::memcpy(bytes_, &v, Bytes); }
#endif
    unsigned char bytes_[Bytes] = {};
};

/// One RINEX observable with its loss-of-lock and signal-strength digits,
/// 16 bytes.
class alignas(16) gnssobs {
public:
    PackedExtended obs;       // cycles for phase, metres for code
    unsigned short lli = 0;   // loss-of-lock indicator
    unsigned short ss = 0;    // signal strength
    using ZeroBytesDefault = void;  // the null observation is all zero bytes

    gnssobs() = default;
    gnssobs(const gnssobs&) = default;
    gnssobs& operator=(const gnssobs&) = default;
    /// An observation of value o with the given flags.
    explicit gnssobs(long double o, unsigned short l = 0, unsigned short s = 0)
        : obs(o), lli(l), ss(s) {}

    /// Sets the value and clears both flags: a computed value has none.
    gnssobs& operator=(long double o);
    /// Adds a correction to the value and keeps the flags.
    gnssobs& operator+=(long double d);

    /// Decodes one 16-column RINEX 2 field: columns 0-13 the value (atof
    /// rule, so blank or non-numeric text gives 0), column 14 the
    /// loss-of-lock digit and column 15 the signal strength, a blank giving
    /// 0 and any other character its code minus that of '0'. The caller
    /// guarantees 16 readable characters.
    void operator>>(const char* line);

    void SetObs(long double o) { obs = o; }
    void SetLli(unsigned short l) { lli = l; }
    void SetSs(unsigned short s) { ss = s; }
    long double GetObs() const { return obs; }
    unsigned short GetLli() const { return lli; }
    unsigned short GetSs() const { return ss; }
    /// True when |obs| < 0.0001, the one test for a missing observation;
    /// inline, as every stage asks it of every value.
    bool IsNull() const { return std::fabs(static_cast<long double>(obs)) < gnssobsns::NullLimit; }
};
static_assert(sizeof(gnssobs) == 16, "an observation and its flags in 16 bytes");

/// A Doppler or signal-strength value: no flags are stored.
class gnssobsshort {
public:
    long double obs = 0.0L;
    using ZeroBytesDefault = void;  // as gnssobs

    gnssobsshort() = default;
    gnssobsshort(const gnssobsshort&) = default;
    gnssobsshort& operator=(const gnssobsshort&) = default;
    /// A value o.
    explicit gnssobsshort(long double o) : obs(o) {}

    /// Sets the value.
    gnssobsshort& operator=(long double o);
    /// Adds to the value.
    gnssobsshort& operator+=(long double d);
    /// Decodes columns 0-13 of a 16-column RINEX field by the atof rule.
    void operator>>(const char* line);

    void SetObs(long double o) { obs = o; }
    long double GetObs() const { return obs; }
    /// True when |obs| < 0.00001.
    bool IsNull() const { return std::fabs(obs) < gnssobsns::ShortNullLimit; }
};

/// A copy of o with the value multiplied by a; the flags are carried over.
gnssobs operator*(long double a, const gnssobs& o);
/// A copy of o with the value multiplied by a; the flags are carried over.
gnssobs operator*(const gnssobs& o, long double a);
/// Difference of the values, 0 when either operand is null; flags 0.
gnssobs operator-(const gnssobs& a, const gnssobs& b);
/// Sum of the values, 0 when either operand is null; flags 0.
gnssobs operator+(const gnssobs& a, const gnssobs& b);

/// Prints in fixed notation by gnssobsns::PrintType (a value above
/// 0.00001 in size counts as present): 1 value (14.3) and flags (width 2),
/// or "*.***" and " * *"; 0 value (14.3) and flags (width 1), or "0.000"
/// and two blanks; 2 value or "*.***" in gnssobsns::Width. Any other
/// PrintType prints as 1. The stream's format is restored afterwards.
std::ostream& operator<<(std::ostream& os, const gnssobs& o);
/// Prints by gnssobsshortns::PrintType: 1 value (10.3) and " 0 0", or
/// "*.***" and " * *"; 0 value (14.3) and two blanks, or 0 (width 14) and
/// two blanks; 2 value or 0 in gnssobsshortns::Width.
std::ostream& operator<<(std::ostream& os, const gnssobsshort& o);
