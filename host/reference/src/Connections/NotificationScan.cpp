#include "Connections/NotificationScan.h"

#include <limits>

namespace
{

constexpr std::uint64_t kGreatest = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t kLongestName = 1024; // so that the whole stays far within what a message may have

} // namespace

std::size_t NotificationScan::Read(std::string_view bytes)
{
    m_rest = bytes;
    m_count = 0;
    m_number = 0;
    if (!Take("d4:argsl") || !TakeArguments() || !Take("4:name") || !TakeName())
        return 0;
    if (!Take("e") && !(TakeNumber() && Take("e")))
        return 0;
    return bytes.size() - m_rest.size();
}

bool NotificationScan::Take(std::string_view expected)
{
    if (m_rest.substr(0, expected.size()) != expected)
        return false;
    m_rest.remove_prefix(expected.size());
    return true;
}

/// Digits without a leading zero, and not past the end: the number might go on there.
bool NotificationScan::TakeDigits(std::uint64_t& value, std::uint64_t limit)
{
    value = 0;
    std::size_t count = 0;
    for (; count < m_rest.size() && m_rest[count] >= '0' && m_rest[count] <= '9'; ++count)
    {
        const auto digit = static_cast<unsigned>(m_rest[count] - '0');
        if ((count > 0 && value == 0) || value > (limit - digit) / 10)
            return false;
        value = value * 10 + digit;
    }
    m_rest.remove_prefix(count);
    return count > 0;
}

bool NotificationScan::TakeInteger(std::int64_t& value)
{
    const bool negative = Take("-");
    std::uint64_t magnitude = 0;
    if (!TakeDigits(magnitude, kGreatest) || (negative && magnitude == 0))
        return false;
    value = negative ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
    return Take("e");
}

bool NotificationScan::TakeArguments()
{
    while (!Take("e"))
    {
        if (m_count == m_arguments.size() || !Take("i") || !TakeInteger(m_arguments[m_count]))
            return false;
        ++m_count;
    }
    return true;
}

bool NotificationScan::TakeName()
{
    std::uint64_t length = 0;
    if (!TakeDigits(length, kLongestName) || !Take(":") || m_rest.size() < length)
        return false;
    m_name = m_rest.substr(0, static_cast<std::size_t>(length));
    m_rest.remove_prefix(m_name.size());
    return true;
}

bool NotificationScan::TakeNumber()
{
    std::int64_t number = 0;
    if (!Take("3:seqi") || !TakeInteger(number) || number < 1)
        return false;
    m_number = static_cast<std::uint64_t>(number);
    return true;
}
