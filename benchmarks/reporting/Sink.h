#pragma once

#include "common/ChildProcess.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace Benchmarks
{

/// A process that takes what is sent to it and does next to nothing with it, so that sending alone is
/// measured. It counts notifications; where asked to it also welcomes sessions and acknowledges like an
/// owner.
class CSink
{
public:
    /// @param port      0 lets the system choose
    /// @param welcomes  answer an introduction, and acknowledge after each read
    CSink(std::uint16_t port, bool welcomes);

    std::uint16_t Port() const { return m_port; }

    /// Notifications so far, introductions included.
    std::uint64_t Notifications() const { return m_shared.notifications; }
    std::uint64_t Bytes() const { return m_shared.bytes; }

    /// Sleeps until so many bytes, or notifications, have come altogether.
    /// @throws std::runtime_error if they do not within half a minute
    void WaitForBytes(std::uint64_t bytes) const;
    void WaitForNotifications(std::uint64_t notifications) const;

    struct SShared
    {
        std::atomic<std::uint64_t> notifications;
        std::atomic<std::uint64_t> bytes;
    };

private:
    SShared& m_shared;
    std::uint16_t m_port = 0;
    std::unique_ptr<CChildProcess> m_process;
};

} // namespace Benchmarks
