#ifndef FAULTKEEPER_FAULTKEEPERD_OWNER_ORPHANS_H
#define FAULTKEEPER_FAULTKEEPERD_OWNER_ORPHANS_H

#include "common/text/ErrorNames.h"
#include "store/StoreRecords.h"

#include <set>
#include <vector>

namespace Faultkeeper
{
class CErrorDatabase;
}

namespace Faultkeeper::Apps
{

class CStateKeeper;

/// Errors that were raised because of others while another configuration was in force, and that would not be
/// active any more had it been this one: nobody would clear them.
///
/// What the journal tells of this start of the machine is gone through again with the links as they are now.
/// Only what followed from others is judged anew; what was reported has happened, and so has what followed
/// and was cleared since. Where nothing has changed about the links, what stayed active stays so, even if
/// nothing that is linked could clear it. Cost: two readings of the journal.
/// @param stored  the states as of the journal's end
std::set<ErrorId> FindOrphans(CStateKeeper& keeper, const CErrorDatabase& database,
                              const std::vector<SStoredError>& stored);

} // namespace Faultkeeper::Apps

#endif
