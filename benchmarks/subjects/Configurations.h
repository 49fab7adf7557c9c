#pragma once

#include "subjects/Shapes.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Benchmarks
{

/// Writes the configuration of such a hierarchy: twelve module files, texts as long as those of the example,
/// and a pattern for every family.
/// @param directory  with a slash at its end
void WriteConfiguration(const std::string& directory, EShape shape, std::size_t errors);

/// Directory of such a configuration, with a slash at its end; written when first asked for, removed when the
/// process ends.
const std::string& ConfigurationOf(EShape shape, std::size_t errors);

/// The files that loading a configuration reads, in order.
std::vector<std::string> FilesOf(const std::string& directory);

/// A loaded database of such a hierarchy, one for the process.
Faultkeeper::CErrorDatabase& DatabaseOf(EShape shape, std::size_t errors);

/// The configuration that is delivered as an example.
std::string ExampleConfiguration();

} // namespace Benchmarks
