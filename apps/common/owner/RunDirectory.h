#ifndef FAULTKEEPER_APPS_RUNDIRECTORY_H
#define FAULTKEEPER_APPS_RUNDIRECTORY_H

#include <string>

namespace Faultkeeper::Apps
{

/// Where owner and displays meet if nothing else is said: $FAULTKEEPER_RUN_DIR, then /run/faultkeeper if
/// there is one, then the current directory ("."). The table is keyed from this directory.
std::string DefaultRunDirectory();

/// Where configurations are if nothing else is said: $FAULTKEEPER_CONFIG, then /etc/faultkeeper.
std::string DefaultConfiguration();

/// The path as it is from the root directory, so that it stays right after the working directory has changed.
/// It names the place that the system finds by the path as given, symbolic links and ".." included.
std::string AbsolutePath(const std::string& path);

/// The same with a slash at its end, as the loaders want a directory.
std::string DirectoryPrefix(const std::string& path);

/// Makes a directory the working directory.
/// @param problem  replaced if the result is false
bool EnterDirectory(const std::string& path, std::string& problem);

} // namespace Faultkeeper::Apps

#endif
