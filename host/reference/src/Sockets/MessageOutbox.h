#ifndef SOCKETS_MESSAGEOUTBOX_H
#define SOCKETS_MESSAGEOUTBOX_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

/// Messages on their way out, in order. A message stays until the kernel has all of it, because a connection
/// lost in the middle of one makes it start again: half a message is of no use to the next receiver. One with
/// a number stays longer: it is kept until it is acknowledged, or until room is wanted and may be made.
class MessageOutbox
{
public:
    /// @param limit  bytes that fit
    explicit MessageOutbox(std::size_t limit) : m_limit(limit) {}

    /// @param number  greater than those before; 0: none, the message goes once the kernel has it
    /// @return false if there is no room; nothing is kept of it then
    bool Add(const std::string& message, std::uint64_t number = 0);

    /// All bytes of the messages that the kernel does not have whole.
    std::size_t Waiting() const { return m_bytes.size() - m_message; }

    /// How many messages those are.
    std::size_t WaitingCount() const { return m_entries.size() - m_handed; }

    /// The bytes that new messages have to do without.
    std::size_t Occupied() const { return m_mayForget ? Waiting() : m_bytes.size() - m_first; }

    /// What to send next: all that is left, or nothing while it is held back.
    const char* Unsent() const { return m_bytes.data() + m_next; }
    std::size_t UnsentBytes() const { return m_held ? 0 : m_bytes.size() - m_next; }

    /// The kernel has taken so many of the unsent bytes.
    void Sent(std::size_t bytes);

    /// The connection was lost: the message in the middle of which that happened is unsent again.
    void Rewind();

    /// While held back nothing is unsent. Not to be begun within a message.
    void HoldBack(bool held) { m_held = held; }

    /// May messages that the kernel has had be forgotten, the oldest first, when others need room?
    void MayForget(bool may) { m_mayForget = may; }

    /// Forgets what is kept up to a number.
    void Acknowledge(std::uint64_t number);

    /// What is kept beyond a number is unsent again, in its place. Not within a message.
    void SendAgain(std::uint64_t beyond);

    /// The greatest number that the kernel has ever had whole; 0 if none.
    std::uint64_t LastHanded() const { return m_lastHanded; }

    /// The first and last number that the kernel has had whole since the last Rewind; 0 if none.
    std::uint64_t FirstOfConnection() const { return m_firstOfConnection; }
    std::uint64_t LastOfConnection() const { return m_lastOfConnection; }

    /// The first number that the kernel does not have whole; 0 if none.
    std::uint64_t FirstUnsent() const;

    /// Does the kernel have a part of a message?
    bool WithinMessage() const { return m_next != m_message; }

    void Clear();

    /// Clears, and is as if nothing had ever been added.
    void StartAnew();

private:
    struct SEntry
    {
        std::uint64_t number;
        std::size_t bytes;
    };

    void MakeRoom(std::size_t bytes);
    void Reserve(std::size_t bytes);
    void NoteHanded(std::uint64_t number);
    void DropFirst();
    void Rebuild(std::uint64_t beyond);
    void Compact();

    const std::size_t m_limit;
    std::string m_bytes; // from m_first on: the messages; before it: gone, and cleared away now and then
    std::size_t m_first = 0;
    std::size_t m_message = 0;    // the first message that the kernel does not have whole
    std::size_t m_next = 0;       // not before m_message, and within that message unless all is sent
    std::deque<SEntry> m_entries; // of the messages from m_first on
    std::size_t m_handed = 0;     // of those, which the kernel has whole
    bool m_held = false;
    bool m_mayForget = true;
    std::uint64_t m_lastHanded = 0;
    std::uint64_t m_firstOfConnection = 0;
    std::uint64_t m_lastOfConnection = 0;
};

#endif
