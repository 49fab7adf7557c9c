#pragma once

#include <Faultkeeper/ErrorDbViewChanged.h>
#include <Faultkeeper/StatusTable.h>

#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

/// The shared table and its readers without any view, spelt out.
namespace Models
{

typedef std::pair<int, int> TErrorId;

inline bool Raised(const Faultkeeper::SErrorEntry& record)
{
    return (record.flags & Faultkeeper::kRaisedFlag) != 0;
}

/// One call of a listener: "1234:5+ " for a raised record.
inline std::string Call(const Faultkeeper::SErrorEntry& record)
{
    return std::to_string(record.problemCode) + ":" + std::to_string(record.problemType) +
           (Raised(record) ? "+ " : "- ");
}

class CWritingListener : public Faultkeeper::CErrorDbViewChanged
{
public:
    void ErrorEntryChanged(const Faultkeeper::SErrorEntry& entry) override { m_text += Call(entry); }
    /// The calls since it was last asked.
    std::string Text() { return std::exchange(m_text, std::string()); }

private:
    std::string m_text;
};

/// The first record with that identifier, or null.
inline Faultkeeper::SErrorEntry* Find(Faultkeeper::SStatusTable& table, const TErrorId& id)
{
    for (int i = 0; i < table.header.count; ++i)
        if (table.records[i].problemCode == id.first && table.records[i].problemType == id.second)
            return &table.records[i];
    return nullptr;
}

inline Core::Time ChangeTime(const Faultkeeper::SErrorEntry& record)
{
    return record.raisedTime < record.clearedTime ? record.clearedTime : record.raisedTime;
}

/// What a reading view and its local database hold.
class CReaderModel
{
public:
    /// @return the result of the synchronisation with this table
    int Synchronise(const Faultkeeper::SStatusTable& table)
    {
        *m_mirror = table;
        const bool ready = table.header.ready == 1;
        const bool first = ready && !m_readySeen;
        m_readySeen = ready;
        if (first)
            Initialise();
        if (!ready || (!first && SnapshotHolds()))
            return 0;
        const int result = Replay(first);
        if (result != 0)
            m_tops = m_active.size(); // no two errors are linked
        return result;
    }

    /// Takes the copy as the starting point.
    void Initialise()
    {
        m_seen.resize(Faultkeeper::kStatusTableCapacity);
        for (std::size_t i = 0; i < Count(); ++i)
            m_seen[i] = ChangeTime(m_mirror->records[i]);
        m_snapshot = m_mirror->header;
    }

    /// @param all  what is raised, instead of what has changed
    int Replay(bool all)
    {
        m_seen.resize(Faultkeeper::kStatusTableCapacity);
        int result = 0;
        for (std::size_t i = 0; i < Count(); ++i)
        {
            const Faultkeeper::SErrorEntry& record = m_mirror->records[i];
            if (!all && !(ChangeTime(record) > m_seen[i]))
                continue;
            m_seen[i] = ChangeTime(record);
            if (all && !Raised(record))
                continue;
            const TErrorId id(record.problemCode, record.problemType);
            if (Raised(record))
                m_active.insert(id);
            else
                m_active.erase(id);
            m_calls += Call(record);
            result = Raised(record) || result == 1 ? 1 : 2;
        }
        return result;
    }

    const Faultkeeper::SStatusTable& Mirror() const { return *m_mirror; }
    const std::set<TErrorId>& Active() const { return m_active; }
    /// How many active tops the database has listed.
    std::size_t Tops() const { return m_tops; }
    /// The listener's calls since it was last asked.
    std::string Calls() { return std::exchange(m_calls, std::string()); }

private:
    std::size_t Count() const { return static_cast<std::size_t>(m_mirror->header.count); }

    bool SnapshotHolds() const
    {
        return m_mirror->header.lastRaiseTime == m_snapshot.lastRaiseTime &&
               m_mirror->header.lastClearTime == m_snapshot.lastClearTime;
    }

    std::unique_ptr<Faultkeeper::SStatusTable> m_mirror = std::make_unique<Faultkeeper::SStatusTable>();
    Faultkeeper::SStatusHeader m_snapshot;
    std::vector<Core::Time> m_seen;
    bool m_readySeen = false;
    std::set<TErrorId> m_active;
    std::size_t m_tops = 0;
    std::string m_calls;
};

} // namespace Models
