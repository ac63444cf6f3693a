#pragma once
// A multipath series written by teqc in its compact text form COMPACT2: per
// sampling interval the satellites in view and one value each (metres),
// with the cycle slips teqc marked. Read and kept for the run; the
// processing does not consume it yet.
#include <cstddef>
#include <iosfwd>
#include <string>

#include "geodesy/mjd.h"
#include "numerics/matrix.h"

namespace CompactTEQCns {
/// Line buffer of the file, terminator included: lines hold at most 255
/// characters.
constexpr std::size_t LineSize = 256;
/// Interval line: the value from column 6; start line: the decimal MJD
/// from column 14.
constexpr std::size_t IntervalPos = 6, StartPos = 14;
/// A satellite slot is 4 columns (blank, letter, tens, units), a value
/// field 10, with the slip mark at column 8 of the field.
constexpr std::size_t SlotLen = 4, FieldLen = 10, SlipPos = 8;
/// Room of the distinct satellite list: numbers up to 299 (E99).
constexpr int MaxSatNumber = 300;
/// A sampling interval must lie in (0, MaxInterval] s; beyond a day it is
/// no sampling of one observation file.
constexpr long double MaxInterval = 86400.0L;
/// Highest MJD day of the mjd class.
constexpr long double LastDay = 199999.0L;
}  // namespace CompactTEQCns

class CompactTEQC {
public:
    /// No file, no epochs.
    CompactTEQC();

    /// Stores the file name; a name that does not exist ends the run with
    /// "TEQC COMPACT FILE DOES NOT EXISTS!".
    void SetFile(const char* name);

    /// Reads the file: the first line must hold "COMPACT2" (else the framed
    /// "TEQC COMPACT FILE IS NOT WRITTEN IN VERSION COMPACT2!"); the lines
    /// holding "T_SAMP" (interval in s from column 6) and "START_TIME_MJD"
    /// (decimal MJD from column 14) follow in either order, and the records
    /// start behind the later of them. A record opens with a count n: n > 0
    /// satellites listed behind it in 4-column slots (blank, letter blank/G,
    /// R or E for the base 0, 100, 200, tens digit or blank, units digit),
    /// n < 0 the previous list again, n = 0 no data. A record with data is
    /// followed by a line of its values, 10 columns each, a blank at column
    /// 8 of a field marking a slip. Each record, the empty ones included,
    /// moves the epoch on by the interval. A missing header line, an
    /// interval outside (0, 86400] s, a start outside the mjd range, a line
    /// over 255 characters, a record without a count, a list shorter than
    /// its count or with a broken slot, a negative count before any list,
    /// a missing value line or a value that is no number end the run with
    /// the framed error naming the file and the line.
    void ReadFile();

    /// Values read (one per satellite and epoch).
    long NObs() const { return nobs; }
    /// Epochs with data.
    long NEph() const { return neph; }
    /// The same as NObs and NEph, under the names of the other readers.
    long GetNObs() const { return nobs; }
    long GetNEpoch() const { return neph; }

    /// Format version read (2), 0 before ReadFile.
    short GetVersion() const { return version; }
    /// Sampling interval (s).
    long double GetInterval() const { return interval; }
    /// Epoch i (0-based, < NEph()) and its number of values.
    const mjd& GetEph(long i) const { return eph(i); }
    long GetNSat(long i) const { return nsat(i); }
    /// Satellite (shared numbering), value (m) and slip mark of value k
    /// (0-based, < NObs(), in file order).
    unsigned short GetSat(long k) const { return sat(k); }
    long double GetObs(long k) const { return obs(k); }
    bool GetSlip(long k) const { return slip(k); }
    /// Distinct satellites of the file, ascending: count and entry i.
    long GetNSatList() const { return satList.r; }
    unsigned short GetSatList(long i) const { return satList(i); }

private:
    void CheckData(std::istream& in);
    void SetData();
    void ReadData(std::istream& in);
    void ParseSat(const std::string& l, std::size_t from, long n, long k, long lineNo, bool scratch[]);
    void ParseObsLine(const std::string& l, long n, long k, long lineNo);
    long ReadHeader(std::istream& in, bool keep);
    long Count(const std::string& l, long lineNo, long last, std::size_t& end) const;
    bool Next(std::istream& in, std::string& l, long& lineNo) const;
    [[noreturn]] void Fail(long lineNo, const std::string& text) const;

    char compfile[256];
    long nobs, neph;
    short version;
    long double interval, startMJD;
    matrix<unsigned short> sat;
    matrix<long> nsat;
    matrix<unsigned short> satList;
    matrix<long double> obs;
    matrix<bool> slip;
    matrix<mjd> eph;
};
