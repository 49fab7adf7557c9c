#include "faultkeeperd/Sessions.h"

namespace Faultkeeper::Apps
{

constexpr std::size_t CSessions::kLimit;

CSessions::SSession& CSessions::Open(const std::string& session)
{
    const auto inserted = m_sessions.try_emplace(session);
    SSession& opened = inserted.first->second;
    if (!inserted.second && opened.connections == 0)
        m_unconnected.erase(opened.place);
    ++opened.connections;
    ForgetOldest();
    return opened;
}

void CSessions::Close(const std::string& session)
{
    const auto found = m_sessions.find(session);
    if (found == m_sessions.end() || found->second.connections == 0 || --found->second.connections > 0)
        return;
    found->second.place = m_unconnected.insert(m_unconnected.end(), &found->first);
    ForgetOldest();
}

bool CSessions::Take(SSession& session, std::uint64_t number)
{
    if (number <= session.applied)
        return false;
    session.applied = number;
    return true;
}

void CSessions::ForgetOldest()
{
    while (m_sessions.size() > kLimit && !m_unconnected.empty())
    {
        const auto oldest = m_sessions.find(*m_unconnected.front());
        m_unconnected.pop_front();
        m_sessions.erase(oldest);
    }
}

} // namespace Faultkeeper::Apps
