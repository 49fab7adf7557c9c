#include <MPI/BAtomC.h>
#include <MPI/BDictionaryC.h>
#include <MPI/BEncoderC.h>
#include <MPI/BListC.h>
#include <MPI/MPISocketClientC.h>

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include "host/connections/RawPeer.h"

namespace
{

using HostTest::CRawConnection;
using HostTest::CRawListener;
using HostTest::Eventually;
using HostTest::WithoutSession;

std::string Encoded(const BElementC& element)
{
    BEncoderC encoder;
    encoder.Element(element);
    return encoder.Bytes();
}

/// Writes down what is called.
class Recorder : public MPISocketClientC
{
public:
    Recorder() : MPISocketClientC(false) { SetTimeout(30000); }

    void Idle() override { log += "idle\n"; }
    int GetExtraReader() override { return extraReader; }
    void ReadExtra() override
    {
        char byte = 0;
        log += read(extraReader, &byte, 1) == 1 ? "extra\n" : "no extra\n";
    }
    void DataReceived() override
    {
        log += "received\n";
        if (onInput)
            onInput();
    }
    void DataReceivedFrom(std::string address, unsigned short port) override
    {
        log += "from " + address + " " + std::to_string(port) + "\n";
    }
    void DataSent() override { log += "sent\n"; }
    void Disconnected() override
    {
        log += "disconnected\n";
        if (onLoss)
            onLoss();
    }
    bool DoClientCallback(const std::string& name, BListC* arguments) override
    {
        log += "client " + name + " " + Encoded(*arguments) + "\n";
        return true;
    }

    std::string log;
    int extraReader = -1;
    std::function<void()> onInput;
    std::function<void()> onLoss;
};

class HostClientReceiving : public testing::Test
{
protected:
    HostClientReceiving()
    {
        EXPECT_TRUE(m_client.Connect("localhost", m_listener.Port(), 30000));
        m_peers.push_back(m_listener.Accept());
    }

    CRawConnection& Peer() { return m_peers.back(); }

    void SendToClient(const std::string& bytes)
    {
        Peer().Send(bytes);
        ASSERT_TRUE(HostTest::HasInput(m_client.Descriptor(), 30000));
    }

    /// What the client writes down while it takes the bytes in, without the lines about bytes.
    std::string LogOf(const std::string& bytes)
    {
        SendToClient(bytes);
        m_client.ProcessMessages(false);
        std::istringstream log(m_client.log);
        std::string result;
        for (std::string line; std::getline(log, line);)
        {
            if (line != "received" && line.compare(0, 5, "from ") != 0)
                result += line + "\n";
        }
        return result;
    }

