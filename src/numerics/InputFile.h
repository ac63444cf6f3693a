#pragma once
// The raw content of an input file, inflated when it is gzip-compressed, for
// the readers that accept the files as data centres publish them. The format
// is told by the content (the gzip magic bytes), never by the name.
#include <istream>
#include <streambuf>
#include <string>

/// True when the file opens and begins with the gzip magic bytes 1F 8B.
bool IsGzipFile(const std::string& path);

/// The whole content of the file path: as stored, or inflated when it is
/// gzip-compressed (every member of a multi-member stream, as gunzip does).
/// A file that does not open, a stream cut before its end or one that fails
/// its check sum ends the run with a framed error of prog naming the file.
std::string ReadInputFile(const std::string& path, const std::string& prog);

namespace inputfilens {
// The buffer of a TextStream, a base of it so that it is built before the
// stream that uses it.
struct TextBuffer : std::streambuf {
    explicit TextBuffer(const std::string& text)
    {
        char* p = const_cast<char*>(text.data());
        setg(p, p, p + text.size());
    }
};
}  // namespace inputfilens

/// An input stream over text held in memory, read in place: the readers
/// that take a stream read decompressed or translated content through it
/// without a second copy of a file that may run to hundreds of megabytes.
/// The text must outlive the stream.
class TextStream : private inputfilens::TextBuffer, public std::istream {
public:
    explicit TextStream(const std::string& text)
        : inputfilens::TextBuffer(text), std::istream(static_cast<std::streambuf*>(this)) {}
};
