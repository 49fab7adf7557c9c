#include "CtlFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <unistd.h>

#include <sstream>

using namespace Support;

namespace
{
class Watch : public CtlTest
{
protected:
    static std::vector<Json> Pictures(const CProgram& watch)
    {
        std::istringstream lines(watch.Output());
        std::vector<Json> pictures;
        for (std::string line; std::getline(lines, line) && !lines.eof();) // the last one may be under way
            pictures.push_back(Json::parse(line));
        return pictures;
    }

    // Waits until the newest picture shows a state and so many trees.
    static bool ShowsInTime(const CProgram& watch, const std::string& state, std::size_t trees)
    {
        return WaitUntil(
            [&]
            {
                const std::vector<Json> pictures = Pictures(watch);
                return !pictures.empty() && pictures.back()["state"] == state &&
                       pictures.back()["trees"].size() == trees;
            });
    }
};
} // namespace

TEST_F(Watch, ShowsEachChangeAndEndsOnInterrupt)
{
    StartOwner();
    const std::unique_ptr<CProgram> watch = Start({"watch", "--json"});
    ASSERT_TRUE(ShowsInTime(*watch, "ready", 0)) << watch->Errors();
    Raise(kSound);
    ASSERT_TRUE(ShowsInTime(*watch, "ready", 1));
    Raise(kLink);
    ASSERT_TRUE(ShowsInTime(*watch, "ready", 2));
    Clear(kSound);
    ASSERT_TRUE(ShowsInTime(*watch, "ready", 1));
    watch->Process().Signal(SIGINT);
    EXPECT_EQ(watch->Wait(), 0);
    EXPECT_EQ(Pictures(*watch).size(), 4U); // one for each change, none in between
    EXPECT_EQ(watch->Errors(), "");
}

TEST_F(Watch, ShowsARaiseThatLeavesTheTreesAsTheyAreButForTheCounter)
{
    StartOwner();
    Raise(kSound);
    const std::unique_ptr<CProgram> watch = Start({"watch", "--json"});
    ASSERT_TRUE(ShowsInTime(*watch, "ready", 1));
    Clear(kSound);
    Raise(kSound);
    EXPECT_TRUE(WaitUntil(
        [&] { return Pictures(*watch).back()["trees"].dump().find("\"counter1\":2") != std::string::npos; }));
    watch->Process().Signal(SIGTERM);
    EXPECT_EQ(watch->Wait(), 0);
}

TEST_F(Watch, TellsWhenTheTableIsNotReadyAndFollowsItWhenItIs)
{
    StartOwner();
    Raise(kSound);
    const std::unique_ptr<CProgram> watch = Start({"watch", "--json"});
    ASSERT_TRUE(ShowsInTime(*watch, "ready", 1));
    ASSERT_TRUE(WaitUntil([this] { return Owner().FaultkeeperReady(false); }));
    ASSERT_TRUE(ShowsInTime(*watch, "notReady", 1)); // what was seen last stays to be seen
    StartOwner();                                    // with an empty table
    EXPECT_TRUE(ShowsInTime(*watch, "ready", 0));
}

TEST_F(Watch, FollowsAnOwnerThatComesBackWithOtherErrorsRaised)
{
    CGate raised;
    CChildProcess first(
        [&]
        {
            StartOwner();
            Raise(kSound);
            raised.Open();
            for (;;)
                pause();
            return 0;
        });
    ASSERT_TRUE(raised.Pass());
    const std::unique_ptr<CProgram> watch = Start({"watch", "--json"});
    ASSERT_TRUE(ShowsInTime(*watch, "ready", 1));
    first.Signal(SIGKILL);
    first.Wait();
    ASSERT_TRUE(ShowsInTime(*watch, "ownerGone", 1));
    StartOwner();
    Raise(kLink);
    Raise(kReceiver);
    ASSERT_TRUE(WaitUntil(
        [&] { return Pictures(*watch).back()["trees"].dump().find(kReceiver) != std::string::npos; }));
    EXPECT_EQ(Pictures(*watch).back()["trees"].size(), 1U); // the one cleared in the gap is gone
}

TEST_F(Watch, FollowsATableThatWasRemovedAndMadeAnew)
{
    {
        CGate made;
        CChildProcess first(
            [&]
            {
                StartOwner();
                Raise(kSound);
                made.Open();
                for (;;)
                    pause();
                return 0;
            });
        ASSERT_TRUE(made.Pass());
        const std::unique_ptr<CProgram> watch = Start({"watch", "--json"});
        ASSERT_TRUE(ShowsInTime(*watch, "ready", 1));
        first.Signal(SIGKILL);
        first.Wait();
        ASSERT_TRUE(ShowsInTime(*watch, "ownerGone", 1));
        EXPECT_EQ(Ctl({"table", "--remove"}).status, 0);
        ASSERT_TRUE(ShowsInTime(*watch, "absent", 1));
        StartOwner();
        ASSERT_TRUE(ShowsInTime(*watch, "ready", 0));
        Raise(kLink);
        EXPECT_TRUE(ShowsInTime(*watch, "ready", 1));
    }
}

TEST_F(Watch, EndsQuietlyWhenItsReaderHasGone)
{
    StartOwner();
    CProgram shell({"/bin/sh", "-c",
                    std::string(FAULTKEEPER_TEST_CTL) + " --config " + Configuration() + " --run-dir " +
                        m_directory.Path() + " watch | head -n 1"});
    EXPECT_EQ(shell.Wait(), 0); // without a change that would have to be written
    EXPECT_EQ(shell.Output(), "No active faults.\n");
    EXPECT_EQ(shell.Errors(), "");
}

// The interrupt waits until the program looks at the table.
TEST_F(Watch, EndsOnInterruptAlsoWhenNobodyReadsWhatItWrites)
{
    StartOwner();
    const std::string pipe = m_directory.File("pipe");
    const std::string script = "mkfifo " + pipe + " && exec 3<>" + pipe +
                               " && head -c 65536 /dev/zero >&3\n" + FAULTKEEPER_TEST_CTL + " --config " +
                               Configuration() + " --run-dir " + m_directory.Path() + " watch >" + pipe +
                               " &\nuntil grep -q SYSV /proc/$!/maps; do sleep 0.1; done\nwhile kill -INT $! "
                               "2>/dev/null; do sleep 0.5; done; wait $!";
    CProgram shell({"/bin/sh", "-c", script});
    EXPECT_EQ(shell.Wait(), 0);
    EXPECT_EQ(shell.Errors(), "");
    std::filesystem::remove(pipe);
}

TEST_F(Watch, DrawsTextForPeople)
{
    StartOwner();
    const std::unique_ptr<CProgram> watch = Start({"watch"});
    ASSERT_TRUE(WaitUntil([&] { return watch->Output() == "No active faults.\n"; })) << watch->Errors();
    Raise(kSound);
    EXPECT_TRUE(WaitUntil([&] { return watch->Output().find("1 active fault\n") != std::string::npos; }));
    watch->Process().Signal(SIGINT);
    EXPECT_EQ(watch->Wait(), 0);
}
