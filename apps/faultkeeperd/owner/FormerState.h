#ifndef FAULTKEEPER_FAULTKEEPERD_OWNER_FORMERSTATE_H
#define FAULTKEEPER_FAULTKEEPERD_OWNER_FORMERSTATE_H

#include "common/text/ErrorNames.h"
#include "store/StoreRecords.h"

#include <Core/Time.h>

#include <set>
#include <string>
#include <vector>

namespace Faultkeeper
{
class CErrorDatabase;
}

namespace Faultkeeper::Apps
{

class CStateKeeper;

/// What an owner starts from: what the owner before it has left.
struct SFormerState
{
    std::vector<SStoredError> errors; ///< of this configuration; none is raised unless it is the same boot
    std::vector<SStoredSession> sessions;
    bool sameBoot = false; ///< what was raised still is; otherwise reporters report it anew
    std::set<ErrorId>
        contradicted;          ///< displays have seen these in the other state, and later: it was not stored
    std::set<ErrorId> orphans; ///< of another configuration, and active by it alone: see FindOrphans
    bool judged = true;        ///< all that another configuration has left, as far as the store tells
    Core::Time latest;         ///< the latest time that a display can have seen; zero if there is none
};

/// Opens the store and reads it. Where the store does not know of this boot, or has fallen behind, the
/// records that a dead owner has left in the shared table of the working directory are used, which lasts as
/// long as the machine runs; likewise for an error whose row in the store was damaged. What was stored and
/// not put into the table any more, because its lock was busy, is the store's all the same. To be called
/// before a creating view fills that table with zeros.
///
/// States of errors that this configuration does not know stay in the store, for the day it does again.
/// @param boot           as BootId gives it
/// @param configuration  fingerprint of the database's configuration
SFormerState FindFormerState(CStateKeeper& keeper, const CErrorDatabase& database, const std::string& boot,
                             const std::string& configuration);

} // namespace Faultkeeper::Apps

#endif
