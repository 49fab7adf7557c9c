#include "unit/presentation/DisplayFixture.h"

#include "unit/Common/view/NumberedErrors.h"

#include <Faultkeeper/ErrorPresentation.h>

#include <cstdio>
#include <set>

using namespace Faultkeeper;

namespace
{

std::string Bracketed(const std::vector<std::string>& texts)
{
    std::string result;
    for (const std::string& text : texts)
        result += "[" + text + "]";
    return result;
}

std::string Spaced(const std::vector<std::string>& texts)
{
    std::string result;
    for (const std::string& text : texts)
        result += (result.empty() ? "" : " ") + text;
    return result;
}

std::string Flags(const SErrorTree& tree)
{
    const std::pair<bool, const char*> flags[] = {
        {tree.visible, " visible"},       {tree.forceShutdown, " forceShutdown"},
        {tree.fullScreen, " fullScreen"}, {tree.includeServiceNumber, " includeServiceNumber"},
        {tree.shouldBeep, " beep"},       {tree.shouldBeepIfGuiding, " beepIfGuiding"}};
    std::string text;
    for (const auto& flag : flags)
        text += flag.first ? flag.second : "";
    return text;
}

} // namespace

Support::STestTriggerSet Set(const std::vector<int>& triggers, const std::string& errorLinking,
                             const std::string& titleSource)
{
    Support::STestTriggerSet set;
    set.errorLinking = errorLinking;
    set.titleSource = titleSource;
    for (const int trigger : triggers)
        set.triggers.push_back(NumberedErrors::Name(trigger));
    return set;
}

Support::STestError Node(int number, const std::vector<Support::STestTriggerSet>& sets)
{
    Support::STestError error;
    error.name = NumberedErrors::Name(number);
    error.sets = sets;
    error.problem = "P" + std::to_string(number);
    error.solution = "S" + std::to_string(number);
    error.shortProblem = "s" + std::to_string(number);
    error.title = "T" + std::to_string(number);
    return error;
}

std::string Printed(const SErrorTree& tree)
{
    char identifier[64];
    std::snprintf(identifier, sizeof identifier, "%X:%d severity %d", static_cast<unsigned>(tree.problemCode),
                  tree.problemType, tree.severity);
    return identifier + Flags(tree) + "\ntitle [" + tree.title + "] short [" + tree.shortTitle +
           "]\nproblems " + Bracketed(tree.problems) + "\nsolutions " + Bracketed(tree.solutions) +
           "\nraised " + std::to_string(tree.raisedTime) + " cleared " + std::to_string(tree.clearedTime) +
           " counters " + std::to_string(tree.counter1) + " " + std::to_string(tree.counter2) + "\nkey [" +
           tree.stateKey + "] code [" + tree.friendlyCode + "]\n";
}

std::string Texts(const SErrorTree& tree)
{
    return tree.title + "|" + tree.shortTitle + "|" + Spaced(tree.problems) + "|" + Spaced(tree.solutions);
}

std::string Numbers(const std::vector<std::pair<int, int>>& codes)
{
    std::vector<std::string> numbers;
    for (const std::pair<int, int>& code : codes)
        for (int number = 0; number < 2 * NumberedErrors::kFailureModes; ++number)
            if (NumberedErrors::Id(number) == code)
                numbers.push_back(std::to_string(number));
    return Spaced(numbers);
}

std::string Joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    return text;
}

void DisplayFixture::Load(const std::vector<Support::STestError>& errors)
{
    Support::CConfigurationBuilder builder;
    for (const Support::STestError& error : errors)
        builder.Add(error);
    builder.WriteTo(m_directory.Prefix());
    m_database = std::make_unique<CErrorDatabase>(m_directory.Prefix());
    ASSERT_EQ(m_database->GetErrorList().size(), errors.size());
    m_owner.LoadErrors(*m_database);
    m_owner.FaultkeeperReady(true);
    Synchronise();
}

void DisplayFixture::WritePatterns(const std::string& patterns) const
{
    Support::WriteFile(m_directory.File("ErrorPatterns.xml"),
                       "<Overlay><Patterns>" + patterns + "</Patterns></Overlay>");
}

void DisplayFixture::Activate(const std::vector<int>& numbers)
{
    for (const CError& error : m_database->GetErrorList())
        m_database->ClearError(error.ProblemCode(), error.ProblemType(), true);
    for (const int number : numbers)
        m_database->RaiseError(NumberedErrors::Code(number), NumberedErrors::Type(number), true);
}

const CError* DisplayFixture::Error(int number) const
{
    return m_database->RetrieveError(NumberedErrors::Code(number), NumberedErrors::Type(number));
}

std::vector<SErrorTree> DisplayFixture::Trees(const std::vector<int>& numbers, bool useTextKeys) const
{
    std::list<const CError*> errors;
    for (const int number : numbers)
        errors.push_back(Error(number));
    std::vector<SErrorTree> trees;
    CErrorPresentation::GetErrorTree(m_reader, CErrorOverlay(m_directory.Prefix()), errors, trees,
                                     useTextKeys);
    return trees;
}

SErrorTree DisplayFixture::Tree(int number, bool useTextKeys) const
{
    return Trees({number}, useTextKeys).at(0);
}

SErrorEntry& DisplayFixture::Record(int index)
{
    return reinterpret_cast<SStatusTable*>(m_directory.Table())->records[index];
}

void DisplayFixture::Synchronise()
{
    CErrorDatabase nowhere("no such directory/"); // which errors are active is up to the test
    m_reader.Synchronise(nowhere);
}
