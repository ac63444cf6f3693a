#pragma once
// GPS week and second of week, counted continuously from the GPS origin
// 1980-01-06 00:00:00 (MJD 44244) without the broadcast 1024-week roll-over.
#include <iosfwd>
#include <string>

namespace gpswsns {
extern short NDecSecond;   ///< decimals of the second in formats 0-2
extern short PrintFormat;  ///< layout 0-4 of operator<<
}  // namespace gpswsns

class GPSws {
public:
    /// Week 0, second 0.
    GPSws();
    /// Week and second of week (s); ends the run on an invalid field.
    GPSws(unsigned short week, long double second);
    /// Copy, checked like every other assignment.
    GPSws(const GPSws& other);
    /// Copy assignment, checked.
    GPSws& operator=(const GPSws& other);
    /// Sets both fields and checks them.
    void Set(unsigned short week, long double second);

    /// Continuous GPS week.
    unsigned short GetWeek() const { return week; }
    /// Second of week (s), 0 <= second < 604800.
    long double GetSecond() const { return second; }
    /// Sets the week; checks the week only.
    void SetWeek(unsigned short w);
    /// Sets the second of week (s); checks the second only.
    void SetSecond(long double s);
    /// Day of week, 0 on Sunday.
    unsigned short GetWeekDay() const;
    /// Second of the day (s): second of week less 86400 per past week day.
    long double GetDaySecond() const;

    /// Ends the run when week > 11999: "WEEK not valid".
    void TestWeek() const;
    /// Ends the run unless 0 <= second < 604800: "SECOND not valid".
    void TestSecond() const;
    /// Runs TestWeek, then TestSecond.
    void TestDatum() const;
    /// Prints the class's framed error on the output stream and exits with 1.
    [[noreturn]] static void Error(const std::string& text);

    /// Splits the second of day into hour, minute and second, without the
    /// carry of ymdhms::Sec2HMS.
    void Sec2HMS(unsigned short& hr, unsigned short& mn, long double& sec) const;

    /// Adds dsec seconds (either sign); whole weeks go to the week, and a
    /// negative second borrows one week. A result before week 0 ends the run
    /// ("WEEK not valid"), as does one after week 11999.
    GPSws& operator+=(long double dsec);
    /// Adds whole weeks, checked.
    GPSws& operator+=(unsigned short weeks);

private:
    unsigned short week;
    long double second;
};

/// Prints by gpswsns::PrintFormat: 0 week (5), second (NDecSecond + 8,
/// NDecSecond decimals); 1 week (5), week day (2), day second (NDecSecond +
/// 7); 2 week (5), week day (2), two blanks, hh:mm:ss; 3 a blank, week
/// zero-filled (4), week day (2); 4 week (5), second (16, 8 decimals).
/// Unknown values print layout 0. The stream's fill, flags and precision are
/// restored afterwards.
std::ostream& operator<<(std::ostream& os, const GPSws& t);
/// Reads "week second" and checks; on a failed read the object is kept.
std::istream& operator>>(std::istream& is, GPSws& t);
