#include <Faultkeeper/ErrorDatabaseView.h>

#include <Faultkeeper/ErrorDbViewChanged.h>

#include "Common/view/RecordIndex.h"
#include "Common/view/SystemVIpc.h"
#include "Common/view/TableLock.h"
#include "Common/view/TableRecords.h"
#include "Common/view/TableSignal.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace Faultkeeper
{

namespace
{
constexpr int kLockAttempts = 5;
} // namespace

CErrorDbViewChanged::~CErrorDbViewChanged() = default;

CErrorDatabaseView::CErrorDatabaseView(bool create, EViewType type)
    : m_failed(false), m_readySeen(false), m_table(nullptr), m_segmentId(-1), m_semaphoreId(-1), m_type(type),
      m_listener(nullptr), m_settled(false), m_index(std::make_unique<CRecordIndex>())
{
    Attach(create);
}

CErrorDatabaseView::~CErrorDatabaseView() = default;

void CErrorDatabaseView::Attach(bool create)
{
    const key_t key = SystemVIpc::TableKey();
    if (key == -1)
        return Fail("CErrorDatabaseView::CErrorDatabaseView ftok");
    m_segmentId = SystemVIpc::OpenSegment(key);
    if (m_segmentId == -1)
        return Fail(
            "CErrorDatabaseView::CErrorDatabaseView shmeget"); // support staff search for this spelling
    m_semaphoreId = SystemVIpc::OpenSemaphore(key);            // a bad one shows when the lock is taken
    m_table = SystemVIpc::Attach(m_segmentId);
    if (m_table == nullptr)
        return Fail("CErrorDatabaseView::CErrorDatabaseView shmat");
    if (create)
    {
        std::memset(static_cast<void*>(m_table), 0, sizeof *m_table);
        ReleaseLock(); // the semaphore starts at 0: this makes the lock available as long as this process
                       // lives
        TableSignal::Wake(*m_table); // whoever waits for the owner before this one
    }
}

void CErrorDatabaseView::Fail(const char* call)
{
    std::perror(call);
    m_failed = true;
}

bool CErrorDatabaseView::GetLock(bool wait)
{
    for (int attempt = 0; attempt < kLockAttempts; ++attempt) // no pause: holders keep it for one copy
    {
        if (SystemVIpc::ChangeSemaphore(m_semaphoreId, -1, wait))
            return true;
        if (errno != EAGAIN)
        {
            Fail("CErrorDatabaseView::GetLock semop");
            return false;
        }
    }
    std::fputs("unable to obtain lock\n", stderr);
    return false;
}

bool CErrorDatabaseView::ReleaseLock()
{
    if (SystemVIpc::ChangeSemaphore(m_semaphoreId, 1, true))
        return true;
    Fail("CErrorDatabaseView::ReleaseLock semop");
    return false;
}

bool CErrorDatabaseView::FaultkeeperReady()
{
    if (m_failed)
        return false;
    const CTableLock lock(*this);
    return lock.Held() && m_table->header.ready == 1;
}

void CErrorDatabaseView::RetrieveAllErrors(std::vector<SErrorEntry>& out)
{
    if (m_failed)
        return;
    if (m_type == eViewReader)
    {
        out.insert(out.end(), m_mirror.records, m_mirror.records + RecordCount(m_mirror));
        return;
    }
    out.reserve(out.size() +
                kStatusTableCapacity); // before the lock is taken: nothing may fail while it is held
    const CTableLock lock(*this);
    if (lock.Held())
        out.insert(out.end(), m_table->records, m_table->records + RecordCount(*m_table));
}

int CErrorDatabaseView::RetrieveErrorFromIndex(int index, int& code, int& type)
{
    if (m_failed)
        return -1;
    const CTableLock lock(*this);
    if (!lock.Held() || index < 0 || index >= RecordCount(*m_table))
        return -1;
    code = m_table->records[index].problemCode;
    type = m_table->records[index].problemType;
    return 1;
}

} // namespace Faultkeeper
