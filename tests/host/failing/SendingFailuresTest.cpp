// A client to which the system refuses something while it sends, receives or ends.
#include <cerrno>
#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>

#include "host/failing/FailingCalls.h"
#include "host/reference/DeliveryFixture.h"

namespace
{

using namespace HostTest;
using Clock = std::chrono::steady_clock;

class HostSendingFailures : public HostDelivery
{
protected:
    /// Ends the client, and tells what the peer has got of its notifications.
    Numbers EndAndReceive()
    {
        m_client.reset();
        bool broken = true;
        m_stream.Take(Peer().ReceiveToEnd(&broken));
        EXPECT_FALSE(broken);
        return m_stream.Numbers();
    }

    CFailingCalls m_calls;
};

TEST_F(HostSendingFailures, SignalsInterruptNothing)
{
    m_calls.FailOn(m_client->Descriptor(), "send", EINTR, 3);
    SendAll(1, 1);
    EXPECT_EQ(m_client->SentCount(), 1u);
    m_calls.FailOn(m_client->Descriptor(), "recv", EINTR, 3);
    Say(Welcome(1));
    EXPECT_TRUE(m_client->Welcomed());
    EXPECT_EQ(m_client->UnacknowledgedCount(), 0u);
}

/// Counts its losses.
class Losing : public MPISocketClientC
{
public:
    Losing() : MPISocketClientC(false) {}
    void Disconnected() override { ++losses; }

    int losses = 0;
};

TEST_F(HostSendingFailures, AConnectionThatBreaksWhileItIsClosedIsLostOnceAndWhatWaitsStays)
{
    Losing client;
    ASSERT_TRUE(client.Connect("127.0.0.1", m_listener.Port(), 30000));
    AcceptNext();
    m_calls.FailOn(client.Descriptor(), "send", EAGAIN);
    ASSERT_TRUE(client.SendNotification("RaiseError", nullptr));
    m_calls.FailOn(client.Descriptor(), "send", ECONNRESET);
    client.Close();
    EXPECT_EQ(client.losses, 1);
    EXPECT_EQ(client.WaitingCount(), 1u);
    m_calls.Leave("send");
    ASSERT_TRUE(client.Reconnect(30000));
    AcceptNext();
    EXPECT_TRUE(client.VerifyConnection());
    const std::string expected = "d4:argsle4:name10:RaiseError3:seqi1ee";
    EXPECT_EQ(Peer().Receive(58 + expected.size()).substr(58), expected);
}

TEST_F(HostSendingFailures, TheDestructorDoesNotWaitForAConnectionThatBreaksThen)
{
    Say(Welcome(0));
    m_calls.FailOn(m_client->Descriptor(), "send", EAGAIN);
    SendAll(1, 1);
    ASSERT_EQ(m_client->WaitingCount(), 1u);
    int looks = 0;
    m_calls.FailOn(m_client->Descriptor(), "send", ECONNRESET);
    m_calls.Ask("ioctl",
                [&](int, int, void*) -> std::optional<int>
                {
                    ++looks;
                    return std::nullopt;
                });
    EXPECT_EQ(EndAndReceive(), Numbers());
    EXPECT_EQ(looks, 0) << "there is nothing to wait for";
}

TEST_F(HostSendingFailures, TheDestructorCutsNothingOffIfItCannotSeeWhatIsUnderWay)
{
    for (const int passed : {0, 1})
    {
        Start(true);
        Say(Welcome(0));
        SendAll(1, 3);
        m_calls.Fail("ioctl", EINVAL, CFailingCalls::kAlways, passed);
        EXPECT_EQ(EndAndReceive(), (Numbers{1, 2, 3}));
    }
}

TEST_F(HostSendingFailures, TheDestructorDoesNotWaitForEverWhileBytesGoOutOneByOne)
{
    Say(Welcome(0));
    SendAll(1, 3);
    int left = 1000000;
    m_calls.Ask("ioctl",
                [&](int, int, void* bytes) -> std::optional<int>
                {
                    std::memcpy(bytes, &--left, sizeof(left));
                    return 0;
                });
    const Clock::time_point before = Clock::now();
    EXPECT_EQ(EndAndReceive(), (Numbers{1, 2, 3}));
    EXPECT_GE(Clock::now() - before, std::chrono::milliseconds(500)) << "as long as it gets on with it";
    EXPECT_GT(left, 0);
}

TEST_F(HostSendingFailures, APeerThatNeverStopsSendingDoesNotKeepAConnectionFromBeingClosed)
{
    const int descriptor = m_client->Descriptor();
    std::size_t received = 0;
    m_calls.Ask("recv",
                [&](int about, int size, void* bytes) -> std::optional<int>
                {
                    if (about != descriptor)
                        return std::nullopt;
                    std::memset(bytes, 'x', static_cast<std::size_t>(size));
                    received += static_cast<std::size_t>(size);
                    return size;
                });
    m_client->Close();
    EXPECT_EQ(m_client->Descriptor(), -1);
    EXPECT_GE(received, 6u * 1024 * 1024) << "as much as the system may have kept is read away";
    EXPECT_EQ(Peer().ReceiveToEnd().size(), 58u);
}

} // namespace
