#pragma once

#include <string>

namespace Support
{

/// A lock that every test process on this machine respects, held as long as the object lives.
class CFileLock
{
public:
    /// Waits until the lock is free.
    /// @param path  an existing file or directory, which is left as it is
    explicit CFileLock(const std::string& path);
    ~CFileLock();
    CFileLock(const CFileLock&) = delete;
    CFileLock& operator=(const CFileLock&) = delete;

private:
    int m_descriptor;
};

/// Port 5300 is fixed, so whoever listens on it or expects nobody to holds this.
class CPortLock : public CFileLock
{
public:
    CPortLock() : CFileLock("/tmp") {} // a directory that is there anyway: no lock file is left behind
};

} // namespace Support
