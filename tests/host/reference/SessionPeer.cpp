#include "host/reference/SessionPeer.h"

#include <gtest/gtest.h>

namespace HostTest
{

namespace
{

const std::string kBeforeId = "d4:argsl32:";
const std::string kAfterId = "e4:name5:Helloe";
constexpr std::size_t kIdDigits = 32;

} // namespace

void CSessionStream::Take(const std::string& bytes)
{
    m_rest += bytes;
    while (TakeOne())
    {
    }
    m_rest.erase(0, m_next);
    m_next = 0;
}

bool CSessionStream::TakeOne()
{
    if (m_session.empty())
        return TakeIntroduction();
    const std::string begin = "d4:argsli";
    const std::size_t digits = m_next + begin.size();
    const std::size_t end = m_rest.size() > digits ? m_rest.find('e', digits) : std::string::npos;
    if (end == std::string::npos)
        return false;
    const std::uint64_t number = std::stoull(m_rest.substr(digits, end - digits));
    const std::string expected = Notification(number);
    if (m_rest.size() - m_next < expected.size())
        return false;
    EXPECT_EQ(m_rest.substr(m_next, expected.size()), expected);
    m_numbers.push_back(number);
    m_next += expected.size();
    return !testing::Test::HasFailure();
}

bool CSessionStream::TakeIntroduction()
{
    const std::size_t size = kBeforeId.size() + kIdDigits + kAfterId.size();
    if (m_rest.size() < size)
        return false;
    m_session = m_rest.substr(kBeforeId.size(), kIdDigits);
    EXPECT_EQ(m_rest.substr(0, size), kBeforeId + m_session + kAfterId);
    EXPECT_EQ(m_session.find_first_not_of("0123456789abcdef"), std::string::npos);
    m_next += size;
    return true;
}

std::string Notification(std::uint64_t number)
{
    const std::string text = std::to_string(number);
    return "d4:argsli" + text + "ee4:name6:Number3:seqi" + text + "ee";
}

std::string Welcome(std::int64_t number)
{
    return "d7:welcomei" + std::to_string(number) + "ee";
}

std::string Acknowledgement(std::int64_t number)
{
    return "d3:acki" + std::to_string(number) + "ee";
}

} // namespace HostTest
