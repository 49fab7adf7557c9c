#include "faultkeeperd/service/Sessions.h"

#include <algorithm>

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
        const std::string oldest = *m_unconnected.front();
        m_unconnected.pop_front();
        Forget(oldest);
    }
}

void CSessions::Forget(const std::string& session)
{
    const auto found = m_sessions.find(session);
    if (found->second.awaitsStore)
        m_awaitStore.erase(std::find(m_awaitStore.begin(), m_awaitStore.end(), &found->second));
    m_sessions.erase(found);
    m_forgotten.push_back(session);
}

void CSessions::AwaitStore(SSession& session)
{
    if (session.awaitsStore)
        return;
    m_awaitStore.push_back(&session);
    session.awaitsStore = true;
}

void CSessions::Stored()
{
    for (SSession* const session : m_awaitStore)
    {
        session->stored = session->applied;
        session->awaitsStore = false;
    }
    m_awaitStore.clear();
}

} // namespace Faultkeeper::Apps
