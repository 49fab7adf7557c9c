// A program of its own, because it takes the place of the system's calls to count them.
#include <MPI/BAtomC.h>
#include <MPI/BListC.h>
#include <MPI/MPISocketClientC.h>
#include <MPI/MPISocketServerC.h>

#include <chrono>
#include <cstdint>
#include <ctime>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <thread>

#include "host/connections/ServerFixture.h"
#include "host/connections/SessionsHandler.h"
#include "host/reference/DeliveryFixture.h"
#include "host/reference/SessionPeer.h"

namespace
{

using namespace HostTest;

thread_local int sends = 0;
thread_local int looks = 0; // receives and polls
thread_local int rests = 0; // polls that may wait, and sleeps

/// While it stands still only waiting moves the clock on, and takes no time. Nanoseconds; negative: it goes.
std::int64_t standing = -1;

template <typename Function> Function* Next(const char* name)
{
    Function* function = nullptr;
    *reinterpret_cast<void**>(&function) = dlsym(RTLD_NEXT, name);
    return function;
}

} // namespace

extern "C" ssize_t send(int descriptor, const void* bytes, std::size_t size, int flags)
{
    static auto* const next = Next<ssize_t(int, const void*, std::size_t, int)>("send");
    ++sends;
    return next(descriptor, bytes, size, flags);
}

extern "C" ssize_t recv(int descriptor, void* bytes, std::size_t size, int flags)
{
    static auto* const next = Next<ssize_t(int, void*, std::size_t, int)>("recv");
    ++looks;
    return next(descriptor, bytes, size, flags);
}

extern "C" int poll(pollfd* entries, nfds_t count, int timeoutMilliseconds)
{
    static auto* const next = Next<int(pollfd*, nfds_t, int)>("poll");
    ++looks;
    if (timeoutMilliseconds != 0)
        ++rests;
    if (standing < 0 || timeoutMilliseconds < 0)
        return next(entries, count, timeoutMilliseconds);
    const int ready = next(entries, count, 0);
    if (ready == 0)
        standing += std::int64_t{timeoutMilliseconds} * 1000000;
    return ready;
}

extern "C" int clock_nanosleep(clockid_t, int, const timespec*, timespec*)
{
    ++rests;
    return 0;
}

std::chrono::steady_clock::time_point std::chrono::steady_clock::now() noexcept
{
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    const std::int64_t going = std::int64_t{time.tv_sec} * 1000000000 + time.tv_nsec;
    return time_point(std::chrono::nanoseconds(standing < 0 ? going : standing));
}

namespace
{

constexpr int kReports = 5000;

/// A client whose receiver has welcomed it, and reads on a thread of its own.
class HostSystemCalls : public testing::Test
{
protected:
    HostSystemCalls() : m_client(true)
    {
        EXPECT_TRUE(m_client.Connect("127.0.0.1", m_listener.Port(), 30000));
        m_receiver = std::thread(
            [this]
            {
                CRawConnection peer = m_listener.Accept();
                peer.Send(Welcome(0));
                peer.ReceiveToEnd();
            });
    }

    void AwaitWelcome()
    {
        ASSERT_TRUE(Eventually(
            [&]
            {
                m_client.ProcessMessages(false);
                return m_client.Welcomed();
            }));
    }

    void TearDown() override
    {
        m_client.Destroy();
        m_receiver.join();
    }

    bool Report()
    {
        BListC arguments;
        arguments.Append(std::make_unique<BAtomC>(1, &arguments));
        return m_client.VerifyConnection() && m_client.SendNotification("x", &arguments);
    }

