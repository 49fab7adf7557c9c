#include "host/connections/RawPeer.h"
#include "pages/Page.h"
#include "support/FileLock.h"
#include "system/SystemFixture.h"
#include "unit/client/PlainListener.h"

#include <Faultkeeper/FaultkeeperAPI.h>

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

using namespace Faultkeeper;
using namespace Support;

namespace
{

const std::string kSession = "0123456789abcdef0123456789abcdef"; // in the place of one that a client made up
const std::pair<int, int> kNoData(0x40C1B, 2);

/// A line of a conversation: who says what.
struct SWords
{
    bool reporter;
    std::string bytes;
};

std::vector<SWords> Conversation(const std::string& block)
{
    std::istringstream lines(block);
    std::vector<SWords> words;
    for (std::string who, bytes; lines >> who >> bytes;)
    {
        if (who != "reporter" && who != "owner")
            throw std::runtime_error("nobody is called " + who);
        words.push_back({who == "reporter", bytes});
    }
    return words;
}

std::vector<std::vector<SWords>> Conversations()
{
    std::vector<std::vector<SWords>> conversations;
    for (const std::string& block : PageBlocks(BYTES_PAGE, "conversation"))
        conversations.push_back(Conversation(block));
    return conversations;
}

std::string SessionReplaced(std::string bytes)
{
    const std::size_t at = bytes.find("32:");
    return at == std::string::npos ? bytes : bytes.replace(at + 3, kSession.size(), kSession);
}

bool IsHello(const std::string& bytes)
{
    return bytes.find("5:Hello") != std::string::npos;
}

} // namespace

TEST(BytesOfWireTest, AClientSaysWhatTheReporterOfTheFirstConversationDoes)
{
    const CPortLock lock;
    CPlainListener owner;
    CFaultkeeperAPI client;
    ASSERT_TRUE(WaitUntil([&] { return client.VerifyConnection(); }));
    owner.Accept();
    const std::vector<SWords> conversation = Conversations().at(0);
    bool raised = false;
    for (const SWords& words : conversation)
    {
        if (words.reporter && !IsHello(words.bytes))
        {
            ASSERT_EQ(raised ? client.ClearError(kNoData) : client.RaiseError(kNoData, false), 1);
            raised = true;
        }
        if (words.reporter)
            EXPECT_EQ(SessionReplaced(owner.Read(words.bytes.size())), words.bytes);
        else
            owner.Say(words.bytes);
    }
    EXPECT_TRUE(raised);
    EXPECT_TRUE(
        WaitUntil([&] { return client.WaitUntilAcknowledged(10); })); // it understands what it is told
}

class BytesOfWireSystemTest : public SystemTest
{
};

TEST_F(BytesOfWireSystemTest, AnOwnerAnswersWhatTheOwnerOfTheConversationsDoes)
{
    const std::unique_ptr<CProgram> owner = StartOwner();
    const std::vector<std::vector<SWords>> conversations = Conversations();
    for (const std::vector<SWords>& conversation : conversations)
    {
        HostTest::CRawConnection connection = HostTest::CRawConnection::To("127.0.0.1", 5300);
        for (const SWords& words : conversation)
        {
            if (words.reporter)
                connection.Send(words.bytes);
            else
                EXPECT_EQ(connection.Receive(words.bytes.size()), words.bytes);
        }
        connection.EndSending();
        EXPECT_EQ(connection.ReceiveToEnd(), ""); // no more was said
    }
    // Raised and cleared in the first, once more in the second after a repeat, and again by the last.
    EXPECT_TRUE(WaitUntil([&] { return Record(kReceiver).counter1 == 2; }));
    EXPECT_EQ(Record(kReceiver).flags, 1);
}
