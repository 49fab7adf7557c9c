// What only our own host promises.
#include <Core/Time.h>
#include <MPI/BAtomC.h>
#include <MPI/BEncoderC.h>
#include <MPI/BListC.h>
#include <MPI/MPISocketClientC.h>
#include <MPI/MPISocketServerC.h>

#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

#include "host/connections/RawPeer.h"

namespace
{

using HostTest::CRawConnection;
using HostTest::CRawListener;
using HostTest::Eventually;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kOutboxBytes = 1048576;
constexpr std::size_t kLargestMessage = 65536;

TEST(ReferenceHost, HasZeroAsTypeWordOfATime)
{
    for (const Core::Time& time : {Core::Time(), Core::Time(5), Core::Time::Now()})
    {
        std::uint32_t word = 1;
        std::memcpy(&word, &time, sizeof(word));
        EXPECT_EQ(word, 0u);
    }
}

TEST(ReferenceHost, KeepsOneMebibyteAndSaysNoWhenALargestMessageWouldNotFit)
{
    CRawListener listener;
    MPISocketClientC client(true);
    ASSERT_TRUE(client.Connect("localhost", listener.Port(), 30000));
    const CRawConnection peer = listener.Accept();
    BListC arguments;
    arguments.Append(std::make_unique<BAtomC>(std::string(1000, 'x')));
    while (client.VerifyConnection())
    {
        ASSERT_LE(client.BytesWaiting(), kOutboxBytes - kLargestMessage);
        ASSERT_TRUE(client.SendNotification("a", &arguments));
    }
    EXPECT_GT(client.BytesWaiting(), kOutboxBytes - kLargestMessage);
    while (client.SendNotification("a", &arguments))
        ASSERT_LE(client.BytesWaiting(), kOutboxBytes);
    EXPECT_GT(client.BytesWaiting(), kOutboxBytes - 1100) << "after a no there is still the rest of the room";
}

TEST(ReferenceHost, TriesALostConnectionAgainAtMostEvery250Milliseconds)
{
    CRawListener listener;
    MPISocketClientC client(true);
    Clock::time_point beforeLast = Clock::now();
    client.Connect("localhost", listener.Port(), -1);
    listener.Accept().Close();
    for (int tries = 0; tries < 4; ++tries)
    {
        Clock::time_point before;
        ASSERT_TRUE(Eventually(
            [&]
            {
                before = Clock::now();
                client.VerifyConnection();
                return listener.HasConnection();
            }));
        EXPECT_GE(Clock::now() - beforeLast, std::chrono::milliseconds(250));
        beforeLast = before;
        listener.Accept().Close();
    }
}

TEST(ReferenceHost, KeepsSayingNoFor250MillisecondsAlthoughThereIsRoomAgain)
{
    CRawListener listener;
    MPISocketClientC client(true);
    ASSERT_TRUE(client.Connect("localhost", listener.Port(), 30000));
    CRawConnection peer = listener.Accept();
    BListC arguments;
    arguments.Append(std::make_unique<BAtomC>(std::string(60000, 'x')));
    Clock::time_point before = Clock::now();
    while (client.VerifyConnection())
    {
        ASSERT_TRUE(client.SendNotification("a", &arguments));
        before = Clock::now();
    }
    ASSERT_TRUE(Eventually(
        [&]
        {
            peer.ReceivePending();
            return client.VerifyConnection();
        }));
    EXPECT_GE(Clock::now() - before, std::chrono::milliseconds(250));
}

class Handler : public MPIServerHandlerC
{
public:
    bool NotificationReceived(const MPIPeerC&, const MPINotificationC&) override
    {
        ++notifications;
        return true;
    }
    void InputRefused(const MPIPeerC&, std::uint64_t, const std::string& reason) override
    {
        ADD_FAILURE() << reason;
    }
    void PeerTurnedAway(const MPIPeerC& peer) override { turnedAway.push_back(peer.name); }

