// A client, and a receiver that keeps account, over connections that end at any moment.
#include <MPI/BAtomC.h>
#include <MPI/BListC.h>
#include <MPI/MPISocketClientC.h>

#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <sys/socket.h>
#include <vector>

#include "host/reference/SessionPeer.h"

namespace
{

using namespace HostTest;

constexpr int kSteps = 3000;

/// What it has applied outlives its connections.
class Receiver
{
public:
    explicit Receiver(std::minstd_rand& random) : m_random(random) {}

    unsigned short Port() const { return m_listener.Port(); }
    std::uint64_t Applied() const { return m_applied; }
    bool HasConnection() const { return m_connection.has_value(); }

    void AcceptIfAny()
    {
        if (m_listener.HasConnection())
            Accept();
    }

    void Accept()
    {
        m_connection.emplace(m_listener.Accept());
        m_stream = CSessionStream();
        m_seen = 0;
        m_welcomed = false;
    }

    /// Reads a little, and welcomes who has introduced himself.
    void Read(std::size_t most)
    {
        std::string bytes(most, '\0');
        const ssize_t count = recv(m_connection->Descriptor(), bytes.data(), most, MSG_DONTWAIT);
        m_stream.Take(bytes.substr(0, count > 0 ? static_cast<std::size_t>(count) : 0));
        if (!m_stream.Session().empty() && !std::exchange(m_welcomed, true))
            m_connection->SendSome(Welcome(static_cast<std::int64_t>(m_applied)));
        for (; m_seen < m_stream.Numbers().size(); ++m_seen)
            Apply(m_stream.Numbers()[m_seen]);
    }

    void Acknowledge()
    {
        if (m_welcomed)
            m_connection->SendSome(
                Acknowledgement(static_cast<std::int64_t>(m_applied - m_random() % 2 * (m_applied > 0))));
    }

    void AcknowledgeAll()
    {
        if (m_welcomed)
            m_connection->SendSome(Acknowledgement(static_cast<std::int64_t>(m_applied)));
    }

    void End()
    {
        if (m_random() % 2 == 0)
            m_connection->Reset();
        m_connection.reset();
    }

private:
    void Apply(std::uint64_t number)
    {
        ASSERT_LE(number, m_applied + 1) << "one is missing";
        if (number == m_applied + 1)
            m_applied = number;
    }

    std::minstd_rand& m_random;
    CRawListener m_listener;
    std::optional<CRawConnection> m_connection;
    CSessionStream m_stream;
    std::size_t m_seen = 0;
    bool m_welcomed = false;
    std::uint64_t m_applied = 0;
};

class HostDeliveryModel : public testing::TestWithParam<unsigned>
{
};

bool SendNumber(MPISocketClientC& client, std::uint64_t number)
{
    BListC arguments;
    arguments.Append(std::make_unique<BAtomC>(static_cast<std::int64_t>(number), &arguments));
    return client.SendNotification("Number", &arguments);
}

TEST_P(HostDeliveryModel, EveryNotificationIsAppliedOnceAndInOrder)
{
    std::minstd_rand random(GetParam() + 1);
    Receiver receiver(random);
    MPISocketClientC client(true);
    ASSERT_TRUE(client.Connect("127.0.0.1", receiver.Port(), 30000));
    receiver.Accept();
    ASSERT_TRUE(Eventually(
        [&]
        {
            receiver.Read(1000);
            client.ProcessMessages(false);
            return client.Welcomed();
        }));
    std::uint64_t accepted = 0;
    for (int step = 0; step < kSteps && !HasFailure(); ++step)
    {
        const unsigned choice = static_cast<unsigned>(random() % 100);
        if (choice < 60 && client.VerifyConnection() && SendNumber(client, accepted + 1))
            ++accepted;
        else if (choice < 65)
            client.ProcessMessages(false);
        else if (choice < 66 && client.Descriptor() < 0)
            client.Reconnect(0); // sooner than it would by itself
        receiver.AcceptIfAny();
        if (!receiver.HasConnection())
            continue;
        if (choice >= 70 && choice < 95)
            receiver.Read(1 + random() % 200);
        else if (choice >= 95 && choice < 99)
            receiver.Acknowledge();
        else if (choice == 99)
            receiver.End();
    }
    EXPECT_TRUE(Eventually(
        [&]
        {
            client.ProcessMessages(false);
            receiver.AcceptIfAny();
            if (receiver.HasConnection())
            {
                receiver.Read(100000);
                receiver.AcknowledgeAll();
            }
            return client.UnacknowledgedCount() == 0 || HasFailure();
        }));
    EXPECT_GT(accepted, static_cast<std::uint64_t>(kSteps) / 4);
    EXPECT_EQ(receiver.Applied(), accepted);
}

INSTANTIATE_TEST_SUITE_P(Seeds, HostDeliveryModel, testing::Range(0u, 20u));

} // namespace
