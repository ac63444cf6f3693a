#pragma once
// Field access shared by the readers of code bias files, the receiver list
// and the teqc compact files: fixed-column text whose numbers must be
// numbers, so that a shifted column ends the run instead of reading 0.
#include <istream>
#include <string>

namespace biastext {

/// Reads the next line without its newline (and without the carriage
/// return of a DOS file); false at the end of the stream.
bool NextLine(std::istream& in, std::string& line);

/// The text of columns [pos, pos + len) that the line holds, without its
/// blanks at both ends; empty when the line ends before pos.
std::string Field(const std::string& line, std::size_t pos, std::size_t len);

/// Whole number with an optional sign and nothing else; false otherwise,
/// also when it does not fit a long.
bool ToLong(const std::string& text, long& value);

/// Decimal number and nothing else; false otherwise, also for an infinite
/// or NaN text.
bool ToLongDouble(const std::string& text, long double& value);

}  // namespace biastext
