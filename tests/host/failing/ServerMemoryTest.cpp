// A server that gets no memory. In a program that takes the place of the functions that allocate.
#include <MPI/MPISocketServerC.h>

#include <cstdint>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

#include "host/connections/RawPeer.h"
#include "support/failing/FailingMemory.h"

namespace
{

using FailingMemory::CAttempt;
using FailingMemory::FailEach;
using HostTest::CRawConnection;
using HostTest::Eventually;

const std::string kNumbers = "d4:argsle4:name1:xe";
const std::string kText = "d4:argsl33:a text that is too long for cheape4:name1:xe";

/// Counts, and allocates nothing.
class Counter : public MPIServerHandlerC
{
public:
    bool NotificationReceived(const MPIPeerC&, const MPINotificationC&) override { return Count(); }
    bool NumbersReceived(const MPIPeerC&, const MPINumbersC&) override { return Count(); }
    void InputRefused(const MPIPeerC&, std::uint64_t, const std::string& reason) override
    {
        ADD_FAILURE() << reason;
    }
    void PeerDisconnected(const MPIPeerC&) override { ++disconnected; }

    bool throws = false;
    int notifications = 0;
    int disconnected = 0;

private:
    bool Count()
    {
        if (throws)
            throw std::runtime_error("refused");
        ++notifications;
        return true;
    }
};

/// A server and a connection to it that has sent something.
class Served
{
public:
    explicit Served(const std::string& bytes)
        : m_server(m_handler), m_listens(m_server.Listen(0)),
          m_connection(CRawConnection::To("127.0.0.1", m_server.Port()))
    {
        EXPECT_TRUE(m_listens) << m_server.Error();
        EXPECT_TRUE(ServeUntil([&] { return m_server.ConnectionCount() == 1; }));
        m_connection.Send(bytes);
        EXPECT_TRUE(HostTest::HasInput(m_server.Descriptor(), 30000));
    }

    template <typename Condition> bool ServeUntil(Condition condition)
    {
        return Eventually([&] { return m_server.Serve(0) >= 0 && condition(); });
    }

    /// Has the next connection somebody to hear it?
    bool HearsAnother()
    {
        const int before = m_handler.notifications;
        CRawConnection connection = CRawConnection::To("127.0.0.1", m_server.Port());
        connection.Send(kNumbers);
        return ServeUntil([&] { return m_handler.notifications > before; });
    }

    Counter& Handler() { return m_handler; }
    int Serve() { return m_server.Serve(0); }

private:
    Counter m_handler;
    MPISocketServerC m_server;
    const bool m_listens;
    CRawConnection m_connection;
};

TEST(HostServerOutOfMemory, WhereItCannotDecodeAMessageThatConnectionEndsAlone)
{
    int ended = 0;
    const auto attemptToServe = [&](CAttempt& attempt)
    {
        Served served(kText);
        const bool well = attempt.Run([&] { served.Serve(); });
        EXPECT_EQ(well, !attempt.Met());
        EXPECT_TRUE(served.ServeUntil(
            [&] { return served.Handler().notifications + served.Handler().disconnected == 1; }));
        ended += served.Handler().disconnected;
        EXPECT_TRUE(served.HearsAnother());
    };
    EXPECT_GT(FailEach(attemptToServe), 5);
    EXPECT_GT(ended, 3) << "the test has to interrupt the decoder, too";
}

TEST(HostServerOutOfMemory, WhatItCannotKeepForAHandlerThatThrowsEndsItsConnection)
{
    int kept = 0;
    int ended = 0;
    const auto attemptToServe = [&](CAttempt& attempt)
    {
        Served served(kNumbers + kNumbers + kNumbers);
        served.Handler().throws = true;
        attempt.Run([&] { EXPECT_THROW(served.Serve(), std::exception); });
        served.Handler().throws = false;
        EXPECT_TRUE(served.ServeUntil(
            [&] { return served.Handler().notifications == 3 || served.Handler().disconnected == 1; }));
        EXPECT_EQ(served.Handler().notifications, served.Handler().disconnected == 1 ? 0 : 3);
        kept += served.Handler().notifications == 3 ? 1 : 0;
        ended += served.Handler().disconnected;
        EXPECT_TRUE(served.HearsAnother());
    };
    EXPECT_GT(FailEach(attemptToServe), 1);
    EXPECT_GT(kept, 0);
    EXPECT_EQ(ended, 1);
}

} // namespace
