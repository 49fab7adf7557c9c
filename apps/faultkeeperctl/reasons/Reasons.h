#ifndef FAULTKEEPERCTL_REASONS_REASONS_H
#define FAULTKEEPERCTL_REASONS_REASONS_H

#include "common/text/ErrorNames.h"
#include "faultkeeperctl/reasons/SetStates.h"

#include <Faultkeeper/ErrorEntry.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace Faultkeeper
{
class CErrorDatabase;
}

namespace Faultkeeper::Apps
{

struct SSetReason;

/// Why an error is as it is.
struct SReason
{
    ErrorId id;
    bool active = false;
    std::int64_t raised = 0;  ///< last time, in seconds since 1970; 0 for never
    std::int64_t cleared = 0; ///< likewise
    bool above = false;       ///< told already, further up
    std::vector<SSetReason> sets;

    /// Does an automatic set hold it up, as things stand?
    bool Held() const;
};

/// One of the error's trigger sets. The triggers of an active error are those that are active, each with its
/// own reason in turn; those of an error that is not active are all of them, and their reasons end there.
struct SSetReason
{
    SSetState state;
    std::vector<SReason> triggers;
};

/// Finds reasons in the state of a display.
class CReasons
{
public:
    /// @param database  borrowed; in the state of the records
    CReasons(const CErrorDatabase& database, const std::vector<SErrorEntry>& records);

    /// An error that was given already is told no second time, only named.
    SReason ReasonOf(const ErrorId& id);

    bool Told(const ErrorId& id) const { return m_told.count(id) > 0; }

private:
    SReason Bare(const CError& error) const;
    SReason Explained(const CError& error);

    const CErrorDatabase& m_database;
    std::vector<SErrorEntry> m_records;
    std::set<ErrorId> m_told;
};

} // namespace Faultkeeper::Apps

#endif
