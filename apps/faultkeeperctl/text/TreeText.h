#ifndef FAULTKEEPERCTL_TREETEXT_H
#define FAULTKEEPERCTL_TREETEXT_H

#include <string>
#include <vector>

namespace Faultkeeper
{
struct SErrorTree;
}

namespace Faultkeeper::Apps
{

/// What the console does when it shows the tree: "full screen", "beeps" ...; "not shown on the screens" first
/// if so.
std::vector<std::string> TreeFlags(const SErrorTree& tree);

/// How much of the past is shown with a tree.
enum ETreeHistory : int
{
    ethAll,      ///< times of the last raise and clear, and counters
    ethCounters, ///< counters only
    ethNone
};

/// A tree as a technician reads it: a headline with number, title and severity, then labelled lines.
/// @param number    shown in front of the title
/// @param coloured  with escapes for a terminal
std::string TreeText(const SErrorTree& tree, int number, int width, ETreeHistory history = ethAll,
                     bool coloured = false);

/// All trees with an empty line between them, below a line that counts them.
std::string TreesText(const std::vector<SErrorTree>& trees, int width, ETreeHistory history = ethAll,
                      bool coloured = false);

} // namespace Faultkeeper::Apps

#endif
