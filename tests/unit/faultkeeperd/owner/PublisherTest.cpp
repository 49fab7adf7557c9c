#include "faultkeeperd/owner/Publisher.h"

#include "../OwnerFixture.h"
#include "support/CapturedOutput.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

using namespace Support;
using Faultkeeper::Apps::CPublisher;

namespace
{

class Publisher : public OwnerTest
{
protected:
    void SetUp() override
    {
        OwnerTest::SetUp();
        m_view = std::make_unique<Faultkeeper::CErrorDatabaseView>(true, Faultkeeper::eViewOwner);
        m_publisher = std::make_unique<CPublisher>(Database(), *m_view);
        Database().SetCallback(m_publisher.get());
    }

    /// Published while somebody holds the lock.
    bool PublishBusy()
    {
        const CBusyLock lock;
        bool published = true;
        m_messages = WarnedBy([&] { published = m_publisher->Publish(); });
        return published;
    }

    /// How often the table has changed.
    std::uint32_t Changes()
    {
        const Faultkeeper::SStatusTable table = Table();
        return *reinterpret_cast<const std::uint32_t*>(&table.header.lastRaiseTime);
    }

    std::unique_ptr<Faultkeeper::CErrorDatabaseView> m_view;
    std::unique_ptr<CPublisher> m_publisher;
    std::string m_messages;
};

} // namespace

TEST_F(Publisher, LoadsTheIdentifiersAndDeclaresTheTableReady)
{
    EXPECT_FALSE(m_publisher->Ready());
    EXPECT_TRUE(m_publisher->Publish());
    EXPECT_TRUE(m_publisher->Ready());
    EXPECT_EQ(Table().header.ready, 1U);
    EXPECT_EQ(Table().header.count, 4);
    EXPECT_EQ(Table().records[0].problemCode, kLinkSensor.first);
}

TEST_F(Publisher, PublishesParentsAlongWithTheirChildren)
{
    m_publisher->Publish();
    Database().RaiseError(kLinkSensor.first, kLinkSensor.second, false);
    EXPECT_EQ(m_publisher->Waiting(), 3U);
    EXPECT_TRUE(m_publisher->Publish());
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver, kPosition}));
}

TEST_F(Publisher, KeepsAShortFaultAsOneOccurrence)
{
    m_publisher->Publish();
    Database().RaiseError(kLinkSensor.first, kLinkSensor.second, false);
    Database().ClearError(kLinkSensor.first, kLinkSensor.second, false);
    EXPECT_TRUE(m_publisher->Publish());
    EXPECT_EQ(Raised(), std::vector<Id>());
    EXPECT_EQ(Record(kLinkSensor).counter1, 1);
    EXPECT_EQ(Record(kPosition).counter1, 1);
    EXPECT_TRUE(Record(kLinkSensor).raisedTime < Record(kLinkSensor).clearedTime);
}

TEST_F(Publisher, TakesTheLockOnceForRaisesAndClearsThatWait)
{
    m_publisher->Publish();
    const std::uint32_t before = Changes();
    Database().RaiseError(kLinkSensor.first, kLinkSensor.second, false);
    Database().ClearError(kLinkSensor.first, kLinkSensor.second, false);
    Database().RaiseError(kDataSensor.first, kDataSensor.second, false);
    m_publisher->Publish();
    EXPECT_EQ(Changes() - before, 1U);
}

TEST_F(Publisher, BringsAFormerStateBackBeforeTheTableIsReady)
{
    Faultkeeper::SErrorEntry record;
    record.problemCode = kLinkSensor.first;
    record.problemType = static_cast<std::int16_t>(kLinkSensor.second);
    record.flags = Faultkeeper::kRaisedFlag;
    record.counter1 = 5;
    record.counter2 = 4;
    record.raisedTime = Core::Time(1000);
    m_publisher->Restore({record}, true);
    EXPECT_FALSE(PublishBusy());
    EXPECT_EQ(m_publisher->Waiting(), 1U);
    EXPECT_TRUE(m_publisher->Publish());
    EXPECT_EQ(m_publisher->Waiting(), 0U);
    EXPECT_EQ(Raised(), std::vector<Id>{kLinkSensor});
    EXPECT_EQ(Record(kLinkSensor).counter1, 5);
    EXPECT_EQ(Record(kLinkSensor).counter2, 4);
    EXPECT_EQ(Record(kLinkSensor).raisedTime, Core::Time(1000));
    EXPECT_EQ(Table().header.ready, 1U);
}

