#include "faultkeeperctl/commands/Commands.h"

#include "common/owner/RunDirectory.h"
#include "common/owner/TableProbe.h"
#include "common/text/ErrorNames.h"
#include "common/text/TypedText.h"
#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/PrivateTable.h"
#include "faultkeeperctl/json/Json.h"
#include "faultkeeperctl/keys/TypedKey.h"
#include "faultkeeperctl/text/TextTable.h"
#include "faultkeeperctl/text/TextWidth.h"
#include "faultkeeperctl/text/TreeText.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorPresentation.h>
#include <Faultkeeper/Identifiers.h>

#include <iostream>
#include <memory>
#include <vector>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kLockAttempts = 20;

/// A key taken apart.
struct SDecoded
{
    SErrorTree tree;
    std::vector<std::string> lines;
    std::vector<ErrorId> codes; // one for each line, except below the last errors of a key without padding
    bool fromOwner = false;     // positions taken from the owner's table, otherwise from the configuration
};

void Regenerate(const std::string& key, const CErrorDatabase& database, CErrorDatabaseView& view,
                SDecoded& decoded)
{
    CErrorPresentation::RegenerateErrorTree(key, database, view, decoded.tree, decoded.lines, decoded.codes,
                                            false);
}

// The segment of an owner that is ready, or -1.
int OwnersSegment(const SSettings& settings)
{
    std::string ignored;
    if (!EnterDirectory(settings.runDirectory, ignored))
        return -1;
    const STableFacts facts = ProbeTable();
    return facts.state == etsReady ? facts.segment : -1;
}

void DecodeWithOwner(const std::string& key, const CErrorDatabase& database, int segment, SDecoded& decoded)
{
    CErrorDatabaseView view(false, eViewReader);
    decoded.fromOwner = true;
    for (int attempt = 0; attempt < kLockAttempts && decoded.lines.empty(); ++attempt)
    {
        if (ProbeTable({segment}).state == etsReady) // waits for a lock that is busy
            Regenerate(key, database, view, decoded);
    }
}

// Without an owner the positions are those that the owner would publish with this configuration.
SDecoded DecodeKey(const SSettings& settings, const std::string& key)
{
    SDecoded decoded;
    const std::unique_ptr<CErrorDatabase> database = LoadConfiguration(settings);
    const int segment = OwnersSegment(settings);
    if (segment != -1)
        DecodeWithOwner(key, *database, segment, decoded);
    else
    {
        CPrivateTable table(*database);
        Regenerate(key, *database, table.View(), decoded);
    }
    if (decoded.lines.empty())
        throw CFailure(epsNo, "the key " + QuotedTyped(key) + " names no error of the configuration in " +
                                  settings.configuration);
    return decoded;
}

Json DecodedDocument(const std::string& key, const SDecoded& decoded)
{
    Json document;
    document["key"] = key;
    document["positions"] = decoded.fromOwner ? "owner" : "configuration";
    document["lines"] = decoded.lines;
    document["errors"] = Json::array();
    for (const ErrorId& id : decoded.codes)
        document["errors"].push_back(IdDocument(id.first, id.second));
    document["title"] = decoded.tree.title;
    document["shortTitle"] = decoded.tree.shortTitle;
    document["severity"] = TranslateSeverity(static_cast<EErrorSeverity>(decoded.tree.severity));
    document["problems"] = decoded.tree.problems;
    document["solutions"] = decoded.tree.solutions;
    return document;
}

std::string DecodedText(const std::string& key, const SDecoded& decoded, int width)
{
    std::string text = "Key " + key + "\n\n";
    for (const std::string& line : decoded.lines)
        text += line + "\n";
    std::vector<std::string> errors;
    for (const ErrorId& id : decoded.codes)
        errors.push_back(ErrorName(id.first, id.second) + " (" + ErrorNumber(id.first, id.second) + ")");
    const auto field = [width](const char* label, const std::string& value)
    { return value.empty() ? "" : FieldText(label, {value}, width); };
    return text + "\n" + field("Title", decoded.tree.title) + field("Short", decoded.tree.shortTitle) +
           field("Severity", TranslateSeverity(static_cast<EErrorSeverity>(decoded.tree.severity))) +
           FieldText("Problem", decoded.tree.problems, width) +
           FieldText("Solution", decoded.tree.solutions, width) + FieldText("Codes", errors, width) +
           field("Positions", decoded.fromOwner ? "those of the owner's table"
                                                : "the order of the configuration; there is no owner");
}

EProgramStatus Decode(const SSettings& settings, const std::vector<std::string>& typed)
{
    const std::string key = KeyFromTyped(typed); // what is no key is none with any configuration
    const SDecoded decoded = DecodeKey(settings, key);
    if (settings.json)
        PrintDocument(DecodedDocument(key, decoded));
    else
        std::cout << DecodedText(key, decoded, OutputWidth());
    return epsDone;
}
} // namespace

void AddDecode(CCommandLine& commandLine)
{
    const auto words = std::make_shared<std::vector<std::string>>();
    CCommand command = commandLine.Add(
        "decode", "Tell which errors a state key stands for",
        "Prints the errors of the tree, their codes and its texts, whatever is active now. Without an\n"
        "owner the configuration alone is used; it must be the one that the key was made with. "
        "\"Positions\"\n"
        "tells which of the two was used. A key in the form for the phone may have blanks, dashes and small\n"
        "letters; a group that is wrong, missing or out of place is named.\n"
        "Example: faultkeeperctl --config /etc/faultkeeper decode 0140\n"
        "Example: faultkeeperctl decode GHLGP",
        [words](const SSettings& settings) { return Decode(settings, *words); });
    command.Words("KEY", *words, true, "the key as shown in a tree, or its groups of letters");
}

} // namespace Faultkeeper::Apps
