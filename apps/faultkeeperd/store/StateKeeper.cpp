#include "faultkeeperd/store/StateKeeper.h"

#include "faultkeeperd/Log.h"
#include "store/StoreFile.h"

#include <algorithm>

namespace Faultkeeper::Apps
{

namespace
{
// In place of a fingerprint, which is made of hexadecimal digits: what is in the store came about under more
// than one.
constexpr const char* kSeveral = "several";

/// In one line: of several that are alike the log would leave out all but one.
void TellDropped(const SStoreContents& contents)
{
    std::string rows;
    for (const std::string& dropped : contents.dropped)
        rows += (rows.empty() ? "" : ", ") + dropped;
    if (!rows.empty())
        LogWarning((contents.dropped.size() == 1 ? "the state store held a damaged row, which is dropped: "
                                                 : "the state store held damaged rows, which are dropped: ") +
                   rows);
}
} // namespace

constexpr std::chrono::milliseconds CStateKeeper::kCommitPause;
constexpr std::chrono::milliseconds CStateKeeper::kRetryPause;

SStoreContents CStateKeeper::Open(const std::string& boot, const std::string& configuration)
{
    m_note.Read();
    m_boot = boot;
    m_configuration = configuration;
    SStoreContents contents;
    if (Off())
    {
        LogInfo("the state store is switched off: acknowledged means applied and shown");
        return contents;
    }
    TryToOpen(esoPatiently, contents, Clock::now());
    TellDropped(contents);
    Learn(contents);
    return contents;
}

/// @param contents  also gives what could be read if the store cannot be used
/// @return false if it cannot; it has been told why
bool CStateKeeper::TryToOpen(EStoreOpening opening, SStoreContents& contents, Clock::time_point now)
{
    for (int damaged = 0;;)
    {
        try
        {
            BeginStore(opening, contents);
            return true;
        }
        catch (const CSqliteFailure& failure)
        {
            m_store.reset();
            if (failure.Damage() && ++damaged <= 2) // a disk that damages the new store, too, is given time
            {
                contents = SStoreContents();
                if (damaged == 1 ||
                    MakeRoom(failure)) // the first time the disk may have failed to give a page
                    continue;
            }
            Fail(failure, now);
            if (opening == esoPatiently && !m_known && !failure.Busy())
                TryToRead(contents);
            return false;
        }
    }
}

void CStateKeeper::BeginStore(EStoreOpening opening, SStoreContents& contents)
{
    m_store = std::make_unique<CStateStore>(m_settings, opening);
    if (opening == esoAtOnce && !m_checked)
        m_store->Check();
    m_checked = true;
    contents = m_store->Read();
    m_known = m_known || opening == esoPatiently;
    // The store stays of another configuration until what that has left is judged.
    const bool empty = contents.configuration.empty();
    m_store->Begin(m_boot, empty ? m_configuration : contents.configuration);
    m_otherConfiguration = !empty && contents.configuration != m_configuration;
}

void CStateKeeper::TakeConfiguration()
{
    m_judged = m_known;
}

/// @return whether a damaged store was moved out of the way
bool CStateKeeper::MakeRoom(const CSqliteFailure& failure)
{
    const std::string aside = failure.Damage() ? MoveStoreAside(m_settings.path) : std::string();
    if (aside.empty())
        return false;
    LogError("the state store " + m_settings.path + " is damaged (" + failure.what() + "); it is now " +
             aside + ", and a new one is begun");
    return true;
}

/// The medium takes nothing. What is on it may be readable all the same.
void CStateKeeper::TryToRead(SStoreContents& contents)
{
    try
    {
        contents = CStateStore(m_settings, esoReading).Read();
        m_known = true;
    }
    catch (const CSqliteFailure&)
    {
        contents = SStoreContents(); // that the store cannot be used has been told
    }
}

/// All that was in the store belongs into the next one, too, if it comes to that.
void CStateKeeper::Learn(const SStoreContents& contents)
{
    const bool sameBoot = contents.OfBoot(m_boot);
    for (SStoredError error : contents.errors)
    {
        if (!sameBoot)
            error.entry.flags = 0;
        m_errors[ErrorId(error.entry.problemCode, error.entry.problemType)] = error;
    }
    if (!sameBoot)
        return;
    for (const SStoredSession& session : contents.sessions)
        m_sessions[session.id] = session;
}

void CStateKeeper::Begin(const std::vector<SStoredError>& table, const std::vector<STransition>& missed)
{
    for (const SStoredError& error : table)
        Keep(error);
    for (const STransition& transition : missed)
        Keep(transition);
    if (!table.empty() && Storing())
        CommitAtOnce(Clock::now());
    m_begun = true;
    Note(!table.empty());
}

/// How the owner's table and the store go together now.
void CStateKeeper::Note(bool fromTable)
{
    if (Storing())
        m_note.Write(etrStored, m_settings.path);
    else if (m_known)
        m_note.Write(etrAhead, m_settings.path); // what could be read is in the table
    else if (fromTable)
        m_note.FallBehind();
    else
        m_note.Write(etrApart, std::string());
}

void CStateKeeper::Keep(const SStoredError& error)
{
    if (Off())
        return;
    const ErrorId id(error.entry.problemCode, error.entry.problemType);
    m_errors[id] = error;
    m_changedErrors.insert(id);
}

void CStateKeeper::Keep(const SStoredSession& session)
{
    if (Off())
        return;
    m_sessions[session.id] = session;
    m_changedSessions.insert(session.id);
    m_forgottenSessions.erase(session.id);
}

void CStateKeeper::Forget(const std::string& session)
{
    m_sessions.erase(session);
    m_changedSessions.erase(session);
    if (Storing())
        m_forgottenSessions.insert(session); // otherwise it is found when the store is opened anew
}

void CStateKeeper::Keep(const STransition& transition)
{
    if (Off())
        return;
    m_transitions.push_back(transition);
    if (!Storing())
        LoseOldest();
}

void CStateKeeper::LoseOldest()
{
    while (m_transitions.size() > kWaitingTransitions)
    {
        m_transitions.pop_front();
        m_tried -= m_tried > 0 ? 1 : 0;
        ++m_statistics.lostTransitions;
    }
}

bool CStateKeeper::Waits() const
{
    return !m_changedErrors.empty() || !m_changedSessions.empty() || !m_forgottenSessions.empty() ||
           !m_transitions.empty() || (m_otherConfiguration && m_judged);
}

CStateKeeper::Clock::time_point CStateKeeper::Due() const
{
    return m_lastCommit + (Storing() ? kCommitPause : kRetryPause);
}

bool CStateKeeper::Commit(Clock::time_point now)
{
    if (Idle())
        return true;
    return now >= Due() ? CommitAtOnce(now) : !Storing();
}

bool CStateKeeper::CommitAtOnce(Clock::time_point now)
{
    if (Idle())
        return true;
    m_lastCommit = now;
    if (!Storing())
        OpenAnew(now);
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

void CStateKeeper::OpenAnew(Clock::time_point now)
{
    SStoreContents contents;
    if (!TryToOpen(esoAtOnce, contents, now))
        return;
    TellDropped(contents);
    ForgetStored();
    Settle(contents);
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
void CStateKeeper::Settle(const SStoreContents& contents)
{
    for (SStoredError error : contents.errors)
    {
        error.entry.flags = 0;
        m_errors.emplace(ErrorId(error.entry.problemCode, error.entry.problemType), error);
    }
    if (contents.OfBoot(m_boot))
        SettleSessions(contents);
    m_known = true;
}

/// A session that we have never heard of may be that of a client that has not come back yet, unless we knew
/// all that there were and have forgotten it.
void CStateKeeper::SettleSessions(const SStoreContents& contents)
{
    for (const SStoredSession& session : contents.sessions)
    {
        if (!m_known)
            m_sessions.emplace(session.id, session);
        else if (m_sessions.count(session.id) == 0)
            m_forgottenSessions.insert(session.id);
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
    if (m_otherConfiguration)
        batch.configuration = m_judged ? m_configuration : kSeveral;
    return batch;
}

void CStateKeeper::Stored()
{
    m_changedErrors.clear();
    m_changedSessions.clear();
    m_forgottenSessions.clear();
    m_transitions.clear();
    m_otherConfiguration = m_otherConfiguration && !m_judged;
    m_tried = 0;
    ++m_statistics.commits;
    if (m_begun)
        m_note.Write(etrStored, m_settings.path);
    if (m_failureTold)
        LogInfo("the state store " + m_settings.path + " works again");
    m_failureTold = false;
}

void CStateKeeper::Fail(const CSqliteFailure& failure, Clock::time_point now)
{
    m_lastCommit = now;
    m_checked = m_checked && failure.Harmless();
    m_forgottenSessions.clear(); // what is to be forgotten is seen when the store is opened anew
    LoseOldest();
    ++m_statistics.failures;
    if (m_begun)
        m_note.FallBehind();
    if (!m_failureTold)
        LogError("the state store " + m_settings.path + " cannot be used: " + failure.what() +
                 "; reports go on being applied, shown and then acknowledged, but a restart of the "
                 "machine would forget them");
    m_failureTold = true;
}

int CStateKeeper::MillisecondsToCommit(Clock::time_point now) const
{
    if (Idle())
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
