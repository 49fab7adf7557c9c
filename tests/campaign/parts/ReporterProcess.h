#pragma once

#include "campaign/parts/Account.h"

namespace Campaign
{

/// How a reporter goes about it.
enum EReporterHabit : int
{
    erhFullSpeed, ///< raises and clears at random without a pause
    erhNowAndThen,
    erhOnce, ///< raises everything once, and from then on only lets its client do its work
};

/// The habit that a reporter of a campaign has: most are at full speed.
EReporterHabit HabitOf(int reporter);

/// The life of a reporting process: reports its own errors until it is over, then waits until the owner has
/// acknowledged everything.
/// @return exit status: 0 if it has
int LiveAsReporter(int reporter, unsigned seed, SAccounts& accounts);

} // namespace Campaign
