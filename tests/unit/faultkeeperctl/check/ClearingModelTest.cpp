#include "faultkeeperctl/check/Checker.h"

#include "common/text/ErrorNames.h"

#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

namespace
{

using namespace Faultkeeper::Apps;
using Faultkeeper::CErrorDatabase;
using Support::CConfigurationBuilder;
using Support::STestError;
using Support::STestTriggerSet;

constexpr int kTriggers = 4;
constexpr unsigned kParent = 1U << kTriggers; // in a state: one bit for each trigger and one for the parent
constexpr int kConfigurations = 20;           // for each seed

std::string TriggerName(int trigger)
{
    return ErrorName(0x20101, trigger);
}

const char* const kParentName = "System:Operation:Attention Required:11";

/// A parent with two or three automatic sets, each of which can be satisfied.
STestError RandomParent(std::mt19937& random)
{
    STestError parent;
    parent.name = kParentName;
    const std::size_t sets = 2 + random() % 2;
    while (parent.sets.size() < sets)
    {
        STestTriggerSet set;
        for (int trigger = 0; trigger < kTriggers; ++trigger)
        {
            if (random() % 3 != 0)
                set.triggers.push_back(TriggerName(trigger));
        }
        if (set.triggers.empty())
            continue;
        set.triggersNeeded = 1 + static_cast<int>(random() % set.triggers.size());
        parent.sets.push_back(set);
    }
    return parent;
}

/// What the library makes of requests.
class CStates
{
public:
    explicit CStates(const std::string& prefix) : m_database(prefix)
    {
        for (int trigger = 0; trigger < kTriggers; ++trigger)
            m_ids.emplace_back(0x20101, trigger);
        for (const Faultkeeper::CError& error : m_database.GetErrorList())
        {
            if (ErrorName(static_cast<int>(error.ProblemCode()), error.ProblemType()) == kParentName)
                m_ids.emplace_back(static_cast<int>(error.ProblemCode()), error.ProblemType());
        }
    }

    /// Can requests for triggers leave the parent active with no trigger active?
    bool ParentCanStayActive()
    {
        std::set<unsigned> met = {0};
        std::vector<unsigned> next = {0};
        while (!next.empty())
        {
            const unsigned state = next.back();
            next.pop_back();
            for (int trigger = 0; trigger < kTriggers; ++trigger)
            {
                const unsigned after = After(state, trigger);
                if (met.insert(after).second)
                    next.push_back(after);
            }
        }
        return met.count(kParent) != 0;
    }

private:
    /// Raises the trigger, or clears it if it is active.
    unsigned After(unsigned state, int trigger)
    {
        for (std::size_t error = 0; error < m_ids.size(); ++error)
            Request((state >> error & 1U) != 0, error, true);
        Request((state >> trigger & 1U) == 0, static_cast<std::size_t>(trigger), false);
        unsigned after = 0;
        for (std::size_t error = 0; error < m_ids.size(); ++error)
        {
            if (m_database.RetrieveError(m_ids[error].first, m_ids[error].second)->Active())
                after |= 1U << error;
        }
        return after;
    }

    void Request(bool raise, std::size_t error, bool silent)
    {
        if (raise)
            m_database.RaiseError(m_ids[error].first, m_ids[error].second, silent);
        else
            m_database.ClearError(m_ids[error].first, m_ids[error].second, silent);
    }

    CErrorDatabase m_database;
    std::vector<std::pair<int, int>> m_ids; // of the triggers and the parent
};

bool TellsOfClearing(const SCheckResult& result)
{
    return std::any_of(result.findings.begin(), result.findings.end(),
                       [](const SCheckFinding& finding)
                       {
                           const std::string& text = finding.what.text;
                           return text.find("never cleared by its triggers") != std::string::npos ||
                                  text.find("not clear the error") != std::string::npos;
                       });
}

class ClearingModelTest : public testing::TestWithParam<unsigned>
{
protected:
    void Compare(const CConfigurationBuilder& builder, bool independent)
    {
        const Support::CFreshDirectory directory;
        builder.WriteTo(directory.Prefix());
        const SCheckResult checked = CheckConfiguration(directory.Prefix(), 0);
        const bool told = TellsOfClearing(checked);
        const bool stays = CStates(directory.Prefix()).ParentCanStayActive();
        if (independent || told)
        {
            EXPECT_EQ(told, stays) << Support::ReadFile(directory.File("module1.xml"));
        }
        ++(told ? m_told : m_silent);
    }

    int m_told = 0;
    int m_silent = 0;
};

TEST_P(ClearingModelTest, ItIsToldExactlyIfAParentCanStayActiveWithoutTriggers)
{
    std::mt19937 random(GetParam());
    for (int number = 0; number < kConfigurations && !HasFailure(); ++number)
    {
        CConfigurationBuilder builder;
        for (int trigger = 0; trigger < kTriggers; ++trigger)
            builder.Leaf(TriggerName(trigger));
        Compare(builder.Add(RandomParent(random)), true);
    }
    EXPECT_GT(m_told, 0);
    EXPECT_GT(m_silent, 0);
}

TEST_P(ClearingModelTest, WhereTriggersRaiseEachOtherItIsToldOnlyIfAParentCanStayActive)
{
    std::mt19937 random(GetParam());
    for (int number = 0; number < kConfigurations && !HasFailure(); ++number)
    {
        CConfigurationBuilder builder;
        builder.Leaf(TriggerName(0)).Leaf(TriggerName(1));
        builder.Parent(TriggerName(2), {TriggerName(0)});
        builder.Parent(TriggerName(3), {TriggerName(1), TriggerName(2)}, 1 + static_cast<int>(random() % 2));
        Compare(builder.Add(RandomParent(random)), false);
    }
    EXPECT_GT(m_told, 0);
    EXPECT_GT(m_silent, 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, ClearingModelTest, testing::Range(0U, 20U));

} // namespace
