#include "faultkeeperctl/commands/Commands.h"

#include "common/text/ErrorNames.h"
#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/Display.h"
#include "faultkeeperctl/json/Json.h"
#include "faultkeeperctl/keys/PhoneKey.h"
#include "faultkeeperctl/keys/TypedKey.h"
#include "faultkeeperctl/text/TextTable.h"
#include "faultkeeperctl/text/TextWidth.h"

#include <iostream>
#include <memory>
#include <vector>

namespace Faultkeeper::Apps
{

namespace
{
void SetForms(Json& object, const std::string& key)
{
    object["stateKey"] = key;
    object["phoneKey"] = PhoneKey(key);
}

std::string FormsText(const std::string& key, int width)
{
    return FieldText("Key", {key}, width) + FieldText("Phone", {PhoneKey(key)}, width);
}

Json TreesDocument(const std::vector<SErrorTree>& trees)
{
    Json keys = Json::array();
    for (const SErrorTree& tree : trees)
    {
        Json key = IdDocument(tree.problemCode, tree.problemType);
        key["title"] = tree.title;
        SetForms(key, tree.stateKey);
        keys.push_back(key);
    }
    return keys;
}

std::string KeysText(const std::vector<SErrorTree>& trees, int width)
{
    std::string text;
    for (const SErrorTree& tree : trees)
        text += (text.empty() ? "" : "\n") + ErrorName(tree.problemCode, tree.problemType) + "\n" +
                (tree.title.empty() ? "" : FieldText("Title", {tree.title}, width)) +
                FormsText(tree.stateKey, width);
    return text.empty() ? "No active faults.\n" : text;
}

void Print(const SSettings& settings, const Json& keys, const std::string& text)
{
    Json document;
    document["keys"] = keys;
    if (settings.json)
        PrintDocument(document);
    else
        std::cout << text;
}

void ShowActive(const SSettings& settings)
{
    CDisplay display(settings);
    display.RequirePicture();
    WarnOfUnknown(display);
    const std::vector<SErrorTree> trees = display.Trees();
    Print(settings, TreesDocument(trees), KeysText(trees, OutputWidth()));
}

void ShowForms(const SSettings& settings, const std::string& key)
{
    Json forms;
    SetForms(forms, key);
    Print(settings, Json::array({forms}), FormsText(key, OutputWidth()));
}

EProgramStatus Key(const SSettings& settings, const std::vector<std::string>& words)
{
    if (words.empty())
        ShowActive(settings);
    else
        ShowForms(settings, KeyFromTyped(words));
    return epsDone;
}
} // namespace

void AddKey(CCommandLine& commandLine)
{
    const auto words = std::make_shared<std::vector<std::string>>();
    CCommand command = commandLine.Add(
        "key", "Show the state keys of the active faults, also in the form for the phone",
        "The form for the phone is groups of five letters, the last of each a check letter. \"decode\" takes "
        "both\n"
        "forms and tells which group was heard or typed wrongly. With a KEY its two forms are shown, which "
        "needs\n"
        "neither owner nor configuration.\n"
        "Example: faultkeeperctl --config /etc/faultkeeper key\n"
        "Example: faultkeeperctl key 0140",
        [words](const SSettings& settings) { return Key(settings, *words); });
    command.Words("KEY", *words, false, "a key in one of its forms instead of the active ones");
}

} // namespace Faultkeeper::Apps
