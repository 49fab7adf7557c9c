#include "unit/Common/view/ViewFixture.h"

#include <Faultkeeper/ErrorDbViewChanged.h>

#include <algorithm>
#include <memory>
#include <random>
#include <set>
#include <sstream>

using namespace Faultkeeper;

// One owner and one reader do random things to one table. A plain model follows both: the owner's model is a
// second copy of the table, the reader's model is the rule of what a synchronisation replays, spelt out.

namespace
{

constexpr int kErrors = 8;
constexpr int kSteps = 1500;

typedef std::pair<int, int> TErrorId;

SErrorEntry* Find(SStatusTable& table, const TErrorId& id)
{
    for (int i = 0; i < table.header.count; ++i)
        if (table.records[i].problemCode == id.first && table.records[i].problemType == id.second)
            return &table.records[i];
    return nullptr;
}

bool Raised(const SErrorEntry& record)
{
    return (record.flags & kRaisedFlag) != 0;
}

Core::Time ChangeTime(const SErrorEntry& record)
{
    return record.raisedTime < record.clearedTime ? record.clearedTime : record.raisedTime;
}

/// Counts the table's changes.
std::uint32_t& Changes(SStatusTable& table)
{
    return *reinterpret_cast<std::uint32_t*>(&table.header.lastRaiseTime);
}

/// What a reading view does, without any view.
class ReaderModel
{
public:
    /// @param active  the local database's active errors, changed as the replay would
    /// @param calls   the listener calls are written here
    int Synchronise(const SStatusTable& table, std::set<TErrorId>& active, std::ostream& calls)
    {
        m_mirror = table;
        const bool ready = table.header.ready == 1;
        const bool first = ready && !m_readySeen;
        m_readySeen = ready;
        if (!ready)
            return 0;
        if (first)
            Initialise();
        else if (SameTimes(m_mirror.header, m_snapshot))
            return 0;
        return Replay(first, active, calls);
    }

    const SStatusTable& Mirror() const { return m_mirror; }

private:
    static bool SameTimes(const SStatusHeader& left, const SStatusHeader& right)
    {
        return left.lastRaiseTime == right.lastRaiseTime && left.lastClearTime == right.lastClearTime;
    }

    void Initialise()
    {
        m_seen.resize(400);
        for (std::size_t i = 0; i < Count(); ++i)
            m_seen[i] = ChangeTime(m_mirror.records[i]);
        m_snapshot = m_mirror.header;
    }

    int Replay(bool all, std::set<TErrorId>& active, std::ostream& calls)
    {
        int result = 0;
        for (std::size_t i = 0; i < Count(); ++i)
        {
            const SErrorEntry& record = m_mirror.records[i];
            if (!all && ChangeTime(record) <= m_seen[i])
                continue;
            m_seen[i] = ChangeTime(record);
            const TErrorId id(record.problemCode, record.problemType);
            if (all && !Raised(record))
                continue;
            if (Raised(record))
                active.insert(id);
            else
                active.erase(id);
            calls << id.first << ":" << id.second << (Raised(record) ? "+ " : "- ");
            if (Raised(record))
                result = 1;
            else if (result == 0)
                result = 2;
        }
        return result;
    }

    std::size_t Count() const { return static_cast<std::size_t>(m_mirror.header.count); }

    SStatusTable m_mirror;
    SStatusHeader m_snapshot;
    std::vector<Core::Time> m_seen;
    bool m_readySeen = false;
};

class WritingListener : public CErrorDbViewChanged
{
public:
    void ErrorEntryChanged(const SErrorEntry& entry) override
    {
        m_text << entry.problemCode << ":" << entry.problemType << (Raised(entry) ? "+ " : "- ");
    }

