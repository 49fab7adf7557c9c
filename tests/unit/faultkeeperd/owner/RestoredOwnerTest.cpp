#include "faultkeeperd/owner/Owner.h"

#include "../OwnerFixture.h"
#include "support/CapturedOutput.h"

#include <Faultkeeper/ErrorDbViewChanged.h>

#include <gtest/gtest.h>

using namespace Support;
using namespace Faultkeeper;
using namespace Faultkeeper::Apps;

namespace
{

const COwner::Clock::time_point kStart{std::chrono::milliseconds(1000000)};

// An owner that is killed and started again, without the processes.
class RestoredOwner : public OwnerTest
{
protected:
    void SetUp() override
    {
        OwnerTest::SetUp();
        UseStore();
        Start("boot");
    }

    /// Ends the owner without a word, and starts the next one.
    void Start(const std::string& boot, const std::string& configuration = "c")
    {
        m_owner.reset();
        LoadAgain();
        if (m_stored)
            UseStore();
        else
            UseStore(SStoreSettings());
        const SFormerState former = FindFormerState(Keeper(), Database(), boot, configuration);
        m_owner = std::make_unique<COwner>(Database(), Keeper(), former);
        m_owner->Publish(kStart);
    }

    /// Applies, publishes and stores a report.
    void Report(const Id& id, bool raised)
    {
        EXPECT_TRUE(m_owner->Apply(id.first, id.second, raised, "a"));
        m_owner->Publish(kStart);
        Keeper().CommitAtOnce(CStateKeeper::Clock::now());
    }

    bool Active(const Id& id) { return Database().RetrieveError(id.first, id.second)->Active(); }

    std::unique_ptr<COwner> m_owner;
    bool m_stored = true;
};

// The same, with other links each time.
class LinkedOwner : public RestoredOwner
{
protected:
    /// Starts an owner with these automatic sets: "9" and "2" are the sensors, and with this text.
    void Configure(const std::vector<std::vector<std::string>>& receiver,
                   const std::vector<std::vector<std::string>>& position, const std::string& text,
                   int needed = 1)
    {
        CConfigurationBuilder builder;
        builder.Leaf(Name("9")).Leaf(Name("2"));
        builder.Add(Parent("receiver", receiver, text, needed));
        builder.Add(Parent("position", position, text, needed));
        builder.WriteTo(m_directory.Prefix());
        WarnedBy([&] { Start(m_boot, std::to_string(++m_configurations)); });
    }

    std::string m_boot = "boot";

private:
    static std::string Name(const std::string& word)
    {
        return word == "9"          ? "Positioning:GPS:Communications:9"
               : word == "2"        ? "Positioning:Ublox:No Data:2"
               : word == "receiver" ? "Positioning:GPS:No Data:2"
                                    : "System:Position:No Data:2";
    }

    static STestError Parent(const std::string& word, const std::vector<std::vector<std::string>>& sets,
                             const std::string& text, int needed)
    {
        STestError parent;
        parent.name = Name(word);
        parent.problem = text;
        for (const std::vector<std::string>& triggers : sets)
        {
            parent.sets.emplace_back();
            parent.sets.back().triggersNeeded = needed;
            for (const std::string& trigger : triggers)
                parent.sets.back().triggers.push_back(Name(trigger));
        }
        return parent;
    }

    int m_configurations = 0;
};

void ExpectSame(const SErrorEntry& left, const SErrorEntry& right)
{
    EXPECT_EQ(left.flags, right.flags);
    EXPECT_EQ(left.counter1, right.counter1);
    EXPECT_EQ(left.counter2, right.counter2);
    EXPECT_EQ(left.raisedTime, right.raisedTime);
    EXPECT_EQ(left.clearedTime, right.clearedTime);
}

} // namespace

TEST_F(RestoredOwner, HasTheSameTableToTheNanosecond)
{
    Report(kLinkSensor, true);
    Report(kLinkSensor, false);
    Report(kDataSensor, true);
    const SStatusTable before = Table();
    Start("boot");
    const SStatusTable after = Table();
    EXPECT_EQ(after.header.ready, 1U);
    EXPECT_EQ(Raised(), (std::vector<Id>{kDataSensor, kReceiver, kPosition}));
    for (int i = 0; i < after.header.count; ++i)
        ExpectSame(before.records[i], after.records[i]);
}

