#include "campaign/parts/Probe.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/FaultkeeperAPI.h>

#include <algorithm>
#include <cmath>

namespace Campaign
{

using namespace Faultkeeper;

namespace
{
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBetween(20);
constexpr int kLookMilliseconds = 10;
constexpr int kPatienceMilliseconds = 60000;

class CWatcher
{
public:
    CWatcher(const std::string& configuration, const ErrorId& error)
        : m_database(configuration), m_view(false, eViewReader), m_error(error)
    {
    }

    /// Reports and waits until it can be seen. @return false if it was over before
    bool ReportAndSee(bool raise, const std::atomic<bool>& over)
    {
        const auto type = static_cast<EProblemType>(m_error.second);
        while ((raise ? m_client.RaiseError(m_error.first, type, false, false)
                      : m_client.ClearError(m_error.first, type, false)) != 1)
        {
            if (over)
                return false;
        }
        while (!Seen(raise))
            m_view.WaitForChange(kLookMilliseconds);
        return true;
    }

    bool Finish() { return m_client.WaitUntilAcknowledged(kPatienceMilliseconds); }

private:
    bool Seen(bool raised)
    {
        SErrorEntry record;
        m_view.Synchronise(m_database);
        m_view.RetrieveErrorDetails(m_error.first, m_error.second, record);
        return ((record.flags & kRaisedFlag) != 0) == raised;
    }

    CErrorDatabase m_database;
    CErrorDatabaseView m_view;
    CFaultkeeperAPI m_client;
    const ErrorId m_error;
};
} // namespace

CProbe::CProbe(const std::string& configuration, const ErrorId& error)
    : m_thread([this, configuration, error] { Measure(configuration, error); })
{
}

CProbe::~CProbe()
{
    Finish();
}

void CProbe::Finish()
{
    m_over = true;
    if (m_thread.joinable())
        m_thread.join();
    std::sort(m_delays.begin(), m_delays.end());
}

void CProbe::Measure(const std::string& configuration, const ErrorId& error)
{
    CWatcher watcher(configuration, error);
    while (!m_over)
    {
        const Clock::time_point begin = Clock::now();
        if (!watcher.ReportAndSee(true, m_over))
            break;
        m_delays.push_back(std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
        ++m_raises;
        if (!watcher.ReportAndSee(false, m_over))
            break;
        std::this_thread::sleep_for(kBetween);
    }
    watcher.Finish();
}

double CProbe::Quantile(double part) const
{
    if (m_delays.empty())
        return 0;
    const double position = std::floor(part * static_cast<double>(m_delays.size() - 1));
    return m_delays[static_cast<std::size_t>(position)];
}

} // namespace Campaign
