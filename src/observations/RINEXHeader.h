#pragma once
// Header of a RINEX 2 observation file: station, receiver, antenna, the
// observation types and their presence flags.
#include <iosfwd>
#include <string>

#include "geodesy/mjd.h"
#include "geodesy/neu.h"
#include "geodesy/xyz.h"
#include "numerics/matrix.h"

/// The RINEX 2 observation types known to the program, in the order of
/// their codes. The band-3 types carry R because L3, PC3 and the like name
/// the ionosphere-free combinations. Unknown marks a column whose code is
/// none of these: it is read over and stored nowhere.
namespace RINEXObs {
enum Type : unsigned short {
    C1 = 0, P1, L1, S1, D1, C2, P2, L2, S2, D2,
    C3R, L3R, S3R, D3R, C5, L5, D5, S5, C6, L6,
    D6, S6, C7, L7, D7, S7, C8, L8, D8, S8,
    Unknown
};
}  // namespace RINEXObs

namespace RINEXns {
/// Longest text line of a RINEX file (the 100-character line buffer less
/// its terminator).
inline constexpr std::size_t MaxLineLength = 99;
/// Most observation types a record can hold (1024-character record text).
inline constexpr int MaxObsTypes = 60;
/// Most satellites an epoch can list (1024-character satellite text).
inline constexpr int MaxEpochSatellites = 341;
/// Geocentric distance (m) of the lowest receiver served: the polar radius
/// at sea level (6356.75 km) less the deepest land and mines (about 4 km),
/// rounded down.
inline constexpr long double MinReceiverRadius_m = 6.350e6L;
/// Geocentric distance (m) of the highest receiver served: the equatorial
/// radius (6378.14 km) plus the cruise height of aircraft (about 13 km),
/// rounded up. A header position outside this shell is no site at all.
inline constexpr long double MaxReceiverRadius_m = 6.400e6L;
/// A header position nearer the geocentre than this (m) was not given
/// (RINEX writes 0, 0, 0); the station stage takes the catalogue position
/// or stops.
inline constexpr long double NoPosition_m = 1.0L;
/// Largest |DELTA H| (m): the antenna reference point is taped or levelled
/// above its mark on a pillar, mast or roof, some tens of metres at most; a
/// misplaced field (a coordinate, a shifted column) is thousands of metres.
inline constexpr long double MaxAntennaHeight_m = 100.0L;
/// Largest |DELTA E|, |DELTA N| (m): an eccentric mark is tied to the
/// antenna by a short traverse of a few metres.
inline constexpr long double MaxAntennaOffset_m = 10.0L;
/// Slots a GLONASS SLOT / FRQ # record can name (R01 to R99): the table of
/// channels has one entry per two-digit satellite number.
inline constexpr int GlonassSlots = 100;
/// Entry of a slot that the header gives no channel for.
inline constexpr short NoGlonassChannel = 99;
/// Range of the FDMA frequency channel k (GLONASS ICD, edition 5.1).
inline constexpr int MinGlonassChannel = -7, MaxGlonassChannel = 6;
}  // namespace RINEXns

/// Outcome of reading one line of a RINEX file.
enum class RINEXLineState { Ok, End, TooLong };

/// Reads one line into line, without its newline and a trailing carriage
/// return. End at end of stream; TooLong for more than
/// RINEXns::MaxLineLength characters (the line is still consumed).
RINEXLineState ReadRINEXLine(std::istream& in, std::string& line);

/// Up to len characters of line from column pos, empty when the line ends
/// before pos: the fixed-column cut of every RINEX reader.
std::string RINEXField(const std::string& line, std::size_t pos, std::size_t len);

class RINEXHeader {
public:
    float version;
    char type;          // file type letter, '\0' until read
    char satsystems;    // satellite system letter
    std::string pgm, runby, date;
    std::string mname, mnumber;
    std::string observer, agency;
    std::string recnumb, rectype, recversion;
    std::string antnumb, anttype;   // kept with their blanks
    xyz X0;             // approximate position, m
    bool xyz0read;
    neu Dp;             // antenna eccentricity, m
    bool neuread;
    unsigned short nobs;
    matrix<unsigned short> obs;     // RINEXObs::Type of each data column
    char wavelengthDefL1, wavelengthDefL2;
    float interval;     // s, -1 until known
    mjd obsfirst, obslast;
    std::string obsfirstts, obslastts;