TEST_F(RestoredOwner, CountsNothingAgainAndGoesOnCounting)
{
    Report(kDataSensor, true);
    Start("boot");
    EXPECT_TRUE(Active(kDataSensor));
    EXPECT_TRUE(Active(kPosition));
    Report(kDataSensor, true);
    EXPECT_EQ(Record(kDataSensor).counter1, 1);
    Report(kDataSensor, false);
    EXPECT_EQ(Raised(), std::vector<Id>()) << "parents follow as if nothing had happened";
    Report(kDataSensor, true);
    EXPECT_EQ(Record(kDataSensor).counter1, 2);
    EXPECT_EQ(Record(kPosition).counter1, 2);
    EXPECT_EQ(Keeper().JournalLength(), 9u);
}

TEST_F(RestoredOwner, GivesTimesThatDisplaysTakeForNew)
{
    Report(kDataSensor, true);
    const Core::Time seen = Record(kPosition).raisedTime;
    Start("boot");
    Report(kDataSensor, false);
    EXPECT_GT(Record(kDataSensor).clearedTime, seen);
}

TEST_F(RestoredOwner, AfterARebootHasCountersAndTimesOnly)
{
    Report(kDataSensor, true);
    const SErrorEntry before = Record(kDataSensor);
    m_directory.RemoveTable(); // it does not outlive the machine
    Start("next boot");
    EXPECT_EQ(Raised(), std::vector<Id>());
    EXPECT_FALSE(Active(kDataSensor));
    EXPECT_EQ(Record(kDataSensor).counter1, 1);
    EXPECT_EQ(Record(kDataSensor).raisedTime, before.raisedTime);
    Report(kDataSensor, true);
    EXPECT_EQ(Record(kDataSensor).counter1, 2);
}

TEST_F(RestoredOwner, WithoutAStoreStartsFromTheDeadOwnersTable)
{
    m_stored = false;
    Report(kDataSensor, true);
    Report(kDataSensor, false);
    Report(kLinkSensor, true);
    const SStatusTable before = Table();
    UseStore();
    std::remove(m_directory.File("state.db").c_str());
    std::remove(m_directory.File("state.db-wal").c_str());
    WarnedBy([&] { Start("boot"); });
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver, kPosition}));
    for (int i = 0; i < 4; ++i)
        ExpectSame(before.records[i], Table().records[i]);
}

TEST_F(RestoredOwner, StoresWhatIsNotInTheTableYet)
{
    m_owner->Publish(kStart);
    {
        const CBusyLock lock;
        m_owner->Apply(kDataSensor.first, kDataSensor.second, true, "a");
        m_owner->Publish(kStart);
        EXPECT_GT(m_owner->Publisher().Waiting(), 0U);
        Keeper().CommitAtOnce(CStateKeeper::Clock::now());
        EXPECT_EQ(Raised(), std::vector<Id>());
    }
    Start("boot");
    EXPECT_EQ(Raised(), (std::vector<Id>{kDataSensor, kReceiver, kPosition}));
    EXPECT_EQ(Record(kDataSensor).counter1, 1);
}

TEST_F(RestoredOwner, LetsDisplaysSeeThatWhatWasNotStoredHasNotHappened)
{
    CErrorDatabase shown(m_directory.Prefix());
    CErrorDatabaseView display(false, eViewReader);
    const auto active = [&shown](const Id& id) { return shown.RetrieveError(id.first, id.second)->Active(); };
    Report(kLinkSensor, true);
    display.Synchronise(shown);
    m_owner->Apply(kLinkSensor.first, kLinkSensor.second, false, "a");
    m_owner->Apply(kDataSensor.first, kDataSensor.second, true, "a");
    m_owner->Publish(kStart);
    display.Synchronise(shown);
    EXPECT_FALSE(active(kLinkSensor));
    EXPECT_TRUE(active(kDataSensor));
    Start("boot"); // the display does not notice that the table was not ready for a moment
    display.Synchronise(shown);
    EXPECT_TRUE(active(kLinkSensor));
    EXPECT_FALSE(active(kDataSensor));
    EXPECT_TRUE(active(kPosition));
    EXPECT_EQ(Record(kLinkSensor).counter1, 1);
    EXPECT_EQ(Record(kDataSensor).counter1, 0);
}

