#include <MPI/BAtomC.h>
#include <MPI/BDictionaryC.h>
#include <MPI/BEncoderC.h>
#include <MPI/BListC.h>
#include <MPI/MPISocketClientC.h>
#include <MPI/MPISocketServerC.h>

#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "host/connections/RawPeer.h"
#include "host/connections/ServerFixture.h"

namespace
{

using HostTest::CRawConnection;
using HostTest::CRawListener;
using HostTest::Eventually;

std::string Encoded(const BElementC& element)
{
    BEncoderC encoder;
    encoder.Element(element);
    return encoder.Bytes();
}

/// Writes down what a server tells, a line for each, by connection.
class Handler : public MPIServerHandlerC
{
public:
    void PeerConnected(const MPIPeerC& peer) override
    {
        EXPECT_TRUE(numbers.insert(peer.connection).second) << "number used again";
        names[peer.connection] = peer.name;
        last = peer.connection;
    }
    bool NotificationReceived(const MPIPeerC& peer, const MPINotificationC& notification) override
    {
        EXPECT_EQ(names[peer.connection], peer.name);
        logs[peer.connection] += std::to_string(notification.offset) + " " + notification.name + " " +
                                 Encoded(notification.arguments) + "\n";
        lastMessage = Encoded(notification.message);
        order.push_back(peer.connection);
        return notification.name != "refuse";
    }
    void InputRefused(const MPIPeerC& peer, std::uint64_t offset, const std::string& reason) override
    {
        EXPECT_EQ(names[peer.connection], peer.name);
        logs[peer.connection] += "refused at " + std::to_string(offset) + ": " + reason + "\n";
    }
    void PeerTurnedAway(const MPIPeerC& peer) override
    {
        EXPECT_EQ(peer.connection, 0u);
        turnedAway.push_back(peer.name);
    }
    void PeerDisconnected(const MPIPeerC& peer) override { logs[peer.connection] += "disconnected\n"; }

