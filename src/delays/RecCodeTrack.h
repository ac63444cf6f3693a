#pragma once
// Which codes a receiver tracks, from a receiver list: receivers that give
// C1 in place of P1, or a cross-correlated X2 in place of P2, need the P1-C1
// bias added to their codes before they fit the P1/P2 satellite clocks.
#include <cstddef>
#include <string>

namespace RecCodeTrackns {
/// Line buffer of the file, terminator included.
constexpr std::size_t LineSize = 512;
/// 0-based columns of an entry: number of frequencies at 23, the code of
/// the frequency (2 characters) at 29.
constexpr std::size_t NFreqPos = 23, CodePos = 29;
}  // namespace RecCodeTrackns

class RecCodeTrack {
public:
    /// Tracking classes: P1 and P2; C1 and P2; C1 and cross-correlated X2.
    enum { P1P2 = 0, C1P2 = 1, C1X2 = 2 };

    /// No file.
    RecCodeTrack();

    /// Stores the receiver list name; a name that does not open ends the run
    /// with "RECEIVER LIST FILE CAN NOT BE OPENED (CODE TRACKING TECHNIQUE)!".
    void SetFile(const char* name);

    /// Tracking class of receiver type rnxRec (the RINEX header's, blanks at
    /// both ends ignored): the entry starts at the first line of the list
    /// that holds the name; column 23 holds its number of frequencies (1 or
    /// 2) and columns 29-30 the code of the first ("C1", "P1"), with two
    /// frequencies the next line's columns 29-30 that of the second ("P2",
    /// "X2"). C1 with P2 gives C1P2, P1 with P2 P1P2, C1 with X2 C1X2. A list
    /// that no longer opens gives P1P2 silently; a name not listed (or
    /// empty) and codes that make no class give P1P2 and a warning. An entry
    /// cut before its codes, or with another number of frequencies, ends the
    /// run with the framed error naming the file and the line.
    short GetRecCodeTrack(const char* rnxRec);

    /// Whether any line of the list holds receiver type rnxRec (blanks at
    /// both ends ignored; an empty name is never listed). Leaves the line
    /// found, or the last line, for GetRecType.
    bool CheckRecName(const char* rnxRec);

    /// Whether the line last read from the list holds receiver (blanks at
    /// both ends ignored; an empty name never matches).
    bool GetRecType(const char* receiver) const;

private:
    [[noreturn]] void Fail(long lineNo, const std::string& text) const;
    std::string Code(const std::string& l, long lineNo) const;

    char file[256];
    std::string line;
};
