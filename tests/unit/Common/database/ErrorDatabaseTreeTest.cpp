#include <Faultkeeper/ErrorDatabase.h>

#include "unit/Common/fixtures/Configurations.h"

#include <gtest/gtest.h>

#include <list>
#include <optional>
#include <string>

namespace
{

using namespace Faultkeeper;
using Fixtures::Lines;
using Fixtures::NamesOf;

// Defined from the largest identifier to the smallest, so that the order of the files is not that of the
// lists.
const std::string kStranger = "NTrip:GPS:No Network:20";
const std::string kGrandparent = "Positioning:GPS:Speed:9";
const std::string kParent = "Positioning:GPS:No Data:2";
const std::string kSecond = "GPS:Ublox:Power:4";
const std::string kFirst = "GPS:Ublox:Data:3";

class ErrorDatabaseTreeTest : public testing::Test
{
protected:
    ErrorDatabaseTreeTest() : m_configuration(Definitions()), m_database(m_configuration.Path()) {}

    static Support::CConfigurationBuilder Definitions()
    {
        Support::CConfigurationBuilder builder;
        builder.Leaf(kStranger).Parent(kGrandparent, {kParent}).Parent(kParent, {kFirst, kSecond}, 2);
        builder.Leaf(kSecond).Leaf(kFirst);
        return builder;
    }

    void Raise(const std::string& name, bool silent = true) { Fixtures::Raise(m_database, name, silent); }
    void Clear(const std::string& name, bool silent = true) { Fixtures::Clear(m_database, name, silent); }

    Lines Active() const { return NamesOf(m_database.ActiveErrors(false)); }
    Lines ChangedActive() const { return NamesOf(m_database.ActiveErrors(true)); }
    Lines Inactive() const { return NamesOf(m_database.InactiveErrors(false)); }
    Lines ChangedInactive() const { return NamesOf(m_database.InactiveErrors(true)); }

