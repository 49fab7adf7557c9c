#include "SystemFixture.h"

#include "support/FreshDirectory.h"

#include <Faultkeeper/Version.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

using namespace Support;
using Faultkeeper::kRaisedFlag;
using testing::HasSubstr;

namespace
{

class OwnerLife : public SystemTest
{
protected:
    /// Starts an owner that can't go on, and waits for its end.
    int EndsWith(const std::vector<std::string>& arguments)
    {
        m_program = RunOwner(arguments);
        return m_program->Wait();
    }

    /// The same with the test's configuration, which the test has spoilt.
    int EndsWithConfiguration()
    {
        return EndsWith({"--config", Configuration(), "--run-dir", m_directory.Path()});
    }

    std::unique_ptr<CProgram> m_program;
};

class OwnerEnd : public OwnerLife, public testing::WithParamInterface<int>
{
};

} // namespace

TEST_F(OwnerLife, ASecondOwnerStopsAndHarmsNothing)
{
    const auto owner = StartOwner();
    CDisplay display(Configuration());
    Report("raise 0x40C09 9");
    ASSERT_TRUE(display.ShowsInTime({kLinkSensor, kReceiver, kPosition}));

    EXPECT_EQ(EndsWithConfiguration(), 1);
    EXPECT_THAT(m_program->Errors(), HasSubstr("faultkeeperd: error: another owner is running: port 5300"));

    EXPECT_TRUE(owner->Process().Running());
    EXPECT_EQ(Table().header.ready, 1U);
    EXPECT_EQ(display.Active(), (Ids{kLinkSensor, kReceiver, kPosition}));
    Report("clear 0x40C09 9");
    EXPECT_TRUE(display.ShowsInTime({}));
}

TEST_F(OwnerLife, ASecondOwnerOnAnotherPortStopsAndHarmsNothing)
{
    const auto owner = StartOwner();
    Report("raise 0x40C09 9");
    ASSERT_TRUE(WaitUntil([&] { return Record(kPosition).counter1 == 1; }));

    EXPECT_EQ(EndsWith({"--config", Configuration(), "--run-dir", m_directory.Path() + "/.", "--port", "0"}),
              1);
    EXPECT_EQ(m_program->Errors(), "faultkeeperd: error: another owner uses " + m_directory.Path() +
                                       ": process " + std::to_string(owner->Process().Number()) + "\n");

    EXPECT_TRUE(owner->Process().Running());
    EXPECT_EQ(Table().header.ready, 1U);
    EXPECT_EQ(Record(kPosition).flags, kRaisedFlag);
    EXPECT_EQ(m_directory.SemaphoreValue(), 1);
}

