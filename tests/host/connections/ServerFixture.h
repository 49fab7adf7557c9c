#pragma once

#include <MPI/MPISocketServerC.h>

#include <cstdint>
#include <gtest/gtest.h>
#include <string>

#include "host/connections/RawPeer.h"

namespace HostTest
{

/// A server on a port of the system's choice. Its handler writes down what it is told: `logs` by connection,
/// and the number of the `last` that came.
template <typename Handler> class CServerFixture : public testing::Test
{
protected:
    CServerFixture() : m_server(m_handler) { EXPECT_TRUE(m_server.Listen(0)) << m_server.Error(); }

    CRawConnection Connect()
    {
        CRawConnection connection = CRawConnection::To("127.0.0.1", m_server.Port());
        const std::uint64_t before = m_handler.last;
        EXPECT_TRUE(ServeUntil([&] { return m_handler.last > before; }));
        return connection;
    }

    template <typename Condition> bool ServeUntil(Condition condition)
    {
        return Eventually(
            [&]
            {
                EXPECT_GE(m_server.Serve(0), 0);
                return condition();
            });
    }

    bool Has(std::uint64_t number, const std::string& text)
    {
        return m_handler.logs[number].find(text) != std::string::npos;
    }

    /// What the handler is told of a new connection that sends this and ends.
    std::string LogOf(const std::string& bytes)
    {
        CRawConnection connection = Connect();
        const std::uint64_t number = m_handler.last;
        connection.Send(bytes);
        connection.EndSending();
        EXPECT_TRUE(ServeUntil([&] { return Has(number, "disconnected\n"); }));
        return m_handler.logs[number];
    }

    Handler m_handler;
    MPISocketServerC m_server;
};

} // namespace HostTest
