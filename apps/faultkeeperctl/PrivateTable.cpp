#include "faultkeeperctl/PrivateTable.h"

#include "common/owner/TableCalls.h"
#include "faultkeeperctl/Settings.h"
#include "faultkeeperctl/TemporaryName.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace Faultkeeper::Apps
{

namespace
{
// A key is made of 16 bits of the directory's number, so another table may have it: a hundred directories
// will do.
constexpr int kDirectoryAttempts = 100;

std::string MakeDirectory()
{
    std::string pattern = TemporaryNamePattern();
    if (mkdtemp(pattern.data()) == nullptr)
        throw CFailure(epsNo, "cannot make the directory " + pattern + ": " + std::strerror(errno));
    return pattern;
}

sigset_t BlockEndingSignals()
{
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE})
        sigaddset(&ending, number);
    sigset_t before;
    sigprocmask(SIG_BLOCK, &ending, &before);
    return before;
}
} // namespace

CPrivateTable::CPrivateTable(const CErrorDatabase& database) : m_signalsBefore(BlockEndingSignals())
{
    try
    {
        m_directoryBefore = std::filesystem::current_path().string();
        for (int attempt = 0; attempt < kDirectoryAttempts && !TryDirectory();)
            ++attempt;
        if (m_segment == -1)
            throw CFailure(epsNo, std::string("cannot make a private table: ") + std::strerror(errno));
        Attach(database);
    }
    catch (...)
    {
        RemoveAll();
        throw;
    }
}

CPrivateTable::~CPrivateTable()
{
    RemoveAll();
}

// Making both with the demand that there be none before is what claims the key: looking first would leave a
// gap.
bool CPrivateTable::TryDirectory()
{
    m_directories.push_back(MakeDirectory());
    std::filesystem::current_path(m_directories.back());
    key_t key = -1;
    if (!TableKey(key))
        return false;
    m_semaphore = ClaimSemaphore(key);
    if (m_semaphore == -1)
        return false;
    m_segment = ClaimSegment(key);
    if (m_segment != -1)
        return true;
    const int error = errno;
    RemoveSemaphore(m_semaphore);
    m_semaphore = -1;
    errno = error;
    return false;
}

void CPrivateTable::Attach(const CErrorDatabase& database)
{
    m_view = std::make_unique<CErrorDatabaseView>(true, eViewOwner);
    m_reader = std::make_unique<CErrorDatabaseView>(false, eViewReader);
    RemoveSegment(m_segment); // stays until this process ends, because the views are attached
    m_segment = -1;
    if (m_view->Failed() || m_reader->Failed() || !m_view->LoadErrors(database))
        throw CFailure(epsNo, "cannot use a private table");
}

void CPrivateTable::RemoveAll()
{
    if (m_segment != -1)
        RemoveSegment(m_segment);
    if (m_semaphore != -1)
        RemoveSemaphore(m_semaphore);
    std::error_code ignored;
    std::filesystem::current_path(m_directoryBefore, ignored);
    for (const std::string& directory : m_directories)
        std::filesystem::remove(directory, ignored);
    sigprocmask(SIG_SETMASK, &m_signalsBefore, nullptr);
}

} // namespace Faultkeeper::Apps
