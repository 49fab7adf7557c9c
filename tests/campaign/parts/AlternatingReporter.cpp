#include "campaign/parts/AlternatingReporter.h"

#include <chrono>
#include <cstddef>
#include <thread>

namespace Campaign
{

namespace
{
constexpr int kPatienceMilliseconds = 600000;
constexpr std::chrono::milliseconds kPause(1);
} // namespace

void CAlternatingReporter::Change()
{
    const ErrorId& id = m_errors[static_cast<std::size_t>(m_changes / 2 % m_errors.size())];
    const auto type = static_cast<Faultkeeper::EProblemType>(id.second);
    while ((m_changes % 2 == 0 ? m_client.RaiseError(id.first, type, false, false)
                               : m_client.ClearError(id.first, type, false)) != 1)
        std::this_thread::sleep_for(kPause);
    ++m_changes;
}

bool CAlternatingReporter::Finish()
{
    return m_client.WaitUntilAcknowledged(kPatienceMilliseconds);
}

} // namespace Campaign