TEST_F(Publisher, BringsCountersAndTimesBackWithoutStates)
{
    Faultkeeper::SErrorEntry record;
    record.problemCode = kLinkSensor.first;
    record.problemType = static_cast<std::int16_t>(kLinkSensor.second);
    record.flags = Faultkeeper::kRaisedFlag;
    record.counter1 = 5;
    record.raisedTime = Core::Time(1000);
    m_publisher->Restore({record}, false);
    EXPECT_TRUE(m_publisher->Publish());
    EXPECT_EQ(Raised(), std::vector<Id>());
    EXPECT_EQ(Record(kLinkSensor).counter1, 5);
    EXPECT_EQ(Record(kLinkSensor).raisedTime, Core::Time(1000));
}

TEST_F(Publisher, IsNotReadyWhileTheLockIsBusyAtTheStart)
{
    EXPECT_FALSE(PublishBusy());
    EXPECT_FALSE(m_publisher->Ready());
    EXPECT_EQ(Table().header.count, 0);
    EXPECT_EQ(m_messages, "unable to obtain lock\n");
    EXPECT_TRUE(m_publisher->Publish());
    EXPECT_EQ(Table().header.ready, 1U);
}

TEST_F(Publisher, KeepsChangesInOrderWhileTheLockIsBusy)
{
    m_publisher->Publish();
    for (int round = 0; round < 3; ++round)
    {
        Database().RaiseError(kLinkSensor.first, kLinkSensor.second, false);
        EXPECT_FALSE(PublishBusy());
        Database().ClearError(kLinkSensor.first, kLinkSensor.second, false);
        EXPECT_FALSE(PublishBusy());
    }
    Database().RaiseError(kDataSensor.first, kDataSensor.second, false);
    EXPECT_EQ(m_publisher->Waiting(), 21U);
    EXPECT_EQ(Record(kLinkSensor).counter1, 0);

    EXPECT_TRUE(m_publisher->Publish());
    EXPECT_EQ(m_publisher->Waiting(), 0U);
    EXPECT_EQ(Record(kLinkSensor).counter1, 3);
    EXPECT_EQ(Record(kReceiver).counter1, 4);
    EXPECT_EQ(Raised(), (std::vector<Id>{kDataSensor, kReceiver, kPosition}));
}

TEST_F(Publisher, PublishesMoreChangesThanOneTakingOfTheLockMayHold)
{
    m_publisher->Publish();
    for (std::size_t i = 0; i < CPublisher::kBatchLimit * 2; ++i)
        m_publisher->ErrorRaised(kLinkSensor.first, kLinkSensor.second); // repeats: only the first one counts
    m_publisher->ErrorRaised(kPosition.first, kPosition.second);
    EXPECT_TRUE(m_publisher->Publish());
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kPosition}));
    EXPECT_EQ(Record(kLinkSensor).counter1, 1);
}

TEST_F(Publisher, DeclaresTheTableNotReadyAfterTheLastChange)
{
    m_publisher->Publish();
    Database().RaiseError(kLinkSensor.first, kLinkSensor.second, false);
    m_publisher->Withdraw();
    EXPECT_FALSE(m_publisher->Done());
    EXPECT_TRUE(m_publisher->Publish());
    EXPECT_TRUE(m_publisher->Done());
    EXPECT_EQ(Table().header.ready, 0U);
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver, kPosition}));
}

TEST_F(Publisher, TriesTheWithdrawalAgainAfterABusyLock)
{
    m_publisher->Publish();
    m_publisher->Withdraw();
    EXPECT_FALSE(PublishBusy());
    EXPECT_EQ(Table().header.ready, 1U);
    EXPECT_TRUE(m_publisher->Publish());
    EXPECT_EQ(Table().header.ready, 0U);
}

TEST_F(Publisher, NeverDeclaresATableReadyThatIsWithdrawnBefore)
{
    m_publisher->Withdraw();
    EXPECT_TRUE(m_publisher->Publish());
    EXPECT_FALSE(m_publisher->Ready());
    EXPECT_EQ(Table().header.ready, 0U);
}

TEST_F(Publisher, BringsAFormerStateBackThoughTheTableIsWithdrawnBefore)
{
    Faultkeeper::SErrorEntry record;
    record.problemCode = kLinkSensor.first;
    record.problemType = static_cast<std::int16_t>(kLinkSensor.second);
    record.flags = Faultkeeper::kRaisedFlag;
    m_publisher->Restore({record}, true);
    EXPECT_FALSE(PublishBusy());
    m_publisher->Withdraw();
    EXPECT_FALSE(PublishBusy());
    EXPECT_FALSE(m_publisher->Done());
    EXPECT_TRUE(m_publisher->Publish());
    EXPECT_EQ(Raised(), std::vector<Id>{kLinkSensor}) << "the next owner may have nothing else";
    EXPECT_FALSE(m_publisher->Ready());
    EXPECT_EQ(Table().header.ready, 0U);
}

