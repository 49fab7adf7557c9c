// A server to which the system refuses something.
#include <MPI/BAtomC.h>
#include <MPI/BDictionaryC.h>

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include "host/connections/ServerFixture.h"
#include "host/connections/SessionsHandler.h"
#include "host/failing/FailingCalls.h"

namespace
{

using namespace HostTest;

constexpr int kTurnAccepts = 64; // of one listener

/// Answers for the calls about IPv6 alone.
CFailingCalls::Answer ForIPv6(int error)
{
    return [error](int, int family, void*) -> std::optional<int>
    {
        if (family != AF_INET6)
            return std::nullopt;
        errno = error;
        return -1;
    };
}

// ---- Listening

/// A call that fails while a server begins to listen, and what is said of it.
struct SFailure
{
    const char* call;
    int error;
    int passed; // calls of that name before it
    const char* message;
};

void PrintTo(const SFailure& failure, std::ostream* out)
{
    *out << failure.call << " after " << failure.passed;
}

class HostServerListening : public testing::TestWithParam<SFailure>
{
};

TEST_P(HostServerListening, FailsWithTheReasonAndCanBeTriedAgain)
{
    CSessionsHandler handler;
    MPISocketServerC server(handler);
    CFailingCalls calls;
    calls.Fail(GetParam().call, GetParam().error, 1, GetParam().passed);
    EXPECT_FALSE(server.Listen(0));
    EXPECT_EQ(server.Error(), GetParam().message);
    EXPECT_EQ(server.Port(), 0);
    ASSERT_TRUE(server.Listen(0)) << server.Error();
    EXPECT_EQ(server.Error(), "");
    const CRawConnection connection = CRawConnection::To("127.0.0.1", server.Port());
    EXPECT_TRUE(Eventually([&] { return server.Serve(0) == 0 && server.ConnectionCount() == 1; }));
}

constexpr SFailure kFailures[] = {
    {"timerfd_create", EMFILE, 0, "timerfd_create: Too many open files"},
    {"timerfd_create", EMFILE, 1, "timerfd_create: Too many open files"},
    {"timerfd_create", EMFILE, 2, "timerfd_create: Too many open files"},
    {"epoll_ctl", ENOSPC, 0, "epoll_ctl: No space left on device"}, // for the first timer
    {"epoll_ctl", ENOSPC, 1, "epoll_ctl: No space left on device"}, // the second
    {"epoll_ctl", ENOSPC, 2, "epoll_ctl: No space left on device"}, // the third
    {"eventfd", EMFILE, 0, "eventfd: Too many open files"},
    {"epoll_ctl", ENOSPC, 3, "epoll_ctl: No space left on device"}, // the event
    {"epoll_ctl", ENOMEM, 4, "epoll_ctl: Cannot allocate memory"},  // a listener
    {"socket", EMFILE, 0, "port 0 on 127.0.0.1: Too many open files"},
    {"bind", EACCES, 0, "port 0 on 127.0.0.1: Permission denied"},
    {"listen", EINVAL, 0, "port 0 on 127.0.0.1: Invalid argument"},
    {"getsockname", ENOBUFS, 0, "port 0 on 127.0.0.1: No buffer space available"},
};

INSTANTIATE_TEST_SUITE_P(Failure, HostServerListening, testing::ValuesIn(kFailures));

TEST(HostServerFailures, APortThatIsTakenMeanwhileIsTriedAgainWithAnother)
{
    CSessionsHandler handler;
    MPISocketServerC server(handler);
    CFailingCalls calls;
    calls.Fail("listen", EADDRINUSE, 15);
    EXPECT_TRUE(server.Listen(0)) << server.Error();
    server.Close();
    calls.Fail("listen", EADDRINUSE, 16);
    EXPECT_FALSE(server.Listen(0)) << "not for ever";
    EXPECT_EQ(server.Error(), "port 0 on 127.0.0.1: Address already in use");
}

TEST(HostServerFailures, ListensOnIPv4AloneWhereThereIsNoOther)
{
    for (const int error : {EAFNOSUPPORT, EPROTONOSUPPORT})
    {
        CSessionsHandler handler;
        MPISocketServerC server(handler);
        CFailingCalls calls;
        calls.Ask("socket", ForIPv6(error));
        ASSERT_TRUE(server.Listen(0)) << server.Error();
        calls.Leave("socket");
        EXPECT_TRUE(CRawConnection::CanConnectTo("127.0.0.1", server.Port()));
    }
    CSessionsHandler handler;
    MPISocketServerC server(handler);
    CFailingCalls calls;
    calls.Ask("bind", ForIPv6(EADDRNOTAVAIL));
    ASSERT_TRUE(server.Listen(0)) << server.Error();
    EXPECT_TRUE(CRawConnection::CanConnectTo("127.0.0.1", server.Port()));
}

TEST(HostServerFailures, ListensNowhereIfItCannotListenOnIPv6ForAnotherReason)
{
    CSessionsHandler handler;
    MPISocketServerC server(handler);
    CFailingCalls calls;
    calls.Ask("socket", ForIPv6(EMFILE));
    EXPECT_FALSE(server.Listen(0));
    EXPECT_NE(server.Error().find(" on ::1: Too many open files"), std::string::npos) << server.Error();
    EXPECT_EQ(server.Port(), 0);
}

TEST(HostServerFailures, WithoutAWatchingDescriptorItCannotListen)
{
    CSessionsHandler handler;
    CFailingCalls calls;
    calls.Fail("epoll_create1", EMFILE);
    MPISocketServerC server(handler);
    EXPECT_EQ(server.Error(), "epoll_create1: Too many open files");
    EXPECT_EQ(server.Descriptor(), -1);
    EXPECT_FALSE(server.Listen(0));
    EXPECT_EQ(server.Error(), "epoll_ctl: Bad file descriptor");
    EXPECT_EQ(server.Serve(0), -1);
    EXPECT_EQ(server.Error(), "epoll_wait: Bad file descriptor");
    server.Close();
    EXPECT_EQ(server.ConnectionCount(), 0u);
}

// ---- Accepting

class HostServerAccepting : public CServerFixture<CSessionsHandler>
{
protected:
    CFailingCalls m_calls;
};

TEST_F(HostServerAccepting, PassesOverConnectionsThatHaveGone)
{
    std::vector<CRawConnection> connections;
    for (const int error : {EINTR, ECONNABORTED, EPROTO, ENOPROTOOPT, EOPNOTSUPP, ENETDOWN, ENETUNREACH,
                            EHOSTDOWN, EHOSTUNREACH, ENONET})
    {
        m_calls.Fail("accept4", error, 2);
        connections.push_back(CRawConnection::To("127.0.0.1", m_server.Port()));
        EXPECT_EQ(m_server.Serve(30000), 0);
        EXPECT_EQ(m_server.Error(), "") << std::strerror(error);
        EXPECT_EQ(m_server.ConnectionCount(), connections.size()) << std::strerror(error);
    }
}

TEST_F(HostServerAccepting, TakesInSoManyATurnThatOthersAreNotKeptWaiting)
{
    std::vector<CRawConnection> connections;
    for (int count = 0; count < kTurnAccepts + 6; ++count)
        connections.push_back(CRawConnection::To("127.0.0.1", m_server.Port()));
    EXPECT_EQ(m_server.Serve(30000), 0);
    EXPECT_EQ(m_server.ConnectionCount(), static_cast<std::size_t>(kTurnAccepts));
    EXPECT_TRUE(ServeUntil([&] { return m_server.ConnectionCount() == connections.size(); }));
}

TEST_F(HostServerAccepting, PausesWhenTheSystemRefusesAndGoesOn)
{
    for (const int error : {ENOMEM, ENOBUFS, EINVAL})
    {
        m_calls.Fail("accept4", error);
        CRawConnection connection = CRawConnection::To("127.0.0.1", m_server.Port());
        EXPECT_EQ(m_server.Serve(30000), 0);
        EXPECT_EQ(m_server.Error(), std::string("accept: ") + std::strerror(error));
        EXPECT_TRUE(ServeUntil([&] { return m_server.ConnectionCount() == 1; }));
        EXPECT_EQ(m_server.Error(), "");
        connection.Close();
        EXPECT_TRUE(ServeUntil([&] { return m_server.ConnectionCount() == 0; }));
    }
}

TEST_F(HostServerAccepting, GoesOnPausingUntilItsListenersCanBeWatchedAgain)
{
    m_calls.Fail("accept4", ENOMEM);
    const CRawConnection connection = CRawConnection::To("127.0.0.1", m_server.Port());
    EXPECT_EQ(m_server.Serve(30000), 0);
    int refused = 0;
    m_calls.Ask("epoll_ctl",
                [&](int, int operation, void* event) -> std::optional<int>
                {
                    const bool added = operation == EPOLL_CTL_ADD;
                    if (!added || static_cast<epoll_event*>(event)->data.u64 != 0 || refused == 3)
                        return std::nullopt; // connections have numbers
                    ++refused;
                    errno = ENOMEM;
                    return -1;
                });
    EXPECT_TRUE(ServeUntil([&] { return refused == 3; }));
    EXPECT_EQ(m_server.ConnectionCount(), 1u);
    const CRawConnection next = Connect();
    EXPECT_EQ(m_server.ConnectionCount(), 2u);
}

TEST_F(HostServerAccepting, TurnsAwayWhoCannotBeWatched)
{
    m_calls.Fail("epoll_ctl", ENOSPC);
    CRawConnection connection = CRawConnection::To("127.0.0.1", m_server.Port());
    EXPECT_TRUE(ServeUntil([&] { return m_handler.turnedAway == 1; }));
    EXPECT_TRUE(connection.Ended());
    EXPECT_EQ(m_server.ConnectionCount(), 0u);
    const CRawConnection next = Connect();
    EXPECT_EQ(m_server.ConnectionCount(), 1u);
}

TEST_F(HostServerAccepting, TurnsAwayWhileTheWholeSystemHasNoDescriptors)
{
    m_calls.Fail("accept4", ENFILE);
    CRawConnection connection = CRawConnection::To("127.0.0.1", m_server.Port());
    EXPECT_TRUE(ServeUntil([&] { return m_handler.turnedAway == 1; }));
    EXPECT_TRUE(connection.Ended());
    EXPECT_EQ(m_server.Error(), "");
}

TEST_F(HostServerAccepting, NeedsNoDescriptorForWhoHasGoneMeanwhile)
{
    m_calls.Ask("accept4",
                [this](int, int, void*) -> std::optional<int>
                {
                    m_calls.Fail("accept4", EAGAIN);
                    errno = EMFILE;
                    return -1;
                });
    const CRawConnection connection = CRawConnection::To("127.0.0.1", m_server.Port());
    EXPECT_EQ(m_server.Serve(30000), 0);
    EXPECT_EQ(m_server.Error(), "");
    EXPECT_TRUE(ServeUntil([&] { return m_server.ConnectionCount() == 1; }));
    EXPECT_EQ(m_handler.turnedAway, 0);
}

TEST_F(HostServerAccepting, WhoHasWaitedForItsFormerConnectionAndCannotBeWatchedAgainEnds)
{
    const std::string hello = "d4:argsl32:" + std::string(32, 'a') + "e4:name5:Helloe";
    CRawConnection first = Connect();
    first.Send(hello);
    ASSERT_TRUE(ServeUntil([&] { return Has(1, "introduced"); }));
    CRawConnection second = Connect();
    second.Send(hello);
    ASSERT_TRUE(HasInput(m_server.Descriptor(), 30000));
    EXPECT_EQ(m_server.Serve(0), 0);
    EXPECT_EQ(m_handler.logs[2], "");
    m_calls.Fail("epoll_ctl", ENOMEM);
    first.Close();
    EXPECT_TRUE(ServeUntil([&] { return Has(2, "disconnected\n"); }));
    EXPECT_TRUE(second.Ended()) << "so that its client connects anew";
    CRawConnection third = Connect();
    third.Send(hello + kPlain);
    EXPECT_TRUE(ServeUntil([&] { return m_handler.counts[3] == 1; }));
}

// ---- Serving

TEST_F(HostServerAccepting, AWaitThatFailsIsTold)
{
    m_calls.Fail("epoll_wait", EINTR);
    EXPECT_EQ(m_server.Serve(0), 0);
    EXPECT_EQ(m_server.Error(), "");
    m_calls.Fail("epoll_wait", EINVAL);
    EXPECT_EQ(m_server.Serve(0), -1);
    EXPECT_EQ(m_server.Error(), "epoll_wait: Invalid argument");
    EXPECT_EQ(m_server.Serve(0), 0);
    EXPECT_EQ(m_server.Error(), "");
}

TEST_F(HostServerAccepting, WhatWaitsIsSentAlthoughOutputCouldNotBeWatchedAtFirst)
{
    CRawConnection connection = Connect();
    BDictionaryC large;
    large.Insert("x", std::make_unique<BAtomC>(std::string(60000, 'x')));
    std::size_t answers = 0;
    m_calls.Fail("epoll_ctl", ENOMEM);
    while (m_server.Answer(1, large))
        ++answers;
    connection.Send(kPlain);
    EXPECT_TRUE(ServeUntil([&] { return m_handler.counts[1] == 1; }));
    std::size_t received = 0;
    EXPECT_TRUE(ServeUntil(
        [&]
        {
            received += connection.ReceivePending().size();
            return received == answers * 60011;
        }));
}

TEST_F(HostServerAccepting, AcknowledgesAlthoughItCannotSeeWhetherThereIsMoreToRead)
{
    m_handler.onBatch = [&](const MPIPeerC& peer) { m_server.Acknowledge(peer.connection, 7); };
    CRawConnection connection = Connect();
    m_calls.Fail("ioctl", EINVAL, CFailingCalls::kAlways);
    connection.Send(kPlain);
    std::string received;
    EXPECT_TRUE(ServeUntil(
        [&]
        {
            received += connection.ReceivePending();
            return received.size() >= 10;
        }));
    EXPECT_EQ(received, "d3:acki7ee");
}

TEST_F(HostServerAccepting, WhoHasEndedIsAcknowledgedOnceAllIsRead)
{
    m_handler.onBatch = [&](const MPIPeerC& peer)
    { m_server.Acknowledge(peer.connection, static_cast<std::uint64_t>(m_handler.counts[peer.connection])); };
    CRawConnection connection = Connect();
    m_calls.Ask("recv",
                [&](int descriptor, int, void* bytes) -> std::optional<int>
                {
                    if (descriptor == connection.Descriptor())
                        return std::nullopt;
                    return static_cast<int>(read(descriptor, bytes, std::strlen(kPlain))); // no more at once
                });
    connection.Send(std::string(kPlain) + kPlain + kPlain);
    connection.EndSending();
    EXPECT_TRUE(ServeUntil([&] { return Has(1, "disconnected\n"); }));
    EXPECT_EQ(m_handler.batches, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(connection.ReceiveToEnd(), "d3:acki3ee");
}

} // namespace
