#include <MPI/BEncoderC.h>

#include <MPI/BElementC.h>

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace
{

constexpr std::size_t kLongestNumber = 20; // digits and sign of any of 64 bits

} // namespace

void BEncoderC::Element(const BElementC& element)
{
    element.Encode(*this);
}

void BEncoderC::Integer(std::int64_t value)
{
    char digits[kLongestNumber + 2];
    digits[0] = 'i';
    char* const end = std::to_chars(digits + 1, digits + 1 + kLongestNumber, value).ptr;
    *end = 'e';
    m_bytes.append(digits, static_cast<std::size_t>(end - digits) + 1);
}

void BEncoderC::Text(std::string_view text)
{
    char digits[kLongestNumber + 1];
    char* const end = std::to_chars(digits, digits + kLongestNumber, text.size()).ptr;
    *end = ':';
    m_bytes.append(digits, static_cast<std::size_t>(end - digits) + 1);
    m_bytes.append(text);
}

void BEncoderC::Begin(char kind)
{
    m_bytes += kind;
    ++m_depth;
    m_deepest = std::max(m_deepest, m_depth);
}

void BEncoderC::End()
{
    m_bytes += 'e';
    --m_depth;
}

void BEncoderC::Clear()
{
    m_bytes.clear();
    m_depth = 0;
    m_deepest = 0;
}