TEST_F(RestoredOwner, KnowsWhatHappenedWhileNothingWasStored)
{
    Report(kLinkSensor, true);
    m_stored = false;
    WarnedBy([&] { Start("boot"); });
    for (int round = 0; round < 5; ++round)
    {
        Report(kLinkSensor, false);
        Report(kLinkSensor, true);
    }
    Report(kLinkSensor, false);
    Report(kDataSensor, true);
    m_stored = true;
    WarnedBy([&] { Start("boot"); });
    EXPECT_EQ(Raised(), (std::vector<Id>{kDataSensor, kReceiver, kPosition}));
    EXPECT_EQ(Record(kLinkSensor).counter1, 6);
    EXPECT_EQ(Record(kDataSensor).counter1, 1);
    Start("boot");
    EXPECT_EQ(Raised(), (std::vector<Id>{kDataSensor, kReceiver, kPosition}));
    EXPECT_EQ(Record(kLinkSensor).counter1, 6) << "from the store now";
}

TEST_F(RestoredOwner, ShowsNoTimeOfAnEarlierBootThatLiesInTheFuture)
{
    Report(kLinkSensor, true);
    m_owner.reset();
    SStoredError future;
    future.entry = Record(kLinkSensor);
    future.raises = 1;
    const Core::Time ahead =
        Core::Time::FromNanoseconds(future.entry.raisedTime.Nanoseconds() + 100000000000000000);
    future.entry.raisedTime = ahead;
    Keeper().Keep(future);
    Keeper().CommitAtOnce(CStateKeeper::Clock::now());
    m_directory.RemoveTable();
    Start("next boot");
    EXPECT_EQ(Record(kLinkSensor).raisedTime, Core::Time());
    Start("next boot");
    EXPECT_EQ(Record(kLinkSensor).raisedTime, Core::Time());
    EXPECT_EQ(Record(kLinkSensor).counter1, 1);
    Report(kDataSensor, true);
    EXPECT_LT(Record(kDataSensor).raisedTime, ahead);
    EXPECT_GT(Record(kDataSensor).raisedTime, Core::Time());
    Report(kLinkSensor, true);
    EXPECT_LT(Record(kLinkSensor).raisedTime, ahead);
    EXPECT_EQ(Record(kLinkSensor).counter1, 2);
}

TEST_F(RestoredOwner, HasTheParentsOfAnErrorWhoseRowWasDamaged)
{
    Report(kLinkSensor, true);
    m_owner.reset();
    UseStore(SStoreSettings());
    CSqlite(m_directory.File("state.db")).Run("UPDATE errors SET counter2 = 9 WHERE type = 9");
    WarnedBy([&] { Start("boot"); });
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver, kPosition}));
    EXPECT_EQ(Record(kLinkSensor).counter1, 1);
    Report(kLinkSensor, false);
    EXPECT_EQ(Raised(), std::vector<Id>());
}

TEST_F(RestoredOwner, ClearsWhatFollowedFromAnErrorThatHasNothingToDoWithItAnyMore)
{
    Report(kLinkSensor, true);
    ASSERT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver, kPosition}));
    CConfigurationBuilder builder;
    builder.Leaf("Positioning:GPS:Communications:9").Leaf("Positioning:Ublox:No Data:2");
    builder.Parent("Positioning:GPS:No Data:2", {"Positioning:Ublox:No Data:2"});
    builder.Parent("System:Position:No Data:2", {"Positioning:GPS:No Data:2"});
    builder.WriteTo(m_directory.Prefix());
    WarnedBy([&] { Start("boot", "d"); });
    EXPECT_EQ(Raised(), std::vector<Id>{kLinkSensor});
    EXPECT_EQ(Record(kPosition).counter1, 1);
    Keeper().CommitAtOnce(CStateKeeper::Clock::now());
    EXPECT_EQ(Keeper().JournalLength(), 5u) << "three raises, two clears";
}

TEST_F(LinkedOwner, KeepsWhatStayedActiveBehindALinkThatIsAsItWas)
{
    Configure({{"9"}, {"2"}}, {}, "one text");
    Report(kLinkSensor, true);
    Report(kLinkSensor, false);
    ASSERT_EQ(Raised(), std::vector<Id>{kReceiver}) << "either set keeps it";
    Configure({{"9"}, {"2"}}, {}, "another text");
    EXPECT_EQ(Raised(), std::vector<Id>{kReceiver});
}

