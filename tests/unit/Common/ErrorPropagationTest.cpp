#include <Faultkeeper/Error.h>

#include "unit/Common/fixtures/HandMadeErrors.h"

#include <gtest/gtest.h>

namespace
{

using namespace Faultkeeper;
using Fixtures::Lines;

class ErrorPropagationTest : public Fixtures::HandMadeErrorsTest
{
protected:
    Lines HeardWhenRaising(const std::string& label)
    {
        Error(label).Raise(false);
        return Heard();
    }

    Lines HeardWhenClearing(const std::string& label)
    {
        Error(label).Clear(false);
        return Heard();
    }

    void RaiseSilently(const std::string& label) { Error(label).Raise(true); }
};

// ---- The error itself

TEST_F(ErrorPropagationTest, ARaiseMakesTheErrorActiveAndIsReported)
{
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a"}));
    EXPECT_TRUE(Error("a").Active());
}

TEST_F(ErrorPropagationTest, AClearMakesTheErrorInactiveAndIsReported)
{
    RaiseSilently("a");
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a"}));
    EXPECT_FALSE(Error("a").Active());
}

TEST_F(ErrorPropagationTest, RaisingAnActiveErrorAgainIsReportedAgainAndOfferedAgain)
{
    Link("p", {"a"});
    HeardWhenRaising("a");
    Error("p").Clear(true);
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a", "raised p"}));
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a"}));
}

TEST_F(ErrorPropagationTest, ClearingAnInactiveErrorAgainIsReportedAgainAndOfferedAgain)
{
    Link("p", {"a"});
    RaiseSilently("p");
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a", "cleared p"}));
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a"}));
}

TEST_F(ErrorPropagationTest, ASilentRaiseReportsNothingAndLeavesTheParentAlone)
{
    Link("p", {"a"});
    RaiseSilently("a");
    EXPECT_TRUE(Error("a").Active());
    EXPECT_FALSE(Error("p").Active());
    EXPECT_EQ(Heard(), Lines{});
}

TEST_F(ErrorPropagationTest, ASilentClearReportsNothingAndLeavesTheParentAlone)
{
    Link("p", {"a"});
    HeardWhenRaising("a");
    Error("a").Clear(true);
    EXPECT_FALSE(Error("a").Active());
    EXPECT_TRUE(Error("p").Active());
    EXPECT_EQ(Heard(), Lines{});
}

TEST_F(ErrorPropagationTest, NoRaiseOrClearSetsTheChangedMark)
{
    Link("p", {"a"});
    HeardWhenRaising("a");
    HeardWhenClearing("a");
    EXPECT_FALSE(Error("a").Changed());
    EXPECT_FALSE(Error("p").Changed());
}

TEST_F(ErrorPropagationTest, WithoutAListenerParentsFollowAllTheSame)
{
    Link("p", {"a"});
    m_database.SetCallback(nullptr);
    Error("a").Raise(false);
    EXPECT_TRUE(Error("p").Active());
}

// ---- Order

TEST_F(ErrorPropagationTest, TheListenerHearsOfTheChildWhileTheParentIsStillAsItWas)
{
    Link("p", {"a"});
    Lines states;
    m_whenHeard = [&]
    { states.push_back(std::string(Error("a").Active() ? "a" : "-") + (Error("p").Active() ? "p" : "-")); };
    HeardWhenRaising("a");
    HeardWhenClearing("a");
    EXPECT_EQ(states, (Lines{"a-", "ap", "-p", "--"}));
}

TEST_F(ErrorPropagationTest, ParentsFollowInTheOrderOfTheParentList)
{
    for (const std::string& parent : Lines{"p1", "p2", "p3"})
        Error(parent).AddTriggerSet(SetOf({"a"}));
    for (const std::string& parent : Lines{"p3", "p1", "p2"})
        Error("a").AddParent(&Error(parent));
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a", "raised p3", "raised p1", "raised p2"}));
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a", "cleared p3", "cleared p1", "cleared p2"}));
}

TEST_F(ErrorPropagationTest, WhatIsAboveTheFirstParentComesBeforeTheSecond)
{
    Link("p1", {"a"});
    Link("p2", {"a"});
    Link("g1", {"p1"});
    Link("top", {"g1"});
    EXPECT_EQ(HeardWhenRaising("a"),
              (Lines{"raised a", "raised p1", "raised g1", "raised top", "raised p2"}));
    EXPECT_EQ(HeardWhenClearing("a"),
              (Lines{"cleared a", "cleared p1", "cleared g1", "cleared top", "cleared p2"}));
}

TEST_F(ErrorPropagationTest, AGrandparentOfTwoNeededFollowsTheSecondParentAndLeavesWithTheFirst)
{
    Link("p1", {"a"});
    Link("p2", {"a"});
    Link("g", {"p1", "p2"}, 2);
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a", "raised p1", "raised p2", "raised g"}));
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a", "cleared p1", "cleared g", "cleared p2"}));
}

// ---- Parents that follow a raise

TEST_F(ErrorPropagationTest, TwoNeededRaiseTheParentWithTheSecondMember)
{
    Link("p", {"a", "b"}, 2);
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a"}));
    EXPECT_EQ(HeardWhenRaising("b"), (Lines{"raised b", "raised p"}));
}

TEST_F(ErrorPropagationTest, ASilentlyRaisedMemberCountsForALaterRaise)
{
    Link("p", {"a", "b"}, 2);
    RaiseSilently("a");
    EXPECT_EQ(HeardWhenRaising("b"), (Lines{"raised b", "raised p"}));
}

TEST_F(ErrorPropagationTest, AnActiveParentIsLeftAloneAndSoIsWhatIsAboveIt)
{
    Link("g", {"p"});
    Link("p", {"a"});
    RaiseSilently("p");
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a"}));
    EXPECT_FALSE(Error("g").Active());
}

TEST_F(ErrorPropagationTest, AParentWithoutTriggerSetsDoesNothing)
{
    Error("a").AddParent(&Error("p"));
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a"}));
    RaiseSilently("p");
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a"}));
}

TEST_F(ErrorPropagationTest, AParentWhoseSetsDoNotHoldTheChildDoesNothing)
{
    Error("p").AddTriggerSet(SetOf({"b"}, 0));
    Error("a").AddParent(&Error("p"));
    RaiseSilently("b");
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a"}));
    RaiseSilently("p");
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a"}));
}

TEST_F(ErrorPropagationTest, AnySatisfiedAutomaticSetRaisesTheParent)
{
    Error("p").AddTriggerSet(SetOf({"a", "b"}, 2));
    Error("p").AddTriggerSet(SetOf({"c"}));
    Error("p").AddTriggerSet(SetOf({"a"}));
    Error("a").AddParent(&Error("p"));
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a", "raised p"}));
}

TEST_F(ErrorPropagationTest, ASetThatIsNotAutomaticRaisesNothing)
{
    Link("p", {"a"}, 1, false);
    Link("p", {"a", "b"}, 2, true);
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a"}));
}

TEST_F(ErrorPropagationTest, AParentWithoutAutomaticSetsMovesOnlyByDirectRequest)
{
    Link("p", {"a"}, 1, false);
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a"}));
    EXPECT_EQ(HeardWhenRaising("p"), (Lines{"raised p"}));
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a"}));
    EXPECT_TRUE(Error("p").Active());
}

TEST_F(ErrorPropagationTest, AChildListedTwiceCountsTwiceWhenRaised)
{
    Link("p", {"a", "a", "b"}, 2);
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a", "raised p"}));
}

TEST_F(ErrorPropagationTest, ThresholdsOfZeroAndLessAreMetByAnyMember)
{
    Link("p", {"a", "b"}, 0);
    Link("q", {"a", "b"}, -3);
    EXPECT_EQ(HeardWhenRaising("b"), (Lines{"raised b", "raised p", "raised q"}));
}

// ---- Parents that follow a clear

TEST_F(ErrorPropagationTest, OneNeededKeepsTheParentUntilTheLastActiveMemberIsCleared)
{
    Link("p", {"a", "b"});
    HeardWhenRaising("a");
    HeardWhenRaising("b");
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a"}));
    EXPECT_EQ(HeardWhenClearing("b"), (Lines{"cleared b", "cleared p"}));
}

TEST_F(ErrorPropagationTest, TwoNeededClearTheParentWithTheFirstOfTwo)
{
    Link("p", {"a", "b"}, 2);
    HeardWhenRaising("a");
    HeardWhenRaising("b");
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a", "cleared p"}));
    EXPECT_EQ(HeardWhenClearing("b"), (Lines{"cleared b"}));
}

TEST_F(ErrorPropagationTest, AnInactiveParentIsLeftAloneAndSoIsWhatIsAboveIt)
{
    Link("g", {"p"});
    Link("p", {"a"});
    RaiseSilently("a");
    RaiseSilently("g");
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a"}));
    EXPECT_TRUE(Error("g").Active());
}

TEST_F(ErrorPropagationTest, AnAutomaticSetWithoutTheChildKeepsTheParentActive)
{
    Link("p", {"a"});
    Link("p", {"b"});
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a", "raised p"}));
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a"}));
    EXPECT_TRUE(Error("p").Active());
}

TEST_F(ErrorPropagationTest, TheOrderOfTheSetsDoesNotMatter)
{
    Link("p", {"b"});
    Link("p", {"a"});
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a", "raised p"}));
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a"}));
}

TEST_F(ErrorPropagationTest, EverySetWithTheChildMustLoseItsThresholdToClearTheParent)
{
    Link("p", {"a", "b"}, 2);
    Link("p", {"a", "c"}, 1);
    RaiseSilently("b");
    RaiseSilently("c");
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a", "raised p"}));
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a"})); // c still meets the second set
    Error("c").Clear(true);
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a", "cleared p"}));
}

TEST_F(ErrorPropagationTest, ASetThatIsNotAutomaticDoesNotKeepTheParent)
{
    Link("p", {"a"});
    Link("p", {"b"}, 1, false);
    RaiseSilently("b");
    HeardWhenRaising("a");
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a", "cleared p"}));
}

TEST_F(ErrorPropagationTest, AnEmptyAutomaticSetKeepsTheParentForGood)
{
    Link("p", {"a"});
    Link("p", {});
    HeardWhenRaising("a");
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a"}));
    EXPECT_TRUE(Error("p").Active());
}

TEST_F(ErrorPropagationTest, AThresholdOfZeroKeepsTheParentForGood)
{
    Link("p", {"a"}, 0);
    HeardWhenRaising("a");
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a"}));
    EXPECT_TRUE(Error("p").Active());
}

TEST_F(ErrorPropagationTest, AChildListedTwiceDoesNotCountOnceItIsCleared)
{
    Link("p", {"a", "a", "b"}, 2);
    HeardWhenRaising("a");
    RaiseSilently("b");
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a", "cleared p"}));
}

TEST_F(ErrorPropagationTest, AMemberListedTwiceKeepsTheParentOfTwoNeeded)
{
    Link("p", {"a", "b", "b"}, 2);
    HeardWhenRaising("b");
    HeardWhenRaising("a");
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a"}));
    EXPECT_EQ(HeardWhenClearing("b"), (Lines{"cleared b", "cleared p"}));
}

// ---- Cycles and words from children themselves

TEST_F(ErrorPropagationTest, ACycleOfAutomaticSetsEndsWhereItBegan)
{
    Link("b", {"a"});
    Link("c", {"b"});
    Link("a", {"c"});
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a", "raised b", "raised c"}));
    EXPECT_EQ(HeardWhenClearing("b"), (Lines{"cleared b", "cleared c", "cleared a"}));
}

TEST_F(ErrorPropagationTest, AnErrorThatTriggersItselfEndsToo)
{
    Link("a", {"a"});
    EXPECT_EQ(HeardWhenRaising("a"), (Lines{"raised a"}));
    EXPECT_EQ(HeardWhenClearing("a"), (Lines{"cleared a"}));
}

TEST_F(ErrorPropagationTest, AWordFromTheChildIsEnough)
{
    Error("p").AddTriggerSet(SetOf({"a"}));
    Error("p").ChildRaised(&Error("a")); // whatever the child's state and its parent list
    EXPECT_EQ(Heard(), (Lines{"raised p"}));
    Error("p").ChildCleared(&Error("a"));
    EXPECT_EQ(Heard(), (Lines{"cleared p"}));
}

TEST_F(ErrorPropagationTest, AWordFromAStrangerIsIgnored)
{
    Error("p").AddTriggerSet(SetOf({"a"}));
    RaiseSilently("a");
    Error("p").ChildRaised(&Error("stranger"));
    Error("p").ChildRaised(nullptr);
    EXPECT_FALSE(Error("p").Active());
    RaiseSilently("p");
    Error("p").ChildCleared(&Error("stranger"));
    Error("p").ChildCleared(nullptr);
    EXPECT_TRUE(Error("p").Active());
    EXPECT_EQ(Heard(), Lines{});
}

} // namespace