TEST_F(Publisher, KeepsItsChangesWhenTheViewHasFailed)
{
    m_publisher->Publish();
    m_directory.RemoveTable();
    Database().RaiseError(kLinkSensor.first, kLinkSensor.second, false);
    EXPECT_NE(WarnedBy([&] { EXPECT_FALSE(m_publisher->Publish()); }), "");
    EXPECT_TRUE(m_view->Failed());
    EXPECT_EQ(m_publisher->Waiting(), 3U);
}

TEST_F(Publisher, CountsEveryRaiseHoweverLongTheLockIsKept)
{
    m_publisher->Publish();
    constexpr int kRounds = 200000;
    for (int round = 0; round < kRounds; ++round)
    {
        m_publisher->ErrorRaised(kLinkSensor.first, kLinkSensor.second);
        m_publisher->ErrorCleared(kLinkSensor.first, kLinkSensor.second);
        if (round == kRounds / 2)
            m_publisher->ErrorRaised(kPosition.first, kPosition.second);
    }
    m_publisher->ErrorRaised(kDataSensor.first, kDataSensor.second);
    EXPECT_LE(m_publisher->Waiting(), CPublisher::kWaitingLimit);
    EXPECT_FALSE(PublishBusy());
    EXPECT_TRUE(m_publisher->Publish());
    EXPECT_TRUE(m_publisher->Done());
    EXPECT_EQ(Raised(), (std::vector<Id>{kDataSensor, kPosition}));
    EXPECT_EQ(Record(kLinkSensor).counter1, kRounds % 65536);
    EXPECT_EQ(Record(kLinkSensor).counter2, kRounds % 65536);
    EXPECT_EQ(Record(kDataSensor).counter1, 1);
    EXPECT_EQ(Record(kPosition).counter1, 1);
    EXPECT_GT(Record(kLinkSensor).clearedTime, Record(kLinkSensor).raisedTime);
}

TEST_F(Publisher, CountsEveryRaiseOfAnErrorThatIsDefinedTwice)
{
    Support::CConfigurationBuilder()
        .Leaf("Positioning:GPS:Communications:9")
        .Leaf("Positioning:GPS:Communications:9")
        .WriteTo(m_directory.Prefix());
    LoadAgain();
    const auto view = std::make_unique<Faultkeeper::CErrorDatabaseView>(true, Faultkeeper::eViewOwner);
    CPublisher publisher(Database(), *view);
    publisher.ErrorRaised(kLinkSensor.first, kLinkSensor.second);
    EXPECT_TRUE(publisher.Publish());
    constexpr int kRounds = 35000;
    for (int round = 0; round < kRounds; ++round)
    {
        publisher.ErrorCleared(kLinkSensor.first, kLinkSensor.second);
        publisher.ErrorRaised(kLinkSensor.first, kLinkSensor.second);
    }
    EXPECT_TRUE(publisher.Publish());
    EXPECT_EQ(Record(kLinkSensor).counter1, kRounds + 1);
    EXPECT_EQ(Table().records[1].counter1, 0) << "nobody writes to the second one";
}

class CondensedChanges : public Publisher, public testing::WithParamInterface<unsigned>
{
};

TEST_P(CondensedChanges, EndLikeAllOfThem)
{
    m_publisher->Publish();
    const Id ids[] = {kLinkSensor, kDataSensor, kReceiver, kPosition};
    std::map<Id, bool> raised;
    std::map<Id, int> raises;
    std::mt19937 random(GetParam());
    for (std::size_t step = 0; step < CPublisher::kWaitingLimit * 3; ++step)
    {
        const Id& id = ids[random() % (step % 3 == 0 ? 4 : 2)];
        raised[id] = !raised[id];
        raises[id] += raised[id] ? 1 : 0;
        if (raised[id])
            m_publisher->ErrorRaised(id.first, id.second);
        else
            m_publisher->ErrorCleared(id.first, id.second);
        if (random() % 70000 == 0)
            m_publisher->Publish();
    }
    EXPECT_TRUE(m_publisher->Publish());
    for (const Id& id : ids)
    {
        EXPECT_EQ(Record(id).flags, raised[id] ? Faultkeeper::kRaisedFlag : 0);
        EXPECT_EQ(Record(id).counter1, raises[id] % 65536);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, CondensedChanges, testing::Range(0u, 5u));
