#include "faultkeeperctl/TemporaryName.h"

#include <filesystem>
#include <system_error>

namespace Faultkeeper::Apps
{

std::string TemporaryNamePattern()
{
    std::error_code failed;
    const std::filesystem::path set = std::filesystem::temp_directory_path(failed);
    const std::filesystem::path base = failed ? std::filesystem::path("/tmp") : set;
    return (base / "faultkeeperctl-").string() + std::string(6, 'X'); // as those calls want it
}

} // namespace Faultkeeper::Apps
