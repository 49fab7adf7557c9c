// Notifications that nobody can be sure of any more: they are counted, and never said to be acknowledged.
#include <MPI/MPISocketServerC.h>

#include <gtest/gtest.h>
#include <string>

#include "host/reference/DeliveryFixture.h"

namespace
{

using namespace HostTest;

class HostGivenUp : public HostDelivery
{
protected:
    /// One connection after the other that nobody welcomes, and the next one.
    void SendOverConnections(std::initializer_list<std::pair<std::uint64_t, std::uint64_t>> ranges)
    {
        for (const auto& range : ranges)
        {
            ASSERT_TRUE(Eventually([&] { return m_client->VerifyConnection(); }));
            SendAll(range.first, range.second);
            Received(static_cast<std::size_t>(range.second - range.first + 1));
            EndConnection();
            AwaitNext();
        }
    }

    /// Acknowledges all, and tells what becomes of that.
    void AcknowledgeAll(std::uint64_t last)
    {
        Say(Acknowledgement(static_cast<std::int64_t>(last)));
        EXPECT_EQ(m_client->UnacknowledgedCount(), 0u);
        EXPECT_EQ(m_client->WaitUntilAcknowledged(0), m_client->GivenUpCount() == 0);
    }
};

TEST_F(HostGivenUp, WhatCannotBeSentInOrderAnyMoreCounts)
{
    SendOverConnections({{1, 5}});
    ASSERT_TRUE(Eventually([&] { return m_client->VerifyConnection(); }));
    SendAll(6, 6);
    EXPECT_EQ(m_client->GivenUpCount(), 0u);
    EXPECT_EQ(m_client->UnacknowledgedCount(), 6u);
    Say(Welcome(2));
    EXPECT_EQ(m_client->GivenUpCount(), 3u) << "3, 4, 5";
    EXPECT_EQ(m_client->UnacknowledgedCount(), 1u);
    EXPECT_EQ(ReceivedInTheEnd(), (Numbers{6}));
    AcknowledgeAll(6);
    EXPECT_FALSE(m_client->WaitUntilAcknowledged(-1)) << "never again";
}

TEST_F(HostGivenUp, WhatTheReceiverHasAppliedDoesNot)
{
    SendOverConnections({{1, 5}});
    ASSERT_TRUE(Eventually([&] { return m_client->VerifyConnection(); }));
    SendAll(6, 6);
    Say(Welcome(5));
    EXPECT_EQ(m_client->GivenUpCount(), 0u);
    AcknowledgeAll(6);
}

TEST_F(HostGivenUp, WhatIsSentAgainDoesNot)
{
    SendOverConnections({{1, 5}, {6, 8}});
    Say(Welcome(2));
    EXPECT_EQ(Received(6), (Numbers{3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(m_client->GivenUpCount(), 0u);
    AcknowledgeAll(8);
}

TEST_F(HostGivenUp, AWelcomeDoesNotVouchForWhatAnEarlierConnectionHad)
{
    SendOverConnections({{1, 5}, {6, 8}});
    Say(Welcome(7));
    EXPECT_EQ(m_client->GivenUpCount(), 5u)
        << "who applied 7 had 6 before it, but perhaps nothing before that";
    EXPECT_EQ(m_client->UnacknowledgedCount(), 1u);
    EXPECT_EQ(Received(1), (Numbers{8}));
    AcknowledgeAll(8);
}

TEST_F(HostGivenUp, BetweenTwoGapsNothingIsSure)
{
    SendOverConnections({{1, 2}, {3, 4}, {5, 6}});
    Say(Welcome(3));
    EXPECT_EQ(m_client->GivenUpCount(), 3u);
    EXPECT_EQ(Received(3), (Numbers{4, 5, 6}));
    AcknowledgeAll(6);
}

TEST_F(HostGivenUp, ALateWelcomeDoesNotVouchForItEither)
{
    SendOverConnections({{1, 5}});
    ASSERT_TRUE(Eventually([&] { return m_client->VerifyConnection(); }));
    SendAll(6, 7);
    Say(Welcome(7));
    EXPECT_EQ(m_client->GivenUpCount(), 5u);
    EXPECT_EQ(m_client->UnacknowledgedCount(), 0u);
    EXPECT_FALSE(m_client->WaitUntilAcknowledged(0));
}

TEST_F(HostGivenUp, WhatWasForgottenForWantOfRoomCounts)
{
    std::uint64_t number = 0;
    while (number * 1000 < 2 * kOutboxBytes)
    {
        ASSERT_TRUE(m_client->VerifyConnection() && Send(++number, 1000));
        Peer().ReceivePending();
    }
    EXPECT_EQ(m_client->GivenUpCount(), 0u);
    EndConnection();
    AwaitNext();
    Peer().Send(Welcome(0));
    std::string received;
    EXPECT_TRUE(Eventually(
        [&]
        {
            m_client->ProcessMessages(false);
            received += Peer().ReceivePending();
            return m_client->Welcomed() && m_client->WaitingCount() == 0;
        }));
    const std::string begin = "d4:argsli";
    ASSERT_EQ(received.substr(0, begin.size()), begin);
    const std::uint64_t first = std::stoull(received.substr(begin.size(), 10));
    EXPECT_GT(first, number / 4);
    EXPECT_EQ(m_client->GivenUpCount(), first - 1);
    EXPECT_EQ(m_client->UnacknowledgedCount(), number - first + 1);
    AcknowledgeAll(number);
}

TEST_F(HostGivenUp, WhatOneSilentReceiverHadAndTheNextDidNotCounts)
{
    Say(Welcome(0));
    SendAll(1, 2);
    Received(2);
    Say(Acknowledgement(1));
    for (const std::uint64_t last : {std::uint64_t{3}, std::uint64_t{4}})
    {
        EndConnection();
        SendAll(last, last);
        AwaitNext();
        ASSERT_TRUE(Eventually(
            [&]
            {
                m_client->ProcessMessages(false);
                m_stream.Take(Peer().ReceivePending());
                return !m_stream.Numbers().empty() && m_stream.Numbers().back() == last;
            }));
    }
    EXPECT_EQ(m_stream.Numbers(), (Numbers{4}));
    Say(Welcome(4));
    EXPECT_EQ(m_client->GivenUpCount(), 2u) << "2 and 3";
    EXPECT_EQ(m_client->UnacknowledgedCount(), 0u);
}

TEST_F(HostGivenUp, WhatDestroyForgetsCounts)
{
    Say(Welcome(0));
    SendAll(1, 3);
    Received(3);
    Say(Acknowledgement(1));
    m_client->Destroy();
    EXPECT_EQ(m_client->GivenUpCount(), 2u);
    EXPECT_EQ(m_client->UnacknowledgedCount(), 0u);
    EXPECT_FALSE(m_client->WaitUntilAcknowledged(0));
}

TEST_F(HostGivenUp, ALossWithinAMessageThatWasNotWelcomedKeepsCountToo)
{
    SendOverConnections({{1, 3}});
    ASSERT_TRUE(Eventually([&] { return m_client->VerifyConnection(); }));
    LetTheSystemTakeLittle();
    ASSERT_TRUE(Send(4, 65000));
    std::uint64_t number = 4;
    while (m_client->SentCount() == number)
        ASSERT_TRUE(m_client->VerifyConnection() && Send(++number, 65000));
    Say(Welcome(1));
    EXPECT_EQ(m_client->GivenUpCount(), 2u) << "2 and 3";
    EXPECT_EQ(m_client->UnacknowledgedCount(), number - 3);
}

/// Keeps account of the one session there is.
class Account : public MPIServerHandlerC
{
public:
    void PeerIntroduced(const MPIPeerC& peer) override { server->Welcome(peer.connection, Applied()); }
    bool NotificationReceived(const MPIPeerC&, const MPINotificationC& notification) override
    {
        if (notification.number > Applied())
            numbers.push_back(notification.number);
        return true;
    }
    void BatchEnded(const MPIPeerC& peer) override { server->Acknowledge(peer.connection, Applied()); }
    void InputRefused(const MPIPeerC&, std::uint64_t, const std::string& reason) override
    {
        ADD_FAILURE() << reason;
    }
    std::uint64_t Applied() const { return numbers.empty() ? 0 : numbers.back(); }

    MPISocketServerC* server = nullptr;
    Numbers numbers;
};

TEST_F(HostGivenUp, NothingIsLostByConnectingAnewToAServerThatHasNotReadYet)
{
    Account account;
    MPISocketServerC server(account);
    account.server = &server;
    ASSERT_TRUE(server.Listen(0)) << server.Error();
    m_client = std::make_unique<MPISocketClientC>(true);
    ASSERT_TRUE(m_client->Connect("127.0.0.1", server.Port(), 30000));
    SendAll(1, 1500); // more than a batch, and no more than the server's system takes
    ASSERT_TRUE(m_client->Connect("127.0.0.1", server.Port(), 30000));
    SendAll(1501, 1501);
    EXPECT_TRUE(Eventually(
        [&]
        {
            server.Serve(0);
            m_client->ProcessMessages(false);
            return m_client->UnacknowledgedCount() == 0;
        }));
    Numbers all;
    for (std::uint64_t number = 1; number <= 1501; ++number)
        all.push_back(number);
    EXPECT_EQ(account.numbers, all);
    EXPECT_EQ(m_client->GivenUpCount(), 0u);
    EXPECT_TRUE(m_client->WaitUntilAcknowledged(0));
}

} // namespace
