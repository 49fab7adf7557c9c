#include "common/RunDirectory.h"

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
    const std::filesystem::path absolute =
        std::filesystem::absolute(path.empty() ? "." : path, failed).lexically_normal();
    if (failed)
        return path;
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
