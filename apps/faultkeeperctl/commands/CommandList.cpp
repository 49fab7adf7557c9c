#include "faultkeeperctl/commands/Commands.h"

#include "common/text/TypedText.h"
#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/Display.h"
#include "faultkeeperctl/json/DisplayDocuments.h"
#include "faultkeeperctl/strings/LocalisedStrings.h"
#include "faultkeeperctl/strings/Translation.h"
#include "faultkeeperctl/text/Colour.h"
#include "faultkeeperctl/text/TextWidth.h"
#include "faultkeeperctl/text/TreeText.h"
#include "faultkeeperctl/typed/FileText.h"

#include <cstdio>
#include <iostream>
#include <memory>
#include <set>
#include <vector>

namespace Faultkeeper::Apps
{

namespace
{
/// The trees in the language of a file of texts.
std::vector<SErrorTree> TranslatedTrees(const CDisplay& display, const std::vector<STextRecord>& texts,
                                        const std::string& path)
{
    const CTranslation translation(OriginalTexts(display.Database().GetErrorList()), texts);
    std::vector<std::string> missing;
    std::vector<SErrorTree> trees = display.Trees(true);
    for (SErrorTree& tree : trees)
        Translate(tree, translation, missing);
    std::set<std::string> told;
    for (const std::string& key : missing)
    {
        if (told.insert(key).second)
            std::fprintf(stderr, "faultkeeperctl: %s has no text for %s; the original is shown\n",
                         WithoutControls(FileName(path)).c_str(), key.c_str());
    }
    return trees;
}

EProgramStatus List(const SSettings& settings, const std::string& strings)
{
    std::vector<STextRecord> texts; // read before the working directory changes
    if (!strings.empty())
        texts = TextsOfFile(strings);
    CDisplay display(settings);
    display.RequirePicture();
    WarnOfUnknown(display);
    const std::vector<SErrorTree> trees =
        strings.empty() ? display.Trees() : TranslatedTrees(display, texts, strings);
    if (settings.json)
        PrintDocument(PictureDocument(display, trees));
    else
        std::cout << TreesText(trees, OutputWidth(), ethAll, ColoursWanted());
    return epsDone;
}
} // namespace

void AddList(CCommandLine& commandLine)
{
    const auto strings = std::make_shared<std::string>();
    CCommand command = commandLine.Add(
        "list", "Show the active faults as the console's screens put them together",
        "One tree for each active top error: title, severity, problems, solutions, times, counters, the\n"
        "state key that \"decode\" takes, the friendly code and the error's name. With --strings the texts "
        "are\n"
        "those of a translation, as a console in that language shows them; \"strings --check\" tells what "
        "is\n"
        "missing in it.\n"
        "Example: faultkeeperctl --config /etc/faultkeeper list\n"
        "Example: faultkeeperctl list --strings german.txt",
        [strings](const SSettings& settings) { return List(settings, *strings); });
    command.File("--strings", *strings,
                 "texts to show, a translation of what \"strings\" writes; \"-\" for standard input");
}

} // namespace Faultkeeper::Apps
