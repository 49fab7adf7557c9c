#include "faultkeeperctl/commands/Commands.h"

#include "common/text/TypedText.h"
#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/Display.h"
#include "faultkeeperctl/keys/PhoneKey.h"
#include "faultkeeperctl/keys/TypedKey.h"
#include "faultkeeperctl/reasons/ReasonText.h"
#include "faultkeeperctl/typed/ConfiguredErrors.h"

#include <iostream>
#include <memory>
#include <vector>

namespace Faultkeeper::Apps
{

namespace
{
// One that holds other characters than a key in either form is taken for a name with a slip in it.
bool IsKey(const std::string& typed)
{
    const std::string bare = BareKey(typed);
    return bare.find_first_not_of(LooksLikePhoneKey(typed) ? "GHJKLMNPQRSTVWXYZ" : "0123456789ABCDEF") ==
           std::string::npos;
}

std::vector<ErrorId> ErrorsOf(const std::string& key, CDisplay& display)
{
    std::vector<ErrorId> errors = display.ErrorsOfKey(key);
    if (errors.empty())
        throw CFailure(epsNo, "the key " + QuotedTyped(key) + " names no error of the owner's table");
    return errors;
}

ErrorId CheckedId(const std::string& typed, const CErrorDatabase& database)
{
    ErrorId id;
    std::string problem;
    if (ParseConfiguredId(typed, database, id, problem))
        return id;
    if (typed.find(':') == std::string::npos)
        problem = QuotedTyped(typed) +
                  " is neither an error, such as \"Positioning:GPS:No Data:2\", nor a state key";
    std::string ignored;
    throw CFailure(ParseErrorId(typed, id, ignored) ? epsNo : epsUsage, problem);
}

void Print(const SSettings& settings, const std::string& key, const std::vector<SReason>& reasons)
{
    if (settings.json)
    {
        Json document;
        document["key"] = key.empty() ? Json() : Json(key);
        document["errors"] = Json::array();
        for (const SReason& reason : reasons)
            document["errors"].push_back(ReasonDocument(reason));
        PrintDocument(document);
        return;
    }
    for (const SReason& reason : reasons)
        std::cout << ReasonText(reason);
}

EProgramStatus Why(const SSettings& settings, const std::vector<std::string>& words)
{
    const std::string typed = JoinedWords(words);
    const std::string key = IsKey(typed) ? KeyFromTyped(words) : "";
    CDisplay display(settings);
    const ErrorId id = key.empty() ? CheckedId(typed, display.Database()) : ErrorId();
    display.RequirePicture();
    const std::vector<ErrorId> errors = key.empty() ? std::vector<ErrorId>{id} : ErrorsOf(key, display);
    CReasons reasons(display.Database(), display.Records());
    std::vector<SReason> told;
    for (const ErrorId& error : errors)
    {
        if (!reasons.Told(error))
            told.push_back(reasons.ReasonOf(error));
    }
    Print(settings, key, told);
    return epsDone;
}
} // namespace

void AddWhy(CCommandLine& commandLine)
{
    const auto what = std::make_shared<std::vector<std::string>>();
    CCommand command = commandLine.Add(
        "why", "Tell why an error is active, or what it takes for it to become so",
        "For an active error: through which of its trigger sets, how many of how many triggers are active,\n"
        "since when, and so on down to what was reported. For another one: what each set lacks. A state key\n"
        "stands for all errors of its tree, as they are now.\n"
        "Example: faultkeeperctl --config /etc/faultkeeper why \"Positioning:Position:Position "
        "Calculation:11\"",
        [what](const SSettings& settings) { return Why(settings, *what); });
    command.Words("ID|KEY", *what, true, "the error, or the key of a tree in either form");
}

} // namespace Faultkeeper::Apps
