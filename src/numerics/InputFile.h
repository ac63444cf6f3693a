#pragma once
// The raw content of an input file, inflated when it is gzip-compressed, for
// the readers that accept the files as data centres publish them. The format
// is told by the content (the gzip magic bytes), never by the name.
#include <string>

/// True when the file opens and begins with the gzip magic bytes 1F 8B.
bool IsGzipFile(const std::string& path);

/// The whole content of the file path: as stored, or inflated when it is
/// gzip-compressed (every member of a multi-member stream, as gunzip does).
/// A file that does not open, a stream cut before its end or one that fails
/// its check sum ends the run with a framed error of prog naming the file.
std::string ReadInputFile(const std::string& path, const std::string& prog);