    std::string Text()
    {
        std::string text = m_text.str();
        m_text.str("");
        return text;
    }

private:
    std::ostringstream m_text;
};

class ErrorDatabaseViewModelTest : public ReadyTableFixture, public testing::WithParamInterface<unsigned>
{
protected:
    ErrorDatabaseViewModelTest() : ReadyTableFixture(kErrors), m_random(GetParam())
    {
        std::memcpy(static_cast<void*>(m_model.get()), m_directory.Table(), kStatusTableBytes);
        m_reader.SetCallback(&m_listener);
    }

    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    /// Any of the errors, and now and then one that is not in the table.
    TErrorId AnyId() { return NumberedErrors::Id(Below(kErrors + 1)); }

    std::vector<TErrorId> AnyIds()
    {
        std::vector<TErrorId> ids(static_cast<std::size_t>(Below(5)));
        for (TErrorId& id : ids)
            id = AnyId();
        return ids;
    }

    void Step()
    {
        m_changed = false;
        switch (Below(9))
        {
        case 0:
            RaiseOne(AnyId());
            break;
        case 1:
            ClearSome({AnyId()}, true);
            break;
        case 2:
            RaiseSome(AnyIds());
            break;
        case 3:
            ClearSome(AnyIds(), false);
            break;
        case 4:
            RestoreSome();
            break;
        case 5:
            DeclareReady(Below(4) != 0);
            break;
        default:
            SynchroniseReader();
            break;
        }
        Changes(*m_model) += m_changed ? 1 : 0;
        ASSERT_EQ(std::memcmp(m_model.get(), m_directory.Table(), kStatusTableBytes), 0) << "the table";
    }

    void RaiseOne(const TErrorId& id)
    {
        const Core::Time before = Core::Time::Now();
        ASSERT_EQ(m_owner.RaiseError(id.first, id.second), m_ready);
        SErrorEntry* const record = Find(*m_model, id);
        if (!m_ready || record == nullptr || Raised(*record))
            return;
        const SErrorEntry& actual = *Find(Table(), id);
        ASSERT_LT(before, Header().lastRaiseTime);
        ASSERT_LT(Header().lastRaiseTime, actual.raisedTime);
        ASSERT_LT(actual.raisedTime, Core::Time::Now());
        MarkRaised(*record, actual.raisedTime);
        NoteRaise();
    }

    /// Takes the header's time over, but not its count of changes.
    void NoteRaise()
    {
        const std::uint32_t changes = Changes(*m_model);
        m_model->header.lastRaiseTime = Header().lastRaiseTime;
        Changes(*m_model) = changes;
        m_changed = true;
    }

    static void MarkRaised(SErrorEntry& record, const Core::Time& time)
    {
        ++record.counter1;
        ++record.counter2;
        record.flags |= kRaisedFlag;
        record.raisedTime = time;
    }

    void RaiseSome(const std::vector<TErrorId>& ids)
    {
        const Core::Time before = Core::Time::Now();
        ASSERT_EQ(m_owner.RaiseErrors(ids), m_ready);
        for (const TErrorId& id : ids)
        {
            SErrorEntry* const record = Find(*m_model, id);
            if (!m_ready || record == nullptr || Raised(*record))
                continue;
            ASSERT_LT(before, Header().lastRaiseTime);
            NoteRaise();
            MarkRaised(*record, Core::Time::FromNanoseconds(Header().lastRaiseTime.Nanoseconds()));
        }
    }

    void ClearSome(const std::vector<TErrorId>& ids, bool one)
    {
        const Core::Time before = Core::Time::Now();
        ASSERT_EQ(one ? m_owner.ClearError(ids[0].first, ids[0].second) : m_owner.ClearErrors(ids), m_ready);
        for (const TErrorId& id : ids)
        {
            SErrorEntry* const record = Find(*m_model, id);
            if (!m_ready || record == nullptr || !Raised(*record))
                continue;
            ASSERT_LT(before, Header().lastClearTime);
            m_model->header.lastClearTime = record->clearedTime = Header().lastClearTime;
            record->flags = 0;
            m_changed = true;
        }
    }

