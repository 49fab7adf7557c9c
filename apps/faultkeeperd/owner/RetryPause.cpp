#include "faultkeeperd/owner/RetryPause.h"

#include <algorithm>

namespace Faultkeeper::Apps
{

constexpr std::chrono::milliseconds CRetryPause::kShortest;
constexpr std::chrono::milliseconds CRetryPause::kLongest;

void CRetryPause::Failed(Clock::time_point now)
{
    m_pause = std::clamp(m_pause * 2, kShortest, kLongest);
    m_due = now + m_pause;
}

bool CRetryPause::Due(Clock::time_point now) const
{
    return m_pause.count() == 0 || now >= m_due;
}

int CRetryPause::MillisecondsLeft(Clock::time_point now) const
{
    if (Due(now))
        return 0;
    return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(m_due - now).count());
}

} // namespace Faultkeeper::Apps
