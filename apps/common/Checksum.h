#ifndef FAULTKEEPER_APPS_CHECKSUM_H
#define FAULTKEEPER_APPS_CHECKSUM_H

#include <cstdint>
#include <string>

namespace Faultkeeper::Apps
{

/// Tells data from data that was changed by accident (64-bit FNV-1a). The same on every machine, whatever its
/// byte order.
class CChecksum
{
public:
    CChecksum& Add(std::int64_t value);
    CChecksum& Add(const std::string& text);

    /// As databases hold it.
    std::int64_t Value() const { return static_cast<std::int64_t>(m_value); }

private:
    void AddByte(unsigned byte);

    std::uint64_t m_value = 0xCBF29CE484222325U;
};

} // namespace Faultkeeper::Apps

#endif
