#include "common/Registration.h"
#include "reporting/BareReceiver.h"
#include "reporting/Bell.h"
#include "reporting/Benchmarks.h"
#include "reporting/Connected.h"
#include "reporting/MeasuredOwner.h"
#include "subjects/Configurations.h"

#include <Faultkeeper/ErrorDatabaseView.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <vector>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
constexpr int kSamples = 201;
constexpr std::int64_t kSets = 5;                         // of samples, for one repetition
constexpr std::chrono::microseconds kBetweenReports(300); // everybody is asleep again
constexpr double kLongest = 10;                           // seconds for one report

/// One iteration is a set of reports, and its time the median of theirs.
template <typename Sample> void MeasureMedian(benchmark::State& state, const Sample& sample)
{
    std::vector<double> slow;
    for (auto _ : state)
    {
        std::vector<double> seconds;
        for (int number = 0; number < kSamples; ++number)
        {
            std::this_thread::sleep_for(kBetweenReports);
            seconds.push_back(sample());
        }
        std::sort(seconds.begin(), seconds.end());
        state.SetIterationTime(seconds[kSamples / 2]);
        slow.push_back(seconds[kSamples * 99 / 100]);
    }
    std::sort(slow.begin(), slow.end());
    state.counters["p99"] = slow[slow.size() / 2];
}

/// Spins, on another processor than the one that is waited for.
template <typename Condition> double SecondsUntil(double begin, const Condition& condition)
{
    for (;;)
    {
        const bool holds = condition();
        const double now = MonotonicSeconds();
        if (holds)
            return now - begin;
        if (now - begin > kLongest)
            throw std::runtime_error("a report has not arrived");
    }
}

/// Raises an error and clears it at the next call.
class CAlternatingReporter
{
public:
    explicit CAlternatingReporter(const Id& id) : m_id(id) { WaitForConnection(m_client); }

    ~CAlternatingReporter()
    {
        if (m_raised)
            Send(false); // the next one begins with an error that is not raised
    }

    bool Raised() const { return m_raised; }

    void Report()
    {
        m_raised = !m_raised;
        if (Send(m_raised) != 1)
            throw std::runtime_error("a report was not sent");
    }

private:
    int Send(bool raise)
    {
        const EProblemType type = static_cast<EProblemType>(m_id.second);
        return raise ? m_client.RaiseError(m_id.first, type, false, false)
                     : m_client.ClearError(m_id.first, type, false);
    }

    Id m_id;
    CFaultkeeperAPI m_client;
    bool m_raised = false;
};

void ReportToTable(benchmark::State& state, CMeasuredOwner& owner)
{
    const Id id = owner.SingleIds().front();
    const volatile SErrorEntry& record = owner.Record(id);
    CAlternatingReporter reporter(id);
    MeasureMedian(state,
                  [&]
                  {
                      const double begin = MonotonicSeconds();
                      reporter.Report();
                      return SecondsUntil(
                          begin, [&] { return ((record.flags & kRaisedFlag) != 0) == reporter.Raised(); });
                  });
}

/// What one report takes at least: its bytes through the loopback to a process that sleeps on them.
void BytesToReceiver(benchmark::State& state, const Id& id)
{
    const CBareReceiver receiver(-1);
    const std::string bytes = ReportBytes(true, id.first, id.second, 12345);
    MeasureMedian(state,
                  [&]
                  {
                      const std::uint64_t expected = receiver.Bytes() + bytes.size();
                      const double begin = MonotonicSeconds();
                      receiver.Sender().Send(bytes);
                      return SecondsUntil(begin, [&] { return receiver.Bytes() >= expected; });
                  });
}

struct SDisplayed
{
    double seenAt;
    bool ready;
};

[[noreturn]] void Display(const std::string& configuration, SDisplayed& displayed, int bell)
{
    CErrorDatabase database(configuration);
    CErrorDatabaseView view(false, eViewReader);
    view.Synchronise(database);
    displayed.ready = true;
    for (;;)
    {
        view.WaitForChange(1000);
        if (view.Synchronise(database) == 0)
            continue;
        displayed.seenAt = MonotonicSeconds();
        if (write(bell, "", 1) != 1)
            std::_Exit(1);
    }
}

void ReportToDisplay(benchmark::State& state, CMeasuredOwner& owner)
{
    const CBell bell;
    const std::string& configuration = ConfigurationOf(esPlausible, owner.Errors());
    SDisplayed& displayed = Share<SDisplayed>();
    const CChildProcess display([&] { Display(configuration, displayed, bell.Rope()); });
    const volatile bool& ready = displayed.ready;
    WaitPatiently("the display", [&] { return ready; });
    CAlternatingReporter reporter(owner.SingleIds().front());
    MeasureMedian(state,
                  [&]
                  {
                      const double begin = MonotonicSeconds();
                      reporter.Report();
                      bell.Wait(); // asleep: owner and display have both processors
                      return displayed.seenAt - begin;
                  });
}

/// The same bytes to one process, measured in the same way: by the receiver's own clock, with the sender
/// asleep.
void BytesToClock(benchmark::State& state, const Id& id)
{
    const CBell bell;
    const CBareReceiver receiver(bell.Rope());
    const std::string bytes = ReportBytes(true, id.first, id.second, 12345);
    MeasureMedian(state,
                  [&]
                  {
                      const double begin = MonotonicSeconds();
                      receiver.Sender().Send(bytes);
                      bell.Wait();
                      return receiver.ReceivedAt() - begin;
                  });
}

void Add(const char* name, const CMeasuredOwner& owner, const Function& function)
{
    benchmark::RegisterBenchmark(name, function)
        ->Arg(static_cast<std::int64_t>(owner.Errors()))
        ->UseManualTime()
        ->Iterations(kSets);
}
} // namespace

void RegisterLatencies(CMeasuredOwner& owner)
{
    const Id id = owner.SingleIds().front();
    Add("report-to-table/ours", owner, [&owner](benchmark::State& state) { ReportToTable(state, owner); });
    Add("report-to-table/base", owner, [id](benchmark::State& state) { BytesToReceiver(state, id); });
    Add("report-to-display/ours", owner,
        [&owner](benchmark::State& state) { ReportToDisplay(state, owner); });
    Add("report-to-display/base", owner, [id](benchmark::State& state) { BytesToClock(state, id); });
}

} // namespace Benchmarks
