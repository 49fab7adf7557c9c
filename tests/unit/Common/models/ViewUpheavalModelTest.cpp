#include "support/CapturedOutput.h"
#include "unit/Common/models/TableModel.h"
#include "unit/Common/view/ViewFixture.h"

#include <sys/sem.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>

// Restless owners: new ones zero the table under the old ones and under the displays, load it again or not,
// declare it ready or not, and somebody sits on the lock every now and then. A model follows the table byte
// by byte and each display call by call.

namespace
{

using namespace Faultkeeper;
using Models::TErrorId;

constexpr int kErrors = 6;
constexpr int kSteps = 1000;
constexpr std::int64_t kHour = 3600;
constexpr std::size_t kTypeWord = 8; // of the last raise time: no part of it, and not the model's business
constexpr const char* kBusy = "unable to obtain lock\n";

struct SOwner
{
    SOwner(bool create, EViewType kind) : view(std::make_unique<CErrorDatabaseView>(create, kind)), type(kind)
    {
    }

    std::unique_ptr<CErrorDatabaseView> view;
    EViewType type;
    bool ready = false;

    bool Owns() const { return type == eViewOwner; }
    bool Changes() const { return Owns() && ready; }
};

struct SDisplay
{
    explicit SDisplay(const std::string& prefix) : database(prefix) { view.SetCallback(&listener); }

    CErrorDatabase database;
    CErrorDatabaseView view{false, eViewReader};
    Models::CWritingListener listener;
    Models::CReaderModel model;
};

/// Some of the same errors in another order, one of them twice.
struct SShuffled
{
    SShuffled() : database(Written(directory.Prefix())) {}

    static std::string Written(const std::string& prefix)
    {
        Support::CConfigurationBuilder builder;
        for (const int number : {4, 2, 0, 3, 2})
            builder.Leaf(NumberedErrors::Name(number));
        builder.WriteTo(prefix);
        return prefix;
    }

    Support::CFreshDirectory directory;
    CErrorDatabase database;
};

class ViewUpheavalModelTest : public ViewFixture, public testing::WithParamInterface<unsigned>
{
protected:
    ViewUpheavalModelTest() : ViewFixture(kErrors), m_random(GetParam())
    {
        m_owners.emplace_back(true, eViewOwner);
        for (int i = 0; i < 2; ++i)
            m_displays.push_back(std::make_unique<SDisplay>(m_directory.Prefix()));
    }

    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    /// Any of the errors, and now and then one that is not in the table.
    TErrorId AnyId() { return NumberedErrors::Id(Below(kErrors + 1)); }

    std::vector<TErrorId> AnyIds()
    {
        std::vector<TErrorId> ids(static_cast<std::size_t>(Below(4)));
        std::generate(ids.begin(), ids.end(), [this] { return AnyId(); });
        return ids;
    }

    SOwner& AnyOwner()
    {
        return m_owners[static_cast<std::size_t>(Below(static_cast<int>(m_owners.size())))];
    }

    // ---- The lock

    /// Does something, now and then while the lock is taken.
    /// @return was the lock free?
    bool Locked(const std::function<void()>& action)
    {
        m_busy = Below(8) == 0;
        if (!m_busy)
        {
            action();
            return true;
        }
        const int value = m_directory.SemaphoreValue();
        SetSemaphore(0);
        m_warning = Support::WarnedBy(action);
        EXPECT_EQ(m_directory.SemaphoreValue(), 0);
        SetSemaphore(value);
        return false;
    }

    void SetSemaphore(int value) const
    {
        union
        {
            int val;
            semid_ds* buf;
        } argument = {value}; // passed as the union that the call takes: some machines pass those by address
        EXPECT_EQ(semctl(m_directory.Semaphore(), 0, SETVAL, argument), 0);
    }

    /// Does something that may be refused before the lock is asked for.
    /// @return did it take place?
    bool Done(bool allowed, const std::function<bool()>& action)
    {
        bool result = false;
        const bool free = Locked([&] { result = action(); });
        EXPECT_EQ(result, allowed && free);
        if (!free)
        {
            EXPECT_EQ(m_warning, allowed ? kBusy : "");
        }
        return result;
    }

    // ---- Owners

