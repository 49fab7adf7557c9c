#include <MPI/BAtomC.h>
#include <MPI/BDecoderC.h>
#include <MPI/BDictionaryC.h>
#include <MPI/BEncoderC.h>
#include <MPI/BListC.h>
#include <MPI/MPISocketClientC.h>

#include <csignal>
#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <memory>
#include <string>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "host/connections/RawPeer.h"

namespace
{

using HostTest::CRawConnection;
using HostTest::CRawListener;
using HostTest::Eventually;
using HostTest::WithoutSession;

constexpr std::size_t kLargeText = 60000;
constexpr int kMoreThanAnySystemBuffers = 2000; // large messages

/// A client with a peer that reads when it is told to.
class HostClientSending : public testing::Test
{
protected:
    HostClientSending() : m_client(std::make_unique<MPISocketClientC>(true))
    {
        EXPECT_TRUE(m_client->Connect("localhost", m_listener.Port(), 30000));
        m_peers.push_back(m_listener.Accept());
    }

    CRawConnection& Peer() { return m_peers.back(); }

    bool SendNumber(int number, std::size_t textBytes = 0)
    {
        BListC arguments;
        arguments.Append(std::make_unique<BAtomC>(number, &arguments));
        arguments.Append(std::make_unique<BAtomC>(std::string(textBytes, 'x'), &arguments));
        BEncoderC encoder;
        encoder.Element(arguments);
        const bool accepted = m_client->SendNotification("Number", &arguments);
        m_acceptedBytes +=
            accepted ? std::string("d4:args4:name6:Numbere").size() + encoder.Bytes().size() : 0;
        return accepted;
    }

    /// Sends large messages until the system has no room, and returns how many that were.
    int FillSystem()
    {
        int count = 0;
        while (m_client->BytesWaiting() == 0 && count < kMoreThanAnySystemBuffers)
        {
            EXPECT_TRUE(m_client->VerifyConnection());
            EXPECT_TRUE(SendNumber(count, kLargeText));
            ++count;
        }
        EXPECT_GT(m_client->BytesWaiting(), 0u);
        return count;
    }

    /// Sends large messages until VerifyConnection says no, and returns how many that were.
    int FillUp()
    {
        int count = 0;
        while (m_client->VerifyConnection() && count < kMoreThanAnySystemBuffers)
        {
            EXPECT_TRUE(SendNumber(count, kLargeText));
            ++count;
        }
        return count;
    }

    /// All that the system of the client still has for this connection, up to wherever that ends.
    std::string DrainSystem()
    {
        std::string all;
        EXPECT_TRUE(Eventually(
            [&]
            {
                all += Peer().ReceivePending();
                int unsent = 0;
                return ioctl(m_client->Descriptor(), SIOCOUTQ, &unsent) == 0 && unsent == 0;
            }));
        return all + Peer().ReceivePending();
    }

    CRawListener m_listener;
    std::vector<CRawConnection> m_peers;
    std::unique_ptr<MPISocketClientC> m_client;
    std::size_t m_acceptedBytes = 0; // of the messages for which sending was true
};

/// The numbers of the messages in a stream.
struct SNumbers
{
    explicit SNumbers(const std::string& stream)
    {
        BDecoderC decoder;
        for (std::size_t begin = 0; begin < stream.size() && !decoder.Failed();)
        {
            begin += decoder.Feed(stream.data() + begin, stream.size() - begin);
            const std::unique_ptr<BDictionaryC> message = decoder.TakeMessage();
            if (message != nullptr && message->Find("name")->AsAtom()->Text() == "Number")
                Add(static_cast<int>(message->Find("args")->AsList()->At(0)->AsAtom()->Integer()));
        }
        endsWithin = decoder.Incomplete();
        inOrder = inOrder && !decoder.Failed();
    }

    void Add(int number)
    {
        inOrder = inOrder && (first < 0 || number == last + 1);
        first = first < 0 ? number : first;
        last = number;
    }

