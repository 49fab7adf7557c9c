#ifndef CONNECTIONS_SESSIONORDER_H
#define CONNECTIONS_SESSIONORDER_H

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

/// The connections of each session, in the order of their introductions. Only the first may go on: what a
/// later one brings was sent after what the first has still to bring, and would make that look old.
class SessionOrder
{
public:
    /// Takes a connection in, once.
    /// @return true if it is the first
    bool Join(const std::string& session, std::uint64_t connection);

    /// A connection ends, or is waited for no more.
    /// @return who is the first by that; 0 if nobody is
    std::uint64_t Leave(const std::string& session, std::uint64_t connection);

    struct SWaitedFor
    {
        std::string session;
        std::uint64_t connection;
    };

    /// Who others wait for.
    std::vector<SWaitedFor> WaitedFor() const;

    void Clear() { m_sessions.clear(); }

private:
    std::map<std::string, std::deque<std::uint64_t>> m_sessions;
};

#endif
