// Handlers that throw, and that close the server they are called from.
#include <cstdint>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

#include "host/connections/ServerFixture.h"
#include "host/connections/SessionsHandler.h"

namespace
{

using HostTest::CRawConnection;
using HostTest::CSessionsHandler;
using HostTest::Eventually;
using HostTest::HasInput;
using HostTest::kPlain;
using HostTest::kShortest;

const std::string kSession(32, 'a');
const std::string kHello = "d4:argsl32:" + kSession + "e4:name5:Helloe";

constexpr int kMoreThanABatch = 1500;

/// Throws in place of the next call, or another that is counted from it.
class Throwing : public CSessionsHandler
{
public:
    void PeerConnected(const MPIPeerC& peer) override
    {
        Count("connected");
        CSessionsHandler::PeerConnected(peer);
    }
    void PeerIntroduced(const MPIPeerC& peer) override
    {
        Count("introduced");
        CSessionsHandler::PeerIntroduced(peer);
    }
    bool NotificationReceived(const MPIPeerC& peer, const MPINotificationC& notification) override
    {
        Count("notification");
        return CSessionsHandler::NotificationReceived(peer, notification);
    }
    void BatchEnded(const MPIPeerC& peer) override
    {
        Count("batch");
        CSessionsHandler::BatchEnded(peer);
    }
    void InputRefused(const MPIPeerC& peer, std::uint64_t offset, const std::string& reason) override
    {
        Count("refused");
        CSessionsHandler::InputRefused(peer, offset, reason);
    }

    void PeerDisconnected(const MPIPeerC& peer) override
    {
        Count("disconnected");
        CSessionsHandler::PeerDisconnected(peer);
    }

    std::string what; // is to throw
    int left = 0;     // such calls until then; 0: none throws

private:
    void Count(const std::string& name)
    {
        if (name == what && left > 0 && --left == 0)
            throw std::runtime_error(name);
    }
};

class HostServerTrouble : public HostTest::CServerFixture<Throwing>
{
protected:
    /// Serves until one turn has thrown.
    void ServeUntilItThrows()
    {
        EXPECT_TRUE(Eventually(
            [&]
            {
                try
                {
                    m_server.Serve(0);
                    return false;
                }
                catch (const std::runtime_error& error)
                {
                    EXPECT_EQ(error.what(), m_handler.what);
                    return true;
                }
            }));
    }

    /// Has both say more than a turn hands over, and takes one turn.
    void LeaveSomethingOverOf(CRawConnection& first, CRawConnection& second)
    {
        std::string many;
        for (int count = 0; count < kMoreThanABatch; ++count)
            many += kShortest;
        first.Send(many);
        second.Send(many);
        ASSERT_TRUE(Eventually([&] { return first.Delivered() && second.Delivered(); }));
        ASSERT_EQ(m_server.Serve(0), 2 * MPISocketServerC::kBatchMessages);
    }

