#ifndef FAULTKEEPER_FAULTKEEPERD_SERVICE_SESSIONS_H
#define FAULTKEEPER_FAULTKEEPERD_SERVICE_SESSIONS_H

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

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
        std::uint64_t stored = 0;  ///< the number up to which a restart of the owner loses nothing
        int connections = 0;       ///< that are open
        bool awaitsStore = false;
        std::list<const std::string*>::iterator place; ///< among those without a connection, if it is
    };

    /// A session that an owner before this one has kept; it has no connection. Those that have been without
    /// the longest come first.
    void Restore(const std::string& session, std::uint64_t applied);

    /// A connection of that session has opened.
    /// @return its standing: that of before, or 0 for one that is new or was forgotten
    SSession& Open(const std::string& session);

    /// A connection of that session, which was opened here, has closed.
    void Close(const std::string& session);

    /// Is that notification a new one? If so it counts as applied from here on.
    static bool Take(SSession& session, std::uint64_t number);

    /// What was taken for that session is to be stored.
    void AwaitStore(SSession& session);
    /// All that was awaited is stored, also for sessions that have no connection any more.
    void Stored();

    /// The sessions that were forgotten since this was asked last.
    std::vector<std::string> TakeForgotten();

    std::size_t Count() const { return m_sessions.size(); }

private:
    using Session = std::pair<const std::string, SSession>;

    void Disconnected(Session& session);
    void Forget(const std::string& session);
    void ForgetOldest();

    std::unordered_map<std::string, SSession> m_sessions;
    std::list<const std::string*> m_unconnected; // keys of the above, the longest without a connection first
    std::vector<SSession*> m_awaitStore;
    std::vector<std::string> m_forgotten;
};

} // namespace Faultkeeper::Apps

#endif
