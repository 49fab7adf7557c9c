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

/// Whether trees are shown with the times of the last raise and clear.
enum ETreeTimes : int
{
    ettWithTimes,
    ettWithoutTimes
};

/// A tree as a technician reads it: a headline with number, title and severity, then labelled lines.
/// @param number  shown in front of the title
std::string TreeText(const SErrorTree& tree, int number, int width, ETreeTimes times = ettWithTimes);

/// All trees with an empty line between them, below a line that counts them.
std::string TreesText(const std::vector<SErrorTree>& trees, int width, ETreeTimes times = ettWithTimes);

} // namespace Faultkeeper::Apps

#endif
