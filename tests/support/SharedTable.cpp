#include "support/SharedTable.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <vector>

namespace Support
{

namespace
{
constexpr int kProject = 68;

bool KeyInUse(key_t key)
{
    return shmget(key, 0, 0) != -1 || semget(key, 0, 0) != -1;
}

/// False if somebody has removed the file since it was opened, and perhaps made another one of its name.
bool IsFileOf(int descriptor, const char* path)
{
    struct stat opened = {};
    struct stat named = {};
    return fstat(descriptor, &opened) == 0 && stat(path, &named) == 0 && opened.st_ino == named.st_ino;
}
} // namespace

CSharedTableDirectory::CSharedTableDirectory()
{
    std::vector<std::unique_ptr<CFreshDirectory>> aside; // kept until there is a good one, so numbers differ
    for (int attempt = 0; attempt < 100; ++attempt)
    {
        m_directory = std::make_unique<CFreshDirectory>();
        if (ClaimFreshKey())
        {
            m_working = std::make_unique<CWorkingDirectory>(m_directory->Path());
            return;
        }
        aside.push_back(std::move(m_directory));
    }
    throw std::runtime_error("no directory with a free table key");
}

CSharedTableDirectory::~CSharedTableDirectory()
{
    RemoveTable();
    unlink(m_claimPath.c_str());
    close(m_claim);
}

bool CSharedTableDirectory::ClaimFreshKey()
{
    m_key = ftok(m_directory->Path().c_str(), kProject);
    char name[64];
    std::snprintf(name, sizeof name, "/tmp/faultkeeper-test-key-%08x", static_cast<unsigned>(m_key));
    const int claim = open(name, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    // The lock goes with the process: a test that was killed does not keep its key for ever.
    if (claim >= 0 && flock(claim, LOCK_EX | LOCK_NB) == 0 && IsFileOf(claim, name) && !KeyInUse(m_key))
    {
        m_claim = claim;
        m_claimPath = name;
        return true;
    }
    close(claim);
    return false;
}

std::uint8_t* CSharedTableDirectory::Table()
{
    if (m_table == nullptr)
    {
        void* const address = shmat(shmget(m_key, 0, 0), nullptr, 0);
        if (address != reinterpret_cast<void*>(-1))
            m_table = static_cast<std::uint8_t*>(address);
    }
    return m_table;
}

int CSharedTableDirectory::Semaphore() const
{
    return semget(m_key, 0, 0);
}

int CSharedTableDirectory::SemaphoreValue() const
{
    return semctl(Semaphore(), 0, GETVAL);
}

void CSharedTableDirectory::RemoveTable()
{
    if (m_table != nullptr)
        shmdt(m_table);
    m_table = nullptr;
    const int segment = shmget(m_key, 0, 0);
    if (segment != -1)
        shmctl(segment, IPC_RMID, nullptr);
    if (Semaphore() != -1)
        semctl(Semaphore(), 0, IPC_RMID);
}

} // namespace Support
