#include "faultkeeperctl/commands/Commands.h"

#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/json/Json.h"
#include "faultkeeperctl/past/PastTrees.h"
#include "faultkeeperctl/past/StorePast.h"
#include "faultkeeperctl/text/TextWidth.h"
#include "faultkeeperctl/text/TimeText.h"
#include "faultkeeperctl/text/TreeText.h"
#include "faultkeeperctl/typed/TypedTime.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <memory>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kDigits = 3;
// What a tree's history would be, if it were known.
constexpr const char* kUnknownKeys[] = {"clearedTime", "clearedSeconds", "counter1", "counter2"};

struct SAtArguments
{
    std::string time;
    std::string store; // "" for the usual one
};

std::string Name(const ErrorId& id)
{
    return ErrorName(id.first, id.second);
}

bool Defined(const CErrorDatabase& database, const ErrorId& id)
{
    return database.RetrieveError(id.first, id.second) != nullptr;
}

void Warn(const SPastState& state, const CErrorDatabase& database)
{
    for (const std::string& note : state.notes)
        std::fprintf(stderr, "faultkeeperctl: %s\n", note.c_str());
    for (const ErrorId& id : state.unknown)
        std::fprintf(stderr, "faultkeeperctl: %s may have been active: the journal does not tell\n",
                     Name(id).c_str());
    for (const SPastError& error : state.active)
    {
        if (!Defined(database, error.id))
            std::fprintf(stderr, "faultkeeperctl: %s was active, but this configuration does not define it\n",
                         Name(error.id).c_str());
    }
}

std::string StateText(std::int64_t time, const SPastState& state, const std::vector<SErrorTree>& trees)
{
    std::string text = "At " + ExactTimeText(Core::Time::FromNanoseconds(time), kDigits) + ":\n\n" +
                       TreesText(trees, OutputWidth(), ethNone);
    if (!state.active.empty())
        text += "\nActive errors\n";
    for (const SPastError& error : state.active)
        text += "    " + Name(error.id) +
                (error.raised == Core::Time() ? ", since before the journal begins"
                                              : " since " + ExactTimeText(error.raised, kDigits)) +
                "\n";
    return text;
}

Json TreesDocument(const std::vector<SErrorTree>& trees)
{
    Json documents = Json::array();
    for (const SErrorTree& tree : trees)
    {
        Json document = TreeDocument(tree);
        for (const char* const key : kUnknownKeys)
            document.erase(key);
        documents.push_back(document);
    }
    return documents;
}

Json StateDocument(std::int64_t time, const SPastState& state, const std::vector<SErrorTree>& trees,
                   const CErrorDatabase& database)
{
    const Core::Time at = Core::Time::FromNanoseconds(time);
    Json document;
    document["atTime"] = ExactTimeText(at, 9);
    document["atSeconds"] = WholeSeconds(at);
    document["complete"] = state.unknown.empty() && state.notes.empty();
    document["notes"] = state.notes;
    document["trees"] = TreesDocument(trees);
    document["active"] = Json::array();
    for (const SPastError& error : state.active)
    {
        Json active = IdDocument(error.id.first, error.id.second);
        SetTime(active, "raised", WholeSeconds(error.raised));
        active["defined"] = Defined(database, error.id);
        document["active"].push_back(active);
    }
    document["unknown"] = Json::array();
    for (const ErrorId& id : state.unknown)
        document["unknown"].push_back(IdDocument(id.first, id.second));
    return document;
}

EProgramStatus At(const SSettings& settings, const SAtArguments& arguments)
{
    const std::int64_t now = Core::Time::Now().Nanoseconds();
    const STypedTime time = TimeTyped(arguments.time, now);
    RequirePast(time, now);
    const std::int64_t moment = std::min(time.last, now);
    const SPast past = ReadPast(StorePath(settings, arguments.store));
    const std::unique_ptr<CErrorDatabase> database = LoadConfiguration(settings);
    SPastState state;
    std::string problem;
    if (!StateAt(past, moment, state, problem))
        throw CFailure(epsNo, problem);
    const std::vector<SErrorTree> trees = PastTrees(state, *database, settings.configuration);
    Warn(state, *database);
    if (settings.json)
        PrintDocument(StateDocument(moment, state, trees, *database));
    else
        std::cout << StateText(moment, state, trees);
    return epsDone;
}
} // namespace

void AddAt(CCommandLine& commandLine)
{
    const auto arguments = std::make_shared<SAtArguments>();
    CCommand command = commandLine.Add(
        "at", "Show the faults that were active at some moment",
        "Reads the owner's store, whether an owner runs or not, and goes back as far as its journal does. A\n"
        "TIME is one as it is printed, or less of it, and then lasts as long as its last digit: what\n"
        "happened within has happened. Or it is how long ago: 90s, 10m, 2h, 1d, 1h30m. What the journal\n"
        "cannot tell is told on standard error.\n"
        "Example: faultkeeperctl --config /etc/faultkeeper at \"2026-03-01T17:05\"",
        [arguments](const SSettings& settings) { return At(settings, *arguments); });
    command.Argument("TIME", arguments->time, "the moment");
    AddStateOption(command, arguments->store);
}

} // namespace Faultkeeper::Apps
