#include "faultkeeperctl/History.h"

#include "common/text/ErrorNames.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorPresentation.h>

#include <algorithm>
#include <map>

namespace Faultkeeper::Apps
{

namespace
{
typedef std::map<ErrorId, const SErrorEntry*> RecordIndex;

RecordIndex Indexed(const std::vector<SErrorEntry>& records)
{
    RecordIndex index;
    for (const SErrorEntry& record : records)
        index.emplace(ErrorId(record.problemCode, record.problemType), &record);
    return index;
}

ErrorId IdOf(const SErrorTree& tree)
{
    return ErrorId(tree.problemCode, tree.problemType);
}

// Trees know seconds only; records know which of two errors of one second was the later.
void SortNewestFirst(std::vector<SErrorTree>& trees, const RecordIndex& index)
{
    std::sort(trees.begin(), trees.end(),
              [&index](const SErrorTree& left, const SErrorTree& right)
              {
                  if (left.raisedTime != right.raisedTime)
                      return CErrorPresentation::ErrorTreeSorter(left, right);
                  const Core::Time& leftTime = index.at(IdOf(left))->raisedTime;
                  const Core::Time& rightTime = index.at(IdOf(right))->raisedTime;
                  return leftTime != rightTime ? leftTime > rightTime : IdOf(left) < IdOf(right);
              });
}

SHistoryEntry MakeEntry(const SErrorTree& tree, const SErrorEntry& record, const CErrorDatabase& database)
{
    SHistoryEntry entry;
    entry.tree = tree;
    entry.name = ErrorName(tree.problemCode, tree.problemType);
    entry.raised = (record.flags & kRaisedFlag) != 0;
    const CError* const error = database.RetrieveError(tree.problemCode, tree.problemType);
    entry.known = error != nullptr;
    if (error != nullptr)
    {
        entry.title = error->TitleText();
        entry.problem = error->ProblemText();
        entry.solution = error->SolutionText();
    }
    return entry;
}
} // namespace

std::vector<SHistoryEntry> History(const std::vector<SErrorEntry>& records, const CErrorDatabase& database)
{
    std::vector<SErrorTree> trees;
    CErrorPresentation::FormatErrorList(records, trees);
    const RecordIndex index = Indexed(records);
    SortNewestFirst(trees, index);
    std::vector<SHistoryEntry> entries;
    entries.reserve(trees.size());
    for (const SErrorTree& tree : trees)
        entries.push_back(MakeEntry(tree, *index.at(IdOf(tree)), database));
    return entries;
}

} // namespace Faultkeeper::Apps
