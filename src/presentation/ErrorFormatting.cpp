#include <Faultkeeper/ErrorPresentation.h>

#include "Common/ErrorName.h"
#include "Common/ErrorPath.h"
#include "presentation/ErrorTreeParts.h"
#include "presentation/TextKeys.h"

#include <Faultkeeper/Error.h>

#include <algorithm>
#include <iostream>

namespace Faultkeeper
{

namespace
{
// A record tells neither flags nor severity, so those stay unset.
SErrorTree HistoryTree(const SErrorEntry& entry)
{
    const std::string name = ErrorName(entry.problemCode, entry.problemType);
    SErrorTree tree;
    tree.problemCode = entry.problemCode;
    tree.problemType = entry.problemType;
    tree.title = name + kTitleKey;
    tree.shortTitle = name + kShortProblemKey;
    tree.problems.push_back(name + kProblemKey);
    tree.solutions.push_back(name + kSolutionKey);
    SetStatus(entry, tree);
    return tree;
}

void PrintActiveTriggers(const std::string& prefix, const CError& error, CErrorPath& path)
{
    const CErrorPathStep step(path, error);
    for (const CTriggerSet& triggerSet : error.TriggerSets())
    {
        for (const CError* trigger : triggerSet.Triggers())
        {
            if (!trigger->Active())
                continue;
            std::cout << prefix + ErrorName(*trigger) + "\n";
            // In front, so that the mark stays next to the name.
            if (!path.Holds(*trigger))
                PrintActiveTriggers("  " + prefix, *trigger, path);
        }
    }
}
} // namespace

bool CErrorPresentation::ErrorTreeSorter(const SErrorTree& left, const SErrorTree& right)
{
    return left.raisedTime > right.raisedTime;
}

void CErrorPresentation::FormatErrorList(const std::vector<SErrorEntry>& entries,
                                         std::vector<SErrorTree>& trees)
{
    for (const SErrorEntry& entry : entries)
        if (entry.counter2 != 0)
            trees.push_back(HistoryTree(entry));
    std::sort(trees.begin(), trees.end(), ErrorTreeSorter);
}

void CErrorPresentation::PrintErrorTree(const std::list<const CError*>& errors)
{
    std::cout << "Active top level errors\n";
    for (const CError* error : errors)
    {
        std::cout << "+" + ErrorName(*error) + "\n";
        PrintErrorChildren("  +", error);
    }
    std::cout.flush();
}

void CErrorPresentation::PrintErrorChildren(const std::string& prefix, const CError* error)
{
    CErrorPath path;
    PrintActiveTriggers(prefix, *error, path);
    std::cout.flush();
}

} // namespace Faultkeeper
