#pragma once

#include <functional>
#include <string>

namespace Benchmarks
{

/// Waits until a condition holds, asleep most of the time, so that others have the processor.
/// @param what  what is waited for
/// @throws std::runtime_error if it does not hold within half a minute
void WaitPatiently(const std::string& what, const std::function<bool()>& condition);

} // namespace Benchmarks
