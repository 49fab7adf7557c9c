#pragma once

/// Each runs one campaign and tells its figures on standard output.
/// @param rounds  how often something happens; see each
/// @return true if nothing was found wrong
namespace Campaign
{

/// Owners are killed at random moments while reporters report.
bool RunOwners(int rounds, unsigned seed);

/// The same with errors that follow from others; all that happened is compared with a model.
bool RunHierarchy(int rounds, unsigned seed);

/// Displays are killed and stopped at random moments, some of them while they hold the table's lock.
bool RunReaders(int rounds, unsigned seed);

/// Every other reporter is killed and stopped at random moments.
bool RunReporters(int rounds, unsigned seed);

/// One reporter raises and clears so often while displays copy without a pause.
bool RunTight(int rounds, unsigned seed);

/// Strangers send so many frames of garbage, lengths of 1 GiB and nothing at all, while a reporter's raise
/// has to be seen.
bool RunGarbage(int rounds, unsigned seed);

/// Ten thousand transitions a second for so many seconds, with eight displays that look ten times a second.
bool RunLoad(int rounds, unsigned seed);

} // namespace Campaign
