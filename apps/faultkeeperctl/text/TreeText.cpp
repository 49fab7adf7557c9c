#include "faultkeeperctl/text/TreeText.h"

#include "common/text/ErrorNames.h"
#include "faultkeeperctl/text/Colour.h"
#include "faultkeeperctl/text/TextTable.h"
#include "faultkeeperctl/text/TextWidth.h"
#include "faultkeeperctl/text/TimeText.h"

#include <Faultkeeper/ErrorTree.h>
#include <Faultkeeper/Identifiers.h>

#include <algorithm>
#include <cstddef>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kLeastTitle = 10;

std::string Joined(const std::vector<std::string>& parts)
{
    std::string text;
    for (const std::string& part : parts)
        text += (text.empty() ? "" : ", ") + part;
    return text;
}

std::string Headline(const SErrorTree& tree, int number, int width, bool coloured)
{
    const std::string severity = TranslateSeverity(static_cast<EErrorSeverity>(tree.severity));
    const std::string beginning = "[" + std::to_string(number) + "] ";
    const int room = std::max(width - DisplayWidth(beginning) - DisplayWidth(severity) - 2, kLeastTitle);
    std::string title = tree.title.empty() ? tree.shortTitle : tree.title;
    std::replace(title.begin(), title.end(), '\n', ' ');
    const std::vector<std::string> lines = Wrapped(title, room);
    const auto bold = [coloured](const std::string& line) { return coloured ? Bold(line) : line; };
    std::string text = beginning + bold(Padded(lines.front(), room)) + "  " +
                       (coloured ? InSeverityColour(severity, tree.severity) : severity) + "\n";
    for (std::size_t i = 1; i < lines.size(); ++i)
        text += std::string(beginning.size(), ' ') + bold(lines[i]) + "\n";
    return text;
}

std::string Counters(const SErrorTree& tree)
{
    return std::to_string(tree.counter1) + " / " + std::to_string(tree.counter2);
}
} // namespace

std::vector<std::string> TreeFlags(const SErrorTree& tree)
{
    std::vector<std::string> flags;
    const auto add = [&flags](bool set, const char* text)
    {
        if (set)
            flags.emplace_back(text);
    };
    add(!tree.visible, "not shown on the screens");
    add(tree.fullScreen, "full screen");
    add(tree.forceShutdown, "forces a shutdown");
    add(tree.includeServiceNumber, "with service number");
    add(tree.shouldBeep, "beeps");
    add(tree.shouldBeepIfGuiding, "beeps while guiding");
    return flags;
}

std::string TreeText(const SErrorTree& tree, int number, int width, ETreeHistory history, bool coloured)
{
    const auto field = [width](const char* label, const std::string& value)
    { return value.empty() ? "" : FieldText(label, {value}, width); };
    return Headline(tree, number, width, coloured) + field("Short", tree.shortTitle) +
           FieldText("Problem", tree.problems, width) + FieldText("Solution", tree.solutions, width) +
           (history == ethAll ? field("Raised", TimeOrNever(tree.raisedTime)) +
                                    field("Cleared", TimeOrNever(tree.clearedTime))
                              : "") +
           (history != ethNone ? field("Counters", Counters(tree)) : "") + field("Key", tree.stateKey) +
           field("Code", tree.friendlyCode.empty() ? "none" : tree.friendlyCode) +
           field("Error", ErrorName(tree.problemCode, tree.problemType) + " (" +
                              ErrorNumber(tree.problemCode, tree.problemType) + ")") +
           field("Display", Joined(TreeFlags(tree)));
}

std::string TreesText(const std::vector<SErrorTree>& trees, int width, ETreeHistory history, bool coloured)
{
    if (trees.empty())
        return "No active faults.\n";
    std::string text =
        trees.size() == 1 ? "1 active fault\n" : std::to_string(trees.size()) + " active faults\n";
    int number = 0;
    for (const SErrorTree& tree : trees)
        text += "\n" + TreeText(tree, ++number, width, history, coloured);
    return text;
}

} // namespace Faultkeeper::Apps
