#pragma once

#include "support/FreshDirectory.h"

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace Support
{

/// How a program is started.
struct SChildSettings
{
    std::string directory;                ///< working directory; "" is this process's own
    std::vector<std::string> environment; ///< further variables as "NAME=value"; "NAME" alone takes one away
};

/// A program of ours running beside the test; killed, if it still runs, when the object goes. What it writes
/// is kept in files, so it never waits for the test. One built for another machine is run by the emulator.
class CChildProcess
{
public:
    /// @param command  path of the program, then its arguments
    explicit CChildProcess(const std::vector<std::string>& command, const SChildSettings& settings = {});
    ~CChildProcess();
    CChildProcess(const CChildProcess&) = delete;
    CChildProcess& operator=(const CChildProcess&) = delete;

    pid_t Id() const { return m_id; }
    void Signal(int number) const;

    /// Has it ended? Its status is collected then.
    bool Ended();
    /// Waits for its end. @return exit status, 128 + the signal that ended it, or -1 if it did not end in
    /// time
    int Wait(std::chrono::milliseconds limit = std::chrono::seconds(60));

    /// What it has written so far.
    std::string Output() const;
    std::string Errors() const;
    /// Waits until the output holds a text, as often as told. @return false if the program ended or time ran
    /// out before
    bool WaitForOutput(const std::string& text, int times = 1,
                       std::chrono::milliseconds limit = std::chrono::seconds(30));
    bool WaitForErrors(const std::string& text, int times = 1,
                       std::chrono::milliseconds limit = std::chrono::seconds(30));

private:
    bool WaitForText(const char* file, const std::string& text, int times, std::chrono::milliseconds limit);

    CFreshDirectory m_files;
    pid_t m_id;
    bool m_ended = false;
    int m_status = -1;
};

/// What a program did that was run to its end.
struct SFinished
{
    int status = -1; ///< as CChildProcess::Wait
    std::string output;
    std::string errors;
};
SFinished Run(const std::vector<std::string>& command, const SChildSettings& settings = {});

} // namespace Support
