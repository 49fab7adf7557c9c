#include "support/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <stdexcept>

namespace Support
{

CFileLock::CFileLock(const std::string& path) : m_descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC))
{
    if (m_descriptor < 0 || flock(m_descriptor, LOCK_EX) != 0)
        throw std::runtime_error("cannot lock " + path);
}

CFileLock::~CFileLock()
{
    close(m_descriptor);
}

} // namespace Support
