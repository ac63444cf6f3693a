#pragma once
// Modified Julian Date split into whole day and second of day: the form in
// which every epoch of the program is stored, compared and differenced, so
// that a day's 86400 s keep their sub-nanosecond resolution.
#include <iosfwd>
#include <string>

namespace mjdns {
extern short NDecSecond;   ///< decimals of the second of day in formats 0-2
extern short PrintFormat;  ///< layout 0-4 of operator<<
}  // namespace mjdns

class mjd {
public:
    /// Day 0, second 0.
    mjd();
    /// Day mjday and second of day second (s); ends the run on an invalid field.
    mjd(unsigned long mjday, long double second);
    /// Copy, checked like every other assignment.
    mjd(const mjd& other);
    /// Copy assignment, checked.
    mjd& operator=(const mjd& other);
    /// Sets from a decimal MJD: the whole part is the day, the fraction times
    /// 86400 the second. A value below 0 or at/after day 200000 ends the run
    /// with "MJDAY not valid".
    mjd& operator=(long double mdec);
    /// Sets both fields and checks them.
    void Set(unsigned long mjday, long double second);

    /// Day number (MJD = JD - 2400000.5, whole part).
    unsigned long GetMJDay() const { return mjday; }
    /// Second of day (s), 0 <= second < 86400.
    long double GetSecond() const { return second; }
    /// Sets the day; checks the day only.
    void SetMJDay(unsigned long d);
    /// Sets the second of day (s); checks the second only.
    void SetSecond(long double s);
    /// Decimal MJD, mjday + second/86400 (days).
    long double GetMJDDec() const;

    /// Ends the run when mjday > 199999: "MJDAY not valid".
    void TestMJDay() const;
    /// Ends the run unless 0 <= second < 86400: "SECOND not valid".
    void TestSecond() const;
    /// Runs TestMJDay, then TestSecond.
    void TestDatum() const;
    /// Prints the class's framed error on the output stream and exits with 1.
    [[noreturn]] static void Error(const std::string& text);

    /// Splits the second of day into hour, minute, second as ymdhms::Sec2HMS
    /// does, carries included (the hour may reach 24).
    void Sec2HMS(unsigned short& hr, unsigned short& mn, long double& sec) const;

    /// Adds dsec seconds (either sign), carrying whole days into mjday; a
    /// result within 1e-12 s of the next midnight is that midnight, so that
    /// sums of epoch intervals land exactly on day boundaries. A result
    /// before day 0 or after day 199999 ends the run ("MJDAY not valid").
    mjd& operator+=(long double dsec);
    /// Adds whole days; unchecked, for stepping through a known day range.
    mjd& operator+=(long days);
    /// Subtracts whole days; unchecked, for stepping through a known day range.
    mjd& operator-=(long days);

    /// Same day and seconds closer than 1e-13 s.
    bool operator==(const mjd& o) const;
    /// Negation of operator==.
    bool operator!=(const mjd& o) const;
    /// Strictly later: by day, then by second without tolerance.
    bool operator>(const mjd& o) const;
    /// Strictly earlier: by day, then by second without tolerance.
    bool operator<(const mjd& o) const;
    /// Later or equal, equal meaning within 1e-14 s on the same day.
    bool operator>=(const mjd& o) const;
    /// Earlier or equal, equal meaning within 1e-14 s on the same day.
    bool operator<=(const mjd& o) const;

private:
    // Adds dsec (|dsec| below a day) to the second of day on day `day`,
    // then carries and checks as operator+= describes.
    mjd& AddSeconds(long double dsec, long long day);
    unsigned long mjday;
    long double second;
};

/// d1 - d2 in seconds, correctly signed in both orders; the day difference
/// is scaled before the seconds are added, so no precision is lost to the
/// magnitude of the MJD.
long double operator-(const mjd& d1, const mjd& d2);

/// Prints by mjdns::PrintFormat: 0 day (6) and second (NDecSecond + 7,
/// NDecSecond decimals); 1 decimal MJD in the same width and decimals; 2 day
/// (6), two blanks and hh:mm:ss; 3 day alone; 4 day (6) and day fraction
/// (16, 13 decimals). Unknown values print layout 0. The stream's fill,
/// flags and precision are restored afterwards.
std::ostream& operator<<(std::ostream& os, const mjd& t);
/// Reads "mjday second" and checks; on a failed read the object is kept.
std::istream& operator>>(std::istream& is, mjd& t);
