// Connections of one session, which are heard one after the other.
#include <MPI/BAtomC.h>
#include <MPI/BDictionaryC.h>

#include <chrono>
#include <cstddef>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "host/connections/ServerFixture.h"
#include "host/connections/SessionsHandler.h"

namespace
{

using HostTest::CRawConnection;
using HostTest::CSessionsHandler;
using HostTest::HasInput;

const std::string kPlain = HostTest::kPlain;
const std::string kSession = "0123456789abcdef0123456789ABCDEF";
const std::string kHello = "d4:argsl32:" + kSession + "e4:name5:Helloe";

std::string Numbered(const std::string& number)
{
    return "d4:argsli1ee4:name1:x3:seqi" + number + "ee";
}

class HostServerSuccession : public HostTest::CServerFixture<CSessionsHandler>
{
protected:
    /// Two connections of one session: the first has introduced itself, and the second waits for it.
    void ConnectBoth()
    {
        m_first.emplace(Connect());
        m_first->Send(kHello);
        ASSERT_TRUE(ServeUntil([&] { return Has(1, "introduced"); }));
        m_second.emplace(Connect());
        m_second->Send(kHello);
        ASSERT_TRUE(HasInput(m_server.Descriptor(), 30000));
        EXPECT_EQ(m_server.Serve(0), 0);
        EXPECT_EQ(m_handler.logs[2], "");
    }

    /// Lets the time pass after which the server has another look at who is waited for. Nothing is served.
    static void LetALookComeDue() { std::this_thread::sleep_for(std::chrono::milliseconds(150)); }

