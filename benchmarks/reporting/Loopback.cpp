#include "reporting/Loopback.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <system_error>

namespace Benchmarks
{

namespace
{
int Checked(int result, const char* call)
{
    if (result < 0)
        throw std::system_error(errno, std::generic_category(), call);
    return result;
}

sockaddr_in Loopback(std::uint16_t port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}
} // namespace

CBareSocket::~CBareSocket()
{
    close(m_descriptor);
}

int CBareSocket::Connect(std::uint16_t port)
{
    const int descriptor = Checked(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket");
    const sockaddr_in address = Loopback(port);
    Checked(connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), "connect");
    return descriptor;
}

void CBareSocket::NoDelay(bool on) const
{
    const int value = on ? 1 : 0;
    Checked(setsockopt(m_descriptor, IPPROTO_TCP, TCP_NODELAY, &value, sizeof value), "setsockopt");
}

void CBareSocket::Send(const std::string& bytes) const
{
    const ssize_t sent = send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent != static_cast<ssize_t>(bytes.size()))
        throw std::system_error(sent < 0 ? errno : EIO, std::generic_category(), "send");
}

std::size_t CBareSocket::Receive(char* buffer, std::size_t size) const
{
    ssize_t got = 0;
    do
        got = recv(m_descriptor, buffer, size, 0);
    while (got < 0 && errno == EINTR);
    return got < 0 ? 0 : static_cast<std::size_t>(got); // a reset is an end, too
}

void CBareSocket::Drain() const
{
    char buffer[4096];
    while (recv(m_descriptor, buffer, sizeof buffer, MSG_DONTWAIT) > 0)
    {
    }
}

int ListenOnLoopback(std::uint16_t port)
{
    const int descriptor = Checked(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket");
    const int on = 1;
    Checked(setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on), "setsockopt");
    const sockaddr_in address = Loopback(port);
    Checked(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), "bind");
    Checked(listen(descriptor, SOMAXCONN), "listen");
    return descriptor;
}

std::uint16_t PortOf(int descriptor)
{
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    Checked(getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size), "getsockname");
    return ntohs(address.sin_port);
}

int AcceptOne(int listener)
{
    return Checked(accept4(listener, nullptr, nullptr, SOCK_CLOEXEC), "accept");
}

std::string ReportBytes(bool raise, int code, int type, std::uint64_t number)
{
    return "d4:argsli" + std::to_string(code) + "ei" + std::to_string(type) + (raise ? "ei0ee" : "ee") +
           (raise ? "4:name10:RaiseError" : "4:name10:ClearError") +
           (number == 0 ? "e" : "3:seqi" + std::to_string(number) + "ee");
}

double MonotonicSeconds()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

} // namespace Benchmarks
