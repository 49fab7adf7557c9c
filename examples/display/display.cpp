// A display process: prints the headlines of the active faults, and again whenever something changes, until
// it is ended. It is started in the run directory of the owner; the argument is the configuration's
// directory.

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/ErrorOverlay.h>
#include <Faultkeeper/ErrorPresentation.h>

#include <algorithm>
#include <cstdio>
#include <set>
#include <string>
#include <utility>
#include <vector>

using namespace Faultkeeper;

namespace
{

constexpr int kTurnMilliseconds = 1000;

/// Makes the local database what the table says. A view replays the changes that it notices; an owner that
/// was exchanged meanwhile may have left others.
void Correct(CErrorDatabase& database, CErrorDatabaseView& view)
{
    std::vector<SErrorEntry> records;
    view.RetrieveAllErrors(records);
    std::set<std::pair<int, int>> raised;
    for (const SErrorEntry& record : records)
    {
        if ((record.flags & kRaisedFlag) != 0)
            raised.emplace(record.problemCode, record.problemType);
    }
    bool corrected = false;
    for (const CError& error : database.GetErrorList())
    {
        const std::pair<int, int> id(error.ProblemCode(), error.ProblemType());
        const bool active = database.RetrieveError(id.first, id.second)->Active();
        if (active && raised.count(id) == 0)
            database.ClearError(id.first, id.second, true);
        else if (!active && raised.count(id) != 0)
            database.RaiseError(id.first, id.second, true);
        else
            continue;
        corrected = true;
    }
    if (corrected)
        database.SynchronisationComplete();
}

/// The headlines of what drivers are to see, newest first.
std::string Picture(const CErrorDatabase& database, const CErrorDatabaseView& view,
                    const CErrorOverlay& overlay)
{
    std::vector<SErrorTree> trees;
    CErrorPresentation::GetErrorTree(view, overlay, database.ActiveErrors(false), trees, false);
    std::sort(trees.begin(), trees.end(), CErrorPresentation::ErrorTreeSorter);
    std::string picture = "---\n";
    for (const SErrorTree& tree : trees)
    {
        if (tree.visible)
            picture += tree.title + " (" + tree.friendlyCode + ")\n";
    }
    return picture;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    const std::string configuration = argumentCount > 1 ? std::string(arguments[1]) + "/" : "";
    CErrorDatabase database(configuration);
    const CErrorOverlay overlay(configuration);
    if (!database.Loaded())
        return 1;
    CErrorDatabaseView view(false, eViewReader);
    std::string shown;
    while (!view.Failed())
    {
        view.Synchronise(database);
        Correct(database, view);
        const std::string picture = Picture(database, view, overlay);
        if (picture != shown)
            std::printf("%s", picture.c_str());
        std::fflush(stdout);
        shown = picture;
        while (!view.Failed() && !view.WaitForChange(kTurnMilliseconds))
            continue;
    }
    return 1;
}
