#pragma once

#include <sys/types.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Support
{

/// How long anything is waited for before a test gives it up. Nothing should ever take a tenth of it.
constexpr int kPatienceMilliseconds = 30000;

/// Waits until `condition` holds.
/// @return false if it did not for all the patience there is
bool WaitUntil(const std::function<bool()>& condition);

/// A process of the test's own making. The destructor ends it if it still runs, and collects it in any case.
class CChildProcess
{
public:
    /// Runs `body` in a fork of this process; its result is the exit status.
    explicit CChildProcess(const std::function<int()>& body);
    ~CChildProcess();
    CChildProcess(const CChildProcess&) = delete;
    CChildProcess& operator=(const CChildProcess&) = delete;

    void Signal(int number) const;
    bool Running();
    /// As the system counts processes; -1 once it has ended and was collected.
    pid_t Number() const { return m_process; }

    /// Waits until it has ended.
    /// @return its exit status; 128 + n if signal n ended it; -1, and it is killed, if it goes on and on
    int Wait();

private:
    bool Collected(int options);

    pid_t m_process;
    int m_status = 0; // as waitpid gives it, once collected
};

/// A program, started with standard input empty and its output kept.
class CProgram
{
public:
    /// @param command  path of the program, then its arguments
    explicit CProgram(const std::vector<std::string>& command);

    CChildProcess& Process() { return *m_process; }

    /// What it has written so far.
    std::string Output() const { return TextOf(m_output.get()); }
    std::string Errors() const { return TextOf(m_errors.get()); }

    /// Waits until `text` is among what it has written to standard error.
    bool SaysInTime(const std::string& text) const;

    /// Waits for its end.
    int Wait() { return m_process->Wait(); }

private:
    using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

    static std::string TextOf(std::FILE* file);

    File m_output;
    File m_errors;
    std::unique_ptr<CChildProcess> m_process;
};

/// Lets one process wait for another: whoever passes waits until somebody has opened, once for each time.
class CGate
{
public:
    CGate();
    ~CGate();
    CGate(const CGate&) = delete;
    CGate& operator=(const CGate&) = delete;

    void Open() const;
    /// Does somebody pass without waiting?
    bool Opened() const;
    /// @return false if nobody opened for all the patience there is
    bool Pass() const;

private:
    int m_ends[2];
};

} // namespace Support
