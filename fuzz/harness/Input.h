#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace Fuzz
{

/// Reads an input from its front. Past the end there are zeros and empty texts. The bytes are borrowed.
class CInput
{
public:
    CInput(const std::uint8_t* bytes, std::size_t size) : m_next(bytes), m_left(size) {}

    bool AtEnd() const { return m_left == 0; }

    std::uint8_t Byte()
    {
        const std::string byte = Text(1);
        return byte.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(byte[0]);
    }

    /// Two bytes, the low one first.
    unsigned Word()
    {
        const unsigned low = Byte();
        return low + 256U * Byte();
    }

    /// So many bytes, or as many as are left.
    std::string Text(std::size_t size)
    {
        const std::size_t taken = std::min(size, m_left);
        const std::string text(m_next, m_next + taken);
        m_next += taken;
        m_left -= taken;
        return text;
    }

    std::string Rest() { return Text(m_left); }

private:
    const std::uint8_t* m_next;
    std::size_t m_left;
};

} // namespace Fuzz