    CRawListener m_listener;
    MPISocketClientC m_client;
    std::thread m_receiver;
};

TEST_F(HostSystemCalls, AReportIsOneOnceWelcomedAndTheConnectionIsLookedAtOnceAMillisecond)
{
    AwaitWelcome();
    const auto begin = std::chrono::steady_clock::now();
    sends = 0;
    looks = 0;
    for (int count = 0; count < kReports; ++count)
        ASSERT_TRUE(Report());
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
    EXPECT_EQ(sends, kReports);
    EXPECT_LE(looks, 2 * (milliseconds.count() + 2))
        << "what has come is read, and then that there is no more";
}

TEST_F(HostSystemCalls, ABatchIsAFew)
{
    AwaitWelcome();
    sends = 0;
    m_client.BeginBatch();
    for (int count = 0; count < kReports; ++count)
        ASSERT_TRUE(Report());
    m_client.EndBatch();
    EXPECT_EQ(m_client.WaitingCount(), 0u);
    EXPECT_LE(sends, 5) << "of 64 KiB each";
}

/// A clock that stands still from when it is stopped, and goes on at the end.
struct SStoppedClock
{
    SStoppedClock() { standing = std::chrono::steady_clock::now().time_since_epoch().count(); }
    ~SStoppedClock() { standing = -1; }
    SStoppedClock(const SStoppedClock&) = delete;
    SStoppedClock& operator=(const SStoppedClock&) = delete;
};

using HostServerSystemCalls = CServerFixture<CSessionsHandler>;

/// Serves a turn in which much comes in.
void ServeMuch(MPISocketServerC& server, CSessionsHandler& handler, CRawConnection& connection)
{
    std::string many;
    for (int count = 0; count < 100; ++count)
        many += kPlain;
    const int before = handler.counts[1];
    connection.Send(many);
    EXPECT_TRUE(Eventually(
        [&]
        {
            server.Serve(0);
            return handler.counts[1] == before + 100;
        }));
    rests = 0;
}

TEST_F(HostServerSystemCalls, ServeRestsAfterMuchInputOnlyIfItMayWait)
{
    CRawConnection connection = Connect();
    const SStoppedClock stopped;
    ServeMuch(m_server, m_handler, connection);
    m_server.Serve(0);
    EXPECT_EQ(rests, 0);
    ServeMuch(m_server, m_handler, connection);
    m_server.Serve(1);
    EXPECT_EQ(rests, 1);
    EXPECT_FALSE(m_server.GathersInput());
    m_server.GathersInput(true);
    EXPECT_TRUE(m_server.GathersInput());
    ServeMuch(m_server, m_handler, connection);
    m_server.Serve(0);
    EXPECT_EQ(rests, 1);
    m_server.Serve(0);
    EXPECT_EQ(rests, 1) << "once";
}

TEST_F(HostServerSystemCalls, ServeDoesNotRestOnceInputHasBeenLittleForAMoment)
{
    CRawConnection connection = Connect();
    const SStoppedClock stopped;
    ServeMuch(m_server, m_handler, connection);
    standing += 499999;
    m_server.Serve(1);
    EXPECT_EQ(rests, 1);
    ServeMuch(m_server, m_handler, connection);
    standing += 500000;
    m_server.Serve(1);
    EXPECT_EQ(rests, 0);
}

class HostClock : public HostDelivery
{
protected:
    void StopClock() { m_stopped.emplace(); }
    static void Pass(int milliseconds) { standing += std::int64_t{milliseconds} * 1000000; }

    /// @return how many notifications the client has taken before it said no
    std::int64_t FillUp(bool read)
    {
        std::int64_t number = 0;
        while (m_client->VerifyConnection())
        {
            EXPECT_TRUE(Send(static_cast<std::uint64_t>(++number), 1000));
            if (read)
                Peer().ReceivePending();
        }
        return number;
    }

private:
    std::optional<SStoppedClock> m_stopped;
};

TEST_F(HostClock, ANoForWantOfRoomHoldsForFiveMilliseconds)
{
    Say(Welcome(0));
    StopClock();
    const std::int64_t number = FillUp(true);
    while (m_client->WaitingCount() > 0)
    {
        Peer().ReceivePending();
        m_client->ProcessMessages(false);
    }
    Say(Acknowledgement(number));
    ASSERT_TRUE(m_client->HasRoom());
    EXPECT_FALSE(m_client->VerifyConnection());
    Pass(4);
    EXPECT_FALSE(m_client->VerifyConnection());
    Pass(1);
    EXPECT_TRUE(m_client->VerifyConnection());
}

TEST_F(HostClock, TheDestructorOfAClientThatWasNotWelcomedDoesNotWaitAtAll)
{
    while (m_client->BytesWaiting() == 0)
        ASSERT_TRUE(m_client->VerifyConnection() && Send(1, 60000));
    StopClock();
    const std::int64_t before = standing;
    rests = 0;
    m_client.reset();
    EXPECT_EQ(rests, 0);
    EXPECT_EQ(standing, before);
}

TEST_F(HostClock, ThatOfOneThatWasWelcomedWaitsForAPeerThatDoesNotReadForATenthOfASecond)
{
    Say(Welcome(0));
    StopClock();
    FillUp(false);
    const std::int64_t before = standing;
    m_client.reset();
    EXPECT_GE(standing - before, 100 * 1000000);
    EXPECT_LE(standing - before, 500 * 1000000) << "the longest, were the peer to read little by little";
}

} // namespace