    int first = -1;
    int last = -1;
    bool inOrder = true; // each message whole, and its number one more than the one before
    bool endsWithin = false;
};

std::string NumbersIn(const std::string& stream)
{
    const SNumbers numbers(stream);
    return std::to_string(numbers.first) + ".." + std::to_string(numbers.last) +
           (numbers.inOrder ? "" : " in disorder") + (numbers.endsWithin ? " and a part" : "");
}

std::string Range(int first, int last)
{
    return std::to_string(first) + ".." + std::to_string(last);
}

TEST_F(HostClientSending, ANotificationIsADictionaryOfNameAndArguments)
{
    BListC arguments;
    for (const int number : {265243, 2, 0})
        arguments.Append(std::make_unique<BAtomC>(number, &arguments));
    EXPECT_TRUE(m_client->SendNotification("RaiseError", &arguments));
    m_client.reset();
    EXPECT_EQ(WithoutSession(Peer().ReceiveToEnd()), "d4:argsli265243ei2ei0ee4:name10:RaiseErrore");
}

TEST_F(HostClientSending, ArgumentsAreBorrowed)
{
    BListC arguments;
    arguments.Append(std::make_unique<BAtomC>(1, &arguments));
    EXPECT_TRUE(m_client->SendNotification("a", &arguments));
    EXPECT_TRUE(m_client->SendNotification("b", &arguments));
    EXPECT_EQ(arguments.Size(), 1u);
    m_client.reset();
    EXPECT_EQ(WithoutSession(Peer().ReceiveToEnd()), "d4:argsli1ee4:name1:aed4:argsli1ee4:name1:be");
}

TEST_F(HostClientSending, NoArgumentsAreAnEmptyList)
{
    EXPECT_TRUE(m_client->SendNotification("a", nullptr));
    m_client.reset();
    EXPECT_EQ(WithoutSession(Peer().ReceiveToEnd()), "d4:argsle4:name1:ae");
}

TEST_F(HostClientSending, SendMessageElementSendsAnyElement)
{
    BDictionaryC message;
    message.Insert("welcome", std::make_unique<BAtomC>(7));
    EXPECT_TRUE(m_client->SendMessageElement(&message));
    m_client.reset();
    EXPECT_EQ(WithoutSession(Peer().ReceiveToEnd()), "d7:welcomei7ee");
}

TEST_F(HostClientSending, SendMessageSendsWhatAnEncoderHolds)
{
    BEncoderC encoder;
    encoder.BeginDictionary();
    encoder.End();
    EXPECT_TRUE(m_client->SendMessage(&encoder));
    EXPECT_TRUE(m_client->SendMessage(&encoder));
    m_client.reset();
    EXPECT_EQ(WithoutSession(Peer().ReceiveToEnd()), "dede");
}

TEST_F(HostClientSending, MessagesArriveWholeAndInOrder)
{
    for (int number = 0; number < 1000; ++number)
        ASSERT_TRUE(m_client->VerifyConnection() && SendNumber(number, static_cast<std::size_t>(number)));
    m_client.reset();
    EXPECT_EQ(NumbersIn(Peer().ReceiveToEnd()), "0..999");
}

TEST_F(HostClientSending, WhatTheSystemHasNoRoomForIsSentByVerifyConnection)
{
    const int count = FillSystem();
    std::string received;
    EXPECT_TRUE(Eventually(
        [&]
        {
            received += Peer().ReceivePending();
            return m_client->VerifyConnection() && m_client->BytesWaiting() == 0;
        }));
    m_client.reset();
    EXPECT_EQ(NumbersIn(received + Peer().ReceiveToEnd()), Range(0, count - 1));
}

TEST_F(HostClientSending, WhatTheSystemHasNoRoomForIsSentByProcessMessages)
{
    const int count = FillSystem();
    std::string received;
    EXPECT_TRUE(Eventually(
        [&]
        {
            received += Peer().ReceivePending();
            m_client->ProcessMessages(false);
            return m_client->BytesWaiting() == 0;
        }));
    m_client.reset();
    EXPECT_EQ(NumbersIn(received + Peer().ReceiveToEnd()), Range(0, count - 1));
}

TEST_F(HostClientSending, TheDescriptorTakesOutputWhenWhatWaitsCanGoOn)
{
    EXPECT_FALSE(m_client->Sending());
    FillSystem();
    EXPECT_TRUE(m_client->Sending());
    m_client->SetTimeout(20); // the peer does not read during the wait, so output may be a long way off
    EXPECT_TRUE(Eventually(
        [&]
        {
            Peer().ReceivePending();
            m_client->ProcessMessages(true); // waits for the descriptor to take output
            return !m_client->Sending();
        }));
}

TEST_F(HostClientSending, VerifyConnectionSaysNoWhenNoMoreCanBeKeptAndYesWhenThePeerHasRead)
{
    const int count = FillUp();
    ASSERT_LT(count, kMoreThanAnySystemBuffers);
    EXPECT_FALSE(m_client->VerifyConnection());
    EXPECT_TRUE(m_client->Connected()) << "the peer is there all the time";
    std::string received;
    EXPECT_TRUE(Eventually(
        [&]
        {
            received += Peer().ReceivePending();
            return m_client->VerifyConnection();
        }));
    EXPECT_TRUE(SendNumber(count));
    EXPECT_TRUE(Eventually(
        [&]
        {
            received += Peer().ReceivePending();
            return m_client->VerifyConnection() && m_client->BytesWaiting() == 0;
        }));
    m_client.reset();
    EXPECT_EQ(NumbersIn(received + Peer().ReceiveToEnd()), Range(0, count));
}

TEST_F(HostClientSending, AfterAYesTheLargestNotificationIsAccepted)
{
    const std::size_t around = std::string("d4:argsli0e65000:e4:name6:Number3:seqi10ee").size();
    while (m_client->VerifyConnection())
        ASSERT_TRUE(SendNumber(0, BDecoderC::kMaximumMessageBytes - around));
    EXPECT_FALSE(SendNumber(0, 600000)) << "beyond what may be sent at all";
}

TEST_F(HostClientSending, ADestroyTakesBackTheYesBeforeIt)
{
    EXPECT_TRUE(m_client->VerifyConnection());
    m_client->Destroy();
    EXPECT_FALSE(SendNumber(1));
    EXPECT_EQ(m_client->BytesWaiting(), 0u);
}

TEST_F(HostClientSending, MessagesThatTheDecoderWouldRefuseAreNotSent)
{
    EXPECT_FALSE(SendNumber(0, BDecoderC::kMaximumMessageBytes));
    BEncoderC deep;
    for (int level = 0; level < 9; ++level)
        deep.BeginList();
    for (int level = 0; level < 9; ++level)
        deep.End();
    EXPECT_FALSE(m_client->SendMessage(&deep));
    EXPECT_EQ(m_client->BytesWaiting(), 0u);
    EXPECT_TRUE(m_client->VerifyConnection());
    m_client.reset();
    EXPECT_EQ(WithoutSession(Peer().ReceiveToEnd()), "");
}

TEST_F(HostClientSending, NothingIsKeptWithoutAConnection)
{
    Peer().Close();
    ASSERT_TRUE(Eventually([&] { return !m_client->Connected(); }));
    EXPECT_FALSE(SendNumber(1));
    EXPECT_EQ(m_client->BytesWaiting(), 0u);
    ASSERT_TRUE(Eventually([&] { return m_client->VerifyConnection(); }));
    CRawConnection next = m_listener.Accept();
    EXPECT_TRUE(SendNumber(2));
    m_client.reset();
    EXPECT_EQ(NumbersIn(next.ReceiveToEnd()), "2..2");
}

TEST_F(HostClientSending, AMessageCutOffByALossStartsFromItsFirstByteOnTheNextConnection)
{
    const int count = FillUp();
    const SNumbers before(DrainSystem());
    ASSERT_EQ(before.first, 0);
    ASSERT_TRUE(before.inOrder);
    ASSERT_TRUE(before.endsWithin) << "the loss has to come within a message";
    Peer().Close();
    ASSERT_TRUE(Eventually([&] { return m_client->VerifyConnection() && m_listener.HasConnection(); }));
    CRawConnection next = m_listener.Accept();
    std::string after;
    EXPECT_TRUE(Eventually(
        [&]
        {
            after += next.ReceivePending();
            return m_client->VerifyConnection() && m_client->BytesWaiting() == 0;
        }));
    m_client.reset();
    EXPECT_EQ(NumbersIn(after + next.ReceiveToEnd()), Range(before.last + 1, count - 1));
}

TEST_F(HostClientSending, WhatWaitedIsForgottenByDestroy)
{
    FillSystem();
    m_client->Destroy();
    EXPECT_EQ(m_client->BytesWaiting(), 0u);
    ASSERT_TRUE(m_client->Connect("localhost", m_listener.Port(), 30000));
    CRawConnection next = m_listener.Accept();
    EXPECT_TRUE(SendNumber(5));
    m_client.reset();
    EXPECT_EQ(NumbersIn(next.ReceiveToEnd()), "5..5");
}

TEST_F(HostClientSending, AForkedChildsCopyNeitherSendsNorEndsTheConnection)
{
    const int count = FillSystem();
    std::string received = DrainSystem(); // so there is room for what waits
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0)
    {
        m_client.reset();
        _exit(0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Peer().ReceivePending(), "");
    EXPECT_TRUE(Eventually(
        [&]
        {
            received += Peer().ReceivePending();
            return m_client->VerifyConnection() && m_client->BytesWaiting() == 0;
        }));
    EXPECT_TRUE(SendNumber(count));
    m_client.reset();
    EXPECT_EQ(NumbersIn(received + Peer().ReceiveToEnd()), Range(0, count));
}

TEST_F(HostClientSending, APeerThatVanishesRaisesNoSignal)
{
    std::signal(SIGPIPE, SIG_DFL);
    m_listener.Close();
    Peer().Reset();
    for (int number = 0; number < 100; ++number)
        SendNumber(number, kLargeText);
    EXPECT_TRUE(Eventually([&] { return !m_client->VerifyConnection(); }));
}

TEST_F(HostClientSending, TheDestructorDoesNotWaitForAPeerThatDoesNotRead)
{
    FillUp();
    m_client.reset();
    EXPECT_NE(Peer().ReceiveToEnd(), "");
}

TEST_F(HostClientSending, WhatTheSystemHasTakenArrivesAlthoughThePeersMessagesWereNeverRead)
{
    FillUp();
    const std::size_t taken = m_acceptedBytes - m_client->BytesWaiting();
    Peer().Send("unread");
    ASSERT_TRUE(HostTest::HasInput(m_client->Descriptor(), 30000));
    m_client.reset();
    bool broken = true;
    EXPECT_GE(Peer().ReceiveToEnd(&broken).size(), taken);
    EXPECT_FALSE(broken) << "the stream ends properly";
}

} // namespace
