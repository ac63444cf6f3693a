#pragma once
// Precise satellite clocks from one RINEX clock file (AS records), answered
// per satellite and epoch by a cubic Lagrange polynomial over the four
// nodes around the current epoch index.
#include <cstddef>
#include <istream>
#include <map>
#include <string>

#include "geodesy/mjd.h"
#include "numerics/matrix.h"

namespace GNSSpClkns {
/// Entries of the satellite-number index: every shared number lies below.
constexpr long NSatIx = 700;
/// Fill value of a clock without a record (s).
constexpr long double NoClock_s = 999.999L;
/// A row above this (s) holds no value; real clocks stay below 1 ms.
constexpr long double MaxClock_s = 999.0L;
/// Distance (s) beyond the file's first or last epoch that is reported.
constexpr long double MaxOutside_s = 300.0L;
/// Distance (s) beyond the first or last epoch of the file up to which the
/// cubic still answers: a satellite clock wanders by centimetres within a
/// 30 s node step, so carrying the cubic further would invent that much
/// and, over a missing half hour, kilometres. A second covers rounding and
/// the light time at the first epoch.
constexpr long double MaxExtrapolation_s = 1.0L;
/// Four nodes whose spacing differs from the file's interval by more than
/// this (s) straddle a gap: the cubic of equal spacing does not hold there.
constexpr long double SpacingTol_s = 1e-3L;
/// Shortest AS record, counted from the date's first column: date 26,
/// count 3, blanks 2, bias E19.12 (some writers add a blank before it).
constexpr std::size_t BiasFieldEnd = 50;
/// Start and width of the clock bias field, counted likewise: writers
/// differ by a blank in where the E19.12 bias ends, and a sigma that may
/// follow starts with a blank (it is never negative).
constexpr std::size_t BiasFieldStart = 30, BiasFieldWidth = 21;
/// A satellite clock beyond this (s) is no clock: the widest clock field
/// any system broadcasts is Galileo's af0 (31 bits of 2^-34 s, +-62.5 ms),
/// GPS, GLONASS and BeiDou end below 2 ms, and precise products follow the
/// same clocks. Such a value is refused as missing; it would put the range
/// 30 000 km off.
constexpr long double MaxSatClock_s = 0.1L;
/// File epochs kept on either side of a span given to SetSpan. The cubic
/// takes the node before an epoch's interval and two after it, and slides
/// back within the last four nodes of what is kept: five keep every epoch
/// of the span (and its signals' emission, a fraction of a second earlier)
/// on the same four nodes as with the whole file.
constexpr long SpanMarginEpochs = 5;
}  // namespace GNSSpClkns

class GNSSpClk {
public:
    GNSSpClk();

    /// Stores the clock file name; a name of 256 characters or more ends the
    /// run with the framed error.
    void SetFile(const char* file);

    /// Reads the RINEX clock file: version and type, the satellite list, the
    /// AS records (seconds) of all epochs or of a span (SetSpan), those
    /// epochs and their smallest spacing. A file that isn't a RINEX clock file, is cut in its header,
    /// holds fewer than four epochs or epochs out of time order ends the run
    /// with the framed error, as does an AS record whose clock bias is
    /// blank, not a number or infinite (file and line named). AS records of
    /// satellites outside the header's list are passed over. A bias beyond
    /// MaxSatClock_s is refused (the row stays without a value), counted per
    /// satellite and warned about on the output stream with its first line.
    void ReadFile();

    /// Limits what ReadFile keeps to the epochs from first to last and
    /// GNSSpClkns::SpanMarginEpochs file epochs on either side: the file is
    /// counted and the length, date and time order of its AS records
    /// checked up to the margin behind the span, but only the kept epochs'
    /// biases are read (and refused by MaxSatClock_s). What follows the
    /// margin is not read, except its last 64 kB: a file cut short still
    /// stops the run there (record length, and the last epoch not before
    /// those read). A span that holds fewer than four file
    /// epochs keeps the whole file, so that a caller's test of the span sees
    /// where the file lies.
    void SetSpan(const mjd& first, const mjd& last);

    /// Full search: EpochIx becomes the last epoch not after reph (0 before
    /// the file, the last one after it); more than 300 s outside is warned.
    void SetEpochIndex(mjd& reph);

    /// Search from EpochIxOld (clamped into the file): stays when reph lies
    /// in [epoch(old), epoch(old+1)), walks down when reph is earlier, else
    /// walks up to the first epoch not before reph. Same end rules as above.
    void SetEpochIndex(mjd& reph, long EpochIxOld);

    /// Current epoch index.
    long GetEpochIx() const { return EpochIx; }
    /// Distinct epochs kept from the file (all of them without SetSpan).
    long GetNEpoch() const { return nepoch; }
    /// Satellites of the header list.
    short GetNSatList() const { return nsat; }
    /// Kept epoch i.
    mjd GetMJD(long i) const { return epoch(i); }
    /// The file name given to SetFile.
    const char* GetFile() const { return clkfile; }
    /// Clock values refused by MaxSatClock_s, per satellite number.
    const std::map<short, long>& GetRefused() const { return refused; }

    /// Clock (s) of satellite prn (shared numbering) at reph from the four
    /// rows chosen by the current EpochIx, spaced by the file interval. On
    /// success DTisOK is true and dt is written; an unknown satellite, a row
    /// without a value, rows across a gap (spacing off by more than
    /// SpacingTol_s) or an epoch more than MaxExtrapolation_s beyond the
    /// file leave dt alone, DTisOK false.
    void GetSatelliteClock(short& prn, mjd& reph, long double& dt);

    /// Whether the last GetSatelliteClock gave a value.
    bool DTisOK;

private:
    void GetCLKVersion();
    void ReadFileHeader(std::istream& in);
    void ReadEpochs(std::istream& in);
    // Tests the last lines of the file behind a span's epoch pass, which
    // stopped at from having read up to the epoch last.
    void CheckFileEnd(std::istream& in, std::streamoff from, const mjd& last);
    void ReadFileData();
    bool EndTests(const mjd& reph);
    [[noreturn]] void Fail(long lineNo, const std::string& text) const;

    char clkfile[256];
    char type;
    float version;
    long nepoch;
    short nsat;
    matrix<short> satList;
    matrix<short> satIx;
    matrix<short> sat;
    matrix<mjd> epoch;
    matrix<long double> SatClk;
    // evenStep(i): epoch(i) follows epoch(i - 1) by the interpolation's
    // spacing (false for the first).
    matrix<bool> evenStep;
    long double interval;
    long double intervalUnit;
    long EpochIx;
    // Reciprocals of the denominators of the four-node Lagrange basis.
    long double perLfact[4];
    // Column of the date text in AS lines: 8 before version 3.04, then 13.
    std::size_t posDate;
    // Header lines, counted so the data pass can name its line numbers.
    long nHeaderLines;
    std::map<short, long> refused;
    // The span of SetSpan, and the file epochs: their count, the first one
    // kept and the line where its records begin.
    bool hasSpan = false;
    mjd spanFirst, spanLast;
    long nepochFile = 0, firstKept = 0, firstKeptLine = 0;
    // Where the first kept epoch's line starts in the file, -1 unknown.
    std::streamoff firstKeptAt = -1;
};
