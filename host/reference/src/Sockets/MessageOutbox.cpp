#include "Sockets/MessageOutbox.h"

#include <algorithm>

namespace
{

constexpr std::size_t kClearedAtOnce = 262144; // so the memory stays within limit and a quarter

} // namespace

bool MessageOutbox::Add(const std::string& message, std::uint64_t number)
{
    MakeRoom(message.size());
    if (message.size() > m_limit - (m_bytes.size() - m_first))
        return false;
    Reserve(message.size()); // so that nothing can fail half-way
    m_entries.push_back({number, message.size()});
    m_bytes += message;
    return true;
}

void MessageOutbox::MakeRoom(std::size_t bytes)
{
    while (m_mayForget && m_handed > 0 && bytes > m_limit - (m_bytes.size() - m_first))
        DropFirst();
    Compact();
}

void MessageOutbox::Reserve(std::size_t bytes)
{
    const std::size_t needed = m_bytes.size() + bytes;
    if (needed > m_bytes.capacity())
        m_bytes.reserve(std::max(needed, std::min(2 * m_bytes.capacity(), m_limit + kClearedAtOnce)));
}

void MessageOutbox::Sent(std::size_t bytes)
{
    m_next += bytes;
    while (m_handed < m_entries.size() && m_message + m_entries[m_handed].bytes <= m_next)
    {
        const SEntry entry = m_entries[m_handed];
        m_message += entry.bytes;
        ++m_handed;
        NoteHanded(entry.number);
        if (entry.number == 0 && m_handed == 1)
            DropFirst();
    }
    Compact();
}

void MessageOutbox::NoteHanded(std::uint64_t number)
{
    if (number == 0)
        return;
    m_lastHanded = std::max(m_lastHanded, number);
    m_lastOfConnection = number;
    if (m_firstOfConnection == 0)
        m_firstOfConnection = number;
}

void MessageOutbox::Rewind()
{
    m_next = m_message;
    m_firstOfConnection = 0;
    m_lastOfConnection = 0;
}

void MessageOutbox::Acknowledge(std::uint64_t number)
{
    while (!m_entries.empty() && m_entries.front().number <= number)
    {
        const bool handed = m_handed > 0;
        if (!handed && (WithinMessage() || m_entries.front().number == 0))
            break; // one without a number has to be sent yet
        if (!handed)
        {
            m_message += m_entries.front().bytes;
            m_next = m_message;
            ++m_handed;
        }
        DropFirst();
    }
    Compact();
}

void MessageOutbox::SendAgain(std::uint64_t beyond)
{
    std::size_t kept = 0;
    while (kept < m_handed && m_entries[kept].number <= beyond)
        ++kept;
    const auto end = m_entries.begin() + static_cast<std::ptrdiff_t>(m_handed);
    if (std::any_of(m_entries.begin(), end, [](const SEntry& entry) { return entry.number == 0; }))
        return Rebuild(beyond);
    for (; m_handed > kept; --m_handed)
        m_message -= m_entries[m_handed - 1].bytes;
    m_next = m_message;
}

/// Leaves out the messages without a number that the kernel has had, which nobody wants again.
void MessageOutbox::Rebuild(std::uint64_t beyond)
{
    MessageOutbox rebuilt(m_limit);
    std::size_t position = m_first;
    std::size_t handed = 0;
    for (std::size_t index = 0; index < m_entries.size(); position += m_entries[index].bytes, ++index)
    {
        const SEntry& entry = m_entries[index];
        const bool hasIt = index < m_handed;
        if (hasIt && entry.number == 0)
            continue;
        rebuilt.Add(m_bytes.substr(position, entry.bytes), entry.number);
        if (!hasIt || entry.number > beyond)
            continue;
        rebuilt.m_message = rebuilt.m_bytes.size();
        ++handed;
    }
    m_bytes.swap(rebuilt.m_bytes);
    m_entries.swap(rebuilt.m_entries);
    m_first = 0;
    m_message = rebuilt.m_message;
    m_next = m_message;
    m_handed = handed;
}

std::uint64_t MessageOutbox::FirstUnsent() const
{
    const auto begin = m_entries.begin() + static_cast<std::ptrdiff_t>(m_handed);
    const auto found =
        std::find_if(begin, m_entries.end(), [](const SEntry& entry) { return entry.number != 0; });
    return found == m_entries.end() ? 0 : found->number;
}

void MessageOutbox::DropFirst()
{
    m_first += m_entries.front().bytes;
    m_entries.pop_front();
    --m_handed;
}

void MessageOutbox::Clear()
{
    m_bytes.clear();
    m_first = 0;
    m_message = 0;
    m_next = 0;
    m_entries.clear();
    m_handed = 0;
}

void MessageOutbox::StartAnew()
{
    Clear();
    m_held = false;
    m_mayForget = true;
    m_lastHanded = 0;
    m_firstOfConnection = 0;
    m_lastOfConnection = 0;
}

/// Moves the rest to the front once enough before it is gone, so that each byte moves a few times at most.
void MessageOutbox::Compact()
{
    if (m_first < std::min(m_bytes.size() - m_first, kClearedAtOnce) || m_first == 0)
        return;
    m_bytes.erase(0, m_first);
    m_message -= m_first;
    m_next -= m_first;
    m_first = 0;
}