    void RestoreSome()
    {
        std::vector<SErrorEntry> entries;
        for (const TErrorId& id : AnyIds())
            entries.push_back(AnyEntry(id));
        const Core::Time before = Core::Time::Now();
        ASSERT_TRUE(m_owner.UpdateErrorDetails(entries));
        for (const SErrorEntry& entry : entries)
            if (SErrorEntry* const record = Find(*m_model, TErrorId(entry.problemCode, entry.problemType)))
            {
                const bool future = entry.raisedTime > before || entry.clearedTime > before;
                record->counter1 = entry.counter1;
                record->counter2 = entry.counter2;
                record->raisedTime = future ? Core::Time(0) : entry.raisedTime;
                record->clearedTime = future ? Core::Time(0) : entry.clearedTime;
                m_changed = true;
            }
    }

    SErrorEntry AnyEntry(const TErrorId& id)
    {
        SErrorEntry entry;
        entry.problemCode = id.first;
        entry.problemType = static_cast<std::int16_t>(id.second);
        entry.flags = static_cast<std::uint16_t>(Below(2));
        entry.counter1 = static_cast<std::uint16_t>(65530 + Below(6));
        entry.counter2 = static_cast<std::uint16_t>(Below(10));
        entry.raisedTime = AnyTime();
        entry.clearedTime = AnyTime();
        return entry;
    }

    /// Around now, an hour and more apart, so that it makes no odds how long the test runs.
    Core::Time AnyTime()
    {
        const std::int64_t hours = Below(8) - 6;
        const std::int64_t now = Core::Time::Now().Nanoseconds() / 1000000000;
        return Core::Time(hours == 0 ? now - 60 : now + hours * 3600);
    }

    void DeclareReady(bool ready)
    {
        ASSERT_TRUE(m_owner.FaultkeeperReady(ready));
        m_ready = ready;
        m_changed = true;
        m_model->header.ready = ready ? 1 : 0;
    }

    void SynchroniseReader()
    {
        std::ostringstream calls;
        const int expected = m_readerModel.Synchronise(*m_model, m_active, calls);
        ASSERT_EQ(m_reader.Synchronise(m_database), expected);
        ASSERT_EQ(m_listener.Text(), calls.str());
        std::set<TErrorId> active;
        for (const CError& error : m_database.GetErrorList())
            if (error.Active())
                active.insert({error.ProblemCode(), error.ProblemType()});
        ASSERT_EQ(active, m_active);
        if (expected != 0)
            m_listedTops = active.size();
        ASSERT_EQ(m_database.ActiveErrors(false).size(), m_listedTops);
    }

    /// The mirror is looked at between synchronisations, too.
    void CheckRetrievals()
    {
        const TErrorId id = AnyId();
        SStatusTable mirror = m_readerModel.Mirror();
        const SErrorEntry* const record = Find(mirror, id);
        SErrorEntry details;
        m_reader.RetrieveErrorDetails(id.first, id.second, details);
        const SErrorEntry expected = record == nullptr ? SErrorEntry() : *record;
        ASSERT_EQ(std::memcmp(&details, &expected, sizeof details), 0);
        ASSERT_EQ(m_reader.RetrieveErrorIndex(id.first, id.second),
                  record == nullptr ? -1 : static_cast<int>(record - mirror.records));
    }

    std::mt19937 m_random;
    std::unique_ptr<SStatusTable> m_model = std::make_unique<SStatusTable>();
    bool m_ready = true;
    bool m_changed = false; // in this step
    ReaderModel m_readerModel;
    std::set<TErrorId> m_active;
    std::size_t m_listedTops = 0;
    CErrorDatabaseView m_reader{false, eViewReader};
    WritingListener m_listener;
};

TEST_P(ErrorDatabaseViewModelTest, OwnerAndReaderDoWhatTheModelDoes)
{
    for (int step = 0; step < kSteps; ++step)
    {
        Step();
        CheckRetrievals();
        if (HasFatalFailure())
            FAIL() << "in step " << step;
    }
}

INSTANTIATE_TEST_SUITE_P(Seed, ErrorDatabaseViewModelTest, testing::Range(0u, 20u));

} // namespace
