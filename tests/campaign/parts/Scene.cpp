#include "campaign/parts/Scene.h"

#include "campaign/parts/ReporterProcess.h"
#include "faultkeeperctl/owner/OwnerStatistics.h"

#include <Faultkeeper/ErrorDatabaseView.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace Campaign
{

using namespace Support;

void AddReportedErrors(CConfigurationBuilder& builder)
{
    for (int reporter = 0; reporter < kReporters; ++reporter)
    {
        for (const ErrorId& id : ErrorsOf(reporter))
            builder.Leaf(Faultkeeper::Apps::ErrorName(id.first, id.second));
    }
}

CConfigurationBuilder ReportedErrors()
{
    CConfigurationBuilder builder;
    AddReportedErrors(builder);
    return builder;
}

CScene::CScene(const CConfigurationBuilder& configuration)
{
    configuration.WriteTo(m_directory.Prefix());
}

void CScene::StartOwner(const std::vector<std::string>& more)
{
    std::vector<std::string> command = {FAULTKEEPER_CAMPAIGN_OWNER, "--config", m_directory.Prefix(),
                                        "--run-dir", m_directory.Path()};
    command.insert(command.end(), more.begin(), more.end());
    m_owner = std::make_unique<CProgram>(command);
}

bool CScene::KillOwner()
{
    const bool running = m_owner->Process().Running();
    if (!running)
        std::fprintf(stderr, "an owner had ended by itself:\n%s", m_owner->Errors().c_str());
    m_owner->Process().Signal(SIGKILL);
    m_owner->Wait();
    return running;
}

void CScene::AwaitOwner() const
{
    if (!m_owner->SaysInTime("info: ready"))
        throw std::runtime_error("the owner does not get ready:\n" + m_owner->Errors());
}

bool CScene::EndOwner()
{
    m_owner->Process().Signal(SIGTERM);
    const bool ended = m_owner->Wait() == 0;
    if (!ended)
        std::fprintf(stderr, "the owner did not end in order:\n%s", m_owner->Errors().c_str());
    return ended;
}

Faultkeeper::SStatusTable CScene::Table()
{
    const std::uint8_t* const bytes = m_directory.Table();
    if (bytes == nullptr)
        throw std::runtime_error("there is no table");
    Faultkeeper::SStatusTable table;
    std::memcpy(static_cast<void*>(&table), bytes, sizeof table);
    return table;
}

long CScene::OwnerMemory() const
{
    std::ifstream file("/proc/" + std::to_string(OwnerProcess()) + "/status");
    for (std::string line; std::getline(file, line);)
    {
        if (line.compare(0, 6, "VmRSS:") == 0)
            return std::stol(line.substr(6));
    }
    return -1;
}

int CScene::OwnerDescriptors() const
{
    const std::filesystem::directory_iterator files("/proc/" + std::to_string(OwnerProcess()) + "/fd");
    return static_cast<int>(std::distance(begin(files), end(files)));
}

std::int64_t CScene::OwnerNumber(const std::string& name)
{
    Faultkeeper::Apps::SOwnerStatistics statistics;
    constexpr std::chrono::milliseconds kPatience(kPatienceMilliseconds);
    if (Faultkeeper::Apps::AskOwner(kPatience, statistics) != Faultkeeper::Apps::eoaAnswered)
        throw std::runtime_error("the owner does not answer");
    return statistics.numbers.at(name);
}

bool LockFree(const CScene& scene)
{
    Faultkeeper::CErrorDatabaseView view(false, Faultkeeper::eViewReader);
    const bool isFree = WaitUntil(
        [&] { return scene.Directory().SemaphoreValue() == 1 && view.GetLock(false) && view.ReleaseLock(); });
    if (!isFree)
        std::fprintf(stderr, "the lock stays at %d\n", scene.Directory().SemaphoreValue());
    return isFree;
}

CReporters::CReporters(unsigned seed, CSharedAccounts& accounts) : m_accounts(accounts)
{
    m_processes.resize(kReporters);
    for (int reporter = 0; reporter < kReporters; ++reporter)
        Replace(reporter, seed);
}

void CReporters::Replace(int reporter, unsigned seed)
{
    SAccounts& accounts = *m_accounts;
    const auto live = [&accounts, seed, reporter]
    { return LiveAsReporter(reporter, seed * kReporters + static_cast<unsigned>(reporter), accounts); };
    auto& process = m_processes.at(static_cast<std::size_t>(reporter));
    accounts.reporters[reporter].kills += process != nullptr ? 1 : 0;
    process.reset(); // two of them would share the account
    process = std::make_unique<CChildProcess>(live);
}

bool CReporters::Finish()
{
    m_accounts->over = true;
    bool finished = true;
    for (const auto& process : m_processes)
        finished = process->Wait() == 0 && finished;
    if (!finished)
        std::fprintf(stderr, "a reporter could not get everything acknowledged\n");
    return finished;
}

} // namespace Campaign
