// What a server tells of sessions, and what it answers.
#include <MPI/BAtomC.h>
#include <MPI/BDictionaryC.h>
#include <MPI/BListC.h>

#include <chrono>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "host/connections/ServerFixture.h"
#include "host/connections/SessionsHandler.h"

namespace
{

using HostTest::CRawConnection;
using HostTest::CSessionsHandler;

const std::string kPlain = HostTest::kPlain;
const std::string kSession = "0123456789abcdef0123456789ABCDEF";
const std::string kHello = "d4:argsl32:" + kSession + "e4:name5:Helloe";

constexpr int kAGreatDeal = 14; // messages of 60 000 bytes: more than three quarters of a mebibyte

std::string Numbered(const std::string& number)
{
    return "d4:argsli1ee4:name1:x3:seqi" + number + "ee";
}

class HostServerSessions : public HostTest::CServerFixture<CSessionsHandler>
{
protected:
    /// So many bytes from the server, which may have to be served to send them.
    std::string ReceivedFrom(CRawConnection& connection, std::size_t size)
    {
        std::string received;
        ServeUntil(
            [&]
            {
                received += connection.ReceivePending();
                return received.size() >= size;
            });
        return received;
    }

    /// The number of a new connection that sends an introduction and ends.
    std::uint64_t Introduced(const std::string& session)
    {
        CServerFixture::LogOf("d4:argsl32:" + session + "e4:name5:Helloe");
        return m_handler.last;
    }

    /// Sends so much that an acknowledgement to follow would not wait for a pause.
    void SendAGreatDeal(CRawConnection& connection)
    {
        const std::string large = "d4:argsl60000:" + std::string(60000, 'x') + "e4:name1:xe";
        for (int count = 1; count <= kAGreatDeal; ++count)
        {
            connection.Send(large);
            ASSERT_TRUE(ServeUntil([&] { return m_handler.counts[m_handler.last] == count; }));
        }
    }

