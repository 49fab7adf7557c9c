#pragma once

#include <Faultkeeper/StatusTable.h>

namespace Benchmarks
{

/// The table of the working directory by bare system calls: what no view can do without.
class CBareTable
{
public:
    /// Attaches to the table that a view has made.
    /// @throws std::system_error if there is none
    CBareTable();
    ~CBareTable();
    CBareTable(const CBareTable&) = delete;
    CBareTable& operator=(const CBareTable&) = delete;

    void Lock() const { Change(-1); }
    void Unlock() const { Change(1); }
    /// Wakes whoever sleeps on the type word of the last raise time.
    void Wake();

    const volatile Faultkeeper::SStatusTable& Table() const { return *m_table; }
    /// All of it, as it stands.
    void CopyTo(Faultkeeper::SStatusTable& copy) const;

private:
    void Change(int change) const;

    int m_semaphore;
    Faultkeeper::SStatusTable* m_table;
};

} // namespace Benchmarks
