#include <Faultkeeper/TriggerSet.h>

#include "unit/Common/fixtures/HandMadeErrors.h"

#include <gtest/gtest.h>

#include <climits>
#include <list>
#include <type_traits>

namespace
{

using namespace Faultkeeper;

class TriggerSetTest : public Fixtures::HandMadeErrorsTest
{
protected:
    CError& Active(const std::string& label)
    {
        Error(label).Raise(true);
        return Error(label);
    }
};

// ---- What a set holds

TEST_F(TriggerSetTest, LinkingModesAndTitleSourcesKeepTheirNumbers)
{
    EXPECT_EQ(static_cast<int>(eelmDeep), 0);
    EXPECT_EQ(static_cast<int>(eelmVerbose), 1);
    EXPECT_EQ(static_cast<int>(eelmShallow), 2);
    EXPECT_EQ(static_cast<int>(eelmChildOnly), 3);
    EXPECT_EQ(static_cast<int>(eetsParent), 0);
    EXPECT_EQ(static_cast<int>(eetsTrigger), 1);
}

TEST_F(TriggerSetTest, ANewSetHoldsWhatItWasGivenAndNoTriggers)
{
    const CTriggerSet set(true, 7, eelmShallow, eetsTrigger);
    EXPECT_TRUE(set.AutoTrigger());
    EXPECT_EQ(set.TriggersRequired(), 7);
    EXPECT_EQ(set.LinkingMode(), eelmShallow);
    EXPECT_EQ(set.TitleSource(), eetsTrigger);
    EXPECT_TRUE(set.Triggers().empty());
}

TEST_F(TriggerSetTest, EachSetterChangesItsOwnFieldOnly)
{
    CTriggerSet set(false, 1, eelmDeep, eetsParent);
    set.AutoTrigger(true);
    EXPECT_TRUE(set.AutoTrigger());
    EXPECT_EQ(set.TriggersRequired(), 1);
    set.TriggersRequired(-5);
    EXPECT_EQ(set.TriggersRequired(), -5);
    EXPECT_EQ(set.LinkingMode(), eelmDeep);
    set.LinkingMode(eelmChildOnly);
    EXPECT_EQ(set.LinkingMode(), eelmChildOnly);
    EXPECT_EQ(set.TitleSource(), eetsParent);
    set.TitleSource(eetsTrigger);
    EXPECT_EQ(set.TitleSource(), eetsTrigger);
    set.AutoTrigger(false);
    EXPECT_FALSE(set.AutoTrigger());
    EXPECT_EQ(set.TriggersRequired(), -5);
}

TEST_F(TriggerSetTest, TriggersStandInTheOrderAddedDuplicatesIncluded)
{
    const CTriggerSet set = SetOf({"b", "a", "b"});
    EXPECT_EQ(set.Triggers(), (std::list<CError*>{&Error("b"), &Error("a"), &Error("b")}));
}

TEST_F(TriggerSetTest, HasTriggerKnowsTheObjectNotItsIdentifier)
{
    const CTriggerSet set = SetOf({"a"});
    const CError twin(Error("a"));
    EXPECT_TRUE(set.HasTrigger(&Error("a")));
    EXPECT_FALSE(set.HasTrigger(&twin));
    EXPECT_FALSE(set.HasTrigger(nullptr));
    EXPECT_FALSE(SetOf({}).HasTrigger(&Error("a")));
}

TEST_F(TriggerSetTest, ACopyHasAListOfItsOwn)
{
    CTriggerSet original(true, 3, eelmVerbose, eetsTrigger);
    original.AddTrigger(&Error("a"));
    CTriggerSet copy(original);
    copy.AddTrigger(&Error("b"));
    EXPECT_EQ(original.Triggers(), (std::list<CError*>{&Error("a")}));
    EXPECT_EQ(copy.Triggers(), (std::list<CError*>{&Error("a"), &Error("b")}));
    EXPECT_TRUE(copy.AutoTrigger());
    EXPECT_EQ(copy.TriggersRequired(), 3);
    EXPECT_EQ(copy.LinkingMode(), eelmVerbose);
    EXPECT_EQ(copy.TitleSource(), eetsTrigger);
}

TEST_F(TriggerSetTest, AssignmentReplacesEveryField)
{
    CTriggerSet original(true, 3, eelmVerbose, eetsTrigger);
    original.AddTrigger(&Error("a"));
    CTriggerSet target = SetOf({"b", "c"}, 1, false);
    target = original;
    original.AddTrigger(&Error("d"));
    EXPECT_EQ(target.Triggers(), (std::list<CError*>{&Error("a")}));
    EXPECT_TRUE(target.AutoTrigger());
    EXPECT_EQ(target.TriggersRequired(), 3);
    EXPECT_EQ(target.LinkingMode(), eelmVerbose);
    EXPECT_EQ(target.TitleSource(), eetsTrigger);
}

// ---- Is it satisfied by a raise?

TEST_F(TriggerSetTest, AnEmptySetIsNotSatisfiedByARaise)
{
    EXPECT_FALSE(SetOf({}, 0).Raised(&Active("a")));
    EXPECT_FALSE(SetOf({}, -1).Raised(nullptr));
}

TEST_F(TriggerSetTest, ASetIsNotSatisfiedByTheRaiseOfAStranger)
{
    Active("a");
    Active("b");
    EXPECT_FALSE(SetOf({"a", "b"}, 1).Raised(&Active("stranger")));
    EXPECT_FALSE(SetOf({"a", "b"}, 0).Raised(nullptr));
}

TEST_F(TriggerSetTest, TheRaisedChildCountsWhateverItsOwnState)
{
    const CTriggerSet set = SetOf({"a", "b"}, 1);
    EXPECT_FALSE(Error("a").Active());
    EXPECT_TRUE(set.Raised(&Error("a")));
    EXPECT_TRUE(set.Raised(&Active("a")));
}

TEST_F(TriggerSetTest, TwoNeededAreTheRaisedChildAndAnActiveOne)
{
    const CTriggerSet set = SetOf({"a", "b", "c"}, 2);
    EXPECT_FALSE(set.Raised(&Error("a")));
    Active("c");
    EXPECT_TRUE(set.Raised(&Error("a")));
    EXPECT_TRUE(set.Raised(&Error("b")));
    EXPECT_FALSE(set.Raised(&Error("c"))); // already active, but counts once
}

TEST_F(TriggerSetTest, EveryListingOfTheRaisedChildCounts)
{
    EXPECT_TRUE(SetOf({"a", "b", "a"}, 2).Raised(&Error("a")));
    EXPECT_FALSE(SetOf({"a", "b", "a"}, 3).Raised(&Error("a")));
}

TEST_F(TriggerSetTest, EveryListingOfAnActiveOtherCounts)
{
    Active("b");
    EXPECT_TRUE(SetOf({"a", "b", "b"}, 3).Raised(&Error("a")));
    EXPECT_FALSE(SetOf({"a", "b", "b"}, 4).Raised(&Error("a")));
}

TEST_F(TriggerSetTest, ZeroOrFewerNeededAreSatisfiedByAnyMember)
{
    for (const int needed : {0, -1, INT_MIN})
        EXPECT_TRUE(SetOf({"a", "b"}, needed).Raised(&Error("b"))) << needed;
}

TEST_F(TriggerSetTest, MoreNeededThanThereAreIsNeverSatisfied)
{
    Active("b");
    EXPECT_FALSE(SetOf({"a", "b"}, 3).Raised(&Error("a")));
    EXPECT_FALSE(SetOf({"a", "b"}, INT_MAX).Raised(&Error("a")));
}

TEST_F(TriggerSetTest, TheTestsDoNotAskWhetherTheSetIsAutomatic)
{
    EXPECT_TRUE(SetOf({"a"}, 1, false).Raised(&Error("a")));
    EXPECT_TRUE(SetOf({"a"}, 1, false).Cleared(&Error("a")));
}

// ---- Is it no longer satisfied after a clear?

TEST_F(TriggerSetTest, AnEmptySetIsNotClearedByAnything)
{
    EXPECT_FALSE(SetOf({}, 1).Cleared(&Error("a")));
    EXPECT_FALSE(SetOf({}, INT_MAX).Cleared(nullptr));
}

TEST_F(TriggerSetTest, ASetIsNotClearedByAStranger)
{
    EXPECT_FALSE(SetOf({"a", "b"}, 1).Cleared(&Error("stranger")));
    EXPECT_FALSE(SetOf({"a", "b"}, 1).Cleared(nullptr));
}

TEST_F(TriggerSetTest, TheClearedChildDoesNotCountWhateverItsOwnState)
{
    const CTriggerSet set = SetOf({"a", "b", "a"}, 1);
    EXPECT_TRUE(set.Cleared(&Error("a")));
    EXPECT_TRUE(set.Cleared(&Active("a")));
}

TEST_F(TriggerSetTest, AnActiveOtherKeepsASetOfOneNeededSatisfied)
{
    const CTriggerSet set = SetOf({"a", "b"}, 1);
    Active("b");
    EXPECT_FALSE(set.Cleared(&Error("a")));
    EXPECT_TRUE(set.Cleared(&Error("b")));
}

TEST_F(TriggerSetTest, FewerActiveOthersThanNeededClearTheSet)
{
    const CTriggerSet set = SetOf({"a", "b", "c"}, 2);
    Active("b");
    EXPECT_TRUE(set.Cleared(&Error("a")));
    Active("c");
    EXPECT_FALSE(set.Cleared(&Error("a")));
}

TEST_F(TriggerSetTest, EveryListingOfAnActiveOtherKeepsTheSetSatisfied)
{
    Active("b");
    EXPECT_FALSE(SetOf({"a", "b", "b"}, 2).Cleared(&Error("a")));
    EXPECT_TRUE(SetOf({"a", "b", "b"}, 3).Cleared(&Error("a")));
}

TEST_F(TriggerSetTest, ZeroOrFewerNeededAreNeverCleared)
{
    for (const int needed : {0, -1, INT_MIN})
        EXPECT_FALSE(SetOf({"a", "b"}, needed).Cleared(&Error("a"))) << needed;
}

TEST_F(TriggerSetTest, TestsOfASetAreAvailableOnAConstantOne)
{
    EXPECT_TRUE(
        (std::is_invocable_r<bool, decltype(&CTriggerSet::Raised), const CTriggerSet&, CError*>::value));
    EXPECT_TRUE(
        (std::is_invocable_r<bool, decltype(&CTriggerSet::Cleared), const CTriggerSet&, CError*>::value));
}

} // namespace
