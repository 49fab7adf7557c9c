#pragma once

#include <string>

#include <sys/types.h>

namespace Fuzz
{

/// A new empty directory for one process, in memory where the machine has such a place, whose status table
/// key nobody else uses. It is removed with all it holds, and with the segment and the semaphore under its
/// key, when the object goes and also when the process ends in any other way: a small process of its own
/// waits for that.
///
/// Make it before the first thread: it forks.
class CScratchDirectory
{
public:
    CScratchDirectory();
    ~CScratchDirectory();
    CScratchDirectory(const CScratchDirectory&) = delete;
    CScratchDirectory& operator=(const CScratchDirectory&) = delete;

    /// Absolute path with a slash at its end, as the loaders want it.
    const std::string& Prefix() const { return m_prefix; }

    /// Identifier of the directory's shared segment, whose bytes are all zero at first.
    int Segment() const { return m_segment; }

private:
    bool Claim();
    void StartRemover();

    std::string m_prefix;
    int m_segment = -1;
    int m_semaphore = -1;
    int m_life = -1; // the remover waits for its other end to close
    pid_t m_remover = -1;
};

} // namespace Fuzz
