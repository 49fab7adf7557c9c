#include "system/ctl/CtlFixture.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sstream>

using namespace Support;

namespace
{
/// With a real owner, whose store it is.
class FollowedJournal : public CtlTest
{
protected:
    void StartRealOwner()
    {
        m_process = std::make_unique<CProgram>(std::vector<std::string>{
            FAULTKEEPER_TEST_OWNER, "--config", Configuration(), "--run-dir", m_directory.Path()});
        ASSERT_TRUE(m_process->SaysInTime("info: ready")) << m_process->Errors();
    }

    void KillOwner()
    {
        m_process->Process().Signal(SIGKILL);
        m_process->Wait();
    }

    // Acknowledged is stored.
    void Report(const std::string& request, const std::string& name) const
    {
        EXPECT_EQ(Ctl({request, name}).status, 0);
    }

    /// What happened, without the times and the sessions.
    static std::string Happened(const std::string& output)
    {
        std::istringstream lines(output);
        std::string text;
        for (std::string line; std::getline(lines, line) && !lines.eof();)
            text += line.substr(30, line.find(" by ") - 30) + "\n";
        return text;
    }

    std::unique_ptr<CProgram> m_process;
};
} // namespace

TEST_F(FollowedJournal, ShowsWhatComesAsLongAsItIsReadAlsoFromTheNextOwner)
{
    StartRealOwner();
    Report("raise", kSound);
    const std::unique_ptr<CProgram> journal = Start({"journal", "--follow"});
    const std::unique_ptr<CProgram> all = Start({"journal", "--follow", "--since", "1h"});
    ASSERT_TRUE(WaitUntil([&] { return Happened(all->Output()) == "+ " + kSound + ", reported\n"; }));
    // Whatever comes before it looks for the first time is of no interest to it: so until something shows.
    ASSERT_TRUE(WaitUntil(
        [&]
        {
            Report("clear", kSound);
            Report("raise", kSound);
            return !journal->Output().empty();
        }));
    Report("raise", kLink);
    const std::string raised = "+ " + kLink + ", reported\n+ " + kReceiver + " follows " + kLink + "\n+ " +
                               kPosition + " follows " + kReceiver + "\n";
    const auto endsWith = [](const CProgram& program, const std::string& end)
    {
        return WaitUntil(
            [&]
            {
                const std::string text = Happened(program.Output());
                return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
            });
    };
    EXPECT_TRUE(endsWith(*journal, raised)) << journal->Output();
    KillOwner();
    StartRealOwner();
    Report("clear", kLink);
    const std::string cleared = "- " + kLink + ", reported\n- " + kReceiver + " follows " + kLink + "\n- " +
                                kPosition + " follows " + kReceiver + "\n";
    EXPECT_TRUE(endsWith(*journal, raised + cleared)) << journal->Output();
    EXPECT_TRUE(endsWith(*all, raised + cleared)) << all->Output();
    EXPECT_EQ(Happened(all->Output()), Happened(Ctl({"journal"}).output));
    for (const auto& program : {journal.get(), all.get()})
    {
        program->Process().Signal(SIGINT);
        EXPECT_EQ(program->Wait(), 0);
        EXPECT_EQ(program->Errors(), "");
    }
}

TEST_F(FollowedJournal, IsOneDocumentALine)
{
    StartRealOwner();
    Report("raise", kSound);
    const std::unique_ptr<CProgram> journal = Start({"journal", "--follow", "--since", "1h", "--json"});
    ASSERT_TRUE(WaitUntil([&] { return journal->Output().find('\n') != std::string::npos; }));
    journal->Process().Signal(SIGTERM);
    EXPECT_EQ(journal->Wait(), 0);
    EXPECT_EQ(Json::parse(journal->Output())["id"], kSound);
}

TEST_F(FollowedJournal, TellsWhatIsActiveNowAsTheListDoes)
{
    StartRealOwner();
    Report("raise", kData);
    const Json now = Document({"at", "now"});
    EXPECT_EQ(now["complete"], true);
    const Json list = Document({"list"});
    ASSERT_EQ(now["trees"].size(), 1U);
    EXPECT_EQ(now["trees"][0]["id"], list["trees"][0]["id"]);
    EXPECT_EQ(now["trees"][0]["stateKey"], list["trees"][0]["stateKey"]);
    EXPECT_EQ(now["trees"][0]["friendlyCode"], list["trees"][0]["friendlyCode"]);
    EXPECT_EQ(now["trees"][0]["problems"], list["trees"][0]["problems"]);
}
