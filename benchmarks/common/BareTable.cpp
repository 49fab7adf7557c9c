#include "common/BareTable.h"

#include <linux/futex.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <system_error>

namespace Benchmarks
{

using namespace Faultkeeper;

CBareTable::CBareTable()
{
    const key_t key = ftok(".", kStatusTableProject);
    m_semaphore = semget(key, 1, 0);
    void* const address = shmat(shmget(key, kStatusTableBytes, 0), nullptr, 0);
    if (m_semaphore < 0 || address == reinterpret_cast<void*>(-1))
        throw std::system_error(errno, std::generic_category(), "no table");
    m_table = static_cast<SStatusTable*>(address);
}

CBareTable::~CBareTable()
{
    shmdt(m_table);
}

void CBareTable::Change(int change) const
{
    sembuf operation = {};
    operation.sem_op = static_cast<short>(change);
    operation.sem_flg = change < 0 ? SEM_UNDO | IPC_NOWAIT : SEM_UNDO;
    if (semop(m_semaphore, &operation, 1) != 0)
        throw std::system_error(errno, std::generic_category(), "semop");
}

void CBareTable::Wake()
{
    syscall(SYS_futex, &m_table->header.lastRaiseTime, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}

void CBareTable::CopyTo(SStatusTable& copy) const
{
    std::memcpy(&copy, m_table, sizeof copy);
}

} // namespace Benchmarks
