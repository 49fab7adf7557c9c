#ifndef FAULTKEEPER_APPS_STORE_STOREFACTS_H
#define FAULTKEEPER_APPS_STORE_STOREFACTS_H

#include "store/Sqlite.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

/// Numbers of the rows of facts: append only.
enum EStoreFact
{
    esfBoot = 1,      ///< in which start of the machine the store was written last
    esfConfiguration, ///< fingerprint
    esfTry,           ///< when it was last tried whether the disk takes something
    esfLast = esfTry
};

/// Each fact is there twice: without the boot, whatever is raised would be forgotten.
constexpr std::int64_t CopyOf(EStoreFact fact)
{
    return esfLast + fact;
}

/// What the row of that number holds, in words.
std::string NameOfFact(std::int64_t id);

/// What a store says of itself.
struct SStoreFacts
{
    std::map<std::int64_t, std::string> values; ///< by number, copies included
    std::vector<std::int64_t> bad;              ///< numbers of rows that do not fit their checksum

    /// The fact, or its copy, or "" if there is neither.
    std::string Value(EStoreFact fact) const;
};

/// @throws CSqliteFailure
SStoreFacts ReadStoreFacts(CSqlite& database);

} // namespace Faultkeeper::Apps

#endif
