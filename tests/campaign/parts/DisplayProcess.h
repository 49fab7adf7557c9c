#pragma once

#include "system/ChildProcess.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace Campaign
{

/// Displays that copy the table, or hold its lock, until they are ended.
///
/// @param configuration  with a slash at its end
/// @param pause          between two copies
std::unique_ptr<Support::CChildProcess>
StartCopier(const std::string& configuration, std::chrono::milliseconds pause = std::chrono::milliseconds(0));

/// So many of them.
std::vector<std::unique_ptr<Support::CChildProcess>>
StartCopiers(int count, const std::string& configuration,
             std::chrono::milliseconds pause = std::chrono::milliseconds(0));

/// @return false if one of them has ended by itself, which is told
bool AllRun(const std::vector<std::unique_ptr<Support::CChildProcess>>& displays);

/// A process that takes the lock again and again and keeps it for a moment each time.
std::unique_ptr<Support::CChildProcess> StartHolder();

} // namespace Campaign
