#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace Benchmarks
{

/// A process beside the measuring one. It ends with the object, and also if the measuring process is killed.
class CChildProcess
{
public:
    /// Runs `body` in a fork of this process.
    explicit CChildProcess(const std::function<void()>& body);
    ~CChildProcess();
    CChildProcess(const CChildProcess&) = delete;
    CChildProcess& operator=(const CChildProcess&) = delete;

    pid_t Id() const { return m_process; }
    bool Running() const;

private:
    pid_t m_process;
};

/// Zero bytes that this process shares with those it forks from now on.
void* ShareMemory(std::size_t bytes);

/// One object of a class that may begin with zero bytes, shared like that for the life of the process.
template <typename Shared> Shared& Share()
{
    return *static_cast<Shared*>(ShareMemory(sizeof(Shared)));
}

} // namespace Benchmarks
