#include "faultkeeperctl/simulation/SimulationText.h"

#include "faultkeeperctl/text/TreeText.h"

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kWidth = 100; // of no terminal: the text is compared

std::string Name(const ErrorId& id)
{
    return ErrorName(id.first, id.second);
}

const char* RequestName(const SScriptStep& step)
{
    return step.raise ? "raise" : "clear";
}

std::string ChangeText(const SSimulatedChange& change)
{
    return std::string(change.raised ? "  + " : "  - ") + Name(change.id) +
           (change.caused ? " follows " + Name(change.cause) + ": " + change.why : ", as told") + "\n";
}

std::string RestText(const SSimulatedRest& rest)
{
    return "  = " + Name(rest.id) + " stays " + (rest.active ? "active" : "inactive") + ": " + rest.why +
           "\n";
}

std::string StepText(const SSimulatedStep& played, int number)
{
    const SScriptStep& step = played.step;
    std::string text = "Step " + std::to_string(number) + ", line " + std::to_string(step.line) + ": " +
                       RequestName(step) + " " + Name(step.id) + "\n";
    if (played.changes.empty())
        text += "  = " + Name(step.id) + " is " + (step.raise ? "active" : "inactive") + " already\n";
    for (const SSimulatedChange& change : played.changes)
        text += ChangeText(change);
    for (const SSimulatedRest& rest : played.rests)
        text += RestText(rest);
    return text + "\n" + TreesText(played.trees, kWidth, ethCounters);
}

Json ChangeDocument(const SSimulatedChange& change)
{
    Json document = IdDocument(change.id.first, change.id.second);
    document["raised"] = change.raised;
    document["cause"] = change.caused ? IdDocument(change.cause.first, change.cause.second) : Json();
    document["why"] = change.caused ? Json(change.why) : Json();
    return document;
}

Json StepDocument(const SSimulatedStep& played)
{
    Json document = IdDocument(played.step.id.first, played.step.id.second);
    document["line"] = played.step.line;
    document["request"] = RequestName(played.step);
    document["changes"] = Json::array();
    for (const SSimulatedChange& change : played.changes)
        document["changes"].push_back(ChangeDocument(change));
    document["unchanged"] = Json::array();
    for (const SSimulatedRest& rest : played.rests)
    {
        Json unchanged = IdDocument(rest.id.first, rest.id.second);
        unchanged["active"] = rest.active;
        unchanged["why"] = rest.why;
        document["unchanged"].push_back(unchanged);
    }
    document["trees"] = Json::array();
    for (const SErrorTree& tree : played.trees)
        document["trees"].push_back(TreeDocument(tree));
    return document;
}
} // namespace

std::string SimulationText(const std::vector<SSimulatedStep>& steps)
{
    std::string text;
    int number = 0;
    for (const SSimulatedStep& step : steps)
        text += (text.empty() ? "" : "\n") + StepText(step, ++number);
    return text;
}

Json SimulationDocument(const std::vector<SSimulatedStep>& steps)
{
    Json document;
    document["steps"] = Json::array();
    for (const SSimulatedStep& step : steps)
        document["steps"].push_back(StepDocument(step));
    return document;
}

} // namespace Faultkeeper::Apps
