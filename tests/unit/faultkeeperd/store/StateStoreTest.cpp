#include "StoreFixture.h"

#include "store/Sqlite.h"

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

TEST_F(StateStore, TheJournalTellsWhyAnOwnerDidSomethingByItself)
{
    SStoreBatch batch;
    for (const EOwnersReason reason : {eorConfiguration, eorTable, eorNone})
    {
        batch.transitions.push_back(Transition(2, false));
        batch.transitions.back().session.clear();
        batch.transitions.back().reason = reason;
    }
    CStateStore(Settings()).Commit(batch);
    CStateStore store(Settings());
    EXPECT_TRUE(store.Read().dropped.empty());
    EXPECT_EQ(Shown(store.Journal(0, 10)), "1 - 265243:2 at 2002000000000/77 by  by the owner for reason 1\n"
                                           "2 - 265243:2 at 2002000000000/77 by  by the owner for reason 2\n"
                                           "3 - 265243:2 at 2002000000000/77 by \n");
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

class DamagedStateStore : public StateStore
{
protected:
    /// A store with some of each, closed, and then changed behind its back.
    void MakeAndChange(const std::string& change) const
    {
        {
            CStateStore store(Settings());
            store.Begin("boot", "c");
            SStoreBatch batch;
            batch.errors = {Error(2, true, 1), Error(3, true, 1)};
            batch.sessions = {{"a", 1}, {"b", 2}};
            batch.transitions.assign(4, Transition(2, true));
            store.Commit(batch);
        }
        CSqlite(Settings().path).Run(change);
    }

    /// What a store gives, with its facts, when it is read and taken over.
    std::string TakenOver() const
    {
        CStateStore store(Settings());
        const SStoreContents contents = store.Read();
        store.Begin("boot", "c");
        return contents.boot + " " + contents.configuration + "\n" + Shown(contents) +
               std::to_string(store.JournalLength()) + " up to " + std::to_string(store.LastNumber()) + "\n";
    }
};

const std::string kError2 = "error 265243:2 raised 1/2/1 1002000000000 902000000000\n";
const std::string kError3 = "error 265243:3 raised 1/2/1 1003000000000 903000000000\n";
const std::string kSessions = "session a 1\nsession b 2\n";

TEST_F(DamagedStateStore, ARowThatDoesNotFitItsChecksumIsTakenOutAndNamed)
{
    MakeAndChange(
        "UPDATE errors SET counter1 = 9 WHERE type = 3; UPDATE sessions SET applied = 3 WHERE id = 'b';"
        "UPDATE journal SET type = 4 WHERE number = 2; UPDATE facts SET value = 'x' WHERE id = 1");
    EXPECT_EQ(TakenOver(), "boot c\n" + kError2 +
                               "session a 1\n"
                               "dropped boot id\n"
                               "dropped error Positioning:GPS:No Data:3\n"
                               "dropped session that reads b\n"
                               "dropped transition numbered 2\n"
                               "3 up to 4\n");
    EXPECT_EQ(TakenOver(), "boot c\n" + kError2 + "session a 1\n3 up to 4\n");
}

TEST_F(DamagedStateStore, ARowWhoseErrorBecomesThatOfAGoodOneLeavesThatAlone)
{
    MakeAndChange("UPDATE errors SET type = 2 WHERE type = 3");
    EXPECT_EQ(TakenOver(),
              "boot c\n" + kError2 + kSessions + "dropped error Positioning:GPS:No Data:3\n4 up to 4\n");
    EXPECT_EQ(TakenOver(), "boot c\n" + kError2 + kSessions + "4 up to 4\n");
}

TEST_F(DamagedStateStore, ARowWhoseErrorIsOutOfRangeIsTakenOutByItsNumber)
{
    MakeAndChange("UPDATE errors SET type = 65538 WHERE type = 3");
    EXPECT_EQ(TakenOver(),
              "boot c\n" + kError2 + kSessions + "dropped error Positioning:GPS:No Data:3\n4 up to 4\n");
    EXPECT_EQ(TakenOver(), "boot c\n" + kError2 + kSessions + "4 up to 4\n");
}

TEST_F(DamagedStateStore, ARowWhoseNumberIsAnotherErrorsIsNamedByWhatItSays)
{
    MakeAndChange("UPDATE errors SET id = id + 4 WHERE type = 3");
    EXPECT_EQ(TakenOver(),
              "boot c\n" + kError2 + kSessions + "dropped error Positioning:GPS:No Data:3\n4 up to 4\n");
    EXPECT_EQ(TakenOver(), "boot c\n" + kError2 + kSessions + "4 up to 4\n");
}

TEST_F(DamagedStateStore, ASessionThatBecomesAnotherLeavesThatAlone)
{
    MakeAndChange("UPDATE sessions SET id = 'a' WHERE id = 'b'");
    EXPECT_EQ(TakenOver(),
              "boot c\n" + kError2 + kError3 + "session a 1\ndropped session that reads a\n4 up to 4\n");
    EXPECT_EQ(TakenOver(), "boot c\n" + kError2 + kError3 + "session a 1\n4 up to 4\n");
}

TEST_F(DamagedStateStore, WhoseFactsAreWrongIsOfNoKnownBoot)
{
    MakeAndChange("UPDATE facts SET value = 'boat' WHERE value = 'boot'");
    EXPECT_EQ(TakenOver(),
              " c\n" + kError2 + kError3 + kSessions + "dropped boot id\ndropped boot id\n4 up to 4\n");
    EXPECT_EQ(TakenOver(), "boot c\nerror 265243:2 clear 1/2/1 1002000000000 902000000000\n"
                           "error 265243:3 clear 1/2/1 1003000000000 903000000000\n4 up to 4\n");
}

TEST_F(DamagedStateStore, ABadRowIsNotMadeGoodByTheNextBoot)
{
    MakeAndChange("UPDATE errors SET counter1 = 9 WHERE type = 3");
    CStateStore store(Settings());
    store.Begin("next boot", "c");
    const std::string cleared = "error 265243:2 clear 1/2/1 1002000000000 902000000000\n";
    EXPECT_EQ(Shown(store.Read()), cleared + "dropped error Positioning:GPS:No Data:3\n");
}

TEST_F(DamagedStateStore, ANumberThatJumpsDoesNotTakeTheJournalAway)
{
    MakeAndChange("UPDATE journal SET number = 1000004 WHERE number = 4");
    {
        CStateStore store(Settings(5));
        EXPECT_EQ(store.JournalLength(), 3u);
        EXPECT_EQ(store.LastNumber(), 3u);
        store.Read();
        store.Begin("boot", "c");
        SStoreBatch batch;
        batch.transitions.assign(1, Transition(3, true));
        store.Commit(batch);
        EXPECT_EQ(store.JournalLength(), 4u);
    }
    CStateStore store(Settings(5));
    const std::vector<STransition> journal = store.Journal(0, 100);
    ASSERT_EQ(journal.size(), 4u);
    EXPECT_EQ(journal.front().number, 1u);
    EXPECT_EQ(journal.back().number, 4u);
}

TEST_F(DamagedStateStore, TheNumberOfADamagedLastTransitionIsNotGivenAgain)
{
    MakeAndChange("UPDATE journal SET code = 1 WHERE number > 2");
    EXPECT_EQ(TakenOver(), "boot c\n" + kError2 + kError3 + kSessions +
                               "dropped transitions numbered 3 to 4\n2 up to 4\n");
}

TEST_F(StateStore, TheJournalIsTrimmedByHowManyThereAreAndNotByTheirNumbers)
{
    SStoreBatch batch;
    batch.transitions.assign(5, Transition(2, true));
    CStateStore(Settings()).Commit(batch);
    CSqlite(Settings().path).Run("DELETE FROM journal WHERE number IN (2, 3)");
    CStateStore store(Settings(3));
    batch.transitions.assign(1, Transition(3, true));
    store.Commit(batch);
    EXPECT_EQ(store.JournalLength(), 3u);
    EXPECT_EQ(store.Journal(0, 10).front().number, 4u);
    EXPECT_EQ(store.Journal(0, 10).size(), 3u);
}

TEST_F(StateStore, OfAnUnknownBootKeepsNoSessionsWhateverItWasBefore)
{
    CStateStore store(Settings());
    store.Begin("", "c");
    SStoreBatch batch;
    batch.errors = {Error(2, true, 1)};
    batch.sessions = {{"a", 1}};
    store.Commit(batch);
    store.Begin("", "c");
    EXPECT_EQ(Shown(store.Read()), "error 265243:2 clear 1/2/1 1002000000000 902000000000\n");
}

TEST_F(StateStore, ASessionThatWasForgottenCanComeBack)
{
    CStateStore store(Settings());
    SStoreBatch batch;
    batch.sessions = {{"a", 1}, {"b", 2}};
    store.Commit(batch);
    batch.sessions.clear();
    batch.forgottenSessions = {"a", "never seen"};
    store.Commit(batch);
    batch.forgottenSessions.clear();
    batch.sessions = {{"a", 3}, {"b", 4}};
    store.Commit(batch);
    EXPECT_EQ(Shown(store.Read()), "session a 3\nsession b 4\n");
}

TEST_F(StateStore, CanBeReadWhereNothingCanBeWritten)
{
    SStoreBatch batch;
    batch.errors = {Error(2, true, 1)};
    CStateStore(Settings()).Commit(batch);
    const std::string closed = ReadFile(Settings().path);
    EXPECT_EQ(Shown(CStateStore(Settings(), esoReading).Read()), kError2);
    EXPECT_EQ(ReadFile(Settings().path), closed);

    std::string log;
    {
        CStateStore store(Settings());
        batch.errors = {Error(3, true, 1)};
        store.Commit(batch);
        log = ReadFile(Settings().path + "-wal");
        WriteFile(Settings().path + ".copy", closed); // as an owner leaves it that is killed
        WriteFile(Settings().path + ".copy-wal", log);
    }
    SStoreSettings copy;
    copy.path = Settings().path + ".copy";
    EXPECT_EQ(Shown(CStateStore(copy, esoReading).Read()), kError2 + kError3);
    EXPECT_EQ(ReadFile(copy.path), closed);
    EXPECT_EQ(ReadFile(copy.path + "-wal"), log);
}

TEST_F(StateStore, IsFoundWhateverItsNameIs)
{
    SStoreSettings settings;
    settings.path = m_directory.Prefix() + "100%25 of #7? yes.db";
    CStateStore(settings).Commit(SStoreBatch());
    EXPECT_FALSE(ReadFile(settings.path).empty());
    EXPECT_EQ(Shown(CStateStore(settings, esoReading).Read()), "");
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
