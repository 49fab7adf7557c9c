#include "Connections/LoopbackListeners.h"

#include "Sockets/SocketCalls.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace
{

constexpr int kTriesForAnyPort = 16; // a port that is free for IPv4 may be taken for IPv6

bool MeansNoSuchFamily(int problem)
{
    return problem == EADDRNOTAVAIL || problem == EAFNOSUPPORT || problem == EPROTONOSUPPORT;
}

} // namespace

bool LoopbackListeners::Open(unsigned short port)
{
    int problem = 0;
    for (int tries = port == 0 ? kTriesForAnyPort : 1; tries > 0; --tries)
    {
        if (OpenBoth(port, problem))
        {
            m_error.clear();
            return true;
        }
        Close();
        if (problem != EADDRINUSE)
            break;
    }
    return false;
}

bool LoopbackListeners::OpenBoth(unsigned short port, int& problem)
{
    if (!OpenOne(SocketAddress::LoopbackIPv4(port), problem))
        return false;
    m_port = SocketAddress::Own(m_descriptors.front().Number()).Port();
    if (m_port == 0)
    {
        problem = errno;
        return Fail(SocketAddress::LoopbackIPv4(port), problem);
    }
    return OpenOne(SocketAddress::LoopbackIPv6(m_port), problem) || MeansNoSuchFamily(problem);
}

bool LoopbackListeners::OpenOne(const SocketAddress& address, int& problem)
{
    FileDescriptor descriptor = SocketCalls::Listen(address, problem);
    if (!descriptor.Valid())
        return Fail(address, problem);
    m_descriptors.push_back(std::move(descriptor));
    return true;
}

bool LoopbackListeners::Fail(const SocketAddress& address, int problem)
{
    m_error =
        "port " + std::to_string(address.Port()) + " on " + address.Host() + ": " + std::strerror(problem);
    return false;
}

void LoopbackListeners::Close()
{
    m_descriptors.clear();
    m_port = 0;
}
