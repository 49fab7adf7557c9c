#pragma once

#include "host/reference/SessionPeer.h"

#include <MPI/BAtomC.h>
#include <MPI/BListC.h>
#include <MPI/MPISocketClientC.h>

#include <chrono>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <vector>

namespace HostTest
{

using Numbers = std::vector<std::uint64_t>;

/// What a client's outbox holds.
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

} // namespace HostTest
