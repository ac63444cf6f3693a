#pragma once
// Compact RINEX (Hatanaka 2008, Bull. GSI 55:21-30): the lossless text
// recoding of a RINEX observation file that stations publish as .crx/.yyd.
// Decoding gives back the plain RINEX text, which the RINEX readers take.
#include <string>

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
