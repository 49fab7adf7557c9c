#pragma once

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <csignal>

namespace Support
{

/// As long as it lives no file may grow beyond so many bytes, in this process and in those that it starts
/// meanwhile, whose limit stays; writing beyond fails and ends nobody.
class CFileSizeLimit
{
public:
    explicit CFileSizeLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &m_before), 0);
        const struct rlimit limit = {bytes, m_before.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    }

    ~CFileSizeLimit()
    {
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &m_before), 0);
        std::signal(SIGXFSZ, m_handler);
    }

    CFileSizeLimit(const CFileSizeLimit&) = delete;
    CFileSizeLimit& operator=(const CFileSizeLimit&) = delete;

private:
    struct rlimit m_before = {};
    void (*m_handler)(int);
};

} // namespace Support
