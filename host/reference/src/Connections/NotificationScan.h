#ifndef CONNECTIONS_NOTIFICATIONSCAN_H
#define CONNECTIONS_NOTIFICATIONSCAN_H

#include <MPI/MPISocketServerC.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// Reads notifications of numbers as our client writes them: {"args": [numbers], "name": "...", "seq": n},
/// the last part optional, keys in that order and nothing else. Whatever is not exactly that is left to the
/// decoder, right or wrong: so what is accepted, and what is said of the rest, does not depend on this.
class NotificationScan
{
public:
    /// @param bytes  borrowed; from the beginning of a message
    /// @return how many bytes the notification has; 0 if there is none, or not all of it
    std::size_t Read(std::string_view bytes);

    /// The notification read last, borrowed from the bytes and from this.
    /// @param offset  that it is to have
    MPINumbersC Notification(std::uint64_t offset) const
    {
        return {m_name, m_arguments.data(), m_count, offset, m_number};
    }

private:
    bool Take(std::string_view expected);
    bool TakeDigits(std::uint64_t& value, std::uint64_t limit);
    bool TakeInteger(std::int64_t& value);
    bool TakeArguments();
    bool TakeName();
    bool TakeNumber();

    std::string_view m_rest;
    std::string_view m_name;
    std::array<std::int64_t, MPINumbersC::kMaximumCount> m_arguments = {};
    std::size_t m_count = 0;
    std::uint64_t m_number = 0;
};

#endif
