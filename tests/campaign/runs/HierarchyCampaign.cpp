#include "campaign/parts/Verdict.h"
#include "campaign/runs/Campaigns.h"
#include "campaign/runs/OwnerCampaign.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDbChanged.h>

#include <cinttypes>
#include <cstdio>

namespace Campaign
{

using namespace Faultkeeper;
using namespace Faultkeeper::Apps;
using Support::CConfigurationBuilder;

namespace
{
constexpr int kParents = 12; // of reported errors; more would make the journal long
constexpr const char* kNoLimit = "100000000";

/// Each parent lies over errors of two reporters, and one over all parents. They come first, so that the
/// table has room for them; some of the reported errors are only in the store.
CConfigurationBuilder ErrorsWithParents()
{
    CConfigurationBuilder builder;
    std::vector<std::string> parents;
    for (int parent = 0; parent < kParents; ++parent)
    {
        const ErrorId one = ErrorsOf(parent % kReporters).at(static_cast<std::size_t>(parent));
        const ErrorId other = ErrorsOf((parent + 1) % kReporters).at(static_cast<std::size_t>(parent));
        parents.push_back(ErrorName(0xA2100 + 1 + parent, 2));
        builder.Parent(parents.back(),
                       {ErrorName(one.first, one.second), ErrorName(other.first, other.second)},
                       1 + parent % 2);
    }
    builder.Parent(ErrorName(0xA2100 + 1 + kParents, 3), parents, 3);
    AddReportedErrors(builder);
    return builder;
}

/// Applies what was reported, in the order of the journal, and looks whether the same follows.
class CModel : private CErrorDbChanged
{
public:
    explicit CModel(const std::string& configuration) : m_database(configuration)
    {
        m_database.SetCallback(this);
    }

    /// @return transitions that should not be there, or should
    std::uint64_t Compare(const std::vector<STransition>& journal)
    {
        std::size_t position = 0;
        while (position < journal.size())
        {
            m_changes.clear();
            const STransition& reported = journal[position];
            if (reported.raised)
                m_database.RaiseError(reported.problemCode, reported.problemType, false);
            else
                m_database.ClearError(reported.problemCode, reported.problemType, false);
            Match(journal, position);
        }
        return m_wrong;
    }

    std::uint64_t Raises(const ErrorId& id) { return m_raises[id]; }
    bool Active(const ErrorId& id) const { return m_database.RetrieveError(id.first, id.second)->Active(); }

private:
    struct SChange
    {
        ErrorId id;
        bool raised;
    };

    void ErrorRaised(int code, int type) override
    {
        ++m_raises[ErrorId(code, type)];
        m_changes.push_back({ErrorId(code, type), true});
    }
    void ErrorCleared(int code, int type) override { m_changes.push_back({ErrorId(code, type), false}); }

    /// Steps over the changes that follow from one report.
    void Match(const std::vector<STransition>& journal, std::size_t& position)
    {
        m_wrong += m_changes.empty() || journal[position].caused ? 1 : 0;
        for (std::size_t i = 0; i < m_changes.size() && position < journal.size(); ++i, ++position)
        {
            const STransition& transition = journal[position];
            const bool same = ErrorId(transition.problemCode, transition.problemType) == m_changes[i].id &&
                              transition.raised == m_changes[i].raised && transition.caused == (i > 0);
            m_wrong += same ? 0 : 1;
        }
        position += m_changes.empty() ? 1 : 0;
    }

    CErrorDatabase m_database;
    std::vector<SChange> m_changes;
    std::map<ErrorId, std::uint64_t> m_raises;
    std::uint64_t m_wrong = 0;
};

void JudgeModel(CModel& model, const States& states, SVerdict& verdict)
{
    for (const auto& state : states)
    {
        const std::uint64_t raises = model.Raises(state.first);
        verdict.lost += state.second.raises < raises ? raises - state.second.raises : 0;
        verdict.twice += state.second.raises > raises ? state.second.raises - raises : 0;
        verdict.outOfOrder += (state.second.entry.flags == kRaisedFlag) != model.Active(state.first) ? 1 : 0;
    }
}
} // namespace

bool RunHierarchy(int rounds, unsigned seed)
{
    CScene scene(ErrorsWithParents());
    CSharedAccounts accounts;
    const auto begin = std::chrono::steady_clock::now();
    CReporters reporters(seed, accounts);
    bool good = KillOwners(scene, rounds, seed, {"--journal-limit", kNoLimit});
    good = reporters.Finish() && good;
    good = scene.EndOwner() && good;

    SVerdict verdict;
    const States states = StoredStates(scene.StorePath());
    const std::vector<STransition> journal = StoredJournal(scene.StorePath());
    CModel model(scene.ConfigurationPrefix());
    verdict.outOfOrder += model.Compare(journal);
    JudgeModel(model, states, verdict);
    JudgeCounts(states, *accounts, verdict);
    JudgeTable(scene.Table(), states, verdict);
    JudgeJournal(journal, verdict);
    good = PrintRun("owner", rounds, seed, begin, *accounts) && good;
    std::printf("transitions   %zu, compared with a model of %d parents\n", journal.size(), kParents + 1);
    verdict.Print();
    return good && verdict.Good();
}

} // namespace Campaign
