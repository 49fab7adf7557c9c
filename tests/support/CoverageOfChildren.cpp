// Linked into every test program that counts what is executed. A process writes its counts when it ends in
// the regular way; the children of death tests do not, and what they have executed counts, too.
#include <csignal>
#include <unistd.h>

// <gcov.h> is for C only. The linker gives every call of _exit to the second and the system's function the
// third name.
extern "C" void __gcov_dump();
extern "C" [[noreturn]] void __wrap__exit(int status);
extern "C" [[noreturn]] void __real__exit(int status);

void __wrap__exit(int status)
{
    __gcov_dump();
    __real__exit(status);
}

namespace
{

constexpr unsigned kLongestWrite = 60; // seconds

/// After the handler, abort() ends the process as it always does.
void WriteCountsWhenAborted(int)
{
    alarm(kLongestWrite); // what is aborted in the middle of an allocation waits for its own lock
    __gcov_dump();
}

const auto kBefore = std::signal(SIGABRT, &WriteCountsWhenAborted);

} // namespace
