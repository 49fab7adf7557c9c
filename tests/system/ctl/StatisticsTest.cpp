#include "CtlFixture.h"

#include "support/ConfigurationBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

using namespace Support;
using testing::HasSubstr;

namespace
{

// With an owning process on the port.
class Statistics : public CtlTest
{
protected:
    void SetUp() override
    {
        m_owner = std::make_unique<CProgram>(std::vector<std::string>{
            FAULTKEEPER_TEST_OWNER, "--config", Configuration(), "--run-dir", m_directory.Path()});
        ASSERT_TRUE(m_owner->SaysInTime("info: ready")) << m_owner->Errors();
    }

    std::unique_ptr<CProgram> m_owner;
};

class NoStatistics : public CtlTest
{
};

} // namespace

TEST_F(Statistics, TellWhatTheOwnerHasDone)
{
    EXPECT_EQ(Ctl({"raise", kReceiver}).status, 0);
    EXPECT_EQ(Bare({"raise", "0x50C1B:2"}).status, 1); // not configured
    const Json document = Document({"statistics"});
    EXPECT_EQ(
        KeysOf(document),
        "acknowledged configuration runDirectory version applied commitFailures commits connections "
        "journalLength journalLost lockRetries lockSurplus malformed received repeated sessions turnedAway "
        "unknown uptime waiting");
    EXPECT_EQ(document["received"], 2);
    EXPECT_EQ(document["applied"], 1);
    EXPECT_EQ(document["unknown"], 1);
    EXPECT_EQ(document["malformed"], 0);
    EXPECT_EQ(document["sessions"], 2);
    EXPECT_EQ(document["journalLength"], 2) << "the receiver and the position";
    EXPECT_GE(document["commits"], 1);
    EXPECT_EQ(document["acknowledged"], "stored");
    EXPECT_EQ(document["runDirectory"], m_directory.Path());
    EXPECT_EQ(document["configuration"].get<std::string>().size(), 16U);
}

TEST_F(Statistics, TellAReporterWhatTheOwnerRefuses)
{
    for (const char* const command : {"raise", "clear"})
    {
        const SFinished refused = Bare({command, "0x50C1B:2"});
        EXPECT_EQ(refused.status, 1) << command;
        EXPECT_EQ(refused.output, "");
        EXPECT_EQ(refused.errors,
                  "faultkeeperctl: refused: the owner knows no error Service:GPS:No Data:2 (0x50C1B:2)\n");
        EXPECT_EQ(Bare({command, "0x40C1B:2"}).status, 0) << command;
    }
}

TEST_F(Statistics, AreATableForPeople)
{
    const SFinished finished = Ctl({"statistics"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_THAT(finished.output, HasSubstr("acknowledged    stored\n"));
    EXPECT_THAT(finished.output, HasSubstr("received        0\n"));
}

TEST_F(NoStatistics, WithoutAnOwner)
{
    const SFinished finished = Ctl({"statistics"});
    EXPECT_EQ(finished.status, 3);
    EXPECT_EQ(finished.errors, "faultkeeperctl: no owner: nobody listens on port 5300 of this machine\n");
}

TEST_F(Statistics, LetDisplaysWarnOfAnotherConfiguration)
{
    EXPECT_EQ(Ctl({"list"}).errors, "");
    const CFreshDirectory other;
    CConfigurationBuilder().Leaf(kSound).WriteTo(other.Prefix());
    const SFinished finished = Bare({"--config", other.Path(), "--run-dir", m_directory.Path(), "list"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.errors, "faultkeeperctl: the owner has loaded another configuration than the one in " +
                                   other.Prefix() + "; what is shown may be wrong\n");
}

TEST_F(Statistics, AreNotAskedForWhereNoOwnerHasMadeAClaim)
{
    const CFreshDirectory other;
    CConfigurationBuilder().Leaf(kSound).WriteTo(other.Prefix());
    std::filesystem::remove(m_directory.File("faultkeeper.owner"));
    EXPECT_EQ(Bare({"--config", other.Path(), "--run-dir", m_directory.Path(), "list"}).errors, "")
        << "an owner of another make need not understand the question";
}

TEST_F(Statistics, TellWhenAnOwnerThatIsGoneWasSeenLast)
{
    EXPECT_EQ(Ctl({"raise", kSound}).status, 0);
    m_owner->Process().Signal(SIGKILL);
    m_owner->Wait();
    const SFinished finished = Ctl({"list"});
    EXPECT_EQ(finished.status, 3);
    EXPECT_EQ(finished.output, "");
    EXPECT_THAT(finished.errors, HasSubstr("is left over from an owner that has ended, last seen 20"));
    SetUp();
    EXPECT_EQ(Ctl({"list"}).status, 0);
    EXPECT_THAT(Ctl({"active"}).output, HasSubstr(kSound));
}
TEST_F(Statistics, TellNoOwnerAfterOneThatWasKilledWhileADisplayHeldTheLock)
{
    Faultkeeper::CErrorDatabaseView display(false, Faultkeeper::eViewReader);
    ASSERT_TRUE(WaitUntil([&] { return display.GetLock(false); }));
    m_owner->Process().Signal(SIGKILL);
    m_owner->Wait();
    ASSERT_TRUE(display.ReleaseLock());
    ASSERT_EQ(m_directory.SemaphoreValue(), 1); // the lock can be had
    EXPECT_EQ(Ctl({"status"}).status, 3);
    EXPECT_EQ(Ctl({"list"}).status, 3);
    EXPECT_EQ(Ctl({"table", "--remove"}).status, 0);
}

TEST_F(Statistics, LetDisplaysWarnThroughASymbolicLink)
{
    const CFreshDirectory other;
    CConfigurationBuilder().Leaf(kSound).WriteTo(other.Prefix());
    const std::string link = other.File("link");
    ASSERT_EQ(symlink(m_directory.Path().c_str(), link.c_str()), 0);
    const SFinished finished = Bare({"--config", other.Path(), "--run-dir", link, "list"});
    EXPECT_THAT(finished.errors, HasSubstr("the owner has loaded another configuration"));
}
