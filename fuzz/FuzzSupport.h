#pragma once
// The frame every reader target shares: a framed error ends one input
// instead of the process, the report streams are silenced, and each input
// is handed to the reader as a file of this process's own scratch folder,
// the way the program hands it a named file.
#include <cstddef>
#include <cstdint>
#include <string>

namespace orvofuzz {

/// Thrown by the error exit hook: the reader refused the input with its
/// framed message, which is the expected end of a bad input.
struct FramedExit {
    int status;
};

/// Writes data to the scratch file `name` of this process and returns its
/// path; a later call with the same name replaces the content.
std::string WriteInput(const uint8_t* data, size_t size, const std::string& name = "input");

/// Runs one reader call; a framed error ends it here. Anything else (a
/// crash, a sanitizer report, an exit outside the framed errors, an endless
/// loop) is left to the fuzzer as a finding.
template <class F>
void Run(F&& read)
{
    try {
        read();
    } catch (const FramedExit&) {
    }
}

}  // namespace orvofuzz
