#include "faultkeeperctl/text/Progress.h"

#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstdio>

namespace Faultkeeper::Apps
{

CProgress::CProgress(const std::string& what) : m_what(what)
{
    if (isatty(STDERR_FILENO) != 0)
        m_teller = std::thread(&CProgress::Tell, this);
}

CProgress::~CProgress()
{
    if (!m_teller.joinable())
        return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_over = true;
    }
    m_ended.notify_one();
    m_teller.join();
}

void CProgress::Tell()
{
    std::size_t width = 0;
    std::unique_lock<std::mutex> lock(m_mutex);
    for (int seconds = 1; !m_ended.wait_for(lock, std::chrono::seconds(1), [this] { return m_over; });
         ++seconds)
    {
        const std::string line = m_what + ", " + std::to_string(seconds) + " s";
        std::fprintf(stderr, "\r%s", line.c_str());
        width = line.size();
    }
    if (width > 0)
        std::fprintf(stderr, "\r%s\r", std::string(width, ' ').c_str());
}

} // namespace Faultkeeper::Apps
