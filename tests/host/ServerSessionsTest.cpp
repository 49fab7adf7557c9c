// What a server tells of sessions, and what it answers.
#include <MPI/BAtomC.h>
#include <MPI/BDecoderC.h>
#include <MPI/BDictionaryC.h>
#include <MPI/BEncoderC.h>
#include <MPI/BListC.h>
#include <MPI/MPISocketClientC.h>
#include <MPI/MPISocketServerC.h>

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "host/RawPeer.h"

namespace
{

using HostTest::CRawConnection;
using HostTest::Eventually;

const std::string kSession = "0123456789abcdef0123456789ABCDEF";
const std::string kHello = "d4:argsl32:" + kSession + "e4:name5:Helloe";
const std::string kPlain = "d4:argsle4:name1:xe";
const std::string kShortest = "d4:argsle4:name0:e";

std::string Numbered(const std::string& number)
{
    return "d4:argsli1ee4:name1:x3:seqi" + number + "ee";
}

/// Writes down what a server tells, by connection.
class Handler : public MPIServerHandlerC
{
public:
    void PeerConnected(const MPIPeerC& peer) override { last = peer.connection; }
    void PeerIntroduced(const MPIPeerC& peer) override
    {
        logs[peer.connection] += "introduced " + peer.session + "\n";
        if (onIntroduction)
            onIntroduction(peer);
    }
    bool NotificationReceived(const MPIPeerC& peer, const MPINotificationC& notification) override
    {
        logs[peer.connection] += std::to_string(notification.offset) + " " + notification.name + " number " +
                                 std::to_string(notification.number) + "\n";
        ++counts[peer.connection];
        if (onNotification)
            onNotification(peer);
        return notification.name != "refuse";
    }
    void BatchEnded(const MPIPeerC& peer) override
    {
        logs[peer.connection] += "batch\n";
        batches.push_back(counts[peer.connection]);
        if (onBatch)
            onBatch(peer);
    }
    void InputRefused(const MPIPeerC& peer, std::uint64_t offset, const std::string& reason) override
    {
        logs[peer.connection] += "refused at " + std::to_string(offset) + ": " + reason + "\n";
    }
    void PeerTurnedAway(const MPIPeerC&) override { ++turnedAway; }
    void PeerDisconnected(const MPIPeerC& peer) override { logs[peer.connection] += "disconnected\n"; }

    std::uint64_t last = 0;
    std::map<std::uint64_t, std::string> logs;
    std::map<std::uint64_t, int> counts; // of notifications
    std::vector<int> batches;            // the count when each ended
    int turnedAway = 0;
    std::function<void(const MPIPeerC&)> onIntroduction;
    std::function<void(const MPIPeerC&)> onNotification;
    std::function<void(const MPIPeerC&)> onBatch;
};

class HostServerSessions : public testing::Test
{
protected:
    HostServerSessions() : m_server(m_handler) { EXPECT_TRUE(m_server.Listen(0)) << m_server.Error(); }

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

    bool Has(std::uint64_t number, const std::string& text)
    {
        return m_handler.logs[number].find(text) != std::string::npos;
    }

    /// What the handler is told of a new connection that sends this and ends, without the ends of batches.
    std::string LogOf(const std::string& bytes)
    {
        CRawConnection connection = Connect();
        const std::uint64_t number = m_handler.last;
        connection.Send(bytes);
        connection.EndSending();
        EXPECT_TRUE(ServeUntil([&] { return Has(number, "disconnected\n"); }));
        std::string log = m_handler.logs[number];
        for (std::size_t at = log.find("batch\n"); at != std::string::npos; at = log.find("batch\n"))
            log.erase(at, 6);
        return log;
    }

