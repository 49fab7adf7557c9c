#pragma once

/// Each runs one campaign and tells its figures on standard output.
/// @param rounds  how often something is killed
/// @return true if nothing was found wrong
namespace Campaign
{

/// Owners are killed at random moments while reporters report.
bool RunOwners(int rounds, unsigned seed);

/// The same with errors that follow from others; all that happened is compared with a model.
bool RunHierarchy(int rounds, unsigned seed);

} // namespace Campaign
