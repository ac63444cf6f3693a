#pragma once
// GLONASS frequency channels over time, from the fixed-column channel file
// (-gf): per line a slot, a validity period and the channel that the slot
// transmits on during it. The channel fixes the slot's carrier frequencies,
// so a wrong one shifts every GLONASS wavelength of the run.
#include <string>

#include "geodesy/mjd.h"
#include "geodesy/ymdhms.h"
#include "numerics/matrix.h"

namespace GLNSatns {
/// Line buffer of the file, terminator included: lines hold at most 511
/// characters.
constexpr int LineSize = 512;
/// Shared satellite number base of GLONASS (number = 100 + slot).
constexpr short SatBase = 100;
/// Highest slot a shared GLONASS number can carry (199 - 100).
constexpr int MaxSlot = 99;
/// Channel range of the GLONASS FDMA plan (ICD edition 5.1, 2008): a value
/// outside cannot be a real channel, and taking it would put the
/// satellite's carriers outside the GLONASS bands.
constexpr int MinChannel = -7;
constexpr int MaxChannel = 6;
/// Open end of a period: day 88068 (year 2100), last whole second.
constexpr unsigned long LastEphDay = 88068;
constexpr long double LastEphSecond = 86399.0L;
}  // namespace GLNSatns

class GLNSat {
public:
    /// Columns of eph: start and end of a line's validity period.
    enum { FROM = 0, TO = 1 };

    /// No file, no rows, IsGLNSat false.
    GLNSat();

    /// Stores the channel file name. A name that does not exist ends the run
    /// with "GLONASS FREQUENCY CHANNEL FILE DOES NOT EXIST!"; a null name or
    /// one of 256 characters or more ends it as well.
    void SetFile(const char* fname);

    /// Reads the whole file in two passes (count, then fill). Lines starting
    /// with '#' or a blank, and empty lines, are passed over. A data line
    /// holds at 0-based columns: 0 a letter, 1 the slot (1..99), 10/15/18/
    /// 21/24/27 year, month, day, hour, minute, second of the start, 31/36/
    /// 39/42/45/48 the same for the end, or a blank at 31 (and blanks to 50)
    /// for a period open to day 88068, and 51 the channel, an integer in
    /// -7..+6. A file that does not open ends the run with "GLONASS
    /// FREQUENCY CHANNEL FILE CAN NOT BE OPENED!"; a data line that breaks
    /// this layout (short, a field that isn't a number or lies outside its
    /// calendar range, an end before its start, a channel out of range), a
    /// line over 511 characters and a file without data lines end it with
    /// the framed error naming the file and the line. Two lines of one slot
    /// with different channels whose periods overlap (more than in one
    /// instant) end it with the framed error naming the file and both lines;
    /// repeated lines of the same channel are accepted.
    void ReadFile();

    /// Channel of satellite satprn (shared numbering, 101..199) at seph: the
    /// first line of that satellite whose period, both ends included, holds
    /// seph. IsGLNSat becomes true then; without such a line the result is 0
    /// and IsGLNSat false.
    long double GetFreqNum(short satprn, mjd& seph);

    /// Whether the last GetFreqNum found a line.
    bool GetIsGLNSat() const { return IsGLNSat; }
    /// Data lines read.
    long GetNSat() const { return nsat; }
    /// Shared satellite number (100 + slot) of line i (0-based, < GetNSat()).
    short GetSat(long i) const { return sat(i); }
    /// Start (FROM) or end (TO) of the period of line i.
    const mjd& GetEph(long i, int col) const { return eph(i, col); }
    /// Channel of line i.
    long double GetFreqChannel(long i) const { return FreqChannel(i); }

private:
    void CountGNSSats(std::istream& in);
    void ReadGLNFreqChan(std::istream& in);
    mjd ReadEpoch(const std::string& line, std::size_t pos, std::size_t secPos,
                  std::size_t secLen, long lineNo, const char* which);
    [[noreturn]] void Fail(long lineNo, const std::string& text) const;
    void CheckConflicts() const;

    char file[256];
    bool IsGLNSat;
    long nsat;
    matrix<short> sat;
    matrix<mjd> eph;
    matrix<long double> FreqChannel;
    matrix<long> fileLine;  // line of the file that each row came from
    ymdhms dm;
    mjd lastEph;
};
