#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <iostream>
#include <system_error>
#include <thread>

namespace Support
{

namespace
{
constexpr std::chrono::milliseconds kBetweenLooks(2);

[[noreturn]] void Execute(const std::vector<std::string>& command, int output, int errors)
{
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    perror(arguments[0]);
    _exit(127);
}
} // namespace

bool WaitUntil(const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatienceMilliseconds);
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(kBetweenLooks);
    }
    return true;
}

CChildProcess::CChildProcess(const std::function<int()>& body)
{
    std::cout.flush(); // or the child would have it to print as well
    std::fflush(nullptr);
    m_process = fork();
    if (m_process < 0)
        throw std::system_error(errno, std::generic_category(), "fork");
    if (m_process == 0)
        _exit(body());
}

CChildProcess::~CChildProcess()
{
    if (!Running())
        return;
    Signal(SIGCONT);
    Signal(SIGKILL);
    Collected(0);
}

void CChildProcess::Signal(int number) const
{
    if (m_process > 0)
        kill(m_process, number);
}

bool CChildProcess::Running()
{
    return m_process > 0 && !Collected(WNOHANG);
}

int CChildProcess::Wait()
{
    if (!WaitUntil([this] { return !Running(); }))
    {
        ADD_FAILURE() << "process " << m_process << " does not end";
        Signal(SIGKILL);
        Collected(0);
        return -1;
    }
    return WIFEXITED(m_status) ? WEXITSTATUS(m_status) : 128 + WTERMSIG(m_status);
}

bool CChildProcess::Collected(int options)
{
    pid_t ended = 0;
    do
        ended = waitpid(m_process, &m_status, options);
    while (ended < 0 && errno == EINTR);
    if (ended == 0)
        return false;
    m_process = -1;
    return true;
}

CProgram::CProgram(const std::vector<std::string>& command)
    : m_output(std::tmpfile(), &std::fclose), m_errors(std::tmpfile(), &std::fclose)
{
    const int output = fileno(m_output.get());
    const int errors = fileno(m_errors.get());
    m_process = std::make_unique<CChildProcess>([&]() -> int { Execute(command, output, errors); });
}

bool CProgram::SaysInTime(const std::string& text) const
{
    return WaitUntil([&] { return Errors().find(text) != std::string::npos; });
}

std::string CProgram::TextOf(std::FILE* file)
{
    // The program writes at the position that both share, so this reads without moving it.
    std::string text;
    char buffer[4096];
    for (ssize_t got;
         (got = pread(fileno(file), buffer, sizeof buffer, static_cast<off_t>(text.size()))) > 0;)
        text.append(buffer, static_cast<std::size_t>(got));
    return text;
}

CGate::CGate()
{
    if (pipe2(m_ends, O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe2");
}

CGate::~CGate()
{
    close(m_ends[0]);
    close(m_ends[1]);
}

void CGate::Open() const
{
    const char byte = 0;
    if (write(m_ends[1], &byte, 1) != 1)
        throw std::system_error(errno, std::generic_category(), "write");
}

bool CGate::Opened() const
{
    struct pollfd end = {m_ends[0], POLLIN, 0};
    return poll(&end, 1, 0) == 1;
}

bool CGate::Pass() const
{
    struct pollfd end = {m_ends[0], POLLIN, 0};
    char byte = 0;
    return poll(&end, 1, kPatienceMilliseconds) == 1 && read(m_ends[0], &byte, 1) == 1;
}

} // namespace Support
