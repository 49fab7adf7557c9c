#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/connections/RawPeer.h"

namespace HostTest
{

/// What a receiver makes of a client's bytes, without any of the host's code: the introduction and the
/// numbers of the notifications, which all have to look like those of Notification.
class CSessionStream
{
public:
    /// Takes bytes as they come; fails the test if they are not what a client sends.
    void Take(const std::string& bytes);

    /// 32 hexadecimal digits; empty before the introduction has come.
    const std::string& Session() const { return m_session; }

    /// In the order in which they came.
    const std::vector<std::uint64_t>& Numbers() const { return m_numbers; }

    /// Has a part of a message come?
    bool Incomplete() const { return !m_rest.empty(); }

private:
    bool TakeOne();
    bool TakeIntroduction();

    std::string m_session;
    std::vector<std::uint64_t> m_numbers;
    std::string m_rest;
    std::size_t m_next = 0; // within the rest, while it is taken
};

/// The bytes of a notification "Number" with its own number and nothing else as arguments.
std::string Notification(std::uint64_t number);

std::string Welcome(std::int64_t number);
std::string Acknowledgement(std::int64_t number);

} // namespace HostTest
