#include "StoreFixture.h"

#include "faultkeeperd/store/Sqlite.h"

#include <limits>

using namespace StoreFixture;

namespace
{

class StateStore : public Test
{
};

TEST_F(StateStore, ANewOneIsEmpty)
{
    CStateStore store(Settings());
    const SStoreContents contents = store.Read();
    EXPECT_EQ(Shown(contents), "");
    EXPECT_EQ(contents.boot, "");
    EXPECT_EQ(contents.configuration, "");
    EXPECT_EQ(store.JournalLength(), 0u);
    EXPECT_EQ(store.LastNumber(), 0u);
}

TEST_F(StateStore, WhatWasCommittedIsThereWhenItIsOpenedAgain)
{
    {
        CStateStore store(Settings());
        store.Begin("boot", "configuration");
        SStoreBatch batch;
        batch.errors = {Error(2, true, 65535, 5000000000U), Error(3, false, 0, 0)};
        batch.sessions = {{"00000000000000000000000000000001", 17}};
        store.Commit(batch);
    }
    CStateStore store(Settings());
    const SStoreContents contents = store.Read();
    EXPECT_EQ(contents.boot, "boot");
    EXPECT_EQ(contents.configuration, "configuration");
    EXPECT_EQ(Shown(contents), "error 265243:2 raised 65535/0/5000000000 1002000000000 902000000000\n"
                               "error 265243:3 clear 0/1/0 1003000000000 903000000000\n"
                               "session 00000000000000000000000000000001 17\n");
}

TEST_F(StateStore, TheLatestWordOnAnErrorAndASessionCounts)
{
    CStateStore store(Settings());
    SStoreBatch batch;
    batch.errors = {Error(2, true, 1)};
    batch.sessions = {{"a", 1}, {"b", 1}};
    store.Commit(batch);
    batch.errors = {Error(2, false, 2, 2)};
    batch.sessions = {{"a", std::numeric_limits<std::int64_t>::max()}};
    batch.forgottenSessions = {"b"};
    store.Commit(batch);
    EXPECT_EQ(Shown(store.Read()), "error 265243:2 clear 2/3/2 1002000000000 902000000000\n"
                                   "session a 9223372036854775807\n");
}

TEST_F(StateStore, SessionsOfAnotherBootAreGone)
{
    CStateStore store(Settings());
    store.Begin("first", "c");
    SStoreBatch batch;
    batch.errors = {Error(2, true, 1)};
    batch.sessions = {{"a", 1}};
    store.Commit(batch);
    store.Begin("first", "other");
    EXPECT_EQ(store.Read().sessions.size(), 1u);
    store.Begin("second", "other");
    EXPECT_EQ(store.Read().sessions.size(), 0u);
    EXPECT_EQ(store.Read().errors.size(), 1u);
}

TEST_F(StateStore, TheJournalNumbersTransitionsWithoutGapsOverReopenings)
{
    SStoreBatch batch;
    batch.transitions = {Transition(2, true), Transition(3, true)};
    CStateStore(Settings()).Commit(batch);
    CStateStore store(Settings());
    batch.transitions = {Transition(2, false)};
    batch.transitions[0].session.clear();
    batch.transitions[0].caused = true;
    batch.transitions[0].causeCode = 265225;
    batch.transitions[0].causeType = 9;
    store.Commit(batch);
    EXPECT_EQ(Shown(store.Journal(1, 10)),
              "1 + 265243:2 at 2002000000000/77 by 0123456789abcdef0123456789abcdef\n"
              "2 + 265243:3 at 2003000000000/77 by 0123456789abcdef0123456789abcdef\n"
              "3 - 265243:2 at 2002000000000/77 by  because of 265225:9\n");
    EXPECT_EQ(Shown(store.Journal(2, 1)),
              "2 + 265243:3 at 2003000000000/77 by 0123456789abcdef0123456789abcdef\n");
    EXPECT_EQ(Shown(store.Journal(4, 10)), "");
    EXPECT_EQ(store.JournalLength(), 3u);
}

TEST_F(StateStore, OfMoreTransitionsThanTheLimitTheOldestGo)
{
    CStateStore store(Settings(3));
    SStoreBatch batch;
    batch.transitions.assign(5, Transition(2, true));
    store.Commit(batch);
    EXPECT_EQ(store.JournalLength(), 3u);
    EXPECT_EQ(store.Journal(0, 10).front().number, 3u);
    batch.transitions.assign(1, Transition(2, false));
    store.Commit(batch);
    EXPECT_EQ(store.Journal(0, 10).front().number, 4u);
    EXPECT_EQ(store.Journal(0, 10).size(), 3u);
}

TEST_F(StateStore, AnEmptyJournalStaysEmpty)
{
    CStateStore store(Settings(0));
    SStoreBatch batch;
    batch.transitions.assign(5, Transition(2, true));
    store.Commit(batch);
    EXPECT_EQ(store.JournalLength(), 0u);
    EXPECT_EQ(store.Journal(0, 10).size(), 0u);
}

TEST_F(StateStore, ARowThatDoesNotFitItsChecksumIsTakenOutAndNamed)
{
    SStoreBatch batch;
    batch.errors = {Error(2, true, 1), Error(3, true, 1)};
    batch.sessions = {{"a", 1}, {"b", 2}};
    batch.transitions = {Transition(2, true), Transition(3, true)};
    CStateStore(Settings()).Commit(batch);
    {
        CSqlite database(Settings().path);
        database.Run(
            "UPDATE errors SET counter1 = 9 WHERE type = 3; UPDATE sessions SET applied = 3 WHERE id = 'b';"
            "UPDATE journal SET type = 4 WHERE number = 1");
    }
    CStateStore store(Settings());
    EXPECT_EQ(Shown(store.Read()), "error 265243:2 raised 1/2/1 1002000000000 902000000000\n"
                                   "session a 1\n"
                                   "dropped error Positioning:GPS:No Data:3\n"
                                   "dropped session b\n");
    EXPECT_EQ(Shown(store.Read()), "error 265243:2 raised 1/2/1 1002000000000 902000000000\n"
                                   "session a 1\n");
    EXPECT_EQ(store.Journal(0, 10).size(), 1u);
}

TEST_F(StateStore, OneThatAnotherProcessUsesIsNotOpened)
{
    const CStateStore store(Settings());
    try
    {
        CStateStore second(Settings());
        FAIL() << "opened twice";
    }
    catch (const CSqliteFailure& failure)
    {
        EXPECT_FALSE(failure.Damage());
    }
}

} // namespace
