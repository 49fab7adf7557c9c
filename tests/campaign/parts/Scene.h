#pragma once

#include "campaign/parts/Account.h"
#include "support/ConfigurationBuilder.h"
#include "support/FileLock.h"
#include "support/SharedTable.h"
#include "system/ChildProcess.h"

#include <Faultkeeper/StatusTable.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Campaign
{

/// Adds all errors that reporters report.
void AddReportedErrors(Support::CConfigurationBuilder& builder);
/// A configuration of nothing else.
Support::CConfigurationBuilder ReportedErrors();

/// Where a campaign takes place: the port, a fresh run directory with its configuration, and the owner.
class CScene
{
public:
    explicit CScene(const Support::CConfigurationBuilder& configuration);

    /// Starts an owner and does not wait for it.
    /// @param more  further arguments
    void StartOwner(const std::vector<std::string>& more = {});
    /// Kills the owner. @return false if it had ended by itself, which is told
    bool KillOwner();
    /// Waits until the owner is ready.
    /// @throw std::runtime_error  if it does not get so
    void AwaitOwner() const;
    /// Has the owner end in order. @return false if it does not
    bool EndOwner();

    /// The table as it stands.
    /// @throw std::runtime_error  if there is none
    Faultkeeper::SStatusTable Table();
    std::string ConfigurationPrefix() const { return m_directory.Prefix(); }
    std::string StorePath() const { return m_directory.File("faultkeeper.db"); }

    /// The owner's number, and the memory that it has resident, in KiB.
    pid_t OwnerProcess() const { return m_owner->Process().Number(); }
    long OwnerMemory() const;
    int OwnerDescriptors() const;

    /// What the owner answers to "Statistics" under a name. Waits for the answer.
    /// @throw std::runtime_error  if none comes
    static std::int64_t OwnerNumber(const std::string& name);

    const Support::CSharedTableDirectory& Directory() const { return m_directory; }

private:
    Support::CPortLock m_port;
    Support::CSharedTableDirectory m_directory;
    std::unique_ptr<Support::CProgram> m_owner;
};

/// Waits until the table's lock is free: its value is 1, and it can be taken and given back.
/// @return false if it never is, which is told
bool LockFree(const CScene& scene);

/// One process for each reporter.
class CReporters
{
public:
    CReporters(unsigned seed, CSharedAccounts& accounts);

    Support::CChildProcess& Process(int reporter)
    {
        return *m_processes.at(static_cast<std::size_t>(reporter));
    }

    /// Puts another process in the place of one.
    void Replace(int reporter, unsigned seed);

    /// Says that it is over, and waits for all.
    /// @return false if one could not get everything acknowledged
    bool Finish();

private:
    CSharedAccounts& m_accounts;
    std::vector<std::unique_ptr<Support::CChildProcess>> m_processes;
};

} // namespace Campaign
