#pragma once
// One ambiguity arc as the arc screening hands it to the ambiguity stage:
// a fixed 18-byte little-endian record, so that the temporary arc file reads
// back the same on every platform whatever the compiler's padding.
#include <cstdint>
#include <istream>
#include <ostream>

namespace AmbRecordns {
/// Bytes of one record on file: 2 for the satellite, 4 for each index.
inline constexpr int Size = 18;
}  // namespace AmbRecordns

/// One arc of one satellite.
struct AmbRecord {
    std::int16_t sat = 0;      // satellite number (PRN plus system base)
    std::int32_t iStart = 0;   // index of the arc's first epoch
    std::int32_t ioStart = 0;  // first record of that epoch's block
    std::int32_t iEnd = 0;     // index of the arc's last epoch
    std::int32_t nobs = 0;     // observations in the arc
};

/// Writes a as 18 bytes, little-endian, fields in declaration order and
/// without padding. Returns false when the stream fails.
bool WriteAmbRecord(std::ostream& out, const AmbRecord& a);
/// Reads one 18-byte record written by WriteAmbRecord into a. Returns false,
/// leaving a unchanged, when fewer than 18 bytes remain or the stream fails.
bool ReadAmbRecord(std::istream& in, AmbRecord& a);
