#include <Faultkeeper/Error.h>

#include "unit/Common/fixtures/HandMadeErrors.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <list>
#include <string>
#include <utility>

namespace
{

using namespace Faultkeeper;

class ErrorTest : public Fixtures::HandMadeErrorsTest
{
protected:
    /// Visible, active, changed, high, with all texts, a set and a parent; includes the service number and
    /// beeps.
    CError& Rich()
    {
        if (!m_rich)
        {
            m_rich =
                std::make_unique<CError>(m_database, emiPositioning, esmiGPS, epiNoData,
                                         eptAbnormalUpdateRate, eesHigh, true, true, true, true, true, true);
            m_rich->ProblemText("problem");
            m_rich->SolutionText("solution");
            m_rich->ShortProblemText("short");
            m_rich->TitleText("title");
            m_rich->Changed(true);
            m_rich->Raise(true);
            m_rich->AddTriggerSet(SetOf({"a", "b"}, 2));
            m_rich->AddParent(&Error("parent"));
            m_rich->RecalculatePosition();
        }
        return *m_rich;
    }

    static void ExpectAssignedFields(const CError& actual, const CError& expected)
    {
        EXPECT_EQ(actual.ProblemCode(), expected.ProblemCode());
        EXPECT_EQ(actual.ProblemType(), expected.ProblemType());
        EXPECT_EQ(actual.ProblemText(), expected.ProblemText());
        EXPECT_EQ(actual.SolutionText(), expected.SolutionText());
        EXPECT_EQ(actual.ShortProblemText(), expected.ShortProblemText());
        EXPECT_EQ(actual.TitleText(), expected.TitleText());
        EXPECT_EQ(actual.Visible(), expected.Visible());
        EXPECT_EQ(actual.Active(), expected.Active());
        EXPECT_EQ(actual.FullScreen(), expected.FullScreen());
        EXPECT_EQ(actual.ForceShutdown(), expected.ForceShutdown());
        EXPECT_EQ(actual.Changed(), expected.Changed());
        EXPECT_EQ(actual.Severity(), expected.Severity());
        EXPECT_EQ(actual.Position(), expected.Position());
        EXPECT_EQ(actual.Parents(), expected.Parents());
        ASSERT_EQ(actual.TriggerSets().size(), expected.TriggerSets().size());
        for (std::size_t set = 0; set < actual.TriggerSets().size(); ++set)
            EXPECT_EQ(actual.TriggerSets()[set].Triggers(), expected.TriggerSets()[set].Triggers());
    }