    void Step()
    {
        switch (Below(16))
        {
        case 0:
            ChangeOne(Below(3) != 0);
            break;
        case 1:
        case 2:
            ChangeSome(Below(2) == 0);
            break;
        case 3:
            ApplyBoth();
            break;
        case 4:
            if (Below(3) == 0)
                Restore();
            else
                Remember();
            break;
        case 5:
            DeclareReady(Below(3) != 0);
            break;
        case 6:
            Load();
            break;
        case 7:
            if (Below(6) == 0)
                NewOwner();
            break;
        default:
            Synchronise(*m_displays[static_cast<std::size_t>(Below(2))]);
            break;
        }
        std::memcpy(reinterpret_cast<char*>(m_model.get()) + kTypeWord, m_directory.Table() + kTypeWord, 4);
        const auto* const expected = reinterpret_cast<const std::uint8_t*>(m_model.get());
        const auto* const differs =
            std::mismatch(expected, expected + kStatusTableBytes, m_directory.Table()).first;
        ASSERT_EQ(differs - expected, static_cast<std::ptrdiff_t>(kStatusTableBytes))
            << "first byte that differs";
    }

    void ChangeOne(bool raise)
    {
        SOwner& owner = AnyOwner();
        const TErrorId id = AnyId();
        const Core::Time before = Core::Time::Now();
        if (Done(owner.Changes(),
                 [&]
                 {
                     return raise ? owner.view->RaiseError(id.first, id.second)
                                  : owner.view->ClearError(id.first, id.second);
                 }))
            Follow({id}, raise, before);
    }

    void ChangeSome(bool raise)
    {
        SOwner& owner = AnyOwner();
        const std::vector<TErrorId> ids = AnyIds();
        const Core::Time before = Core::Time::Now();
        if (Done(owner.Changes(),
                 [&] { return raise ? owner.view->RaiseErrors(ids) : owner.view->ClearErrors(ids); }))
            Follow(ids, raise, before);
    }

    /// What the model cannot know are the times: they are looked at and taken over.
    void Follow(const std::vector<TErrorId>& ids, bool raise, const Core::Time& before)
    {
        for (const TErrorId& id : ids)
            FollowOne(id, raise, before);
    }

    void FollowOne(const TErrorId& id, bool raise, const Core::Time& before)
    {
        SErrorEntry* const record = Models::Find(*m_model, id);
        if (record == nullptr || Models::Raised(*record) == raise)
            return;
        const SErrorEntry& actual = *Models::Find(Table(), id);
        Core::Time& time = raise ? record->raisedTime : record->clearedTime;
        time = raise ? actual.raisedTime : actual.clearedTime;
        Core::Time& header = raise ? m_model->header.lastRaiseTime : m_model->header.lastClearTime;
        header = raise ? Header().lastRaiseTime : Header().lastClearTime;
        ASSERT_TRUE(before < time && before < header && header < Core::Time::Now());
        record->flags = raise ? kRaisedFlag : 0;
        record->counter1 = static_cast<std::uint16_t>(record->counter1 + (raise ? 1 : 0));
        record->counter2 = static_cast<std::uint16_t>(record->counter2 + (raise ? 1 : 0));
    }

    void ApplyBoth()
    {
        SOwner& owner = AnyOwner();
        std::vector<SErrorChange> changes;
        for (const TErrorId& id : AnyIds())
            changes.push_back({id.first, id.second, Below(2) == 0});
        const Core::Time before = Core::Time::Now();
        if (!Done(owner.Changes(), [&] { return owner.view->ApplyChanges(changes); }))
            return;
        for (const SErrorChange& change : changes)
            FollowOne({change.problemCode, change.problemType}, change.raised, before);
    }

    void Remember()
    {
        SOwner& owner = AnyOwner();
        std::vector<SErrorEntry> entries;
        for (const TErrorId& id : AnyIds())
            entries.push_back(AnyEntry(id));
        if (!Done(owner.Owns(), [&] { return owner.view->UpdateErrorDetails(entries); }))
            return;
        for (const SErrorEntry& entry : entries)
        {
            SErrorEntry* const record = Models::Find(*m_model, {entry.problemCode, entry.problemType});
            if (record == nullptr)
                continue;
            const Core::Time now = Core::Time::Now(); // entries lie an hour and more from it
            const bool future = entry.raisedTime > now || entry.clearedTime > now;
            record->counter1 = entry.counter1;
            record->counter2 = entry.counter2;
            record->raisedTime = future ? Core::Time(0) : entry.raisedTime;
            record->clearedTime = future ? Core::Time(0) : entry.clearedTime;
        }
    }

