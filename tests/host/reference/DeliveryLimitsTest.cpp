// How much a client keeps, how it stands, and how long it waits.
#include <MPI/BEncoderC.h>

#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <thread>
#include <utility>

#include "host/reference/DeliveryFixture.h"

namespace
{

using namespace HostTest;
using Clock = std::chrono::steady_clock;

bool NoDelay(int descriptor)
{
    int on = 0;
    socklen_t size = sizeof(on);
    EXPECT_EQ(getsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, &size), 0);
    return on != 0;
}

TEST_F(HostDelivery, KeepsNoMoreThanOneMebibyte)
{
    Say(Welcome(0));
    std::uint64_t number = 1;
    while (m_client->VerifyConnection())
    {
        ASSERT_TRUE(Send(number, 1000));
        ASSERT_LT(number * 1000, 2 * kOutboxBytes);
        ++number;
        Peer().ReceivePending();
    }
    EXPECT_GT(number * 1100, kOutboxBytes - 65536);
    EXPECT_LT(number * 1000, kOutboxBytes - 65536 + 2000);
    while (m_client->WaitingCount() > 0)
    {
        Peer().ReceivePending();
        m_client->ProcessMessages(false);
    }
    EXPECT_FALSE(m_client->VerifyConnection()) << "the receiver has all of it, but has not said so";
    Peer().Send(Acknowledgement(static_cast<std::int64_t>(number) - 1));
    EXPECT_TRUE(Eventually([&] { return m_client->VerifyConnection(); }));
    EXPECT_EQ(m_client->UnacknowledgedCount(), 0u);
}

TEST_F(HostDelivery, KeepsNoMoreDuringAnOutage)
{
    Say(Welcome(0));
    m_listener.Close();
    Peer().Close();
    std::uint64_t number = 1;
    while (m_client->VerifyConnection())
    {
        ASSERT_TRUE(Send(number, 1000));
        ASSERT_LT(number * 1000, 2 * kOutboxBytes);
        ++number;
    }
    EXPECT_LE(m_client->BytesWaiting(), kOutboxBytes);
    EXPECT_FALSE(m_client->VerifyConnection());
}

TEST_F(HostDelivery, AnIdleClientsTurnsConnectSendAgainAndHear)
{
    Say(Welcome(0));
    SendAll(1, 3);
    Received(3);
    EndConnection();
    AwaitNext();
    Peer().Send(Welcome(1));
    EXPECT_TRUE(Eventually(
        [&]
        {
            m_client->ProcessMessages(false);
            m_stream.Take(Peer().ReceivePending());
            return m_stream.Numbers() == Numbers{2, 3};
        }));
    Peer().Send(Acknowledgement(3));
    EXPECT_TRUE(Eventually(
        [&]
        {
            m_client->ProcessMessages(false);
            return m_client->UnacknowledgedCount() == 0;
        }));
}

TEST_F(HostDelivery, IsWithoutDelayUntilWelcomed)
{
    EXPECT_TRUE(NoDelay(m_client->Descriptor()));
    Say(Welcome(0));
    EXPECT_FALSE(NoDelay(m_client->Descriptor()));
    EndConnection();
    AwaitNext();
    EXPECT_TRUE(NoDelay(m_client->Descriptor()));
    Say(Welcome(0));
    EXPECT_FALSE(NoDelay(m_client->Descriptor()));
}

TEST_F(HostDelivery, CountsWhatWaitsWhatWasSentAndWhatIsNotAcknowledged)
{
    EXPECT_EQ(m_client->WaitingCount(), 0u);
    EXPECT_EQ(m_client->SentCount(), 0u);
    EXPECT_EQ(m_client->UnacknowledgedCount(), 0u);
    SendAll(1, 3);
    EXPECT_EQ(m_client->WaitingCount(), 0u);
    EXPECT_EQ(m_client->SentCount(), 3u);
    EXPECT_EQ(m_client->UnacknowledgedCount(), 3u);
    Say(Welcome(1));
    EXPECT_EQ(m_client->UnacknowledgedCount(), 2u);
    EndConnection();
    SendAll(4, 4);
    EXPECT_EQ(m_client->SentCount(), 3u);
    EXPECT_EQ(m_client->UnacknowledgedCount(), 3u);
}

