#include "faultkeeperd/owner/Orphans.h"

#include "../store/FailingDisk.h"
#include "RestoredOwnerFixture.h"

#include "store/BootClock.h"
#include "support/CapturedOutput.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <random>

using namespace Support;
using namespace Faultkeeper::Apps;

namespace
{

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

    /// Kills the owner and starts another one with the same configuration.
    void StartAgain() { Start(m_boot, std::to_string(m_configurations)); }

    /// Has one of the sensors raised and cleared so often that the journal does not fit into the memory of
    /// SQLite.
    void FillJournal()
    {
        STransition transition;
        transition.problemCode = kDataSensor.first;
        transition.problemType = kDataSensor.second;
        transition.sinceBoot = NanosecondsSinceBoot();
        for (int i = 0; i < 60000; ++i)
        {
            transition.raised = i % 2 == 0;
            Keeper().Keep(transition);
        }
        Keeper().CommitAtOnce(CStateKeeper::Clock::now());
    }

    /// How many reads it takes to open the store and, then, to go through its journal once.
    std::pair<int, int> Reads()
    {
        m_owner.reset();
        UseStore();
        FailingDisk::RefuseAfter(-1, 0, 0, FailingDisk::ekRead);
        Keeper().Open(m_boot, "any");
        const int opening = FailingDisk::Calls();
        for (std::uint64_t from = 0; from <= Keeper().JournalLength(); from += 1000)
            Keeper().Journal(from, 1000);
        return {opening, FailingDisk::Calls() - opening};
    }

    std::string m_boot = "boot";
    int m_configurations = 0; // the last one's fingerprint

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
};

class SameLinks : public LinkedOwner, public testing::WithParamInterface<unsigned>
{
protected:
    using Sets = std::vector<std::vector<std::string>>;

    /// Up to three sets of these.
    Sets AnySets(const std::vector<std::string>& words)
    {
        Sets sets(m_random() % 4);
        for (std::vector<std::string>& set : sets)
        {
            set.push_back(words[m_random() % words.size()]);
            if (m_random() % 2 == 0)
                set.push_back(words[m_random() % words.size()]);
        }
        return sets;
    }

    std::mt19937 m_random{GetParam()};
};

} // namespace

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

TEST_F(LinkedOwner, ClearsAgainWhatCouldNotBeStored)
{
    Configure({{"9"}}, {}, "");
    Report(kLinkSensor, true);
    Configure({}, {}, "");
    EXPECT_EQ(Raised(), std::vector<Id>{kLinkSensor});
    StartAgain();
    EXPECT_EQ(Raised(), std::vector<Id>{kLinkSensor}) << "the owner was killed before it could store that";
}

TEST_F(LinkedOwner, KeepsWhatWasReportedAlsoAboveWhatItClears)
{
    Configure({{"9"}}, {{"receiver"}}, "");
    Report(kPosition, true);
    Report(kLinkSensor, true);
    ASSERT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver, kPosition}));
    Configure({}, {{"receiver"}}, "");
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kPosition})) << "its reporter has not cleared it";
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
    {
        EXPECT_FALSE(transition.raised || transition.caused) << transition.number;
        EXPECT_EQ(transition.reason, eorConfiguration) << transition.number;
    }
    Report(kDataSensor, false);
    EXPECT_EQ(Keeper().Journal(7, 1).at(0).reason, eorNone) << "somebody has reported that";
}

