#include "campaign/parts/Verdict.h"

#include "common/owner/TableProbe.h"
#include "faultkeeperd/store/StateStore.h"

#include <cinttypes>
#include <cstdio>
#include <limits>

namespace Campaign
{

using namespace Faultkeeper;
using namespace Faultkeeper::Apps;

namespace
{
SStoreSettings At(const std::string& path)
{
    SStoreSettings settings;
    settings.path = path;
    settings.journalLimit = std::numeric_limits<std::uint32_t>::max();
    return settings;
}

bool Same(const SErrorEntry& record, const SErrorEntry& stored)
{
    return record.flags == stored.flags && record.counter1 == stored.counter1 &&
           record.counter2 == stored.counter2 && record.raisedTime == stored.raisedTime &&
           record.clearedTime == stored.clearedTime;
}

void JudgeError(const SStoredError& stored, std::uint64_t raises, bool raised, SVerdict& verdict)
{
    verdict.lost += stored.raises < raises ? raises - stored.raises : 0;
    verdict.twice += stored.raises > raises ? stored.raises - raises : 0;
    verdict.outOfOrder += (stored.entry.flags == kRaisedFlag) != raised ? 1 : 0;
    verdict.differing += stored.entry.counter1 != (stored.raises & 0xFFFFU) ? 1 : 0;
}
} // namespace

void SVerdict::Print() const
{
    std::printf("lost          %" PRIu64 "\n", lost);
    std::printf("counted twice %" PRIu64 "\n", twice);
    std::printf("out of order  %" PRIu64 "\n", outOfOrder);
    std::printf("differing     %" PRIu64 "\n", differing);
}

States StoredStates(const std::string& path)
{
    States states;
    for (const SStoredError& error : CStateStore(At(path)).Read().errors)
        states[ErrorId(error.entry.problemCode, error.entry.problemType)] = error;
    return states;
}

std::vector<STransition> StoredJournal(const std::string& path)
{
    return CStateStore(At(path)).Journal(0, std::numeric_limits<std::uint32_t>::max());
}

void JudgeReporter(int reporter, const States& states, const SAccounts& accounts, SVerdict& verdict)
{
    const SReporterAccount& account = accounts.reporters[reporter];
    const std::vector<ErrorId> errors = ErrorsOf(reporter);
    for (std::size_t i = 0; i < errors.size(); ++i)
    {
        const auto found = states.find(errors[i]);
        JudgeError(found != states.end() ? found->second : SStoredError(), account.raises[i],
                   account.raised[i], verdict);
    }
}

void JudgeCounts(const States& states, const SAccounts& accounts, SVerdict& verdict)
{
    for (int reporter = 0; reporter < kReporters; ++reporter)
        JudgeReporter(reporter, states, accounts, verdict);
}

void JudgeTable(const SStatusTable& table, const States& states, SVerdict& verdict)
{
    for (int i = 0; i < RecordCount(table); ++i)
    {
        const SErrorEntry& record = table.records[i];
        const auto found = states.find(ErrorId(record.problemCode, record.problemType));
        verdict.differing +=
            Same(record, found != states.end() ? found->second.entry : SErrorEntry()) ? 0 : 1;
    }
}

void JudgeJournal(const std::vector<STransition>& journal, SVerdict& verdict)
{
    std::map<ErrorId, bool> raised;
    std::uint64_t number = journal.empty() ? 0 : journal.front().number;
    for (const STransition& transition : journal)
    {
        const ErrorId id(transition.problemCode, transition.problemType);
        const auto before = raised.find(id);
        const bool same = before != raised.end() && before->second == transition.raised;
        verdict.outOfOrder += same || transition.number != number++ ? 1 : 0;
        raised[id] = transition.raised;
    }
}

SVerdict JudgeAll(CScene& scene, const SAccounts& accounts)
{
    SVerdict verdict;
    const States states = StoredStates(scene.StorePath());
    JudgeCounts(states, accounts, verdict);
    JudgeTable(scene.Table(), states, verdict);
    JudgeJournal(StoredJournal(scene.StorePath()), verdict);
    verdict.Print();
    return verdict;
}

} // namespace Campaign
