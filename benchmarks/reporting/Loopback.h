#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Benchmarks
{

/// One end of a TCP connection by bare system calls. Everything throws std::system_error when it fails.
class CBareSocket
{
public:
    explicit CBareSocket(int descriptor) : m_descriptor(descriptor) {}
    ~CBareSocket();
    CBareSocket(const CBareSocket&) = delete;
    CBareSocket& operator=(const CBareSocket&) = delete;

    /// Connects to a port of the loopback.
    static int Connect(std::uint16_t port);

    void NoDelay(bool on) const;
    /// One call of send(2) for all of it.
    void Send(const std::string& bytes) const;
    /// Blocks until something has come.
    /// @return bytes that came; 0 if the other end has closed
    std::size_t Receive(char* buffer, std::size_t size) const;
    /// Throws away what has come, without waiting.
    void Drain() const;

private:
    int m_descriptor;
};

/// Listens on the loopback.
/// @param port  0 lets the system choose
/// @return the descriptor
int ListenOnLoopback(std::uint16_t port);
std::uint16_t PortOf(int descriptor);

/// Blocks until somebody connects. @return the descriptor
int AcceptOne(int listener);

/// A report as a client sends it, in bytes. Without a number if `number` is 0.
std::string ReportBytes(bool raise, int code, int type, std::uint64_t number);

/// Seconds of the monotonic clock, which all processes share.
double MonotonicSeconds();

} // namespace Benchmarks
