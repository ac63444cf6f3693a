#pragma once
// Compact RINEX (Hatanaka 2008, Bull. GSI 55:21-30): the lossless text
// recoding of a RINEX observation file that stations publish as .crx/.yyd.
// Decoding gives back the plain RINEX text, which the RINEX readers take,
// or hands its lines and rebuilt values to a reader that stores them as they
// come, without the text in between.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// True when text is a Compact RINEX file: its first line carries the label
/// "CRINEX VERS   / TYPE" (columns 61-80) and the version 1.0 or 3.0.
bool IsCompactRinex(const std::string& text);
/// True when the first line of text carries the label "CRINEX VERS" in
/// columns 61-71, whatever its version: a file that DecodeCompactRinex must
/// read, or refuse with its framed error.
bool HasCompactRinexLabel(const std::string& text);

/// The plain RINEX text that the Compact RINEX text was made from: RINEX 2
/// for CRINEX 1.0, RINEX 3/4 for CRINEX 3.0. Values are rebuilt with exact
/// 64-bit integer arithmetic and written as F14.3 (clock F15.12 in RINEX 3,
/// F12.9 in RINEX 2) with the leading zero below 1 ("-0.123", "0.000");
/// lines carry no trailing blanks. A file that is not CRINEX, cut short or
/// corrupt ends the run with a framed error naming path and the line of the
/// compact text.
std::string DecodeCompactRinex(const std::string& text, const std::string& path);

/// What the decoding of a Compact RINEX file hands on, in file order. line
/// is the line of the compact text that the call comes from, for errors.
class CompactRinexSink {
public:
    virtual ~CompactRinexSink() = default;
    /// The version of the file: true for CRINEX 1.0 (RINEX 2 inside).
    virtual void Start(bool v1) = 0;
    /// One header line of the RINEX file, up to and with END OF HEADER.
    virtual void HeaderLine(std::string_view text, long line) = 0;
    /// The epoch line of an event (flag 2 to 6 in RINEX 3, 2 to 5 in RINEX
    /// 2) when first is true, else one of its records; both as written.
    virtual void EventLine(std::string_view text, bool first, long line) = 0;
    /// The rebuilt epoch line of an epoch of count satellites: columns 1-41
    /// of RINEX 3 (the list of satellites behind them in the compact file),
    /// columns 1-32 of RINEX 2 with its whole list behind; the receiver clock
    /// offset in units of its last decimal (1e-12 s in RINEX 3, 1e-9 s in
    /// RINEX 2) when hasClock.
    virtual void EpochLine(const std::string& text, int count, bool hasClock, int64_t clock, long line) = 0;
    /// Asked before the data line of satellite id (three characters) is
    /// decoded: false passes it over, and the satellite's arcs with it, for
    /// the rest of the file's epochs that the sink refuses it in.
    virtual bool Keep(const char* id, long line)
    {
        (void)id;
        (void)line;
        return true;
    }
    /// The record of satellite id (three characters): ntypes values,
    /// vals[k] in thousandths where have[k] is non-zero, and the LLI and
    /// SSI characters of type k at flags[2k] and flags[2k+1].
    virtual void Record(const char* id, std::size_t ntypes, const int64_t* vals, const char* have,
                        const char* flags, long line) = 0;
};

/// Decodes the Compact RINEX text into sink; errors as DecodeCompactRinex.
void DecodeCompactRinex(const std::string& text, const std::string& path, CompactRinexSink& sink);

/// As DecodeCompactRinex into sink, but the data lines are only counted:
/// sink gets the header, events and epoch lines and never a record. A quick
/// first look at what the file holds (its epochs and satellites).
void ScanCompactRinexEpochs(const std::string& text, const std::string& path, CompactRinexSink& sink);