TEST_F(LinkedOwner, KeepsWhatWasReportedAnewWhileNothingWasStored)
{
    Configure({{"9"}}, {}, "");
    Report(kLinkSensor, true);
    m_stored = false;
    Configure({}, {}, "");
    Report(kReceiver, false);
    Report(kReceiver, true);
    m_stored = true;
    Configure({}, {}, "");
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver}));
    Configure({}, {}, "another text");
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver})) << "the journal tells it from then on";
    Report(kReceiver, false);
    Report(kReceiver, true);
    EXPECT_EQ(Record(kReceiver).counter1, 3);
    const std::vector<STransition> transitions = Keeper().Journal(3, 3);
    ASSERT_EQ(transitions.size(), 3u);
    EXPECT_FALSE(transitions[0].raised);
    EXPECT_TRUE(transitions[1].raised);
    for (const STransition& transition : {transitions[0], transitions[1]})
        EXPECT_EQ(transition.reason, eorTable) << transition.number;
    EXPECT_EQ(transitions[2].reason, eorNone);
}

TEST_F(LinkedOwner, ClearsWhatStayedAsItWasWhileNothingWasStored)
{
    Configure({{"9"}}, {}, "");
    Report(kLinkSensor, true);
    m_stored = false;
    Configure({}, {}, "");
    Report(kDataSensor, true);
    m_stored = true;
    Configure({}, {}, "");
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kDataSensor}));
}

TEST_F(LinkedOwner, LeavesTheJudgementToTheNextOneIfTheStoreCanOnlyBeRead)
{
    Configure({{"9"}}, {}, "");
    Report(kLinkSensor, true);
    FailingDisk::RefuseAfter(0, ENOSPC, -1, FailingDisk::ekWrite | FailingDisk::ekOpenToWrite);
    Configure({}, {}, "");
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver}));
    FailingDisk::Mend();
    WarnedBy([&] { Report(kDataSensor, true); });
    EXPECT_TRUE(Keeper().Storing());
    StartAgain();
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kDataSensor}));
}

TEST_F(LinkedOwner, LeavesTheJudgementToTheNextOneIfTheJournalCannotBeReadToItsEnd)
{
    Configure({{"9"}}, {{"9"}}, "");
    Report(kLinkSensor, true);
    FillJournal();
    Report(kReceiver, false);
    Report(kReceiver, true); // by its own reporter now
    const auto [opening, journal] = Reads();
    ASSERT_GT(journal, 100);
    const std::vector<Id> before = {kLinkSensor, kReceiver, kPosition};
    for (const int half : {1, 3}) // of the first reading, and of the second
    {
        FailingDisk::RefuseAfter(opening + journal * half / 2, EIO, -1, FailingDisk::ekRead);
        Configure({}, {}, "");
        EXPECT_FALSE(Keeper().Storing()) << half;
        EXPECT_EQ(Raised(), before) << half;
        FailingDisk::Mend();
    }
    StartAgain();
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver}));
}

TEST_F(LinkedOwner, JudgesWhatAnotherOneHasPutIntoAStoreThatItGotLate)
{
    Configure({}, {}, "");
    {
        m_owner.reset();
        const CStateStore other(UseStore());
        Configure({{"9"}}, {}, "");
        Report(kLinkSensor, true);
    }
    WarnedBy([&] { Keeper().CommitAtOnce(CStateKeeper::Clock::now()); });
    ASSERT_TRUE(Keeper().Storing());
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver}));
    m_configurations = 0; // the first one comes back
    Configure({}, {}, "");
    EXPECT_EQ(Raised(), std::vector<Id>{kLinkSensor});
}

TEST_P(SameLinks, ChangeNothingWhateverTheyAreAndWhateverWasReported)
{
    const Sets receiver = AnySets({"9", "2"});
    const Sets position = AnySets({"9", "2", "receiver"});
    const int needed = m_random() % 3 == 0 ? 2 : 1;
    Configure(receiver, position, "", needed);
    const Id ids[] = {kLinkSensor, kDataSensor, kReceiver};
    for (int restart = 0; restart < 5; ++restart)
    {
        for (int report = 0; report < 10; ++report)
            Report(ids[m_random() % 3], m_random() % 2 == 0);
        const std::vector<Id> before = Raised();
        Configure(receiver, position, std::to_string(restart), needed);
        EXPECT_EQ(Raised(), before);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, SameLinks, testing::Range(0u, 20u));
