#pragma once

#include <functional>
#include <string>

namespace Support
{

/// Everything that `action` writes to standard output, by whatever means.
std::string PrintedBy(const std::function<void()>& action);

/// Everything that `action` writes to standard error.
std::string WarnedBy(const std::function<void()>& action);

} // namespace Support