    int notifications = 0;
    std::vector<std::string> turnedAway;
};

/// A server and a connection to it.
class ReferenceHostServing : public testing::Test
{
protected:
    ReferenceHostServing()
        : m_server(m_handler), m_listens(m_server.Listen(0)),
          m_served(CRawConnection::To("127.0.0.1", m_server.Port()))
    {
        EXPECT_TRUE(m_listens) << m_server.Error();
        EXPECT_TRUE(Eventually([&] { return m_server.Serve(0) == 0 && m_server.ConnectionCount() == 1; }));
    }

    /// Does the connection's next notification arrive?
    bool ServesTheNext()
    {
        const int before = m_handler.notifications;
        m_served.Send("d4:argsle4:name1:xe");
        return Eventually([&] { return m_server.Serve(0) >= 0 && m_handler.notifications == before + 1; });
    }

    Handler m_handler;
    MPISocketServerC m_server;
    const bool m_listens;
    CRawConnection m_served;
};

/// Leaves the process no descriptor as long as it lives.
class NoDescriptors
{
public:
    NoDescriptors()
    {
        getrlimit(RLIMIT_NOFILE, &m_limit);
        rlimit low = m_limit;
        low.rlim_cur = 64;
        setrlimit(RLIMIT_NOFILE, &low);
        for (int copy = dup(0); copy >= 0; copy = dup(0))
            m_copies.push_back(copy);
    }
    ~NoDescriptors()
    {
        for (const int copy : m_copies)
            close(copy);
        setrlimit(RLIMIT_NOFILE, &m_limit);
    }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    rlimit m_limit = {};
    std::vector<int> m_copies;
};

TEST_F(ReferenceHostServing, TurnsConnectionsAwayWithoutDescriptorsAndServesTheOthers)
{
    ASSERT_TRUE(ServesTheNext());
    CRawConnection late = CRawConnection::To("127.0.0.1", m_server.Port());
    {
        const NoDescriptors noDescriptors;
        EXPECT_TRUE(Eventually([&] { return m_server.Serve(0) == 0 && late.Ended(); }));
        EXPECT_EQ(m_handler.turnedAway,
                  std::vector<std::string>{"127.0.0.1:" + std::to_string(late.OwnPort())});
        EXPECT_TRUE(ServesTheNext());
    }
    const CRawConnection next = CRawConnection::To("127.0.0.1", m_server.Port());
    EXPECT_TRUE(Eventually([&] { return m_server.Serve(0) == 0 && m_server.ConnectionCount() == 2; }));
}

/// A client without a connection: the two operations that matter are taken over.
class Unconnected : public MPISocketClientC
{
public:
    Unconnected() : MPISocketClientC(true) {}
    bool Connected() override { return connected; }
    bool SendMessage(BEncoderC* message) override
    {
        sent += message->Bytes();
        return true;
    }

