// Reporting as the reporting process pays for it. The other end is a process that does next to nothing.
#include "common/Registration.h"
#include "common/Stopwatch.h"
#include "reporting/Connected.h"
#include "reporting/Loopback.h"
#include "reporting/Sink.h"
#include "subjects/MeasuredIds.h"
#include "support/FileLock.h"

#include <Faultkeeper/FaultkeeperAPI.h>

#include <map>
#include <stdexcept>
#include <utility>
#include <vector>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
constexpr std::uint16_t kOwnerPort = 5300;

using Ids = std::vector<std::pair<int, int>>;

/// In an order that jumps all over the map.
Ids ScatteredIds(std::size_t count)
{
    const Ids ids = MakeIdPairs(count);
    Ids scattered;
    for (std::size_t place = 0; place < count; ++place)
        scattered.push_back(ids[place * ScatterStep(count) % count]);
    return scattered;
}

int Report(CFaultkeeperAPI& client, const std::pair<int, int>& id, bool raise)
{
    const EProblemType type = static_cast<EProblemType>(id.second);
    return raise ? client.RaiseError(id.first, type, false, true) : client.ClearError(id.first, type, true);
}

void CheckSent(int result)
{
    if (result != 1)
        throw std::runtime_error("a report was not sent");
}

/// A client and the process that it reports to.
struct SSession
{
    explicit SSession(bool welcomes) : sink(kOwnerPort, welcomes) { WaitForConnection(client); }

    CSink sink;
    CFaultkeeperAPI client;
};

void Repeat(benchmark::State& state)
{
    SSession session(true);
    const Ids ids = ScatteredIds(SizeOf(state));
    for (const auto& id : ids)
    {
        while (Report(session.client, id, true) < 0) // the receiver is behind
            session.client.ProcessMessages(false);
    }
    for (auto _ : state)
    {
        for (const auto& id : ids)
            benchmark::DoNotOptimize(Report(session.client, id, true));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// What suppressing a repeat cannot do without.
void LookUpState(benchmark::State& state)
{
    const Ids ids = ScatteredIds(SizeOf(state));
    std::map<std::pair<int, int>, bool, SErrorIDComparer> sent;
    for (const auto& id : ids)
        sent[id] = true;
    for (auto _ : state)
    {
        for (const auto& id : ids)
        {
            const auto found = sent.find(id);
            benchmark::DoNotOptimize(found != sent.end() && found->second);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Each iteration reports all errors, raised and cleared in turn; the receiver has taken all before the next.
void Send(benchmark::State& state, bool welcomes)
{
    SSession session(welcomes);
    const Ids ids = ScatteredIds(SizeOf(state));
    std::uint64_t expected = session.sink.Notifications();
    bool raise = false;
    for (auto _ : state)
    {
        raise = !raise;
        const CStopwatch watch;
        for (const auto& id : ids)
            CheckSent(Report(session.client, id, raise));
        state.SetIterationTime(watch.Seconds());
        expected += ids.size();
        WaitPatiently("the reports",
                      [&]
                      {
                          session.client.ProcessMessages(false);
                          return session.sink.Notifications() >= expected;
                      });
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// The same bytes by send(2) alone, from a socket with the same options, to a receiver that does the same.
void SendBare(benchmark::State& state, bool welcomed)
{
    const CSink sink(0, welcomed);
    const CBareSocket sender(CBareSocket::Connect(sink.Port()));
    sender.NoDelay(!welcomed);
    sender.Send("d4:argsl4:basee4:name5:Helloe");
    std::uint64_t expected = 1;
    sink.WaitForNotifications(expected);
    std::vector<std::string> messages;
    for (const bool raise : {true, false})
    {
        for (const auto& id : ScatteredIds(SizeOf(state)))
            messages.push_back(ReportBytes(raise, id.first, id.second, 123456));
    }
    bool raise = false;
    for (auto _ : state)
    {
        raise = !raise;
        const std::size_t first = raise ? 0 : SizeOf(state);
        const CStopwatch watch;
        for (std::size_t number = 0; number < SizeOf(state); ++number)
            sender.Send(messages[first + number]);
        state.SetIterationTime(watch.Seconds());
        expected += SizeOf(state);
        sink.WaitForNotifications(expected);
        sender.Drain(); // what it answers
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// What one report costs without connection: it is kept.
void KeepReports(benchmark::State& state)
{
    const Ids ids = ScatteredIds(SizeOf(state));
    for (auto _ : state)
    {
        CFaultkeeperAPI client;
        client.VerifyConnection();
        const CStopwatch watch;
        for (const auto& id : ids)
            benchmark::DoNotOptimize(Report(client, id, true));
        state.SetIterationTime(watch.Seconds());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Handing over what was kept, once there is a connection. Half a second of waiting for each measurement.
void HandOverKept(benchmark::State& state)
{
    const Ids ids = ScatteredIds(SizeOf(state));
    for (auto _ : state)
    {
        CFaultkeeperAPI client;
        for (const auto& id : ids)
            Report(client, id, true);
        const CSink sink(kOwnerPort, true);
        WaitForConnection(client);
        const std::uint64_t expected = sink.Notifications() + ids.size();
        const CStopwatch watch;
        client.ProcessQueuedErrors();
        state.SetIterationTime(watch.Seconds());
        WaitPatiently("the reports",
                      [&]
                      {
                          client.ProcessMessages(false);
                          return sink.Notifications() >= expected;
                      });
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void RegisterHandOver()
{
    constexpr const char* kName = "client-hand-over/ours";
    benchmark::RegisterBenchmark(kName, HandOverKept)->Arg(400)->UseManualTime()->Iterations(3);
    for (const std::int64_t size : {10, 100, 2000, 20000})
        benchmark::RegisterBenchmark(kName, HandOverKept)
            ->Arg(size)
            ->UseManualTime()
            ->Iterations(1)
            ->Repetitions(5);
}
} // namespace

} // namespace Benchmarks

int main(int argumentCount, char** arguments)
{
    using namespace Benchmarks;
    const Support::CPortLock port;
    RegisterGrowing("client-repeat/ours", Repeat);
    RegisterGrowing("client-repeat/base", LookUpState);
    RegisterManual(
        "client-send/ours", [](benchmark::State& state) { Send(state, true); }, TableSizes());
    RegisterManual(
        "client-send/base", [](benchmark::State& state) { SendBare(state, true); }, TableSizes());
    RegisterManual(
        "client-send-unwelcomed/ours", [](benchmark::State& state) { Send(state, false); }, TableSizes());
    RegisterManual(
        "client-send-unwelcomed/base", [](benchmark::State& state) { SendBare(state, false); }, TableSizes());
    RegisterGrowingManual("client-keep/ours", KeepReports, {2000, 20000});
    RegisterHandOver();
    return RunAll(argumentCount, arguments);
}