    bool iC1, iP1, iL1, iS1, iD1, iC2, iP2, iL2, iS2, iD2;
    bool iC3R, iL3R, iS3R, iD3R, iC5, iL5, iD5, iS5, iC6, iL6;
    bool iD6, iS6, iC7, iL7, iD7, iS7, iC8, iL8, iD8, iS8;
    bool iPC1, iPC3, iPP3, iL3, iL4, iMW, iPC4, iPP4, iCL1, iCLI;

    // GLONASS channel k of each slot from GLONASS SLOT / FRQ # (written by
    // RINEX 3 and carried over by Rinex3ToRinex2), RINEXns::NoGlonassChannel
    // where none is given; nGlonassChannels slots have one.
    short glonassChannel[RINEXns::GlonassSlots];
    int nGlonassChannels;

    long nlines;        // header lines read, so data errors can give file lines
    std::string source; // name of the file read, for messages; Reset keeps it

    /// An empty header (see Reset).
    RINEXHeader();
    /// Clears every field: no types, no flags, interval -1, wavelength
    /// factors '1', times 0.
    void Reset();

    unsigned short GetNObs() const { return nobs; }
    float GetInterval() const { return interval; }
    void SetInterval(float dt) { interval = dt; }
    void SetAntennaType(const std::string& t) { anttype = t; }
    void SetReceiverType(const std::string& t) { rectype = t; }
    void SetMarkerName(const std::string& t) { mname = t; }
    void SetMarkerNumber(const std::string& t) { mnumber = t; }
    xyz GetX0() const { return X0; }
    neu GetECC() const { return Dp; }
    /// True when GLONASS SLOT / FRQ # gave slot (1-99) its channel.
    bool HasGlonassChannel(int slot) const
    {
        return slot > 0 && slot < RINEXns::GlonassSlots && glonassChannel[slot] != RINEXns::NoGlonassChannel;
    }

    bool HasL1() const { return iL1; }
    bool HasL2() const { return iL2; }
    bool HasL3R() const { return iL3R; }
    bool HasL5() const { return iL5; }
    bool HasL7() const { return iL7; }
    bool HasL8() const { return iL8; }
    bool HasC1() const { return iC1; }
    bool HasP1() const { return iP1; }
    bool HasP2() const { return iP2; }
    bool HasC2() const { return iC2; }
    bool HasC3R() const { return iC3R; }
    bool HasC5() const { return iC5; }
    bool HasC7() const { return iC7; }
    bool HasC8() const { return iC8; }
    bool HasL3() const { return iL3; }
    bool HasL4() const { return iL4; }
    bool HasPC3() const { return iPC3; }
    bool HasPP3() const { return iPP3; }

    /// Presence flag of an observed type, null for RINEXObs::Unknown and
    /// anything beyond it.
    bool* PresenceFlag(unsigned short type);
    /// The two-character file code of a type ("C1", "L3" for L3R), "??" for
    /// a type outside the table.
    static std::string GetObsString(unsigned short type);
    /// The type of a two-character file code, RINEXObs::Unknown when the
    /// code is none of the table.
    static unsigned short GetObsType(const std::string& code);

    /// Prints the framed warning "#### RINEXHeader: Warning -> text ->
    /// line: n ####" on the output stream and returns.
    static void RINEXHeaderWarning(const std::string& text, long line);
    /// Prints the framed error "#### RINEXHeader: Error -> text -> line:
    /// n ####" on the output stream and exits with status 1.
    [[noreturn]] static void RINEXHeaderError(const std::string& text, long line);
};

/// Reads header lines up to and including "END OF HEADER" (or the end of
/// the stream). Labels are searched anywhere in a line in a fixed order and
/// the first hit decides; a repeated label warns and replaces. A line
/// longer than 99 characters ends the header as the end of the stream does
/// (and fails the stream). More than RINEXns::MaxObsTypes types, a negative
/// type count, a numeric field that holds no finite number (a blank one
/// reads 0), an APPROX POSITION XYZ given but outside the receiver shell
/// (RINEXns::MinReceiverRadius_m to MaxReceiverRadius_m) or an ANTENNA:
/// DELTA H/E/N beyond MaxAntennaHeight_m or MaxAntennaOffset_m stop the run
/// with RINEXHeaderError naming the file (source) and the line; so does a
/// GLONASS SLOT / FRQ # entry that is no slot R01-R99 with a channel of -7
/// to 6.
std::istream& operator>>(std::istream& in, RINEXHeader& h);
/// Writes the header as RINEX 2 lines, labels at column 60, ending in
/// "END OF HEADER"; the program line names Orvo and the present local time.
std::ostream& operator<<(std::ostream& out, const RINEXHeader& h);
