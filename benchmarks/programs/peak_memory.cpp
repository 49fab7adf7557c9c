// Runs a program with its output thrown away and prints the most memory it was resident with, in KiB:
// peak_memory PROGRAM ARGUMENT... Small itself, because a program begins as a copy of what starts it.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

int main(int argumentCount, char** arguments)
{
    if (argumentCount < 2)
    {
        std::fputs("usage: peak_memory PROGRAM ARGUMENT...\n", stderr);
        return 2;
    }
    const pid_t process = fork();
    if (process == 0)
    {
        dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
        execv(arguments[1], arguments + 1);
        perror(arguments[1]);
        _exit(127);
    }
    int status = 0;
    struct rusage used = {};
    if (process < 0 || wait4(process, &status, 0, &used) != process)
    {
        perror("peak_memory");
        return 1;
    }
    std::printf("%ld\n", used.ru_maxrss);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
