#include "harness/DatabaseUse.h"

#include "harness/Expectation.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDbChanged.h>
#include <Faultkeeper/ErrorPresentation.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace Fuzz
{

using namespace Faultkeeper;

namespace
{
constexpr int kMostShown = 500; // errors in the unfolded hierarchy

/// Counts the errors that are active by what it is told.
class CListener : public CErrorDbChanged
{
public:
    void ErrorRaised(int, int) override { ++m_active; }
    void ErrorCleared(int, int) override { --m_active; }
    int Active() const { return m_active; }

private:
    int m_active = 0;
};

bool Holds(const std::vector<const CError*>& errors, const CError* error)
{
    return std::find(errors.begin(), errors.end(), error) != errors.end();
}

/// Takes one from `left` for every line that a listing would have below the error. Below an error that
/// contains itself a listing does not go on.
void CountShown(const CError& error, std::vector<const CError*>& path, int& left)
{
    path.push_back(&error);
    for (const CTriggerSet& set : error.TriggerSets())
    {
        for (const CError* trigger : set.Triggers())
        {
            if (--left < 0)
                break;
            if (!Holds(path, trigger))
                CountShown(*trigger, path, left);
        }
    }
    path.pop_back();
}

bool CanBeShown(const CErrorDatabase& database)
{
    int left = kMostShown;
    for (const CError& error : database.GetErrorList())
    {
        std::vector<const CError*> path;
        CountShown(error, path, left);
    }
    return left >= 0;
}

int CountActive(const CErrorDatabase& database)
{
    int active = 0;
    for (const CError& error : database.GetErrorList())
        active += error.Active() ? 1 : 0;
    return active;
}

void RequestAll(CErrorDatabase& database, bool raised, bool silent)
{
    for (const CError& error : database.GetErrorList())
    {
        if (raised)
            database.RaiseError(error.ProblemCode(), error.ProblemType(), silent);
        else
            database.ClearError(error.ProblemCode(), error.ProblemType(), silent);
        const CError* const target = database.RetrieveError(error.ProblemCode(), error.ProblemType());
        Expect(target != nullptr, "every listed error is found by its identifier");
        Expect(target->ProblemCode() == error.ProblemCode() && target->ProblemType() == error.ProblemType(),
               "the error that is found has the identifier");
        Expect(target->Active() == raised && target->Changed(), "a request takes effect and leaves its mark");
    }
}

void CheckTops(const std::list<const CError*>& tops, bool active)
{
    std::vector<const CError*> seen;
    for (const CError* top : tops)
    {
        Expect(top->Active() == active, "the tops of a list are in the state of the list");
        Expect(!Holds(seen, top), "an error is on top of one group only");
        seen.push_back(top);
    }
}

void CheckLists(CErrorDatabase& database)
{
    database.UpdateErrorTree();
    for (const bool changedOnly : {false, true})
    {
        CheckTops(database.ActiveErrors(changedOnly), true);
        CheckTops(database.InactiveErrors(changedOnly), false);
    }
}

/// A tree rebuilt from the activity of another one has an error for each that contributed there.
void RebuildTree(const CError& top, const std::vector<std::string>& activity)
{
    std::string bits;
    for (const std::string& piece : activity)
        bits += piece;
    SErrorTree tree;
    std::vector<std::string> lines;
    std::vector<std::pair<int, int>> codes;
    CErrorPresentation::RegenerateErrorTree(&top, bits, tree, lines, false, codes, "+-");
    Expect(bits.empty(), "a rebuilt tree uses all activity");
    Expect(lines.size() <= codes.size(), "a rebuilt tree shows no more than what contributes to it");
}

void BuildTrees(const CErrorDatabase& database)
{
    for (const CError* top : database.ActiveErrors(false))
    {
        for (const bool useTextKeys : {false, true})
        {
            SErrorTree tree;
            std::vector<std::string> activity;
            std::vector<std::pair<int, int>> codes;
            CErrorPresentation::BuildErrorTree(top, tree, activity, false, useTextKeys, codes);
            RebuildTree(*top, activity);
        }
    }
    CErrorPresentation::PrintErrorTree(database.ActiveErrors(false));
}
} // namespace

void UseDatabase(CErrorDatabase& database)
{
    const bool canBeShown = CanBeShown(database);
    CListener listener;
    database.SetCallback(&listener);
    CheckLists(database);
    RequestAll(database, true, false);
    Expect(listener.Active() == CountActive(database), "a listener hears of each change");
    CheckLists(database);
    if (canBeShown)
        BuildTrees(database);
    RequestAll(database, false, false);
    Expect(listener.Active() == CountActive(database), "a listener hears of each change");
    RequestAll(database, true, true);
    CheckLists(database);
    RequestAll(database, false, true);
    CheckLists(database);
    database.SetCallback(nullptr);
    database.PrintTree();
    if (canBeShown)
        database.PrintHierarchy(true);
}

} // namespace Fuzz