TEST_F(LinkedOwner, KeepsWhatStayedActiveBehindLinksThatCouldHaveClearedIt)
{
    Configure({{"9", "2"}, {"9"}}, {}, "one text");
    Report(kLinkSensor, true);
    Report(kDataSensor, true);
    Report(kLinkSensor, false);
    Report(kDataSensor, false);
    ASSERT_EQ(Raised(), std::vector<Id>{kReceiver}) << "it is not in the second set";
    Configure({{"9", "2"}, {"9"}}, {}, "another text");
    EXPECT_EQ(Raised(), std::vector<Id>{kReceiver});
}

TEST_F(LinkedOwner, ClearsWhatIsLinkedToItsCauseAndWouldHaveBeenClearedWithIt)
{
    Configure({{"9", "2"}}, {}, "");
    Report(kLinkSensor, true);
    Report(kDataSensor, true);
    Report(kLinkSensor, false);
    ASSERT_EQ(Raised(), (std::vector<Id>{kDataSensor, kReceiver}));
    Configure({{"9"}}, {}, "");
    EXPECT_EQ(Raised(), std::vector<Id>{kDataSensor}) << "it would be cleared by nobody";
}

TEST_F(LinkedOwner, ClearsWhatFollowedFromWhatWouldNotHaveBeenRaised)
{
    Configure({{"9"}}, {{"receiver"}, {"2"}}, "");
    Report(kLinkSensor, true);
    ASSERT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver, kPosition}));
    Configure({{"2"}}, {{"receiver"}, {"2"}}, "");
    EXPECT_EQ(Raised(), std::vector<Id>{kLinkSensor});
}

TEST_F(LinkedOwner, ClearsWhatIsRaisedOnlyWithMoreThanWasRaised)
{
    Configure({{"9", "2"}}, {}, "");
    Report(kLinkSensor, true);
    Configure({{"9", "2"}}, {}, "", 2);
    EXPECT_EQ(Raised(), std::vector<Id>{kLinkSensor});
    Report(kDataSensor, true);
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kDataSensor, kReceiver}));
}

TEST_F(LinkedOwner, KeepsWhatWouldHaveBeenRaisedLater)
{
    Configure({{"9", "2"}}, {}, "");
    Report(kLinkSensor, true);
    Report(kDataSensor, true);
    Configure({{"2"}, {"position"}}, {}, "");
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kDataSensor, kReceiver}));
    Report(kDataSensor, false);
    Configure({{"2"}, {"position"}}, {}, "again");
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver}));
}

TEST_F(LinkedOwner, DoesNotTakeWhatWasActiveBeforeTheMachineStartedForActive)
{
    Configure({{"9", "2"}}, {}, "");
    Report(kDataSensor, true);
    m_directory.RemoveTable();
    m_boot = "next boot";
    Configure({{"9", "2"}}, {}, "");
    Report(kDataSensor, true);
    Report(kDataSensor, false);
    Report(kLinkSensor, true);
    Report(kDataSensor, true);
    Report(kLinkSensor, false);
    ASSERT_EQ(Raised(), (std::vector<Id>{kDataSensor, kReceiver}));
    Configure({{"9"}}, {}, "");
    EXPECT_EQ(Raised(), std::vector<Id>{kDataSensor});
}

TEST_F(LinkedOwner, NamesNoErrorAsTheCauseOfTheClearingOfAnother)
{
    Configure({{"9"}}, {{"2"}}, "");
    Report(kLinkSensor, true);
    Report(kDataSensor, true);
    Configure({}, {}, "");
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kDataSensor}));
    Keeper().CommitAtOnce(CStateKeeper::Clock::now());
    const std::vector<STransition> transitions = Keeper().Journal(5, 10);
    ASSERT_EQ(transitions.size(), 2u);
    for (const STransition& transition : transitions)
        EXPECT_FALSE(transition.raised || transition.caused) << transition.number;
}

TEST_F(RestoredOwner, KeepsWhatFollowsByAnotherConfigurationAsWell)
{
    Report(kLinkSensor, true);
    Report(kReceiver, false);
    Report(kReceiver, true); // by somebody who reports it: not for us to clear
    CConfigurationBuilder builder;
    builder.Leaf("Positioning:GPS:Communications:9").Leaf("Positioning:GPS:No Data:2");
    builder.Parent("System:Position:No Data:2", {"Positioning:GPS:Communications:9"});
    builder.WriteTo(m_directory.Prefix());
    WarnedBy([&] { Start("boot", "d"); });
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver, kPosition}));
    EXPECT_EQ(Record(kPosition).counter1, 2);
}
