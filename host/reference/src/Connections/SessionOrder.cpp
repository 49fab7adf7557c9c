#include "Connections/SessionOrder.h"

#include <algorithm>

bool SessionOrder::Join(const std::string& session, std::uint64_t connection)
{
    std::deque<std::uint64_t>& line = m_sessions[session];
    if (std::find(line.begin(), line.end(), connection) == line.end())
        line.push_back(connection);
    return line.front() == connection;
}

std::uint64_t SessionOrder::Leave(const std::string& session, std::uint64_t connection)
{
    const auto found = m_sessions.find(session);
    if (found == m_sessions.end())
        return 0;
    std::deque<std::uint64_t>& line = found->second;
    const bool first = line.front() == connection;
    line.erase(std::remove(line.begin(), line.end(), connection), line.end());
    if (!line.empty())
        return first ? line.front() : 0;
    m_sessions.erase(found);
    return 0;
}

std::vector<SessionOrder::SWaitedFor> SessionOrder::WaitedFor() const
{
    std::vector<SWaitedFor> result;
    for (const auto& session : m_sessions)
    {
        if (session.second.size() > 1)
            result.push_back({session.first, session.second.front()});
    }
    return result;
}
