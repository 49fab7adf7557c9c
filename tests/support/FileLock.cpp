#include "support/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <stdexcept>

namespace Support
{

CFileLock::CFileLock(const std::string& path)
    : m_descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666))
{
    if (m_descriptor < 0 || flock(m_descriptor, LOCK_EX) != 0)
        throw std::runtime_error("cannot lock " + path);
}

CFileLock::~CFileLock()
{
    close(m_descriptor); // the file stays: removing it would let two tests hold two locks of one name
}

} // namespace Support
