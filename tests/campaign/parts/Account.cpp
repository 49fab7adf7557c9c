#include "campaign/parts/Account.h"

#include <sys/mman.h>

#include <cerrno>
#include <new>
#include <system_error>

namespace Campaign
{

namespace
{
constexpr int kPositioningGps = 0x40C00; // its problems are 1, 2, 3 ...
constexpr int kModes = 16;
} // namespace

std::vector<ErrorId> ErrorsOf(int reporter)
{
    std::vector<ErrorId> errors;
    for (int i = reporter * kErrorsEach; i < (reporter + 1) * kErrorsEach; ++i)
        errors.emplace_back(kPositioningGps + 1 + i / kModes, i % kModes);
    return errors;
}

std::uint64_t SAccounts::Reports() const
{
    std::uint64_t sum = 0;
    for (const SReporterAccount& reporter : reporters)
        sum += reporter.reports;
    return sum;
}

CSharedAccounts::CSharedAccounts()
{
    void* const memory =
        mmap(nullptr, sizeof(SAccounts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::system_error(errno, std::generic_category(), "mmap");
    m_accounts = new (memory) SAccounts;
}

CSharedAccounts::~CSharedAccounts()
{
    munmap(m_accounts, sizeof(SAccounts));
}

} // namespace Campaign
