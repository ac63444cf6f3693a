#include "observations/AmbRecord.h"

namespace {

// Byte by byte, lowest first: the layout must not follow the host's order.
void Put(unsigned char* b, std::uint32_t v, int n)
{
    for (int i = 0; i < n; ++i) b[i] = static_cast<unsigned char>((v >> (8 * i)) & 0xFFu);
}

std::uint32_t Get(const unsigned char* b, int n)
{
    std::uint32_t v = 0;
    for (int i = 0; i < n; ++i) v |= static_cast<std::uint32_t>(b[i]) << (8 * i);
    return v;
}

// Two's complement back from the unsigned pattern, without relying on an
// implementation-defined narrowing conversion.
std::int32_t ToInt32(std::uint32_t v)
{
    return v <= 0x7FFFFFFFu ? static_cast<std::int32_t>(v)
                            : -static_cast<std::int32_t>(~v) - 1;
}

std::int16_t ToInt16(std::uint32_t v)
{
    return v <= 0x7FFFu ? static_cast<std::int16_t>(v)
                        : static_cast<std::int16_t>(-static_cast<std::int32_t>(~v & 0xFFFFu) - 1);
}

}  // namespace

bool WriteAmbRecord(std::ostream& out, const AmbRecord& a)
{
    unsigned char b[AmbRecordns::Size];
    Put(b, static_cast<std::uint16_t>(a.sat), 2);
    Put(b + 2, static_cast<std::uint32_t>(a.iStart), 4);
    Put(b + 6, static_cast<std::uint32_t>(a.ioStart), 4);
    Put(b + 10, static_cast<std::uint32_t>(a.iEnd), 4);
    Put(b + 14, static_cast<std::uint32_t>(a.nobs), 4);
    out.write(reinterpret_cast<const char*>(b), AmbRecordns::Size);
    return static_cast<bool>(out);
}

bool ReadAmbRecord(std::istream& in, AmbRecord& a)
{
    unsigned char b[AmbRecordns::Size];
    in.read(reinterpret_cast<char*>(b), AmbRecordns::Size);
    if (!in || in.gcount() != AmbRecordns::Size) return false;
    a.sat = ToInt16(Get(b, 2));
    a.iStart = ToInt32(Get(b + 2, 4));
    a.ioStart = ToInt32(Get(b + 6, 4));
    a.iEnd = ToInt32(Get(b + 10, 4));
    a.nobs = ToInt32(Get(b + 14, 4));
    return true;
}
