#include "unit/Common/models/ViewsModel.h"

#include "unit/Common/view/NumberedErrors.h"

#include <algorithm>
#include <cstring>

namespace Models
{

using Faultkeeper::SErrorEntry;
using Faultkeeper::SStatusTable;

namespace
{

constexpr const char* kBusy = "unable to obtain lock\n";
constexpr const char* kTooSmall = "CErrorDatabaseView::CErrorDatabaseView shmeget: Invalid argument\n";
constexpr std::size_t kTypeWordBytes = 4;

/// All of a time but its type word.
void SetTime(Core::Time& to, const Core::Time& from)
{
    std::memcpy(reinterpret_cast<char*>(&to) + kTypeWordBytes,
                reinterpret_cast<const char*>(&from) + kTypeWordBytes, sizeof to - kTypeWordBytes);
}

bool Changes(EOperation kind)
{
    return kind <= eoApply;
}

} // namespace

// ---- Who may do what

bool CViewsModel::Allowed(const SView& view, EOperation kind)
{
    if (view.failed)
        return false;
    switch (kind)
    {
    case eoRemember:
    case eoDeclareReady:
    case eoLoad:
        return view.Owns();
    case eoRestore:
        return view.Owns() && !view.ready;
    case eoInitialise:
    case eoReplay:
    case eoRetrieveDetails:
    case eoRetrieveIndex:
        return !view.Owns();
    default:
        return !Changes(kind) || (view.Owns() && view.ready);
    }
}

/// Of what is allowed.
bool CViewsModel::NeedsLock(const SView& view, EOperation kind)
{
    switch (kind)
    {
    case eoRetrieveAll:
        return view.Owns();
    case eoInitialise:
    case eoReplay:
    case eoRetrieveDetails:
    case eoRetrieveIndex:
        return false;
    default:
        return true;
    }
}

std::string CViewsModel::Refusal(SView& view, EOperation kind)
{
    switch (kind)
    {
    case eoSynchronise:
    case eoInitialise:
    case eoReplay:
        return Told(view, 0);
    case eoRetrieveAll:
        return Answer(std::vector<SErrorEntry>{UntouchedEntry()});
    case eoRetrieveDetails:
        return Answer(UntouchedEntry());
    case eoRetrieveIndex:
        return Answer(-1);
    case eoRetrieveAt:
        return Answer(-1, kUntouched, kUntouched);
    default:
        return Answer(false);
    }
}

// ---- What comes of it

CViewsModel::CViewsModel(const SStage& stage) : m_errors(stage.errors), m_views(stage.views.size())
{
    for (std::size_t number = 0; number < m_views.size(); ++number)
        m_views[number].type = stage.views[number];
}

std::string CViewsModel::Do(const SOperation& operation, const SMoment& moment)
{
    SView& view = m_views[static_cast<std::size_t>(operation.view)];
    if (operation.kind >= eoMakeOwner)
        return Replace(view, operation);
    if (!Allowed(view, operation.kind))
        return Refusal(view, operation.kind);
    if (operation.busy && NeedsLock(view, operation.kind))
        return Refusal(view, operation.kind) + kBusy;
    return Done(view, operation, moment);
}

/// A creating view of whichever kind zeroes the table; the owners before it know nothing of that.
std::string CViewsModel::Replace(SView& view, const SOperation& operation)
{
    view = SView();
    view.type = operation.kind == eoMakeReader ? Faultkeeper::eViewReader : Faultkeeper::eViewOwner;
    view.failed = operation.kind == eoMakeFailedOwner;
    if (view.failed)
        return kTooSmall;
    if (operation.flag)
    {
        *m_table = SStatusTable();
        ++m_creators;
    }
    return "";
}

std::string CViewsModel::Done(SView& view, const SOperation& operation, const SMoment& moment)
{
    switch (operation.kind)
    {
    case eoAskReady:
        return Answer(m_table->header.ready == 1);
    case eoSynchronise:
        return Synchronised(view);
    case eoInitialise:
        view.reader.Initialise();
        return Told(view, 0);
    case eoReplay:
        return Told(view, view.reader.Replay(operation.flag));
    case eoRetrieveAll:
    case eoRetrieveDetails:
    case eoRetrieveIndex:
    case eoRetrieveAt:
        return Retrieved(view, operation);
    default:
        if (Write(view, operation, moment))
            Count();
        return Answer(true);
    }
}

/// An owner only learns whether somebody has declared the table ready.
std::string CViewsModel::Synchronised(SView& view)
{
    if (!view.Owns())
        return Told(view, view.reader.Synchronise(*m_table));
    view.ready = m_table->header.ready == 1;
    return Told(view, 0);
}

std::string CViewsModel::Told(SView& view, int result)
{
    return Answer(result, view.reader.Calls(), view.reader.Active(), view.reader.Tops());
}

std::string CViewsModel::Retrieved(SView& view, const SOperation& operation)
{
    SStatusTable table = view.Owns() || operation.kind == eoRetrieveAt ? *m_table : view.reader.Mirror();
    const SErrorEntry* const record = Find(table, NumberedErrors::Id(operation.number));
    if (operation.kind == eoRetrieveDetails)
        return Answer(record != nullptr ? *record : UntouchedEntry());
    if (operation.kind == eoRetrieveIndex)
        return Answer(record != nullptr ? static_cast<int>(record - table.records) : -1);
    if (operation.kind == eoRetrieveAt)
    {
        if (operation.number < 0 || operation.number >= table.header.count)
            return Answer(-1, kUntouched, kUntouched);
        const SErrorEntry& found = table.records[operation.number];
        return Answer(1, found.problemCode, found.problemType);
    }
    std::vector<SErrorEntry> records{UntouchedEntry()};
    records.insert(records.end(), table.records, table.records + table.header.count);
    return Answer(records);
}

// ---- What owners write

/// @return whether anything has changed
bool CViewsModel::Write(SView& view, const SOperation& operation, const SMoment& moment)
{
    const EOperation kind = operation.kind;
    bool changed = false;
    switch (kind)
    {
    case eoRaise:
    case eoClear:
        return Change(NumberedErrors::Id(operation.number), kind == eoRaise, kind, moment);
    case eoRemember:
        return Remember(EntriesOf(operation.items, moment.seconds), moment.before);
    case eoRestore:
        return Restore(EntriesOf(operation.items, moment.seconds));
    case eoDeclareReady:
        view.ready = operation.flag;
        m_table->header.ready = operation.flag ? 1 : 0;
        return true;
    case eoLoad:
        Load(operation.flag);
        return true;
    default:
        for (const SItem& item : operation.items)
        {
            const bool raise = kind == eoApply ? item.raised : kind == eoRaiseSome;
            changed = Change(NumberedErrors::Id(item.error), raise, kind, moment) || changed;
        }
        return changed;
    }
}

/// What the model cannot know are the times: they are looked at and taken over.
bool CViewsModel::Change(const TErrorId& id, bool raise, EOperation kind, const SMoment& moment)
{
    SErrorEntry* const record = Find(*m_table, id);
    const SErrorEntry* const actual = Find(*moment.afterwards, id);
    if (record == nullptr || actual == nullptr || Raised(*record) == raise)
        return false;
    const Faultkeeper::SStatusHeader& header = moment.afterwards->header;
    if (raise)
    {
        CheckTimes(id, actual->raisedTime, header.lastRaiseTime, kind, moment);
        SetTime(record->raisedTime, actual->raisedTime);
        SetTime(m_table->header.lastRaiseTime, header.lastRaiseTime);
        ++record->counter1;
        ++record->counter2;
        record->flags = 1;
    }
    else
    {
        CheckTimes(id, actual->clearedTime, header.lastClearTime, kind, moment);
        SetTime(record->clearedTime, actual->clearedTime);
        SetTime(m_table->header.lastClearTime, header.lastClearTime);
        record->flags = 0;
    }
    return true;
}

/// One error's raise reads the clock once more for the record; otherwise one reading serves record and table.
/// Of several changes, each with readings of its own, the table has the last one's.
void CViewsModel::CheckTimes(const TErrorId& id, const Core::Time& record, const Core::Time& header,
                             EOperation kind, const SMoment& moment)
{
    const bool within =
        moment.before < record && record < moment.after && moment.before < header && header < moment.after;
    const bool agree = kind == eoApply || (kind == eoRaise ? header < record : header == record);
    if (!within)
        m_complaint += "a time of error " + std::to_string(id.second) + " is not that of its change\n";
    if (!agree)
        m_complaint += "the time of error " + std::to_string(id.second) + " does not go with the table's\n";
}

/// Both times become zero if one of them is still to come. They lie an hour and more from now.
bool CViewsModel::Remember(const std::vector<SErrorEntry>& entries, const Core::Time& now)
{
    bool changed = false;
    for (const SErrorEntry& entry : entries)
    {
        SErrorEntry* const record = Find(*m_table, {entry.problemCode, entry.problemType});
        if (record == nullptr)
            continue;
        const bool future = entry.raisedTime > now || entry.clearedTime > now;
        record->counter1 = entry.counter1;
        record->counter2 = entry.counter2;
        record->raisedTime = future ? Core::Time(0) : entry.raisedTime;
        record->clearedTime = future ? Core::Time(0) : entry.clearedTime;
        changed = true;
    }
    return changed;
}

bool CViewsModel::Restore(const std::vector<SErrorEntry>& entries)
{
    Faultkeeper::SStatusHeader& header = m_table->header;
    bool changed = false;
    for (const SErrorEntry& entry : entries)
    {
        SErrorEntry* const record = Find(*m_table, {entry.problemCode, entry.problemType});
        if (record == nullptr)
            continue;
        *record = entry;
        SetTime(header.lastRaiseTime, std::max(header.lastRaiseTime, entry.raisedTime));
        SetTime(header.lastClearTime, std::max(header.lastClearTime, entry.clearedTime));
        changed = true;
    }
    return changed;
}

/// Only identifiers are written: everything else in the records stays.
void CViewsModel::Load(bool shuffled)
{
    std::vector<int> numbers(std::begin(kShuffled), std::end(kShuffled));
    if (!shuffled)
    {
        numbers.clear();
        for (int number = 0; number < m_errors; ++number)
            numbers.push_back(number);
    }
    m_table->header.count = static_cast<std::int32_t>(numbers.size());
    SErrorEntry* record = m_table->records;
    for (const int number : numbers)
    {
        record->problemCode = NumberedErrors::Id(number).first;
        record->problemType = static_cast<std::int16_t>(NumberedErrors::Id(number).second);
        ++record;
    }
}

void CViewsModel::Count()
{
    std::uint32_t changes = 0;
    std::memcpy(&changes, &m_table->header.lastRaiseTime, sizeof changes);
    ++changes;
    std::memcpy(reinterpret_cast<char*>(&m_table->header.lastRaiseTime), &changes, sizeof changes);
}

} // namespace Models
