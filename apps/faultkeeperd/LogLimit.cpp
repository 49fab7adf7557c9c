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
    bool escaped = false;
    for (const char byte : line)
    {
        quoted = quoted != (byte == '"' && !escaped);
        escaped = quoted && byte == '\\' && !escaped;
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
    if (found == m_kinds.end() && !MakeRoom(now))
    {
        m_others.last = line;
        ++m_others.leftOut;
        return std::string();
    }
    SKind& kind = m_kinds[key];
    kind.written = now;
    kind.leftOut = 0;
    return leftOut == 0 ? line : line + " (and " + std::to_string(leftOut) + " like it before)";
}

/// Whose turn was longest ago goes, unless that was within the last second; what it has left out is told with
/// the others.
bool CLogLimit::MakeRoom(Clock::time_point now)
{
    if (m_kinds.size() < kKinds)
        return true;
    const auto oldest = std::min_element(m_kinds.begin(), m_kinds.end(),
                                         [](const auto& left, const auto& right)
                                         { return left.second.written < right.second.written; });
    if (now - oldest->second.written < kPause)
        return false;
    m_others.leftOut += oldest->second.leftOut;
    m_others.last = oldest->second.leftOut > 0 ? oldest->second.last : m_others.last;
    m_kinds.erase(oldest);
    return true;
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
    TellOthers(now, all, lines);
    return lines;
}

void CLogLimit::TellOthers(Clock::time_point now, bool all, std::vector<std::string>& lines)
{
    if (m_others.leftOut == 0 || (!all && now - m_others.written < kPause))
        return;
    lines.push_back(m_others.last + " (the last of " + std::to_string(m_others.leftOut) +
                    " of too many kinds)");
    m_others.leftOut = 0;
    m_others.written = now;
}

} // namespace Faultkeeper::Apps
