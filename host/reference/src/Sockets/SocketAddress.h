#ifndef SOCKETS_SOCKETADDRESS_H
#define SOCKETS_SOCKETADDRESS_H

#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <vector>

/// An IPv4 or IPv6 address with a port.
class SocketAddress
{
public:
    /// No address.
    SocketAddress();

    static SocketAddress LoopbackIPv4(unsigned short port);
    static SocketAddress LoopbackIPv6(unsigned short port);

    /// Where to try to connect, in order. No name service is asked.
    /// @param host  a numeric address, or "localhost"
    /// @return empty if `host` is anything else
    static std::vector<SocketAddress> Find(const std::string& host, unsigned short port);

    /// The two ends of a socket; no address if the system does not tell.
    static SocketAddress Own(int descriptor);
    static SocketAddress Peer(int descriptor);

    int Family() const { return m_storage.ss_family; }
    const sockaddr* Get() const { return reinterpret_cast<const sockaddr*>(&m_storage); }
    socklen_t Size() const { return m_size; }

    unsigned short Port() const;

    /// "127.0.0.1" or "::1"; empty if no address.
    std::string Host() const;

    /// "127.0.0.1:5300" or "[::1]:5300"; empty if no address.
    std::string Text() const;

    /// Text, or "unknown" if no address: the system forgets the peer of a connection that was reset.
    std::string Name() const;

private:
    template <typename Address> static SocketAddress From(const Address& address);

    sockaddr_storage m_storage;
    socklen_t m_size;
};

#endif