    Fixtures::CConfiguration m_configuration;
    CErrorDatabase m_database;
};

TEST_F(ErrorDatabaseTreeTest, BeforeTheFirstUpdateAllListsAreEmpty)
{
    Raise(kFirst);
    EXPECT_EQ(Active(), Lines{});
    EXPECT_EQ(ChangedActive(), Lines{});
    EXPECT_EQ(Inactive(), Lines{});
    EXPECT_EQ(ChangedInactive(), Lines{});
}

TEST_F(ErrorDatabaseTreeTest, WithNothingActiveTheInactiveTopsAreThoseOfTheHierarchy)
{
    m_database.UpdateErrorTree();
    EXPECT_EQ(Active(), Lines{});
    EXPECT_EQ(ChangedActive(), Lines{});
    EXPECT_EQ(Inactive(), (Lines{kGrandparent, kStranger}));
    EXPECT_EQ(ChangedInactive(), Lines{});
}

TEST_F(ErrorDatabaseTreeTest, TheListsPointToTheErrorsOfTheDatabase)
{
    Raise(kStranger);
    m_database.UpdateErrorTree();
    EXPECT_EQ(m_database.ActiveErrors(false).front(), &m_database.GetErrorList()[0]);
    EXPECT_EQ(m_database.InactiveErrors(false).front(), &m_database.GetErrorList()[1]);
}

TEST_F(ErrorDatabaseTreeTest, AnActiveParentAndChildHaveOneTop)
{
    Raise(kFirst);
    Raise(kParent);
    m_database.UpdateErrorTree();
    EXPECT_EQ(Active(), (Lines{kParent}));
    EXPECT_EQ(ChangedActive(), (Lines{kParent}));
    EXPECT_EQ(Inactive(), (Lines{kSecond, kGrandparent, kStranger}));
}

TEST_F(ErrorDatabaseTreeTest, AnActiveGrandparentAndGrandchildAreTwoTopsInIdentifierOrder)
{
    Raise(kGrandparent);
    Raise(kFirst);
    m_database.UpdateErrorTree();
    EXPECT_EQ(Active(), (Lines{kFirst, kGrandparent}));
}

TEST_F(ErrorDatabaseTreeTest, TwoActiveChildrenOfAnInactiveParentAreTwoTops)
{
    Raise(kSecond);
    Raise(kFirst);
    m_database.UpdateErrorTree();
    EXPECT_EQ(Active(), (Lines{kFirst, kSecond}));
    EXPECT_EQ(Inactive(), (Lines{kGrandparent, kStranger}));
}

TEST_F(ErrorDatabaseTreeTest, ErrorsThatFollowedAreActiveButNotChanged)
{
    Raise(kFirst, false);
    Raise(kSecond, false);
    m_database.UpdateErrorTree();
    EXPECT_EQ(Active(), (Lines{kGrandparent}));
    EXPECT_EQ(ChangedActive(), (Lines{kFirst, kSecond})); // grouped without the parent that follows
}

TEST_F(ErrorDatabaseTreeTest, ARequestThatChangesNothingShowsItsErrorAsChanged)
{
    Raise(kFirst);
    Raise(kParent);
    m_database.UpdateErrorTree();
    Raise(kFirst);
    Clear(kStranger);
    m_database.UpdateErrorTree();
    EXPECT_EQ(Active(), (Lines{kParent}));
    EXPECT_EQ(ChangedActive(), (Lines{kFirst}));
    EXPECT_EQ(Inactive(), (Lines{kSecond, kGrandparent, kStranger}));
    EXPECT_EQ(ChangedInactive(), (Lines{kStranger}));
}

TEST_F(ErrorDatabaseTreeTest, ClearedErrorsAreChangedInactiveOnes)
{
    Raise(kFirst);
    Raise(kParent);
    Raise(kGrandparent);
    m_database.UpdateErrorTree();
    Clear(kParent);
    Clear(kGrandparent);
    m_database.UpdateErrorTree();
    EXPECT_EQ(Active(), (Lines{kFirst}));
    EXPECT_EQ(ChangedActive(), Lines{});
    EXPECT_EQ(ChangedInactive(), (Lines{kGrandparent}));
    EXPECT_EQ(Inactive(), (Lines{kGrandparent, kStranger})); // the second leaf is linked through the parent
}

TEST_F(ErrorDatabaseTreeTest, AnUpdateTakesAllMarksBack)
{
    Raise(kFirst);
    Clear(kStranger);
    m_database.UpdateErrorTree();
    for (const CError& error : m_database.GetErrorList())
        EXPECT_FALSE(error.Changed()) << Fixtures::NameOf(error);
    m_database.UpdateErrorTree();
    EXPECT_EQ(ChangedActive(), Lines{});
    EXPECT_EQ(ChangedInactive(), Lines{});
    EXPECT_EQ(Active(), (Lines{kFirst}));
}

TEST_F(ErrorDatabaseTreeTest, ListsStayAsTheyAreUntilTheNextUpdate)
{
    Raise(kFirst);
    m_database.UpdateErrorTree();
    Clear(kFirst);
    Raise(kStranger);
    EXPECT_EQ(Active(), (Lines{kFirst}));
    EXPECT_EQ(ChangedActive(), (Lines{kFirst}));
    m_database.UpdateErrorTree();
    EXPECT_EQ(Active(), (Lines{kStranger}));
}

TEST_F(ErrorDatabaseTreeTest, TheEndOfASynchronisationIsAnUpdate)
{
    Raise(kFirst);
    m_database.SynchronisationComplete();
    EXPECT_EQ(Active(), (Lines{kFirst}));
    EXPECT_EQ(ChangedActive(), (Lines{kFirst}));
    EXPECT_FALSE(Fixtures::Find(m_database, kFirst)->Changed());
}

TEST_F(ErrorDatabaseTreeTest, AnEmptyDatabaseHasEmptyLists)
{
    CErrorDatabase database(m_configuration.Path() + "elsewhere/");
    database.UpdateErrorTree();
    EXPECT_TRUE(database.ActiveErrors(false).empty() && database.ActiveErrors(true).empty());
    EXPECT_TRUE(database.InactiveErrors(false).empty() && database.InactiveErrors(true).empty());
}

TEST(ErrorDatabaseTreeOfTwoDefinitionsTest, OnlyTheLaterOneIsListed)
{
    Support::CConfigurationBuilder builder;
    builder.Parent(kParent, {kFirst}).Leaf(kFirst).Leaf(kParent);
    const Fixtures::CConfiguration configuration(builder);
    CErrorDatabase database(configuration.Path());
    database.UpdateErrorTree();
    // The leaf knows the earlier definition as its parent, but that one is not in any list.
    EXPECT_EQ(database.InactiveErrors(false),
              (std::list<const CError*>{&database.GetErrorList()[1], &database.GetErrorList()[2]}));
}

TEST_F(ErrorDatabaseTreeTest, AListThatIsToHoldItsOwnTopsEndsEmpty)
{
    std::list<const CError*> errors = {Fixtures::Find(m_database, kFirst),
                                       Fixtures::Find(m_database, kSecond)};
    m_database.UpdateErrorTree(errors, errors);
    EXPECT_TRUE(errors.empty());
}

/// The copy lies below everything that is allocated, one on the stack above.
std::optional<CError> copyBelow;

TEST_F(ErrorDatabaseTreeTest, ParentsOfCopiesElsewhereInMemoryAreNotTheDatabases)
{
    CError copyAbove = *Fixtures::Find(m_database, kFirst);
    copyBelow = copyAbove;
    m_database.UpdateErrorTree();
    for (CError* copy : {&copyAbove, &*copyBelow})
    {
        copy->Parents().clear();
        m_database.UpdateErrorTree();
        EXPECT_EQ(NamesOf(m_database.InactiveErrors(false)), (Lines{kGrandparent, kStranger}));
    }
    copyBelow.reset();
}

TEST_F(ErrorDatabaseTreeTest, LinksThatLeadOutOfTheDatabaseJoinNobody)
{
    CError above = *Fixtures::Find(m_database, kStranger);
    copyBelow = above;
    CError* const first = const_cast<CError*>(Fixtures::Find(m_database, kFirst)); // as loaders do
    first->AddParent(&above);
    first->AddParent(&*copyBelow);
    m_database.UpdateErrorTree();
    EXPECT_EQ(NamesOf(m_database.InactiveErrors(false)), (Lines{kGrandparent, kStranger}));
    copyBelow.reset();
}

} // namespace
