#pragma once

#include "campaign/parts/Scene.h"

#include <chrono>
#include <string>
#include <vector>

namespace Campaign
{

/// Starts owners and kills them at random moments, their own start included; leaves one that is ready.
/// @return false if one ended by itself or did not get ready
bool KillOwners(CScene& scene, int rounds, unsigned seed, const std::vector<std::string>& arguments);

/// Tells how much there was of it.
/// @return false if nothing was reported, which is told: then there is nothing to judge
bool PrintRun(const char* what, int rounds, unsigned seed, std::chrono::steady_clock::time_point begin,
              const SAccounts& accounts);

} // namespace Campaign
