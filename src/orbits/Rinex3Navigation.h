#pragma once
// RINEX 3.02-3.05 and 4.00 navigation files, mixed or of one system: the
// header's ionosphere and time-system lines and the broadcast records of one
// system (GPS LNAV, GLONASS FDMA, Galileo I/NAV and F/NAV), every field read
// by its column. The content is parsed from memory, as ReadInputFile hands
// it over (a gzip file already inflated); the format is told by the first
// line, never by the file name.
//
// Galileo sends each orbit in two messages whose clock terms refer to
// different frequency pairs: I/NAV to E1/E5b, F/NAV to E1/E5a. The program
// pairs E1 with E5b, so I/NAV records are taken; an F/NAV record is kept
// only where its satellite has no I/NAV record within FnavGap_s of its
// epoch, and of records of the same satellite, message and epoch only the
// first.
#include <cstdlib>
#include <string>
#include <vector>

#include "geodesy/mjd.h"
#include "geodesy/ymdhms.h"
#include "numerics/FieldText.h"

namespace Rinex3Navns {
/// Width of a value field (D19.12) and the column of the first value on the
/// epoch line and on a continuation line (0-based).
constexpr std::size_t FieldWidth = 19, EpochLineFirst = 23, ContinuationFirst = 4;
/// Values kept per record after the epoch: GPS and Galileo three clock
/// terms, six lines of four and the transmission time (the seventh line's
/// first field); GLONASS three and three lines of four.
constexpr int NKeplerValues = 28, NGlonassValues = 15;
/// An F/NAV record within this distance (s) of an I/NAV record of its
/// satellite is dropped: I/NAV comes every 10 min, and a record an hour
/// nearer costs less than the few tenths of a nanosecond that the E5a and
/// E5b clock terms differ by; beyond it the F/NAV record is the fresher orbit.
constexpr long double FnavGap_s = 3600.0L;
}  // namespace Rinex3Navns

/// The header lines of a RINEX 3 navigation file that the program uses.
struct Rinex3NavHeader {
    std::string version, type, pgm, runby, date;  // as written, trimmed
    long double alfa[4] = {}, beta[4] = {};  // Klobuchar GPSA, GPSB (s, s/semicircle^n)
    long double a0 = 0.0L, a1 = 0.0L;        // GPUT: GPS - UTC polynomial (s, s/s)
    long T = 0, W = 0;                       // its reference second and week
    short leaps = 0;                         // LEAP SECONDS, first field
};

/// Copies version, the four texts (trimmed, at most 20 characters) and the
/// leap seconds of h into a RINEX 2 navigation header, whose fields of
/// those names the GPS/Galileo and GLONASS readers share.
template <class Rinex2NavHeader>
void CopyRinex3NavHeader(const Rinex3NavHeader& h, Rinex2NavHeader& to)
{
    to.version = std::strtof(h.version.c_str(), nullptr);
    fieldtext::CopyTrimmedField(h.type, 0, 20, to.type, sizeof to.type);
    fieldtext::CopyTrimmedField(h.pgm, 0, 20, to.pgm, sizeof to.pgm);
    fieldtext::CopyTrimmedField(h.runby, 0, 20, to.runby, sizeof to.runby);
    fieldtext::CopyTrimmedField(h.date, 0, 20, to.date, sizeof to.date);
    to.leaps = h.leaps;
}

/// One broadcast record of the wanted system.
struct Rinex3NavRecord {
    short sat = 0;                    // shared numbering (GPS PRN, 100 + slot, 200 + PRN)
    ymdhms toc;                       // epoch as written (GPS, Galileo time; UTC for GLONASS)
    long line = 0;                    // line number of the epoch line (1-based)
    std::vector<long double> values;  // in file order after the epoch
};

/// True when content starts with a "RINEX VERSION / TYPE" line of version 3
/// or later: such a file goes to the readers of this file, an older one to
/// the RINEX 2 readers.
bool IsRinex3Navigation(const std::string& content);

/// The header of content (the file path, for messages). A version other
/// than 3.02-3.05 and 4.00, a type other than N, a header without END OF
/// HEADER or a number field that is no number ends the run with the framed
/// error of prog naming the file (and the line).
Rinex3NavHeader ReadRinex3NavHeader(const std::string& content, const std::string& path,
                                    const std::string& prog);

/// The records of system sys ('G' GPS LNAV, 'R' GLONASS FDMA, 'E' Galileo
/// with the choice described above) in file order, NKeplerValues or
/// NGlonassValues values each; other systems, RINEX 4 STO, ION and EOP
/// records and other message types are skipped unread. A blank field reads
/// 0 (spare, unknown). Ends the run with the framed error of prog naming
/// file and line for: a body line that starts no record, a record of the
/// system with fewer lines than its values need, a satellite or epoch field
/// that is not valid, a value that is no number, and a file without any
/// record of the system.
std::vector<Rinex3NavRecord> ReadRinex3NavRecords(const std::string& content,
                                                  const std::string& path, char sys,
                                                  const std::string& prog);
