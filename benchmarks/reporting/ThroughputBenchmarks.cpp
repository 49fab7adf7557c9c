#include "common/Registration.h"
#include "common/Stopwatch.h"
#include "reporting/BareReceiver.h"
#include "reporting/Benchmarks.h"
#include "reporting/Connected.h"
#include "reporting/MeasuredOwner.h"

#include <sched.h>

#include <stdexcept>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
constexpr std::size_t kReports = 400000;    // for one measurement with a full table
constexpr std::size_t kFewReports = 100000; // with others
constexpr std::size_t kAhead = 4000;        // reports that the client is ahead of the table at most
constexpr int kPatienceMilliseconds = 30000;

/// Sends rounds of reports: all of some errors raised, then all of them cleared, and so on. Every report
/// counts: the table's counters tell at the end whether all of them have arrived.
class CRounds
{
public:
    CRounds(CMeasuredOwner& owner, const Ids& ids) : m_ids(ids), m_last(owner.Record(ids.back()))
    {
        WaitForConnection(m_client);
        m_first = Raises();
    }

    std::size_t Reports(std::size_t rounds) const { return rounds * m_ids.size(); }

    /// Sends all and waits until the table shows the last. An even number leaves everything cleared.
    /// @param confirmed  waits until the owner has said, too, that nothing of it can be lost any more
    void Run(std::size_t rounds, bool confirmed)
    {
        const std::size_t ahead = kAhead / m_ids.size();
        for (std::size_t round = 0; round < rounds; ++round)
        {
            while (Shown() + ahead < m_sent)
                GiveWay();
            Send(round % 2 == 0);
            ++m_sent;
        }
        WaitPatiently("the last report",
                      [this]
                      {
                          m_client.ProcessMessages(false);
                          return Shown() == m_sent;
                      });
        if (confirmed && !m_client.WaitUntilAcknowledged(kPatienceMilliseconds))
            throw std::runtime_error("reports were not acknowledged");
    }

private:
    std::uint16_t Raises() const { return m_last.counter1; }

    // Rounds that the table shows; a round's last report is that of the last error.
    std::size_t Shown()
    {
        const std::uint16_t raises = static_cast<std::uint16_t>(Raises() - m_first);
        m_raises += static_cast<std::uint16_t>(raises - static_cast<std::uint16_t>(m_raises)); // it wraps
        return 2 * m_raises - ((m_last.flags & kRaisedFlag) != 0 ? 1 : 0);
    }

    void Send(bool raise)
    {
        for (const Id& id : m_ids)
        {
            const EProblemType type = static_cast<EProblemType>(id.second);
            while ((raise ? m_client.RaiseError(id.first, type, false, false)
                          : m_client.ClearError(id.first, type, false)) < 0)
                GiveWay();
        }
    }

    void GiveWay()
    {
        m_client.ProcessMessages(false);
        sched_yield();
    }

    CFaultkeeperAPI m_client;
    const Ids& m_ids;
    const volatile SErrorEntry& m_last;
    std::uint16_t m_first = 0;
    std::size_t m_raises = 0;
    std::size_t m_sent = 0;
};

std::size_t ReportsFor(const benchmark::State& state)
{
    return SizeOf(state) == kStatusTableCapacity ? kReports : kFewReports;
}

void Report(benchmark::State& state, CMeasuredOwner& owner, const Ids& ids, bool confirmed)
{
    CRounds reporter(owner, ids);
    const std::size_t rounds = ReportsFor(state) / ids.size() / 2 * 2;
    for (auto _ : state)
    {
        const CStopwatch watch;
        reporter.Run(rounds, confirmed);
        state.SetIterationTime(watch.Seconds());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(reporter.Reports(rounds)));
}

/// Bare messages of the same size, one send for each, to a process that throws them away.
void Send(benchmark::State& state, const Ids& ids)
{
    const CBareReceiver receiver(-1);
    std::vector<std::string> messages;
    for (const bool raise : {true, false})
    {
        for (const Id& id : ids)
            messages.push_back(ReportBytes(raise, id.first, id.second, 123456));
    }
    const std::size_t count = ReportsFor(state);
    std::uint64_t expected = 0;
    for (auto _ : state)
    {
        const CStopwatch watch;
        for (std::size_t number = 0; number < count; ++number)
        {
            const std::string& message = messages[number % messages.size()];
            receiver.Sender().Send(message);
            expected += message.size();
        }
        WaitPatiently("the last message", [&] { return receiver.Bytes() == expected; });
        state.SetIterationTime(watch.Seconds());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}

void Add(const char* name, const CMeasuredOwner& owner, const Function& function)
{
    benchmark::RegisterBenchmark(name, function)
        ->Arg(static_cast<std::int64_t>(owner.Errors()))
        ->UseManualTime()
        ->Iterations(1);
}
} // namespace

void RegisterThroughput(CMeasuredOwner& owner)
{
    Add("throughput-singles/ours", owner,
        [&owner](benchmark::State& state) { Report(state, owner, owner.SingleIds(), false); });
    Add("throughput-families/ours", owner,
        [&owner](benchmark::State& state) { Report(state, owner, owner.LeafIds(), false); });
    Add("throughput/base", owner, [&owner](benchmark::State& state) { Send(state, owner.LeafIds()); });
}

void RegisterStoredThroughput(CMeasuredOwner& owner)
{
    Add("throughput-stored/ours", owner,
        [&owner](benchmark::State& state) { Report(state, owner, owner.SingleIds(), true); });
    Add("throughput-stored/base", owner, [&owner](benchmark::State& state) { Send(state, owner.LeafIds()); });
}

} // namespace Benchmarks