    CRawListener m_listener;
    std::vector<CRawConnection> m_peers;
    Recorder m_client;
};

TEST_F(HostClientReceiving, ATurnPassesNotificationsToWhatIsRegistered)
{
    std::string calls;
    m_client.RegisterCallback("a", [&](BListC* arguments) { calls += "a" + Encoded(*arguments); });
    m_client.RegisterCallback("b", [&](BListC*) { calls += "wrong"; });
    m_client.RegisterCallback("b", [&](BListC* arguments) { calls += "b" + Encoded(*arguments); });
    SendToClient("d4:argsli1ee4:name1:aed4:argsle4:name1:bed4:argsli2ee4:name1:ae");
    EXPECT_EQ(m_client.ProcessMessages(false), 3);
    EXPECT_EQ(calls, "ali1eebleali2ee");
    EXPECT_EQ(m_client.log.find("client"), std::string::npos);
}

TEST_F(HostClientReceiving, WhatIsNotRegisteredGoesToDoClientCallback)
{
    EXPECT_EQ(LogOf("d4:argsli1ee4:name1:aed4:argsle4:name1:be"), "client a li1ee\nclient b le\n");
}

TEST_F(HostClientReceiving, OtherMessagesAreIgnored)
{
    EXPECT_EQ(LogOf("ded7:welcomei1eed4:argsi1e4:name1:aed4:argsle4:namei1eed4:argslee"), "");
    EXPECT_TRUE(m_client.Connected());
}

TEST_F(HostClientReceiving, VerifyConnectionPassesMessagesOn)
{
    SendToClient("d4:argsle4:name1:ae");
    EXPECT_TRUE(m_client.VerifyConnection());
    EXPECT_NE(m_client.log.find("client a le\n"), std::string::npos);
}

TEST_F(HostClientReceiving, ReceiveMessageGivesTheNextMessage)
{
    SendToClient("d1:ai1eed1:ai2eed1:a");
    EXPECT_EQ(Encoded(*m_client.ReceiveMessage(false)), "d1:ai1ee");
    EXPECT_EQ(Encoded(*m_client.ReceiveMessage(false)), "d1:ai2ee");
    EXPECT_EQ(m_client.ReceiveMessage(false), nullptr);
    SendToClient("i3ee");
    EXPECT_EQ(Encoded(*m_client.ReceiveMessage(false)), "d1:ai3ee");
}

TEST_F(HostClientReceiving, WithoutWaitingThereMayBeNothing)
{
    EXPECT_EQ(m_client.ReceiveMessage(false), nullptr);
    EXPECT_EQ(m_client.ProcessMessages(false), 0);
    EXPECT_EQ(m_client.log, "") << "only a wait calls Idle";
}

TEST_F(HostClientReceiving, AWaitForNothingEndsAndCallsIdle)
{
    m_client.SetTimeout(20);
    EXPECT_EQ(m_client.ProcessMessages(true), 0);
    EXPECT_EQ(m_client.log, "idle\n");
    EXPECT_EQ(m_client.ReceiveMessage(true), nullptr);
}

TEST_F(HostClientReceiving, AWaitEndsWithInput)
{
    Peer().Send("de");
    EXPECT_EQ(Encoded(*m_client.ReceiveMessage(true)), "de");
    Peer().Send("de");
    EXPECT_EQ(m_client.ProcessMessages(true), 1);
    EXPECT_EQ(m_client.log.find("idle"), std::string::npos);
}

TEST_F(HostClientReceiving, AWaitWithoutAConnectionEnds)
{
    m_client.Close();
    m_client.SetTimeout(-1);
    EXPECT_EQ(m_client.ReceiveMessage(true), nullptr);
    EXPECT_EQ(m_client.ProcessMessages(true), 0);
}

TEST_F(HostClientReceiving, ATurnWithinATurnDoesNothing)
{
    int inner = -1;
    m_client.RegisterCallback("a", [&](BListC*) { inner = m_client.ProcessMessages(true); });
    SendToClient("d4:argsle4:name1:aed4:argsle4:name1:be");
    EXPECT_EQ(m_client.ProcessMessages(false), 2);
    EXPECT_EQ(inner, 0);
}

TEST_F(HostClientReceiving, AHookMayTakeTheMessagesOfATurn)
{
    std::string taken;
    m_client.onInput = [&]
    {
        while (const std::unique_ptr<BDictionaryC> message = m_client.ReceiveMessage(false))
            taken += Encoded(*message);
    };
    EXPECT_EQ(LogOf("d1:ai1eed4:argsle4:name1:bed4:argsle4:name1:ce"), "");
    EXPECT_EQ(taken, "d1:ai1eed4:argsle4:name1:bed4:argsle4:name1:ce");
    EXPECT_FALSE(m_client.Refused());
    EXPECT_TRUE(m_client.Connected());
}

TEST_F(HostClientReceiving, AHookMayRunATurn)
{
    m_client.onInput = [&] { EXPECT_EQ(m_client.ProcessMessages(false), 2); };
    SendToClient("d4:argsle4:name1:aed4:argsle4:name1:bed1:c");
    EXPECT_EQ(m_client.ReceiveMessage(false), nullptr);
    EXPECT_NE(m_client.log.find("client a le\nclient b le\n"), std::string::npos);
    m_client.onInput = nullptr;
    SendToClient("i3ee");
    EXPECT_EQ(Encoded(*m_client.ReceiveMessage(false)), "d1:ci3ee");
}

TEST_F(HostClientReceiving, AWaitWithinATurnGetsWhatComesHoweverMuchWasRead)
{
    constexpr int kMessages = 5000; // 100 kB, more than a turn reads
    int count = 0;
    m_client.RegisterCallback("a",
                              [&](BListC*)
                              {
                                  EXPECT_NE(m_client.ReceiveMessage(true), nullptr) << count;
                                  count += 2;
                              });
    std::string many;
    for (int message = 0; message < kMessages; ++message)
        many += "d4:argsle4:name1:ae";
    m_client.SetTimeout(5000);
    Peer().Send(many);
    EXPECT_TRUE(Eventually(
        [&]
        {
            m_client.ProcessMessages(false);
            return count >= kMessages || HasFailure();
        }));
    EXPECT_EQ(count, kMessages);
}

TEST_F(HostClientReceiving, DisconnectedMayConnectAgainAndNothingIsLost)
{
    m_client.onLoss = [&]
    {
        m_client.onLoss = nullptr;
        ASSERT_TRUE(m_client.Reconnect(30000));
        m_peers.push_back(m_listener.Accept());
        Peer().Send("d4:argsle4:name1:be");
        ASSERT_TRUE(HostTest::HasInput(m_client.Descriptor(), 30000));
    };
    SendToClient("d4:argsle4:name1:aewrong");
    EXPECT_TRUE(Eventually(
        [&]
        {
            m_client.ProcessMessages(false);
            return m_client.log.find("client b le\n") != std::string::npos;
        }));
    EXPECT_NE(m_client.log.find("client a le\ndisconnected\n"), std::string::npos);
    EXPECT_FALSE(m_client.Refused());
}

TEST_F(HostClientReceiving, ACallbackMaySendAndVerify)
{
    m_client.RegisterCallback("a",
                              [&](BListC* arguments)
                              {
                                  EXPECT_TRUE(m_client.VerifyConnection());
                                  m_client.SendNotification("answer", arguments);
                              });
    SendToClient("d4:argsli9ee4:name1:ae");
    EXPECT_EQ(m_client.ProcessMessages(false), 1);
    m_client.Close();
    EXPECT_EQ(WithoutSession(Peer().ReceiveToEnd()), "d4:argsli9ee4:name6:answere");
}

TEST_F(HostClientReceiving, WrongInputClosesTheConnectionAndIsTold)
{
    EXPECT_FALSE(m_client.Refused());
    EXPECT_EQ(LogOf("d4:argsle4:name1:aed1:ai01ee"), "client a le\ndisconnected\n");
    EXPECT_FALSE(m_client.Connected());
    EXPECT_TRUE(m_client.Refused());
    EXPECT_EQ(m_client.RefusalOffset(), 19u + 6u);
    EXPECT_EQ(m_client.RefusalReason(), "number with a leading zero");
    EXPECT_TRUE(Eventually([&] { return Peer().Ended(); }));
}

TEST_F(HostClientReceiving, TheNextConnectionStartsClean)
{
    LogOf("d1:a"); // half a message
    Peer().Close();
    ASSERT_TRUE(Eventually([&] { return !m_client.VerifyConnection(); }));
    ASSERT_TRUE(m_client.Reconnect(30000));
    m_peers.push_back(m_listener.Accept());
    m_client.log.clear();
    EXPECT_EQ(LogOf("d4:argsle4:name1:aex"), "client a le\ndisconnected\n");
    EXPECT_EQ(m_client.RefusalOffset(), 19u);
    ASSERT_TRUE(m_client.Reconnect(30000));
    m_peers.push_back(m_listener.Accept());
    m_client.log.clear();
    EXPECT_EQ(LogOf("d4:argsle4:name1:be"), "client b le\n");
    EXPECT_FALSE(m_client.Refused());
}

TEST_F(HostClientReceiving, HooksTellOfInput)
{
    SendToClient("de");
    m_client.ProcessMessages(false);
    EXPECT_EQ(m_client.log, "received\nfrom 127.0.0.1 " + std::to_string(m_listener.Port()) + "\n");
}

TEST_F(HostClientReceiving, HooksTellThatTheSystemHasTakenEverything)
{
    m_client.SendNotification("a", nullptr);
    EXPECT_EQ(m_client.log, "sent\n");
    m_client.ProcessMessages(false);
    EXPECT_EQ(m_client.log, "sent\n");
}

TEST_F(HostClientReceiving, HooksTellOfALossOnce)
{
    Peer().Close();
    ASSERT_TRUE(Eventually([&] { return !m_client.VerifyConnection() && m_client.Descriptor() < 0; }));
    m_client.VerifyConnection();
    m_client.Close();
    EXPECT_EQ(m_client.log, "disconnected\n");
}

TEST_F(HostClientReceiving, HooksTellOfBeingClosedOnce)
{
    m_client.Close();
    m_client.Close();
    EXPECT_EQ(m_client.log, "disconnected\n");
}

TEST_F(HostClientReceiving, MessagesBeforeALossAreHeard)
{
    Peer().Send("d4:argsle4:name1:aed4:argsle4:name1:be");
    Peer().Close();
    EXPECT_TRUE(Eventually([&] { return !m_client.VerifyConnection() && m_client.Descriptor() < 0; }));
    EXPECT_NE(m_client.log.find("client a le\nclient b le\n"), std::string::npos);
}

TEST_F(HostClientReceiving, AWaitServesTheExtraReader)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], "x", 1), 1);
    m_client.extraReader = ends[0];
    EXPECT_EQ(m_client.ProcessMessages(true), 0);
    EXPECT_EQ(m_client.log, "extra\n");
    close(ends[0]);
    close(ends[1]);
}

