#include "SystemFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sstream>

using namespace Support;

namespace
{

// The owner as a service of the machine.
class Service : public SystemTest
{
protected:
    /// What the owner tells the service manager next.
    static std::string Heard(int manager)
    {
        struct pollfd input = {manager, POLLIN, 0};
        char buffer[100];
        if (poll(&input, 1, kPatienceMilliseconds) != 1)
            return "nothing";
        const ssize_t count = recv(manager, buffer, sizeof buffer, 0);
        return std::string(buffer, count > 0 ? static_cast<std::size_t>(count) : 0);
    }

    static int LinesWith(const std::string& text, const std::string& all)
    {
        std::istringstream lines(all);
        int count = 0;
        for (std::string line; std::getline(lines, line);)
            count += line.find(text) != std::string::npos ? 1 : 0;
        return count;
    }
};

} // namespace

TEST_F(Service, TellsItsManagerThatItIsReadyAliveAndStopping)
{
    const int manager = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    struct sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string path = m_directory.File("notify");
    std::memcpy(address.sun_path, path.data(), path.size());
    ASSERT_EQ(bind(manager, reinterpret_cast<struct sockaddr*>(&address), sizeof address), 0);
    setenv("NOTIFY_SOCKET", path.c_str(), 1);
    setenv("WATCHDOG_USEC", "200000", 1);
    const auto owner = StartOwner();
    unsetenv("NOTIFY_SOCKET");
    unsetenv("WATCHDOG_USEC");
    EXPECT_EQ(Heard(manager), "READY=1");
    EXPECT_EQ(Heard(manager), "WATCHDOG=1");
    EXPECT_EQ(Heard(manager), "WATCHDOG=1") << "also if nothing else happens";
    owner->Process().Signal(SIGTERM);
    std::string heard;
    do
        heard = Heard(manager);
    while (heard == "WATCHDOG=1");
    EXPECT_EQ(heard, "STOPPING=1");
    EXPECT_EQ(owner->Wait(), 0);
    close(manager);
}

TEST_F(Service, DoesNotFillTheLogWithWhatAPeerRepeats)
{
    const auto owner = StartOwner();
    {
        const CRawConnection peer;
        for (int i = 0; i < 1000; ++i)
            peer.Send("d4:argsle4:name4:Helpe");
        for (int i = 0; i < 1000; ++i)
            peer.Send("d4:argsli1ei1ee4:name10:RaiseErrore");
    }
    Report("confirm raise 0x4281B 2");
    owner->Process().Signal(SIGTERM);
    EXPECT_EQ(owner->Wait(), 0);
    const std::string log = owner->Errors();
    EXPECT_GE(LinesWith("unknown notification \"Help\"", log), 1);
    EXPECT_LE(LinesWith("unknown notification \"Help\"", log), 100) << "one a second";
    EXPECT_THAT(log, testing::HasSubstr(" like it"));
}
