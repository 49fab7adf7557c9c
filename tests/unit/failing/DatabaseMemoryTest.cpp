#include "support/failing/FailingMemory.h"

#include "unit/Common/fixtures/Configurations.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDbChanged.h>

#include <gtest/gtest.h>

#include <iostream>
#include <list>
#include <optional>
#include <streambuf>
#include <string>
#include <vector>

namespace
{

using namespace Faultkeeper;
using FailingMemory::CAttempt;
using FailingMemory::FailEach;
using Fixtures::Lines;
using Fixtures::NamesOf;

const char* const kReceiver = "Positioning:GPS:Communications:9";
const char* const kNoData = "Positioning:GPS:No Data:2";
const char* const kPosition = "Navigation And Control:Position:Data:3";
const char* const kAntenna = "Positioning:L1 Antenna:Power:4";

/// Two modules, three levels, an error apart; a trigger that names its owner is warned of.
Support::CConfigurationBuilder Console()
{
    Support::CConfigurationBuilder builder;
    builder.Parent(kPosition, {kNoData}).Parent(kNoData, {kReceiver, kNoData}).Leaf(kReceiver).Leaf(kAntenna);
    return builder;
}

/// Drops what goes to a stream while it lives.
class CSilence : public std::streambuf
{
public:
    explicit CSilence(std::ostream& stream) : m_stream(stream), m_before(stream.rdbuf(this)) {}
    ~CSilence() override
    {
        m_stream.rdbuf(m_before);
        m_stream.clear();
    }

private:
    int overflow(int character) override { return traits_type::not_eof(character); }
    std::streamsize xsputn(const char*, std::streamsize size) override { return size; }

    std::ostream& m_stream;
    std::streambuf* const m_before;
};

class DatabaseMemoryTest : public testing::Test
{
protected:
    const Fixtures::CConfiguration m_configuration{Console()};
    const std::string m_path = m_configuration.Path();

private:
    const CSilence m_warnings{std::cerr}; // each load warns of the trigger
};

void ExpectWhole(const CErrorDatabase& database)
{
    EXPECT_TRUE(database.Loaded());
    EXPECT_EQ(database.GetErrorList().size(), 4u);
    ASSERT_NE(Fixtures::Find(database, kPosition), nullptr);
    EXPECT_EQ(Fixtures::Find(database, kPosition)->Position(), 3);
}

TEST_F(DatabaseMemoryTest, ALoadThrowsOrIsWhole)
{
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            std::optional<CErrorDatabase> database;
            const bool ended = attempt.Run([&] { database.emplace(m_path); });
            EXPECT_EQ(ended, database.has_value());
            if (ended)
                ExpectWhole(*database);
        });
    EXPECT_GT(failed, 200) << "the test has to interrupt the parser, too";
}

TEST_F(DatabaseMemoryTest, ALoadThatThrewCanBeTriedAgain)
{
    EXPECT_GT(FailEach(
                  [&](CAttempt& attempt)
                  {
                      if (!attempt.Run([&] { const CErrorDatabase database(m_path); }))
                          ExpectWhole(CErrorDatabase(m_path));
                  }),
              0);
}

/// Needs no memory itself.
struct SCountingListener : public CErrorDbChanged
{
    void ErrorRaised(int, int) override { ++raised; }
    void ErrorCleared(int, int) override { ++cleared; }

    int raised = 0;
    int cleared = 0;
};

TEST_F(DatabaseMemoryTest, RaisingAndClearingNeedNoMemory)
{
    CErrorDatabase database(m_path);
    SCountingListener listener;
    database.SetCallback(&listener);
    const Fixtures::Identifier receiver = Fixtures::IdentifierOf(kReceiver);
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            EXPECT_TRUE(attempt.Run(
                [&]
                {
                    database.RaiseError(receiver.first, receiver.second, false);
                    database.ClearError(receiver.first, receiver.second, false);
                    database.RaiseError(receiver.first, receiver.second, true);
                    database.ClearError(receiver.first, receiver.second, true);
                    database.RaiseError(-1, -1, false);
                }));
        });
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(listener.raised, 9) << "three errors in each of three attempts";
    EXPECT_EQ(listener.cleared, 9);
}

