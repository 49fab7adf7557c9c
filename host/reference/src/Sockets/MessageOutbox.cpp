#include "Sockets/MessageOutbox.h"

bool MessageOutbox::Add(const std::string& message)
{
    if (message.size() > m_limit - Waiting())
        return false;
    m_bytes.reserve(m_bytes.size() + message.size()); // so that nothing can fail half-way
    m_lengths.push_back(message.size());
    m_bytes += message;
    return true;
}

void MessageOutbox::Sent(std::size_t bytes)
{
    m_next += bytes;
    while (!m_lengths.empty() && m_first + m_lengths.front() <= m_next)
    {
        m_first += m_lengths.front();
        m_lengths.pop_front();
    }
    Compact();
}

void MessageOutbox::Clear()
{
    m_bytes.clear();
    m_first = 0;
    m_next = 0;
    m_lengths.clear();
}

/// Moves the rest to the front once more than half of the bytes are gone, so that each byte moves once or so.
void MessageOutbox::Compact()
{
    if (m_first < m_bytes.size() - m_first)
        return;
    m_bytes.erase(0, m_first);
    m_next -= m_first;
    m_first = 0;
}
