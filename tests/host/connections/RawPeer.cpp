#include "host/connections/RawPeer.h"

#include <arpa/inet.h>
#include <chrono>
#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace HostTest
{

namespace
{

constexpr int kPatienceMilliseconds = 30000;

struct SAddress
{
    SAddress(const std::string& host, unsigned short port)
    {
        const bool version6 = host.find(':') != std::string::npos;
        storage.ss_family = static_cast<sa_family_t>(version6 ? AF_INET6 : AF_INET);
        auto* const address4 = reinterpret_cast<sockaddr_in*>(&storage);
        auto* const address6 = reinterpret_cast<sockaddr_in6*>(&storage);
        (version6 ? address6->sin6_port : address4->sin_port) = htons(port);
        void* const bytes =
            version6 ? static_cast<void*>(&address6->sin6_addr) : static_cast<void*>(&address4->sin_addr);
        EXPECT_EQ(inet_pton(storage.ss_family, host.c_str(), bytes), 1) << host;
        size = version6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
    }

    const sockaddr* Get() const { return reinterpret_cast<const sockaddr*>(&storage); }

    sockaddr_storage storage = {};
    socklen_t size = 0;
};

} // namespace

unsigned short PortOf(int descriptor)
{
    sockaddr_storage storage = {};
    socklen_t size = sizeof(storage);
    EXPECT_EQ(getsockname(descriptor, reinterpret_cast<sockaddr*>(&storage), &size), 0);
    // Both kinds of address have the port in the same place.
    return ntohs(reinterpret_cast<const sockaddr_in*>(&storage)->sin_port);
}

namespace
{

int Connected(const std::string& host, unsigned short port)
{
    const SAddress address(host, port);
    const int descriptor = socket(address.storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(descriptor, address.Get(), address.size) == 0)
        return descriptor;
    close(descriptor);
    return -1;
}

} // namespace

std::string WithoutSession(const std::string& stream)
{
    const std::string beforeId = "d4:argsl32:";
    const std::string afterId = "e4:name5:Helloe";
    const std::size_t idEnd = beforeId.size() + 32;
    const bool introduced = stream.compare(0, beforeId.size(), beforeId) == 0 &&
                            stream.compare(idEnd, afterId.size(), afterId) == 0;
    std::string rest = introduced ? stream.substr(idEnd + afterId.size()) : stream;
    std::string result;
    std::size_t begin = 0;
    for (std::size_t number = rest.find("3:seqi"); number != std::string::npos;
         number = rest.find("3:seqi", begin))
    {
        result.append(rest, begin, number - begin);
        begin = rest.find('e', number + 6) + 1;
    }
    return result + rest.substr(begin);
}

bool Eventually(const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatienceMilliseconds);
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

bool HasInput(int descriptor, int timeoutMilliseconds)
{
    pollfd entry = {descriptor, POLLIN, 0};
    return poll(&entry, 1, timeoutMilliseconds) > 0;
}

bool HasIPv6Loopback()
{
    const SAddress address("::1", 0);
    const int descriptor = socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool has = descriptor >= 0 && bind(descriptor, address.Get(), address.size) == 0;
    if (descriptor >= 0)
        close(descriptor);
    return has;
}

unsigned short UnusedPort()
{
    CRawListener listener;
    const unsigned short port = listener.Port();
    listener.Close();
    return port;
}

CRawConnection::CRawConnection(CRawConnection&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

CRawConnection CRawConnection::To(const std::string& host, unsigned short port)
{
    const int descriptor = HostTest::Connected(host, port);
    EXPECT_GE(descriptor, 0) << host << " " << port;
    return CRawConnection(descriptor);
}

bool CRawConnection::CanConnectTo(const std::string& host, unsigned short port)
{
    return CRawConnection(HostTest::Connected(host, port)).Descriptor() >= 0;
}

void CRawConnection::Send(const std::string& bytes)
{
    std::size_t sent = 0;
    while (sent < bytes.size())
    {
        const ssize_t count = send(m_descriptor, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        ASSERT_GT(count, 0);
        sent += static_cast<std::size_t>(count);
    }
}

std::size_t CRawConnection::SendSome(const std::string& bytes)
{
    const ssize_t count = send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

std::string CRawConnection::ReceiveToEnd(bool* broken)
{
    std::string all;
    char buffer[65536];
    ssize_t count = 1;
    while (count > 0 && HasInput(m_descriptor, kPatienceMilliseconds))
    {
        count = recv(m_descriptor, buffer, sizeof(buffer), 0);
        if (count > 0)
            all.append(buffer, static_cast<std::size_t>(count));
    }
    if (broken != nullptr)
        *broken = count != 0;
    return all;
}

std::string CRawConnection::Receive(std::size_t size)
{
    std::string all;
    char buffer[65536];
    while (all.size() < size && HasInput(m_descriptor, kPatienceMilliseconds))
    {
        const ssize_t count = recv(m_descriptor, buffer, sizeof(buffer), 0);
        if (count <= 0)
            break;
        all.append(buffer, static_cast<std::size_t>(count));
    }
    return all;
}

std::string CRawConnection::ReceivePending()
{
    std::string all;
    char buffer[65536];
    for (ssize_t count = 1; count > 0;)
    {
        count = recv(m_descriptor, buffer, sizeof(buffer), MSG_DONTWAIT);
        if (count > 0)
            all.append(buffer, static_cast<std::size_t>(count));
    }
    return all;
}

bool CRawConnection::Ended()
{
    char buffer[65536];
    while (HasInput(m_descriptor, 0))
    {
        if (recv(m_descriptor, buffer, sizeof(buffer), MSG_DONTWAIT) <= 0)
            return true;
    }
    return false;
}

bool CRawConnection::Delivered() const
{
    int unconfirmed = 0;
    return ioctl(m_descriptor, SIOCOUTQ, &unconfirmed) == 0 && unconfirmed == 0;
}

void CRawConnection::EndSending()
{
    shutdown(m_descriptor, SHUT_WR);
}

void CRawConnection::Close()
{
    if (m_descriptor >= 0)
        close(std::exchange(m_descriptor, -1));
}

void CRawConnection::Reset()
{
    const linger none = {1, 0};
    setsockopt(m_descriptor, SOL_SOCKET, SO_LINGER, &none, sizeof(none));
    Close();
}

unsigned short CRawConnection::OwnPort() const
{
    return PortOf(m_descriptor);
}

CRawListener::CRawListener(const std::string& host, unsigned short port, int backlog)
    : m_descriptor(-1), m_port(0)
{
    const SAddress address(host, port);
    m_descriptor = socket(address.storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(m_descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
    EXPECT_EQ(bind(m_descriptor, address.Get(), address.size), 0) << host << " " << port;
    EXPECT_EQ(listen(m_descriptor, backlog), 0);
    m_port = PortOf(m_descriptor);
}

CRawConnection CRawListener::Accept()
{
    EXPECT_TRUE(HasInput(m_descriptor, kPatienceMilliseconds)) << "nobody connects";
    return CRawConnection(accept4(m_descriptor, nullptr, nullptr, SOCK_CLOEXEC));
}

bool CRawListener::HasConnection() const
{
    return HasInput(m_descriptor, 0);
}

void CRawListener::Close()
{
    if (m_descriptor >= 0)
        close(std::exchange(m_descriptor, -1));
}

} // namespace HostTest
