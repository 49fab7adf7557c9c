#include "faultkeeperd/service/Sessions.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

using Faultkeeper::Apps::CSessions;

namespace
{

std::string Name(std::size_t number)
{
    return "session " + std::to_string(number);
}

} // namespace

TEST(Sessions, ANewOneHasNothingApplied)
{
    CSessions sessions;
    EXPECT_EQ(sessions.Open("a").applied, 0u);
    EXPECT_EQ(sessions.Count(), 1u);
}

TEST(Sessions, TakesEachNumberOnce)
{
    CSessions sessions;
    CSessions::SSession& session = sessions.Open("a");
    EXPECT_TRUE(CSessions::Take(session, 1));
    EXPECT_FALSE(CSessions::Take(session, 1));
    EXPECT_TRUE(CSessions::Take(session, 5)) << "one that was forgotten goes on where its client is";
    EXPECT_FALSE(CSessions::Take(session, 4));
    EXPECT_EQ(session.applied, 5u);
}

TEST(Sessions, KeepTheirStandingWithoutAConnection)
{
    CSessions sessions;
    CSessions::Take(sessions.Open("a"), 7);
    sessions.Close("a");
    EXPECT_EQ(sessions.Open("a").applied, 7u);
    EXPECT_EQ(sessions.Open("b").applied, 0u);
}

TEST(Sessions, OfSeveralConnectionsAreOne)
{
    CSessions sessions;
    CSessions::SSession& first = sessions.Open("a");
    CSessions::SSession& second = sessions.Open("a");
    EXPECT_EQ(&first, &second);
    sessions.Close("a");
    EXPECT_EQ(first.connections, 1);
    sessions.Close("a");
    sessions.Close("a"); // one too many, and one that never was, do no harm
    sessions.Close("b");
    EXPECT_EQ(sessions.Open("a").connections, 1);
}

TEST(Sessions, BeyondTheLimitThoseGoThatAreWithoutAConnectionTheLongest)
{
    CSessions sessions;
    for (std::size_t number = 0; number < CSessions::kLimit; ++number)
        CSessions::Take(sessions.Open(Name(number)), 1);
    sessions.Close(Name(9));
    sessions.Close(Name(3));
    EXPECT_EQ(sessions.Count(), CSessions::kLimit);
    sessions.Open("one more");
    EXPECT_EQ(sessions.Count(), CSessions::kLimit);
    EXPECT_EQ(sessions.Open(Name(3)).applied, 1u);
    EXPECT_EQ(sessions.Open(Name(9)).applied, 0u) << "forgotten";
    EXPECT_EQ(sessions.Count(), CSessions::kLimit + 1) << "those with a connection stay";
    sessions.Close(Name(0));
    EXPECT_EQ(sessions.Count(), CSessions::kLimit);
}

TEST(Sessions, OfAFormerOwnerStandAsTheyDidAndGoInTheirOrder)
{
    CSessions sessions;
    sessions.Restore("oldest", 5);
    sessions.Restore("old", 7);
    sessions.Restore("old", 9); // it is known already
    for (std::size_t number = 2; number < CSessions::kLimit; ++number)
        sessions.Open(Name(number));
    EXPECT_EQ(sessions.TakeForgotten(), std::vector<std::string>());
    sessions.Open("one more");
    EXPECT_EQ(sessions.TakeForgotten(), std::vector<std::string>{"oldest"});
    EXPECT_EQ(sessions.TakeForgotten(), std::vector<std::string>());
    CSessions::SSession& old = sessions.Open("old");
    EXPECT_EQ(old.applied, 7u);
    EXPECT_EQ(old.stored, 7u);
}

TEST(Sessions, AreStoredAlsoWithoutAConnection)
{
    CSessions sessions;
    CSessions::SSession& session = sessions.Open("a");
    CSessions::Take(session, 4);
    sessions.AwaitStore(session);
    sessions.AwaitStore(session);
    CSessions::Take(sessions.Open("b"), 2);
    sessions.Close("a");
    EXPECT_EQ(sessions.Open("a").stored, 0u);
    sessions.Stored();
    EXPECT_EQ(sessions.Open("a").stored, 4u);
    EXPECT_EQ(sessions.Open("b").stored, 0u) << "not awaited";
    CSessions::Take(session, 5);
    sessions.AwaitStore(session);
    sessions.Stored();
    EXPECT_EQ(session.stored, 5u);
}

TEST(Sessions, ThatAreForgottenBeforeTheyAreStoredAreGone)
{
    CSessions sessions;
    for (const char* const name : {"a", "b"})
    {
        CSessions::SSession& session = sessions.Open(name);
        CSessions::Take(session, 4);
        sessions.AwaitStore(session);
    }
    sessions.Close("a");
    for (std::size_t number = 1; number < CSessions::kLimit; ++number)
        sessions.Open(Name(number));
    EXPECT_EQ(sessions.TakeForgotten(), std::vector<std::string>{"a"});
    sessions.Stored();
    EXPECT_EQ(sessions.Open("a").stored, 0u);
    EXPECT_EQ(sessions.Open("b").stored, 4u);
}

TEST(Sessions, ComeAndGoWithoutEnd)
{
    std::minstd_rand random(1);
    CSessions sessions;
    for (int step = 0; step < 100000; ++step)
    {
        const std::string name = Name(random() % 10000);
        sessions.Open(name);
        sessions.Close(name);
        ASSERT_LE(sessions.Count(), CSessions::kLimit);
    }
}
