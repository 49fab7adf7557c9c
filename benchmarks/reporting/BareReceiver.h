#pragma once

#include "common/ChildProcess.h"
#include "reporting/Loopback.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace Benchmarks
{

/// A process that blocks in recv(2) on one connection and tells through shared memory what has come: the
/// least that any receiver does. The sending end is this process's.
class CBareReceiver
{
public:
    /// @param bell  the receiver writes a byte to it whenever something has come; -1 for none
    explicit CBareReceiver(int bell);

    const CBareSocket& Sender() const { return *m_sender; }

    std::uint64_t Bytes() const { return m_shared.bytes.load(std::memory_order_acquire); }
    /// When the latest bytes had come, in seconds of the monotonic clock. Only with a bell.
    double ReceivedAt() const { return m_shared.receivedAt; }

private:
    struct SShared
    {
        std::atomic<std::uint64_t> bytes;
        double receivedAt;
    };

    [[noreturn]] static void Receive(int listener, int bell, SShared& shared);

    SShared& m_shared;
    std::unique_ptr<CChildProcess> m_process;
    std::unique_ptr<CBareSocket> m_sender;
};

} // namespace Benchmarks
