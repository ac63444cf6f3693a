#pragma once
// Differential code biases of the satellites from one file in the CODE DCB
// layout (P1-P2, P1-C1 or P2-C2, monthly or "_ALL"): the correction that
// makes one kind of code observation consistent with the one the orbit and
// clock products were made for.
#include <cstddef>
#include <iosfwd>
#include <string>

#include "geodesy/mjd.h"
#include "numerics/matrix.h"

namespace DCBns {
/// Line buffer of the file, terminator included: lines hold at most 511
/// characters.
constexpr std::size_t LineSize = 512;
/// 0-based columns of a satellite line: bias at 26, its RMS at 38, each in
/// a 12-column field (nanoseconds).
constexpr std::size_t ValuePos = 26, RMSPos = 38, FieldLen = 12;
/// The file's unit, nanoseconds, in seconds.
constexpr long double NanoSecond = 1e-9L;
/// Shared satellite number base of GLONASS (number = 100 + slot).
constexpr short GLONASSBase = 100;
/// Period of a file whose name carries no month: MJD 44250 (1980-01-06,
/// the origin of GPS time) to MJD 85000 (year 2091).
constexpr unsigned long WideStartDay = 44250, WideEndDay = 85000;
/// Two-digit years above this one are 19yy, the others 20yy.
constexpr long LastCenturyFrom = 78;
/// The end of a monthly period lies this much (s) before the next month.
constexpr long double PeriodEndGap = 0.001L;
/// Most satellite lines that nsat (16-bit) can count.
constexpr long MaxLines = 32767;
}  // namespace DCBns

class DCB {
public:
    /// No file, no satellites, the wide period.
    DCB();

    /// Stores the file name; the argument checks have tested that it exists.
    /// A null name or one of 256 characters or more ends the run.
    void SetFile(const char* name);

    /// ParseValidDate, then reads the satellite lines in two passes (count,
    /// then fill). Lines up to the one holding "PRN / STATION NAME" are
    /// header; behind it a satellite line has G or R in column 0, digits in
    /// columns 1 and 2 and white space (or the line end) in column 3, all
    /// others (stations, Galileo, text) are passed over. Bias and RMS are
    /// read in ns and stored in s; the number is the two digits, plus 100
    /// for R. A file without that header line gives no satellites. A file
    /// that does not open, a line over 511 characters, a satellite line cut
    /// before its RMS or with a field that is no number end the run with the
    /// framed error naming the file and the line.
    void ReadFile();

    /// Validity period from the file name (its last path part): yymm stand
    /// 8 and 6 characters from its end, or 12 and 10 when it holds "_ALL".
    /// With four digits there and a month 1-12 the period runs from the
    /// first of the month 00:00:00 to the first of the next month minus
    /// 0.001 s, yy above 78 being 19yy and the others 20yy; otherwise it is
    /// MJD 44250 to MJD 85000.
    void ParseValidDate();

    /// Bias val and its RMS rms (s) of satellite sat (shared numbering): the
    /// first line of that number. Without one both are 0 and a warning names
    /// the satellite.
    void GetDCB(short sat, long double& val, long double& rms) const;
    /// RMS (s) of satellite sat's bias; 0 and a warning when it is missing.
    long double GetDCBRMS(short sat) const;
    /// Bias (s) of satellite sat; 0 and a warning when it is missing.
    long double GetDCBVAL(short sat) const;

    /// Satellite lines read.
    short GetNSat() const { return nsat; }
    /// Satellite number of line i (0-based, < GetNSat()).
    short GetSat(long i) const { return sat(i); }
    /// First instant of the validity period.
    const mjd& GetStartEpoch() const { return StartEpoch; }
    /// Last instant of the validity period.
    const mjd& GetEndEpoch() const { return EndEpoch; }

private:
    long Find(short s) const;
    void CountSatLines(std::istream& in);
    void ReadSatLines(std::istream& in);
    [[noreturn]] void Fail(long lineNo, const std::string& text) const;

    char file[256];
    short nsat;
    matrix<short> sat;
    matrix<long double> VAL, RMS;
    mjd StartEpoch, EndEpoch;
};
