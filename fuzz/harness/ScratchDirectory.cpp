#include "harness/ScratchDirectory.h"

#include <Faultkeeper/StatusTable.h>

#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <vector>

namespace Fuzz
{

namespace
{
constexpr int kDirectoryTries = 100; // keys have 16 bits of the directory's number, so some are taken

std::string NewDirectory()
{
    const std::string inMemory = "/dev/shm";
    const std::string place =
        access(inMemory.c_str(), W_OK) == 0 ? inMemory : std::filesystem::temp_directory_path().string();
    const std::string pattern = place + "/faultkeeper-fuzz-" + std::string(6, 'X'); // for mkdtemp to fill in
    std::vector<char> path(pattern.c_str(), pattern.c_str() + pattern.size() + 1);
    if (mkdtemp(path.data()) == nullptr)
        throw std::runtime_error("no directory " + pattern);
    return std::string(path.data()) + "/";
}

void WaitForEnd(int descriptor)
{
    char byte = 0;
    while (read(descriptor, &byte, 1) < 0 && errno == EINTR)
    {
    }
}

/// What is inherited would keep pipes open that others wait for the end of.
void CloseAllBut(int descriptor)
{
    const int end = static_cast<int>(sysconf(_SC_OPEN_MAX));
    for (int other = 0; other < end && other < 1024; ++other)
    {
        if (other != descriptor)
            close(other);
    }
}
} // namespace

CScratchDirectory::CScratchDirectory()
{
    std::vector<std::string> aside; // kept until there is a good one, so that numbers differ
    for (int tries = 0; tries < kDirectoryTries && m_segment == -1; ++tries)
    {
        m_prefix = NewDirectory();
        if (!Claim())
            aside.push_back(m_prefix);
    }
    for (const std::string& directory : aside)
        std::filesystem::remove(directory);
    if (m_segment == -1)
        throw std::runtime_error("no directory with a free table key");
    StartRemover();
}

CScratchDirectory::~CScratchDirectory()
{
    close(m_life);
    waitpid(m_remover, nullptr, 0);
}

/// Making segment and semaphore anew is the claim: of two processes only one can.
bool CScratchDirectory::Claim()
{
    const key_t key = ftok(m_prefix.c_str(), Faultkeeper::kStatusTableProject);
    m_segment = shmget(key, Faultkeeper::kStatusTableBytes, IPC_CREAT | IPC_EXCL | 0644);
    if (m_segment == -1)
        return false;
    m_semaphore = semget(key, 1, IPC_CREAT | IPC_EXCL | 0666);
    if (m_semaphore == -1)
    {
        shmctl(m_segment, IPC_RMID, nullptr);
        m_segment = -1;
    }
    return m_semaphore != -1;
}

void CScratchDirectory::StartRemover()
{
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) == 0)
        m_remover = fork();
    if (m_remover == -1)
        throw std::runtime_error("no process to remove " + m_prefix);
    if (m_remover > 0)
    {
        close(ends[0]);
        m_life = ends[1];
        return;
    }
    setsid(); // an interrupt from the keyboard is not meant for it
    CloseAllBut(ends[0]);
    WaitForEnd(ends[0]);
    shmctl(m_segment, IPC_RMID, nullptr);
    semctl(m_semaphore, 0, IPC_RMID);
    std::error_code ignored; // there is nobody left to tell
    std::filesystem::remove_all(m_prefix, ignored);
    _exit(0);
}

} // namespace Fuzz