    std::unique_ptr<CError> m_rich;
};

// ---- Making one

TEST_F(ErrorTest, ANewErrorIsInactiveUnchangedAndALeaf)
{
    const CError error(m_database, emiPositioning, esmiGPS, epiNoData,
                       eptDataErraticAndIntermittentlyIncorrect, eesCritical, false, false, false, false,
                       false, false);
    EXPECT_EQ(error.ProblemCode(), 0x40C1B);
    EXPECT_EQ(error.ModuleId(), emiPositioning);
    EXPECT_EQ(error.SubModuleId(), esmiGPS);
    EXPECT_EQ(error.ProblemId(), epiNoData);
    EXPECT_EQ(error.ProblemType(), 2);
    EXPECT_EQ(error.Severity(), eesCritical);
    EXPECT_FALSE(error.Active());
    EXPECT_FALSE(error.Changed());
    EXPECT_EQ(error.ProblemText() + error.SolutionText() + error.ShortProblemText() + error.TitleText(), "");
    EXPECT_EQ(error.Position(), 1);
    EXPECT_TRUE(error.TriggerSets().empty());
    EXPECT_TRUE(error.Parents().empty());
}

TEST_F(ErrorTest, TheLargestCoordinatesDoNotOverlap)
{
    const CError error(m_database, emiNTrip, esmiTreatments, epiABCurveDefinition, eptUnknown, eesLow, false,
                       false, false, false, false, false);
    EXPECT_EQ(error.ProblemCode(), 0xC365F);
    EXPECT_EQ(error.ModuleId(), emiNTrip);
    EXPECT_EQ(error.SubModuleId(), esmiTreatments);
    EXPECT_EQ(error.ProblemId(), epiABCurveDefinition);
    EXPECT_EQ(error.ProblemType(), eptUnknown);
}

TEST_F(ErrorTest, EveryFlagOfTheConstructorReachesItsOwnGetter)
{
    for (std::size_t given = 0; given < 6; ++given)
    {
        std::array<bool, 6> flag{};
        flag[given] = true;
        const CError error(m_database, emiGPS, esmiBus, epiData, eptAbnormalUpdateRate, eesLow, flag[0],
                           flag[1], flag[2], flag[3], flag[4], flag[5]);
        const std::array<bool, 6> read{error.Visible(),       error.FullScreen(),
                                       error.ForceShutdown(), error.IncludeServiceNumber(),
                                       error.ShouldBeep(),    error.ShouldBeepIfGuiding()};
        EXPECT_EQ(read, flag) << "flag " << given;
    }
}

TEST_F(ErrorTest, AnErrorMadeFromTheDatabaseAloneIsAllZero)
{
    const CError error(m_database);
    EXPECT_EQ(error.ProblemCode(), 0);
    EXPECT_EQ(error.ProblemType(), 0);
    EXPECT_EQ(error.Severity(), eesLow);
    EXPECT_EQ(error.Position(), 1);
    EXPECT_EQ(error.ProblemText() + error.SolutionText() + error.ShortProblemText() + error.TitleText(), "");
    EXPECT_FALSE(error.Visible() || error.Active() || error.FullScreen() || error.ForceShutdown());
    EXPECT_FALSE(error.IncludeServiceNumber() || error.ShouldBeep() || error.ShouldBeepIfGuiding());
    EXPECT_FALSE(error.Changed());
    EXPECT_TRUE(error.TriggerSets().empty());
    EXPECT_TRUE(error.Parents().empty());
}

TEST_F(ErrorTest, EachTextHasItsOwnSetter)
{
    CError error(m_database);
    error.ProblemText("p");
    error.SolutionText("s");
    error.ShortProblemText("h");
    error.TitleText("t");
    EXPECT_EQ(error.ProblemText(), "p");
    EXPECT_EQ(error.SolutionText(), "s");
    EXPECT_EQ(error.ShortProblemText(), "h");
    EXPECT_EQ(error.TitleText(), "t");
    error.ProblemText("");
    EXPECT_EQ(error.ProblemText(), "");
}

TEST_F(ErrorTest, TheChangedMarkIsSetAndTakenBack)
{
    CError error(m_database);
    error.Changed(true);
    EXPECT_TRUE(error.Changed());
    EXPECT_FALSE(error.Active());
    error.Changed(false);
    EXPECT_FALSE(error.Changed());
}

// ---- Copies

TEST_F(ErrorTest, ACopyHasEveryFieldFlagsIncluded)
{
    const CError copy(Rich());
    ExpectAssignedFields(copy, Rich());
    EXPECT_TRUE(copy.IncludeServiceNumber());
    EXPECT_TRUE(copy.ShouldBeep());
    EXPECT_TRUE(copy.ShouldBeepIfGuiding());
    EXPECT_EQ(copy.Position(), 3);
    EXPECT_TRUE(copy.Active());
}

TEST_F(ErrorTest, ACopyHasTriggerSetsAndParentsOfItsOwn)
{
    CError copy(Rich());
    copy.AddTriggerSet(SetOf({"c"}));
    copy.AddParent(&Error("other"));
    EXPECT_EQ(Rich().TriggerSets().size(), 1u);
    EXPECT_EQ(Rich().Parents().size(), 1u);
    EXPECT_EQ(copy.TriggerSets().size(), 2u);
    EXPECT_EQ(copy.Parents().size(), 2u);
}

TEST_F(ErrorTest, ACopyReportsToTheSameDatabase)
{
    CError copy(Error("a"));
    copy.Raise(false);
    EXPECT_EQ(Heard(), (Fixtures::Lines{"raised a"}));
    EXPECT_FALSE(Error("a").Active());
}

TEST_F(ErrorTest, AssignmentKeepsTheTargetsServiceNumberAndBeeps)
{
    CError quiet(m_database);
    quiet = Rich();
    ExpectAssignedFields(quiet, Rich());
    EXPECT_FALSE(quiet.IncludeServiceNumber());
    EXPECT_FALSE(quiet.ShouldBeep());
    EXPECT_FALSE(quiet.ShouldBeepIfGuiding());
}

TEST_F(ErrorTest, AssignmentDoesNotTakeTheTargetsServiceNumberAndBeepsAway)
{
    const CError plain(m_database);
    Rich() = plain;
    ExpectAssignedFields(Rich(), plain);
    EXPECT_TRUE(Rich().IncludeServiceNumber());
    EXPECT_TRUE(Rich().ShouldBeep());
    EXPECT_TRUE(Rich().ShouldBeepIfGuiding());
}

TEST_F(ErrorTest, AssignmentToItselfChangesNothing)
{
    const CError before(Rich());
    const CError& self = Rich();
    Rich() = self;
    ExpectAssignedFields(Rich(), before);
}

TEST_F(ErrorTest, AssignmentGivesTriggerSetsAndParentsOfItsOwn)
{
    CError target(m_database);
    target = Rich();
    Rich().AddTriggerSet(SetOf({"c"}));
    Rich().AddParent(&Error("other"));
    EXPECT_EQ(target.TriggerSets().size(), 1u);
    EXPECT_EQ(target.Parents().size(), 1u);
}

TEST_F(ErrorTest, AssignmentLeavesTheErrorWithItsDatabase)
{
    CErrorDatabase elsewhere(m_directory.Prefix());
    CError stranger(elsewhere);
    stranger = Error("a");
    stranger.Raise(false);
    EXPECT_EQ(Heard(), Fixtures::Lines{}); // nobody listens there
    Error("b") = stranger;
    Error("b").Clear(false);
    EXPECT_EQ(Heard(), (Fixtures::Lines{"cleared a"})); // with the identifier it was given
}

// ---- Links

TEST_F(ErrorTest, AddingATriggerSetAppendsACopy)
{
    CTriggerSet set = SetOf({"a"});
    CError error(m_database);
    error.AddTriggerSet(set);
    set.AddTrigger(&Error("b"));
    error.AddTriggerSet(set);
    ASSERT_EQ(error.TriggerSets().size(), 2u);
    EXPECT_EQ(error.TriggerSets()[0].Triggers(), (std::list<CError*>{&Error("a")}));
    EXPECT_EQ(error.TriggerSets()[1].Triggers(), (std::list<CError*>{&Error("a"), &Error("b")}));
}

TEST_F(ErrorTest, ParentsStandInTheOrderAddedDuplicatesIncluded)
{
    CError error(m_database);
    error.AddParent(&Error("b"));
    error.AddParent(&Error("a"));
    error.AddParent(&Error("b"));
    const std::list<CError*> expected{&Error("b"), &Error("a"), &Error("b")};
    EXPECT_EQ(std::as_const(error).Parents(), expected);
    error.Parents().clear();
    EXPECT_TRUE(std::as_const(error).Parents().empty());
}

TEST_F(ErrorTest, AParentIsOneWhoseAnySetHoldsTheError)
{
    Error("p").AddTriggerSet(SetOf({"a"}));
    Error("p").AddTriggerSet(SetOf({"b"}, 1, false));
    EXPECT_TRUE(Error("p").IsParentOf(&Error("a")));
    EXPECT_TRUE(Error("p").IsParentOf(&Error("b")));
    EXPECT_FALSE(Error("p").IsParentOf(&Error("c")));
    EXPECT_FALSE(Error("p").IsParentOf(nullptr));
    EXPECT_FALSE(Error("a").IsChildOf(&Error("p"))); // only the parent list says that
}

TEST_F(ErrorTest, AChildIsOneThatListsTheParent)
{
    Error("a").AddParent(&Error("p"));
    EXPECT_TRUE(Error("a").IsChildOf(&Error("p")));
    EXPECT_FALSE(Error("a").IsChildOf(&Error("q")));
    EXPECT_FALSE(Error("a").IsChildOf(nullptr));
    EXPECT_FALSE(Error("p").IsParentOf(&Error("a"))); // only its trigger sets say that
}

TEST_F(ErrorTest, RelationIsADirectLinkOfEitherKind)
{
    Link("p", {"a"});
    EXPECT_TRUE(Error("p").IsRelatedTo(&Error("a")));
    EXPECT_TRUE(Error("a").IsRelatedTo(&Error("p")));
    EXPECT_FALSE(Error("a").IsRelatedTo(&Error("a")));
    EXPECT_FALSE(Error("a").IsRelatedTo(nullptr));
}

TEST_F(ErrorTest, AGrandparentOrSiblingIsNoRelation)
{
    Link("g", {"p"});
    Link("p", {"a", "b"});
    EXPECT_FALSE(Error("a").IsRelatedTo(&Error("g")));
    EXPECT_FALSE(Error("g").IsRelatedTo(&Error("a")));
    EXPECT_FALSE(Error("a").IsRelatedTo(&Error("b")));
}

TEST_F(ErrorTest, ALinkInOneDirectionRelatesOnlyTheErrorThatHasIt)
{
    Error("a").AddParent(&Error("p"));
    EXPECT_TRUE(Error("a").IsRelatedTo(&Error("p")));
    EXPECT_FALSE(Error("p").IsRelatedTo(&Error("a")));
}

TEST_F(ErrorTest, ALinkingModeIsPresentIfAnySetHasIt)
{
    CError error(m_database);
    EXPECT_FALSE(error.ChildLinkingModePresent(eelmDeep));
    error.AddTriggerSet(CTriggerSet(false, 1, eelmShallow, eetsParent));
    error.AddTriggerSet(CTriggerSet(false, 1, eelmChildOnly, eetsParent));
    EXPECT_TRUE(error.ChildLinkingModePresent(eelmShallow));
    EXPECT_TRUE(error.ChildLinkingModePresent(eelmChildOnly));
    EXPECT_FALSE(error.ChildLinkingModePresent(eelmDeep));
    EXPECT_FALSE(error.ChildLinkingModePresent(eelmVerbose));
}

// ---- Position

TEST_F(ErrorTest, ALeafKeepsPositionOne)
{
    Error("a").RecalculatePosition();
    EXPECT_EQ(Error("a").Position(), 1);
    Error("a").AddTriggerSet(SetOf({}));
    Error("a").RecalculatePosition();
    EXPECT_EQ(Error("a").Position(), 1);
}

TEST_F(ErrorTest, APositionAddsUpAllTriggersOfAllSetsDuplicatesIncluded)
{
    Link("p", {"a", "b", "a"});
    Link("p", {"b", "c"});
    EXPECT_EQ(Error("p").Position(), 1); // until it is recalculated
    Error("p").RecalculatePosition();
    EXPECT_EQ(Error("p").Position(), 6);
    Error("p").RecalculatePosition();
    EXPECT_EQ(Error("p").Position(), 6);
}

TEST_F(ErrorTest, APositionUsesThePresentPositionsOfTheTriggers)
{
    Link("g", {"p"});
    Link("p", {"a", "b"});
    Error("g").RecalculatePosition();
    EXPECT_EQ(Error("g").Position(), 2);
    Error("p").RecalculatePosition();
    EXPECT_EQ(Error("g").Position(), 2);
    Error("g").RecalculatePosition();
    EXPECT_EQ(Error("g").Position(), 4);
}

TEST_F(ErrorTest, APositionStopsAtTheLargestInt)
{
    const std::string levels = "0123456789";
    for (std::size_t level = 1; level < levels.size(); ++level)
    {
        Link(levels.substr(level, 1), Fixtures::Lines(16, levels.substr(level - 1, 1)));
        Error(levels.substr(level, 1)).RecalculatePosition();
    }
    EXPECT_EQ(Error("7").Position(), 286331153); // (16^8 - 1) / 15
    EXPECT_EQ(Error("8").Position(), INT_MAX);
    EXPECT_EQ(Error("9").Position(), INT_MAX);
}

} // namespace
