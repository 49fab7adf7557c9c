#ifndef FAULTKEEPER_FAULTKEEPERD_OWNER_STATERECORDER_H
#define FAULTKEEPER_FAULTKEEPERD_OWNER_STATERECORDER_H

#include "common/text/ErrorNames.h"
#include "store/StoreRecords.h"
#include "store/TransitionCauses.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

class CStateKeeper;

/// Writes down what every error's state is and how it came about, for the store.
///
/// Counts by the rules of the shared table, without waiting for it: a change counts at once, also while the
/// table's lock is busy, and the times are the table's as soon as it has them. Threads: one at a time.
class CStateRecorder
{
public:
    /// @param database  borrowed; likewise the keeper
    CStateRecorder(const CErrorDatabase& database, CStateKeeper& keeper)
        : m_keeper(keeper), m_causes(database)
    {
    }

    /// What an owner before this one has left. Nothing has changed by it.
    /// @param shown  what the table gets of it; the same but for times that are not to be shown
    void Restore(const SStoredError& error, const SErrorEntry& shown);

    /// A request comes; what is noted from here on follows from it.
    /// @param session  who asks, for the journal
    void Begin(const std::string& session);

    /// Nobody has asked; what is noted from here on the owner does by itself.
    void Begin(EOwnersReason reason);

    /// An error has changed; one that is in that state already has not.
    void Note(const ErrorId& id, bool raised);

    /// Hands the keeper the state of all errors that have changed since.
    void HandOver();

    /// Is there a state whose time is not the table's yet?
    bool WantsTimes() const { return !m_untimed.empty(); }

    /// Takes over the times of what has changed, and hands that to the keeper.
    /// @param records  of the table, with all that was noted in it
    void TakeTimes(const std::vector<SErrorEntry>& records);

private:
    void Count(SErrorEntry& entry, const ErrorId& id, bool raised, const Core::Time& now);
    void Journal(const ErrorId& id, bool raised, const Core::Time& time, const CError* cause);

    CStateKeeper& m_keeper;
    CTransitionCauses m_causes;
    std::string m_session;                    // of the request that is being applied
    EOwnersReason m_reason = eorNone;         // if there is none
    std::map<ErrorId, SStoredError> m_states; // of all errors that ever changed
    std::set<ErrorId> m_changed;              // and not handed over
    std::set<ErrorId> m_untimed;              // with a time that is not the table's
};

} // namespace Faultkeeper::Apps

#endif
