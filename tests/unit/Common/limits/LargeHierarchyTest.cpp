#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"
#include "unit/Common/fixtures/GroupingModel.h"
#include "unit/Common/view/NumberedErrors.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDbChanged.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <list>
#include <memory>

// Hierarchies far larger than any console's, for which ways that visit an error once for each path to it
// would not end: 20 levels of 20 errors have 20 to the power of 19 paths.

namespace
{

using namespace Faultkeeper;

class LargeHierarchyTest : public testing::Test, public CErrorDbChanged
{
protected:
    typedef std::vector<std::vector<int>> TTriggers; ///< of each error

    /// Errors by number, each with one automatic set if it has triggers.
    void Load(const TTriggers& triggers, int needed = 1)
    {
        Support::CConfigurationBuilder builder;
        for (std::size_t number = 0; number < triggers.size(); ++number)
        {
            const std::string name = NumberedErrors::Name(static_cast<int>(number));
            std::vector<std::string> names;
            for (const int trigger : triggers[number])
                names.push_back(NumberedErrors::Name(trigger));
            if (names.empty())
                builder.Leaf(name);
            else
                builder.Parent(name, names, needed);
        }
        builder.WriteTo(m_directory.Prefix());
        m_database = std::make_unique<CErrorDatabase>(m_directory.Prefix());
        m_database->SetCallback(this);
        ASSERT_EQ(m_database->GetErrorList().size(), triggers.size());
    }

    void Raise(int number, bool silent = false)
    {
        m_database->RaiseError(NumberedErrors::Code(number), NumberedErrors::Type(number), silent);
    }

    void Clear(int number)
    {
        m_database->ClearError(NumberedErrors::Code(number), NumberedErrors::Type(number), false);
    }

    const CError& Error(int number) const
    {
        return m_database->GetErrorList()[static_cast<std::size_t>(number)];
    }

    int NumberOf(const CError* error) const
    {
        return static_cast<int>(error - m_database->GetErrorList().data());
    }

    std::vector<int> Numbers(const std::list<const CError*>& errors) const
    {
        std::vector<int> numbers;
        for (const CError* error : errors)
            numbers.push_back(NumberOf(error));
        return numbers;
    }

    /// What the listener has heard since it was last asked: numbers of the raised errors, and ~number of the
    /// cleared.
    std::vector<int> Heard() { return std::exchange(m_heard, {}); }

    void ErrorRaised(int code, int type) override
    {
        m_heard.push_back(NumberOf(m_database->RetrieveError(code, type)));
    }
    void ErrorCleared(int code, int type) override
    {
        m_heard.push_back(~NumberOf(m_database->RetrieveError(code, type)));
    }

    Support::CFreshDirectory m_directory;
    std::unique_ptr<CErrorDatabase> m_database;
    std::vector<int> m_heard;
};

// ---- A set of 200 triggers

constexpr int kWide = 200;

class WideSetTest : public LargeHierarchyTest
{
protected:
    void LoadWide(int needed)
    {
        TTriggers triggers(kWide + 1);
        for (int trigger = 1; trigger <= kWide; ++trigger)
            triggers[0].push_back(trigger);
        Load(triggers, needed);
    }
};

TEST_F(WideSetTest, ThePositionCountsAllTriggers)
{
    LoadWide(1);
    EXPECT_EQ(Error(0).Position(), kWide + 1);
    m_database->UpdateErrorTree();
    EXPECT_EQ(Numbers(m_database->InactiveErrors(false)), std::vector<int>{0});
}

TEST_F(WideSetTest, TheParentOfAllFollowsTheLastRaiseAndTheFirstClear)
{
    LoadWide(kWide);
    for (int trigger = kWide; trigger > 1; --trigger)
    {
        Raise(trigger);
        ASSERT_EQ(Heard(), std::vector<int>{trigger});
    }
    Raise(1);
    EXPECT_EQ(Heard(), (std::vector<int>{1, 0}));
    Clear(100);
    EXPECT_EQ(Heard(), (std::vector<int>{~100, ~0}));
}

TEST_F(WideSetTest, TheParentOfHalfFollowsWhenHalfIsReachedAndLeft)
{
    LoadWide(kWide / 2);
    for (int trigger = 1; trigger <= kWide; ++trigger)
    {
        Raise(trigger);
        ASSERT_EQ(Heard().size(), trigger == kWide / 2 ? 2u : 1u) << trigger;
    }
    for (int trigger = 1; trigger <= kWide; ++trigger)
    {
        Clear(trigger);
        ASSERT_EQ(Heard().size(), trigger == kWide / 2 + 1 ? 2u : 1u) << trigger;
    }
}

// ---- A chain of 400

constexpr int kChain = 400;

class ChainTest : public LargeHierarchyTest
{
protected:
    /// Each error triggers the one before it, or the one behind it.
    void LoadChain(bool topFirst)
    {
        TTriggers triggers(kChain);
        for (int error = 0; error + 1 < kChain; ++error)
        {
            const int above = topFirst ? error : error + 1;
            triggers[static_cast<std::size_t>(above)].push_back(topFirst ? error + 1 : error);
        }
        Load(triggers);
    }
};

TEST_F(ChainTest, PositionsCountTheErrorsBelowInWhateverOrderTheyAreLoaded)
{
    for (const bool topFirst : {true, false})
    {
        LoadChain(topFirst);
        for (int error = 0; error < kChain; ++error)
            ASSERT_EQ(Error(error).Position(), topFirst ? kChain - error : error + 1) << error;
    }
}

TEST_F(ChainTest, AChangeAtTheBottomIsHeardUpToTheTop)
{
    for (const bool topFirst : {true, false})
    {
        LoadChain(topFirst);
        std::vector<int> raised;
        std::vector<int> cleared;
        for (int level = 0; level < kChain; ++level)
        {
            raised.push_back(topFirst ? kChain - 1 - level : level);
            cleared.push_back(~raised.back());
        }
        Raise(raised.front());
        EXPECT_EQ(Heard(), raised);
        Clear(raised.front());
        EXPECT_EQ(Heard(), cleared);
    }
}

TEST_F(ChainTest, ItIsOneGroupUntilItIsBroken)
{
    for (const bool topFirst : {true, false})
    {
        LoadChain(topFirst);
        for (int error = 0; error < kChain; ++error)
            Raise(error, true);
        for (const int broken : {100, 250, 251})
            m_database->ClearError(NumberedErrors::Code(broken), NumberedErrors::Type(broken), true);
        m_database->UpdateErrorTree();
        EXPECT_EQ(Numbers(m_database->ActiveErrors(false)),
                  topFirst ? (std::vector<int>{0, 101, 252}) : (std::vector<int>{99, 249, 399}));
        EXPECT_EQ(Numbers(m_database->InactiveErrors(false)),
                  topFirst ? (std::vector<int>{100, 250}) : (std::vector<int>{100, 251}));
    }
}

// ---- A lattice of 20 levels of 20 errors, each linked to all of the next level

constexpr int kLevels = 20;
constexpr int kWidth = 20;
constexpr int kErrors = kLevels * kWidth;

class LatticeTest : public LargeHierarchyTest
{
protected:
    /// Level 0 are errors 0 to 19, at the top.
    void SetUp() override
    {
        TTriggers triggers(kErrors);
        for (int error = 0; error < (kLevels - 1) * kWidth; ++error)
            for (int trigger = 0; trigger < kWidth; ++trigger)
                triggers[static_cast<std::size_t>(error)].push_back((Level(error) + 1) * kWidth + trigger);
        Load(triggers);
    }

