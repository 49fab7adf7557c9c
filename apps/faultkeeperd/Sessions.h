#ifndef FAULTKEEPER_FAULTKEEPERD_SESSIONS_H
#define FAULTKEEPER_FAULTKEEPERD_SESSIONS_H

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <unordered_map>

namespace Faultkeeper::Apps
{

/// What the owner has applied of each reporting client, over all its connections, so that what a client sends
/// again after a lost connection is applied once.
///
/// Ownership: sessions belong to this; a pointer to one is good as long as a connection of it is open.
/// Cost: some 200 bytes a session; one look-up by text for each connection, none for each report.
class CSessions
{
public:
    /// So many are remembered. Those with a connection always are; of the others the ones that have been
    /// without the longest go first.
    static constexpr std::size_t kLimit = 4096;

    /// One client's standing.
    struct SSession
    {
        std::uint64_t applied = 0; ///< the number of the last notification applied, and all before it
        int connections = 0;       ///< that are open
        std::list<const std::string*>::iterator place; ///< among those without a connection, if it is
    };

    /// A connection of that session has opened.
    /// @return its standing: that of before, or 0 for one that is new or was forgotten
    SSession& Open(const std::string& session);

    /// A connection of that session, which was opened here, has closed.
    void Close(const std::string& session);

    /// Is that notification a new one? If so it counts as applied from here on.
    static bool Take(SSession& session, std::uint64_t number);

    std::size_t Count() const { return m_sessions.size(); }

private:
    void ForgetOldest();

    std::unordered_map<std::string, SSession> m_sessions;
    std::list<const std::string*> m_unconnected; // keys of the above, the longest without a connection first
};

} // namespace Faultkeeper::Apps

#endif
