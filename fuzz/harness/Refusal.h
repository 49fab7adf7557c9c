#pragma once

#include <functional>

namespace Fuzz
{

/// Runs `action`, in which loading may meet broken configuration. Where another program ends with the message
/// of the rule, loading is left by an exception here, so whatever it has made by then must be given back on
/// the way: leaks are findings as well. Any other assertion ends the process.
/// @return true if a rule was broken
bool Refused(const std::function<void()>& action);

} // namespace Fuzz
