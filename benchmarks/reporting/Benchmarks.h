#pragma once

namespace Benchmarks
{

class CMeasuredOwner;

/// @param owner  borrowed by the benchmarks
void RegisterLatencies(CMeasuredOwner& owner);
void RegisterThroughput(CMeasuredOwner& owner);
/// With an owner that stores what it applies.
void RegisterStoredThroughput(CMeasuredOwner& owner);

} // namespace Benchmarks
