#include "faultkeeperd/owner/Owner.h"

#include "faultkeeperd/owner/FormerState.h"
#include "faultkeeperd/store/FormerTable.h"
#include "faultkeeperd/store/StateKeeper.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <Core/Time.h>

#include <algorithm>
#include <cstddef>

namespace Faultkeeper::Apps
{

namespace
{
/// Is there an active error that would raise it?
bool HasCause(const CError& error)
{
    const auto raises = [](const CTriggerSet& set)
    {
        return set.AutoTrigger() && std::any_of(set.Triggers().begin(), set.Triggers().end(),
                                                [&set](const CError* trigger)
                                                { return trigger->Active() && set.Raised(trigger); });
    };
    return std::any_of(error.TriggerSets().begin(), error.TriggerSets().end(), raises);
}

std::string WhatWaits(const CPublisher& publisher)
{
    if (publisher.Changes() > 0)
        return "changes wait";
    return publisher.Waiting() > 0 ? "the former state waits" : "";
}
} // namespace

COwner::COwner(CErrorDatabase& database, CStateKeeper& keeper, const SFormerState& former)
    : m_database(database), m_view(true, eViewOwner), m_publisher(m_database, m_view),
      m_recorder(database, keeper)
{
    ConfirmTable();
    Restore(former);
    m_database.SetCallback(this);
    ClearOrphans(former.orphans);
    m_recorder.HandOver();
    if (former.judged)
        keeper.TakeConfiguration();
}

COwner::~COwner()
{
    m_database.SetCallback(nullptr);
}

/// Nothing has changed, so nobody is told and nothing is counted. Times that no display can have seen, and
/// that lie in the future all the same, are kept in the store and not shown: what happens now would be
/// earlier.
void COwner::Restore(const SFormerState& former)
{
    Core::Time::NotBefore(former.latest); // displays notice only what is later than all they have seen
    std::vector<SErrorEntry> entries;
    for (SStoredError error : former.errors)
    {
        SErrorEntry& entry = error.entry;
        const bool raised = (entry.flags & kRaisedFlag) != 0;
        SErrorEntry shown = entry;
        if (std::max(entry.raisedTime, entry.clearedTime) > Core::Time::Now())
            shown.raisedTime = shown.clearedTime = Core::Time();
        if (former.contradicted.count(ErrorId(entry.problemCode, entry.problemType)) > 0)
        {
            const Core::Time now = Core::Time::Now();
            (raised ? shown.raisedTime : shown.clearedTime) = now;
            (raised ? entry.raisedTime : entry.clearedTime) = now;
        }
        entries.push_back(shown);
        m_recorder.Restore(error, shown);
        if (raised)
            m_database.RaiseError(entry.problemCode, entry.problemType, true);
    }
    m_publisher.Restore(entries, former.sameBoot);
}

/// What was raised because of another error, and is active by former links alone, would be cleared by nobody,
/// unless an active error raises it. It clears nothing itself: of the errors above it, those that followed
/// from it are among the orphans as well, and others were reported. Where the journal does not go back to
/// what raised one above it, nobody can tell which it is, and it stays until it is reported or its child
/// changes.
void COwner::ClearOrphans(const std::set<ErrorId>& orphans)
{
    for (bool changed = true; changed;)
    {
        changed = false;
        for (const auto& [problemCode, problemType] : orphans)
        {
            const CError* const error = m_database.RetrieveError(problemCode, problemType);
            if (error == nullptr || !error->Active() || HasCause(*error))
                continue;
            m_recorder.Begin(eorConfiguration); // it follows from none of the others
            m_database.ClearError(problemCode, problemType, true);
            NoteCleared(problemCode, problemType);
            changed = true;
        }
    }
}

bool COwner::Knows(int problemCode, int problemType) const
{
    return m_database.RetrieveError(problemCode, problemType) != nullptr;
}

bool COwner::Apply(int problemCode, int problemType, bool raised, const std::string& session)
{
    if (!Knows(problemCode, problemType))
        return false;
    m_recorder.Begin(session);
    if (raised)
        m_database.RaiseError(problemCode, problemType, false);
    else
        m_database.ClearError(problemCode, problemType, false);
    return true;
}

void COwner::ErrorRaised(int problemCode, int problemType)
{
    m_recorder.Note(ErrorId(problemCode, problemType), true);
    m_publisher.ErrorRaised(problemCode, problemType);
}

void COwner::ErrorCleared(int problemCode, int problemType)
{
    NoteCleared(problemCode, problemType);
}

void COwner::NoteCleared(int problemCode, int problemType)
{
    m_recorder.Note(ErrorId(problemCode, problemType), false);
    m_publisher.ErrorCleared(problemCode, problemType);
}

void COwner::Publish(Clock::time_point now)
{
    if (m_pause.Due(now))
    {
        const std::size_t waiting = m_publisher.Waiting();
        if (!HasWork(now) || (!m_lockWatch.Held() && PublishChanges() && m_lockWatch.Audit(m_view, now)))
        {
            m_pause.Succeeded();
            m_lockWatch.LockFree();
        }
        else
        {
            ++m_lockRetries;
            m_pause.Failed(now);
            if (!Failed())
                m_lockWatch.LockBusy(now, m_publisher.Waiting() < waiting, WhatWaits(m_publisher));
        }
    }
    m_recorder.HandOver();
}

void COwner::Withdraw()
{
    m_publisher.Withdraw();
    m_pause.Succeeded();
}

bool COwner::PublishChanges()
{
    return m_publisher.Publish() && (!m_recorder.WantsTimes() || TakeTimes());
}

bool COwner::TakeTimes()
{
    m_records.clear();
    m_view.RetrieveAllErrors(m_records);
    if (m_records.empty())
        return false; // the lock is busy
    m_recorder.TakeTimes(m_records);
    return true;
}

int COwner::MillisecondsToPublish(Clock::time_point now) const
{
    return HasWork(now) ? m_pause.MillisecondsLeft(now) : m_lockWatch.MillisecondsToAudit(now);
}

bool COwner::HasWork(Clock::time_point now) const
{
    return !m_publisher.Done() || m_recorder.WantsTimes() || m_lockWatch.MillisecondsToAudit(now) == 0;
}

} // namespace Faultkeeper::Apps
