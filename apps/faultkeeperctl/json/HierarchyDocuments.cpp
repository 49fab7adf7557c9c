#include "faultkeeperctl/json/HierarchyDocuments.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/Identifiers.h>

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace Faultkeeper::Apps
{

namespace
{
// From the top down to the error being written: where an error would contain itself the document goes no
// deeper.
typedef std::vector<const CError*> Path;

bool Contains(const Path& path, const CError* error)
{
    return std::find(path.begin(), path.end(), error) != path.end();
}

// The errors that identifiers lead to, in identifier order.
std::vector<const CError*> Indexed(const CErrorDatabase& database)
{
    std::map<std::pair<int, int>, const CError*> index;
    for (const CError& error : database.GetErrorList())
        index[{error.ProblemCode(), error.ProblemType()}] =
            database.RetrieveError(error.ProblemCode(), error.ProblemType());
    std::vector<const CError*> errors;
    errors.reserve(index.size());
    for (const auto& entry : index)
        errors.push_back(entry.second);
    return errors;
}

const char* LinkingMode(EErrorLinkingMode mode)
{
    switch (mode)
    {
    case eelmVerbose:
        return "verbose";
    case eelmShallow:
        return "shallow";
    case eelmChildOnly:
        return "childOnly";
    case eelmDeep:
        break;
    }
    return "deep";
}

Json SetsDocument(const CError& error, Path& path);

Json ErrorDocument(const CError& error, Path& path)
{
    Json document = IdDocument(error.ProblemCode(), error.ProblemType());
    document["position"] = error.Position();
    document["problem"] = error.ProblemText();
    document["visible"] = error.Visible();
    document["triggerSets"] = SetsDocument(error, path);
    return document;
}

Json SetsDocument(const CError& error, Path& path)
{
    Json sets = Json::array();
    if (Contains(path, &error))
        return sets;
    path.push_back(&error);
    for (const CTriggerSet& set : error.TriggerSets())
    {
        Json document;
        document["autoTrigger"] = set.AutoTrigger();
        document["triggersRequired"] = set.TriggersRequired();
        document["linkingMode"] = LinkingMode(set.LinkingMode());
        document["titleSource"] = set.TitleSource() == eetsTrigger ? "trigger" : "parent";
        document["triggers"] = Json::array();
        for (const CError* const trigger : set.Triggers())
            document["triggers"].push_back(ErrorDocument(*trigger, path));
        sets.push_back(std::move(document));
    }
    path.pop_back();
    return sets;
}

Json ActiveDocument(const CError& error, Path& path)
{
    Json document = IdDocument(error.ProblemCode(), error.ProblemType());
    document["triggers"] = Json::array();
    if (Contains(path, &error))
        return document;
    path.push_back(&error);
    for (const CTriggerSet& set : error.TriggerSets())
    {
        for (const CError* const trigger : set.Triggers())
        {
            if (trigger->Active())
                document["triggers"].push_back(ActiveDocument(*trigger, path));
        }
    }
    path.pop_back();
    return document;
}
} // namespace

Json TreeListing(const CErrorDatabase& database)
{
    Json errors = Json::array();
    for (const CError* const error : Indexed(database))
    {
        Json document = IdDocument(error->ProblemCode(), error->ProblemType());
        document["module"] = TranslateModuleId(error->ModuleId());
        document["subModule"] = TranslateSubModuleId(error->SubModuleId());
        document["problem"] = TranslateProblemId(error->ProblemId());
        document["failureMode"] = TranslateProblemType(error->ProblemType());
        errors.push_back(std::move(document));
    }
    return errors;
}

Json HierarchyListing(const CErrorDatabase& database, bool includeLeaves)
{
    Json errors = Json::array();
    Path path;
    for (const CError* const error : Indexed(database))
    {
        if (error->Parents().empty() && (includeLeaves || !error->TriggerSets().empty()))
            errors.push_back(ErrorDocument(*error, path));
    }
    return errors;
}

Json ActiveListing(const std::list<const CError*>& tops)
{
    Json errors = Json::array();
    Path path;
    for (const CError* const error : tops)
        errors.push_back(ActiveDocument(*error, path));
    return errors;
}

} // namespace Faultkeeper::Apps
