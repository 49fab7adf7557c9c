#ifndef FAULTKEEPER_COMMON_VIEW_SYSTEMVIPC_H
#define FAULTKEEPER_COMMON_VIEW_SYSTEMVIPC_H

#include <Faultkeeper/StatusTable.h>

#include <sys/types.h>

/// The system calls behind the shared table, one function each. A call that fails gives its failure value and
/// leaves errno as the system set it.
namespace Faultkeeper
{
namespace SystemVIpc
{

/// Key of table and lock for the current working directory, or -1.
key_t TableKey();

/// The segment under the key, made (rw-r--r--, zero bytes) if there is none; or -1.
int OpenSegment(key_t key);

/// The segment's bytes, or null. Never detached: the table stays mapped as long as the process.
SStatusTable* Attach(int segmentId);

/// The set of one semaphore under the key, made (rw-rw-rw-, value 0) if there is none; or -1.
int OpenSemaphore(key_t key);

/// Adds -1 or +1 to the semaphore. The system takes the change back when this process ends.
/// @param wait  if the value would fall below 0: wait instead of failing with EAGAIN
bool ChangeSemaphore(int semaphoreId, int change, bool wait);

} // namespace SystemVIpc
} // namespace Faultkeeper

#endif
