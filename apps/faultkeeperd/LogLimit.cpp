#include "faultkeeperd/LogLimit.h"

#include <algorithm>
#include <cctype>

namespace Faultkeeper::Apps
{

constexpr std::chrono::seconds CLogLimit::kPause;
constexpr std::size_t CLogLimit::kKinds;

namespace
{
/// The line without its numbers and without what is quoted.
std::string KindOf(const std::string& line)
{
    std::string kind;
    bool quoted = false;
    for (const char byte : line)
    {
        quoted = quoted != (byte == '"');
        if (!quoted && std::isdigit(static_cast<unsigned char>(byte)) == 0)
            kind += byte;
    }
    return kind;
}
} // namespace

std::string CLogLimit::Admit(const std::string& line, Clock::time_point now)
{
    const std::string key = KindOf(line);
    const auto found = m_kinds.find(key);
    if (found != m_kinds.end() && now - found->second.written < kPause)
    {
        found->second.last = line;
        ++found->second.leftOut;
        return std::string();
    }
    const std::uint64_t leftOut = found != m_kinds.end() ? found->second.leftOut : 0;
    if (found == m_kinds.end())
        MakeRoom();
    SKind& kind = m_kinds[key];
    kind.written = now;
    kind.leftOut = 0;
    return leftOut == 0 ? line : line + " (and " + std::to_string(leftOut) + " like it before)";
}

/// Whose turn was longest ago goes; its count goes with it.
void CLogLimit::MakeRoom()
{
    if (m_kinds.size() < kKinds)
        return;
    m_kinds.erase(std::min_element(m_kinds.begin(), m_kinds.end(),
                                   [](const auto& left, const auto& right)
                                   { return left.second.written < right.second.written; }));
}

std::vector<std::string> CLogLimit::LeftOut(Clock::time_point now, bool all)
{
    std::vector<std::string> lines;
    for (auto& entry : m_kinds)
    {
        SKind& kind = entry.second;
        if (kind.leftOut == 0 || (!all && now - kind.written < kPause))
            continue;
        lines.push_back(kind.last + " (" + std::to_string(kind.leftOut) + " like it)");
        kind.leftOut = 0;
        kind.written = now;
    }
    return lines;
}

} // namespace Faultkeeper::Apps
