#include "unit/Common/view/SystemCalls.h"

#include <dlfcn.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>

#include <cerrno>
#include <cstdio>
#include <map>
#include <utility>

namespace
{

struct SFailure
{
    int error;
    int times;
    int passed;
};

struct SRecording
{
    bool active = false;
    std::string log;
    std::map<std::string, SFailure> failures;
    int lastSemaphore = 0;
};

SRecording& Recording()
{
    static SRecording recording;
    return recording;
}

void Record(const std::string& line)
{
    if (Recording().active)
        Recording().log += line + "\n";
}

bool Fails(const std::string& call)
{
    const auto failure = Recording().failures.find(call);
    if (!Recording().active || failure == Recording().failures.end() || failure->second.times == 0)
        return false;
    if (failure->second.passed-- > 0)
        return false;
    --failure->second.times;
    errno = failure->second.error;
    return true;
}

std::string Octal(int flags)
{
    char text[16];
    std::snprintf(text, sizeof text, "%#o", static_cast<unsigned>(flags));
    return text;
}

std::string FlagNames(int flags)
{
    std::string names = (flags & SEM_UNDO) != 0 ? "SEM_UNDO" : "";
    if ((flags & IPC_NOWAIT) != 0)
        names += "|IPC_NOWAIT";
    return (flags & ~(SEM_UNDO | IPC_NOWAIT)) != 0 ? Octal(flags) : names;
}

/// The system's own function of that name.
template <typename Function> Function* Original(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

SystemCalls::SystemCalls()
{
    Recording() = SRecording();
    Recording().active = true;
}

SystemCalls::~SystemCalls()
{
    Recording() = SRecording();
}

void SystemCalls::Fail(const std::string& call, int error, int times, int passed)
{
    Recording().failures[call] = {error, times, passed};
}

std::string SystemCalls::Log()
{
    return std::exchange(Recording().log, std::string());
}

int SystemCalls::LastSemaphore()
{
    return Recording().lastSemaphore;
}

// Names and parameters are the system's. The executable's definitions win over the C library's.
extern "C"
{

    key_t ftok(const char* path, int project) noexcept
    {
        Record("ftok " + std::string(path) + " " + std::to_string(project));
        return Fails("ftok") ? -1 : Original<key_t(const char*, int)>("ftok")(path, project);
    }

    int shmget(key_t key, size_t size, int flags) noexcept
    {
        Record("shmget " + std::to_string(size) + " " + Octal(flags));
        return Fails("shmget") ? -1 : Original<int(key_t, size_t, int)>("shmget")(key, size, flags);
    }

    int semget(key_t key, int count, int flags) noexcept
    {
        Record("semget " + std::to_string(count) + " " + Octal(flags));
        return Fails("semget") ? -1 : Original<int(key_t, int, int)>("semget")(key, count, flags);
    }

    void* shmat(int id, const void* address, int flags) noexcept
    {
        Record(std::string("shmat ") + (address == nullptr ? "null " : "address ") + std::to_string(flags));
        return Fails("shmat") ? reinterpret_cast<void*>(-1)
                              : Original<void*(int, const void*, int)>("shmat")(id, address, flags);
    }

    int shmdt(const void* address) noexcept
    {
        Record("shmdt");
        return Fails("shmdt") ? -1 : Original<int(const void*)>("shmdt")(address);
    }

    int semop(int id, sembuf* operations, size_t count) noexcept
    {
        Recording().lastSemaphore = id;
        for (size_t i = 0; i < count; ++i)
            Record("semop " + std::to_string(operations[i].sem_num) + " " +
                   std::to_string(operations[i].sem_op) + " " + FlagNames(operations[i].sem_flg));
        return Fails("semop") ? -1 : Original<int(int, sembuf*, size_t)>("semop")(id, operations, count);
    }

} // extern "C"
