#include "unit/Common/models/ViewsTrial.h"

#include "support/CapturedOutput.h"
#include "unit/Common/view/NumberedErrors.h"

#include <sys/sem.h>
#include <sys/shm.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <fstream>
#include <stdexcept>

namespace Models
{

using Faultkeeper::SErrorChange;
using Faultkeeper::SErrorEntry;

namespace
{

/// Some of the errors in another order, one of them twice.
std::string WrittenShuffled(const std::string& prefix)
{
    Support::CConfigurationBuilder builder;
    for (const int number : kShuffled)
        builder.Leaf(NumberedErrors::Name(number));
    builder.WriteTo(prefix);
    return prefix;
}

/// Views leave the table attached, and a process can attach only so many: without this a script could not be
/// tried some thousand times to find the shortest.
void DetachTables()
{
    std::vector<void*> addresses;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        if (line.find("/SYSV") != std::string::npos)
            addresses.push_back(reinterpret_cast<void*>(std::stoul(line, nullptr, 16)));
    for (void* const address : addresses)
        shmdt(address);
}

std::vector<SErrorChange> ChangesOf(const std::vector<SItem>& items)
{
    std::vector<SErrorChange> changes;
    for (const SItem& item : items)
    {
        const TErrorId id = NumberedErrors::Id(item.error);
        changes.push_back({id.first, id.second, item.raised});
    }
    return changes;
}

} // namespace

CViewsTrial::CViewsTrial(SStage stage)
    : m_stage(std::move(stage)), m_all(NumberedErrors::Written(m_directory.Prefix(), m_stage.errors)),
      m_shuffled(WrittenShuffled(m_shuffledDirectory.Prefix()))
{
}

CViewsTrial::~CViewsTrial()
{
    End();
}

void CViewsTrial::Begin()
{
    End();
    m_answers.clear();
    m_model = std::make_unique<CViewsModel>(m_stage);
    for (const Faultkeeper::EViewType type : m_stage.views)
        m_views.push_back(std::make_unique<SView>(m_directory.Prefix(), m_views.empty(), type));
}

void CViewsTrial::End()
{
    m_views.clear();
    m_directory.RemoveTable();
    DetachTables();
}

Faultkeeper::SStatusTable* CViewsTrial::Table()
{
    return reinterpret_cast<Faultkeeper::SStatusTable*>(m_directory.Table());
}

std::string CViewsTrial::Difference(const TScript& script)
{
    Begin();
    for (const SOperation& operation : script)
    {
        const std::string difference = Step(operation);
        if (!difference.empty())
            return "when " + Shown(operation) + difference;
    }
    return "";
}

std::string CViewsTrial::Step(const SOperation& operation)
{
    SMoment moment;
    moment.seconds = std::time(nullptr);
    moment.before = Core::Time::Now();
    const std::string is =
        operation.busy ? DoWhileBusy(operation, moment.seconds) : Do(operation, moment.seconds);
    moment.after = Core::Time::Now();
    moment.afterwards = Table();
    m_answers.push_back(is);
    const std::string expected = m_model->Do(operation, moment);
    if (is != expected)
        return "the answer is\n" + is + "and not\n" + expected;
    if (!m_model->Complaint().empty())
        return m_model->Complaint();
    if (m_directory.SemaphoreValue() != m_model->Semaphore())
        return "the semaphore is " + std::to_string(m_directory.SemaphoreValue()) + " and not " +
               std::to_string(m_model->Semaphore()) + "\n";
    return TableDifference();
}

std::string CViewsTrial::TableDifference()
{
    const auto* const expected = reinterpret_cast<const std::uint8_t*>(&m_model->Table());
    if (std::memcmp(expected, m_directory.Table(), Faultkeeper::kStatusTableBytes) == 0)
        return "";
    const std::uint8_t* const end = expected + Faultkeeper::kStatusTableBytes;
    const std::uint8_t* const differs = std::mismatch(expected, end, m_directory.Table()).first;
    const std::ptrdiff_t byte = differs - expected;
    return "byte " + std::to_string(byte) + " of the table is " + std::to_string(m_directory.Table()[byte]) +
           " and not " + std::to_string(*differs) + "\n";
}

// ---- The lock

/// Somebody else has the lock: nobody gives it back, and what is printed belongs to the answer.
std::string CViewsTrial::DoWhileBusy(const SOperation& operation, std::int64_t seconds)
{
    const int value = m_directory.SemaphoreValue();
    std::string answer;
    SetSemaphore(0);
    const std::string warning = Support::WarnedBy([&] { answer = Do(operation, seconds); });
    if (m_directory.SemaphoreValue() != 0)
        answer += "and the lock was given back\n";
    SetSemaphore(value);
    return answer + warning;
}

void CViewsTrial::SetSemaphore(int value) const
{
    union
    {
        int val;
        semid_ds* buf;
    } argument = {value}; // passed as the union that the call takes: some machines pass those by address
    if (semctl(m_directory.Semaphore(), 0, SETVAL, argument) != 0)
        throw std::runtime_error("cannot set the semaphore");
}

// ---- Operations

std::string CViewsTrial::Do(const SOperation& operation, std::int64_t seconds)
{
    SView& view = *m_views[static_cast<std::size_t>(operation.view)];
    switch (operation.kind)
    {
    case eoMakeOwner:
    case eoMakeReader:
    case eoMakeFailedOwner:
        return Replace(operation);
    case eoAskReady:
        return Answer(view.view.FaultkeeperReady());
    case eoSynchronise:
        return Told(view, view.view.Synchronise(view.database));
    case eoInitialise:
        view.view.Initialise();
        return Told(view, 0);
    case eoReplay:
        return Told(view, view.view.UpdateErrorStatus(view.database, operation.flag));
    case eoRetrieveAll:
    case eoRetrieveDetails:
    case eoRetrieveIndex:
    case eoRetrieveAt:
        return Retrieved(view, operation);
    default:
        return Answer(Write(view, operation, seconds));
    }
}

std::string CViewsTrial::Told(SView& view, int result)
{
    std::set<TErrorId> active;
    for (const Faultkeeper::CError& error : view.database.GetErrorList())
        if (error.Active())
            active.insert({error.ProblemCode(), error.ProblemType()});
    return Answer(result, view.listener.Text(), active, view.database.ActiveErrors(false).size());
}

std::string CViewsTrial::Retrieved(SView& view, const SOperation& operation)
{
    int code = kUntouched;
    int type = kUntouched;
    if (operation.kind == eoRetrieveAt)
    {
        const int result = view.view.RetrieveErrorFromIndex(operation.number, code, type);
        return Answer(result, code, type);
    }
    const TErrorId id = NumberedErrors::Id(operation.number);
    if (operation.kind == eoRetrieveIndex)
        return Answer(view.view.RetrieveErrorIndex(id.first, id.second));
    std::vector<SErrorEntry> records{UntouchedEntry()};
    if (operation.kind == eoRetrieveDetails)
        view.view.RetrieveErrorDetails(id.first, id.second, records.front());
    else
        view.view.RetrieveAllErrors(records);
    return Answer(records);
}

bool CViewsTrial::Write(SView& view, const SOperation& operation, std::int64_t seconds) const
{
    const TErrorId id = NumberedErrors::Id(operation.number);
    switch (operation.kind)
    {
    case eoRaise:
        return view.view.RaiseError(id.first, id.second);
    case eoClear:
        return view.view.ClearError(id.first, id.second);
    case eoRaiseSome:
        return view.view.RaiseErrors(IdsOf(operation.items));
    case eoClearSome:
        return view.view.ClearErrors(IdsOf(operation.items));
    case eoApply:
        return view.view.ApplyChanges(ChangesOf(operation.items));
    case eoRemember:
        return view.view.UpdateErrorDetails(EntriesOf(operation.items, seconds));
    case eoRestore:
        return view.view.RestoreErrors(EntriesOf(operation.items, seconds));
    case eoDeclareReady:
        return view.view.FaultkeeperReady(operation.flag);
    case eoLoad:
        return view.view.LoadErrors(operation.flag ? m_shuffled : m_all);
    default:
        throw std::logic_error("not written: " + Shown(operation));
    }
}

std::unique_ptr<CViewsTrial::SView> CViewsTrial::Made(const SOperation& operation) const
{
    return std::make_unique<SView>(m_directory.Prefix(), operation.flag,
                                   operation.kind == eoMakeReader ? Faultkeeper::eViewReader
                                                                  : Faultkeeper::eViewOwner);
}

/// @return what is printed
std::string CViewsTrial::Replace(const SOperation& operation)
{
    std::unique_ptr<SView>& view = m_views[static_cast<std::size_t>(operation.view)];
    if (operation.kind != eoMakeFailedOwner)
    {
        view = Made(operation);
        return "";
    }
    const Support::CSharedTableDirectory elsewhere;
    if (shmget(elsewhere.Key(), 16, IPC_CREAT | 0600) == -1)
        throw std::runtime_error("cannot make a small segment");
    return Support::WarnedBy([&] { view = Made(operation); });
}

} // namespace Models
