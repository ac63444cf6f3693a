#pragma once
// Code biases estimated by the sibling tool Meskal: the receiver's and each
// satellite's P1-C1 and P2-C1 biases with their RMS, referred to one epoch.
// Read and kept for the run; the processing does not apply them yet.
#include <cstddef>
#include <iosfwd>
#include <string>

#include "geodesy/mjd.h"
#include "numerics/matrix.h"

namespace myDCBns {
/// Line buffer of the file, terminator included.
constexpr std::size_t LineSize = 512;
/// Columns of VAL and RMS.
constexpr int ColP1C1 = 0, ColP2C1 = 1;
/// 0-based columns of the four values on receiver and satellite lines,
/// each an 11-column field: P1C1, its RMS, P2C1, its RMS.
constexpr std::size_t ValuePos[4] = {10, 21, 32, 43};
constexpr std::size_t FieldLen = 11;
/// Satellite lines: the system letter at 6, the number from 7 up to the
/// first value.
constexpr std::size_t SysPos = 6, NumPos = 7, NumLen = 3;
/// Reference epoch line: MJD day at 18 (6 columns), second of day from 24.
constexpr std::size_t DayPos = 18, DayLen = 6, SecPos = 24;
/// Most satellite lines that nsat (16-bit) can count.
constexpr long MaxLines = 32767;
}  // namespace myDCBns

class myDCB {
public:
    /// No file, no satellites, receiver values 0, reference epoch day 0.
    myDCB();

    /// Stores the file name; the argument checks have tested that it exists.
    /// A null name or one of 256 characters or more ends the run.
    void SetFile(const char* name);

    /// Reads in two passes: the first notes the epoch of the line holding
    /// "#REFERECNE EPOCH:" and counts the lines with S in column 0, the
    /// second fills them and the receiver's values from the line with R in
    /// column 0 (the last one counts). Values are kept in the file's unit.
    /// A satellite's system letter (column 6) G, R, E gives the base 0, 100,
    /// 200 of its number (1-99 from column 7). A file that does not open, a
    /// line over 511 characters, a receiver or satellite line cut before
    /// its last value, a field that is no number, another system letter and
    /// a reference epoch outside the mjd range end the run with the framed
    /// error naming the file and the line.
    void ReadFile();

    /// P1-C1 and P2-C1 biases and their RMS of satellite sat (shared
    /// numbering): the first line of that number; without one all four are
    /// 0 and a warning names the satellite.
    void GetDCB(short sat, long double& valP1C1, long double& rmsP1C1, long double& valP2C1,
                long double& rmsP2C1) const;
    /// RMS of both biases of satellite sat; 0 and a warning when missing.
    void GetDCBRMS(short sat, long double& P1C1, long double& P2C1) const;
    /// Both biases of satellite sat; 0 and a warning when missing.
    void GetDCBVAL(short sat, long double& P1C1, long double& P2C1) const;

    /// Satellite lines read.
    short GetNSat() const { return nsat; }
    /// Satellite number of line i (0-based, < GetNSat()).
    short GetSat(long i) const { return sat(i); }
    /// The receiver's P1-C1 and P2-C1 biases and their RMS.
    long double GetRecP1C1() const { return recP1C1; }
    long double GetRecP2C1() const { return recP2C1; }
    long double GetRecP1C1rms() const { return recP1C1rms; }
    long double GetRecP2C1rms() const { return recP2C1rms; }
    /// Epoch the biases refer to.
    const mjd& GetRefEpoch() const { return RefEpoch; }

private:
    long Find(short s) const;
    void Scan(std::istream& in, bool fill);
    void ReadValues(const std::string& line, long lineNo, long double v[4]) const;
    [[noreturn]] void Fail(long lineNo, const std::string& text) const;

    char file[256];
    short nsat;
    long double recP1C1, recP2C1, recP1C1rms, recP2C1rms;
    matrix<short> sat;
    matrix<long double> VAL, RMS;
    mjd RefEpoch;
};
