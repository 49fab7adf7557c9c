#pragma once

#include "campaign/parts/Account.h"
#include "campaign/parts/Scene.h"
#include "store/StoreRecords.h"

#include <cstdint>
#include <map>
#include <vector>

namespace Campaign
{

/// What is wrong in the end; all zero if nothing is.
struct SVerdict
{
    std::uint64_t lost = 0;       ///< raises
    std::uint64_t twice = 0;      ///< raises that were counted twice
    std::uint64_t outOfOrder = 0; ///< transitions to a state that was there already, and wrong last words
    std::uint64_t differing = 0;  ///< records in which table and store differ

    bool Good() const { return lost + twice + outOfOrder + differing == 0; }
    void Print() const;
};

using States = std::map<ErrorId, Faultkeeper::Apps::SStoredError>;

/// All states in a store that nobody has open.
States StoredStates(const std::string& path);

/// The journal of a store that nobody has open.
std::vector<Faultkeeper::Apps::STransition> StoredJournal(const std::string& path);

/// Compares the store with what one reporter has had accepted, and with what all have.
void JudgeReporter(int reporter, const States& states, const SAccounts& accounts, SVerdict& verdict);
void JudgeCounts(const States& states, const SAccounts& accounts, SVerdict& verdict);

/// Compares the table with the store.
void JudgeTable(const Faultkeeper::SStatusTable& table, const States& states, SVerdict& verdict);

/// Looks for transitions that change nothing, and gaps in the numbers.
void JudgeJournal(const std::vector<Faultkeeper::Apps::STransition>& journal, SVerdict& verdict);

/// Judges all of that once nobody has the store open, and prints it.
SVerdict JudgeAll(CScene& scene, const SAccounts& accounts);

} // namespace Campaign
