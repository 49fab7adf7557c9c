#pragma once

namespace Benchmarks
{

void RegisterReading(); ///< a display following the table
void RegisterOwning();  ///< an owner writing it

} // namespace Benchmarks
