#include "FuzzSupport.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <set>
#include <streambuf>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "numerics/ProgramError.h"

namespace {

// Warnings cost more than reading: a stream buffer that takes every
// character and keeps none, so the streams stay good and formatting code
// still runs.
class NullBuffer : public std::streambuf {
protected:
    int overflow(int ch) override { return traits_type::not_eof(ch); }
    std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

NullBuffer nullBuffer;
std::string scratchDir;
std::set<std::string> written;

[[noreturn]] void ThrowFramed(int status) { throw orvofuzz::FramedExit{status}; }

void RemoveScratch()
{
    for (const std::string& path : written) std::remove(path.c_str());
    rmdir(scratchDir.c_str());
}

}  // namespace

namespace orvofuzz {

std::string WriteInput(const uint8_t* data, size_t size, const std::string& name)
{
    const std::string path = scratchDir + "/" + name;
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (f == nullptr) {
        std::perror(path.c_str());
        std::abort();
    }
    if (size > 0 && std::fwrite(data, 1, size, f) != size) std::abort();
    std::fclose(f);
    written.insert(path);
    return path;
}

}  // namespace orvofuzz

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    SetErrorExitHandler(ThrowFramed);
    // ORVO_FUZZ_ECHO=1 keeps the messages, to see why an input ends.
    if (std::getenv("ORVO_FUZZ_ECHO") == nullptr) {
        std::cout.rdbuf(&nullBuffer);
        std::cerr.rdbuf(&nullBuffer);
    }
    scratchDir = "/tmp/orvo-fuzz-" + std::to_string(getpid());
    if (mkdir(scratchDir.c_str(), 0700) != 0 && access(scratchDir.c_str(), W_OK) != 0) {
        std::perror(scratchDir.c_str());
        std::abort();
    }
    std::atexit(RemoveScratch);
    return 0;
}
