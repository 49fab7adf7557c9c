#include "Terminal.h"

#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace Support
{

namespace
{
[[noreturn]] void Become(const std::vector<std::string>& command)
{
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str())); // execv promises to leave them alone
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    _exit(127);
}
} // namespace

SShown ShownOnTerminal(const std::vector<std::string>& command, unsigned short columns)
{
    struct winsize size = {};
    size.ws_row = 24;
    size.ws_col = columns;
    int terminal = -1;
    const pid_t process = forkpty(&terminal, nullptr, nullptr, &size);
    if (process < 0)
        throw std::runtime_error("there is no terminal to be had");
    if (process == 0)
        Become(command);
    SShown shown;
    char buffer[4096];
    // ends with an error when the program has gone
    for (ssize_t got = 0; (got = read(terminal, buffer, sizeof buffer)) > 0;)
        shown.text.append(buffer, static_cast<std::size_t>(got));
    int status = 0;
    waitpid(process, &status, 0);
    close(terminal);
    shown.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return shown;
}

} // namespace Support
