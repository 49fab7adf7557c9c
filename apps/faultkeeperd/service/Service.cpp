#include "faultkeeperd/service/Service.h"

#include "common/ConfigurationFingerprint.h"
#include "common/owner/TableCalls.h"
#include "faultkeeperd/Log.h"
#include "faultkeeperd/owner/FormerState.h"
#include "faultkeeperd/store/FormerTable.h"
#include "store/BootClock.h"

#include <Faultkeeper/Version.h>

#include <MPI/BDictionaryC.h>

#include <poll.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace Faultkeeper::Apps
{

namespace
{
using Clock = COwner::Clock;

// A lock that is busy longer than that is not coming back.
constexpr std::chrono::seconds kEndingPatience(4);

/// The sooner of two waits in milliseconds; negative ones have no end.
int Sooner(int one, int other)
{
    return one < 0 || (other >= 0 && other < one) ? other : one;
}

/// Waits for input on any of the descriptors.
/// @return false if the system refused
bool WaitForInput(struct pollfd* descriptors, nfds_t count, int timeoutMilliseconds)
{
    return poll(descriptors, count, timeoutMilliseconds) >= 0 || errno == EINTR;
}
} // namespace

CService::CService(const std::string& runDirectory, const SStoreSettings& store, std::size_t connections)
    : m_runDirectory(runDirectory), m_begin(Clock::now()), m_server(m_handler), m_keeper(store)
{
    m_server.MaximumConnections(connections);
    m_server.GathersInput(true); // its descriptor is polled beside others
    m_handler.Server(&m_server);
    m_handler.Settling([this] { SettleNow(); });
}

bool CService::Listen(unsigned short port)
{
    if (m_server.Listen(port))
        return true;
    const bool inUse = m_server.Error().find(std::strerror(EADDRINUSE)) != std::string::npos;
    LogError(inUse ? "another owner is running: " + m_server.Error() : "cannot listen: " + m_server.Error());
    return false;
}

/// Why the run directory could not be claimed.
std::string CService::RefusedClaim() const
{
    const pid_t holder = m_claim.Holder();
    if (ProcessRuns(holder))
        return "another owner uses " + m_runDirectory + ": process " + std::to_string(holder);
    return "another process holds the lock by which owners claim " + m_runDirectory; // owners say so
}

bool CService::Claim()
{
    if (!m_claim.Take())
    {
        LogError(RefusedClaim());
        return false;
    }
    const std::string key = "the key of " + m_runDirectory;
    const std::string problem =
        ForeignSegment()   ? "shared memory under " + key + " is not a table of faults"
        : RefusedSegment() ? "shared memory under " + key + " may not be written by this user"
        : RefusedLock()    ? "lock under " + key + " may not be used by this user"
        : ForeignLock()    ? "semaphore set under " + key + " is not the lock of a table of faults"
                           : std::string();
    if (!problem.empty())
        LogError("the " + problem + ", and left as it is");
    return problem.empty();
}

bool CService::Load(const std::string& configurationPrefix)
{
    LogInfo("loading " + configurationPrefix); // the database ends the process if a rule is broken
    m_database = std::make_unique<CErrorDatabase>(configurationPrefix);
    if (!m_database->Loaded())
    {
        LogError("the configuration in " + configurationPrefix + " could not be loaded");
        return false;
    }
    m_fingerprint = ConfigurationFingerprint(*m_database);
    const SFormerState former = FindFormerState(m_keeper, *m_database, BootId(), m_fingerprint);
    m_owner = std::make_unique<COwner>(*m_database, m_keeper, former);
    m_claim.Mark();
    m_handler.Begin(*m_owner, m_keeper, former.sessions);
    m_handler.Statistics([this] { return StatisticsMessage(Statistics()); });
    return Settle();
}

bool CService::Run()
{
    bool working = true;
    while (working && m_signals.Received() == 0)
        working = Turn();
    return End() && working;
}

int CService::MillisecondsToWork() const
{
    const Clock::time_point now = Clock::now();
    const int settling = Sooner(m_owner->MillisecondsToPublish(now), m_keeper.MillisecondsToCommit(now));
    return Sooner(settling, m_serviceManager.MillisecondsToAlive(now));
}

SStatistics CService::Statistics() const
{
    const SReportCounts& counts = m_handler.Counts();
    const CStateKeeper::SStatistics& storing = m_keeper.Statistics();
    const auto number = [](auto value) { return static_cast<std::int64_t>(value); };
    SStatistics statistics;
    statistics.numbers = {
        {"received", number(counts.received)},
        {"applied", number(counts.applied)},
        {"repeated", number(counts.repeated)},
        {"unknown", number(counts.unknown)},
        {"malformed", number(counts.malformed)},
        {"turnedAway", number(counts.turnedAway)},
        {"connections", number(m_server.ConnectionCount())},
        {"sessions", number(m_handler.SessionCount())},
        {"lockRetries", number(m_owner->LockRetries())},
        {"lockSurplus", number(m_owner->LockWatch().Surplus())},
        {"waiting", number(m_owner->Publisher().Waiting())},
        {"commits", number(storing.commits)},
        {"commitFailures", number(storing.failures)},
        {"journalLength", number(m_keeper.JournalLength())},
        {"journalLost", number(storing.lostTransitions)},
        {"uptime", number(std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - m_begin).count())},
    };
    statistics.texts = {
        {"acknowledged", m_keeper.Storing() ? "stored" : "applied"},
        {"configuration", m_fingerprint},
        {"runDirectory", m_runDirectory},
        {"version", FAULTKEEPER_VERSION},
    };
    return statistics;
}

