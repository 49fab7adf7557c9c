#ifndef FAULTKEEPER_FAULTKEEPERD_STORE_FORMERTABLE_H
#define FAULTKEEPER_FAULTKEEPERD_STORE_FORMERTABLE_H

#include <Faultkeeper/ErrorEntry.h>
#include <Faultkeeper/StatusTable.h>

#include <vector>

namespace Faultkeeper
{
class CErrorDatabase;
}

namespace Faultkeeper::Apps
{

/// The records that an owner before this one has left in the shared table of the working directory, as far as
/// they make sense for this configuration. To be read before a creating view fills the table with zeros;
/// nobody writes it then. Empty if there is no table of ours, or if it may not be read.
std::vector<SErrorEntry> FormerRecords(const CErrorDatabase& database);

/// Those records of a table that make sense: of a known error, the first of each, with no bits set that mean
/// nothing, and with times that are not before 1970 nor in the future.
std::vector<SErrorEntry> UsableRecords(const SStatusTable& table, const CErrorDatabase& database);

} // namespace Faultkeeper::Apps

#endif
