#pragma once

namespace Fuzz
{

/// Ends the process, which makes a finding of the present input, unless `holds`.
/// @param what  what was expected
void Expect(bool holds, const char* what);

} // namespace Fuzz
