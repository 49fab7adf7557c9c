#include "Sockets/SocketAddress.h"

#include <arpa/inet.h>
#include <cstring>

SocketAddress::SocketAddress() : m_storage(), m_size(0)
{
    m_storage.ss_family = AF_UNSPEC;
}

template <typename Address> SocketAddress SocketAddress::From(const Address& address)
{
    static_assert(sizeof(Address) <= sizeof(sockaddr_storage));
    SocketAddress result;
    std::memcpy(&result.m_storage, &address, sizeof(address));
    result.m_size = sizeof(address);
    return result;
}

SocketAddress SocketAddress::LoopbackIPv4(unsigned short port)
{
    return Find("127.0.0.1", port).front();
}

SocketAddress SocketAddress::LoopbackIPv6(unsigned short port)
{
    return Find("::1", port).front();
}

std::vector<SocketAddress> SocketAddress::Find(const std::string& host, unsigned short port)
{
    if (host == "localhost")
        return {LoopbackIPv4(port), LoopbackIPv6(port)};
    sockaddr_in version4 = {};
    version4.sin_family = AF_INET;
    version4.sin_port = htons(port);
    if (inet_pton(AF_INET, host.c_str(), &version4.sin_addr) == 1)
        return {From(version4)};
    sockaddr_in6 version6 = {};
    version6.sin6_family = AF_INET6;
    version6.sin6_port = htons(port);
    if (inet_pton(AF_INET6, host.c_str(), &version6.sin6_addr) == 1)
        return {From(version6)};
    return {};
}

SocketAddress SocketAddress::Own(int descriptor)
{
    SocketAddress result;
    socklen_t size = sizeof(result.m_storage);
    if (getsockname(descriptor, reinterpret_cast<sockaddr*>(&result.m_storage), &size) != 0)
        return SocketAddress();
    result.m_size = size;
    return result;
}

SocketAddress SocketAddress::Peer(int descriptor)
{
    SocketAddress result;
    socklen_t size = sizeof(result.m_storage);
    if (getpeername(descriptor, reinterpret_cast<sockaddr*>(&result.m_storage), &size) != 0)
        return SocketAddress();
    result.m_size = size;
    return result;
}

unsigned short SocketAddress::Port() const
{
    if (Family() == AF_INET)
        return ntohs(reinterpret_cast<const sockaddr_in*>(&m_storage)->sin_port);
    if (Family() == AF_INET6)
        return ntohs(reinterpret_cast<const sockaddr_in6*>(&m_storage)->sin6_port);
    return 0;
}

std::string SocketAddress::Host() const
{
    char text[INET6_ADDRSTRLEN] = "";
    if (Family() == AF_INET)
        inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(&m_storage)->sin_addr, text, sizeof(text));
    else if (Family() == AF_INET6)
        inet_ntop(AF_INET6, &reinterpret_cast<const sockaddr_in6*>(&m_storage)->sin6_addr, text,
                  sizeof(text));
    return text;
}

std::string SocketAddress::Text() const
{
    const std::string host = Host();
    if (host.empty())
        return std::string();
    const std::string port = ":" + std::to_string(Port());
    return Family() == AF_INET6 ? "[" + host + "]" + port : host + port;
}

std::string SocketAddress::Name() const
{
    const std::string text = Text();
    return text.empty() ? "unknown" : text;
}
