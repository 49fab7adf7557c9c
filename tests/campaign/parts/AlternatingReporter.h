#pragma once

#include "campaign/parts/Account.h"

#include <Faultkeeper/FaultkeeperAPI.h>

#include <cstdint>
#include <vector>

namespace Campaign
{

/// Raises the first of its errors, clears it, and goes on with the next, round and round.
class CAlternatingReporter
{
public:
    /// Reports the next change, as often as it takes to be accepted.
    void Change();

    /// How many have been accepted.
    std::uint64_t Changes() const { return m_changes; }

    /// Waits until the owner has acknowledged all.
    bool Finish();

private:
    Faultkeeper::CFaultkeeperAPI m_client;
    const std::vector<ErrorId> m_errors = ErrorsOf(0);
    std::uint64_t m_changes = 0;
};

} // namespace Campaign
