#include "faultkeeperctl/past/PastTrees.h"

#include "faultkeeperctl/PrivateTable.h"
#include "faultkeeperctl/Settings.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorOverlay.h>
#include <Faultkeeper/ErrorPresentation.h>

namespace Faultkeeper::Apps
{

std::vector<SErrorTree> PastTrees(const SPastState& state, CErrorDatabase& database,
                                  const std::string& configuration)
{
    std::vector<SErrorEntry> records;
    for (const SPastError& error : state.active)
    {
        SErrorEntry record;
        record.problemCode = error.id.first;
        record.problemType = static_cast<std::int16_t>(error.id.second);
        record.flags = kRaisedFlag;
        record.raisedTime = error.raised;
        records.push_back(record);
        database.RaiseError(error.id.first, error.id.second, true); // also one that the table has no room for
    }
    database.UpdateErrorTree();
    const CErrorOverlay overlay(configuration);
    CPrivateTable table(database);
    if (!table.View().RestoreErrors(records) || !table.View().FaultkeeperReady(true))
        throw CFailure(epsNo, "cannot use a private table");
    table.Reader().Synchronise(database);
    std::vector<SErrorTree> trees;
    CErrorPresentation::GetErrorTree(table.Reader(), overlay, database.ActiveErrors(false), trees, false);
    return trees;
}

} // namespace Faultkeeper::Apps
