#ifndef FAULTKEEPERCTL_HIERARCHYDOCUMENTS_H
#define FAULTKEEPERCTL_HIERARCHYDOCUMENTS_H

#include "faultkeeperctl/json/Json.h"

#include <list>

namespace Faultkeeper
{
class CErrorDatabase;
}

/// The listings of a database as documents: the same errors in the same order as the library prints them.
namespace Faultkeeper::Apps
{

/// All errors in identifier order with their names taken apart.
Json TreeListing(const CErrorDatabase& database);

/// Every error without parents with the hierarchy below it.
/// @param includeLeaves  also those that have no trigger sets
Json HierarchyListing(const CErrorDatabase& database, bool includeLeaves);

/// The listed errors with the active errors below them.
Json ActiveListing(const std::list<const CError*>& tops);

} // namespace Faultkeeper::Apps

#endif
