#include "Common/view/SystemVIpc.h"

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>

namespace Faultkeeper
{
namespace SystemVIpc
{

namespace
{
constexpr int kSegmentMode = 0644;   // the owner writes, everybody may look
constexpr int kSemaphoreMode = 0666; // everybody who looks must lock
} // namespace

key_t TableKey()
{
    return ftok(".", kStatusTableProject);
}

int OpenSegment(key_t key)
{
    return shmget(key, kStatusTableBytes, IPC_CREAT | kSegmentMode);
}

SStatusTable* Attach(int segmentId)
{
    void* const address = shmat(segmentId, nullptr, 0);
    return address == reinterpret_cast<void*>(-1) ? nullptr : static_cast<SStatusTable*>(address);
}

int OpenSemaphore(key_t key)
{
    return semget(key, 1, IPC_CREAT | kSemaphoreMode);
}

bool ChangeSemaphore(int semaphoreId, int change, bool wait)
{
    sembuf operation = {};
    operation.sem_num = 0;
    operation.sem_op = static_cast<short>(change);
    operation.sem_flg = static_cast<short>(wait ? SEM_UNDO : SEM_UNDO | IPC_NOWAIT);
    return semop(semaphoreId, &operation, 1) == 0;
}

} // namespace SystemVIpc
} // namespace Faultkeeper
