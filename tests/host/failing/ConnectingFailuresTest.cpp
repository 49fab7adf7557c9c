// A client to which the system refuses something while it connects.
#include <MPI/MPISocketClientC.h>

#include <arpa/inet.h>
#include <cerrno>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>

#include "host/connections/RawPeer.h"
#include "host/failing/FailingCalls.h"

namespace
{

using HostTest::CFailingCalls;
using HostTest::CRawConnection;
using HostTest::CRawListener;
using HostTest::Eventually;

constexpr int kPatienceMilliseconds = 30000;

/// Connects as the system does, and waits until it has.
int ConnectAtOnce(CFailingCalls& calls, int descriptor, const sockaddr* address, socklen_t size)
{
    calls.Leave("connect");
    if (connect(descriptor, address, size) != 0)
    {
        pollfd entry = {descriptor, POLLOUT, 0};
        EXPECT_EQ(poll(&entry, 1, kPatienceMilliseconds), 1);
    }
    return 0;
}

class HostConnectingFailures : public testing::Test
{
protected:
    bool Connects(const std::string& host = "127.0.0.1", int timeoutMilliseconds = kPatienceMilliseconds)
    {
        return m_client.Connect(host, m_listener.Port(), timeoutMilliseconds);
    }

    CRawListener m_listener;
    CFailingCalls m_calls;
    MPISocketClientC m_client{false};
};

TEST_F(HostConnectingFailures, WithoutASocketThereIsNothingUnderWay)
{
    m_calls.Fail("socket", EMFILE);
    EXPECT_FALSE(Connects("127.0.0.1", -1));
    EXPECT_EQ(m_client.Descriptor(), -1);
    EXPECT_FALSE(m_client.Sending());
    EXPECT_TRUE(m_client.Reconnect(kPatienceMilliseconds));
}

TEST_F(HostConnectingFailures, AnAddressThatIsRefusedAtOnceIsFollowedByTheNext)
{
    if (!HostTest::HasIPv6Loopback())
        return;
    const CRawListener other("::1", m_listener.Port());
    m_calls.Fail("connect", ENETUNREACH);
    EXPECT_TRUE(Connects("localhost"));
    EXPECT_EQ(m_client.PeerName(), "[::1]:" + std::to_string(m_listener.Port()));
}

TEST_F(HostConnectingFailures, AllAddressesMayBeRefusedAtOnce)
{
    m_calls.Fail("connect", ENETUNREACH, 2);
    EXPECT_FALSE(Connects("localhost", -1));
    EXPECT_EQ(m_client.Descriptor(), -1);
    EXPECT_FALSE(m_client.VerifyConnection());
}

TEST_F(HostConnectingFailures, ASignalDuringTheCallDoesNotStopIt)
{
    m_calls.Ask("connect",
                [this](int descriptor, int size, void* address) -> std::optional<int>
                {
                    ConnectAtOnce(m_calls, descriptor, static_cast<sockaddr*>(address),
                                  static_cast<socklen_t>(size));
                    errno = EINTR;
                    return -1;
                });
    EXPECT_TRUE(Connects());
    EXPECT_TRUE(m_listener.HasConnection());
}

TEST_F(HostConnectingFailures, AConnectionMayBeThereAtOnce)
{
    m_calls.Ask("connect",
                [this](int descriptor, int size, void* address) -> std::optional<int>
                {
                    return ConnectAtOnce(m_calls, descriptor, static_cast<sockaddr*>(address),
                                         static_cast<socklen_t>(size));
                });
    EXPECT_TRUE(Connects("127.0.0.1", -1));
    EXPECT_TRUE(m_client.VerifyConnection());
}

TEST_F(HostConnectingFailures, WhatCannotBeAskedHowItGoesIsTakenForRefused)
{
    m_calls.Fail("getsockopt", ENOBUFS);
    EXPECT_FALSE(Connects());
    EXPECT_EQ(m_client.Descriptor(), -1);
    EXPECT_TRUE(m_client.Reconnect(kPatienceMilliseconds));
}

TEST_F(HostConnectingFailures, ASocketThatHasConnectedToItselfIsNoConnection)
{
    m_listener.Close();
    m_calls.Ask("connect",
                [](int descriptor, int size, void* address) -> std::optional<int>
                {
                    // As if the system had chosen the very port for this end, which it does now and then.
                    EXPECT_EQ(bind(descriptor, static_cast<sockaddr*>(address), static_cast<socklen_t>(size)),
                              0);
                    return std::nullopt;
                });
    EXPECT_FALSE(Connects());
    EXPECT_FALSE(m_client.VerifyConnection());
    EXPECT_EQ(m_client.Descriptor(), -1);
}

TEST_F(HostConnectingFailures, WhoCannotTellItsOwnAddressIsConnectedAllTheSame)
{
    m_calls.Fail("getsockname", ENOBUFS);
    EXPECT_TRUE(Connects());
    EXPECT_TRUE(m_client.VerifyConnection());
}

TEST_F(HostConnectingFailures, ATurnWaitsForAnAddressThatDoesNotAnswerNoLongerThanThatIsTried)
{
    const CRawListener full("127.0.0.1", 0, 0);
    const CRawConnection only = CRawConnection::To("127.0.0.1", full.Port());
    EXPECT_FALSE(m_client.Connect("127.0.0.1", full.Port(), 0)) << "there is room";
    for (const int timeout : {-1, kPatienceMilliseconds})
    {
        const unsigned short before = HostTest::PortOf(m_client.Descriptor());
        m_client.SetTimeout(timeout);
        EXPECT_EQ(m_client.ProcessMessages(true), 0);
        EXPECT_TRUE(Eventually([&] { return HostTest::PortOf(m_client.Descriptor()) != before; }))
            << "another try";
    }
}

} // namespace
