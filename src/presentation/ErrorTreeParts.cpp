#include "presentation/ErrorTreeParts.h"

#include "Common/ErrorName.h"
#include "presentation/TextKeys.h"

#include <Faultkeeper/Error.h>
#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/ErrorEntry.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace Faultkeeper
{

namespace
{
// Trees carry 32-bit times: what lies outside becomes the nearest end.
std::int32_t WholeSeconds(const Core::Time& time)
{
    constexpr double kFirst = std::numeric_limits<std::int32_t>::min();
    constexpr double kLast = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(std::floor(time.AsDouble()), kFirst, kLast));
}
} // namespace

std::string CErrorTexts::TextOrKey(const CError& error, const std::string& text, const char* key) const
{
    return m_useTextKeys ? ErrorName(error) + key : text;
}

std::string CErrorTexts::Title(const CError& error) const
{
    return TextOrKey(error, error.TitleText(), kTitleKey);
}

std::string CErrorTexts::ShortTitle(const CError& error) const
{
    return TextOrKey(error, error.ShortProblemText(), kShortProblemKey);
}

std::string CErrorTexts::Problem(const CError& error) const
{
    return TextOrKey(error, error.ProblemText(), kProblemKey);
}

std::string CErrorTexts::Solution(const CError& error) const
{
    return TextOrKey(error, error.SolutionText(), kSolutionKey);
}

void SetFlags(const CError& error, SErrorTree& tree)
{
    tree.visible = error.Visible();
    tree.forceShutdown = error.ForceShutdown();
    tree.fullScreen = error.FullScreen();
    tree.includeServiceNumber = error.IncludeServiceNumber();
    tree.shouldBeep = error.ShouldBeep();
    tree.shouldBeepIfGuiding = error.ShouldBeepIfGuiding();
    tree.severity = error.Severity();
}

void SetStatus(const SErrorEntry& entry, SErrorTree& tree)
{
    tree.raisedTime = WholeSeconds(entry.raisedTime);
    tree.clearedTime = WholeSeconds(entry.clearedTime);
    tree.counter1 = entry.counter1;
    tree.counter2 = entry.counter2;
}

void SetStatus(const CErrorDatabaseView& view, const CError& error, SErrorTree& tree)
{
    SErrorEntry entry;
    view.RetrieveErrorDetails(error.ProblemCode(), error.ProblemType(), entry);
    SetStatus(entry, tree);
}

void AddBeeps(const CError& error, SErrorTree& tree)
{
    tree.shouldBeep = tree.shouldBeep || error.ShouldBeep();
    tree.shouldBeepIfGuiding = tree.shouldBeepIfGuiding || error.ShouldBeepIfGuiding();
}

void SetTitles(const CError& error, const CErrorTexts& texts, SErrorTree& tree)
{
    tree.title = texts.Title(error);
    tree.shortTitle = texts.ShortTitle(error);
}

void ClearTitles(SErrorTree& tree)
{
    tree.title.clear();
    tree.shortTitle.clear();
}

void SetTexts(const CError& error, const CErrorTexts& texts, SErrorTree& tree)
{
    SetTitles(error, texts, tree);
    tree.problems.assign(1, texts.Problem(error));
    tree.solutions.assign(1, texts.Solution(error));
}

void FillEmptyTexts(const CError& error, const CErrorTexts& texts, SErrorTree& tree)
{
    if (tree.title.empty())
        tree.title = texts.Title(error);
    if (tree.shortTitle.empty())
        tree.shortTitle = texts.ShortTitle(error);
    if (tree.problems.empty())
        tree.problems.push_back(texts.Problem(error));
    if (tree.solutions.empty())
        tree.solutions.push_back(texts.Solution(error));
}

} // namespace Faultkeeper
