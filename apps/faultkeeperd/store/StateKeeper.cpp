#include "faultkeeperd/store/StateKeeper.h"

#include "faultkeeperd/Log.h"

#include <algorithm>

namespace Faultkeeper::Apps
{

constexpr std::chrono::milliseconds CStateKeeper::kCommitPause;
constexpr std::chrono::milliseconds CStateKeeper::kRetryPause;

SStoreContents CStateKeeper::Open(const std::string& boot, const std::string& configuration)
{
    m_boot = boot;
    m_configuration = configuration;
    SStoreContents contents;
    if (Off() || TryToOpen(contents))
        return contents;
    contents = SStoreContents(); // what was read before the failure came is not all of it
    return contents;
}

/// @return false if there is none; it has been told why
bool CStateKeeper::TryToOpen(SStoreContents& contents)
{
    for (int attempt = 0; attempt < 2; ++attempt) // the second one after a damaged store has made room
    {
        try
        {
            m_store = std::make_unique<CStateStore>(m_settings);
            contents = m_store->Read();
            m_store->Begin(m_boot, m_configuration);
            return true;
        }
        catch (const CSqliteFailure& failure)
        {
            m_store.reset();
            const std::string aside = failure.Damage() ? MoveStoreAside(m_settings.path) : std::string();
            if (aside.empty())
            {
                Fail(failure, Clock::now());
                return false;
            }
            LogError("the state store " + m_settings.path + " is damaged (" + failure.what() +
                     "); it is now " + aside + ", and a new one is begun");
        }
    }
    return false;
}

void CStateKeeper::Keep(const SStoredError& error)
{
    const ErrorId id(error.entry.problemCode, error.entry.problemType);
    m_errors[id] = error;
    m_changedErrors.insert(id);
}

void CStateKeeper::Keep(const SStoredSession& session)
{
    m_sessions[session.id] = session;
    m_changedSessions.insert(session.id);
    m_forgottenSessions.erase(session.id);
}

void CStateKeeper::Forget(const std::string& session)
{
    m_sessions.erase(session);
    m_changedSessions.erase(session);
    m_forgottenSessions.insert(session);
}

void CStateKeeper::Keep(const STransition& transition)
{
    if (Off())
        return;
    m_transitions.push_back(transition);
    if (Storing() || m_transitions.size() <= kWaitingTransitions)
        return;
    m_transitions.pop_front();
    m_tried -= m_tried > 0 ? 1 : 0;
    ++m_statistics.lostTransitions;
}

bool CStateKeeper::Waits() const
{
    return !m_changedErrors.empty() || !m_changedSessions.empty() || !m_forgottenSessions.empty() ||
           !m_transitions.empty();
}

CStateKeeper::Clock::time_point CStateKeeper::Due() const
{
    return m_lastCommit + (Storing() ? kCommitPause : kRetryPause);
}

bool CStateKeeper::Commit(Clock::time_point now)
{
    if (Off() || !Waits())
        return true;
    return now >= Due() ? CommitAtOnce(now) : !Storing();
}

bool CStateKeeper::CommitAtOnce(Clock::time_point now)
{
    if (Off() || !Waits())
        return true;
    m_lastCommit = now;
    if (!Storing())
        OpenAnew();
    if (!Storing())
        return true;
    try
    {
        m_tried = m_transitions.size();
        m_expectedNumber = m_store->LastNumber() + m_tried;
        m_store->Commit(Batch());
        Stored();
    }
    catch (const CSqliteFailure& failure)
    {
        m_store.reset();
        Fail(failure, now);
    }
    return true;
}

void CStateKeeper::OpenAnew()
{
    SStoreContents contents;
    if (!TryToOpen(contents))
        return;
    ForgetStored();
    SettleOthers(contents);
    TellEverything();
}

/// A commit whose failure was reported too late is in the store; its transitions must not be there twice.
void CStateKeeper::ForgetStored()
{
    if (m_tried > 0 && m_store->LastNumber() == m_expectedNumber)
        m_transitions.erase(m_transitions.begin(),
                            m_transitions.begin() + static_cast<std::ptrdiff_t>(m_tried));
    m_tried = 0;
}

/// The store knows less than we do. What it says of errors that we have never heard of is of an owner before
/// us, and nobody would clear it.
void CStateKeeper::SettleOthers(const SStoreContents& contents)
{
    for (SStoredError error : contents.errors)
    {
        error.entry.flags = 0;
        m_errors.emplace(ErrorId(error.entry.problemCode, error.entry.problemType), error);
    }
}

void CStateKeeper::TellEverything()
{
    for (const auto& error : m_errors)
        m_changedErrors.insert(error.first);
    for (const auto& session : m_sessions)
        m_changedSessions.insert(session.first);
}

SStoreBatch CStateKeeper::Batch() const
{
    SStoreBatch batch;
    for (const ErrorId& id : m_changedErrors)
        batch.errors.push_back(m_errors.at(id));
    for (const std::string& id : m_changedSessions)
        batch.sessions.push_back(m_sessions.at(id));
    batch.forgottenSessions.assign(m_forgottenSessions.begin(), m_forgottenSessions.end());
    batch.transitions.assign(m_transitions.begin(), m_transitions.end());
    return batch;
}

void CStateKeeper::Stored()
{
    m_changedErrors.clear();
    m_changedSessions.clear();
    m_forgottenSessions.clear();
    m_transitions.clear();
    m_tried = 0;
    ++m_statistics.commits;
    if (m_failureTold)
        LogInfo("the state store " + m_settings.path + " works again");
    m_failureTold = false;
}

void CStateKeeper::Fail(const CSqliteFailure& failure, Clock::time_point now)
{
    m_lastCommit = now;
    ++m_statistics.failures;
    if (!m_failureTold)
        LogError("the state store " + m_settings.path + " cannot be used: " + failure.what() +
                 "; reports go on being applied and shown, but a restart would forget them");
    m_failureTold = true;
}

int CStateKeeper::MillisecondsToCommit(Clock::time_point now) const
{
    if (Off() || !Waits())
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(Due() - now).count();
    return static_cast<int>(std::max<std::int64_t>(left, 0));
}

std::vector<STransition> CStateKeeper::Journal(std::uint64_t from, std::size_t limit)
{
    if (!Storing())
        return {};
    try
    {
        return m_store->Journal(from, limit);
    }
    catch (const CSqliteFailure& failure)
    {
        m_store.reset();
        Fail(failure, Clock::now());
        return {};
    }
}

} // namespace Faultkeeper::Apps