/// Position and what it needs are active, and so is the antenna; the latter was raised since the last look.
void RaiseSome(CErrorDatabase& database)
{
    Fixtures::Raise(database, kReceiver);
    database.UpdateErrorTree();
    Fixtures::Raise(database, kAntenna);
    Fixtures::Raise(database, kPosition);
    Fixtures::Clear(database, kReceiver, true);
}

void ExpectTops(const CErrorDatabase& database)
{
    EXPECT_EQ(NamesOf(database.ActiveErrors(false)), (Lines{kPosition, kAntenna}));
    EXPECT_EQ(NamesOf(database.ActiveErrors(true)), (Lines{kPosition, kAntenna}));
    EXPECT_EQ(NamesOf(database.InactiveErrors(false)), (Lines{kReceiver}));
    EXPECT_EQ(NamesOf(database.InactiveErrors(true)), (Lines{kReceiver}));
}

TEST_F(DatabaseMemoryTest, AnUpdateOfTheTopsThatThrewIsMadeUpForByTheNext)
{
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            CErrorDatabase database(m_path);
            RaiseSome(database);
            if (!attempt.Run([&] { database.UpdateErrorTree(); }))
                database.UpdateErrorTree();
            ExpectTops(database);
        });
    EXPECT_GE(failed, 4) << "one for each list that is not empty";
}

TEST_F(DatabaseMemoryTest, TheFirstUpdateOfTheTopsMayThrowToo)
{
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            CErrorDatabase database(m_path);
            Fixtures::Raise(database, kAntenna);
            if (!attempt.Run([&] { database.SynchronisationComplete(); }))
                database.SynchronisationComplete();
            EXPECT_EQ(NamesOf(database.ActiveErrors(true)), (Lines{kAntenna}));
            EXPECT_EQ(NamesOf(database.InactiveErrors(false)), (Lines{kPosition}));
        });
    EXPECT_GT(failed, 4);
}

/// Each list of tops is at its longest once.
void TurnAllAndBack(CErrorDatabase& database)
{
    for (const bool raise : {true, false})
    {
        for (const CError& error : database.GetErrorList())
        {
            if (raise)
                database.RaiseError(error.ProblemCode(), error.ProblemType(), true);
            else
                database.ClearError(error.ProblemCode(), error.ProblemType(), true);
        }
        database.UpdateErrorTree();
    }
}

TEST_F(DatabaseMemoryTest, UpdatesOfTheTopsNeedNoMemoryOnceTheListsHaveBeenAtTheirLongest)
{
    CErrorDatabase database(m_path);
    TurnAllAndBack(database);
    EXPECT_EQ(
        FailEach([&](CAttempt& attempt) { EXPECT_TRUE(attempt.Run([&] { TurnAllAndBack(database); })); }), 0);
    EXPECT_EQ(NamesOf(database.InactiveErrors(true)), (Lines{kPosition, kAntenna}));
}

/// Errors of no database, each the trigger of the one before.
std::vector<CError> HandMadeChain(CErrorDatabase& database, int errors)
{
    std::vector<CError> made;
    made.reserve(static_cast<std::size_t>(errors));
    for (int number = 0; number < errors; ++number)
        made.emplace_back(database, emiCAN, esmiBus, epiPower, static_cast<EProblemType>(number), eesHigh,
                          true, false, false, false, false, false);
    for (std::size_t number = 1; number < made.size(); ++number)
        made[number].AddParent(&made[number - 1]);
    return made;
}