    std::uint64_t last = 0;
    std::set<std::uint64_t> numbers;
    std::map<std::uint64_t, std::string> names;
    std::map<std::uint64_t, std::string> logs;
    std::vector<std::uint64_t> order; // of notifications, by connection
    std::vector<std::string> turnedAway;
    std::string lastMessage;
};

using HostServer = HostTest::CServerFixture<Handler>;

const std::string kRaise = "d4:argsli265243ei2ei0ee4:name10:RaiseErrore";

TEST_F(HostServer, ListensOnBothLoopbackAddresses)
{
    EXPECT_TRUE(CRawConnection::CanConnectTo("127.0.0.1", m_server.Port()));
    EXPECT_EQ(CRawConnection::CanConnectTo("::1", m_server.Port()), HostTest::HasIPv6Loopback());
}

TEST_F(HostServer, ListensNowhereElse)
{
    EXPECT_FALSE(CRawConnection::CanConnectTo("127.0.0.2", m_server.Port()));
}

TEST_F(HostServer, TellsThePortThatTheSystemChose)
{
    EXPECT_NE(m_server.Port(), 0);
    EXPECT_EQ(m_server.Error(), "");
    MPISocketServerC idle(m_handler);
    EXPECT_EQ(idle.Port(), 0);
}

TEST_F(HostServer, RefusesAPortInUse)
{
    MPISocketServerC second(m_handler);
    EXPECT_FALSE(second.Listen(m_server.Port()));
    EXPECT_EQ(second.Error(),
              "port " + std::to_string(m_server.Port()) + " on 127.0.0.1: Address already in use");
    EXPECT_EQ(second.Port(), 0);
}

TEST_F(HostServer, RefusesAPortInUseOnIPv6Only)
{
    const std::string host = HostTest::HasIPv6Loopback() ? "::1" : "127.0.0.1";
    const CRawListener listener(host);
    MPISocketServerC second(m_handler);
    EXPECT_FALSE(second.Listen(listener.Port()));
    EXPECT_EQ(second.Error(),
              "port " + std::to_string(listener.Port()) + " on " + host + ": Address already in use");
    EXPECT_FALSE(CRawConnection::CanConnectTo(host == "::1" ? "127.0.0.1" : "127.0.0.2", listener.Port()));
}

TEST_F(HostServer, LeavesItsPortToASuccessorAtOnce)
{
    const unsigned short port = m_server.Port();
    const CRawConnection connection = Connect();
    m_server.Close(); // first, so that the connection lingers on this side
    MPISocketServerC successor(m_handler);
    EXPECT_TRUE(successor.Listen(port)) << successor.Error();
    EXPECT_EQ(successor.Port(), port);
}

TEST_F(HostServer, RefusesToListenTwiceAndGoesOn)
{
    const unsigned short port = m_server.Port();
    EXPECT_FALSE(m_server.Listen(0));
    EXPECT_NE(m_server.Error(), "");
    EXPECT_EQ(m_server.Port(), port);
    EXPECT_EQ(LogOf(kRaise), "0 RaiseError li265243ei2ei0ee\ndisconnected\n");
}

TEST_F(HostServer, HasADescriptorWithInputWheneverThereIsSomethingToDo)
{
    const int descriptor = m_server.Descriptor();
    ASSERT_GE(descriptor, 0);
    EXPECT_FALSE(HostTest::HasInput(descriptor, 0));
    CRawConnection connection = CRawConnection::To("127.0.0.1", m_server.Port());
    EXPECT_TRUE(HostTest::HasInput(descriptor, 30000)) << "a connection";
    ASSERT_TRUE(ServeUntil([&] { return m_server.ConnectionCount() == 1; }));
    EXPECT_FALSE(HostTest::HasInput(descriptor, 0));
    connection.Send("d");
    EXPECT_TRUE(HostTest::HasInput(descriptor, 30000)) << "bytes";
    m_server.Serve(0);
    EXPECT_FALSE(HostTest::HasInput(descriptor, 0));
    connection.Close();
    EXPECT_TRUE(HostTest::HasInput(descriptor, 30000)) << "an end";
    m_server.Serve(0);
    EXPECT_FALSE(HostTest::HasInput(descriptor, 0));
    EXPECT_EQ(m_server.Descriptor(), descriptor);
}

TEST_F(HostServer, TellsTheFirstByteOfAMessageThatIsNoNotification)
{
    EXPECT_NE(LogOf(kRaise + "d1:ai1ee").find("\nrefused at 43: not a notification"), std::string::npos);
}

TEST_F(HostServer, ServeReturnsHowManyNotificationsItHandedOver)
{
    CRawConnection connection = Connect();
    EXPECT_EQ(m_server.Serve(0), 0);
    EXPECT_EQ(m_server.Serve(20), 0) << "the wait ends";
    connection.Send(kRaise + kRaise + kRaise);
    int count = 0;
    while (count == 0)
        count = m_server.Serve(-1);
    while (count < 3)
        count += m_server.Serve(30000);
    EXPECT_EQ(count, 3);
}

TEST_F(HostServer, HandsOverNotificationsInOrderWithArgumentsAndOffset)
{
    EXPECT_EQ(LogOf(kRaise + "d4:argsli5ei6ee4:name10:ClearErrore" + kRaise),
              "0 RaiseError li265243ei2ei0ee\n"
              "43 ClearError li5ei6ee\n"
              "78 RaiseError li265243ei2ei0ee\n"
              "disconnected\n");
}

TEST_F(HostServer, HandsOverTheWholeMessage)
{
    const std::string message = "d4:argsli1ee4:name1:x3:seqi7e4:xtrald1:ai1eeee";
    EXPECT_EQ(LogOf(message), "0 x li1ee\ndisconnected\n");
    EXPECT_EQ(m_handler.lastMessage, message);
}

TEST_F(HostServer, NamesThePeer)
{
    const CRawConnection connection = Connect();
    EXPECT_EQ(m_handler.names.rbegin()->second, "127.0.0.1:" + std::to_string(connection.OwnPort()));
    if (!HostTest::HasIPv6Loopback())
        return;
    const CRawConnection connection6 = CRawConnection::To("::1", m_server.Port());
    ASSERT_TRUE(ServeUntil([&] { return m_handler.numbers.size() == 2; }));
    EXPECT_EQ(m_handler.names.rbegin()->second, "[::1]:" + std::to_string(connection6.OwnPort()));
}

TEST_F(HostServer, HearsAClientThatSendsAndClosesAtOnceToTheEnd)
{
    std::string many;
    for (int count = 0; count < 5000; ++count)
        many += kRaise;
    {
        CRawConnection connection = CRawConnection::To("127.0.0.1", m_server.Port());
        connection.Send(many);
    }
    EXPECT_TRUE(ServeUntil([&] { return Has(1, "disconnected\n"); }));
    EXPECT_EQ(m_handler.order.size(), 5000u);
}

TEST_F(HostServer, HearsTheHostsOwnClient)
{
    MPISocketClientC client(true);
    client.Connect("localhost", m_server.Port(), -1);
    ASSERT_TRUE(client.VerifyConnection());
    BListC arguments;
    arguments.Append(std::make_unique<BAtomC>(1, &arguments));
    EXPECT_TRUE(client.SendNotification("ClearError", &arguments));
    EXPECT_TRUE(ServeUntil([&] { return Has(1, " ClearError li1ee\n"); }));
    m_server.Close();
    EXPECT_TRUE(Eventually([&] { return !client.VerifyConnection(); }));
}

TEST_F(HostServer, ReportsInputThatIsNoMessage)
{
    EXPECT_EQ(LogOf("GET / HTTP/1.1\r\n\r\n"),
              "refused at 0: a message is a dictionary and begins with \"d\"\ndisconnected\n");
    EXPECT_EQ(LogOf(kRaise + kRaise.substr(0, 10) + "x" + kRaise),
              "0 RaiseError li265243ei2ei0ee\n"
              "refused at 53: a digit or the end of the number expected\n"
              "disconnected\n");
}

TEST_F(HostServer, ReportsMessagesThatAreNoNotifications)
{
    const std::string reason = "not a notification: no \"name\" or no \"args\"\ndisconnected\n";
    EXPECT_EQ(LogOf("de" + kRaise), "refused at 0: " + reason);
    EXPECT_EQ(LogOf(kRaise + "d4:argslee"), "0 RaiseError li265243ei2ei0ee\nrefused at 43: " + reason);
    EXPECT_EQ(LogOf("d4:name1:xe"), "refused at 0: " + reason);
    EXPECT_EQ(LogOf("d4:argsle4:namei1ee"), "refused at 0: " + reason);
    EXPECT_EQ(LogOf("d4:argsi1e4:name1:xe"), "refused at 0: " + reason);
    EXPECT_EQ(LogOf("d7:welcomei1ee"), "refused at 0: " + reason);
}

TEST_F(HostServer, ReportsOversizedAndDeepMessages)
{
    EXPECT_EQ(LogOf("d4:argsl1073741824:"), "refused at 13: message longer than 65536 bytes\ndisconnected\n");
    EXPECT_EQ(LogOf("d4:argsl" + std::string(7, 'l')),
              "refused at 14: message deeper than 8 levels\ndisconnected\n");
}

TEST_F(HostServer, ReportsAConnectionThatEndsWithinAMessage)
{
    EXPECT_EQ(
        LogOf(kRaise + "d4:ar"),
        "0 RaiseError li265243ei2ei0ee\nrefused at 48: connection ended within a message\ndisconnected\n");
}

TEST_F(HostServer, ClosesAConnectionWithWrongInputAndNoOther)
{
    CRawConnection good = Connect();
    CRawConnection bad = Connect();
    bad.Send("nonsense");
    EXPECT_TRUE(ServeUntil([&] { return bad.Ended(); }));
    EXPECT_EQ(m_server.ConnectionCount(), 1u);
    good.Send(kRaise);
    EXPECT_TRUE(ServeUntil([&] { return Has(1, "RaiseError"); }));
    EXPECT_FALSE(good.Ended());
}

TEST_F(HostServer, ClosesAConnectionThatItsHandlerRefuses)
{
    CRawConnection connection = Connect();
    connection.Send(kRaise + "d4:argsle4:name6:refusee" + kRaise + "nonsense");
    EXPECT_TRUE(ServeUntil([&] { return connection.Ended(); }));
    EXPECT_EQ(m_handler.logs[1], "0 RaiseError li265243ei2ei0ee\n43 refuse le\ndisconnected\n");
}

TEST_F(HostServer, ServesOthersWhileOneSendsWithoutPause)
{
    CRawConnection busy = Connect();
    CRawConnection other = Connect();
    std::string many;
    while (many.size() < 300000)
        many += kRaise;
    // What the system holds of it is more than one turn takes.
    ASSERT_TRUE(Eventually(
        [&]
        {
            many.erase(0, busy.SendSome(many));
            return many.size() < 150000 || !HostTest::HasInput(m_server.Descriptor(), 0);
        }));
    other.Send(kRaise);
    ASSERT_TRUE(Eventually([&] { return HostTest::HasInput(m_server.Descriptor(), 0); }));
    while (!Has(2, "RaiseError"))
    {
        busy.SendSome(many);
        ASSERT_GE(m_server.Serve(30000), 0);
        ASSERT_LT(m_handler.order.size(), 5000u) << "200 kB of the busy one came first";
    }
}

TEST_F(HostServer, TellsOfEveryConnectionOnceAtBothEnds)
{
    EXPECT_EQ(LogOf(""), "disconnected\n");
    EXPECT_EQ(LogOf("nonsense").find("disconnected"), LogOf("nonsense").rfind("disconnected"));
    EXPECT_EQ(m_handler.numbers, (std::set<std::uint64_t>{1, 2, 3}));
}

TEST_F(HostServer, CloseEndsEverythingAndListenMayFollow)
{
    CRawConnection connection = Connect();
    const unsigned short port = m_server.Port();
    m_server.Close();
    EXPECT_TRUE(Eventually([&] { return connection.Ended(); }));
    EXPECT_EQ(m_handler.logs[1], "disconnected\n");
    EXPECT_EQ(m_server.ConnectionCount(), 0u);
    EXPECT_EQ(m_server.Port(), 0);
    EXPECT_FALSE(CRawConnection::CanConnectTo("127.0.0.1", port));
    EXPECT_TRUE(m_server.Listen(0)) << m_server.Error();
    EXPECT_EQ(LogOf(kRaise), "0 RaiseError li265243ei2ei0ee\ndisconnected\n");
    EXPECT_EQ(m_handler.numbers, (std::set<std::uint64_t>{1, 2}));
}

/// Does what has to be done, and no more.
class LeastHandler : public MPIServerHandlerC
{
public:
    bool NotificationReceived(const MPIPeerC&, const MPINotificationC&) override { return true; }
    void InputRefused(const MPIPeerC&, std::uint64_t, const std::string&) override {}
};

TEST(HostServerHandler, NeedNotCareWhoIsTurnedAway)
{
    LeastHandler handler;
    MPISocketServerC server(handler);
    server.MaximumConnections(0);
    ASSERT_TRUE(server.Listen(0));
    CRawConnection connection = CRawConnection::To("127.0.0.1", server.Port());
    EXPECT_TRUE(Eventually([&] { return server.Serve(0) == 0 && connection.Ended(); }));
    EXPECT_EQ(server.ConnectionCount(), 0u);
}

/// Closes its server when the first connection ends.
class ClosingHandler : public LeastHandler
{
public:
    void PeerDisconnected(const MPIPeerC&) override
    {
        ++disconnected;
        server->Close();
    }

    MPISocketServerC* server = nullptr;
    int disconnected = 0;
};

TEST(HostServerHandler, MayCloseTheServerWhenAConnectionHasEnded)
{
    ClosingHandler handler;
    MPISocketServerC server(handler);
    handler.server = &server;
    ASSERT_TRUE(server.Listen(0));
    const unsigned short port = server.Port();
    CRawConnection first = CRawConnection::To("127.0.0.1", port);
    CRawConnection second = CRawConnection::To("127.0.0.1", port);
    ASSERT_TRUE(Eventually([&] { return server.Serve(0) == 0 && server.ConnectionCount() == 2; }));
    first.EndSending();
    second.EndSending();
    EXPECT_TRUE(Eventually([&] { return server.Serve(0) == 0 && handler.disconnected == 2; }));
    EXPECT_TRUE(Eventually([&] { return first.Ended() && second.Ended(); }));
    EXPECT_EQ(server.Port(), 0);
    EXPECT_FALSE(CRawConnection::CanConnectTo("127.0.0.1", port));
}

} // namespace