    /// How a connection that says this and ends is told, although the handler throws once.
    std::string LogOfThrowing(const std::string& what, int left, const std::string& bytes)
    {
        CRawConnection connection = Connect();
        const std::uint64_t number = m_handler.last;
        m_handler.what = what;
        m_handler.left = left;
        connection.Send(bytes);
        connection.EndSending();
        ServeUntilItThrows();
        EXPECT_TRUE(ServeUntil([&] { return Has(number, "disconnected\n"); }));
        std::string log = m_handler.logs[number];
        for (std::size_t at = log.find("batch\n"); at != std::string::npos; at = log.find("batch\n"))
            log.erase(at, 6);
        return log;
    }
};

TEST_F(HostServerTrouble, WhatTheHandlerThrowsForIsToldAgain)
{
    const std::string notification = kPlain;
    const std::string element = "d4:argsl1:ae4:name1:xe";
    EXPECT_EQ(LogOfThrowing("notification", 2, notification + notification + notification),
              "0 x number 0\n19 x number 0\n38 x number 0\ndisconnected\n");
    EXPECT_EQ(LogOfThrowing("notification", 2, element + element + element),
              "0 x number 0\n22 x number 0\n44 x number 0\ndisconnected\n");
    EXPECT_EQ(LogOfThrowing("notification", 1, "d4:argsle4:name1:x3:seqi7ee"),
              "0 x number 7\ndisconnected\n");
    EXPECT_EQ(LogOfThrowing("introduced", 1, kHello + notification),
              "introduced " + kSession + "\n58 x number 0\ndisconnected\n");
    EXPECT_EQ(LogOfThrowing("refused", 1, notification + "x"),
              "0 x number 0\nrefused at 19: a message is a dictionary and begins with \"d\"\ndisconnected\n");
    EXPECT_EQ(LogOfThrowing("batch", 1, notification + notification),
              "0 x number 0\n19 x number 0\ndisconnected\n");
}

TEST_F(HostServerTrouble, TheEndOfABatchThatItThrowsForIsToldAgain)
{
    CRawConnection connection = Connect();
    m_handler.what = "batch";
    m_handler.left = 1;
    connection.Send(kPlain);
    ServeUntilItThrows();
    EXPECT_EQ(m_handler.logs[1], "0 x number 0\n");
    EXPECT_TRUE(ServeUntil([&] { return Has(1, "batch\n"); }));
    EXPECT_FALSE(HasInput(m_server.Descriptor(), 0));
}

TEST_F(HostServerTrouble, AConnectionThatItThrowsForIsToldBeforeItsInput)
{
    m_handler.what = "connected";
    m_handler.left = 1;
    CRawConnection connection = CRawConnection::To("127.0.0.1", m_server.Port());
    ServeUntilItThrows();
    connection.Send(kPlain);
    EXPECT_TRUE(ServeUntil([&] { return m_handler.counts[1] == 1; }));
    EXPECT_EQ(m_handler.last, 1u);
}

TEST_F(HostServerTrouble, WhatOthersHadLeftOverWhenItThrowsIsServed)
{
    CRawConnection flood = Connect();
    CRawConnection other = Connect();
    std::string many;
    for (int count = 0; count < 1500; ++count)
        many += kShortest;
    flood.Send(many);
    ASSERT_TRUE(HasInput(m_server.Descriptor(), 30000));
    ASSERT_TRUE(ServeUntil([&] { return m_handler.counts[1] >= 1024; }));
    m_handler.what = "notification";
    m_handler.left = 1;
    other.Send(kPlain);
    ServeUntilItThrows();
    EXPECT_TRUE(ServeUntil([&] { return m_handler.counts[1] == 1500 && m_handler.counts[2] == 1; }));
    EXPECT_FALSE(HasInput(m_server.Descriptor(), 0)) << "or the owner is kept busy for nothing";
}

TEST_F(HostServerTrouble, CloseFromWithinItEndsTheTurnAndTellsAll)
{
    const CRawConnection idle = Connect();
    CRawConnection connection = Connect();
    m_handler.onNotification = [&](const MPIPeerC&) { m_server.Close(); };
    connection.Send(std::string(kPlain) + kPlain + kPlain);
    EXPECT_TRUE(ServeUntil([&] { return m_server.ConnectionCount() == 0; }));
    EXPECT_EQ(m_handler.logs[2], "0 x number 0\nbatch\ndisconnected\n");
    EXPECT_EQ(m_handler.logs[1], "disconnected\n");
    EXPECT_EQ(m_server.Port(), 0);
    m_handler.onNotification = nullptr;
    ASSERT_TRUE(m_server.Listen(0)) << m_server.Error();
    CRawConnection next = Connect();
    next.Send(kPlain);
    EXPECT_TRUE(ServeUntil([&] { return m_handler.counts[3] == 1; }));
}

TEST_F(HostServerTrouble, CloseFromWithinAnyCallDoes)
{
    const auto closing = [this](const MPIPeerC&) { m_server.Close(); };
    for (auto* const hook : {&m_handler.onIntroduction, &m_handler.onBatch, &m_handler.onNotification})
    {
        *hook = closing;
        CRawConnection connection = Connect();
        connection.Send(kHello + kPlain);
        EXPECT_TRUE(ServeUntil([&] { return m_server.ConnectionCount() == 0; }));
        EXPECT_TRUE(Has(m_handler.last, "disconnected\n"));
        *hook = nullptr;
        ASSERT_TRUE(m_server.Listen(0)) << m_server.Error();
    }
}

TEST_F(HostServerTrouble, CloseIsDoneAlsoIfItThrowsAfterThat)
{
    CRawConnection connection = Connect();
    m_handler.what = "batch";
    m_handler.left = 1;
    m_handler.onNotification = [&](const MPIPeerC&) { m_server.Close(); };
    connection.Send(kPlain);
    ServeUntilItThrows();
    EXPECT_TRUE(ServeUntil([&] { return m_server.ConnectionCount() == 0; }));
    EXPECT_EQ(m_server.Port(), 0);
}

TEST_F(HostServerTrouble, CloseFromWithinItTakesNobodyElseIn)
{
    m_handler.onConnection = [this](const MPIPeerC&) { m_server.Close(); };
    const CRawConnection first = CRawConnection::To("127.0.0.1", m_server.Port());
    CRawConnection second = CRawConnection::To("127.0.0.1", m_server.Port());
    EXPECT_TRUE(ServeUntil([&] { return m_server.Port() == 0; }));
    EXPECT_EQ(m_handler.last, 1u);
    EXPECT_EQ(m_handler.logs[1], "disconnected\n");
    EXPECT_TRUE(Eventually([&] { return second.Ended(); }));
}

TEST_F(HostServerTrouble, CloseFromWithinItHandsOverNothingOfWhatOthersHadLeftOver)
{
    CRawConnection first = Connect();
    CRawConnection second = Connect();
    LeaveSomethingOverOf(first, second);
    m_handler.onNotification = [this](const MPIPeerC&) { m_server.Close(); };
    EXPECT_EQ(m_server.Serve(0), 1);
    EXPECT_EQ(m_handler.counts[1] + m_handler.counts[2], 2 * MPISocketServerC::kBatchMessages + 1);
    EXPECT_TRUE(Has(1, "disconnected\n") && Has(2, "disconnected\n"));
    EXPECT_FALSE(HasInput(m_server.Descriptor(), 0));
}

TEST_F(HostServerTrouble, CloseFromWithinItIsFinishedByTheNextTurnWhereItThrowsForADisconnection)
{
    const CRawConnection idle = Connect();
    CRawConnection connection = Connect();
    const CRawConnection another = Connect();
    m_handler.what = "disconnected";
    m_handler.left = 2; // the first is that of the connection being served, which its turn tells
    m_handler.onNotification = [this](const MPIPeerC&) { m_server.Close(); };
    connection.Send(kPlain);
    ServeUntilItThrows();
    EXPECT_EQ(m_server.Serve(0), 0);
    EXPECT_EQ(m_server.ConnectionCount(), 0u);
    EXPECT_TRUE(Has(3, "disconnected\n"));
    EXPECT_EQ(m_server.Port(), 0);
}

TEST_F(HostServerTrouble, CloseThatItThrowsInMayBeRepeatedAndTheOthersAreServedUntilThen)
{
    CRawConnection first = Connect();
    CRawConnection second = Connect();
    LeaveSomethingOverOf(first, second);
    m_handler.what = "disconnected";
    m_handler.left = 1;
    EXPECT_THROW(m_server.Close(), std::runtime_error);
    EXPECT_TRUE(ServeUntil([&] { return m_handler.counts[2] == kMoreThanABatch; }));
    EXPECT_EQ(m_handler.counts[1], MPISocketServerC::kBatchMessages) << "it has ended";
    m_server.Close();
    EXPECT_EQ(m_server.ConnectionCount(), 0u);
    EXPECT_TRUE(Has(2, "disconnected\n"));
}

TEST_F(HostServerTrouble, TheEndOfAConnectionThatWasNeverToldIsNotToldEither)
{
    m_handler.what = "connected";
    m_handler.left = 1;
    const CRawConnection connection = CRawConnection::To("127.0.0.1", m_server.Port());
    ServeUntilItThrows();
    m_server.Close();
    EXPECT_EQ(m_server.ConnectionCount(), 0u);
    EXPECT_TRUE(m_handler.logs.empty());
}

} // namespace
