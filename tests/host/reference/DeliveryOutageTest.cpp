// Confirmed delivery over lost connections: what goes out again, to whom, and what is believed of a receiver.
#include <chrono>
#include <gtest/gtest.h>
#include <string>

#include "host/reference/DeliveryFixture.h"

namespace
{

using namespace HostTest;
using Clock = std::chrono::steady_clock;

TEST_F(HostDelivery, OnceWelcomedAnOutageCountsAsConnected)
{
    Say(Welcome(0));
    m_listener.Close();
    Peer().Close();
    ASSERT_TRUE(Eventually([&] { return m_client->VerifyConnection() && !m_client->Connected(); }));
    SendAll(1, 100);
    EXPECT_FALSE(m_client->Connected());
    EXPECT_FALSE(m_client->Welcomed());
    EXPECT_EQ(m_client->WaitingCount(), 100u);
    EXPECT_EQ(m_client->SentCount(), 0u);
    EXPECT_EQ(m_client->UnacknowledgedCount(), 100u);
    BAtomC atom(7);
    EXPECT_FALSE(m_client->SendMessageElement(&atom)) << "only notifications have a session";
}

TEST_F(HostDelivery, AfterAReconnectNothingIsSentBeforeTheWelcomeAndThenTheRest)
{
    Say(Welcome(0));
    SendAll(1, 6);
    Received(6);
    Say(Acknowledgement(2));
    EndConnection();
    SendAll(7, 8);
    AwaitNext();
    SendAll(9, 9);
    EXPECT_EQ(ReceivedInTheEnd(), Numbers());
    Say(Welcome(4));
    SendAll(10, 10);
    EXPECT_EQ(Received(6), (Numbers{5, 6, 7, 8, 9, 10}));
}

TEST_F(HostDelivery, AYesHoldsForTheNextNotificationWhateverBecomesOfTheConnection)
{
    ASSERT_TRUE(m_client->VerifyConnection());
    Peer().Close();
    ASSERT_TRUE(HasInput(m_client->Descriptor(), 30000)); // the end of the connection is there to be seen
    EXPECT_TRUE(Send(1));
    EXPECT_FALSE(Send(2)) << "nobody has asked";
    AwaitNext();
    EXPECT_EQ(Received(1), Numbers{1});
}

TEST_F(HostDelivery, AReceiverThatForgotTheSessionGetsAllThatIsNotAcknowledged)
{
    Say(Welcome(0));
    SendAll(1, 6);
    Received(6);
    Say(Acknowledgement(3));
    EndConnection();
    AwaitNext();
    Say(Welcome(0));
    EXPECT_EQ(Received(3), (Numbers{4, 5, 6}));
    Say(Acknowledgement(6));
    EXPECT_EQ(m_client->UnacknowledgedCount(), 0u);
}

TEST_F(HostDelivery, AMessageCutOffStartsFromItsFirstByteAfterTheWelcome)
{
    Say(Welcome(0));
    LetTheSystemTakeLittle();
    std::uint64_t number = 1;
    while (m_client->BytesWaiting() == 0 && m_client->VerifyConnection())
        ASSERT_TRUE(Send(number++, 60000));
    ASSERT_GT(m_client->BytesWaiting(), 0u);
    EndConnection();
    AwaitNext();
    Peer().Send(Welcome(static_cast<std::int64_t>(m_client->SentCount())));
    std::string rest;
    EXPECT_TRUE(Eventually(
        [&]
        {
            m_client->ProcessMessages(false);
            rest += Peer().ReceivePending();
            return m_client->BytesWaiting() == 0;
        }));
    m_client.reset();
    rest += Peer().ReceiveToEnd();
    const std::string last = std::to_string(number - 1);
    EXPECT_EQ(rest, "d4:argsli" + last + "e60000:" + std::string(60000, 'x') + "e4:name6:Number3:seqi" +
                        last + "ee");
}

TEST_F(HostDelivery, NumbersThatWereNeverSentAreAsIfNotSaid)
{
    SendAll(1, 5);
    Received(5);
    Say(Welcome(6));
    EXPECT_FALSE(m_client->Welcomed());
    Say(Welcome(-1));
    EXPECT_FALSE(m_client->Welcomed());
    Say(Welcome(2));
    EXPECT_TRUE(m_client->Welcomed());
    for (const std::int64_t number : {std::int64_t{6}, std::int64_t{-1}, std::int64_t{9223372036854775807}})
    {
        Say(Acknowledgement(number));
        EXPECT_EQ(m_client->UnacknowledgedCount(), 3u) << number;
    }
    EXPECT_TRUE(m_client->Connected());
    EndConnection();
    AwaitNext();
    Say(Welcome(0));
    EXPECT_EQ(Received(3), (Numbers{3, 4, 5})) << "nothing was dropped";
}

TEST_F(HostDelivery, OddThingsSaidChangeNothing)
{
    SendAll(1, 5);
    Say(Acknowledgement(5));
    EXPECT_EQ(m_client->UnacknowledgedCount(), 5u) << "before the welcome";
    Say("d7:welcome1:0e");
    Say("d3:acki1e7:welcomei1ee");
    Say("d4:argsle4:name7:welcomee");
    EXPECT_FALSE(m_client->Welcomed());
    Say(Welcome(1));
    Say(Welcome(5));
    EXPECT_EQ(m_client->UnacknowledgedCount(), 4u) << "a second welcome";
    Say(Acknowledgement(4));
    Say(Acknowledgement(3));
    EXPECT_EQ(m_client->UnacknowledgedCount(), 1u) << "an older one";
}

TEST_F(HostDelivery, AWelcomeHeardAfterTheConnectionHasGoneCountsForTheNext)
{
    m_client->RegisterCallback("bye", [this](BListC*) { m_client->Close(); });
    SendAll(1, 3);
    Received(3);
    Say("d4:argsle4:name3:byee" + Welcome(2));
    EXPECT_FALSE(m_client->Welcomed());
    EXPECT_EQ(m_client->UnacknowledgedCount(), 1u);
    SendAll(4, 4);
    AwaitNext();
    EXPECT_EQ(ReceivedInTheEnd(), Numbers()) << "whoever this is";
    Say(Welcome(2));
    EXPECT_EQ(Received(2), (Numbers{3, 4}));
}

TEST_F(HostDelivery, AReceiverThatStaysSilentAfterAnotherHadWelcomedGetsTheRestOnce)
{
    Say(Welcome(0));
    SendAll(1, 4);
    Received(4);
    Say(Acknowledgement(2));
    EndConnection();
    SendAll(5, 5);
    const Clock::time_point before = Clock::now();
    AwaitNext();
    ASSERT_TRUE(Eventually(
        [&]
        {
            m_client->ProcessMessages(false);
            m_stream.Take(Peer().ReceivePending());
            return m_stream.Numbers().size() >= 3;
        }));
    EXPECT_GE(Clock::now() - before, std::chrono::milliseconds(3000));
    SendAll(6, 6);
    EXPECT_EQ(Received(4), (Numbers{3, 4, 5, 6}));
    m_listener.Close();
    EXPECT_EQ(ReceivedInTheEnd(), (Numbers{3, 4, 5, 6}));
    EXPECT_FALSE(m_client->Welcomed());
}

TEST_F(HostDelivery, ASecondSilentReceiverGetsOnlyWhatTheFirstHasNotHadAndALateWelcomeCounts)
{
    Say(Welcome(0));
    SendAll(1, 2);
    Received(2);
    EndConnection();
    AwaitNext();
    const auto await = [&](std::size_t count)
    {
        ASSERT_TRUE(Eventually(
            [&]
            {
                m_client->ProcessMessages(false);
                m_stream.Take(Peer().ReceivePending());
                return m_stream.Numbers().size() >= count;
            }));
    };
    await(2);
    EndConnection();
    SendAll(3, 3);
    AwaitNext();
    await(1);
    EXPECT_EQ(m_stream.Numbers(), (Numbers{3}));
    EndConnection();
    AwaitNext();
    Say(Welcome(0));
    EXPECT_EQ(Received(3), (Numbers{1, 2, 3})) << "who keeps account gets all";
}

/// So many bytes, sent by a client whose turns they take.
std::string ReceivedDuringTurns(MPISocketClientC& client, CRawConnection& peer, std::size_t size)
{
    std::string bytes;
    EXPECT_TRUE(Eventually(
        [&]
        {
            client.ProcessMessages(false);
            bytes += peer.ReceivePending();
            return bytes.size() >= size;
        }));
    return bytes;
}

TEST_F(HostDelivery, WhatIsNoNotificationGoesOutOnceWhoeverGetsTheRestAgain)
{
    BAtomC atom(7);
    Received(0);
    Say(Welcome(0));
    SendAll(1, 1);
    ASSERT_TRUE(m_client->SendMessageElement(&atom));
    SendAll(2, 2);
    const std::string mixed = Notification(1) + "i7e" + Notification(2);
    EXPECT_EQ(ReceivedDuringTurns(*m_client, Peer(), mixed.size()), mixed);
    EndConnection();
    AwaitNext(); // to one that stays silent
    const std::string both = Notification(1) + Notification(2);
    EXPECT_EQ(ReceivedDuringTurns(*m_client, Peer(), both.size()), both);
    ASSERT_TRUE(m_client->SendMessageElement(&atom));
    SendAll(3, 3);
    EXPECT_EQ(ReceivedDuringTurns(*m_client, Peer(), 3 + Notification(3).size()), "i7e" + Notification(3));
    EndConnection();
    SendAll(4, 4);
    AwaitNext(); // to another
    EXPECT_EQ(ReceivedDuringTurns(*m_client, Peer(), Notification(4).size()), Notification(4));
    EndConnection();
    AwaitNext();
    Say(Welcome(0));
    EXPECT_EQ(Received(4), (Numbers{1, 2, 3, 4})) << "who keeps account gets all notifications";
}

} // namespace
