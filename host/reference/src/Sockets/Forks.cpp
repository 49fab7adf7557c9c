#include "Sockets/Forks.h"

#include <pthread.h>

namespace
{

unsigned forks = 0;

void CountFork()
{
    ++forks;
}

const bool counting = pthread_atfork(nullptr, nullptr, &CountFork) == 0;

} // namespace

unsigned ForkCount()
{
    static_cast<void>(counting);
    return forks;
}
