#include <Faultkeeper/ErrorDatabase.h>

#include <Faultkeeper/ErrorDbChanged.h>

#include "support/CapturedOutput.h"
#include "unit/Common/fixtures/Configurations.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <set>
#include <type_traits>

namespace
{

using namespace Faultkeeper;
using namespace Fixtures;

const char* const kTop = "Positioning:GPS:No Data:2";
const char* const kMiddle = "Positioning:GPS:Communications:9";
const char* const kLeaf = "GPS:Ublox:Port Error:5";

Support::CConfigurationBuilder ThreeLevels()
{
    Support::CConfigurationBuilder builder;
    builder.Parent(kTop, {kMiddle}).Parent(kMiddle, {kLeaf}).Leaf(kLeaf);
    return builder;
}

class CListener : public CErrorDbChanged
{
public:
    void ErrorRaised(int problemCode, int problemType) override { Hear("raised", problemCode, problemType); }
    void ErrorCleared(int problemCode, int problemType) override
    {
        Hear("cleared", problemCode, problemType);
    }

    Lines Heard()
    {
        Lines heard;
        heard.swap(m_heard);
        return heard;
    }

private:
    void Hear(const std::string& what, int problemCode, int problemType)
    {
        for (const char* name : {kTop, kMiddle, kLeaf})
        {
            if (IdentifierOf(name) == Identifier(problemCode, problemType))
                m_heard.push_back(what + " " + name);
        }
    }

    Lines m_heard;
};

class ErrorDatabaseTest : public testing::Test
{
protected:
    ErrorDatabaseTest() : m_configuration(ThreeLevels()), m_database(m_configuration.Path())
    {
        m_database.SetCallback(&m_listener);
    }

    bool Active(const std::string& name) const { return Find(m_database, name)->Active(); }
    bool Changed(const std::string& name) const { return Find(m_database, name)->Changed(); }

