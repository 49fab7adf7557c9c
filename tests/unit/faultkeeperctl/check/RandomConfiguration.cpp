#include "RandomConfiguration.h"

#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"

#include <algorithm>

namespace CheckCases
{

namespace
{
typedef std::vector<std::string> Words;

const Words kModules = {"Positioning", "CAN", "System"};
const Words kSubModules = {"GPS", "Bus"};
const Words kProblems = {"No Data", "Power"};
const Words kModes = {"AbnormalUpdateRate", "RootCauseUnknown", "0"};
const Words kModeNumbers = {"9", "11", "0"};
const Words kSeverities = {"Low", "Medium", "High", "Critical"};
const Words kFlags = {"visible", "fullScreen", "shouldBeep"};
const Words kElements = {"Module", "SubModule", "Problem", "Error",    "Text",       "ServiceDescription",
                         "Option", "Options",   "Trigger", "Triggers", "TriggerSet", "TriggerSets"};
const Words kValues = {"",      "yes",  "no", "x",  "Positioning", "Bus",
                       "Power", "High", "1",  "-1", "problem",     "a:b:c:d"};

std::string Text(const SElement& element)
{
    std::string text = "<" + element.name;
    for (const auto& attribute : element.attributes)
        text += " " + attribute.first + "=\"" + Support::XmlEscaped(attribute.second) + "\"";
    text += ">\n";
    for (const SElement& child : element.children)
        text += Text(child);
    return text + "</" + element.name + ">\n";
}

SElement TextElement(const std::string& type)
{
    return {"Text", {{"type", type}, {"text", "Some " + type + "."}}, {}};
}

SElement OptionElement(const std::string& name, const std::string& value)
{
    return {"Option", {{"name", name}, {"value", value}}, {}};
}
} // namespace

std::string CRandomConfiguration::ErrorId()
{
    return OneOf(kModules) + ":" + OneOf(kSubModules) + ":" + OneOf(kProblems) + ":" + OneOf(kModeNumbers);
}

std::string CRandomConfiguration::Flag()
{
    return Below(2) == 0 ? "yes" : "no";
}

SElement CRandomConfiguration::List()
{
    SElement list = {"ErrorList", {}, {}};
    for (const std::string& module : kModules)
        list.children.push_back({"Module", {{"identifier", module}, {"file", module + ".xml"}}, {}});
    return {"Faultkeeper", {}, {list}};
}

SElement CRandomConfiguration::Module()
{
    SElement module = {"Module", {}, {}};
    for (const std::string& name : kSubModules)
    {
        SElement subModule = {"SubModule", {{"identifier", name}}, {}};
        for (std::size_t problem = 0; problem <= Below(2); ++problem)
            subModule.children.push_back(Problem());
        module.children.push_back(subModule);
    }
    return module;
}

SElement CRandomConfiguration::Problem()
{
    SElement problem = {"Problem", {{"identifier", OneOf(kProblems)}}, {}};
    for (std::size_t error = 0; error <= Below(2); ++error)
        problem.children.push_back(Error());
    return problem;
}

SElement CRandomConfiguration::Error()
{
    SElement error = {
        "Error",
        {{"identifier", OneOf(kModes)}, {"severity", OneOf(kSeverities)}, {OneOf(kFlags), Flag()}},
        {TextElement("solution"), TextElement("problem"), TextElement("shortProblem")}};
    if (Below(2) == 0)
        error.children.push_back(TextElement("title"));
    if (Below(4) == 0)
        error.children.push_back({"ServiceDescription", {}, {TextElement("")}});
    if (Below(3) == 0)
        error.children.push_back(TriggerSets());
    std::shuffle(error.children.begin(), error.children.end(), m_random);
    return error;
}

SElement CRandomConfiguration::TriggerSets()
{
    SElement sets = {"TriggerSets", {}, {}};
    for (std::size_t set = 0; set <= Below(2); ++set)
        sets.children.push_back(TriggerSet());
    return sets;
}

SElement CRandomConfiguration::TriggerSet()
{
    SElement options = {
        "Options", {}, {OptionElement("autoTrigger", Flag()), OptionElement("triggersNeeded", "1")}};
    SElement triggers = {"Triggers", {}, {}};
    for (std::size_t trigger = 0; trigger <= Below(2); ++trigger)
        triggers.children.push_back({"Trigger", {{"id", ErrorId()}}, {}});
    return {"TriggerSet", {}, {options, triggers}};
}

void CRandomConfiguration::Write(int edits)
{
    std::vector<std::pair<std::string, SElement>> files = {{"FaultkeeperConfig.xml", List()}};
    for (const std::string& module : kModules)
        files.emplace_back(module + ".xml", Module());
    for (int edit = 0; edit < edits; ++edit)
        Edit(files[Below(files.size())].second);
    for (const auto& file : files)
        Support::WriteFile(file.first, Text(file.second));
    if (Below(20) == 0)
        Support::WriteFile(OneOf(kModules) + ".xml", "<Module>");
}

void CRandomConfiguration::Edit(SElement& top)
{
    SElement& element = AnyElement(top);
    switch (Below(4))
    {
    case 0:
        element.name = Below(2) == 0 ? Misspelled(element.name) : OneOf(kElements);
        break;
    case 1:
        EditChildren(element);
        break;
    default:
        EditAttribute(element);
    }
}

SElement& CRandomConfiguration::AnyElement(SElement& top)
{
    SElement* element = &top;
    while (!element->children.empty() && Below(6) != 0)
        element = &element->children[Below(element->children.size())];
    return *element;
}

void CRandomConfiguration::EditChildren(SElement& element)
{
    if (element.children.empty())
        return;
    const std::size_t place = Below(element.children.size());
    const SElement child = element.children[place];
    if (Below(2) == 0)
        element.children.erase(element.children.begin() + static_cast<std::ptrdiff_t>(place));
    else if (Below(2) == 0)
        element.children.push_back(child);
    else
        element.children[place].children.push_back(child);
}

void CRandomConfiguration::EditAttribute(SElement& element)
{
    if (element.attributes.empty())
        return;
    const std::size_t place = Below(element.attributes.size());
    auto& attribute = element.attributes[place];
    switch (Below(4))
    {
    case 0:
        element.attributes.erase(element.attributes.begin() + static_cast<std::ptrdiff_t>(place));
        break;
    case 1:
        attribute.first = Misspelled(attribute.first);
        break;
    case 2:
        attribute.second = Misspelled(attribute.second);
        break;
    default:
        attribute.second = OneOf(kValues);
    }
}

std::string CRandomConfiguration::Misspelled(std::string word)
{
    if (word.size() < 2)
        return "X";
    const std::size_t place = 1 + Below(word.size() - 1);
    if (Below(2) == 0)
        word.erase(place, 1);
    else
        std::swap(word[place - 1], word[place]);
    // what starts a name must be a letter
    return word[0] >= 'A' ? word : "X" + word;
}

} // namespace CheckCases