bool CService::Turn()
{
    struct pollfd inputs[] = {{m_signals.Descriptor(), POLLIN, 0}, {m_server.Descriptor(), POLLIN, 0}};
    if (!WaitForInput(inputs, 2, MillisecondsToWork()))
    {
        LogError(std::string("poll: ") + std::strerror(errno));
        return false;
    }
    if (m_signals.Received() == 0 && inputs[1].revents != 0 && m_server.Serve(0) < 0)
    {
        LogError("cannot go on listening: " + m_server.Error());
        return false;
    }
    return Settle();
}

/// What came in goes to the table, then to the store, and only then is it acknowledged.
bool CService::Settle()
{
    const bool published = Publish();
    if (m_keeper.Commit(Clock::now()))
        Acknowledge();
    m_serviceManager.Alive(Clock::now());
    LogLeftOut(false);
    return published;
}

/// For who will not be there any more when it is time to. A store that does not work is left to its pauses.
void CService::SettleNow()
{
    Publish();
    if (m_keeper.Storing() ? m_keeper.CommitAtOnce(Clock::now()) : m_keeper.Commit(Clock::now()))
        Acknowledge();
}

/// What would not come back with the next owner is not acknowledged: without a store that is all that waits
/// for the lock of the table. A report that changes nothing counts on what the former owner has left.
void CService::Acknowledge()
{
    if (m_keeper.Storing() || m_owner->Publisher().Waiting() == 0)
        m_handler.Acknowledge();
}

bool CService::Publish()
{
    const bool wasReady = m_owner->Publisher().Ready();
    m_owner->Publish(Clock::now());
    if (m_owner->Failed())
    {
        LogError("the shared table has failed; nothing can be published any more");
        return false;
    }
    if (wasReady || !m_owner->Publisher().Ready())
        return true;
    LogInfo("ready: " + std::to_string(m_database->GetErrorList().size()) + " errors, port " +
            std::to_string(m_server.Port()));
    m_serviceManager.Ready();
    return true;
}

bool CService::End()
{
    // The port stays ours to the last: another owner must not take over the table while this one still writes
    // it.
    m_serviceManager.Stopping();
    PublishLast();
    m_keeper.CommitAtOnce(Clock::now());
    Acknowledge();
    m_server.Close();
    m_keeper.CommitAtOnce(Clock::now()); // that the sessions have no connections any more
    return TellEnd();
}

/// Tries as long as it makes sense and nobody asks again to end.
void CService::PublishLast()
{
    m_signals.TakeFirst();
    m_owner->Withdraw();
    const Clock::time_point deadline = Clock::now() + kEndingPatience;
    struct pollfd input = {m_signals.Descriptor(), POLLIN, 0};
    for (Clock::time_point now = Clock::now(); now < deadline && input.revents == 0; now = Clock::now())
    {
        m_owner->Publish(now);
        if (m_owner->Settled() || m_owner->Failed())
            return;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - now).count();
        if (!WaitForInput(&input, 1, Sooner(m_owner->MillisecondsToPublish(now), static_cast<int>(left))))
            return;
    }
    if (input.revents != 0)
        LogInfo("told to end once more; the lock is not waited for any longer");
}

/// What is lost with the table; empty if nothing is. What a former owner has left is in the store as well, if
/// there is one.
std::string CService::Missing() const
{
    const CPublisher& publisher = m_owner->Publisher();
    const std::size_t changes = publisher.Changes();
    const std::size_t former = m_keeper.Storing() ? 0 : publisher.Waiting() - changes;
    std::string missing;
    const auto add = [&missing](const std::string& text) { missing += (missing.empty() ? "" : ", ") + text; };
    if (m_owner->Failed())
        add("a shared table that has failed");
    if (changes > 0)
        add(std::to_string(changes) + " changes not published");
    if (former > 0)
        add(std::to_string(former) + " errors of the former state not published");
    if (changes + former > 0 && publisher.New())
        missing += "; the shared table was never declared ready";
    return missing;
}

/// @return true if nothing is missing from the table
bool CService::TellEnd()
{
    const std::string missing = Missing();
    if (!missing.empty())
    {
        LogError("ended with " + missing);
        return false;
    }
    if (m_owner->Publisher().Done())
        m_claim.Unmark();
    else if (m_owner->Publisher().Ready()) // displays see by the claim that this owner has gone
        LogWarning("the lock stays busy: the shared table could not be declared not ready");
    else if (m_owner->Publisher().Waiting() > 0)
        LogWarning("the lock stays busy: the shared table is empty and was never declared ready; the former "
                   "state stays in the store");
    LogInfo("ended");
    return true;
}

} // namespace Faultkeeper::Apps
