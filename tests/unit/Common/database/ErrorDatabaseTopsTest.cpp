#include <Faultkeeper/ErrorDatabase.h>

#include "unit/Common/fixtures/Configurations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// The lists of tops are rebuilt from what is kept between two updates. Whatever has happened to the errors in
// between, by requests or by hand, they are those of a grouping from scratch.

namespace
{

using namespace Faultkeeper;
using Fixtures::Lines;
using Fixtures::NamesOf;

const std::string kFirst = "GPS:Ublox:Data:3";
const std::string kSecond = "GPS:Ublox:Power:4";
const std::string kParent = "Positioning:GPS:No Data:2";
const std::string kStranger = "System:GPS:No Network:20";

class ErrorDatabaseTopsTest : public testing::Test
{
protected:
    ErrorDatabaseTopsTest() : m_configuration(Definitions()), m_database(m_configuration.Path()) {}

    static Support::CConfigurationBuilder Definitions()
    {
        Support::CConfigurationBuilder builder;
        builder.Leaf(kFirst).Leaf(kSecond).Parent(kParent, {kFirst}).Leaf(kStranger);
        return builder;
    }

    /// The database's own error, to be changed by hand.
    CError& Own(const std::string& name)
    {
        for (const CError& error : m_database.GetErrorList())
            if (NamesOf(std::list<const CError*>{&error}).front() == name)
                return const_cast<CError&>(error);
        throw std::invalid_argument(name);
    }

    Lines InactiveTops()
    {
        m_database.UpdateErrorTree();
        return NamesOf(m_database.InactiveErrors(false));
    }

    Fixtures::CConfiguration m_configuration;
    CErrorDatabase m_database;
};

TEST_F(ErrorDatabaseTopsTest, AParentAddedByHandJoinsItsGroup)
{
    EXPECT_EQ(InactiveTops(), (Lines{kParent, kSecond, kStranger}));
    Own(kSecond).AddParent(&Own(kParent));
    EXPECT_EQ(InactiveTops(), (Lines{kParent, kStranger}));
}

TEST_F(ErrorDatabaseTopsTest, ATriggerSetAddedByHandJoinsItsTriggers)
{
    const std::size_t before = InactiveTops().size();
    CTriggerSet set(false, 1, eelmDeep, eetsParent);
    set.AddTrigger(&Own(kSecond));
    Own(kStranger).AddTriggerSet(set);
    EXPECT_EQ(InactiveTops().size(), before - 1);
}

TEST_F(ErrorDatabaseTopsTest, ParentsThatWereHandedOutMayChangeAtAnyTimeLater)
{
    std::list<CError*>& parents = Own(kStranger).Parents();
    const std::size_t before = InactiveTops().size();
    parents.push_back(&Own(kSecond));
    EXPECT_EQ(InactiveTops().size(), before - 1);
    parents.clear();
    EXPECT_EQ(InactiveTops().size(), before);
}

TEST_F(ErrorDatabaseTopsTest, AnErrorThatIsMovedFromStaysAsItIs)
{
    Own(kFirst).Raise(false);
    m_database.UpdateErrorTree();
    const CError taken(std::move(Own(kParent)));
    EXPECT_EQ(taken.TriggerSets().size(), 1u);
    EXPECT_EQ(Own(kParent).TriggerSets().size(), 1u);
    EXPECT_EQ(Own(kParent).ProblemText(), taken.ProblemText());
}

TEST_F(ErrorDatabaseTopsTest, LinksTakenOverByAssignmentCount)
{
    const std::size_t before = InactiveTops().size();
    CError changed(Own(kStranger));
    changed.AddParent(&Own(kSecond));
    Own(kStranger) = changed;
    EXPECT_EQ(InactiveTops().size(), before - 1);
}

TEST_F(ErrorDatabaseTopsTest, AnErrorRaisedWithoutTheDatabaseMovesToTheActiveTops)
{
    InactiveTops();
    Own(kStranger).Raise(true);
    m_database.UpdateErrorTree();
    EXPECT_EQ(NamesOf(m_database.ActiveErrors(false)), (Lines{kStranger}));
    Own(kStranger).Clear(true);
    m_database.UpdateErrorTree();
    EXPECT_EQ(NamesOf(m_database.ActiveErrors(false)), Lines{});
}

TEST_F(ErrorDatabaseTopsTest, AMarkSetByHandShowsTheErrorAsTouched)
{
    InactiveTops();
    Own(kStranger).Changed(true);
    m_database.UpdateErrorTree();
    EXPECT_EQ(NamesOf(m_database.InactiveErrors(true)), (Lines{kStranger}));
    EXPECT_FALSE(Own(kStranger).Changed());
    m_database.UpdateErrorTree();
    EXPECT_EQ(NamesOf(m_database.InactiveErrors(true)), Lines{});
    EXPECT_EQ(NamesOf(m_database.InactiveErrors(false)).size(), 3u);
}

TEST_F(ErrorDatabaseTopsTest, APositionThatGrowsMakesItsErrorTheTop)
{
    InactiveTops();
    CTriggerSet set(false, 1, eelmDeep, eetsParent);
    for (int i = 0; i < 9; ++i)
        set.AddTrigger(&Own(kStranger));
    Own(kFirst).AddTriggerSet(set);
    EXPECT_EQ(InactiveTops(), (Lines{kParent, kSecond, kStranger})) << "it still has its old position";
    Own(kFirst).RecalculatePosition();
    EXPECT_EQ(InactiveTops(), (Lines{kFirst, kSecond, kStranger}));
}

TEST_F(ErrorDatabaseTopsTest, ALinkToAnErrorOutsideTheDatabaseJoinsNothing)
{
    const std::size_t before = InactiveTops().size();
    CError outside(m_database);
    Own(kStranger).AddParent(&outside);
    Own(kSecond).AddParent(&outside);
    EXPECT_EQ(InactiveTops().size(), before);
    Own(kStranger).Parents().clear();
    Own(kSecond).Parents().clear();
}

TEST_F(ErrorDatabaseTopsTest, ErrorsAndTopsInOneListEndEmpty)
{
    std::list<const CError*> both{&Own(kFirst), &Own(kSecond)};
    m_database.UpdateErrorTree(both, both);
    EXPECT_TRUE(both.empty());
}

TEST_F(ErrorDatabaseTopsTest, ErrorsOfTwoDatabasesAreGroupedTogether)
{
    const CErrorDatabase other(m_configuration.Path());
    std::list<const CError*> errors;
    for (const CError& error : other.GetErrorList())
        errors.push_back(&error);
    for (const CError& error : m_database.GetErrorList())
        errors.push_back(&error);
    std::list<const CError*> tops;
    m_database.UpdateErrorTree(errors, tops);
    EXPECT_EQ(tops.size(), 6u);
    m_database.UpdateErrorTree(errors, tops);
    EXPECT_EQ(tops.size(), 6u) << "the same again";
}

// ---- At random

class ErrorDatabaseTopsModelTest : public testing::TestWithParam<unsigned>
{
protected:
    static constexpr int kErrors = 12;

