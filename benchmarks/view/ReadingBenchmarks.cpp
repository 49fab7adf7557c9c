#include "common/Registration.h"
#include "common/Stopwatch.h"
#include "view/Benchmarks.h"
#include "view/Views.h"

#include <ctime>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
/// What following the table cannot do without.
void LockCopyUnlock(benchmark::State& state)
{
    CViews views(SizeOf(state));
    SStatusTable copy;
    for (auto _ : state)
    {
        views.Bare().Lock();
        views.Bare().CopyTo(copy);
        views.Bare().Unlock();
        benchmark::DoNotOptimize(std::time(nullptr));
        benchmark::DoNotOptimize(copy);
    }
}

/// Before the table's first change a look at its header is enough.
void SynchroniseBeforeChanges(benchmark::State& state)
{
    CViews views(SizeOf(state));
    for (auto _ : state)
        benchmark::DoNotOptimize(views.Reader().Synchronise(views.Database()));
}

/// Later every call compares more than that.
void SynchroniseAfterChanges(benchmark::State& state)
{
    CViews views(SizeOf(state));
    for (const auto& id : views.AllIds())
    {
        views.Owner().RaiseError(id.first, id.second);
        if (id.first % 2 == 0)
            views.Owner().ClearError(id.first, id.second);
    }
    views.Reader().Synchronise(views.Database());
    for (auto _ : state)
        benchmark::DoNotOptimize(views.Reader().Synchronise(views.Database()));
}

/// One error has changed since the last call: it is replayed, and all lists of tops are made.
void SynchroniseOneChange(benchmark::State& state)
{
    CViews views(SizeOf(state));
    const Ids& ids = views.AllIds();
    for (std::size_t place = 0; place < ids.size(); place += 3)
        views.Owner().RaiseError(ids[place].first, ids[place].second);
    views.Reader().Synchronise(views.Database());
    std::size_t turn = 0;
    for (auto _ : state)
    {
        // Each is turned over, and at the next turn back again.
        const std::size_t place = turn / 2 % ids.size();
        const bool over = turn++ % 2 == 0;
        if (over != (place % 3 == 0))
            views.Owner().RaiseError(ids[place].first, ids[place].second);
        else
            views.Owner().ClearError(ids[place].first, ids[place].second);
        const CStopwatch watch;
        const int result = views.Reader().Synchronise(views.Database());
        state.SetIterationTime(watch.Seconds());
        if (result == 0)
            state.counters["without_change"] += 1;
    }
}

void FindIndex(benchmark::State& state)
{
    CViews views(SizeOf(state));
    for (auto _ : state)
    {
        for (const auto& id : views.AllIds())
            benchmark::DoNotOptimize(views.Reader().RetrieveErrorIndex(id.first, id.second));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

int FirstMatch(const SStatusTable& table, int code, int type)
{
    for (int place = 0; place < table.header.count; ++place)
    {
        const SErrorEntry& record = table.records[place];
        if (record.problemCode == code && record.problemType == static_cast<std::int16_t>(type))
            return place;
    }
    return -1;
}

void FindIndexLiterally(benchmark::State& state)
{
    CViews views(SizeOf(state));
    SStatusTable copy;
    views.Bare().CopyTo(copy);
    for (auto _ : state)
    {
        for (const auto& id : views.AllIds())
            benchmark::DoNotOptimize(FirstMatch(copy, id.first, id.second));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void RetrieveAll(benchmark::State& state)
{
    CViews views(SizeOf(state));
    std::vector<SErrorEntry> entries;
    for (auto _ : state)
    {
        entries.clear();
        views.Reader().RetrieveAllErrors(entries);
        benchmark::DoNotOptimize(entries.data());
    }
}

void CopyAll(benchmark::State& state)
{
    CViews views(SizeOf(state));
    SStatusTable copy;
    views.Bare().CopyTo(copy);
    std::vector<SErrorEntry> entries;
    for (auto _ : state)
    {
        entries.clear();
        entries.insert(entries.end(), copy.records, copy.records + copy.header.count);
        benchmark::DoNotOptimize(entries.data());
    }
}
} // namespace

void RegisterReading()
{
    Register("lock-copy-unlock-time/base", LockCopyUnlock, TableSizes());
    Register("synchronise-before-changes/ours", SynchroniseBeforeChanges, TableSizes());
    Register("synchronise-after-changes/ours", SynchroniseAfterChanges, TableSizes());
    RegisterManual("synchronise-one-change/ours", SynchroniseOneChange, TableSizes());
    Register("retrieve-index/ours", FindIndex, TableSizes());
    Register("retrieve-index/base", FindIndexLiterally, TableSizes());
    Register("retrieve-all/ours", RetrieveAll, TableSizes());
    Register("retrieve-all/base", CopyAll, TableSizes());
}

} // namespace Benchmarks
