#include "faultkeeperctl/typed/ConfiguredErrors.h"

#include <Faultkeeper/ErrorDatabase.h>

namespace Faultkeeper::Apps
{

bool ParseConfiguredId(const std::string& typed, const CErrorDatabase& database, ErrorId& id,
                       std::string& problem)
{
    ErrorId found;
    std::string wrong;
    if (!ParseErrorId(typed, found, wrong))
    {
        problem = wrong + NearestHint(typed, wrong, database);
        return false;
    }
    if (database.RetrieveError(found.first, found.second) == nullptr)
    {
        problem = "the configuration" + NotDefined(typed, found, database);
        return false;
    }
    id = found;
    return true;
}

std::string NotDefined(const std::string& typed, const ErrorId& id, const CErrorDatabase& database)
{
    const std::string nearest = NearestConfigured(typed, database);
    return " defines no error \"" + ErrorName(id.first, id.second) + "\"" +
           (nearest.empty() ? "" : "; the nearest is \"" + nearest + "\"");
}

std::string NearestHint(const std::string& typed, const std::string& problem, const CErrorDatabase& database)
{
    const std::string nearest = NearestConfigured(typed, database);
    const bool told = nearest.empty() || problem.find("\"" + nearest + "\"") != std::string::npos;
    return told ? "" : "; the nearest configured error is \"" + nearest + "\"";
}

} // namespace Faultkeeper::Apps
