#include "faultkeeperctl/reasons/Reasons.h"

#include "faultkeeperctl/text/TimeText.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <algorithm>
#include <cstddef>

namespace Faultkeeper::Apps
{

bool SReason::Held() const
{
    return std::any_of(sets.begin(), sets.end(),
                       [](const SSetReason& set) { return set.state.automatic && set.state.Satisfied(); });
}

CReasons::CReasons(const CErrorDatabase& database, const std::vector<SErrorEntry>& records)
    : m_database(database), m_records(records)
{
}

SReason CReasons::ReasonOf(const ErrorId& id)
{
    const CError* const error = m_database.RetrieveError(id.first, id.second);
    if (error != nullptr)
        return Explained(*error);
    SReason unknown;
    unknown.id = id;
    return unknown;
}

SReason CReasons::Bare(const CError& error) const
{
    SReason reason;
    reason.id = ErrorId(error.ProblemCode(), error.ProblemType());
    reason.active = error.Active();
    // Of two records with one identifier the first is the one that owners write to.
    const auto record = std::find_if(m_records.begin(), m_records.end(),
                                     [&reason](const SErrorEntry& entry)
                                     { return ErrorId(entry.problemCode, entry.problemType) == reason.id; });
    if (record == m_records.end())
        return reason;
    reason.raised = WholeSeconds(record->raisedTime);
    reason.cleared = WholeSeconds(record->clearedTime);
    return reason;
}

SReason CReasons::Explained(const CError& error)
{
    SReason reason = Bare(error);
    reason.above = !m_told.insert(reason.id).second;
    if (reason.above)
        return reason;
    const std::vector<SSetState> states = SetStates(error);
    for (std::size_t i = 0; i < states.size(); ++i)
    {
        SSetReason set = {states[i], {}};
        for (const CError* const trigger : error.TriggerSets()[i].Triggers())
        {
            if (!reason.active)
                set.triggers.push_back(Bare(*trigger));
            else if (trigger->Active())
                set.triggers.push_back(Explained(*trigger));
        }
        reason.sets.push_back(set);
    }
    return reason;
}

} // namespace Faultkeeper::Apps
