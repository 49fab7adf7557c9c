// Confirmed delivery, which our own host's client adds to the contract: introduction, numbers, and receivers
// that say nothing.
#include <gtest/gtest.h>
#include <string>

#include "host/reference/DeliveryFixture.h"

namespace
{

using namespace HostTest;

TEST_F(HostDelivery, EveryConnectionBeginsWithTheSameIntroduction)
{
    Received(0);
    const std::string session = m_stream.Session();
    EXPECT_EQ(session.size(), 32u);
    EndConnection();
    AwaitNext();
    EXPECT_EQ(m_stream.Session(), session);
    Start(true);
    Received(0);
    EXPECT_NE(m_stream.Session(), session) << "another client";
}

TEST_F(HostDelivery, NotificationsAreNumberedOverTheLifeOfTheClient)
{
    SendAll(1, 3);
    EXPECT_EQ(Received(3), (Numbers{1, 2, 3}));
    EndConnection();
    AwaitNext();
    ASSERT_TRUE(Eventually([&] { return m_client->VerifyConnection(); }));
    SendAll(4, 5);
    EXPECT_EQ(Received(2), (Numbers{4, 5}));
}

TEST_F(HostDelivery, ANotificationHasItsNumberBehindItsName)
{
    EXPECT_TRUE(m_client->SendNotification("RaiseError", nullptr));
    m_client.reset();
    const std::string bytes = Peer().ReceiveToEnd();
    EXPECT_EQ(bytes.substr(58), "d4:argsle4:name10:RaiseError3:seqi1ee");
}

TEST_F(HostDelivery, OnlyAnAcceptedNotificationUsesUpANumber)
{
    EXPECT_FALSE(Send(1, 70000));
    EXPECT_TRUE(Send(1));
    BAtomC atom(7);
    EXPECT_TRUE(m_client->SendMessageElement(&atom)) << "not a notification";
    EXPECT_TRUE(Send(2));
    m_client.reset();
    EXPECT_EQ(Peer().ReceiveToEnd().substr(58), Notification(1) + "i7e" + Notification(2));
}

TEST_F(HostDelivery, BeforeAWelcomeVerifyConnectionIsTheSocketsTruth)
{
    SendAll(1, 1);
    m_listener.Close();
    Peer().Close();
    EXPECT_TRUE(Eventually([&] { return !m_client->VerifyConnection(); }));
    EXPECT_FALSE(Send(2));
    EXPECT_FALSE(m_client->Welcomed());
}

TEST_F(HostDelivery, AReceiverThatDoesNotWelcomeGetsNothingTwice)
{
    SendAll(1, 3);
    Received(3);
    for (std::uint64_t number = 4; number < 7; ++number)
    {
        EndConnection();
        AwaitNext();
        ASSERT_TRUE(Eventually([&] { return m_client->VerifyConnection(); }));
        EXPECT_TRUE(Send(number));
        EXPECT_EQ(Received(1), (Numbers{number}));
        EXPECT_EQ(ReceivedInTheEnd(), (Numbers{number}));
    }
}

TEST_F(HostDelivery, AReceiverThatDoesNotWelcomeIsSentAnyAmount)
{
    for (std::size_t sent = 0; sent < 4 * kOutboxBytes; sent += 1000)
    {
        ASSERT_TRUE(m_client->VerifyConnection());
        ASSERT_TRUE(Send(1, 1000));
        Peer().ReceivePending();
    }
}

TEST_F(HostDelivery, AWelcomeOfTheFirstConnectionComesAtAnyTime)
{
    SendAll(1, 5);
    Say(Welcome(2));
    EXPECT_TRUE(m_client->Welcomed());
    EXPECT_EQ(m_client->UnacknowledgedCount(), 3u);
    SendAll(6, 6);
    EXPECT_EQ(ReceivedInTheEnd(), (Numbers{1, 2, 3, 4, 5, 6})) << "nothing again over the same connection";
    EndConnection();
    AwaitNext();
    Say(Welcome(4));
    EXPECT_EQ(Received(2), (Numbers{5, 6}));
}

TEST_F(HostDelivery, WhatWasSentBeforeTheFirstWelcomeIsSentAgainIfNothingElseWas)
{
    SendAll(1, 5);
    Received(5);
    EndConnection();
    AwaitNext();
    Say(Welcome(2));
    EXPECT_EQ(Received(3), (Numbers{3, 4, 5}));
    SendAll(6, 6);
    EXPECT_EQ(Received(4), (Numbers{3, 4, 5, 6}));
}

TEST_F(HostDelivery, WhatWasSentBeforeTheFirstWelcomeIsNotSentOutOfOrder)
{
    SendAll(1, 5);
    Received(5);
    EndConnection();
    AwaitNext();
    ASSERT_TRUE(Eventually([&] { return m_client->VerifyConnection(); }));
    SendAll(6, 6);
    Received(1);
    Say(Welcome(0));
    SendAll(7, 7);
    EXPECT_EQ(ReceivedInTheEnd(), (Numbers{6, 7}));
}

} // namespace
