#include "numerics/InputFile.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include <zlib.h>

#include "numerics/LargeMemory.h"
#include "numerics/ProgramError.h"

namespace {

// Inflated text of one file stays below this: a day of 1 s observations of
// every system is about 700 MB of RINEX text; a bigger output is a damaged
// or hostile stream, and refusing it beats an unframed bad_alloc.
constexpr unsigned long long MaxInflatedBytes = 2ULL << 30;

// The two magic bytes that open every gzip member (RFC 1952).
bool HasGzipMagic(const void* bytes, std::size_t n)
{
    const auto* b = static_cast<const unsigned char*>(bytes);
    return n >= 2 && b[0] == 0x1f && b[1] == 0x8b;
}

std::string InflateGzip(const std::string& raw, const std::string& path,
                        const std::string& prog)
{
    // The whole stream goes to zlib at once: its length counter is 32 bits.
    if (raw.size() > MaxInflatedBytes / 2)
        ProgramError(prog, "FILE " + path + ": GZIP FILE LARGER THAN 1 GiB!");
    // The text is inflated in place; the trailer's length (modulo 4 GiB) of
    // the last member sizes it at once for the common single-member file.
    std::size_t room = std::size_t(1) << 20;
    if (raw.size() >= 18) {
        const auto* t = reinterpret_cast<const unsigned char*>(raw.data() + raw.size() - 4);
        const unsigned long long isize = t[0] | (t[1] << 8) | (t[2] << 16) | (static_cast<unsigned long long>(t[3]) << 24);
        if (isize <= MaxInflatedBytes) room = std::max(room, static_cast<std::size_t>(isize) + 1);
    }
    std::string out;
    out.reserve(room);
    PrepareLargeBlock(&out[0], room);
    out.resize(room);
    std::size_t n = 0;
    z_stream zs{};
    // 16 + MAX_WBITS: the gzip wrapper, with its CRC-32 and length check.
    if (inflateInit2(&zs, 16 + MAX_WBITS) != Z_OK)
        ProgramError(prog, "FILE " + path + ": GZIP DECOMPRESSION CAN NOT BE STARTED!");
    zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(raw.data()));
    zs.avail_in = static_cast<uInt>(raw.size());
    int rc = Z_OK;
    for (;;) {
        if (n == out.size()) out.resize(std::min<std::size_t>(2 * out.size(), MaxInflatedBytes + 1));
        const std::size_t step = std::min<std::size_t>(out.size() - n, 1u << 30);
        zs.next_out = reinterpret_cast<Bytef*>(&out[n]);
        zs.avail_out = static_cast<uInt>(step);
        rc = inflate(&zs, Z_NO_FLUSH);
        n += step - zs.avail_out;
        const auto where = [&] { return " AT BYTE " + std::to_string(raw.size() - zs.avail_in) + "!"; };
        if (n > MaxInflatedBytes) {
            inflateEnd(&zs);
            ProgramError(prog, "FILE " + path + ": GZIP CONTENT LARGER THAN 2 GiB" + where());
        }
        if (rc == Z_STREAM_END) {
            // Another member may follow (concatenated .gz files); anything
            // else after the end, as the zero padding some archives leave,
            // ends the content as gunzip does.
            if (HasGzipMagic(zs.next_in, zs.avail_in)) {
                inflateReset(&zs);
                continue;
            }
            break;
        }
        // Room for output but no input left: the stream was cut.
        if (rc == Z_BUF_ERROR && zs.avail_in == 0) {
            inflateEnd(&zs);
            ProgramError(prog, "FILE " + path + ": GZIP STREAM CUT BEFORE ITS END" + where());
        }
        if (rc != Z_OK) {
            inflateEnd(&zs);
            ProgramError(prog, "FILE " + path + ": CORRUPT GZIP STREAM" + where());
        }
    }
    out.resize(n);
    inflateEnd(&zs);
    return out;
}

}  // namespace

bool IsGzipFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    char magic[2] = {0, 0};
    return in.read(magic, 2) && HasGzipMagic(magic, 2);
}

std::string ReadInputFile(const std::string& path, const std::string& prog)
{
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    if (!in.is_open()) ProgramError(prog, "FILE " + path + " CAN NOT BE OPENED!");
    // One read of the known size: character-wise reading costs ten times
    // as much on a file of megabytes.
    const std::streamoff size = in.tellg();
    std::string raw;
    if (size > 0) {
        if (static_cast<unsigned long long>(size) > MaxInflatedBytes)
            ProgramError(prog, "FILE " + path + " LARGER THAN 2 GiB!");
        raw.resize(static_cast<std::size_t>(size));
        in.seekg(0);
        if (!in.read(&raw[0], size)) ProgramError(prog, "FILE " + path + " CAN NOT BE READ!");
    } else {
        // A pipe or special file has no size: read it as it comes.
        in.clear();
        in.seekg(0);
        raw.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    if (HasGzipMagic(raw.data(), raw.size())) return InflateGzip(raw, path, prog);
    return raw;
}
