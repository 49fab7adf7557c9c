#pragma once

#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace Benchmarks
{

/// Lets this process sleep until another one rings.
class CBell
{
public:
    CBell()
    {
        if (pipe(m_ends) != 0)
            throw std::system_error(errno, std::generic_category(), "pipe");
    }
    ~CBell()
    {
        close(m_ends[0]);
        close(m_ends[1]);
    }
    CBell(const CBell&) = delete;
    CBell& operator=(const CBell&) = delete;

    /// For the process that rings: write one byte.
    int Rope() const { return m_ends[1]; }

    void Wait() const
    {
        char byte = 0;
        if (read(m_ends[0], &byte, 1) != 1)
            throw std::system_error(errno, std::generic_category(), "bell");
    }

private:
    int m_ends[2];
};

} // namespace Benchmarks