    ErrorDatabaseTopsModelTest()
        : m_random(GetParam()), m_configuration(Definitions()), m_database(m_configuration.Path())
    {
    }

    static Support::CConfigurationBuilder Definitions()
    {
        Support::CConfigurationBuilder builder;
        for (int number = 0; number < kErrors; ++number)
            builder.Leaf("Positioning:GPS:No Data:" + std::to_string(number));
        builder.Leaf("Positioning:GPS:No Data:3"); // hides the one before
        return builder;
    }

    std::size_t Below(std::size_t limit) { return m_random() % limit; }
    CError& Any() { return const_cast<CError&>(m_database.GetErrorList()[Below(kErrors + 1)]); }

    void Touch()
    {
        CError& error = Any();
        CError& other = Any();
        switch (Below(8))
        {
        case 0:
            return error.AddParent(&other);
        case 1:
        {
            CTriggerSet set(false, 1, eelmDeep, eetsParent);
            set.AddTrigger(&other);
            return error.AddTriggerSet(set);
        }
        case 2:
            return error.RecalculatePosition();
        case 3:
            return m_database.RaiseError(error.ProblemCode(), error.ProblemType(), true);
        case 4:
            return m_database.ClearError(error.ProblemCode(), error.ProblemType(), true);
        case 5:
            return error.Raise(true);
        case 6:
            return error.Changed(true);
        default:
            if (Below(20) == 0)
                error.Parents().clear();
        }
    }

    /// The tops of one kind by the form that keeps nothing.
    std::list<const CError*> Expected(bool active, const std::vector<const CError*>& among)
    {
        std::list<const CError*> errors;
        for (int number = 0; number < kErrors; ++number)
        {
            const CError* const error = m_database.RetrieveError(Any().ProblemCode(), number);
            const bool listed = std::find(among.begin(), among.end(), error) != among.end();
            if (error->Active() == active && listed)
                errors.push_back(error);
        }
        std::list<const CError*> tops;
        m_database.UpdateErrorTree(errors, tops);
        return tops;
    }

    std::mt19937 m_random;
    Fixtures::CConfiguration m_configuration;
    CErrorDatabase m_database;
};

TEST_P(ErrorDatabaseTopsModelTest, TheListsAreThoseOfAGroupingFromScratch)
{
    for (int round = 0; round < 300; ++round)
    {
        for (std::size_t touches = Below(4); touches > 0; --touches)
            Touch();
        std::vector<const CError*> all;
        std::vector<const CError*> changed;
        for (int number = 0; number < kErrors; ++number)
        {
            all.push_back(m_database.RetrieveError(Any().ProblemCode(), number));
            if (all.back()->Changed())
                changed.push_back(all.back());
        }
        m_database.UpdateErrorTree();
        ASSERT_EQ(m_database.ActiveErrors(false), Expected(true, all)) << "round " << round;
        ASSERT_EQ(m_database.InactiveErrors(false), Expected(false, all)) << "round " << round;
        ASSERT_EQ(m_database.ActiveErrors(true), Expected(true, changed)) << "round " << round;
        ASSERT_EQ(m_database.InactiveErrors(true), Expected(false, changed)) << "round " << round;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ErrorDatabaseTopsModelTest, testing::Range(0U, 20U));

} // namespace
