// Confirmed delivery, which our own host's client adds to the contract.
#include <MPI/BAtomC.h>
#include <MPI/BEncoderC.h>
#include <MPI/BListC.h>
#include <MPI/MPISocketClientC.h>

#include <chrono>
#include <gtest/gtest.h>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <utility>
#include <vector>

#include "host/SessionPeer.h"

namespace
{

using namespace HostTest;
using Clock = std::chrono::steady_clock;
using Numbers = std::vector<std::uint64_t>;

constexpr std::size_t kOutboxBytes = 1048576;

/// A client whose notifications carry their own number, and the receiver's end of its connections.
class HostDelivery : public testing::Test
{
protected:
    HostDelivery() { Start(true); }

    void Start(bool reconnect)
    {
        m_client = std::make_unique<MPISocketClientC>(reconnect);
        EXPECT_TRUE(m_client->Connect("127.0.0.1", m_listener.Port(), 30000));
        AcceptNext();
    }

    void AcceptNext()
    {
        m_peers.push_back(m_listener.Accept());
        m_stream = CSessionStream();
    }

    CRawConnection& Peer() { return m_peers.back(); }

    bool Send(std::uint64_t number, std::size_t textBytes = 0)
    {
        BListC arguments;
        arguments.Append(std::make_unique<BAtomC>(static_cast<std::int64_t>(number), &arguments));
        if (textBytes > 0)
            arguments.Append(std::make_unique<BAtomC>(std::string(textBytes, 'x'), &arguments));
        return m_client->SendNotification("Number", &arguments);
    }

    void SendAll(std::uint64_t first, std::uint64_t last)
    {
        for (std::uint64_t number = first; number <= last; ++number)
            EXPECT_TRUE(m_client->VerifyConnection() && Send(number)) << number;
    }

    /// Says something to the client and has it heard.
    void Say(const std::string& bytes)
    {
        const std::uint64_t before = m_client->UnacknowledgedCount();
        Peer().Send(bytes);
        ASSERT_TRUE(HasInput(m_client->Descriptor(), 30000));
        m_client->ProcessMessages(false);
        EXPECT_LE(m_client->UnacknowledgedCount(), before);
    }

    /// The numbers that have come over this connection, once there are so many or the client has had its
    /// time.
    Numbers Received(std::size_t count)
    {
        EXPECT_TRUE(Eventually(
            [&]
            {
                m_stream.Take(Peer().ReceivePending());
                return HasFailure() || (m_stream.Numbers().size() >= count && !m_stream.Session().empty());
            }));
        return m_stream.Numbers();
    }

    /// Lets the client do what it wants to, for long enough, and tells what has come.
    Numbers ReceivedInTheEnd()
    {
        for (int turn = 0; turn < 20; ++turn)
        {
            m_client->ProcessMessages(false);
            m_stream.Take(Peer().ReceivePending());
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return m_stream.Numbers();
    }

    void LetTheSystemTakeLittle()
    {
        const int bytes = 8192;
        ASSERT_EQ(setsockopt(m_client->Descriptor(), SOL_SOCKET, SO_SNDBUF, &bytes, sizeof(bytes)), 0);
    }

    void EndConnection()
    {
        Peer().Close();
        ASSERT_TRUE(Eventually(
            [&]
            {
                m_client->ProcessMessages(false);
                return m_client->Descriptor() < 0 || m_listener.HasConnection();
            }));
    }

    /// The next connection, made by the client's own turns.
    void AwaitNext()
    {
        ASSERT_TRUE(Eventually(
            [&]
            {
                m_client->ProcessMessages(false);
                return m_listener.HasConnection();
            }));
        AcceptNext();
        Received(0);
    }

    CRawListener m_listener;
    std::vector<CRawConnection> m_peers;
    CSessionStream m_stream; // of the last of them
    std::unique_ptr<MPISocketClientC> m_client;
};

bool NoDelay(int descriptor)
{
    int on = 0;
    socklen_t size = sizeof(on);
    EXPECT_EQ(getsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, &size), 0);
    return on != 0;
}

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

TEST_F(HostDelivery, ABatchIsSentAtItsEnd)
{
    m_client->BeginBatch();
    SendAll(1, 100);
    EXPECT_EQ(m_client->SentCount(), 0u);
    m_client->BeginBatch();
    SendAll(101, 101);
    m_client->EndBatch();
    EXPECT_EQ(m_client->SentCount(), 0u) << "of the outer one";
    m_client->EndBatch();
    EXPECT_EQ(m_client->SentCount(), 101u);
    EXPECT_EQ(Received(101).size(), 101u);
    m_client->EndBatch(); // one too many does no harm
    SendAll(102, 102);
    EXPECT_EQ(m_client->SentCount(), 102u);
}

TEST_F(HostDelivery, ANoHoldsToTheEndOfABatch)
{
    Say(Welcome(0));
    std::int64_t number = 0;
    while (m_client->VerifyConnection())
        ASSERT_TRUE(Send(static_cast<std::uint64_t>(++number), 1000));
    while (m_client->WaitingCount() > 0)
    {
        Peer().ReceivePending();
        m_client->ProcessMessages(false);
    }
    m_client->BeginBatch();
    ASSERT_FALSE(m_client->VerifyConnection());
    Say(Acknowledgement(number));
    ASSERT_TRUE(m_client->HasRoom());
    for (int milliseconds = 0; milliseconds < 300; milliseconds += 50)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_FALSE(m_client->VerifyConnection());
    }
    m_client->EndBatch();
    EXPECT_TRUE(Eventually([&] { return m_client->VerifyConnection(); }));
}