    /// What the handler is told of a new connection that sends this and ends, without the ends of batches.
    std::string LogOf(const std::string& bytes)
    {
        std::string log = CServerFixture::LogOf(bytes);
        for (std::size_t at = log.find("batch\n"); at != std::string::npos; at = log.find("batch\n"))
            log.erase(at, 6);
        return log;
    }
};

TEST_F(HostServerSessions, AnIntroductionTellsTheSessionAndIsNoNotification)
{
    EXPECT_EQ(LogOf(kHello + kPlain), "introduced " + kSession + "\n58 x number 0\ndisconnected\n");
}

TEST_F(HostServerSessions, ThePeerHasItsSessionFromThenOn)
{
    std::string session;
    m_handler.onNotification = [&](const MPIPeerC& peer) { session = peer.session; };
    LogOf(kPlain);
    EXPECT_EQ(session, "");
    LogOf(kHello + kPlain);
    EXPECT_EQ(session, kSession);
}

TEST_F(HostServerSessions, IntroductionsThatAreNoneAreRefused)
{
    const std::string reason = "refused at 0: an introduction takes 32 hexadecimal digits\ndisconnected\n";
    EXPECT_EQ(LogOf("d4:argsle4:name5:Helloe"), reason);
    EXPECT_EQ(LogOf("d4:argsli1ee4:name5:Helloe"), reason);
    EXPECT_EQ(LogOf("d4:argsl31:" + kSession.substr(1) + "e4:name5:Helloe"), reason);
    EXPECT_EQ(LogOf("d4:argsl33:" + kSession + "0e4:name5:Helloe"), reason);
    EXPECT_EQ(LogOf("d4:argsl32:" + kSession.substr(1) + "ge4:name5:Helloe"), reason);
    EXPECT_EQ(LogOf("d4:argsl32:" + kSession + "i1ee4:name5:Helloe"), reason);
    EXPECT_EQ(LogOf("d4:argsllee4:name5:Helloe"), reason) << "a list";
    EXPECT_EQ(LogOf("d4:argsldee4:name5:Helloe"), reason) << "a dictionary";
}

TEST_F(HostServerSessions, AnIntroductionTakesTheDigitsOfBothCasesAndNothingNextToThem)
{
    for (const char digit : std::string("0123456789abcdefABCDEF"))
    {
        const std::string session = std::string(31, '0') + digit;
        EXPECT_TRUE(Has(Introduced(session), "introduced " + session + "\n"));
    }
    for (const char other : std::string("/:@G`g"))
        EXPECT_TRUE(Has(Introduced(std::string(31, '0') + other), "refused at 0: an introduction takes"));
}

TEST_F(HostServerSessions, AnIntroductionComesOnceAndFirst)
{
    EXPECT_EQ(LogOf(kHello + kHello),
              "introduced " + kSession + "\nrefused at 58: a second introduction\ndisconnected\n");
    EXPECT_EQ(LogOf(kPlain + kHello), "0 x number 0\nrefused at 19: an introduction after other messages\n"
                                      "disconnected\n");
}

TEST_F(HostServerSessions, NotificationsHaveTheirNumbers)
{
    EXPECT_EQ(LogOf(kHello + Numbered("1") + Numbered("7") + kPlain + Numbered("9223372036854775807")),
              "introduced " + kSession +
                  "\n58 x number 1\n88 x number 7\n118 x number 0\n"
                  "137 x number 9223372036854775807\ndisconnected\n");
    EXPECT_EQ(LogOf("d4:argsl1:ae4:name1:x3:seqi5ee"), "0 x number 5\ndisconnected\n")
        << "without an introduction, and however it is decoded";
}

TEST_F(HostServerSessions, NumbersThatAreNoneAreRefused)
{
    const std::string reason = "refused at 19: \"seq\" is not a number from 1 on\ndisconnected\n";
    EXPECT_EQ(LogOf(kPlain + Numbered("0")), "0 x number 0\n" + reason);
    EXPECT_EQ(LogOf(kPlain + Numbered("-1")), "0 x number 0\n" + reason);
    EXPECT_EQ(LogOf(kPlain + "d4:argsle4:name1:x3:seq1:1e"), "0 x number 0\n" + reason);
    EXPECT_EQ(LogOf(kPlain + "d4:argsle4:name1:x3:seqlee"), "0 x number 0\n" + reason);
}

TEST_F(HostServerSessions, NumbersThatDoNotRiseArePassedOn)
{
    EXPECT_EQ(LogOf(kHello + Numbered("5") + Numbered("5") + "d4:argsl1:ae4:name1:x3:seqi4ee"),
              "introduced " + kSession + "\n58 x number 5\n88 x number 5\n118 x number 4\ndisconnected\n");
    EXPECT_EQ(LogOf(Numbered("5") + Numbered("1")), "0 x number 5\n30 x number 1\ndisconnected\n");
}

TEST_F(HostServerSessions, WelcomesAndAcknowledgementsAreSent)
{
    m_handler.onIntroduction = [&](const MPIPeerC& peer) { m_server.Welcome(peer.connection, 5); };
    m_handler.onBatch = [&](const MPIPeerC& peer) { m_server.Acknowledge(peer.connection, 7); };
    CRawConnection connection = Connect();
    connection.Send(kHello + Numbered("6") + Numbered("7"));
    EXPECT_TRUE(ServeUntil([&] { return m_handler.counts[1] == 2; }));
    EXPECT_EQ(ReceivedFrom(connection, 24), "d7:welcomei5eed3:acki7ee");
    m_server.Acknowledge(1, 8); // also later, from outside
    EXPECT_EQ(ReceivedFrom(connection, 10), "d3:acki8ee");
}

TEST_F(HostServerSessions, WhoHasEndedSendingIsAnsweredStill)
{
    m_handler.onIntroduction = [&](const MPIPeerC& peer) { m_server.Welcome(peer.connection, 0); };
    m_handler.onBatch = [&](const MPIPeerC& peer) { m_server.Acknowledge(peer.connection, 1); };
    CRawConnection connection = Connect();
    connection.Send(kHello + Numbered("1"));
    connection.EndSending();
    EXPECT_TRUE(ServeUntil([&] { return Has(1, "disconnected\n"); }));
    EXPECT_EQ(connection.ReceiveToEnd(), "d7:welcomei0eed3:acki1ee");
}

TEST_F(HostServerSessions, WhoEndsSendingLaterIsAnsweredBeforeTheConnectionIsClosed)
{
    m_handler.onFinish = [&](const MPIPeerC& peer)
    {
        EXPECT_EQ(m_handler.counts[peer.connection], 1);
        EXPECT_FALSE(Has(peer.connection, "disconnected\n"));
        m_server.Welcome(peer.connection, 0);
        m_server.Acknowledge(peer.connection, 1);
    };
    CRawConnection connection = Connect();
    connection.Send(kHello + Numbered("1"));
    EXPECT_TRUE(ServeUntil([&] { return m_handler.counts[1] == 1; }));
    EXPECT_EQ(m_handler.finished[1], 0);
    connection.EndSending();
    EXPECT_TRUE(ServeUntil([&] { return Has(1, "disconnected\n"); }));
    EXPECT_EQ(connection.ReceiveToEnd(), "d7:welcomei0eed3:acki1ee");
    EXPECT_EQ(m_handler.finished[1], 1);
}

TEST_F(HostServerSessions, AnAcknowledgementThatWaitsForAPauseIsSentAtTheEndOfSending)
{
    m_handler.onBatch = [&](const MPIPeerC& peer) { m_server.Acknowledge(peer.connection, 1); };
    for (std::uint64_t round = 1; round <= 20; ++round)
    {
        CRawConnection connection = Connect();
        connection.Send(kHello + Numbered("1"));
        EXPECT_TRUE(ServeUntil([&] { return m_handler.counts[round] == 1; }));
        connection.EndSending();
        EXPECT_TRUE(ServeUntil([&] { return Has(round, "disconnected\n"); }));
        EXPECT_EQ(connection.ReceiveToEnd(), "d3:acki1ee");
    }
}

TEST_F(HostServerSessions, TheEndOfSendingIsToldAgainWhereTheHandlerThrew)
{
    m_handler.onFinish = [&](const MPIPeerC& peer)
    {
        if (m_handler.finished[peer.connection] == 1)
            throw 1;
    };
    CRawConnection connection = Connect();
    connection.Send(kPlain);
    connection.EndSending();
    EXPECT_THROW(ServeUntil([&] { return Has(1, "disconnected\n"); }), int);
    EXPECT_TRUE(ServeUntil([&] { return Has(1, "disconnected\n"); }));
    EXPECT_EQ(m_handler.finished[1], 2);
}

TEST_F(HostServerSessions, OnlyWhoEndsSendingInOrderHasFinished)
{
    LogOf(kPlain);
    EXPECT_EQ(m_handler.finished[m_handler.last], 1);
    LogOf("");
    EXPECT_EQ(m_handler.finished[m_handler.last], 1) << "there was nothing to send";
    LogOf(kPlain + "d4:args");
    EXPECT_EQ(m_handler.finished[m_handler.last], 0) << "within a message";
    LogOf(kPlain + "x");
    EXPECT_EQ(m_handler.finished[m_handler.last], 0) << "refused";
    std::string many;
    for (int count = 0; count <= MPISocketServerC::kBatchMessages; ++count)
        many += kPlain;
    m_handler.onFinish = [&](const MPIPeerC& peer)
    { EXPECT_EQ(m_handler.counts[peer.connection], MPISocketServerC::kBatchMessages + 1); };
    LogOf(many);
    EXPECT_EQ(m_handler.finished[m_handler.last], 1) << "when all of it was handed over";
}

TEST_F(HostServerSessions, AnswersToWhoHasGoneDoNothing)
{
    m_server.Welcome(1, 0);
    m_server.Acknowledge(1, 0);
    EXPECT_FALSE(m_server.Answer(1, BDictionaryC()));
    CRawConnection connection = Connect();
    connection.Send(kPlain + kPlain + kPlain);
    ASSERT_TRUE(HostTest::HasInput(m_server.Descriptor(), 30000));
    connection.Reset();
    m_handler.onNotification = [&](const MPIPeerC& peer) { m_server.Welcome(peer.connection, 0); };
    EXPECT_TRUE(ServeUntil([&] { return Has(1, "disconnected\n"); }));
}

TEST_F(HostServerSessions, AnswersToWhoHasJustGoneWithinAMessageDoNothing)
{
    BDictionaryC large;
    large.Insert("x", std::make_unique<BAtomC>(std::string(60000, 'x')));
    bool answered = true;
    m_handler.onRefusal = [&](const MPIPeerC& peer)
    {
        answered = m_server.Answer(peer.connection, BDictionaryC());
        m_server.Welcome(peer.connection, 0);
        m_server.Acknowledge(peer.connection, 7);
    };
    for (const bool waiting : {false, true})
    {
        CRawConnection connection = Connect();
        SendAGreatDeal(connection);
        while (waiting && m_server.Answer(m_handler.last, large))
            EXPECT_FALSE(HasFailure());
        connection.Send("d4:args");
        connection.EndSending();
        EXPECT_TRUE(ServeUntil([&] { return Has(m_handler.last, "disconnected\n"); }));
        EXPECT_FALSE(answered);
        const std::string received = connection.ReceiveToEnd();
        EXPECT_EQ(received.find("ack"), std::string::npos);
        EXPECT_EQ(received.find("welcome"), std::string::npos);
    }
}

TEST_F(HostServerSessions, AGreatDealIsAcknowledgedWithoutWaitingForAPause)
{
    m_handler.onNotification = [&](const MPIPeerC& peer)
    {
        if (m_handler.counts[peer.connection] == kAGreatDeal)
            m_server.Acknowledge(peer.connection, 7);
    };
    CRawConnection connection = Connect();
    SendAGreatDeal(connection);
    EXPECT_EQ(connection.Receive(10), "d3:acki7ee") << "by the turn that has read it";
}

TEST_F(HostServerSessions, NothingIsAcknowledgedAsLongAsSomethingReadIsLeftOver)
{
    constexpr int kMoreThanThreeBatches = 3500; // in what is read at once
    m_handler.onBatch = [&](const MPIPeerC& peer)
    { m_server.Acknowledge(peer.connection, static_cast<std::uint64_t>(m_handler.counts[peer.connection])); };
    for (const bool ending : {false, true})
    {
        CRawConnection connection = Connect();
        std::string stream;
        for (int count = 0; count < kMoreThanThreeBatches; ++count)
            stream += HostTest::kShortest;
        connection.Send(stream);
        if (ending)
            connection.EndSending();
        for (int batch = 1; batch <= 3; ++batch)
        {
            EXPECT_EQ(m_server.Serve(30000), MPISocketServerC::kBatchMessages);
            EXPECT_EQ(connection.ReceivePending(), "");
            std::this_thread::sleep_for(std::chrono::milliseconds(10)); // longer than a pause has to be
        }
        EXPECT_EQ(ReceivedFrom(connection, 13), "d3:acki3500ee");
    }
}

TEST_F(HostServerSessions, AnAnswerMayHaveEightLevelsAndNoMore)
{
    CRawConnection connection = Connect();
    std::unique_ptr<BElementC> inner = std::make_unique<BListC>();
    for (int level = 2; level <= 8; ++level)
    {
        auto outer = std::make_unique<BListC>();
        outer->Append(std::move(inner));
        inner = std::move(outer);
    }
    EXPECT_TRUE(m_server.Answer(1, *inner));
    EXPECT_EQ(connection.Receive(16), "lllllllleeeeeeee");
    BListC deeper;
    deeper.Append(std::move(inner));
    EXPECT_FALSE(m_server.Answer(1, deeper));
}

TEST_F(HostServerSessions, AnyMessageCanBeAnswered)
{
    BDictionaryC statistics;
    statistics.Insert("received", std::make_unique<BAtomC>(7));
    m_handler.onNotification = [&](const MPIPeerC& peer)
    { EXPECT_TRUE(m_server.Answer(peer.connection, statistics)); };
    CRawConnection connection = Connect();
    connection.Send(kPlain);
    EXPECT_TRUE(ServeUntil([&] { return m_handler.counts[1] == 1; }));
    EXPECT_EQ(connection.Receive(15), "d8:receivedi7ee");
    BDictionaryC tooLarge;
    tooLarge.Insert("x", std::make_unique<BAtomC>(std::string(65536, 'x')));
    EXPECT_FALSE(m_server.Answer(1, tooLarge));
}

TEST_F(HostServerSessions, APeerThatDoesNotReadGetsNoMoreAnswersAndTheLastAcknowledgement)
{
    CRawConnection connection = Connect();
    BDictionaryC large;
    large.Insert("x", std::make_unique<BAtomC>(std::string(60000, 'x')));
    int answers = 0;
    while (m_server.Answer(1, large))
        ASSERT_LT(++answers, 2000);
    for (std::uint64_t number = 1; number <= 1000; ++number)
        m_server.Acknowledge(1, number);
    EXPECT_FALSE(m_server.Answer(1, large));
    std::string received;
    EXPECT_TRUE(ServeUntil(
        [&]
        {
            received += connection.ReceivePending();
            return received.find("d3:acki") != std::string::npos;
        }));
    EXPECT_EQ(received.size(), static_cast<std::size_t>(answers) * 60011 + 13);
    EXPECT_EQ(received.substr(received.size() - 13), "d3:acki1000ee");
    EXPECT_FALSE(HostTest::HasInput(m_server.Descriptor(), 0)) << "output is not watched for any more";
    EXPECT_TRUE(m_server.Answer(1, large));
}

TEST_F(HostServerSessions, APeerThatDoesNotReadItsAcknowledgementDoesNotKeepTheOwnerBusy)
{
    CRawConnection connection = Connect();
    BDictionaryC large;
    large.Insert("x", std::make_unique<BAtomC>(std::string(60000, 'x')));
    for (int answers = 0; m_server.Answer(1, large); ++answers)
        ASSERT_LT(answers, 2000);
    m_server.Acknowledge(1, 7);
    EXPECT_TRUE(ServeUntil([&] { return !HostTest::HasInput(m_server.Descriptor(), 100); }));
}

TEST_F(HostServerSessions, AGreatDealIsAcknowledgedOnceThePeerTakesOutputAgain)
{
    CRawConnection connection = Connect();
    BDictionaryC large;
    large.Insert("x", std::make_unique<BAtomC>(std::string(60000, 'x')));
    std::size_t answers = 0;
    while (m_server.Answer(1, large))
        ASSERT_LT(++answers, 2000u);
    SendAGreatDeal(connection);
    for (std::uint64_t number = 1; number <= 3; ++number)
        m_server.Acknowledge(1, number);
    const std::string received = ReceivedFrom(connection, answers * 60011 + 10);
    EXPECT_EQ(received.size(), answers * 60011 + 10) << "of several that wait the last is sent";
    EXPECT_EQ(received.substr(received.size() - 10), "d3:acki3ee");
}

} // namespace
