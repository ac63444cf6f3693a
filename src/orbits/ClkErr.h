#pragma once
// The program's own file of a-priori receiver clock errors: two head lines,
// then one line per observation epoch (MJD, second of day, clock in µs).
// Written after a static solution, read back in a later run, where entry i
// belongs to observation epoch i.
#include <iosfwd>
#include <string>

#include "geodesy/mjd.h"
#include "numerics/matrix.h"

namespace ClkErrns {
/// Microseconds per metre of clock: 1e6 / c.
constexpr long double MicrosecondsPerMetre = 0.00333564095198152049574L;
/// Largest receiver clock error read (µs): receivers hold their clock
/// within 1 ms, and a free-running quartz (1e-6 s/s) gathers 86 ms a day;
/// 1 s is far beyond both and refuses a value that would move the
/// reception epochs of the models by kilometres of satellite motion.
constexpr long double MaxClock_us = 1.0e6L;
}  // namespace ClkErrns

class ClkErr {
public:
    ClkErr();

    /// Stores the file name; a name of 256 characters or more ends the run
    /// with the framed error.
    void SetFile(const char* file);

    /// Reads the file named by SetFile: the two head lines (their labels are
    /// required) and every data line as epoch and clock (µs converted to s).
    /// Blank lines are passed over; a data line that does not hold exactly
    /// day, second and value as finite numbers, or a clock beyond
    /// ClkErrns::MaxClock_us, ends the run with the framed error naming the
    /// file and line.
    void ReadFile();

    /// Data lines read.
    long GetNEpoch() const { return nepoch; }
    /// Reference system letter of line 2 (G, R or E).
    char GetRefSystem() const { return RefSystem; }
    /// Receiver clock error of entry i (s).
    long double GetClkErr(long i) const { return CErr(i); }
    /// Epoch of entry i.
    mjd GetMJD(long i) const { return epoch(i); }

    /// Writes a whole receiver clock file to out: the head lines with the
    /// marker name and number and the reference system letter, then one
    /// line per epoch with the clock dtAll_m (m) converted to µs (MJD in 6
    /// columns, second of day 10.3, two blanks, clock 10.6). epochs and
    /// dtAll_m must have the same length; a difference ends the run.
    static void Write(std::ostream& out, const std::string& markerName,
                      const std::string& markerNumber, char refSystem,
                      const matrix<mjd>& epochs, const matrix<long double>& dtAll_m);

private:
    void CountClkData();
    void ReadFileData();

    char clkfile[256];
    long nepoch;
    char RefSystem;
    matrix<mjd> epoch;
    matrix<long double> CErr;
};
