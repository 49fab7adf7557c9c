#include "faultkeeperd/service/ServiceManager.h"

#include "support/FreshDirectory.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>

using Faultkeeper::Apps::CServiceManager;
using std::chrono::milliseconds;

namespace
{

const CServiceManager::Clock::time_point kStart{milliseconds(1000000)};

/// The manager's end.
class CManagerSocket
{
public:
    /// @param address  as in the environment, with "@" for an abstract one
    explicit CManagerSocket(const std::string& address)
        : m_socket(socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0))
    {
        struct sockaddr_un name = {};
        name.sun_family = AF_UNIX;
        std::memcpy(name.sun_path, address.data(), address.size());
        if (address[0] == '@')
            name.sun_path[0] = '\0';
        const auto size = static_cast<socklen_t>(offsetof(struct sockaddr_un, sun_path) + address.size());
        EXPECT_EQ(bind(m_socket, reinterpret_cast<struct sockaddr*>(&name), size), 0);
        setenv("NOTIFY_SOCKET", address.c_str(), 1);
    }
    ~CManagerSocket()
    {
        close(m_socket);
        for (const char* const name : {"NOTIFY_SOCKET", "WATCHDOG_USEC", "WATCHDOG_PID"})
            unsetenv(name);
    }
    CManagerSocket(const CManagerSocket&) = delete;
    CManagerSocket& operator=(const CManagerSocket&) = delete;

    /// The next word; empty if nothing was said.
    std::string Heard() const
    {
        char buffer[100];
        const ssize_t count = recv(m_socket, buffer, sizeof buffer, 0);
        return std::string(buffer, count > 0 ? static_cast<std::size_t>(count) : 0);
    }

private:
    int m_socket;
};

} // namespace

TEST(ServiceManager, IsToldOfTheBeginningAndTheEnd)
{
    const Support::CFreshDirectory directory;
    const CManagerSocket manager(directory.File("notify"));
    const CServiceManager service;
    service.Ready();
    EXPECT_EQ(manager.Heard(), "READY=1");
    service.Stopping();
    EXPECT_EQ(manager.Heard(), "STOPPING=1");
    EXPECT_EQ(service.MillisecondsToAlive(kStart), -1) << "nobody watches";
}

TEST(ServiceManager, HasAnAbstractAddressToo)
{
    const CManagerSocket manager("@faultkeeper-test-" + std::to_string(getpid()));
    const CServiceManager service;
    service.Ready();
    EXPECT_EQ(manager.Heard(), "READY=1");
}

TEST(ServiceManager, HearsTwiceInItsTimeThatTheServiceIsAlive)
{
    const Support::CFreshDirectory directory;
    const CManagerSocket manager(directory.File("notify"));
    setenv("WATCHDOG_USEC", "4000000", 1);
    CServiceManager service;
    EXPECT_EQ(service.MillisecondsToAlive(kStart), 0);
    service.Alive(kStart);
    EXPECT_EQ(manager.Heard(), "WATCHDOG=1");
    EXPECT_EQ(service.MillisecondsToAlive(kStart), 2000);
    service.Alive(kStart + milliseconds(1999));
    EXPECT_EQ(manager.Heard(), "");
    service.Alive(kStart + milliseconds(2000));
    EXPECT_EQ(manager.Heard(), "WATCHDOG=1");
}

TEST(ServiceManager, WatchesNoOtherProcessThanItSays)
{
    const Support::CFreshDirectory directory;
    const CManagerSocket manager(directory.File("notify"));
    setenv("WATCHDOG_USEC", "4000000", 1);
    setenv("WATCHDOG_PID", "1", 1);
    EXPECT_EQ(CServiceManager().MillisecondsToAlive(kStart), -1);
    setenv("WATCHDOG_PID", std::to_string(getpid()).c_str(), 1);
    EXPECT_EQ(CServiceManager().MillisecondsToAlive(kStart), 0);
}

TEST(ServiceManager, ThatIsNotThereIsToldNothing)
{
    unsetenv("NOTIFY_SOCKET");
    CServiceManager service;
    service.Ready();
    service.Alive(kStart);
    EXPECT_EQ(service.MillisecondsToAlive(kStart), -1);
    setenv("NOTIFY_SOCKET", "neither a path nor abstract", 1);
    CServiceManager().Ready();
    setenv("NOTIFY_SOCKET", "/nowhere/at/all", 1);
    CServiceManager().Ready();
    unsetenv("NOTIFY_SOCKET");
}