TEST_F(HostDelivery, ANoForWantOfRoomHoldsForAMomentOnly)
{
    Say(Welcome(0));
    std::int64_t number = 0;
    Clock::time_point before = Clock::now();
    while (m_client->VerifyConnection())
    {
        ASSERT_TRUE(Send(static_cast<std::uint64_t>(++number), 1000));
        Peer().ReceivePending();
        before = Clock::now();
    }
    Peer().Send(Acknowledgement(number));
    while (!m_client->VerifyConnection())
    {
    }
    EXPECT_GE(Clock::now() - before, std::chrono::milliseconds(5));
}

TEST_F(HostDelivery, ALargeBatchIsSentInLargePieces)
{
    m_client->BeginBatch();
    for (std::uint64_t number = 1; number <= 1000; ++number)
    {
        ASSERT_TRUE(m_client->VerifyConnection() && Send(number, 10000));
        Peer().ReceivePending();
    }
    EXPECT_GT(m_client->SentCount(), 900u);
    m_client->EndBatch();
}

/// Sends another notification on the way of the first.
class Interrupting : public MPISocketClientC
{
public:
    Interrupting() : MPISocketClientC(true) {}
    bool SendMessage(BEncoderC* message) override
    {
        const bool first = std::exchange(interrupt, false);
        EXPECT_TRUE(!first || SendNotification("inner", nullptr));
        return MPISocketClientC::SendMessage(message);
    }
    void DataSent() override
    {
        const bool first = std::exchange(answer, false);
        EXPECT_TRUE(!first || SendNotification("answer", nullptr));
    }

    bool interrupt = false;
    bool answer = false;
};

TEST_F(HostDelivery, NumbersGoUpWhateverIsSentFromWithinASending)
{
    auto client = std::make_unique<Interrupting>();
    ASSERT_TRUE(client->Connect("127.0.0.1", m_listener.Port(), 30000));
    CRawConnection peer = m_listener.Accept();
    client->answer = true;
    EXPECT_TRUE(client->SendNotification("first", nullptr));
    client->interrupt = true;
    EXPECT_FALSE(client->SendNotification("outer", nullptr)) << "its number was taken on the way";
    EXPECT_TRUE(client->SendNotification("last", nullptr));
    client.reset();
    EXPECT_EQ(peer.ReceiveToEnd().substr(58), "d4:argsle4:name5:first3:seqi1ee"
                                              "d4:argsle4:name6:answer3:seqi2ee"
                                              "d4:argsle4:name5:inner3:seqi3ee"
                                              "d4:argsle4:name4:last3:seqi4ee");
}

TEST_F(HostDelivery, TheDestructorReadsWhatIsPendingAndCutsNothingOff)
{
    Say(Welcome(0));
    LetTheSystemTakeLittle();
    std::uint64_t number = 1;
    while (m_client->BytesWaiting() == 0 && m_client->VerifyConnection())
        ASSERT_TRUE(Send(number++, 1000));
    Peer().Send(Acknowledgement(0));
    ASSERT_TRUE(HasInput(m_client->Descriptor(), 30000));
    const std::uint64_t sent = m_client->SentCount();
    m_client.reset();
    bool broken = true;
    const std::string all = Peer().ReceiveToEnd(&broken);
    EXPECT_FALSE(broken);
    EXPECT_NE(all.find("3:seqi" + std::to_string(sent) + "ee"), std::string::npos);
}

} // namespace
