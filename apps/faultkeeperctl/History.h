#ifndef FAULTKEEPERCTL_HISTORY_H
#define FAULTKEEPERCTL_HISTORY_H

#include <Faultkeeper/ErrorEntry.h>
#include <Faultkeeper/ErrorTree.h>

#include <string>
#include <vector>

namespace Faultkeeper
{
class CErrorDatabase;
}

namespace Faultkeeper::Apps
{

/// One line of the history: an error, its last raise and clear, and what the configuration says of it.
struct SHistoryEntry
{
    SErrorTree tree;     ///< times, counters and identifier; its texts are keys
    std::string name;    ///< "Positioning:GPS:No Data:2"
    bool raised = false; ///< is it raised now?
    bool known = false;  ///< does the configuration define it? Otherwise the texts below are empty.
    std::string title;
    std::string problem;
    std::string solution;
};

/// The errors of the table that were ever raised, newest raise first; of those raised at the same moment the
/// one that comes first by identifier.
std::vector<SHistoryEntry> History(const std::vector<SErrorEntry>& records, const CErrorDatabase& database);

} // namespace Faultkeeper::Apps

#endif
