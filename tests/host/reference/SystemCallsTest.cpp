// A program of its own, because it takes the place of the system's calls to count them.
#include <MPI/BAtomC.h>
#include <MPI/BListC.h>
#include <MPI/MPISocketClientC.h>

#include <chrono>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>

#include "host/reference/SessionPeer.h"

namespace
{

using namespace HostTest;

thread_local int sends = 0;
thread_local int looks = 0; // receives and polls

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
    return next(entries, count, timeoutMilliseconds);
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

} // namespace
