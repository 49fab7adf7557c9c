#include "faultkeeperd/service/NotificationHandler.h"

#include "../OwnerFixture.h"
#include "support/CapturedOutput.h"

#include <gtest/gtest.h>

#include <cstdint>

using namespace Support;
using namespace Faultkeeper::Apps;

namespace
{

const MPIPeerC kPeer{7, "127.0.0.1:40312", "0123456789abcdef0123456789abcdef"};

// How far each session is applied and stored, over the end of connections and of the owner.
class DeliveryAccount : public OwnerTest
{
protected:
    void SetUp() override
    {
        OwnerTest::SetUp();
        Start();
    }

    /// An owner that begins with what the one before it has stored.
    void Start()
    {
        m_handler.reset();
        m_owner.reset();
        LoadAgain();
        UseStore();
        const SFormerState former = FindFormerState(Keeper(), Database(), "boot", "c");
        m_owner = std::make_unique<COwner>(Database(), Keeper(), former);
        m_handler = std::make_unique<CNotificationHandler>();
        m_handler->Begin(*m_owner, Keeper(), former.sessions);
    }

    /// A batch of one report.
    void Report(const MPIPeerC& peer, bool raised, std::uint64_t number)
    {
        const std::int64_t id[] = {0x40C09, 9};
        m_handler->NumbersReceived(peer, {raised ? "RaiseError" : "ClearError", id, 2, 0, number});
        m_handler->BatchEnded(peer);
    }

    void Store()
    {
        m_owner->Publish(COwner::Clock::now());
        Keeper().CommitAtOnce(CStateKeeper::Clock::now());
        m_handler->Acknowledge();
    }

    std::unique_ptr<COwner> m_owner;
    std::unique_ptr<CNotificationHandler> m_handler;
};

} // namespace

TEST_F(DeliveryAccount, WhatWasStoredIsNotAppliedAgainAfterARestart)
{
    m_handler->PeerIntroduced(kPeer);
    Report(kPeer, true, 1);
    Report(kPeer, false, 2);
    Store();
    Start();
    m_handler->PeerIntroduced(kPeer);
    Report(kPeer, true, 1);
    Report(kPeer, false, 2);
    Report(kPeer, true, 3);
    Store();
    EXPECT_EQ(Record(kLinkSensor).counter1, 2);
    EXPECT_EQ(m_handler->Counts().repeated, 2U);
}

TEST_F(DeliveryAccount, WhatWasNotStoredIsAsIfItHadNotHappened)
{
    m_handler->PeerIntroduced(kPeer);
    Report(kPeer, true, 1);
    Store();
    Report(kPeer, false, 2);
    Report(kPeer, true, 3);
    m_owner->Publish(COwner::Clock::now()); // seen by displays, and not stored
    EXPECT_EQ(Record(kLinkSensor).counter1, 2);
    Start();
    m_handler->PeerIntroduced(kPeer);
    Report(kPeer, false, 2);
    Report(kPeer, true, 3);
    Store();
    EXPECT_EQ(Record(kLinkSensor).counter1, 2) << "neither lost nor counted twice";
    EXPECT_EQ(m_handler->Counts().repeated, 0U);
}

TEST_F(DeliveryAccount, ASessionIsStoredTogetherWithWhatItReported)
{
    m_handler->PeerIntroduced(kPeer);
    Report(kPeer, true, 1);
    Store();
    UseStore();
    const SStoreContents contents = Keeper().Open("boot", "c");
    ASSERT_EQ(contents.sessions.size(), 1U);
    EXPECT_EQ(contents.sessions[0].id, kPeer.session);
    EXPECT_EQ(contents.sessions[0].applied, 1U);
    EXPECT_EQ(contents.sessions[0].left, SStoredSession::kConnected);
}

TEST_F(DeliveryAccount, SettlesForThoseThatHaveEndedTheirSendingWithSomethingLeft)
{
    int settled = 0;
    m_handler->PeerIntroduced(kPeer);
    Report(kPeer, true, 1);
    m_handler->PeerFinished(kPeer); // nobody to do it
    m_handler->Settling(
        [&]
        {
            ++settled;
            Store();
        });
    m_handler->PeerFinished(kPeer);
    EXPECT_EQ(settled, 1);
    m_handler->PeerFinished(kPeer);
    EXPECT_EQ(settled, 1) << "all is stored";
    Report(kPeer, false, 2);
    m_handler->PeerDisconnected(kPeer);
    const MPIPeerC again{8, "127.0.0.1:40313", kPeer.session};
    m_handler->PeerIntroduced(again);
    m_handler->PeerFinished(again);
    EXPECT_EQ(settled, 2) << "it waits for its welcome";
}

TEST_F(DeliveryAccount, RemembersWhichSessionsHaveBeenAwayTheLongest)
{
    const MPIPeerC early{8, "127.0.0.1:40313", "fedcba9876543210fedcba9876543210"};
    const MPIPeerC silent{9, "127.0.0.1:40314", "00000000000000000000000000000000"};
    m_handler->PeerIntroduced(kPeer);
    m_handler->PeerIntroduced(early);
    m_handler->PeerIntroduced(silent);
    Report(kPeer, true, 1);
    Report(early, false, 1);
    m_handler->PeerDisconnected(early);
    m_handler->PeerDisconnected(silent);
    m_handler->PeerDisconnected(kPeer);
    Store();
    UseStore();
    const SStoreContents contents = Keeper().Open("boot", "c");
    ASSERT_EQ(contents.sessions.size(), 2U) << "one that said nothing needs no account";
    EXPECT_EQ(contents.sessions[0].id, early.session);
    EXPECT_EQ(contents.sessions[1].id, kPeer.session);
    EXPECT_LT(contents.sessions[0].left, contents.sessions[1].left);
}

TEST_F(DeliveryAccount, ForgetsInTheStoreWhatIsForgotten)
{
    for (std::uint64_t i = 1; i <= CSessions::kLimit + 1; ++i)
    {
        const MPIPeerC peer{i, "127.0.0.1:40312", "session " + std::to_string(i)};
        m_handler->PeerIntroduced(peer);
        Report(peer, true, 1);
        m_handler->PeerDisconnected(peer);
    }
    Store();
    UseStore();
    const SStoreContents contents = Keeper().Open("boot", "c");
    ASSERT_EQ(contents.sessions.size(), CSessions::kLimit);
    EXPECT_EQ(contents.sessions.front().id, "session 2");
}
