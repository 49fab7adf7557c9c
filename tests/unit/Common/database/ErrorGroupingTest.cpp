#include <Faultkeeper/ErrorDatabase.h>

#include "unit/Common/fixtures/GroupingModel.h"
#include "unit/Common/fixtures/HandMadeErrors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <memory>
#include <random>

namespace
{

using namespace Faultkeeper;
using Fixtures::Lines;

/// Groups lists of hand-made errors. A new error has position 1; a trigger outside the lists makes it larger.
class ErrorGroupingTest : public Fixtures::HandMadeErrorsTest
{
protected:
    Lines TopsOf(const Lines& labels)
    {
        std::list<const CError*> errors;
        for (const std::string& label : labels)
            errors.push_back(&Error(label));
        std::list<const CError*> tops;
        m_database.UpdateErrorTree(errors, tops);
        Lines names;
        for (const CError* top : tops)
            names.push_back(LabelOf(*top));
        return names;
    }

    /// The labels are single letters, made in the order of their problem numbers.
    const std::string& LabelOf(const CError& error)
    {
        return m_made.at(static_cast<std::size_t>(error.ProblemId() - 1));
    }

    void Make(const Lines& labels)
    {
        for (const std::string& label : labels)
        {
            Error(label);
            m_made.push_back(label);
        }
    }

    void Place(const std::string& label, int position)
    {
        Error(label).RecalculatePosition();
        CTriggerSet set(false, 1, eelmDeep, eetsParent);
        for (int reached = Error(label).Position(); reached < position; ++reached)
            set.AddTrigger(m_outside.get());
        Error(label).AddTriggerSet(set);
        Error(label).RecalculatePosition();
        ASSERT_EQ(Error(label).Position(), position);
    }

    /// Both say that they are linked.
    void Join(const std::string& parent, const std::string& child) { Link(parent, {child}); }
    /// Only the child says so.
    void JoinFromBelow(const std::string& parent, const std::string& child)
    {
        Error(child).AddParent(&Error(parent));
    }
    /// Only the parent says so.
    void JoinFromAbove(const std::string& parent, const std::string& child)
    {
        Error(parent).AddTriggerSet(SetOf({child}));
    }

