#include "faultkeeperctl/check/CheckReport.h"

#include "common/text/ErrorNames.h"

#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorPresentation.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>

namespace
{

using namespace Faultkeeper::Apps;
using Support::CConfigurationBuilder;
using Support::STestError;
using Support::STestTriggerSet;

constexpr int kCode = 0x20101;
constexpr int kErrors = 5;
constexpr int kConfigurations = 40; // for each seed

typedef std::vector<std::pair<int, int>> Ids;

/// All failure modes, in an order that is the same on every machine.
std::vector<int> RandomModes(std::mt19937& random)
{
    std::vector<int> modes;
    for (int mode = 0; mode < kErrors; ++mode)
        modes.insert(modes.begin() + static_cast<std::ptrdiff_t>(random() % (modes.size() + 1)), mode);
    return modes;
}

/// Errors whose triggers stand before or behind them, by their failure modes.
CConfigurationBuilder RandomErrors(std::mt19937& random)
{
    const std::vector<int> modes = RandomModes(random);
    CConfigurationBuilder builder;
    for (std::size_t error = 0; error < modes.size(); ++error)
    {
        STestError parent;
        parent.name = ErrorName(kCode, modes[error]);
        for (std::size_t trigger = 0; trigger < error; ++trigger)
        {
            if (random() % 3 != 0)
                continue;
            STestTriggerSet set;
            set.triggers = {ErrorName(kCode, modes[trigger])};
            set.autoTrigger = random() % 4 != 0;
            set.errorLinking = random() % 4 == 0 ? "shallow" : "";
            parent.sets.push_back(set);
        }
        if (random() % 6 == 0)
            parent.sets.emplace_back(); // no trigger: the error is no leaf, nor larger for it
        builder.Add(parent);
    }
    return builder;
}

/// An exact pattern of some of the errors.
Ids RandomPattern(std::mt19937& random)
{
    Ids ids;
    while (ids.empty())
    {
        for (int mode = 0; mode < kErrors; ++mode)
        {
            if (random() % 5 < 2)
                ids.emplace_back(kCode, mode);
        }
    }
    return ids;
}

std::string PatternsFile(const Ids& ids)
{
    std::string text = "<ErrorPatterns><Patterns><pattern fixedCode=\"P\">";
    for (const auto& id : ids)
        text += "<error id=\"" + ErrorName(id.first, id.second) + "\"/>";
    return text + "</pattern></Patterns></ErrorPatterns>";
}

/// What the library makes of active errors.
class CTrees
{
public:
    explicit CTrees(const std::string& prefix) : m_database(prefix) {}

    void Set(unsigned active)
    {
        for (int mode = 0; mode < kErrors; ++mode)
        {
            if ((active >> mode & 1U) != 0)
                m_database.RaiseError(kCode, mode, true);
            else
                m_database.ClearError(kCode, mode, true);
        }
    }

    void Raise(const Ids& ids)
    {
        for (const auto& id : ids)
            m_database.RaiseError(id.first, id.second, false);
    }

    /// Is there a tree of exactly these errors?
    bool Equals(const Ids& ids)
    {
        m_database.UpdateErrorTree();
        const auto& tops = m_database.ActiveErrors(false);
        return std::any_of(tops.begin(), tops.end(),
                           [&ids](const Faultkeeper::CError* top)
                           {
                               Ids codes = {{static_cast<int>(top->ProblemCode()), top->ProblemType()}};
                               Faultkeeper::SErrorTree tree;
                               std::vector<std::string> activity;
                               Faultkeeper::CErrorPresentation::BuildErrorTree(top, tree, activity, false,
                                                                               false, codes);
                               std::sort(codes.begin(), codes.end());
                               return codes == ids;
                           });
    }

private:
    Faultkeeper::CErrorDatabase m_database;
};

bool Tells(const SCheckResult& result, const std::string& what)
{
    return std::any_of(result.findings.begin(), result.findings.end(),
                       [&what](const SCheckFinding& finding)
                       { return finding.what.text.find(what) != std::string::npos; });
}

class PatternReachTest : public testing::TestWithParam<unsigned>
{
protected:
    void Compare(const std::string& prefix, const Ids& ids)
    {
        const SCheckResult checked = CheckConfiguration(prefix, 0);
        SCOPED_TRACE(CheckText(checked));
        CTrees trees(prefix);
        trees.Raise(ids);
        const bool raised = trees.Equals(ids);
        bool possible = false;
        for (unsigned active = 0; active < 1U << kErrors; ++active)
        {
            trees.Set(active);
            possible = possible || trees.Equals(ids);
        }
        EXPECT_EQ(Tells(checked, "this pattern never matches"), !possible);
        EXPECT_EQ(Tells(checked, "this pattern matches only after"), possible && !raised);
        ++(raised ? m_raised : possible ? m_possible : m_impossible);
    }

    int m_raised = 0;
    int m_possible = 0;
    int m_impossible = 0;
};

TEST_P(PatternReachTest, WhatIsToldOfAPatternIsWhatTreesMakeOfIt)
{
    std::mt19937 random(GetParam());
    for (int number = 0; number < kConfigurations && !HasFailure(); ++number)
    {
        const Support::CFreshDirectory directory;
        RandomErrors(random).WriteTo(directory.Prefix());
        const Ids ids = RandomPattern(random);
        Support::WriteFile(directory.File("ErrorPatterns.xml"), PatternsFile(ids));
        Compare(directory.Prefix(), ids);
    }
    EXPECT_GT(m_raised, 0);
    EXPECT_GT(m_possible, 0);
    EXPECT_GT(m_impossible, 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, PatternReachTest, testing::Range(0U, 10U));

} // namespace
