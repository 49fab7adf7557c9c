#ifndef FAULTKEEPER_APPS_STORE_STOREFILE_H
#define FAULTKEEPER_APPS_STORE_STOREFILE_H

#include "store/Sqlite.h"

#include <string>

namespace Faultkeeper::Apps
{

/// Where an owner keeps its store if nothing else is said.
std::string UsualStorePath(const std::string& runDirectory);

/// Looks at a file from outside, before it is opened: opening a database can already change it, or what lies
/// beside it. Another program's database, and a store of a later format, are not ours to change.
///
/// To be called while this process does not have the file open: a file that is closed loses its locks.
/// @throws CSqliteFailure: damage if it is ours and damaged as far as that can be seen; not damage if it is
///         not ours
void CheckStoreHead(const std::string& path);

/// Makes the tables of a new file, all of them or none.
void MakeStoreTables(CSqlite& database);

/// Are the tables those that we make, to the letter? @throws CSqliteFailure, damage, if not
void CheckStoreTables(CSqlite& database);

/// Moves a store that is damaged out of the way, with all that belongs to it. What was moved there before
/// stays.
/// @return where it is now; empty if that was not possible, and then nothing is moved
std::string MoveStoreAside(const std::string& path);

} // namespace Faultkeeper::Apps

#endif