TEST_F(OwnerLife, WhoLocksTheRunDirectoryDoesNotKeepAnOwnerFromStarting)
{
    const int directory = open(m_directory.Path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(flock(directory, LOCK_SH | LOCK_NB), 0); // as everybody can who may look into it
    StartOwner();
    close(directory);
}

TEST_F(OwnerLife, ALockThatNoOwnerHoldsIsToldTruly)
{
    WriteFile(m_directory.File("faultkeeper.owner"), "");
    const int file = open(m_directory.File("faultkeeper.owner").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(file, LOCK_SH | LOCK_NB), 0);
    EXPECT_EQ(EndsWithConfiguration(), 1);
    EXPECT_EQ(m_program->Errors(),
              "faultkeeperd: error: another process holds the lock by which owners claim " +
                  m_directory.Path() + "\n");
    EXPECT_FALSE(TableExists());
    close(file);
}

TEST_P(OwnerEnd, LeavesTheTableNotReadyAndEndsWell)
{
    const auto owner = StartOwner();
    EXPECT_EQ(Table().header.ready, 1U);
    owner->Process().Signal(GetParam());
    EXPECT_EQ(owner->Wait(), 0) << owner->Errors();
    EXPECT_EQ(Table().header.ready, 0U);
    EXPECT_THAT(owner->Errors(), HasSubstr("faultkeeperd: info: ended\n"));
}

INSTANTIATE_TEST_SUITE_P(Signals, OwnerEnd, testing::Values(SIGTERM, SIGINT, SIGHUP),
                         [](const testing::TestParamInfo<int>& signal) {
                             return signal.param == SIGTERM  ? "Terminate"
                                    : signal.param == SIGINT ? "Interrupt"
                                                             : "HangUp";
                         });

TEST_F(OwnerLife, ALockThatIsTakenAwayEndsItWithAWordOfThat)
{
    const auto owner = StartOwner();
    ASSERT_EQ(semctl(m_directory.Semaphore(), 0, IPC_RMID), 0);
    EXPECT_EQ(owner->Wait(), 1);
    EXPECT_THAT(owner->Errors(),
                HasSubstr("faultkeeperd: error: the shared table has failed; nothing can be "
                          "published any more\nfaultkeeperd: error: ended with a shared table "
                          "that has failed\n"));
}

TEST_F(OwnerLife, ANewOwnerTakesOverFromOneThatHasEnded)
{
    CDisplay display(Configuration());
    const auto first = StartOwner();
    Report("raise 0x40C09 9");
    ASSERT_TRUE(display.ShowsInTime({kLinkSensor, kReceiver, kPosition}));
    first->Process().Signal(SIGTERM);
    ASSERT_EQ(first->Wait(), 0);

    const auto second = StartOwner();
    EXPECT_EQ(Record(kLinkSensor).counter1, 1);
    Report("raise 0x4281B 2 clear 0x40C09 9");
    EXPECT_TRUE(display.ShowsInTime({kDataSensor, kReceiver, kPosition}));
}

TEST_F(OwnerLife, ANewOwnerTakesOverFromOneThatWasKilled)
{
    const auto first = StartOwner();
    Report("confirm raise 0x40C09 9");
    ASSERT_TRUE(WaitUntil([&] { return Record(kPosition).counter1 == 1; }));
    first->Process().Signal(SIGKILL);
    ASSERT_EQ(first->Wait(), 128 + SIGKILL);
    EXPECT_EQ(m_directory.SemaphoreValue(), 0); // nobody can take the lock

    const auto second = StartOwner();
    CDisplay display(Configuration());
    Report("raise 0x4281B 2");
    EXPECT_TRUE(display.ShowsInTime({kLinkSensor, kDataSensor, kReceiver, kPosition}));
}

TEST_F(OwnerLife, PrintsItsVersion)
{
    EXPECT_EQ(EndsWith({"--version"}), 0);
    EXPECT_EQ(m_program->Output(), "faultkeeperd " FAULTKEEPER_VERSION "\n");
    EXPECT_EQ(m_program->Errors(), "");
}

TEST_F(OwnerLife, AWrongCommandLineEndsWith2)
{
    EXPECT_EQ(EndsWith({}), 2);
    EXPECT_THAT(m_program->Errors(), HasSubstr("faultkeeperd: error: --config is required"));
    EXPECT_FALSE(TableExists());
}

TEST_F(OwnerLife, TheRunDirectoryMustExist)
{
    EXPECT_EQ(EndsWith({"--config", Configuration(), "--run-dir", m_directory.File("nowhere")}), 1);
    EXPECT_EQ(m_program->Errors(), "faultkeeperd: error: run directory: cannot enter " +
                                       m_directory.File("nowhere") + ": No such file or directory\n");
    EXPECT_FALSE(TableExists());
}

TEST_F(OwnerLife, TheConfigurationIsFoundFromWhereTheOwnerWasStarted)
{
    const CFreshDirectory elsewhere;
    const CWorkingDirectory startedIn(elsewhere.Path());
    const std::string name = m_directory.Path().substr(m_directory.Path().rfind('/') + 1);
    const auto owner = RunOwner({"--config", "../" + name, "--run-dir", m_directory.Path()});
    EXPECT_TRUE(owner->SaysInTime("info: ready: 4 errors, port 5300\n")) << owner->Errors();
    EXPECT_EQ(Table().header.count, 4);
}

TEST_F(OwnerLife, AMissingConfigurationTouchesNothing)
{
    const std::string nowhere = m_directory.File("nowhere");
    EXPECT_EQ(EndsWith({"--config", nowhere, "--run-dir", m_directory.Path()}), 1);
    EXPECT_EQ(m_program->Errors(),
              nowhere + "/FaultkeeperConfig.xml:1:1: error: No such file or directory\n" +
                  "faultkeeperd: error: the configuration cannot be used; nothing was changed\n");
    EXPECT_FALSE(TableExists());
}

TEST_F(OwnerLife, ABrokenModuleFileIsReportedWithItsLineAndTouchesNothing)
{
    WriteFile(m_directory.File("Broken.xml"), "<Module>\n <SubModule identifier=\"GPS\">\n</Module>\n");
    WriteFile(
        m_directory.File("FaultkeeperConfig.xml"),
        "<Faultkeeper><ErrorList><Module identifier=\"GPS\" file=\"Broken.xml\"/></ErrorList></Faultkeeper>");
    EXPECT_EQ(EndsWithConfiguration(), 1);
    EXPECT_THAT(m_program->Errors(), testing::StartsWith(m_directory.File("Broken.xml") + ":3:3: error: "));
    EXPECT_FALSE(TableExists());
}

TEST_F(OwnerLife, AnEmptyConfigurationIsReportedAndTouchesNothing)
{
    WriteFile(m_directory.File("FaultkeeperConfig.xml"), "<Faultkeeper>\n  <ErrorList/>\n</Faultkeeper>");
    EXPECT_EQ(EndsWithConfiguration(), 1);
    EXPECT_THAT(m_program->Errors(), testing::StartsWith(m_directory.File("FaultkeeperConfig.xml") +
                                                         ":2:3: error: the \"ErrorList\" is empty"));
    EXPECT_FALSE(TableExists());
}

TEST_F(OwnerLife, ABrokenRuleOfTheConfigurationEndsTheOwnerBeforeTheTableIsMade)
{
    WriteFile(m_directory.File("Rule.xml"), "<Module><SubModule identifier=\"No such\"><Problem/></SubModule>"
                                            "<Wrong/></Module>");
    WriteFile(
        m_directory.File("FaultkeeperConfig.xml"),
        "<Faultkeeper><ErrorList><Module identifier=\"GPS\" file=\"Rule.xml\"/></ErrorList></Faultkeeper>");
    EXPECT_EQ(EndsWithConfiguration(), 128 + SIGABRT);
    EXPECT_THAT(m_program->Errors(),
                testing::StartsWith("faultkeeperd: info: loading " + Configuration() + "\n"));
    EXPECT_THAT(m_program->Errors(), HasSubstr("subModuleId != esmiUnknown"));
    EXPECT_FALSE(TableExists());
}

TEST_F(OwnerLife, TheConfigurationThatIsCheckedIsTheOneThatIsLoaded)
{
    // The system finds "link/.." in another directory than the one that holds the link.
    const CFreshDirectory elsewhere;
    const std::string inner = elsewhere.File("inner");
    ASSERT_EQ(mkdir(inner.c_str(), 0700), 0);
    ASSERT_EQ(symlink(inner.c_str(), m_directory.File("link").c_str()), 0);
    EXPECT_EQ(EndsWith({"--config", m_directory.File("link/.."), "--run-dir", m_directory.Path()}), 1);
    EXPECT_THAT(m_program->Errors(), testing::StartsWith(elsewhere.File("FaultkeeperConfig.xml") + ":1:1: "));
    EXPECT_FALSE(TableExists());
}
