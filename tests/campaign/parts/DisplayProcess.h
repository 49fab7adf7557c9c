#pragma once

#include "system/ChildProcess.h"

#include <memory>
#include <string>

namespace Campaign
{

/// Displays that copy the table without a pause, or hold its lock, until they are ended.
///
/// @param configuration  with a slash at its end
std::unique_ptr<Support::CChildProcess> StartCopier(const std::string& configuration);

/// A process that takes the lock again and again and keeps it for a moment each time.
std::unique_ptr<Support::CChildProcess> StartHolder();

} // namespace Campaign
