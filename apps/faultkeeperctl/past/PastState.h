#ifndef FAULTKEEPERCTL_PAST_PASTSTATE_H
#define FAULTKEEPERCTL_PAST_PASTSTATE_H

#include "common/text/ErrorNames.h"
#include "store/StoreRecords.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

/// All that is known of the past: what an owner's store holds.
struct SPast
{
    std::vector<STransition> journal; ///< in the order of numbers
    std::vector<SStoredError> errors; ///< as they were after the journal's end
    std::int64_t now = 0;             ///< nanoseconds since 1970; likewise the next
    std::int64_t bootTime = 0;        ///< when the machine was started
    bool ofThisBoot = false;          ///< an owner has used the store since then
};

/// What lies between two transitions, or between the last one and now.
enum EBetween : int
{
    ebNothing, ///< the clocks agree: the machine ran on
    ebRestart, ///< the machine was started again, so that nothing was active for a moment
    ebDoubt    ///< the clock was set, or the machine started again
};

/// @param at  the transition before; the last one stands before now
EBetween WhatIsBetween(const SPast& past, std::size_t at);

/// An error that was active, and since when.
struct SPastError
{
    ErrorId id;
    Core::Time raised; ///< zero if that is not in the journal any more
};

/// What was active at some moment.
struct SPastState
{
    std::vector<SPastError> active; ///< in identifier order, likewise
    std::vector<ErrorId> unknown;   ///< of which nobody can tell
    std::vector<std::string> notes; ///< what else makes it doubtful, in words
};

/// Goes back in time as far as the journal does, and no further.
///
/// A transition tells what its error was before and after it, as long as the machine ran on; what was never
/// touched in that time is as it is now; after a restart nothing is active until it is raised anew.
/// @param time     nanoseconds since 1970; what happened then has happened
/// @param problem  replaced if the result is false: why nothing can be told
bool StateAt(const SPast& past, std::int64_t time, SPastState& state, std::string& problem);

} // namespace Faultkeeper::Apps

#endif