    std::unique_ptr<CError> m_outside = std::make_unique<CError>(m_database);
    Lines m_made;
};

TEST_F(ErrorGroupingTest, AnEmptyListHasNoTops)
{
    EXPECT_EQ(TopsOf({}), Lines{});
}

TEST_F(ErrorGroupingTest, WhatTheListOfTopsHeldBeforeIsGone)
{
    Make({"a", "b"});
    std::list<const CError*> errors{&Error("a")};
    std::list<const CError*> tops{&Error("b"), &Error("b"), nullptr};
    m_database.UpdateErrorTree(errors, tops);
    EXPECT_EQ(tops, (std::list<const CError*>{&Error("a")}));
    errors.clear();
    m_database.UpdateErrorTree(errors, tops);
    EXPECT_TRUE(tops.empty());
}

TEST_F(ErrorGroupingTest, TheGivenListIsLeftAsItIs)
{
    Make({"a", "b", "c"});
    Join("a", "c");
    std::list<const CError*> errors{&Error("c"), &Error("a"), &Error("c"), &Error("b")};
    const std::list<const CError*> before = errors;
    std::list<const CError*> tops;
    m_database.UpdateErrorTree(errors, tops);
    EXPECT_EQ(errors, before);
}

TEST_F(ErrorGroupingTest, StrangersAreTopsOfTheirOwnInTheOrderGiven)
{
    Make({"a", "b", "c"});
    EXPECT_EQ(TopsOf({"c", "a", "b"}), (Lines{"c", "a", "b"}));
}

TEST_F(ErrorGroupingTest, TheLargestPositionOfAGroupIsItsTop)
{
    Make({"a", "b", "c"});
    Join("b", "a");
    Join("b", "c");
    Error("b").RecalculatePosition();
    EXPECT_EQ(TopsOf({"a", "b", "c"}), (Lines{"b"}));
    EXPECT_EQ(TopsOf({"c", "b"}), (Lines{"b"}));
}

TEST_F(ErrorGroupingTest, TheTopNeedNotBeAboveTheOthers)
{
    Make({"a", "b"});
    Join("a", "b");
    Place("b", 7);
    EXPECT_EQ(TopsOf({"a", "b"}), (Lines{"b"}));
}

TEST_F(ErrorGroupingTest, LinksThroughAnErrorThatIsNotGivenDoNotCount)
{
    Make({"g", "p", "a", "b"});
    Join("g", "p");
    Join("p", "a");
    Join("p", "b");
    EXPECT_EQ(TopsOf({"g", "a", "b"}), (Lines{"g", "a", "b"}));
}

TEST_F(ErrorGroupingTest, GroupsComeInTheOrderOfTheirFirstMembers)
{
    Make({"a", "b", "c", "d"});
    Join("d", "a");
    Join("c", "b");
    Place("d", 5);
    Place("c", 9);
    EXPECT_EQ(TopsOf({"a", "b", "c", "d"}), (Lines{"d", "c"}));
    EXPECT_EQ(TopsOf({"b", "d", "a", "c"}), (Lines{"c", "d"}));
}

// ---- Ties

TEST_F(ErrorGroupingTest, OfEqualPositionsTheFirstGivenIsTheTop)
{
    Make({"a", "b", "c"});
    Join("a", "b");
    Join("b", "c");
    EXPECT_EQ(TopsOf({"c", "b", "a"}), (Lines{"c"}));
    EXPECT_EQ(TopsOf({"b", "c", "a"}), (Lines{"b"}));
}

TEST_F(ErrorGroupingTest, OfEqualPositionsTheOneThatJoinedInAnEarlierPassIsTheTop)
{
    Make({"e", "b", "c"});
    Join("e", "c");
    Join("c", "b");
    Place("c", 5);
    Place("b", 5);
    EXPECT_EQ(TopsOf({"e", "b", "c"}), (Lines{"c"})); // b knows only c, so it joins a pass later
}

TEST_F(ErrorGroupingTest, WhoJoinsInTheMiddleOfAPassBringsTheNextOnesAtOnce)
{
    Make({"e", "a", "b", "d"});
    Join("e", "a");
    Join("a", "b");
    Join("e", "d");
    Place("b", 5);
    Place("d", 5);
    EXPECT_EQ(TopsOf({"e", "a", "b", "d"}), (Lines{"b"})); // though d is nearer to e
}

// ---- Links that only one side knows

TEST_F(ErrorGroupingTest, OnlyTheLaterErrorIsAskedForTheLink)
{
    Make({"p", "a"});
    JoinFromBelow("p", "a");
    EXPECT_EQ(TopsOf({"p", "a"}), (Lines{"p"}));
    EXPECT_EQ(TopsOf({"a", "p"}), (Lines{"a", "p"}));
}

TEST_F(ErrorGroupingTest, ALinkKnownAboveOnlyIsAskedTheOtherWayRound)
{
    Make({"p", "a"});
    JoinFromAbove("p", "a");
    EXPECT_EQ(TopsOf({"p", "a"}), (Lines{"p", "a"}));
    EXPECT_EQ(TopsOf({"a", "p"}), (Lines{"a"}));
}

TEST_F(ErrorGroupingTest, AnEarlierErrorMayJoinThroughALaterOne)
{
    Make({"e", "a", "b"});
    JoinFromBelow("e", "b");
    JoinFromBelow("b", "a");
    EXPECT_EQ(TopsOf({"e", "a", "b"}), (Lines{"e"}));
    EXPECT_EQ(TopsOf({"e", "b", "a"}), (Lines{"e"}));
    EXPECT_EQ(TopsOf({"a", "b", "e"}), (Lines{"a", "b", "e"}));
}

// ---- Odd lists

TEST_F(ErrorGroupingTest, AStrangerGivenTwiceIsTwoTops)
{
    Make({"a", "b"});
    EXPECT_EQ(TopsOf({"a", "b", "a"}), (Lines{"a", "b", "a"}));
}

TEST_F(ErrorGroupingTest, AnErrorGivenTwiceJoinsTwiceThroughAnother)
{
    Make({"a", "b"});
    Join("a", "b");
    EXPECT_EQ(TopsOf({"a", "b", "a"}), (Lines{"a"}));
    EXPECT_EQ(TopsOf({"a", "a", "b"}), (Lines{"a"})); // the second joins through b, a pass later
}

TEST_F(ErrorGroupingTest, AnErrorLinkedToItselfJoinsItselfAndEnds)
{
    Make({"a", "b"});
    Join("a", "a");
    EXPECT_EQ(TopsOf({"a", "b", "a"}), (Lines{"a", "b"}));
    Join("b", "b");
    Join("b", "a");
    EXPECT_EQ(TopsOf({"b", "a", "b", "a"}), (Lines{"b"}));
}

// ---- Against the plain way

/// Random links known to both sides, to the parent or to the child, with few different positions, and random
/// lists.
class ErrorGroupingModelTest : public ErrorGroupingTest, public testing::WithParamInterface<unsigned>
{
protected:
    std::size_t Below(std::size_t limit) { return m_random() % limit; }

    void MakeRandomGraph()
    {
        const std::size_t count = 2 + Below(19);
        for (std::size_t error = 0; error < count; ++error)
            Make({std::string(1, static_cast<char>('a' + error))});
        for (const std::string& label : m_made)
            Place(label, 1 + static_cast<int>(Below(4)));
        for (std::size_t links = Below(2 * count); links > 0; --links)
            AddRandomLink();
    }

    void AddRandomLink()
    {
        const std::string& parent = m_made[Below(m_made.size())];
        const std::string& child = m_made[Below(m_made.size())];
        switch (Below(4))
        {
        case 0:
            JoinFromAbove(parent, child);
            break;
        case 1:
            JoinFromBelow(parent, child);
            break;
        default:
            Join(parent, child);
            break;
        }
    }

    /// Some of the errors, in any order, now and then one twice.
    Lines RandomList()
    {
        Lines labels;
        for (const std::string& label : m_made)
        {
            if (Below(4) != 0)
                labels.push_back(label);
            if (Below(8) == 0)
                labels.push_back(label);
        }
        std::shuffle(labels.begin(), labels.end(), m_random);
        return labels;
    }

    Lines ExpectedTopsOf(const Lines& labels)
    {
        Lines tops;
        for (const std::size_t top : Fixtures::TopsByPasses(
                 labels.size(),
                 [&](std::size_t c, std::size_t g)
                 { return Error(labels[c]).IsRelatedTo(&Error(labels[g])); },
                 [&](std::size_t e) { return Error(labels[e]).Position(); }))
            tops.push_back(labels[top]);
        return tops;
    }

    std::mt19937 m_random{GetParam()};
};

TEST_P(ErrorGroupingModelTest, TopsAreThoseFoundPassAfterPass)
{
    MakeRandomGraph();
    for (int round = 0; round < 40; ++round)
    {
        const Lines labels = RandomList();
        ASSERT_EQ(TopsOf(labels), ExpectedTopsOf(labels)) << testing::PrintToString(labels);
        AddRandomLink();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ErrorGroupingModelTest, testing::Range(0u, 50u));

} // namespace