    bool connected = false;
    std::string sent;
};

TEST(ReferenceHost, LetsATestTakeThePlaceOfTheConnection)
{
    Unconnected client;
    EXPECT_FALSE(client.VerifyConnection());
    client.connected = true;
    EXPECT_TRUE(client.VerifyConnection());
    EXPECT_TRUE(client.SendNotification("a", nullptr));
    BAtomC atom(1);
    EXPECT_TRUE(client.SendMessageElement(&atom));
    EXPECT_EQ(client.sent, "d4:argsle4:name1:a3:seqi1eei1e");
}

/// Lets the process open nothing as long as it lives, whatever it closes.
class NothingOpens
{
public:
    NothingOpens()
    {
        getrlimit(RLIMIT_NOFILE, &m_limit);
        rlimit low = m_limit;
        low.rlim_cur = 3; // poll(2) wants room for one
        setrlimit(RLIMIT_NOFILE, &low);
    }
    ~NothingOpens() { setrlimit(RLIMIT_NOFILE, &m_limit); }
    NothingOpens(const NothingOpens&) = delete;
    NothingOpens& operator=(const NothingOpens&) = delete;

private:
    rlimit m_limit = {};
};

TEST_F(ReferenceHostServing, DoesNotKeepItsOwnerBusyWhileTheSystemRefusesToAccept)
{
    constexpr int kPauses = 4;
    // Once before, since a sanitizer opens a descriptor of its own when it first checks a class.
    ASSERT_TRUE(ServesTheNext());
    const CRawConnection waiting = CRawConnection::To("127.0.0.1", m_server.Port());
    {
        const NothingOpens nothingOpens;
        const Clock::time_point before = Clock::now();
        EXPECT_EQ(m_server.Serve(30000), 0);
        EXPECT_EQ(m_server.Error().substr(0, 8), "accept: ");
        for (int pause = 0; pause < kPauses; ++pause)
        {
            ASSERT_TRUE(HostTest::HasInput(m_server.Descriptor(), 30000)) << "it tries again";
            EXPECT_EQ(m_server.Serve(0), 0);
            EXPECT_EQ(m_server.Error(), "") << "told once";
        }
        // The least that so many pauses take; a slow machine only makes it more.
        EXPECT_GE(Clock::now() - before, kPauses * std::chrono::milliseconds(100));
        EXPECT_TRUE(ServesTheNext());
        EXPECT_EQ(m_server.ConnectionCount(), 1u);
    }
    EXPECT_TRUE(Eventually([&] { return m_server.Serve(0) == 0 && m_server.ConnectionCount() == 2; }));
    EXPECT_EQ(m_server.Error(), "");
}

TEST(ReferenceHost, ListensAgainAfterBeingClosedWhileTheSystemRefusedToAccept)
{
    Handler handler;
    MPISocketServerC server(handler);
    ASSERT_TRUE(server.Listen(0));
    const CRawConnection waiting = CRawConnection::To("127.0.0.1", server.Port());
    {
        const NothingOpens nothingOpens;
        ASSERT_EQ(server.Serve(30000), 0);
        ASSERT_NE(server.Error(), "");
    }
    server.Close();
    ASSERT_TRUE(server.Listen(0)) << server.Error();
    const CRawConnection next = CRawConnection::To("127.0.0.1", server.Port());
    EXPECT_TRUE(Eventually([&] { return server.Serve(0) == 0 && server.ConnectionCount() == 1; }));
}

TEST(ReferenceHost, CallsAPeerThatHasGoneUnknown)
{
    CRawListener listener;
    CRawConnection gone = CRawConnection::To("127.0.0.1", listener.Port());
    const CRawConnection accepted = listener.Accept();
    gone.Reset();
    ASSERT_TRUE(HostTest::HasInput(accepted.Descriptor(), 30000));
    MPISocketConnectionC connection;
    connection.Accept(dup(accepted.Descriptor()));
    EXPECT_EQ(connection.PeerName(), "unknown");
}

/// A connection without a session, as an owner has them.
class Plain : public MPISocketConnectionC
{
public:
    using MPISocketConnectionC::Bridges;
};

TEST(ReferenceHost, AConnectionWithoutASessionKeepsOneMebibyteAndPromisesNothing)
{
    CRawListener listener;
    CRawConnection peer = CRawConnection::To("127.0.0.1", listener.Port());
    CRawConnection accepted = listener.Accept();
    Plain connection;
    connection.Accept(dup(accepted.Descriptor()));
    accepted.Close();
    BListC arguments;
    arguments.Append(std::make_unique<BAtomC>(std::string(60000, 'x')));
    std::size_t sent = 0;
    while (connection.SendNotification("a", &arguments))
        sent += 60025;
    EXPECT_GT(connection.BytesWaiting(), kOutboxBytes - kLargestMessage);
    EXPECT_LE(connection.BytesWaiting(), kOutboxBytes);
    EXPECT_FALSE(connection.Welcomed());
    EXPECT_FALSE(connection.Bridges());
    EXPECT_EQ(connection.UnacknowledgedCount(), 0u);
    EXPECT_TRUE(connection.WaitUntilAcknowledged(0)) << "nothing is going to be";
    std::size_t received = 0;
    EXPECT_TRUE(Eventually(
        [&]
        {
            connection.ProcessMessages(false);
            received += peer.ReceivePending().size();
            return received == sent;
        }));
    EXPECT_TRUE(connection.SendNotification("a", &arguments)) << "there is room again";
}

} // namespace
