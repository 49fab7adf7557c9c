#include "support/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace Support
{

namespace
{
typedef std::chrono::steady_clock Clock;

constexpr std::chrono::milliseconds kPollPause(5);
constexpr int kCannotStart = 127;

// Words to put in front of a command, empty where programs run by themselves.
std::vector<std::string> EmulatorWords()
{
    std::vector<std::string> words;
    std::istringstream text(FAULTKEEPER_EMULATOR);
    for (std::string word; text >> word;)
        words.push_back(word);
    return words;
}

void SetVariable(const std::string& setting)
{
    const std::size_t equals = setting.find('=');
    if (equals == std::string::npos)
        unsetenv(setting.c_str());
    else
        setenv(setting.substr(0, equals).c_str(), setting.substr(equals + 1).c_str(), 1);
}

void Redirect(const std::string& path, int flags, int target)
{
    const int descriptor = open(path.c_str(), flags, 0600);
    if (descriptor < 0 || dup2(descriptor, target) < 0)
        _exit(kCannotStart);
    close(descriptor);
}

// In the new process; never returns.
void Become(std::vector<std::string> words, const SChildSettings& settings, const CFreshDirectory& files)
{
    Redirect("/dev/null", O_RDONLY, STDIN_FILENO);
    Redirect(files.File("out"), O_WRONLY | O_CREAT | O_APPEND, STDOUT_FILENO);
    Redirect(files.File("err"), O_WRONLY | O_CREAT | O_APPEND, STDERR_FILENO);
    if (!settings.directory.empty() && chdir(settings.directory.c_str()) != 0)
        _exit(kCannotStart);
    for (const std::string& setting : settings.environment)
        SetVariable(setting);
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    execvp(arguments.front(), arguments.data());
    _exit(kCannotStart);
}

std::string ReadIfThere(const std::string& path)
{
    return access(path.c_str(), F_OK) == 0 ? ReadFile(path) : "";
}

int Occurrences(const std::string& text, const std::string& part)
{
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}
} // namespace

CChildProcess::CChildProcess(const std::vector<std::string>& command, const SChildSettings& settings)
{
    std::vector<std::string> words = EmulatorWords();
    words.insert(words.end(), command.begin(), command.end());
    m_id = fork();
    if (m_id < 0)
        throw std::runtime_error("cannot fork");
    if (m_id == 0)
        Become(words, settings, m_files);
}

CChildProcess::~CChildProcess()
{
    if (Ended())
        return;
    Signal(SIGKILL);
    Wait();
}

void CChildProcess::Signal(int number) const
{
    if (!m_ended)
        kill(m_id, number);
}

bool CChildProcess::Ended()
{
    int status = 0;
    if (!m_ended && waitpid(m_id, &status, WNOHANG) == m_id)
    {
        m_ended = true;
        m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return m_ended;
}

int CChildProcess::Wait(std::chrono::milliseconds limit)
{
    for (const Clock::time_point end = Clock::now() + limit; !Ended() && Clock::now() < end;)
        std::this_thread::sleep_for(kPollPause);
    return m_status;
}

std::string CChildProcess::Output() const
{
    return ReadIfThere(m_files.File("out"));
}

std::string CChildProcess::Errors() const
{
    return ReadIfThere(m_files.File("err"));
}

bool CChildProcess::WaitForOutput(const std::string& text, int times, std::chrono::milliseconds limit)
{
    return WaitForText("out", text, times, limit);
}

bool CChildProcess::WaitForErrors(const std::string& text, int times, std::chrono::milliseconds limit)
{
    return WaitForText("err", text, times, limit);
}

bool CChildProcess::WaitForText(const char* file, const std::string& text, int times,
                                std::chrono::milliseconds limit)
{
    const Clock::time_point end = Clock::now() + limit;
    for (;;)
    {
        const bool last = Ended() || Clock::now() >= end; // what was written before the end still counts
        if (Occurrences(ReadIfThere(m_files.File(file)), text) >= times)
            return true;
        if (last)
            return false;
        std::this_thread::sleep_for(kPollPause);
    }
}

SFinished Run(const std::vector<std::string>& command, const SChildSettings& settings)
{
    CChildProcess child(command, settings);
    SFinished finished;
    finished.status = child.Wait();
    finished.output = child.Output();
    finished.errors = child.Errors();
    return finished;
}

} // namespace Support