TEST_F(HostDelivery, WaitUntilAcknowledgedIsTrueAtOnceIfNothingWasSent)
{
    EXPECT_TRUE(m_client->WaitUntilAcknowledged(0));
    m_client->Destroy();
    EXPECT_TRUE(m_client->WaitUntilAcknowledged(30000));
}

TEST_F(HostDelivery, WaitUntilAcknowledgedEndsWithTheTime)
{
    SendAll(1, 1);
    const Clock::time_point before = Clock::now();
    EXPECT_FALSE(m_client->WaitUntilAcknowledged(50));
    EXPECT_GE(Clock::now() - before, std::chrono::milliseconds(50));
    EXPECT_FALSE(m_client->WaitUntilAcknowledged(0));
}

/// Does something when it first waits.
class Waiting : public MPISocketClientC
{
public:
    Waiting() : MPISocketClientC(true) {}
    int GetExtraReader() override
    {
        if (const auto now = std::exchange(onWait, nullptr))
            now();
        return -1;
    }

    std::function<void()> onWait;
};

TEST_F(HostDelivery, WaitUntilAcknowledgedWaitsWithoutLimitIfTold)
{
    Waiting client;
    ASSERT_TRUE(client.Connect("127.0.0.1", m_listener.Port(), 30000));
    AcceptNext();
    ASSERT_TRUE(client.SendNotification("RaiseError", nullptr));
    client.onWait = [this] { Peer().Send(Welcome(0) + Acknowledgement(1)); };
    EXPECT_TRUE(client.WaitUntilAcknowledged(-1));
    EXPECT_FALSE(client.onWait) << "it has waited";
}

TEST_F(HostDelivery, WaitUntilAcknowledgedSeesItThroughALoss)
{
    SendAll(1, 2);
    Say(Welcome(0));
    Received(2);
    std::thread receiver(
        [&]
        {
            Peer().Close();
            AcceptNext();
            Peer().Send(Welcome(1));
            Peer().Receive(58 + Notification(2).size());
            Peer().Send(Acknowledgement(2));
        });
    EXPECT_TRUE(m_client->WaitUntilAcknowledged(30000));
    receiver.join();
}

TEST_F(HostDelivery, WaitUntilAcknowledgedGivesUpIfNobodyConnectsAgain)
{
    Start(false);
    Say(Welcome(0));
    SendAll(1, 1);
    Peer().Close();
    EXPECT_FALSE(m_client->WaitUntilAcknowledged(-1));
}

TEST_F(HostDelivery, WaitUntilAcknowledgedOnlyLooksFromWithinATurn)
{
    bool all = true;
    m_client->RegisterCallback("ask", [&](BListC*) { all = m_client->WaitUntilAcknowledged(-1); });
    SendAll(1, 1);
    Say("d4:argsle4:name3:aske");
    EXPECT_FALSE(all);
}

TEST_F(HostDelivery, AClientThatDoesNotConnectAgainByItselfGoesByTheConnectionAlone)
{
    Start(false);
    Say(Welcome(0));
    SendAll(1, 2);
    Received(2);
    Peer().Close();
    EXPECT_TRUE(Eventually([&] { return !m_client->VerifyConnection(); }));
    EXPECT_FALSE(Send(3));
    ASSERT_TRUE(m_client->Reconnect(30000));
    AcceptNext();
    Say(Welcome(0));
    EXPECT_EQ(Received(2), (Numbers{1, 2}));
}

TEST_F(HostDelivery, DestroyForgetsWhatIsKept)
{
    Say(Welcome(0));
    SendAll(1, 2);
    m_client->Destroy();
    EXPECT_EQ(m_client->UnacknowledgedCount(), 0u);
    EXPECT_FALSE(m_client->VerifyConnection());
    ASSERT_TRUE(m_client->Connect("127.0.0.1", m_listener.Port(), 30000));
    AcceptNext();
    Received(0);
    Say(Welcome(0));
    SendAll(3, 3);
    EXPECT_EQ(ReceivedInTheEnd(), (Numbers{3}));
}

} // namespace
