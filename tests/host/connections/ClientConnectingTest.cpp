#include <MPI/BListC.h>
#include <MPI/MPISocketClientC.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include "host/connections/RawPeer.h"

namespace
{

using HostTest::CRawConnection;
using HostTest::CRawListener;
using HostTest::Eventually;
using HostTest::WithoutSession;

TEST(HostClientConnecting, WithMinusOneIsCompleteByTheFirstVerifyConnectionOnTheLoopback)
{
    CRawListener listener;
    MPISocketClientC client(true);
    EXPECT_TRUE(client.Connect("localhost", listener.Port(), -1));
    EXPECT_TRUE(client.VerifyConnection());
    EXPECT_TRUE(listener.HasConnection());
}

TEST(HostClientConnecting, WithATimeoutIsTrueOnceTheConnectionIsUp)
{
    CRawListener listener;
    MPISocketClientC client(true);
    EXPECT_TRUE(client.Connect("localhost", listener.Port(), 30000));
    EXPECT_TRUE(client.Connected());
}

TEST(HostClientConnecting, WithATimeoutIsFalseIfNobodyListens)
{
    MPISocketClientC client(true);
    EXPECT_FALSE(client.Connect("localhost", HostTest::UnusedPort(), 30000));
    EXPECT_FALSE(client.Connect("localhost", HostTest::UnusedPort(), 0));
    EXPECT_FALSE(client.Connected());
}

TEST(HostClientConnecting, ToLocalhostGoesToIPv4First)
{
    CRawListener listener;
    MPISocketClientC client(true);
    ASSERT_TRUE(client.Connect("localhost", listener.Port(), 30000));
    EXPECT_EQ(client.PeerName(), "127.0.0.1:" + std::to_string(listener.Port()));
}

TEST(HostClientConnecting, ToLocalhostGoesToIPv6IfNobodyListensOnIPv4)
{
    const bool has = HostTest::HasIPv6Loopback();
    CRawListener listener(has ? "::1" : "127.0.0.1");
    MPISocketClientC client(true);
    EXPECT_TRUE(client.Connect("localhost", listener.Port(), -1));
    ASSERT_TRUE(client.VerifyConnection());
    EXPECT_EQ(client.PeerName(), (has ? "[::1]:" : "127.0.0.1:") + std::to_string(listener.Port()));
}

TEST(HostClientConnecting, TakesNumericAddresses)
{
    MPISocketClientC client(true);
    CRawListener listener;
    EXPECT_TRUE(client.Connect("127.0.0.1", listener.Port(), 30000));
    if (!HostTest::HasIPv6Loopback())
        return;
    CRawListener listener6("::1");
    EXPECT_TRUE(client.Connect("::1", listener6.Port(), 30000));
    EXPECT_FALSE(client.Connect("127.0.0.1", listener6.Port(), 30000)) << "no other address is tried";
}

TEST(HostClientConnecting, RefusesOtherNames)
{
    CRawListener listener;
    MPISocketClientC client(true);
    for (const char* const name : {"", "Localhost", "ip6-localhost", "owner.example", "127.0.0.1 "})
    {
        EXPECT_FALSE(client.Connect(name, listener.Port(), -1)) << name;
        EXPECT_FALSE(client.VerifyConnection()) << name;
    }
    EXPECT_FALSE(listener.HasConnection());
}

TEST(HostClientConnecting, ToNobodyIsNoErrorAndPrintsNothing)
{
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    {
        MPISocketClientC client(true);
        client.Connect("localhost", HostTest::UnusedPort(), -1);
        EXPECT_FALSE(client.VerifyConnection());
        EXPECT_FALSE(client.SendNotification("RaiseError", nullptr));
        EXPECT_FALSE(client.VerifyConnection());
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(HostClientConnecting, HappensAgainFromVerifyConnection)
{
    const unsigned short port = HostTest::UnusedPort();
    MPISocketClientC client(true);
    client.Connect("localhost", port, -1);
    EXPECT_FALSE(client.VerifyConnection()) << "nobody listens yet";
    CRawListener listener("127.0.0.1", port);
    EXPECT_TRUE(Eventually([&] { return client.VerifyConnection(); }));
    listener.Accept().Close();
    EXPECT_TRUE(Eventually([&] { return client.VerifyConnection() && listener.HasConnection(); }));
}

TEST(HostClientConnecting, HappensAgainFromProcessMessages)
{
    CRawListener listener;
    MPISocketClientC client(true);
    client.Connect("localhost", listener.Port(), 30000);
    listener.Accept().Close();
    EXPECT_TRUE(Eventually(
        [&]
        {
            client.ProcessMessages(false);
            return listener.HasConnection();
        }));
}

TEST(HostClientConnecting, HappensAgainOnlyByReconnectIfTheClientWasMadeSo)
{
    CRawListener listener;
    MPISocketClientC client(false);
    client.Connect("localhost", listener.Port(), 30000);
    listener.Accept().Close();
    ASSERT_TRUE(Eventually([&] { return !client.VerifyConnection(); }));
    for (int milliseconds = 0; milliseconds < 600; milliseconds += 50)
    {
        client.SetTimeout(50);
        client.ProcessMessages(true);
        ASSERT_FALSE(client.VerifyConnection());
    }
    EXPECT_FALSE(listener.HasConnection());
    EXPECT_TRUE(client.Reconnect(30000));
    EXPECT_TRUE(client.VerifyConnection());
}

TEST(HostClientConnecting, CannotHappenAgainIfItNeverHappened)
{
    MPISocketClientC client(true);
    EXPECT_FALSE(client.Reconnect(-1));
    EXPECT_FALSE(client.Reconnect(0));
    EXPECT_FALSE(client.VerifyConnection());
}

TEST(HostClientConnecting, IsNoticedToHaveEndedByThePeer)
{
    CRawListener listener;
    MPISocketClientC client(true);
    ASSERT_TRUE(client.Connect("localhost", listener.Port(), 30000));
    CRawConnection peer = listener.Accept();
    EXPECT_TRUE(client.VerifyConnection());
    listener.Close();
    peer.Close();
    EXPECT_TRUE(Eventually([&] { return !client.VerifyConnection(); }));
    EXPECT_FALSE(client.Connected());
    EXPECT_EQ(client.Descriptor(), -1);
    EXPECT_FALSE(client.SendNotification("x", nullptr)) << "the yes was taken back";
}

TEST(HostClientConnecting, IsNoticedToHaveBeenReset)
{
    CRawListener listener;
    MPISocketClientC client(true);
    ASSERT_TRUE(client.Connect("localhost", listener.Port(), 30000));
    CRawConnection peer = listener.Accept();
    listener.Close();
    peer.Reset();
    EXPECT_TRUE(Eventually([&] { return !client.VerifyConnection(); }));
}

TEST(HostClientConnecting, ToAnAddressThatDoesNotAnswerGoesOnToTheNext)
{
    if (!HostTest::HasIPv6Loopback())
        return;
    CRawListener full("127.0.0.1", 0, 0);
    const CRawConnection only = CRawConnection::To("127.0.0.1", full.Port());
    CRawListener listener("::1", full.Port());
    MPISocketClientC client(true);
    EXPECT_FALSE(client.Connect("localhost", full.Port(), 0)) << "there is room";
    EXPECT_TRUE(client.Sending());
    EXPECT_TRUE(Eventually([&] { return client.VerifyConnection(); }));
    EXPECT_EQ(client.PeerName(), "[::1]:" + std::to_string(full.Port()));
    client.Destroy();
    EXPECT_TRUE(client.Connect("localhost", full.Port(), 30000));
}

TEST(HostClientConnecting, ToAnAddressThatDoesNotAnswerBeginsAnew)
{
    CRawListener full("127.0.0.1", 0, 0);
    const CRawConnection only = CRawConnection::To("127.0.0.1", full.Port());
    for (const bool reconnect : {true, false})
    {
        MPISocketClientC client(reconnect);
        EXPECT_FALSE(client.Connect("127.0.0.1", full.Port(), 0)) << "there is room";
        const unsigned short before = HostTest::PortOf(client.Descriptor());
        EXPECT_TRUE(Eventually(
            [&]
            {
                return !client.VerifyConnection() && client.Descriptor() >= 0 &&
                       HostTest::PortOf(client.Descriptor()) != before;
            }));
    }
    MPISocketClientC client(false);
    client.Connect("127.0.0.1", full.Port(), -1);
    full.Accept();
    EXPECT_TRUE(Eventually([&] { return client.VerifyConnection(); }));
}

TEST(HostClientConnecting, IsGivenUpByDestroy)
{
    CRawListener listener;
    MPISocketClientC client(true);
    ASSERT_TRUE(client.Connect("localhost", listener.Port(), 30000));
    CRawConnection peer = listener.Accept();
    client.Destroy();
    EXPECT_EQ(WithoutSession(peer.ReceiveToEnd()), "");
    EXPECT_FALSE(client.VerifyConnection());
    EXPECT_FALSE(client.Reconnect(0));
    EXPECT_FALSE(listener.HasConnection());
}

TEST(HostClientConnecting, ClosesTheConnectionThatWasThere)
{
    CRawListener first;
    CRawListener second;
    MPISocketClientC client(true);
    ASSERT_TRUE(client.Connect("localhost", first.Port(), 30000));
    CRawConnection peer = first.Accept();
    ASSERT_TRUE(client.Connect("localhost", second.Port(), 30000));
    EXPECT_EQ(WithoutSession(peer.ReceiveToEnd()), "");
    EXPECT_TRUE(client.VerifyConnection());
    EXPECT_TRUE(second.HasConnection());
}

TEST(HostClientConnecting, GivesADescriptorThatExecClosesAndThatSendsWithoutDelay)
{
    CRawListener listener;
    MPISocketClientC client(true);
    ASSERT_TRUE(client.Connect("localhost", listener.Port(), 30000));
    EXPECT_NE(fcntl(client.Descriptor(), F_GETFD) & FD_CLOEXEC, 0);
    int noDelay = 0;
    socklen_t size = sizeof(noDelay);
    ASSERT_EQ(getsockopt(client.Descriptor(), IPPROTO_TCP, TCP_NODELAY, &noDelay, &size), 0);
    EXPECT_NE(noDelay, 0);
}

TEST(HostClientConnecting, NamesThePeerAndGivesItsDescriptorAsLongAsItLasts)
{
    CRawListener listener;
    MPISocketClientC client(false);
    EXPECT_EQ(client.PeerName(), "");
    EXPECT_EQ(client.Descriptor(), -1);
    ASSERT_TRUE(client.Connect("localhost", listener.Port(), 30000));
    EXPECT_EQ(client.PeerName(), "127.0.0.1:" + std::to_string(listener.Port()));
    EXPECT_GE(client.Descriptor(), 0);
    client.Close();
    EXPECT_EQ(client.PeerName(), "");
    EXPECT_EQ(client.Descriptor(), -1);
}

} // namespace
