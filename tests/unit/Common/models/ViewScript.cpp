#include "unit/Common/models/ViewScript.h"

#include "support/Shrinking.h"

#include <algorithm>
#include <iterator>
#include <numeric>

namespace Models
{

namespace
{

using Faultkeeper::eViewOwner;
using Faultkeeper::eViewReader;
using Faultkeeper::EViewType;

/// What the number of an operation stands for.
enum ENumber
{
    enNone,
    enError,
    enPosition
};

struct SKind
{
    const char* name;
    int weight; ///< how often it is done
    ENumber number;
    const char* set;   ///< what the flag means
    const char* unset; ///< what it means without
};

// In the order of EOperation.
const SKind kKinds[] = {{"raises", 5, enError, "", ""},
                        {"clears", 3, enError, "", ""},
                        {"raises some", 5, enNone, "", ""},
                        {"clears some", 5, enNone, "", ""},
                        {"applies", 5, enNone, "", ""},
                        {"remembers", 4, enNone, "", ""},
                        {"restores", 2, enNone, "", ""},
                        {"declares the table", 5, enNone, " ready", " not ready"},
                        {"loads", 3, enNone, " some errors in another order", " all errors"},
                        {"asks whether the table is ready", 4, enNone, "", ""},
                        {"synchronises", 25, enNone, "", ""},
                        {"initialises", 1, enNone, "", ""},
                        {"replays", 2, enNone, " all", " what is new"},
                        {"retrieves all", 6, enNone, "", ""},
                        {"retrieves the details of", 6, enError, "", ""},
                        {"retrieves the index of", 6, enError, "", ""},
                        {"retrieves the error at", 6, enPosition, "", ""},
                        {"is replaced by an owner", 1, enNone, " who creates the table", ""},
                        {"is replaced by a reader", 1, enNone, " who creates the table", ""},
                        {"is replaced by an owner whose table is too small", 1, enNone, "", ""}};
static_assert(sizeof kKinds / sizeof *kKinds == eoOperations, "one for each operation");

bool Lists(EOperation kind)
{
    return kind >= eoRaiseSome && kind <= eoRestore;
}

bool Replaces(EOperation kind)
{
    return kind >= eoMakeOwner;
}

std::string Shown(const SItem& item, EOperation kind)
{
    std::string error = (item.raised ? " +" : " -") + std::to_string(item.error);
    if (kind == eoApply)
        return error;
    if (kind != eoRemember && kind != eoRestore)
        return " " + std::to_string(item.error);
    return error + "(" + std::to_string(item.counter1) + "/" + std::to_string(item.counter2) + ", raised " +
           std::to_string(item.raisedHours) + " h, cleared " + std::to_string(item.clearedHours) +
           " h from now)";
}

} // namespace

std::string Shown(const SOperation& operation)
{
    const SKind& kind = kKinds[operation.kind];
    std::string text = "view " + std::to_string(operation.view) + " " + kind.name;
    if (kind.number == enError)
        text += " error " + std::to_string(operation.number);
    if (kind.number == enPosition)
        text += " " + std::to_string(operation.number);
    text += operation.flag ? kind.set : kind.unset;
    for (const SItem& item : operation.items)
        text += Shown(item, operation.kind);
    return text + (operation.busy ? " while the lock is busy\n" : "\n");
}

std::string Shown(const TScript& script)
{
    std::string text;
    for (const SOperation& operation : script)
        text += Shown(operation);
    return text;
}

std::vector<TScript> SmallerScripts(const TScript& whole)
{
    constexpr std::size_t kFew = 32;
    std::vector<TScript> smaller = Support::Shortened(whole);
    for (std::size_t number = 0; number < whole.size() && whole.size() <= kFew; ++number)
    {
        for (const std::vector<SItem>& items : Support::Shortened(whole[number].items))
        {
            smaller.push_back(whole);
            smaller.back()[number].items = items;
        }
        if (whole[number].busy)
        {
            smaller.push_back(whole);
            smaller.back()[number].busy = false;
        }
    }
    return smaller;
}

// ---- Making scripts

EOperation CScriptMaker::AnyKind()
{
    const int all = std::accumulate(std::begin(kKinds), std::end(kKinds), 0,
                                    [](int sum, const SKind& kind) { return sum + kind.weight; });
    int rest = Below(all);
    int kind = 0;
    for (; rest >= kKinds[kind].weight; ++kind)
        rest -= kKinds[kind].weight;
    return static_cast<EOperation>(kind);
}

/// One that began as a view of that type.
int CScriptMaker::AnyViewOf(EViewType type)
{
    std::vector<int> numbers;
    for (std::size_t number = 0; number < m_stage.views.size(); ++number)
        if (m_stage.views[number] == type)
            numbers.push_back(static_cast<int>(number));
    return numbers[static_cast<std::size_t>(Below(static_cast<int>(numbers.size())))];
}

/// Mostly one that is allowed to.
int CScriptMaker::AnyView(EOperation kind)
{
    if (Replaces(kind))
        return Below(m_stage.restless);
    if ((kind > eoLoad && kind != eoSynchronise) || Below(8) == 0)
        return Below(static_cast<int>(m_stage.views.size()));
    return AnyViewOf(kind == eoSynchronise ? eViewReader : eViewOwner);
}

/// Times lie an odd number of hours from now, so that it makes no odds how long the test runs.
SItem CScriptMaker::AnyItem()
{
    SItem item;
    item.error = Below(m_stage.errors + 1);
    item.raised = Below(2) == 0;
    item.counter1 = static_cast<std::uint16_t>(65532 + Below(4));
    item.counter2 = static_cast<std::uint16_t>(Below(3));
    item.raisedHours = 2 * Below(4) - 5;
    item.clearedHours = 2 * Below(4) - 5;
    return item;
}

SOperation CScriptMaker::Any()
{
    SOperation operation;
    do
        operation.kind = AnyKind();
    while (Replaces(operation.kind) && m_stage.restless == 0);
    operation.view = AnyView(operation.kind);
    operation.busy = Once(m_stage.busyEach) && !Replaces(operation.kind);
    operation.number = Below(m_stage.errors + 1);
    if (operation.kind == eoRetrieveAt && Below(4) == 0)
    {
        const int outside[] = {-1, -2, 399, 400, 100000};
        operation.number = outside[Below(5)];
    }
    operation.flag = Below(3) == (operation.kind == eoLoad ? 0 : 1);
    if (operation.kind == eoDeclareReady)
        operation.flag = Below(4) != 0;
    if (Lists(operation.kind))
        std::generate_n(std::back_inserter(operation.items), Below(7), [this] { return AnyItem(); });
    return operation;
}

TScript CScriptMaker::Made(int operations, const TScript& beginning)
{
    TScript script(beginning);
    std::generate_n(std::back_inserter(script), operations, [this] { return Any(); });
    return script;
}

} // namespace Models