TEST_F(DatabaseMemoryTest, AGroupingOfErrorsThatAreNotItsOwnNeedsNoMemoryTheSecondTime)
{
    CErrorDatabase database(m_path);
    const std::vector<CError> chain = HandMadeChain(database, 50);
    std::list<const CError*> errors;
    for (const CError& error : chain)
        errors.push_back(&error);
    std::list<const CError*> tops;
    database.UpdateErrorTree(errors, tops);
    EXPECT_EQ(tops, std::list<const CError*>{&chain.front()});
    EXPECT_EQ(FailEach([&](CAttempt& attempt)
                       { EXPECT_TRUE(attempt.Run([&] { database.UpdateErrorTree(errors, tops); })); }),
              0);
    EXPECT_EQ(tops, std::list<const CError*>{&chain.front()});
}

Lines TopsOf(CErrorDatabase& database, const Lines& names)
{
    std::list<const CError*> errors;
    for (const std::string& name : names)
        errors.push_back(Fixtures::Find(database, name));
    std::list<const CError*> tops;
    database.UpdateErrorTree(errors, tops);
    return NamesOf(tops);
}

TEST_F(DatabaseMemoryTest, AGroupingOfAListThatThrewLeavesNothingForTheNext)
{
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            CErrorDatabase database(m_path);
            const bool ended = attempt.Run([&] { TopsOf(database, {kAntenna, kPosition, kNoData}); });
            EXPECT_EQ(ended, !attempt.Met());
            EXPECT_EQ(TopsOf(database, {kReceiver, kNoData}), (Lines{kNoData}));
        });
    EXPECT_GT(failed, 4);
}

std::string Numbered(int number)
{
    return "Positioning:GPS:No Data:" + std::to_string(number);
}

/// A star: its centre comes last, so that all others but the first join in the second pass of a grouping.
class StarMemoryTest : public testing::Test
{
protected:
    static constexpr int kLeaves = 10;

    static Support::CConfigurationBuilder Star()
    {
        Support::CConfigurationBuilder builder;
        std::vector<std::string> leaves;
        for (int number = 0; number < kLeaves; ++number)
        {
            leaves.push_back(Numbered(number));
            builder.Leaf(leaves.back());
        }
        return builder.Leaf(kAntenna).Parent(Numbered(kLeaves), leaves);
    }

    const Fixtures::CConfiguration m_configuration{Star()};
    const std::string m_path = m_configuration.Path();
};

TEST_F(StarMemoryTest, AGroupingOfAListThatThrewWithinAPassLeavesNothingForTheNext)
{
    Lines all;
    for (int number = 0; number <= kLeaves; ++number)
        all.push_back(Numbered(number));
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            CErrorDatabase database(m_path);
            const bool ended = attempt.Run([&] { TopsOf(database, all); });
            EXPECT_EQ(ended, !attempt.Met());
            EXPECT_EQ(TopsOf(database, {kAntenna}), (Lines{kAntenna}));
        });
    EXPECT_GT(failed, 10);
}

TEST_F(StarMemoryTest, AnUpdateThatThrewWithinAPassIsMadeUpForByTheNext)
{
    Lines leaves;
    for (int number = 0; number < kLeaves; ++number)
        leaves.push_back(Numbered(number));
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            CErrorDatabase database(m_path);
            for (const std::string& name : leaves)
                Fixtures::Raise(database, name);
            Fixtures::Raise(database, Numbered(kLeaves));
            const bool ended = attempt.Run([&] { database.UpdateErrorTree(); });
            EXPECT_EQ(ended, !attempt.Met());
            Fixtures::Clear(database, Numbered(kLeaves));
            database.UpdateErrorTree();
            EXPECT_EQ(NamesOf(database.ActiveErrors(false)), leaves);
        });
    EXPECT_GT(failed, 10);
}

TEST_F(DatabaseMemoryTest, ListingsMayThrowAndLeaveTheDatabaseAlone)
{
    CErrorDatabase database(m_path);
    const CSilence silence(std::cout);
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            if (!attempt.Run([&] { database.PrintHierarchy(true); }))
                database.PrintHierarchy(true);
        });
    EXPECT_GT(failed, 0);
    ExpectWhole(database);
}

} // namespace