    std::optional<CRawConnection> m_first;
    std::optional<CRawConnection> m_second;
};

TEST_F(HostServerSuccession, ASecondConnectionOfASessionIsHeardWhenTheFirstHasEnded)
{
    CRawConnection first = Connect();
    CRawConnection second = Connect();
    std::string many = kHello;
    for (int number = 1; number <= 3000; ++number)
        many += Numbered(std::to_string(number));
    first.Send(many.substr(0, 58));
    ASSERT_TRUE(ServeUntil([&] { return Has(1, "introduced"); }));
    first.Send(many.substr(58));
    second.Send(kHello + Numbered("3001"));
    std::string order;
    m_handler.onNotification = [&](const MPIPeerC& peer) { order += std::to_string(peer.connection); };
    ASSERT_TRUE(ServeUntil([&] { return m_handler.counts[1] == 3000; }));
    EXPECT_EQ(m_handler.logs[2], "");
    first.Close();
    ASSERT_TRUE(ServeUntil([&] { return m_handler.counts[2] == 1; }));
    EXPECT_EQ(order, std::string(3000, '1') + "2");
    EXPECT_EQ(m_handler.logs[2].find("introduced " + kSession + "\n58 x number 3001\n"), 0u);
    EXPECT_TRUE(Has(1, "disconnected\n"));
}

TEST_F(HostServerSuccession, ConnectionsOfOtherSessionsDoNotWait)
{
    CRawConnection first = Connect();
    first.Send(kHello);
    ASSERT_TRUE(ServeUntil([&] { return Has(1, "introduced"); }));
    CRawConnection other = Connect();
    other.Send("d4:argsl32:" + std::string(32, 'a') + "e4:name5:Helloe");
    ASSERT_TRUE(ServeUntil([&] { return Has(2, "introduced"); }));
    EXPECT_FALSE(Has(1, "disconnected"));
}

TEST_F(HostServerSuccession, AFirstConnectionThatStaysAndSaysNothingIsNotWaitedForLong)
{
    CRawConnection first = Connect();
    first.Send(kHello);
    ASSERT_TRUE(ServeUntil([&] { return Has(1, "introduced"); }));
    CRawConnection second = Connect();
    CRawConnection third = Connect();
    second.Send(kHello);
    ASSERT_TRUE(ServeUntil([&] { return !HasInput(m_server.Descriptor(), 20); }))
        << "who waits does not keep the owner busy";
    third.Send(kHello + kPlain);
    EXPECT_TRUE(ServeUntil([&] { return m_handler.counts[3] == 1; }));
    EXPECT_TRUE(Has(2, "introduced"));
    first.Send(kPlain);
    EXPECT_TRUE(ServeUntil([&] { return m_handler.counts[1] == 1; })) << "and is heard still";
}

TEST_F(HostServerSuccession, WhoEndsWhileItWaitsIsHeardInItsTurn)
{
    CRawConnection first = Connect();
    first.Send(kHello);
    ASSERT_TRUE(ServeUntil([&] { return Has(1, "introduced"); }));
    CRawConnection second = Connect();
    second.Send(kHello + kPlain);
    second.Close();
    ASSERT_TRUE(ServeUntil([&] { return !HasInput(m_server.Descriptor(), 20); }));
    EXPECT_EQ(m_handler.logs[2], "");
    first.Close();
    EXPECT_TRUE(ServeUntil([&] { return Has(2, "disconnected"); }));
    EXPECT_EQ(m_handler.counts[2], 1);
}

TEST_F(HostServerSuccession, AFirstConnectionWithInputIsWaitedForOn)
{
    ConnectBoth();
    for (int count = 1; count <= 8; ++count)
    {
        m_first->Send(kPlain);
        LetALookComeDue();
        EXPECT_EQ(m_server.Serve(0), 1);
        EXPECT_EQ(m_handler.counts[1], count);
        EXPECT_EQ(m_handler.logs[2], "");
    }
    EXPECT_TRUE(ServeUntil([&] { return Has(2, "introduced"); })) << "once it has nothing to say";
}

TEST_F(HostServerSuccession, AFirstConnectionWithSomethingLeftOverIsWaitedForOn)
{
    ConnectBoth();
    std::string many;
    for (int count = 0; count < 3000; ++count)
        many += HostTest::kShortest;
    m_first->Send(many);
    ASSERT_TRUE(HostTest::Eventually([&] { return m_first->Delivered(); }));
    EXPECT_EQ(m_server.Serve(0), MPISocketServerC::kBatchMessages);
    LetALookComeDue();
    EXPECT_EQ(m_server.Serve(0), MPISocketServerC::kBatchMessages);
    EXPECT_EQ(m_handler.logs[2], "");
    EXPECT_TRUE(ServeUntil([&] { return Has(2, "introduced"); }));
    EXPECT_EQ(m_handler.counts[1], 3000);
}

TEST_F(HostServerSuccession, WhoBeginsToWaitDoesNotPutOffWhoWaitsAlready)
{
    ConnectBoth();
    std::vector<std::unique_ptr<CRawConnection>> others;
    while (!Has(2, "introduced") && others.size() < 100)
    {
        others.push_back(std::make_unique<CRawConnection>(Connect()));
        others.back()->Send("d4:argsl32:" + std::string(32, 'a') + "e4:name5:Helloe");
        std::this_thread::sleep_for(std::chrono::milliseconds(60));
        m_server.Serve(0);
    }
    EXPECT_TRUE(Has(2, "introduced"));
}

TEST_F(HostServerSuccession, TheEndOfOneThatIsNotWaitedForAnyMoreDoesNotDisturbItsSuccessor)
{
    ConnectBoth();
    ASSERT_TRUE(ServeUntil([&] { return Has(2, "introduced"); }));
    m_first->Close();
    ASSERT_TRUE(ServeUntil([&] { return Has(1, "disconnected"); }));
    m_second->Send(kPlain);
    EXPECT_TRUE(ServeUntil([&] { return m_handler.counts[2] == 1; }));
    EXPECT_FALSE(Has(2, "disconnected"));
}

TEST_F(HostServerSuccession, WhatOneThatWaitsIsAnsweredIsSent)
{
    ConnectBoth();
    BDictionaryC large;
    large.Insert("x", std::make_unique<BAtomC>(std::string(60000, 'x')));
    std::size_t answers = 0;
    while (m_server.Answer(2, large))
        ASSERT_LT(++answers, 2000u);
    m_first->Close();
    std::size_t received = 0;
    EXPECT_TRUE(ServeUntil(
        [&]
        {
            received += m_second->ReceivePending().size();
            return received == answers * 60011;
        }));
}

} // namespace
