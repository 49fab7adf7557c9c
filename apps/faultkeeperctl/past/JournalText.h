#ifndef FAULTKEEPERCTL_PAST_JOURNALTEXT_H
#define FAULTKEEPERCTL_PAST_JOURNALTEXT_H

#include "faultkeeperctl/json/Json.h"
#include "store/StoreRecords.h"

#include <string>

namespace Faultkeeper::Apps
{

/// A line for a transition: when, what, and who reported it, what it followed, or why the owner did it by
/// itself.
/// @param before  the one before it in the listing, or null; a machine that was started again in between has
///                a line of its own
std::string TransitionText(const STransition& transition, const STransition* before);

/// The same as an object.
Json TransitionDocument(const STransition& transition);

} // namespace Faultkeeper::Apps

#endif
