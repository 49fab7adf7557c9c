#ifndef FAULTKEEPERCTL_GRAPH_HIERARCHYGRAPH_H
#define FAULTKEEPERCTL_GRAPH_HIERARCHYGRAPH_H

#include <string>

namespace Faultkeeper
{
class CErrorDatabase;
}

namespace Faultkeeper::Apps
{

/// How much a picture of the hierarchy shows.
struct SGraphStyle
{
    bool includeLeaves = false; ///< also errors that neither have triggers nor are one
    bool live = false;          ///< the present state: colours, and how many of each set are active
};

/// The hierarchy in the language of Graphviz: a box for each error in identifier order, and between a parent
/// and its triggers an ellipse for each set with the number that it needs. Sets that are not automatic are
/// dashed, shallow links dotted. Live, active errors have the colour of their severity, and satisfied sets
/// are filled.
std::string HierarchyGraph(const CErrorDatabase& database, const SGraphStyle& style);

} // namespace Faultkeeper::Apps

#endif
