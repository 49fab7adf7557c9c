#include "presentation/StateKey.h"

#include <algorithm>
#include <stdexcept>

namespace Faultkeeper
{

namespace
{
constexpr const char* kDigits = "0123456789ABCDEF";
constexpr std::size_t kBitsPerDigit = 4;
constexpr std::size_t kBitsPerByte = 8;

[[noreturn]] void RejectCharacter()
{
    throw std::invalid_argument("bitset::_M_copy_from_string"); // what callers have always been told
}

unsigned BitValue(char bit)
{
    if (bit != '0' && bit != '1')
        RejectCharacter();
    return bit == '1' ? 1U : 0U;
}

unsigned DigitValue(char digit)
{
    if (digit >= '0' && digit <= '9')
        return static_cast<unsigned>(digit - '0');
    if (digit >= 'A' && digit <= 'F')
        return static_cast<unsigned>(digit - 'A') + 10U;
    RejectCharacter();
}

// The number that `count` bits from `first` make, or as many of them as there are.
unsigned ReadBits(const std::string& bits, std::size_t first, std::size_t count)
{
    const std::size_t end = std::min(bits.size(), first + count);
    unsigned value = 0;
    for (std::size_t position = first; position < end; ++position)
        value = value << 1 | BitValue(bits[position]);
    return value;
}

void AppendBits(unsigned value, std::size_t count, std::string& bits)
{
    for (std::size_t bit = count; bit-- > 0;)
        bits += (value >> bit & 1U) != 0 ? '1' : '0';
}
} // namespace

std::string IndexBits(int index)
{
    std::string bits;
    AppendBits(static_cast<unsigned>(index), kIndexBits, bits);
    return bits;
}

int IndexOfBits(const std::string& bits)
{
    return static_cast<int>(ReadBits(bits, 0, kIndexBits));
}

std::string PackStateKey(const std::vector<std::string>& pieces)
{
    std::string bits;
    for (const std::string& piece : pieces)
        bits += piece;
    bits.append((kBitsPerByte - bits.size() % kBitsPerByte) % kBitsPerByte, '0');

    std::string key;
    key.reserve(bits.size() / kBitsPerDigit);
    for (std::size_t first = 0; first < bits.size(); first += kBitsPerDigit)
        key += kDigits[ReadBits(bits, first, kBitsPerDigit)];
    return key;
}

std::string ExpandStateKey(const std::string& key)
{
    std::string bits;
    bits.reserve(key.size() * kBitsPerDigit);
    for (const char digit : key)
        AppendBits(DigitValue(digit), kBitsPerDigit, bits);
    return bits;
}

} // namespace Faultkeeper
