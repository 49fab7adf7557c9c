#ifndef SOCKETS_MESSAGEOUTBOX_H
#define SOCKETS_MESSAGEOUTBOX_H

#include <cstddef>
#include <deque>
#include <string>

/// Messages on their way out, in order. A message stays until the kernel has all of it, because a connection
/// lost in the middle of one makes it start again: half a message is of no use to the next receiver.
class MessageOutbox
{
public:
    /// @param limit  bytes that fit
    explicit MessageOutbox(std::size_t limit) : m_limit(limit) {}

    /// @return false if there is no room; nothing is kept then
    bool Add(const std::string& message);

    bool Empty() const { return m_lengths.empty(); }

    /// All bytes of the messages that the kernel does not have whole.
    std::size_t Waiting() const { return m_bytes.size() - m_first; }

    /// What to send next: all that is left.
    const char* Unsent() const { return m_bytes.data() + m_next; }
    std::size_t UnsentBytes() const { return m_bytes.size() - m_next; }

    /// The kernel has taken so many of the unsent bytes.
    void Sent(std::size_t bytes);

    /// The connection was lost: the message in the middle of which that happened is unsent again.
    void Rewind() { m_next = m_first; }

    void Clear();

private:
    void Compact();

    const std::size_t m_limit;
    std::string m_bytes; // from m_first on: the messages; before it: gone, and cleared away now and then
    std::size_t m_first = 0;
    std::size_t m_next = 0;            // not before m_first, and within the first message unless all is sent
    std::deque<std::size_t> m_lengths; // of the messages from m_first on
};

#endif
