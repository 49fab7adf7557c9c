#ifndef FAULTKEEPER_APPS_STORE_STOREREADER_H
#define FAULTKEEPER_APPS_STORE_STOREREADER_H

#include "store/Sqlite.h"
#include "store/StoreRecords.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

/// How much of a store is looked at before anything of it counts.
enum EStoreCheck : int
{
    escWholeFile = 0, ///< does the file hold together? Cost: a pass over all of it
    escRowsOnly       ///< each row by its own checksum, when it is read
};

/// What an owner's store held when this was made, for everybody but the owner.
///
/// Nothing of the store is locked or changed, and an owner does not notice. Later commits are not in it.
/// Cost: memory as large as the store.
class CStoreReader
{
public:
    /// @throws CSqliteFailure; likewise below. Damage if it does not hold together
    CStoreReader(const std::string& path, EStoreCheck check);

    /// Which start of the machine it was written in last; empty if that is not known.
    std::string Boot();

    std::vector<SStoredError> Errors();

    /// All transitions from that number on, in the order of their numbers.
    std::vector<STransition> Journal(std::uint64_t from = 0);

    /// The number that the next transition is going to have, 1 if there was none. Rows that cannot be trusted
    /// have theirs.
    std::uint64_t NextNumber();

    /// Rows that were not as they were written, in words; left out of what the other functions have given.
    const std::vector<std::string>& Dropped() const { return m_dropped; }

private:
    CSqlite m_database;
    std::vector<std::string> m_dropped;
};

} // namespace Faultkeeper::Apps

#endif
