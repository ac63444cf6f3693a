#pragma once
// Calendar time (Gregorian date and time of day) as read from observation
// and product headers. Every construction and assignment checks the fields
// and ends the run on an invalid one, so a ymdhms in hand is always usable.
#include <iosfwd>
#include <string>

namespace ymdhmsns {
extern short NDecSecond;   ///< decimals of the second in the default formats
extern short PrintFormat;  ///< layout chosen when PrintType selects none
extern short PrintType;    ///< fixed-column layouts 0, 1, 3, 4; others use PrintFormat
}  // namespace ymdhmsns

class ymdhms {
public:
    /// 1980-01-01 00:00:00.
    ymdhms();
    /// Date and time of day; ends the run on an invalid field (see TestDatum).
    ymdhms(unsigned short year, unsigned short month, unsigned short day,
           unsigned short hour, unsigned short minute, long double second);
    /// Copy, checked like every other assignment.
    ymdhms(const ymdhms& other);
    /// Copy assignment, checked like every other assignment.
    ymdhms& operator=(const ymdhms& other);
    /// Sets all fields and checks them.
    void Set(unsigned short year, unsigned short month, unsigned short day,
             unsigned short hour, unsigned short minute, long double second);

    /// Field getters: year, month 1-12, day of month, hour, minute, second (s).
    unsigned short GetYear() const { return year; }
    unsigned short GetMonth() const { return month; }
    unsigned short GetDay() const { return day; }
    unsigned short GetHour() const { return hour; }
    unsigned short GetMinute() const { return minute; }
    long double GetSecond() const { return second; }

    /// Single-field setters; each checks its own field only.
    void SetYear(unsigned short y);
    void SetMonth(unsigned short m);
    void SetDay(unsigned short d);
    void SetHour(unsigned short h);
    void SetMinute(unsigned short m);
    void SetSecond(long double s);

    /// Ends the run unless 1901 <= year <= 2199: "YEAR not valid".
    void TestYear() const;
    /// Ends the run unless 1 <= month <= 12: "MONTH not valid".
    void TestMonth() const;
    /// Ends the run unless the day lies in its month (a month outside 1-12
    /// counts as February): "DAY not valid".
    void TestDay() const;
    /// Ends the run when hour > 59: "HOUR not valid". 24 passes on purpose,
    /// since the carry of Sec2HMS produces it for the last instant of a day.
    void TestHour() const;
    /// Ends the run when minute > 59: "MINUTE not valid".
    void TestMinute() const;
    /// Ends the run unless 0 <= second < 60: "SECOND not valid".
    void TestSecond() const;
    /// Runs all field tests in the order year, month, day, hour, minute, second.
    void TestDatum() const;

    /// True for a Gregorian leap year; year 0 is taken as common.
    static bool LeapYear(long y);
    /// Splits a second of day s (>= 0) into hour, minute and second; a second
    /// within 1e-10 s of 60 carries into the minute and a minute of 60 into
    /// the hour, so the hour may reach 24. A negative or non-finite s ends the
    /// run with "SECOND not valid", s of 60 h or more with "HOUR not valid".
    static void Sec2HMS(long double s, unsigned short& hr, unsigned short& mn,
                        long double& sec);
    /// Prints the class's framed error on the output stream and exits with 1.
    [[noreturn]] static void Error(const std::string& text);

    /// Seconds since the start of the day: 3600 hour + 60 minute + second.
    long double GetDaySecond() const;
    /// Day of year, 1 on 1 January.
    unsigned short GetDayOfYear() const;
    /// Decimal year: year + (day of year - 1 + day second/86400)/(days in year).
    long double GetYearDec() const;

    /// Sets year y (checked) and day of year doy, clearing the time of day.
    /// A doy of 0 or beyond the last day of y ends the run with
    /// "DAY OF YEAR not valid".
    void SetDayOfYear(unsigned short y, unsigned short doy);
    /// Sets the epoch from a decimal year (see GetYearDec); a value whose
    /// whole part is no valid year ends the run with "YEAR not valid".
    void SetYDec(double ydec);
    /// Sets the time of day from a second of day s, keeping the date; s must
    /// give an hour of at most 59.
    void SetDaySecond(long double s);
    /// Sets hour, minute and second, keeping the date; all three are checked.
    void SetHMS(unsigned short h, unsigned short m, long double s);

private:
    unsigned short year, month, day, hour, minute;
    long double second;
};

/// Cumulative days before each month, [leap][month - 1]; entry 12 is the
/// length of the year.
extern const unsigned short month_day[2][13];

/// Prints the epoch in the layout chosen by ymdhmsns::PrintType, else by
/// ymdhmsns::PrintFormat (unknown values print layout 0). The stream's fill,
/// flags and precision are restored afterwards.
std::ostream& operator<<(std::ostream& os, const ymdhms& t);
/// Reads "year month day hour minute second"; years up to 99 become
/// 1980-2079 (80..99 -> 19xx, 0..79 -> 20xx). The result is checked; on a
/// failed read the object is left as it was.
std::istream& operator>>(std::istream& is, ymdhms& t);

namespace ymdhmsns {
/// Writes hh:mm:ss zero-padded, the second with ndec decimals in ndec + 3
/// columns (2 columns and no decimal point when ndec is 0); the layout that
/// the epochs of all time classes share. Leaves the fill at '0'.
void PrintHMS(std::ostream& os, unsigned short hr, unsigned short mn,
              long double sec, short ndec);
}  // namespace ymdhmsns
