#include "faultkeeperctl/check/NearestErrors.h"

#include "common/text/NearestName.h"

namespace Faultkeeper::Apps
{

const std::string& CNearestErrors::To(const std::string& typed)
{
    const auto added = m_nearest.emplace(typed, "");
    if (added.second)
        added.first->second = NearestName(typed, m_names);
    return added.first->second;
}

} // namespace Faultkeeper::Apps
