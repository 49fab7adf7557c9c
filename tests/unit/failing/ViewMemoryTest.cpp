#include "support/failing/FailingMemory.h"
#include "unit/Common/view/ReaderFixture.h"

#include <functional>
#include <new>
#include <optional>

namespace
{

using namespace Faultkeeper;
using FailingMemory::CAttempt;
using FailingMemory::FailEach;

/// A display process of its own for each attempt, and the table of an owner in which two of four errors are
/// raised.
class ViewMemoryTest : public ReadyTableFixture
{
protected:
    ViewMemoryTest()
    {
        Raise(0);
        Raise(2);
    }

    /// Lets a display run out of memory while it synchronises, then synchronises it once more.
    /// @param prepare  what the display and the owner do before
    /// @return how many allocations have failed
    int FailSynchronise(const std::function<void(CErrorDatabaseView&, CErrorDatabase&)>& prepare)
    {
        return FailEach(
            [&](CAttempt& attempt)
            {
                CErrorDatabase database(m_directory.Prefix());
                CErrorDatabaseView display(false, eViewReader);
                prepare(display, database);
                const bool ended = attempt.Run([&] { display.Synchronise(database); });
                EXPECT_EQ(m_directory.SemaphoreValue(), 1) << "the lock stays free for others";
                if (!ended)
                    display.Synchronise(database);
                ExpectSameAsTable(database);
            });
    }

    /// Expects that active is what the table says is raised, and that the lists of tops know.
    void ExpectSameAsTable(const CErrorDatabase& database)
    {
        std::string raised;
        for (int number = 0; number < 4; ++number)
            raised += (Record(number).flags & kRaisedFlag) != 0 ? std::to_string(number) : "";
        EXPECT_EQ(WritingListener::Active(database), raised);
        EXPECT_EQ(database.ActiveErrors(false).size(), raised.size());
    }
};

TEST_F(ViewMemoryTest, AFirstSynchronisationThatThrewIsMadeUpForByTheNext)
{
    EXPECT_GT(FailSynchronise([](CErrorDatabaseView&, CErrorDatabase&) {}), 0);
}

TEST_F(ViewMemoryTest, AReplayOfChangesThatThrewIsMadeUpForByTheNext)
{
    EXPECT_GT(FailSynchronise(
                  [this](CErrorDatabaseView& display, CErrorDatabase& database)
                  {
                      display.Synchronise(database);
                      Raise(1);
                      Clear(0);
                      Clear(1);
                      Raise(0);
                      Clear(2);
                      Raise(2);
                      Clear(2);
                      Raise(1);
                  }),
              0);
}

TEST_F(ViewMemoryTest, ASynchronisationAfterTheTableWasNotReadyIsMadeUpForToo)
{
    EXPECT_GT(FailSynchronise(
                  [this](CErrorDatabaseView& display, CErrorDatabase& database)
                  {
                      Clear(3);
                      display.Synchronise(database);
                      m_owner.FaultkeeperReady(false);
                      display.Synchronise(database);
                      m_owner.FaultkeeperReady(true);
                      Raise(3);
                  }),
              0);
}

/// Has memory of its own for what it is told.
class CHoardingListener : public CErrorDbViewChanged
{
public:
    void ErrorEntryChanged(const SErrorEntry& entry) override { m_entries.push_back(entry); }

private:
    std::vector<SErrorEntry> m_entries;
};

TEST_F(ViewMemoryTest, AListenerThatThrewHoldsNothingUp)
{
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            CErrorDatabase database(m_directory.Prefix());
            CErrorDatabaseView display(false, eViewReader);
            CHoardingListener listener;
            display.SetCallback(&listener);
            const bool ended = attempt.Run([&] { display.Synchronise(database); });
            EXPECT_EQ(m_directory.SemaphoreValue(), 1);
            if (!ended)
                display.Synchronise(database);
            ExpectSameAsTable(database);
        });
    EXPECT_GT(failed, 2);
}

TEST_F(ViewMemoryTest, RetrievingAllErrorsThrowsWithTheLockFreeAndNothingAppended)
{
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            std::vector<SErrorEntry> entries(1);
            const bool ended = attempt.Run([&] { m_owner.RetrieveAllErrors(entries); });
            EXPECT_EQ(m_directory.SemaphoreValue(), 1);
            EXPECT_EQ(entries.size(), ended ? 5u : 1u);
        });
    EXPECT_GT(failed, 0);
}

TEST_F(ViewMemoryTest, AReaderRetrievesItsCopyOrThrowsWithNothingAppended)
{
    CErrorDatabaseView display(false, eViewReader);
    display.Synchronise(m_database);
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            std::vector<SErrorEntry> entries(1);
            const bool ended = attempt.Run([&] { display.RetrieveAllErrors(entries); });
            EXPECT_EQ(entries.size(), ended ? 5u : 1u);
        });
    EXPECT_GT(failed, 0);
}

TEST_F(ViewMemoryTest, AnOwnerThatThrewHoldsNoLockAndDoesTheSameLater)
{
    const std::vector<std::pair<int, int>> ids = {NumberedErrors::Id(1), NumberedErrors::Id(3)};
    const std::vector<SErrorEntry> details(2, Record(1));
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            std::optional<CErrorDatabaseView> owner;
            const auto own = [&]
            {
                owner.emplace(true, eViewOwner);
                owner->LoadErrors(m_database);
                owner->UpdateErrorDetails(details);
                owner->FaultkeeperReady(true);
                owner->RaiseErrors(ids);
                owner->ClearErrors(ids);
                owner->RaiseError(NumberedErrors::Code(2), 2);
            };
            m_directory.RemoveTable(); // each creator makes the lock available once
            const bool ended = attempt.Run(own);
            if (owner.has_value())
            {
                EXPECT_EQ(m_directory.SemaphoreValue(), 1);
            }
            m_directory.RemoveTable();
            own();
            EXPECT_EQ(ended, !attempt.Met());
            EXPECT_EQ(Record(1).counter1, 1);
            EXPECT_EQ(Record(2).flags, kRaisedFlag);
        });
    EXPECT_GT(failed, 0);
}

} // namespace
