#ifndef FAULTKEEPERCTL_SIMULATION_SIMULATION_H
#define FAULTKEEPERCTL_SIMULATION_SIMULATION_H

#include "faultkeeperctl/PrivateTable.h"
#include "faultkeeperctl/simulation/Script.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorOverlay.h>
#include <Faultkeeper/ErrorTree.h>

#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

/// One error that a step has raised or cleared.
struct SSimulatedChange
{
    ErrorId id;
    bool raised = true;
    bool caused = false; ///< it followed; otherwise it is the one that the step is about
    ErrorId cause;       ///< the trigger that it followed, if caused
    std::string why;     ///< its sets when it followed, if caused
};

/// A parent that has not followed, although one of its triggers has changed.
struct SSimulatedRest
{
    ErrorId id;
    bool active = false; ///< what it is and stays
    std::string why;
};

/// What a step has done. Nothing in it depends on the time.
struct SSimulatedStep
{
    SScriptStep step;
    std::vector<SSimulatedChange> changes; ///< in the order of events; none if the error was in that state
    std::vector<SSimulatedRest> rests;
    std::vector<SErrorTree> trees; ///< all that are active afterwards, without times
};

/// An owner and a display in this process, with a table that nobody else sees: what would happen if errors
/// were reported.
class CSimulation
{
public:
    /// @param database       borrowed; nothing in it is active
    /// @param configuration  directory of the patterns, with a slash at its end
    /// @throws CFailure if there can be no table
    CSimulation(CErrorDatabase& database, const std::string& configuration);

    SSimulatedStep Play(const SScriptStep& step);

private:
    void Publish(const std::vector<SSimulatedChange>& changes);

    CErrorDatabase& m_database;
    CErrorOverlay m_overlay;
    CPrivateTable m_table;
};

} // namespace Faultkeeper::Apps

#endif
