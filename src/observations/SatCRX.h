#pragma once
// The user's list of satellite problems: periods in which the phase, the
// code or both of one satellite are not to be used.
#include <string>

#include "geodesy/mjd.h"
#include "geodesy/ymdhms.h"
#include "numerics/matrix.h"

namespace SatCRXns {
/// Longest line read, terminator excluded (a 512-character buffer).
inline constexpr std::size_t MaxLineLength = 511;
/// Lines of the file's header, passed over unread.
inline constexpr int HeaderLines = 6;
/// A line that trimmed keeps at most this many characters ends the list.
inline constexpr std::size_t MaxEndLineLength = 4;
}  // namespace SatCRXns

class SatCRX {
public:
    /// Columns of eph and TypAct.
    enum { FROM = 0, TO = 1 };
    enum { PROBLEM = 0, ACTION = 1 };

    std::string file;
    long nsat;               // data lines (periods, not distinct satellites)
    matrix<short> sat;       // satellite number of each period
    matrix<mjd> eph;         // nsat x 2: start (FROM) and end (TO), both inside
    matrix<short> TypAct;    // nsat x 2: problem 1 phase, 2 code, 3 both; action
    ymdhms dm;               // scratch for the calendar fields of a line
    mjd lastEph;             // end of an open period: 2099-12-31 23:59:59

    /// An empty list.
    SatCRX();

    /// Stores the file name; a file that does not exist stops the run with
    /// "SATELLITE PROBLEM FILE DOES NOT EXIST!".
    void SetFile(const std::string& name);
    /// Reads the list in two passes (CountGNSSats, ReadSatProblems). A file
    /// that does not open stops the run with "SATELLITE PROBLEM FILE CAN NOT
    /// BE OPENED!"; a file of 6 lines or fewer gives an empty list. A date
    /// field that is no valid date stops the run with the ymdhms message, a
    /// data line that ends inside a date with the framed error and its line.
    void ReadFile();
    /// Number of periods read.
    long GetNSat() const { return nsat; }

    /// Problem and action of the first period of satellite s that holds
    /// epoch t (both ends included); 0 and 0 when none does.
    void GetSatelliteProblem(short s, const mjd& t, short& problem, short& action) const;

    /// First pass: counts the data lines and sizes sat, eph and TypAct.
    void CountGNSSats();
    /// Second pass: fills the matrices that CountGNSSats sized.
    void ReadSatProblems();

private:
    // Walks the data lines of the file, calling take(line) for each; both
    // passes stop at the same line, so their counts agree.
    template <class Take>
    void WalkDataLines(Take take);
};
