#include "faultkeeperd/service/Sessions.h"

namespace Faultkeeper::Apps
{

constexpr std::size_t CSessions::kLimit;

void CSessions::Restore(const std::string& session, std::uint64_t applied)
{
    const auto inserted = m_sessions.try_emplace(session);
    if (!inserted.second)
        return;
    inserted.first->second.applied = applied;
    inserted.first->second.stored = applied;
    Disconnected(*inserted.first);
}

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
    Disconnected(*found);
}

void CSessions::Disconnected(Session& session)
{
    session.second.place = m_unconnected.insert(m_unconnected.end(), &session.first);
    ForgetOldest();
}

std::vector<std::string> CSessions::TakeForgotten()
{
    std::vector<std::string> forgotten;
    forgotten.swap(m_forgotten);
    return forgotten;
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
        m_forgotten.push_back(oldest->first);
        m_sessions.erase(oldest);
    }
}

} // namespace Faultkeeper::Apps
