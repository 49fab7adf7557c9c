#include "common/ChildProcess.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <system_error>

namespace Benchmarks
{

namespace
{
[[noreturn]] void RunChild(const std::function<void()>& body)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    try
    {
        body();
    }
    catch (const std::exception& failure)
    {
        std::fprintf(stderr, "%s\n", failure.what());
        _exit(1);
    }
    _exit(0);
}
} // namespace

CChildProcess::CChildProcess(const std::function<void()>& body)
{
    std::fflush(nullptr);
    m_process = fork();
    if (m_process < 0)
        throw std::system_error(errno, std::generic_category(), "fork");
    if (m_process == 0)
        RunChild(body);
}

CChildProcess::~CChildProcess()
{
    kill(m_process, SIGKILL);
    waitpid(m_process, nullptr, 0);
}

bool CChildProcess::Running() const
{
    siginfo_t ended = {};
    return waitid(P_PID, static_cast<id_t>(m_process), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           ended.si_pid == 0;
}

void* ShareMemory(std::size_t bytes)
{
    void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::system_error(errno, std::generic_category(), "mmap");
    return memory;
}

} // namespace Benchmarks