    CConfiguration m_configuration;
    CErrorDatabase m_database;
    CListener m_listener;
};

TEST_F(ErrorDatabaseTest, ADatabaseIsNeitherCopiedNorMoved)
{
    EXPECT_FALSE(std::is_copy_constructible<CErrorDatabase>::value);
    EXPECT_FALSE(std::is_move_constructible<CErrorDatabase>::value);
    EXPECT_FALSE(std::is_copy_assignable<CErrorDatabase>::value);
    EXPECT_FALSE(std::is_move_assignable<CErrorDatabase>::value);
}

// ---- Looking up

TEST_F(ErrorDatabaseTest, AnErrorIsFoundByCodeAndType)
{
    EXPECT_EQ(m_database.RetrieveError(0x40C1B, 2), &m_database.GetErrorList()[0]);
    EXPECT_EQ(m_database.RetrieveError(0x12824, 5), &m_database.GetErrorList()[2]);
}

TEST_F(ErrorDatabaseTest, AnIdentifierThatIsNotDefinedFindsNothing)
{
    for (const Identifier& id :
         {Identifier(0x40C1B, 3), Identifier(0x40C1A, 2), Identifier(0, 0), Identifier(-1, -1),
          Identifier(INT_MAX, INT_MAX), Identifier(INT_MIN, INT_MIN), Identifier(2, 0x40C1B)})
        EXPECT_EQ(m_database.RetrieveError(id.first, id.second), nullptr) << id.first << ":" << id.second;
}

// ---- Raising and clearing

TEST_F(ErrorDatabaseTest, ARaiseRequestRaisesTheErrorAndWhatFollows)
{
    Raise(m_database, kLeaf);
    EXPECT_EQ(m_listener.Heard(), (Lines{std::string("raised ") + kLeaf, std::string("raised ") + kMiddle,
                                         std::string("raised ") + kTop}));
    EXPECT_TRUE(Active(kLeaf) && Active(kMiddle) && Active(kTop));
}

TEST_F(ErrorDatabaseTest, AClearRequestClearsTheErrorAndWhatFollows)
{
    Raise(m_database, kLeaf);
    m_listener.Heard();
    Clear(m_database, kLeaf);
    EXPECT_EQ(m_listener.Heard(), (Lines{std::string("cleared ") + kLeaf, std::string("cleared ") + kMiddle,
                                         std::string("cleared ") + kTop}));
    EXPECT_FALSE(Active(kLeaf) || Active(kMiddle) || Active(kTop));
}

TEST_F(ErrorDatabaseTest, ASilentRequestMovesOnlyTheErrorItNames)
{
    Raise(m_database, kLeaf, true);
    EXPECT_TRUE(Active(kLeaf));
    EXPECT_FALSE(Active(kMiddle));
    Raise(m_database, kMiddle, true);
    Clear(m_database, kLeaf, true);
    EXPECT_FALSE(Active(kLeaf));
    EXPECT_TRUE(Active(kMiddle));
    EXPECT_EQ(m_listener.Heard(), Lines{});
}

TEST_F(ErrorDatabaseTest, ARaiseRequestForAnActiveErrorOnlyMarksIt)
{
    Raise(m_database, kLeaf, true); // the parent has not followed and does not now
    m_database.UpdateErrorTree();
    Raise(m_database, kLeaf);
    EXPECT_EQ(m_listener.Heard(), Lines{});
    EXPECT_FALSE(Active(kMiddle));
    EXPECT_TRUE(Changed(kLeaf));
}

TEST_F(ErrorDatabaseTest, AClearRequestForAnInactiveErrorOnlyMarksIt)
{
    Raise(m_database, kMiddle, true);
    m_database.UpdateErrorTree();
    Clear(m_database, kLeaf);
    EXPECT_EQ(m_listener.Heard(), Lines{});
    EXPECT_TRUE(Active(kMiddle));
    EXPECT_TRUE(Changed(kLeaf));
}

TEST_F(ErrorDatabaseTest, OnlyTheErrorThatARequestNamesIsMarked)
{
    Raise(m_database, kLeaf);
    EXPECT_TRUE(Changed(kLeaf));
    EXPECT_FALSE(Changed(kMiddle));
    EXPECT_FALSE(Changed(kTop));
}

TEST_F(ErrorDatabaseTest, SilentRequestsMarkToo)
{
    Clear(m_database, kTop, true);
    Raise(m_database, kMiddle, true);
    EXPECT_TRUE(Changed(kTop));
    EXPECT_TRUE(Changed(kMiddle));
}

TEST_F(ErrorDatabaseTest, ARequestForAnUnknownIdentifierChangesNothing)
{
    const std::string printed = Support::PrintedBy(
        [this]
        {
            EXPECT_EQ(Support::WarnedBy(
                          [this]
                          {
                              m_database.RaiseError(0x40C1B, 3, false);
                              m_database.RaiseError(-1, 21, true);
                              m_database.ClearError(0, 0, false);
                          }),
                      "");
        });
    EXPECT_EQ(printed, "");
    EXPECT_EQ(m_listener.Heard(), Lines{});
    for (const char* name : {kTop, kMiddle, kLeaf})
        EXPECT_FALSE(Active(name) || Changed(name)) << name;
}

// ---- The listener

TEST_F(ErrorDatabaseTest, ALaterListenerReplacesTheEarlierOne)
{
    CListener other;
    m_database.SetCallback(&other);
    Raise(m_database, kTop);
    EXPECT_EQ(m_listener.Heard(), Lines{});
    EXPECT_EQ(other.Heard(), (Lines{std::string("raised ") + kTop}));
    m_database.SetCallback(nullptr);
    Clear(m_database, kTop);
    EXPECT_EQ(other.Heard(), Lines{});
    EXPECT_FALSE(Active(kTop));
}

TEST_F(ErrorDatabaseTest, ReportsArePassedOnAsTheyStand)
{
    m_database.ErrorRaised(0x40C1B, 2);
    m_database.ErrorCleared(0x12824, 5);
    EXPECT_EQ(m_listener.Heard(), (Lines{std::string("raised ") + kTop, std::string("cleared ") + kLeaf}));
    EXPECT_FALSE(Active(kTop));
    m_database.SetCallback(nullptr);
    m_database.ErrorRaised(0x40C1B, 2);
    m_database.ErrorCleared(0x40C1B, 2);
    EXPECT_EQ(m_listener.Heard(), Lines{});
}

TEST(ErrorDatabaseListenerTest, TheDatabaseLeavesItsListenerAlive)
{
    class CMortal : public CListener
    {
    public:
        explicit CMortal(bool& gone) : m_gone(gone) {}
        ~CMortal() override { m_gone = true; }

    private:
        bool& m_gone;
    };
    bool gone = false;
    CMortal listener(gone);
    {
        const CConfiguration configuration(ThreeLevels());
        CErrorDatabase database(configuration.Path());
        database.SetCallback(&listener);
    }
    EXPECT_FALSE(gone);
}

// ---- Against a model

std::vector<Identifier> IdentifiersOf(const CErrorDatabase& database)
{
    std::vector<Identifier> ids;
    for (const CError& error : database.GetErrorList())
        ids.emplace_back(error.ProblemCode(), error.ProblemType());
    return ids;
}

std::set<Identifier> ActiveIdentifiersOf(const CErrorDatabase& database)
{
    std::set<Identifier> ids;
    for (const CError& error : database.GetErrorList())
    {
        if (error.Active())
            ids.emplace(error.ProblemCode(), error.ProblemType());
    }
    return ids;
}

class DatabaseModelTest : public testing::TestWithParam<unsigned>
{
};

TEST_P(DatabaseModelTest, SilentRequestsMoveOnlyTheErrorTheyName)
{
    std::mt19937 random(GetParam());
    const CConfiguration configuration(ThreeLevels());
    CErrorDatabase database(configuration.Path());
    const std::vector<Identifier> ids = IdentifiersOf(database);
    std::set<Identifier> active; // the model
    for (int step = 0; step < 2000; ++step)
    {
        const Identifier& id = ids[random() % ids.size()];
        if (random() % 2 == 0)
        {
            database.RaiseError(id.first, id.second, true);
            active.insert(id);
        }
        else
        {
            database.ClearError(id.first, id.second, true);
            active.erase(id);
        }
        ASSERT_EQ(ActiveIdentifiersOf(database), active) << "step " << step;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, DatabaseModelTest, testing::Range(0u, 20u));

} // namespace
