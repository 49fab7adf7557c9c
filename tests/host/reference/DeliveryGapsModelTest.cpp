// A client that sends before it is welcomed, connects anew while it is connected and fills its outbox, and a
// receiver that takes its time: what does not arrive is never said to have arrived.
#include <MPI/BAtomC.h>
#include <MPI/BListC.h>
#include <MPI/MPISocketClientC.h>

#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <sys/socket.h>

#include "host/reference/SessionPeer.h"

namespace
{

using namespace HostTest;

constexpr int kSteps = 1500;
constexpr int kBurst = 3000; // ten of them are more than is kept

/// Knows of each notification whether it has applied it. What it has applied outlives its connections.
class Receiver
{
public:
    /// @param silent  so many connections are never welcomed
    Receiver(std::minstd_rand& random, unsigned silent) : m_random(random), m_silent(silent) {}

    unsigned short Port() const { return m_listener.Port(); }
    const std::set<std::uint64_t>& Applied() const { return m_applied; }
    bool HasConnection() const { return m_connection.has_value(); }

    /// Takes the next connection, if there is one. The one before is heard to its end, or lost with what it
    /// had still to say.
    void AcceptIfAny()
    {
        if (!m_listener.HasConnection())
            return;
        if (m_connection && m_random() % 2 == 0)
            Take(m_connection->ReceiveToEnd());
        m_connection.emplace(m_listener.Accept());
        m_stream = CSessionStream();
        m_seen = 0;
        m_acknowledges = false;
        m_welcomed = m_silent > 0 && m_silent-- > 0;
        m_prompt = m_random() % 2 == 0;
    }

    void Read(std::size_t most)
    {
        std::string bytes(most, '\0');
        const ssize_t count = recv(m_connection->Descriptor(), bytes.data(), most, MSG_DONTWAIT);
        Take(bytes.substr(0, count > 0 ? static_cast<std::size_t>(count) : 0));
        if (m_prompt)
            SayWelcome();
    }

    void SayWelcome()
    {
        if (m_stream.Session().empty() || std::exchange(m_welcomed, true))
            return;
        m_connection->SendSome(Welcome(Last()));
        m_acknowledges = true;
    }

    void Acknowledge()
    {
        if (m_acknowledges)
            m_connection->SendSome(Acknowledgement(Last()));
    }

    void End() { m_connection.reset(); }

private:
    std::int64_t Last() const
    {
        return m_applied.empty() ? 0 : static_cast<std::int64_t>(*m_applied.rbegin());
    }

    void Take(const std::string& bytes)
    {
        m_stream.Take(bytes);
        for (; m_seen < m_stream.Numbers().size(); ++m_seen)
        {
            const std::uint64_t number = m_stream.Numbers()[m_seen];
            EXPECT_GT(static_cast<std::int64_t>(number), Last()) << "twice, or out of order";
            m_applied.insert(number);
        }
    }

    std::minstd_rand& m_random;
    CRawListener m_listener;
    std::optional<CRawConnection> m_connection;
    CSessionStream m_stream;
    std::size_t m_seen = 0;
    unsigned m_silent;
    bool m_welcomed = false; // or will never be
    bool m_prompt = false;   // welcomes as soon as it knows whom
    bool m_acknowledges = false;
    std::set<std::uint64_t> m_applied;
};

class HostGapsModel : public testing::TestWithParam<unsigned>
{
protected:
    void SendSome(int count)
    {
        for (int sent = 0; sent < count && m_client.VerifyConnection(); ++sent)
        {
            const bool welcomed = m_client.Welcomed();
            BListC arguments;
            arguments.Append(std::make_unique<BAtomC>(static_cast<std::int64_t>(m_accepted + 1), &arguments));
            if (!m_client.SendNotification("Number", &arguments))
                return;
            ++m_accepted;
            m_unsure = m_everWelcomed || welcomed ? m_unsure : m_accepted;
            m_everWelcomed = m_everWelcomed || welcomed;
        }
    }

    void Step()
    {
        const unsigned choice = static_cast<unsigned>(m_random() % 1000);
        if (choice < 400)
            SendSome(1 + static_cast<int>(choice % 20));
        else if (choice < 410)
            SendSome(kBurst);
        else if (choice < 500)
            m_client.ProcessMessages(false);
        else if (choice < 520)
            m_client.Connect("127.0.0.1", m_receiver.Port(), 30000);
        m_receiver.AcceptIfAny();
        if (!m_receiver.HasConnection())
            return;
        if (choice >= 520 && choice < 940)
            m_receiver.Read(1 + m_random() % (choice % 4 == 0 ? 20000 : 100));
        else if (choice >= 940 && choice < 940 + m_eager)
            m_receiver.SayWelcome();
        else if (choice >= 960 && choice < 990)
            m_receiver.Acknowledge();
        else if (choice >= 990 && choice < 995)
            m_receiver.End();
    }

    bool AllIsSaid()
    {
        m_client.ProcessMessages(false);
        m_receiver.AcceptIfAny();
        if (m_receiver.HasConnection())
        {
            m_receiver.Read(100000);
            m_receiver.SayWelcome();
            m_receiver.Acknowledge();
        }
        return m_client.UnacknowledgedCount() == 0 || HasFailure();
    }

    std::minstd_rand m_random{GetParam() + 1};
    Receiver m_receiver{m_random, GetParam() % 5};
    MPISocketClientC m_client{true};
    std::uint64_t m_accepted = 0;
    std::uint64_t m_unsure = 0; // the last one before the first welcome
    bool m_everWelcomed = false;
    const unsigned m_eager = 1 + GetParam() % 20; // to welcome
};

TEST_P(HostGapsModel, WhatHasNotArrivedIsGivenUpAndOnlyFromBeforeTheFirstWelcome)
{
    ASSERT_TRUE(m_client.Connect("127.0.0.1", m_receiver.Port(), 30000));
    for (int step = 0; step < kSteps && !HasFailure(); ++step)
        Step();
    EXPECT_TRUE(Eventually([&] { return AllIsSaid(); }));
    std::uint64_t missing = 0;
    for (std::uint64_t number = 1; number <= m_accepted; ++number)
    {
        if (m_receiver.Applied().count(number) != 0)
            continue;
        ++missing;
        EXPECT_LE(number, m_unsure);
    }
    EXPECT_GT(m_accepted, static_cast<std::uint64_t>(kSteps));
    EXPECT_LE(missing, m_client.GivenUpCount());
    EXPECT_LE(m_client.GivenUpCount(), m_unsure);
    EXPECT_EQ(m_client.WaitUntilAcknowledged(0), m_client.GivenUpCount() == 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, HostGapsModel, testing::Range(0u, 40u));

} // namespace
