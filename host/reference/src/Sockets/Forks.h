#ifndef SOCKETS_FORKS_H
#define SOCKETS_FORKS_H

/// How many forks this process is away from the one that loaded the host: not what it was in the parent.
/// Costs no system call.
unsigned ForkCount();

#endif
