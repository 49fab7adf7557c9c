#pragma once

#include <functional>
#include <string>

namespace HostTest
{

/// Tries until it comes true, for 30 s at most.
bool Eventually(const std::function<bool()>& condition);

bool HasIPv6Loopback();

/// The other end of a connection, without any of the host's code.
class CRawConnection
{
public:
    /// @param descriptor  connected; owned from here on
    explicit CRawConnection(int descriptor) : m_descriptor(descriptor) {}
    CRawConnection(CRawConnection&& other) noexcept;
    CRawConnection& operator=(CRawConnection&&) = delete;
    ~CRawConnection() { Close(); }

    /// Connects; fails the test if it can't.
    static CRawConnection To(const std::string& host, unsigned short port);
    /// Can a connection be made?
    static bool CanConnectTo(const std::string& host, unsigned short port);

    /// Sends all of it, waiting where necessary.
    void Send(const std::string& bytes);
    /// Sends what the system takes without waiting, and returns how much that was.
    std::size_t SendSome(const std::string& bytes);
    /// Everything up to the end of the stream, or what has come if the connection breaks; `broken` tells.
    std::string ReceiveToEnd(bool* broken = nullptr);
    /// At least so many bytes; fewer if the stream ends before.
    std::string Receive(std::size_t size);
    /// What is there, without waiting.
    std::string ReceivePending();
    /// Has the stream ended or broken? Reads away what comes before.
    bool Ended();
    /// Has the other end's system got all that was sent? Its program need not have read it.
    bool Delivered() const;
    void EndSending();
    void Close();
    /// Closes so that the other end's next bytes meet a reset.
    void Reset();
    unsigned short OwnPort() const;
    int Descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
};

/// A listening socket on a free port of the loopback.
class CRawListener
{
public:
    /// @param backlog  how many connections may wait, and one
    explicit CRawListener(const std::string& host = "127.0.0.1", unsigned short port = 0, int backlog = 16);
    ~CRawListener() { Close(); }
    CRawListener(const CRawListener&) = delete;
    CRawListener& operator=(const CRawListener&) = delete;

    unsigned short Port() const { return m_port; }
    /// Waits for a connection.
    CRawConnection Accept();
    /// Does a connection wait?
    bool HasConnection() const;
    void Close();

private:
    int m_descriptor;
    unsigned short m_port;
};

/// What a client has sent, without what a host that delivers with confirmation adds to it: the introduction
/// at the beginning of a connection and the numbers of the notifications.
std::string WithoutSession(const std::string& stream);

/// This end's port.
unsigned short PortOf(int descriptor);

/// A port of 127.0.0.1 that nobody listens on.
unsigned short UnusedPort();

bool HasInput(int descriptor, int timeoutMilliseconds);

} // namespace HostTest