    static int Level(int error) { return error / kWidth; }

    /// Tops of the groups of those errors, found pass after pass.
    std::vector<int> TopsByPasses(const std::vector<int>& errors) const
    {
        std::vector<int> tops;
        for (const std::size_t top : Fixtures::TopsByPasses(
                 errors.size(),
                 [&](std::size_t c, std::size_t g)
                 { return std::abs(Level(errors[c]) - Level(errors[g])) == 1; },
                 [&](std::size_t e) { return Error(errors[e]).Position(); }))
            tops.push_back(errors[top]);
        return tops;
    }

    std::vector<int> ErrorsThatAre(bool active) const
    {
        std::vector<int> errors;
        for (int error = 0; error < kErrors; ++error)
            if (Error(error).Active() == active)
                errors.push_back(error);
        return errors;
    }

    void CompareTops()
    {
        m_database->UpdateErrorTree();
        for (const bool active : {true, false})
        {
            const auto& tops = active ? m_database->ActiveErrors(false) : m_database->InactiveErrors(false);
            EXPECT_EQ(Numbers(tops), TopsByPasses(ErrorsThatAre(active)));
        }
    }
};

TEST_F(LatticeTest, PositionsGrowByTwentyALevelUpToTheLargestNumber)
{
    long long position = 1;
    for (int level = kLevels - 1; level >= 0; --level)
    {
        for (int error = level * kWidth; error < (level + 1) * kWidth; ++error)
            ASSERT_EQ(Error(error).Position(), position) << error;
        position = std::min<long long>(1 + kWidth * position, INT_MAX);
    }
    EXPECT_EQ(Error(0).Position(), INT_MAX);
}

TEST_F(LatticeTest, OneRaiseAtTheBottomReachesEachErrorAboveOnce)
{
    Raise(kErrors - 1);
    std::vector<int> heard = Heard();
    EXPECT_EQ(heard.front(), kErrors - 1);
    std::sort(heard.begin(), heard.end());
    std::vector<int> expected = ErrorsThatAre(true);
    EXPECT_EQ(expected.size(), static_cast<std::size_t>((kLevels - 1) * kWidth + 1));
    EXPECT_EQ(heard, expected);
}

TEST_F(LatticeTest, OneClearAtTheBottomReachesThemAllAgain)
{
    Raise(kErrors - 1);
    Heard();
    Clear(kErrors - 1);
    std::vector<int> heard = Heard();
    EXPECT_EQ(heard.size(), static_cast<std::size_t>((kLevels - 1) * kWidth + 1));
    EXPECT_EQ(ErrorsThatAre(true), std::vector<int>{});
}

TEST_F(LatticeTest, ItIsOneGroupWhoseTopIsTheFirstOfTheLargest)
{
    CompareTops();
    EXPECT_EQ(Numbers(m_database->InactiveErrors(false)), std::vector<int>{0});
    Raise(kErrors - 1);
    CompareTops();
    EXPECT_EQ(Numbers(m_database->ActiveErrors(false)), std::vector<int>{0});
    EXPECT_EQ(m_database->InactiveErrors(false).size(), static_cast<std::size_t>(kWidth - 1));
}

TEST_F(LatticeTest, AGivenListIsGroupedInItsOwnOrder)
{
    std::vector<int> errors;
    std::list<const CError*> list;
    for (int error = kErrors - 1; error >= 0; --error)
    {
        if (Level(error) == 7)
            continue; // two halves
        errors.push_back(error);
        list.push_back(&Error(error));
    }
    std::list<const CError*> tops;
    m_database->UpdateErrorTree(list, tops);
    EXPECT_EQ(Numbers(tops), TopsByPasses(errors));
    EXPECT_EQ(tops.size(), 2u);
}

} // namespace
