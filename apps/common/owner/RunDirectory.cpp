#include "common/owner/RunDirectory.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace Faultkeeper::Apps
{

namespace
{
constexpr const char* kRunDirectory = "/run/faultkeeper";
constexpr const char* kConfiguration = "/etc/faultkeeper";

std::string FromEnvironment(const char* variable)
{
    const char* const value = std::getenv(variable);
    return value == nullptr ? "" : value;
}

// Only the system knows where ".." leads: behind a symbolic link it is not the directory before the link.
std::filesystem::path WithoutParentSteps(const std::filesystem::path& path)
{
    if (std::find(path.begin(), path.end(), "..") == path.end())
        return path.lexically_normal();
    std::error_code failed;
    const std::filesystem::path canonical = std::filesystem::canonical(path, failed);
    return failed ? path : canonical;
}
} // namespace

std::string DefaultRunDirectory()
{
    std::string chosen = FromEnvironment("FAULTKEEPER_RUN_DIR");
    if (!chosen.empty())
        return chosen;
    std::error_code ignored;
    return std::filesystem::is_directory(kRunDirectory, ignored) ? kRunDirectory : ".";
}

std::string DefaultConfiguration()
{
    const std::string chosen = FromEnvironment("FAULTKEEPER_CONFIG");
    return chosen.empty() ? kConfiguration : chosen;
}

std::string AbsolutePath(const std::string& path)
{
    std::error_code failed;
    const std::filesystem::path whole = std::filesystem::absolute(path.empty() ? "." : path, failed);
    if (failed)
        return path;
    const std::filesystem::path absolute = WithoutParentSteps(whole);
    // "a/b/" and "a/b/." name the same place as "a/b"
    return absolute.has_filename() || !absolute.has_relative_path() ? absolute.string()
                                                                    : absolute.parent_path().string();
}

std::string DirectoryPrefix(const std::string& path)
{
    const std::string absolute = AbsolutePath(path);
    return absolute.back() == '/' ? absolute : absolute + "/";
}

bool EnterDirectory(const std::string& path, std::string& problem)
{
    std::error_code failed;
    std::filesystem::current_path(path, failed);
    if (failed)
        problem = "cannot enter " + path + ": " + failed.message();
    return !failed;
}

} // namespace Faultkeeper::Apps
