#include "common/Checksum.h"

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::uint64_t kPrime = 0x100000001B3U;
} // namespace

void CChecksum::AddByte(unsigned byte)
{
    m_value = (m_value ^ (byte & 0xFFU)) * kPrime;
}

CChecksum& CChecksum::Add(std::int64_t value)
{
    for (int shift = 56; shift >= 0; shift -= 8)
        AddByte(static_cast<unsigned>(static_cast<std::uint64_t>(value) >> shift));
    return *this;
}

CChecksum& CChecksum::Add(const std::string& text)
{
    Add(static_cast<std::int64_t>(text.size()));
    for (const char byte : text)
        AddByte(static_cast<unsigned char>(byte));
    return *this;
}

} // namespace Faultkeeper::Apps
