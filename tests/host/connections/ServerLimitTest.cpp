// As many connections as may be up: who is turned away, and who has to give way.
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/connections/ServerFixture.h"
#include "host/connections/SessionsHandler.h"

namespace
{

using HostTest::CRawConnection;
using HostTest::CSessionsHandler;
using HostTest::HasInput;

const std::string kPlain = HostTest::kPlain;
const std::string kHello = "d4:argsl32:0123456789abcdef0123456789abcdefe4:name5:Helloe";

/// Notes who is turned away.
class LimitHandler : public CSessionsHandler
{
public:
    void PeerTurnedAway(const MPIPeerC& peer) override
    {
        logs[peer.connection] += "turned away " + peer.name + "\n";
    }
};

std::string TurnedAway(const CRawConnection& connection)
{
    return "turned away 127.0.0.1:" + std::to_string(connection.OwnPort()) + "\n";
}

class HostServerLimit : public HostTest::CServerFixture<LimitHandler>
{
protected:
    /// Connects and sends one message.
    CRawConnection ConnectAndSpeak()
    {
        CRawConnection connection = Connect();
        const std::uint64_t number = m_handler.last;
        connection.Send(kPlain);
        EXPECT_TRUE(ServeUntil([&] { return Has(number, "number 0"); }));
        return connection;
    }

    /// Connects to a server that has as many connections as may be, and serves one turn.
    CRawConnection ConnectOneMore()
    {
        CRawConnection connection = CRawConnection::To("127.0.0.1", m_server.Port());
        EXPECT_TRUE(HasInput(m_server.Descriptor(), 30000));
        m_server.Serve(0);
        return connection;
    }

    bool ServeUntilEnded(CRawConnection& connection)
    {
        return ServeUntil([&] { return connection.Ended(); });
    }
};

TEST_F(HostServerLimit, Keeps256ConnectionsThatHaveSpoken)
{
    std::vector<CRawConnection> connections;
    for (int count = 0; count < 256; ++count)
        connections.push_back(ConnectAndSpeak());
    EXPECT_EQ(m_server.ConnectionCount(), 256u);
    CRawConnection tooMany = CRawConnection::To("127.0.0.1", m_server.Port());
    EXPECT_TRUE(ServeUntilEnded(tooMany));
    EXPECT_EQ(m_handler.logs[0], TurnedAway(tooMany));
    EXPECT_EQ(m_server.ConnectionCount(), 256u);
    connections.pop_back();
    EXPECT_TRUE(ServeUntil([&] { return m_server.ConnectionCount() == 255; }));
    connections.push_back(Connect());
    connections.front().Send(kPlain);
    EXPECT_TRUE(ServeUntil([&] { return Has(1, "batch\n19 x"); }));
}

TEST_F(HostServerLimit, CanBeSet)
{
    EXPECT_EQ(m_server.MaximumConnections(), 256u);
    m_server.MaximumConnections(2);
    const CRawConnection first = ConnectAndSpeak();
    const CRawConnection second = ConnectAndSpeak();
    CRawConnection third = CRawConnection::To("127.0.0.1", m_server.Port());
    EXPECT_TRUE(ServeUntilEnded(third));
    EXPECT_EQ(m_handler.logs[0], TurnedAway(third));
    EXPECT_EQ(m_server.ConnectionCount(), 2u);
}

TEST_F(HostServerLimit, WhoHasBeenSilentForLongestGivesWay)
{
    m_server.MaximumConnections(3);
    const CRawConnection spoken = ConnectAndSpeak();
    CRawConnection silent = Connect();
    const CRawConnection later = Connect();
    CRawConnection next = Connect();
    EXPECT_EQ(m_handler.last, 4u);
    EXPECT_EQ(m_handler.logs[2], "disconnected\n" + TurnedAway(silent));
    EXPECT_TRUE(silent.Ended());
    EXPECT_EQ(m_server.ConnectionCount(), 3u);
    next.Send(kPlain);
    EXPECT_TRUE(ServeUntil([&] { return Has(4, "number 0"); }));
}

TEST_F(HostServerLimit, ALengthThatNeverComesIsNoMessage)
{
    m_server.MaximumConnections(1);
    CRawConnection endless = Connect();
    endless.Send("d4:argsl60000:");
    EXPECT_TRUE(ServeUntil([&] { return !HasInput(m_server.Descriptor(), 0); }));
    const CRawConnection next = Connect();
    EXPECT_TRUE(endless.Ended());
}

TEST_F(HostServerLimit, AnIntroductionIsAMessage)
{
    m_server.MaximumConnections(1);
    CRawConnection first = Connect();
    first.Send(kHello);
    EXPECT_TRUE(ServeUntil([&] { return Has(1, "introduced"); }));
    CRawConnection second = ConnectOneMore();
    EXPECT_TRUE(ServeUntilEnded(second));
    EXPECT_EQ(m_server.ConnectionCount(), 1u);
}

TEST_F(HostServerLimit, WhoHasJustSentSomethingDoesNotGiveWay)
{
    m_server.MaximumConnections(1);
    CRawConnection first = Connect();
    first.Send(kPlain);
    CRawConnection second = ConnectOneMore(); // both are met in one turn
    EXPECT_TRUE(ServeUntilEnded(second));
    EXPECT_TRUE(ServeUntil([&] { return Has(1, "number 0"); }));
}

TEST_F(HostServerLimit, WhoseFirstMessageTheHandlerHasNotTakenDoesNotGiveWay)
{
    m_server.MaximumConnections(1);
    CRawConnection first = Connect();
    m_handler.onNotification = [](const MPIPeerC&) { throw std::runtime_error("not now"); };
    first.Send("d4:argsle5:extra1:x4:name1:xe"); // one that has to be decoded
    EXPECT_TRUE(HasInput(m_server.Descriptor(), 30000));
    EXPECT_THROW(m_server.Serve(0), std::runtime_error);
    m_handler.onNotification = nullptr;
    CRawConnection second = ConnectOneMore();
    EXPECT_TRUE(ServeUntilEnded(second));
    EXPECT_EQ(m_server.ConnectionCount(), 1u);
}

TEST_F(HostServerLimit, NobodyGivesWayWhereThatMakesNoRoom)
{
    CRawConnection first = Connect();
    CRawConnection second = Connect();
    m_server.MaximumConnections(1);
    CRawConnection third = CRawConnection::To("127.0.0.1", m_server.Port());
    EXPECT_TRUE(ServeUntilEnded(third));
    EXPECT_EQ(m_server.ConnectionCount(), 2u);
    EXPECT_FALSE(first.Ended() || second.Ended());
}

} // namespace
