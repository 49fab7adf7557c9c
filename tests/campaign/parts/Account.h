#pragma once

#include "common/text/ErrorNames.h"

#include <atomic>
#include <cstdint>
#include <vector>

namespace Campaign
{

using Faultkeeper::Apps::ErrorId;

constexpr int kReporters = 8;
constexpr int kErrorsEach = 50;

/// The errors that one reporter reports, and nobody else.
std::vector<ErrorId> ErrorsOf(int reporter);

/// What a reporter has done, in memory that it shares with who judges it. A report counts once the client has
/// accepted it.
struct SReporterAccount
{
    std::uint64_t reports = 0;
    std::uint64_t raises[kErrorsEach] = {};
    bool raised[kErrorsEach] = {}; ///< the last word on each
    std::uint64_t kills = 0;       ///< of its processes
};

/// The accounts of all reporters, and the word that it is over.
struct SAccounts
{
    std::atomic<bool> over{false};
    SReporterAccount reporters[kReporters];

    std::uint64_t Reports() const;
};

/// Accounts in memory that processes made from here on share.
class CSharedAccounts
{
public:
    CSharedAccounts();
    ~CSharedAccounts();
    CSharedAccounts(const CSharedAccounts&) = delete;
    CSharedAccounts& operator=(const CSharedAccounts&) = delete;

    SAccounts& operator*() const { return *m_accounts; }
    SAccounts* operator->() const { return m_accounts; }

private:
    SAccounts* m_accounts;
};

} // namespace Campaign
