// A server that acknowledges hears everything.
#include <MPI/MPISocketClientC.h>
#include <MPI/MPISocketServerC.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "host/connections/ServerFixture.h"
#include "host/connections/SessionsHandler.h"

namespace
{

using HostTest::CRawConnection;
using HostTest::Eventually;

constexpr std::chrono::milliseconds kLongerThanAPause(10);

/// Serves on a thread of its own, as an owner that is there all the time.
class Served
{
public:
    explicit Served(MPISocketServerC& server) : m_thread([&] { Serve(server); }) {}
    ~Served()
    {
        m_over = true;
        m_thread.join();
    }
    Served(const Served&) = delete;
    Served& operator=(const Served&) = delete;

private:
    void Serve(MPISocketServerC& server)
    {
        while (!m_over || server.ConnectionCount() > 0)
            EXPECT_GE(server.Serve(10), 0);
    }

    std::atomic<bool> m_over{false};
    std::thread m_thread;
};

/// Counts and acknowledges, as quickly as can be.
class Counter : public MPIServerHandlerC
{
public:
    void PeerIntroduced(const MPIPeerC& peer) override { server->Welcome(peer.connection, 0); }
    // One that comes in two pieces comes by this way, the others by the next.
    bool NotificationReceived(const MPIPeerC& peer, const MPINotificationC&) override
    {
        ++counts[peer.connection];
        return true;
    }
    bool NumbersReceived(const MPIPeerC& peer, const MPINumbersC&) override
    {
        ++counts[peer.connection];
        return true;
    }
    void BatchEnded(const MPIPeerC& peer) override
    {
        server->Acknowledge(peer.connection, counts[peer.connection]);
    }
    void InputRefused(const MPIPeerC&, std::uint64_t, const std::string& reason) override
    {
        ADD_FAILURE() << reason;
    }

    MPISocketServerC* server = nullptr;
    std::map<std::uint64_t, std::uint64_t> counts;
};

TEST(HostServerAcknowledging, AClientThatEndsWhileItIsAcknowledgedIsHeardToTheEnd)
{
    constexpr std::uint64_t kClients = 20;
    constexpr int kMoreThanFitTheSystems = 20000;
    Counter counter;
    MPISocketServerC server(counter);
    counter.server = &server;
    ASSERT_TRUE(server.Listen(0));
    std::vector<std::uint64_t> sent;
    {
        const Served served(server);
        for (std::uint64_t index = 0; index < kClients; ++index)
        {
            MPISocketClientC client(true);
            ASSERT_TRUE(client.Connect("localhost", server.Port(), 30000));
            ASSERT_TRUE(Eventually(
                [&]
                {
                    client.ProcessMessages(false);
                    return client.Welcomed();
                }));
            for (int count = 0; count < kMoreThanFitTheSystems && client.VerifyConnection(); ++count)
                EXPECT_TRUE(client.SendNotification("x", nullptr));
            sent.push_back(client.SentCount());
        }
    }
    for (std::uint64_t index = 0; index < kClients; ++index)
        EXPECT_EQ(counter.counts[index + 1], sent[static_cast<std::size_t>(index)]);
}

class HostServerPauses : public HostTest::CServerFixture<HostTest::CSessionsHandler>
{
protected:
    /// Sends a notification, which the server's system has when this returns.
    static void Send(CRawConnection& connection)
    {
        connection.Send(HostTest::kPlain);
        EXPECT_TRUE(Eventually([&] { return connection.Delivered(); }));
    }
};

TEST_F(HostServerPauses, WhatHasComeInByTheEndOfAPauseIsAcknowledgedAlongWithWhatCameBefore)
{
    m_handler.onBatch = [&](const MPIPeerC& peer)
    { m_server.Acknowledge(peer.connection, static_cast<std::uint64_t>(m_handler.counts[peer.connection])); };
    CRawConnection connection = Connect();
    Send(connection);
    ASSERT_TRUE(ServeUntil([&] { return m_handler.counts[1] == 1; }));
    std::this_thread::sleep_for(kLongerThanAPause);
    EXPECT_EQ(m_server.Serve(0), 0) << "the pause after what has just been read";
    Send(connection);
    std::this_thread::sleep_for(kLongerThanAPause);
    EXPECT_EQ(m_server.Serve(0), 1) << "its end and the next notification in one turn";
    std::string received;
    ASSERT_TRUE(ServeUntil([&] { return (received += connection.ReceivePending()).size() >= 10; }));
    EXPECT_EQ(received, "d3:acki2ee");
}

} // namespace