    void Restore()
    {
        SOwner& owner = AnyOwner();
        std::vector<SErrorEntry> entries;
        for (const TErrorId& id : AnyIds())
            entries.push_back(AnyEntry(id));
        if (!Done(owner.Owns() && !owner.ready, [&] { return owner.view->RestoreErrors(entries); }))
            return;
        for (const SErrorEntry& entry : entries)
        {
            SErrorEntry* const record = Models::Find(*m_model, {entry.problemCode, entry.problemType});
            if (record == nullptr)
                continue;
            *record = entry;
            m_model->header.lastRaiseTime = std::max(m_model->header.lastRaiseTime, entry.raisedTime);
            m_model->header.lastClearTime = std::max(m_model->header.lastClearTime, entry.clearedTime);
        }
    }

    SErrorEntry AnyEntry(const TErrorId& id)
    {
        const std::int64_t now = Core::Time::Now().Nanoseconds() / 1000000000;
        SErrorEntry entry;
        entry.problemCode = id.first;
        entry.problemType = static_cast<std::int16_t>(id.second);
        entry.flags = static_cast<std::uint16_t>(Below(2)); // put back by Restore only
        entry.counter1 = static_cast<std::uint16_t>(65534 + Below(2));
        entry.counter2 = static_cast<std::uint16_t>(Below(3));
        entry.raisedTime = Core::Time(now + kHour * (2 * Below(4) - 5));
        entry.clearedTime = Core::Time(now + kHour * (2 * Below(4) - 5));
        return entry;
    }

    void DeclareReady(bool ready)
    {
        SOwner& owner = AnyOwner();
        if (!Done(owner.Owns(), [&] { return owner.view->FaultkeeperReady(ready); }))
            return;
        owner.ready = ready;
        m_model->header.ready = ready ? 1 : 0;
    }

    void Load()
    {
        SOwner& owner = AnyOwner();
        const CErrorDatabase& database = Below(3) == 0 ? m_shuffled.database : m_database;
        if (!Done(owner.Owns(), [&] { return owner.view->LoadErrors(database); }))
            return;
        m_model->header.count = static_cast<std::int32_t>(database.GetErrorList().size());
        SErrorEntry* record = m_model->records;
        for (const CError& error : database.GetErrorList())
        {
            record->problemCode = error.ProblemCode();
            record->problemType = static_cast<std::int16_t>(error.ProblemType());
            ++record;
        }
    }

    /// A creating view of whichever kind zeroes the table; the owners before it know nothing of that.
    void NewOwner()
    {
        const bool create = Below(3) != 0;
        if (m_owners.size() == 3)
            m_owners.erase(m_owners.begin() + Below(3));
        m_owners.emplace_back(create, Below(4) == 0 ? eViewReader : eViewOwner);
        if (create)
            *m_model = SStatusTable();
    }

    // ---- Displays

    void Synchronise(SDisplay& display)
    {
        int result = -1;
        if (!Locked([&] { result = display.view.Synchronise(display.database); }))
        {
            ASSERT_EQ(m_warning, kBusy);
            ASSERT_EQ(result, 0); // and nothing below has changed
        }
        else
        {
            ASSERT_EQ(result, display.model.Synchronise(*m_model));
        }
        ASSERT_EQ(display.listener.Text(), display.model.Calls());
        std::set<TErrorId> active;
        for (const CError& error : display.database.GetErrorList())
            if (error.Active())
                active.insert({error.ProblemCode(), error.ProblemType()});
        ASSERT_EQ(active, display.model.Active());
        ASSERT_EQ(display.database.ActiveErrors(false).size(), display.model.Tops());
        CompareCopy(display);
    }

    static void CompareCopy(SDisplay& display)
    {
        std::vector<SErrorEntry> copy;
        display.view.RetrieveAllErrors(copy);
        const SStatusTable& mirror = display.model.Mirror();
        ASSERT_EQ(copy.size(), static_cast<std::size_t>(mirror.header.count));
        ASSERT_TRUE(copy.empty() ||
                    std::memcmp(copy.data(), mirror.records, copy.size() * sizeof(SErrorEntry)) == 0);
    }

    std::mt19937 m_random;
    SShuffled m_shuffled;
    std::unique_ptr<SStatusTable> m_model = std::make_unique<SStatusTable>();
    std::vector<SOwner> m_owners;
    std::vector<std::unique_ptr<SDisplay>> m_displays;
    bool m_busy = false;
    std::string m_warning;
};

TEST_P(ViewUpheavalModelTest, TableAndDisplaysFollowTheModelThroughEveryUpheaval)
{
    for (int step = 0; step < kSteps; ++step)
    {
        Step();
        if (HasFailure())
            FAIL() << "in step " << step;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ViewUpheavalModelTest, testing::Range(0u, 12u));

} // namespace
