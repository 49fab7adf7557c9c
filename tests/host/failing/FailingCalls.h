#pragma once

#include <climits>
#include <functional>
#include <optional>
#include <string>

namespace HostTest
{

/// Stands between the host and the system: a program that compiles FailingCalls.cpp in has its calls on
/// sockets, epoll, timers and randomness answered by a test where one wants to. Other threads than the test's
/// are left alone.
class CFailingCalls
{
public:
    /// What to answer in place of the system, errno included; nothing lets the system answer.
    /// @param descriptor  that the call is about; -1 if about none
    /// @param argument    what tells calls apart: the family of socket, the bytes of send and recv, the
    ///                    request of ioctl, the operation of epoll_ctl, the option of getsockopt
    /// @param data        what the call reads or writes: buffer, address or number; may be null
    using Answer = std::function<std::optional<int>(int descriptor, int argument, void* data)>;

    static constexpr int kAlways = INT_MAX;

    CFailingCalls() = default;
    /// From here on the system answers all calls.
    ~CFailingCalls();
    CFailingCalls(const CFailingCalls&) = delete;
    CFailingCalls& operator=(const CFailingCalls&) = delete;

    /// Calls of that name ask `answer` first.
    void Ask(const std::string& call, const Answer& answer);

    /// `times` calls of that name fail with `error`, after `passed` more that are left alone.
    void Fail(const std::string& call, int error, int times = 1, int passed = 0);

    /// The same of those about one descriptor only.
    void FailOn(int descriptor, const std::string& call, int error, int times = kAlways);

    /// The system answers calls of that name again.
    void Leave(const std::string& call);
};

} // namespace HostTest
