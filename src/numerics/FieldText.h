#pragma once
// Field access shared by the readers of fixed-column text files: trimmed
// fields, numbers that must be numbers (so that a shifted column ends the
// run instead of reading 0), the FORTRAN D exponent of navigation files and
// the labels of their headers.
#include <cstddef>
#include <istream>
#include <memory>
#include <string>
#include <string_view>

namespace fieldtext {

/// Reads the next line without its newline (and without the carriage
/// return of a DOS file); false at the end of the stream.
bool NextLine(std::istream& in, std::string& line);

/// The lines of a stream, read in large blocks and handed out in place: a
/// day's clock file of some hundred thousand lines is scanned without a
/// call to the kernel and a string copy per line.
class LineScanner {
public:
    /// Scans in from where it stands now.
    explicit LineScanner(std::istream& in);
    /// The next line without its newline (and without the carriage return of
    /// a DOS file), valid until the next call; false at the end of the
    /// stream.
    bool Next(std::string_view& line);
    /// Where the line last handed out starts, in characters from where the
    /// scan started.
    std::size_t Offset() const { return lineStart_; }

private:
    // Reads on behind the unread tail, which moves to the front; false when
    // the stream gave nothing more.
    bool Refill();

    std::istream& in_;
    std::unique_ptr<char[]> buf_;      // not cleared: only read text is used
    std::size_t size_;
    std::size_t pos_ = 0, end_ = 0;    // unread text: buf_[pos_, end_)
    std::size_t consumed_ = 0;         // characters scanned before buf_[0]
    std::size_t lineStart_ = 0;
};

/// The text of columns [pos, pos + len) that the line holds, without its
/// blanks (and tabs) at both ends; empty when the line ends before pos.
std::string TrimmedField(const std::string& line, std::size_t pos, std::size_t len);

/// Whole number with an optional sign and nothing else; false otherwise,
/// also when it does not fit a long.
bool ToLong(const std::string& text, long& value);

/// Decimal number and nothing else; false otherwise, also for an infinite
/// or NaN text.
bool ToLongDouble(const std::string& text, long double& value);
/// The same for a NUL-terminated text.
bool ToLongDouble(const char* text, long double& value);

/// True when the n characters at f hold blanks alone or one finite number
/// between blanks (what ToLongDouble takes); text, "nan" and "inf" are none.
/// The plain layout of an observation field (a sign, digits and one full
/// stop) is checked without a conversion, since nearly every field of a
/// file has it.
bool IsNumberOrBlank(const char* f, std::size_t n);

/// Copies TrimmedField(line, pos, len) into out, a buffer of n characters,
/// cut to n - 1 and terminated.
void CopyTrimmedField(std::string_view line, std::size_t pos, std::size_t len, char* out, std::size_t n);

/// The number in columns [pos, pos + len), a FORTRAN D exponent read as E;
/// 0 when the line ends before pos or the field holds no number.
long double FortranNumber(const std::string& line, std::size_t pos, std::size_t len);

/// A number written as mantissa, D and exponent in separate fields (the
/// D12.4 fields of the navigation header's ionosphere and UTC lines): the
/// FortranNumber of [pos, pos + len) times ten to that of [epos, epos + 3).
long double MantissaExponent(const std::string& line, std::size_t pos, std::size_t len, std::size_t epos);

/// True when the line holds label anywhere.
inline bool HoldsLabel(const std::string& line, const char* label) { return line.find(label) != std::string::npos; }

}  // namespace fieldtext
