#include "Common/database/ConfigurationFormat.h"
#include "pages/ManPage.h"

#include <Faultkeeper/Identifiers.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>

using namespace Faultkeeper;
using namespace Support;

namespace
{

CManPage Page(const std::string& name)
{
    return CManPage(std::string(MAN_PAGES_DIRECTORY) + "/" + name);
}

/// One line for each element, with its attributes behind it.
template <std::size_t count> std::string Elements(const ConfigurationFormat::SElementForm (&forms)[count])
{
    std::string text;
    for (const ConfigurationFormat::SElementForm& form : forms)
    {
        text += form.name;
        for (const ConfigurationFormat::SAttributeForm& attribute : form.attributes)
            text += attribute.name == nullptr ? "" : std::string(" ") + attribute.name;
        text += "\n";
    }
    return text;
}

/// The same of what a section lists.
std::string Elements(const CManPage& page, const std::string& section)
{
    std::string text;
    for (const SMacroLine& line : page.Lines())
    {
        if (line.section != section || line.macro != "It" || line.words.size() != 2)
            continue;
        if (line.words.front() == "Sy")
            text += (text.empty() ? "" : "\n") + line.words.back();
        else if (line.words.front() == "Va")
            text += " " + line.words.back();
    }
    return text + "\n";
}

std::string Listed(const CManPage& page, const std::string& part)
{
    std::string text;
    for (const std::vector<std::string>& words : page.Items(part, "Cm"))
        text += words.front() + "\n";
    return text;
}

/// One line for each value that has a name.
std::string Names(int step, int last, const char* format, const std::function<std::string(int)>& nameOf)
{
    std::string text;
    for (int value = 0; value <= last; value += step)
    {
        const std::string name = nameOf(value);
        char number[16];
        std::snprintf(number, sizeof number, format, static_cast<unsigned>(value));
        text += name.empty() ? "" : number + (" " + name) + "\n";
    }
    return text;
}

std::string Module(int value)
{
    return TranslateModuleId(static_cast<EModuleIdentifier>(value));
}

std::string SubModule(int value)
{
    return TranslateSubModuleId(static_cast<ESubModuleIdentifier>(value));
}

std::string Problem(int value)
{
    return TranslateProblemId(static_cast<EProblemIdentifier>(value));
}

std::string FailureMode(int value)
{
    return TranslateProblemType(static_cast<EProblemType>(value));
}

std::string Severity(int value)
{
    return TranslateSeverity(static_cast<EErrorSeverity>(value));
}

} // namespace

TEST(FormatPagesTest, TheListOfModulesIsDescribedElementByElement)
{
    EXPECT_EQ(Elements(Page("FaultkeeperConfig.xml.5"), "THE LIST OF MODULES"),
              Elements(ConfigurationFormat::kListElements));
}

TEST(FormatPagesTest, ModuleFilesAreDescribedElementByElement)
{
    EXPECT_EQ(Elements(Page("FaultkeeperConfig.xml.5"), "MODULE FILES"),
              Elements(ConfigurationFormat::kModuleElements));
}

TEST(FormatPagesTest, PatternsAreDescribedElementByElement)
{
    EXPECT_EQ(Elements(Page("ErrorPatterns.xml.5"), "DESCRIPTION"),
              Elements(ConfigurationFormat::kPatternElements));
}

TEST(FormatPagesTest, EveryTypeOfTextIsDescribed)
{
    std::string types;
    for (const ConfigurationFormat::STextForm& form : ConfigurationFormat::kTextForms)
        types += std::string(form.type) + "\n";
    EXPECT_EQ(Listed(Page("FaultkeeperConfig.xml.5"), "Texts"), types);
}

TEST(FormatPagesTest, EveryOptionOfATriggerSetIsDescribed)
{
    std::string names;
    for (const char* const name : ConfigurationFormat::kOptionNames)
        names += std::string(name) + "\n";
    EXPECT_EQ(Listed(Page("FaultkeeperConfig.xml.5"), "Options of a trigger set"), names);
}

TEST(FormatPagesTest, AllNamesAreListedWithTheirValues)
{
    const CManPage page = Page("FaultkeeperConfig.xml.5");
    EXPECT_EQ(page.Display("Modules"), Names(0x10000, 0xFF0000, "0x%06x", Module));
    EXPECT_EQ(page.Display("Sub-modules"), Names(0x100, 0xFF00, "0x%04x", SubModule));
    EXPECT_EQ(page.Display("Problems"), Names(1, 0xFF, "%u", Problem));
    EXPECT_EQ(page.Display("Failure modes"), Names(1, 0xFF, "%u", FailureMode));
    EXPECT_EQ(page.Display("Severities"), Names(1, 0xFF, "%u", Severity));
}