    Handler m_handler;
    MPISocketServerC m_server;
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
    EXPECT_EQ(LogOf("d4:argslle e4:name5:Helloe").find("introduced"), std::string::npos);
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

TEST_F(HostServerSessions, NumbersThatDoNotRiseAreRefused)
{
    EXPECT_EQ(LogOf(Numbered("5") + Numbered("5")),
              "0 x number 5\nrefused at 30: \"seq\" 5 after 5\ndisconnected\n");
    EXPECT_EQ(LogOf(Numbered("5") + "d4:argsl1:ae4:name1:x3:seqi4ee"),
              "0 x number 5\nrefused at 30: \"seq\" 4 after 5\ndisconnected\n");
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

TEST_F(HostServerSessions, BatchesEndWithTheInputOrAfter1024Notifications)
{
    CRawConnection connection = Connect();
    std::string many;
    for (int count = 0; count < 3000; ++count)
        many += kShortest; // 54 kB, which one read takes
    connection.Send(many);
    ASSERT_TRUE(Eventually([&] { return HostTest::HasInput(m_server.Descriptor(), 0); }));
    EXPECT_TRUE(ServeUntil([&] { return m_handler.counts[1] == 3000; }));
    int before = 0;
    for (const int count : m_handler.batches)
    {
        EXPECT_LE(count - before, 1024);
        before = count;
    }
    EXPECT_EQ(before, 3000) << "the last notification is followed by the end of its batch";
    EXPECT_GE(m_handler.batches.size(), 3u);
}

TEST_F(HostServerSessions, ABatchEndsBeforeARefusalIsTold)
{
    CRawConnection connection = Connect();
    connection.Send(kPlain + "nonsense");
    EXPECT_TRUE(ServeUntil([&] { return Has(1, "disconnected\n"); }));
    EXPECT_EQ(m_handler.logs[1].find("0 x number 0\nbatch\nrefused at 19: "), 0u);
}

TEST_F(HostServerSessions, TheDescriptorHasInputWhileSomethingIsLeftOver)
{
    CRawConnection connection = Connect();
    std::string many;
    for (int count = 0; count < 2500; ++count)
        many += kShortest;
    connection.Send(many);
    ASSERT_TRUE(Eventually([&] { return HostTest::HasInput(m_server.Descriptor(), 0); }));
    while (m_handler.counts[1] < 2500)
    {
        ASSERT_TRUE(HostTest::HasInput(m_server.Descriptor(), 30000)) << m_handler.counts[1];
        ASSERT_LE(m_server.Serve(0), 1024);
    }
    EXPECT_FALSE(HostTest::HasInput(m_server.Descriptor(), 0));
}

TEST_F(HostServerSessions, AFloodDelaysAnotherByOneBatchAtMost)
{
    CRawConnection flood = Connect();
    CRawConnection other = Connect();
    std::string many;
    for (int count = 0; count < 10000; ++count)
        many += kShortest;
    int afterTheOther = -1; // of the flood, since the other's notification was on its way
    bool sent = false;
    m_handler.onNotification = [&](const MPIPeerC& peer)
    {
        if (peer.connection == 2)
            return;
        if (sent && m_handler.counts[2] == 0)
            ++afterTheOther;
        if (!sent && m_handler.counts[1] == 100)
        {
            other.Send(kPlain);
            sent = true;
        }
    };
    for (int turn = 0; m_handler.counts[2] == 0; ++turn)
    {
        many.erase(0, flood.SendSome(many));
        ASSERT_GE(m_server.Serve(0), 0);
        ASSERT_LT(turn, 10000);
    }
    EXPECT_LE(afterTheOther, 1024);
    EXPECT_GE(afterTheOther, 100) << "it did flood";
}

TEST_F(HostServerSessions, TheMostConnectionsCanBeSet)
{
    EXPECT_EQ(m_server.MaximumConnections(), 256u);
    m_server.MaximumConnections(2);
    const CRawConnection first = Connect();
    const CRawConnection second = Connect();
    CRawConnection third = CRawConnection::To("127.0.0.1", m_server.Port());
    EXPECT_TRUE(ServeUntil([&] { return third.Ended(); }));
    EXPECT_EQ(m_handler.turnedAway, 1);
    EXPECT_EQ(m_server.ConnectionCount(), 2u);
}

/// Takes notifications of numbers as they are.
class NumbersHandler : public Handler
{
public:
    bool NumbersReceived(const MPIPeerC& peer, const MPINumbersC& notification) override
    {
        std::string& log = logs[peer.connection];
        log += std::to_string(notification.offset) + " " + std::string(notification.name);
        for (std::size_t index = 0; index < notification.count; ++index)
            log += " " + std::to_string(notification.arguments[index]);
        log += " number " + std::to_string(notification.number) + "\n";
        return notification.name != "refuse";
    }
};

TEST(HostServerNumbers, AreHandedOverWithoutElements)
{
    NumbersHandler handler;
    MPISocketServerC server(handler);
    ASSERT_TRUE(server.Listen(0));
    CRawConnection connection = CRawConnection::To("127.0.0.1", server.Port());
    connection.Send("d4:argsli265243ei-2ei0ee4:name10:RaiseError3:seqi7eed4:argsle4:name0:e"
                    "d4:argsl1:ae4:name1:xe");
    connection.Send("d4:argsle4:name6:refusee" + kPlain);
    EXPECT_TRUE(Eventually([&] { return server.Serve(0) >= 0 && connection.Ended(); }));
    EXPECT_EQ(handler.logs[1],
              "0 RaiseError 265243 -2 0 number 7\n52  number 0\n70 x number 0\n92 refuse number 0\n"
              "batch\ndisconnected\n");
}

/// What a stream comes to by the decoder alone.
std::string DecodedLog(const std::string& stream)
{
    BDecoderC decoder;
    std::string log;
    for (std::size_t begin = 0; begin < stream.size() && !decoder.Failed();)
    {
        begin += decoder.Feed(stream.data() + begin, stream.size() - begin);
        const std::unique_ptr<BDictionaryC> message = decoder.TakeMessage();
        if (message == nullptr)
            continue;
        BEncoderC encoder;
        encoder.Element(*message);
        log += std::to_string(decoder.MessageOffset()) + " " + encoder.Bytes() + "\n";
    }
    if (decoder.Failed())
        log += "refused at " + std::to_string(decoder.FaultOffset()) + ": " + decoder.FaultReason() + "\n";
    if (decoder.Incomplete())
        log +=
            "refused at " + std::to_string(decoder.StreamOffset()) + ": connection ended within a message\n";
    return log;
}

/// Writes down whole messages.
class MessagesHandler : public MPIServerHandlerC
{
public:
    bool NotificationReceived(const MPIPeerC&, const MPINotificationC& notification) override
    {
        BEncoderC encoder;
        encoder.Element(notification.message);
        log += std::to_string(notification.offset) + " " + encoder.Bytes() + "\n";
        return true;
    }
    void InputRefused(const MPIPeerC&, std::uint64_t offset, const std::string& reason) override
    {
        log += "refused at " + std::to_string(offset) + ": " + reason + "\n";
        judged = reason.find("seq") != std::string::npos || reason.find("notification") != std::string::npos;
    }
    void PeerDisconnected(const MPIPeerC&) override { ended = true; }

    std::string log;
    bool judged = false; // refused for what it says, not for how
    bool ended = false;
};

TEST(HostServerNumbers, AreTakenAndRefusedExactlyAsTheDecoderDoes)
{
    const std::string right = "d4:argsli265243ei-2ei0ee4:name10:RaiseError3:seqi12ee";
    const std::string bytes = "0159-:deils\xFF";
    for (std::size_t position = 0; position < right.size(); ++position)
    {
        for (const char byte : bytes)
        {
            std::string stream = right + right;
            stream[position] = byte;
            stream.replace(stream.size() - 4, 2, "99"); // so that the numbers rise
            MessagesHandler handler;
            MPISocketServerC server(handler);
            ASSERT_TRUE(server.Listen(0));
            CRawConnection connection = CRawConnection::To("127.0.0.1", server.Port());
            connection.Send(stream);
            connection.EndSending();
            ASSERT_TRUE(Eventually([&] { return server.Serve(0) >= 0 && handler.ended; }));
            if (!handler.judged)
            {
                EXPECT_EQ(handler.log, DecodedLog(stream)) << stream;
            }
        }
    }
}

TEST(HostServerNumbers, DoNotDependOnHowTheStreamIsCut)
{
    const std::string right = "d4:argsli265243ei-2ei0ee4:name10:RaiseError3:seqi12ee";
    const std::string next = "d4:argsli265243ei2ee4:name10:ClearError3:seqi13ee";
    for (std::size_t cut = 1; cut < right.size() + next.size(); ++cut)
    {
        MessagesHandler handler;
        MPISocketServerC server(handler);
        ASSERT_TRUE(server.Listen(0));
        CRawConnection connection = CRawConnection::To("127.0.0.1", server.Port());
        connection.Send((right + next).substr(0, cut));
        ASSERT_TRUE(Eventually([&] { return server.Serve(0) >= 0 && server.ConnectionCount() == 1; }));
        ASSERT_GE(server.Serve(20), 0);
        connection.Send((right + next).substr(cut));
        connection.EndSending();
        ASSERT_TRUE(Eventually([&] { return server.Serve(0) >= 0 && handler.ended; }));
        EXPECT_EQ(handler.log, "0 " + right + "\n53 " + next + "\n") << cut;
    }
}

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

} // namespace
