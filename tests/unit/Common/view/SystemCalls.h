#pragma once

#include <string>

/// Stands between the library and the system: a test program that compiles SystemCalls.cpp in has its ftok,
/// shmget, semget, shmat, shmdt and semop recorded, and failed on demand.
class SystemCalls
{
public:
    /// Recording begins; nothing fails yet.
    SystemCalls();
    /// Recording ends, and so do all failures that were asked for.
    ~SystemCalls();
    SystemCalls(const SystemCalls&) = delete;
    SystemCalls& operator=(const SystemCalls&) = delete;

    /// `times` calls of that name fail with `error` instead of reaching the system, after `passed` more that
    /// are left alone.
    static void Fail(const std::string& call, int error, int times = 1, int passed = 0);

    /// The calls since the start or since the last time that this was asked, one a line: name and arguments,
    /// "ftok . 68", "shmget 14432 01644", "semget 1 01666", "shmat null 0", "semop 0 -1 SEM_UNDO|IPC_NOWAIT".
    static std::string Log();

    /// The semaphore set that semop was last called with.
    static int LastSemaphore();
};
