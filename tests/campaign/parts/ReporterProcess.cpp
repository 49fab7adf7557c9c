#include "campaign/parts/ReporterProcess.h"

#include <Faultkeeper/FaultkeeperAPI.h>

#include <chrono>
#include <random>
#include <thread>

using Faultkeeper::CFaultkeeperAPI;

namespace Campaign
{

namespace
{
constexpr int kPatienceMilliseconds = 120000;
constexpr std::chrono::milliseconds kPause(1);
constexpr std::chrono::milliseconds kLongPause(20);

class CReporter
{
public:
    CReporter(int reporter, unsigned seed, SReporterAccount& account)
        : m_account(account), m_errors(ErrorsOf(reporter)), m_random(seed)
    {
    }

    void Live(EReporterHabit habit, const std::atomic<bool>& over)
    {
        while (!over && !m_client.Welcomed()) // what goes to an owner that never was ready is nobody's yet
            Pause(kPause);
        for (std::size_t i = 0; habit == erhOnce && i < m_errors.size() && !over;)
            i += Turn(i) ? 1U : 0U;
        while (!over)
        {
            if (habit == erhOnce || !Turn(m_random() % m_errors.size()))
                Pause(kPause);
            if (habit == erhNowAndThen)
                Pause(kLongPause);
        }
    }

    bool Finish() { return m_client.WaitUntilAcknowledged(kPatienceMilliseconds); }

private:
    /// Reports an error as what it is not. @return false if the client cannot take it now
    bool Turn(std::size_t error)
    {
        const auto type = static_cast<Faultkeeper::EProblemType>(m_errors[error].second);
        const bool raise = !m_account.raised[error];
        const int result = raise ? m_client.RaiseError(m_errors[error].first, type, false, false)
                                 : m_client.ClearError(m_errors[error].first, type, false);
        if (result != 1)
            return false;
        ++m_account.reports;
        m_account.raises[error] += raise ? 1 : 0;
        m_account.raised[error] = raise;
        return true;
    }

    void Pause(std::chrono::milliseconds pause)
    {
        std::this_thread::sleep_for(pause);
        m_client.ProcessMessages(false);
    }

    SReporterAccount& m_account;
    const std::vector<ErrorId> m_errors;
    std::minstd_rand m_random;
    CFaultkeeperAPI m_client;
};
} // namespace

EReporterHabit HabitOf(int reporter)
{
    return reporter == kReporters - 1 ? erhOnce : reporter == kReporters - 2 ? erhNowAndThen : erhFullSpeed;
}

int LiveAsReporter(int reporter, unsigned seed, SAccounts& accounts)
{
    CReporter process(reporter, seed, accounts.reporters[reporter]);
    process.Live(HabitOf(reporter), accounts.over);
    return process.Finish() ? 0 : 1;
}

} // namespace Campaign
