#include "faultkeeperd/service/ServiceManager.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace Faultkeeper::Apps
{

namespace
{
std::string Variable(const char* name)
{
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// Half of the time after which a silent service counts as stuck; zero if nobody watches us.
std::chrono::microseconds WatchdogPause()
{
    const std::string process = Variable("WATCHDOG_PID");
    if (!process.empty() && process != std::to_string(getpid()))
        return std::chrono::microseconds(0);
    const long long time = std::strtoll(Variable("WATCHDOG_USEC").c_str(), nullptr, 10);
    return std::chrono::microseconds(time > 0 ? (time + 1) / 2 : 0);
}
} // namespace

CServiceManager::CServiceManager() : m_address(Variable("NOTIFY_SOCKET"))
{
    if (m_address.size() < 2 || m_address.size() >= sizeof(sockaddr_un::sun_path) ||
        (m_address.front() != '@' && m_address.front() != '/'))
    {
        m_address.clear();
        return;
    }
    if (m_address.front() == '@')
        m_address.front() = '\0';
    m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    m_pause = WatchdogPause();
}

CServiceManager::~CServiceManager()
{
    if (m_socket != -1)
        close(m_socket);
}

void CServiceManager::Alive(Clock::time_point now)
{
    if (MillisecondsToAlive(now) != 0)
        return;
    m_told = now;
    Say("WATCHDOG=1");
}

int CServiceManager::MillisecondsToAlive(Clock::time_point now) const
{
    if (m_pause.count() == 0)
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_told + m_pause - now).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

void CServiceManager::Say(const std::string& state) const
{
    if (m_socket == -1)
        return;
    struct sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, m_address.data(), m_address.size());
    const auto size = static_cast<socklen_t>(offsetof(struct sockaddr_un, sun_path) + m_address.size());
    const ssize_t ignored = sendto(m_socket, state.data(), state.size(), MSG_NOSIGNAL,
                                   reinterpret_cast<const struct sockaddr*>(&address), size);
    static_cast<void>(ignored);
}

} // namespace Faultkeeper::Apps