TEST_F(HostClientReceiving, AcceptLeavesTheDescriptorHeldAlreadyAsItIs)
{
    m_client.Accept(m_client.Descriptor());
    EXPECT_EQ(LogOf("d4:argsle4:name1:ae"), "client a le\n");
    EXPECT_TRUE(m_client.Connected());
}

TEST_F(HostClientReceiving, AcceptTakesOverAConnectedDescriptor)
{
    CRawListener listener;
    CRawConnection other = CRawConnection::To("127.0.0.1", listener.Port());
    CRawConnection accepted = listener.Accept();
    MPISocketConnectionC connection;
    connection.Accept(-1);
    EXPECT_FALSE(connection.Connected());
    connection.Accept(dup(accepted.Descriptor()));
    accepted.Close();
    EXPECT_TRUE(connection.Connected());
    EXPECT_EQ(connection.PeerName(), "127.0.0.1:" + std::to_string(other.OwnPort()));
    EXPECT_TRUE(connection.SendNotification("a", nullptr));
    other.Send("d1:ai1ee");
    connection.SetTimeout(30000);
    EXPECT_EQ(Encoded(*connection.ReceiveMessage(true)), "d1:ai1ee");
    connection.Destroy();
    EXPECT_EQ(other.ReceiveToEnd(), "d4:argsle4:name1:ae");
}

} // namespace
