#include "faultkeeperctl/simulation/Simulation.h"

#include "faultkeeperctl/Settings.h"
#include "faultkeeperctl/reasons/SetStates.h"
#include "store/TransitionCauses.h"

#include <Faultkeeper/ErrorDbChanged.h>
#include <Faultkeeper/ErrorPresentation.h>

#include <set>

namespace Faultkeeper::Apps
{

namespace
{
ErrorId IdOf(const CError& error)
{
    return ErrorId(error.ProblemCode(), error.ProblemType());
}

/// Writes down what follows from a request, while it happens: later the sets may stand otherwise.
class CChangeRecorder : public CErrorDbChanged
{
public:
    explicit CChangeRecorder(CErrorDatabase& database) : m_database(database), m_causes(database)
    {
        m_database.SetCallback(this);
    }
    ~CChangeRecorder() override { m_database.SetCallback(nullptr); }
    CChangeRecorder(const CChangeRecorder&) = delete;
    CChangeRecorder& operator=(const CChangeRecorder&) = delete;

    void ErrorRaised(int problemCode, int problemType) override { Note(problemCode, problemType, true); }
    void ErrorCleared(int problemCode, int problemType) override { Note(problemCode, problemType, false); }

    const std::vector<SSimulatedChange>& Changes() const { return m_changes; }

private:
    void Note(int problemCode, int problemType, bool raised)
    {
        SSimulatedChange change;
        change.id = ErrorId(problemCode, problemType);
        change.raised = raised;
        const CError* const cause = m_causes.CauseOf(problemCode, problemType, raised);
        const CError* const error = m_database.RetrieveError(problemCode, problemType);
        change.caused = cause != nullptr && error != nullptr;
        if (change.caused)
        {
            change.cause = IdOf(*cause);
            change.why = WhyFollowed(*error, *cause);
        }
        m_changes.push_back(change);
    }

    CErrorDatabase& m_database;
    CTransitionCauses m_causes;
    std::vector<SSimulatedChange> m_changes;
};

// Parents that were left as they were, in the order in which they were asked.
std::vector<SSimulatedRest> RestsOf(const std::vector<SSimulatedChange>& changes,
                                    const CErrorDatabase& database)
{
    std::set<ErrorId> told;
    for (const SSimulatedChange& change : changes)
        told.insert(change.id);
    std::vector<SSimulatedRest> rests;
    for (const SSimulatedChange& change : changes)
    {
        const CError& trigger = *database.RetrieveError(change.id.first, change.id.second);
        for (const CError* const parent : trigger.Parents())
        {
            if (parent->Active() != change.raised && told.insert(IdOf(*parent)).second)
                rests.push_back({IdOf(*parent), parent->Active(), WhyNotFollowed(*parent, trigger)});
        }
    }
    return rests;
}
} // namespace

CSimulation::CSimulation(CErrorDatabase& database, const std::string& configuration)
    : m_database(database), m_overlay(configuration), m_table(database)
{
    if (!m_table.View().FaultkeeperReady(true))
        throw CFailure(epsNo, "cannot use a private table");
    m_table.Reader().Synchronise(m_database);
}

SSimulatedStep CSimulation::Play(const SScriptStep& step)
{
    SSimulatedStep played;
    played.step = step;
    {
        const CChangeRecorder recorder(m_database);
        if (step.raise)
            m_database.RaiseError(step.id.first, step.id.second, false);
        else
            m_database.ClearError(step.id.first, step.id.second, false);
        played.changes = recorder.Changes();
    }
    played.rests = RestsOf(played.changes, m_database);
    Publish(played.changes);
    CErrorPresentation::GetErrorTree(m_table.Reader(), m_overlay, m_database.ActiveErrors(false),
                                     played.trees, false);
    for (SErrorTree& tree : played.trees)
        tree.raisedTime = tree.clearedTime = 0;
    return played;
}

void CSimulation::Publish(const std::vector<SSimulatedChange>& changes)
{
    std::vector<SErrorChange> published;
    published.reserve(changes.size());
    for (const SSimulatedChange& change : changes)
        published.push_back({change.id.first, change.id.second, change.raised});
    if (!m_table.View().ApplyChanges(published))
        throw CFailure(epsNo, "cannot use a private table");
    m_table.Reader().Synchronise(m_database);
    m_database.UpdateErrorTree(); // also for errors that the table has no room for
}

} // namespace Faultkeeper::Apps
