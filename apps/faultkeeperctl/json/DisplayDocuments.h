#ifndef FAULTKEEPERCTL_DISPLAYDOCUMENTS_H
#define FAULTKEEPERCTL_DISPLAYDOCUMENTS_H

#include "faultkeeperctl/History.h"
#include "faultkeeperctl/json/Json.h"

#include <vector>

namespace Faultkeeper::Apps
{

class CDisplay;

/// What "list" and "watch" show: the table's state, the trees, and the raised errors that no tree can show.
Json PictureDocument(const CDisplay& display);
/// The same with these trees.
Json PictureDocument(const CDisplay& display, const std::vector<SErrorTree>& trees);

/// One object for each line of the history.
Json HistoryDocument(const std::vector<SHistoryEntry>& entries);

} // namespace Faultkeeper::Apps

#endif
