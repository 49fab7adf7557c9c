#include "common/Registration.h"
#include "common/Stopwatch.h"
#include "view/Benchmarks.h"
#include "view/Views.h"

#include <ctime>
#include <stdexcept>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
void CheckRaised(CViews& views, bool raised)
{
    SStatusTable table;
    views.Bare().CopyTo(table);
    for (int place = 0; place < table.header.count; ++place)
    {
        if (((table.records[place].flags & kRaisedFlag) != 0) != raised)
            throw std::runtime_error("the table is not as it should be");
    }
}

/// Measures `change`, which raises all errors of the table, and clears them in between.
template <typename Change> void MeasureRaising(benchmark::State& state, const Change& change)
{
    CViews views(SizeOf(state));
    for (auto _ : state)
    {
        const CStopwatch watch;
        change(views);
        state.SetIterationTime(watch.Seconds());
        CheckRaised(views, true);
        views.Owner().ClearErrors(views.AllIds());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void RaiseEach(benchmark::State& state)
{
    MeasureRaising(state,
                   [](CViews& views)
                   {
                       for (const auto& id : views.AllIds())
                           views.Owner().RaiseError(id.first, id.second);
                   });
}

void RaiseTogether(benchmark::State& state)
{
    MeasureRaising(state, [](CViews& views) { views.Owner().RaiseErrors(views.AllIds()); });
}

/// What raising one error cannot do without.
void LockClocksUnlockWake(benchmark::State& state)
{
    CViews views(SizeOf(state));
    for (auto _ : state)
    {
        const CStopwatch watch;
        for (std::int64_t error = 0; error < state.range(0); ++error)
        {
            timespec now;
            views.Bare().Lock();
            clock_gettime(CLOCK_REALTIME, &now);
            benchmark::DoNotOptimize(now);
            clock_gettime(CLOCK_REALTIME, &now);
            benchmark::DoNotOptimize(now);
            views.Bare().Unlock();
            views.Bare().Wake();
        }
        state.SetIterationTime(watch.Seconds());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Measures clearing, with everything raised in between.
template <typename Change> void MeasureClearing(benchmark::State& state, const Change& change)
{
    CViews views(SizeOf(state));
    for (auto _ : state)
    {
        views.Owner().RaiseErrors(views.AllIds());
        const CStopwatch watch;
        change(views);
        state.SetIterationTime(watch.Seconds());
        CheckRaised(views, false);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void ClearEach(benchmark::State& state)
{
    MeasureClearing(state,
                    [](CViews& views)
                    {
                        for (const auto& id : views.AllIds())
                            views.Owner().ClearError(id.first, id.second);
                    });
}

void ClearTogether(benchmark::State& state)
{
    MeasureClearing(state, [](CViews& views) { views.Owner().ClearErrors(views.AllIds()); });
}

/// As many changes as an owner gathers: each error raised, as RaiseError would do it.
void ApplyChanges(benchmark::State& state)
{
    std::vector<SErrorChange> changes;
    MeasureRaising(state,
                   [&changes](CViews& views)
                   {
                       if (changes.empty())
                       {
                           for (const auto& id : views.AllIds())
                               changes.push_back({id.first, id.second, true});
                       }
                       views.Owner().ApplyChanges(changes);
                   });
}

void UpdateDetails(benchmark::State& state)
{
    CViews views(SizeOf(state));
    std::vector<SErrorEntry> remembered;
    views.Reader().RetrieveAllErrors(remembered);
    for (auto _ : state)
        benchmark::DoNotOptimize(views.Owner().UpdateErrorDetails(remembered));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// What an owner remembers from before, into a table that is not ready yet.
void Restore(benchmark::State& state)
{
    CViews views(SizeOf(state));
    std::vector<SErrorEntry> remembered;
    views.Reader().RetrieveAllErrors(remembered);
    views.Owner().FaultkeeperReady(false);
    for (auto _ : state)
    {
        if (!views.Owner().RestoreErrors(remembered))
            state.SkipWithError("refused");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
} // namespace

void RegisterOwning()
{
    RegisterManual("lock-clocks-unlock-wake/base", LockClocksUnlockWake, TableSizes());
    RegisterManual("view-raise/ours", RaiseEach, TableSizes());
    RegisterManual("view-raise-together/ours", RaiseTogether, TableSizes());
    RegisterManual("view-clear/ours", ClearEach, TableSizes());
    RegisterManual("view-clear-together/ours", ClearTogether, TableSizes());
    RegisterManual("view-apply-changes/ours", ApplyChanges, TableSizes());
    Register("view-restore/ours", Restore, TableSizes());
    Register("view-update-details/ours", UpdateDetails, TableSizes());
}

} // namespace Benchmarks
