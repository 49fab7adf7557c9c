#include "Terminal.h"

#include "CtlFixture.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

using namespace Support;

namespace
{
class OnATerminal : public CtlTest
{
protected:
    SShown Shown(const std::vector<std::string>& arguments, unsigned short columns = 100) const
    {
        std::vector<std::string> command = {FAULTKEEPER_TEST_CTL, "--config", Configuration(), "--run-dir",
                                            m_directory.Path()};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return ShownOnTerminal(command, columns);
    }

    CVariable m_terminal{"TERM", "xterm"};
    CVariable m_noColour{"NO_COLOR"};
};

/// Listens where owners do, and never says anything.
class SilentOwner
{
public:
    SilentOwner() : m_descriptor(socket(AF_INET, SOCK_STREAM, 0))
    {
        const int yes = 1;
        setsockopt(m_descriptor, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        struct sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(5300);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        m_listens = bind(m_descriptor, reinterpret_cast<struct sockaddr*>(&address), sizeof address) == 0 &&
                    listen(m_descriptor, 4) == 0;
    }
    ~SilentOwner() { close(m_descriptor); }
    SilentOwner(const SilentOwner&) = delete;
    SilentOwner& operator=(const SilentOwner&) = delete;

    bool Listens() const { return m_listens; }

private:
    int m_descriptor;
    bool m_listens = false;
};

int LongestLine(const std::string& text)
{
    std::istringstream stream(text);
    std::size_t longest = 0;
    for (std::string line; std::getline(stream, line);)
        longest = std::max(longest, line.find_last_not_of('\r') + 1);
    return static_cast<int>(longest);
}
} // namespace

TEST_F(OnATerminal, TitleAndSeverityAreColoured)
{
    StartOwner();
    Raise(kLink);
    const SShown shown = Shown({"list"}, 60);
    EXPECT_EQ(shown.status, 0);
    EXPECT_NE(shown.text.find("[1] \x1b[1mtitle of Positioning:GPS:Communications:9         \x1b[0m  "
                              "\x1b[31mHigh\x1b[0m\r\n"),
              std::string::npos)
        << shown.text;
}

TEST_F(OnATerminal, NothingIsColouredForWhoWantsNoneOrCannotShowThem)
{
    StartOwner();
    Raise(kLink);
    {
        const CVariable noColour("NO_COLOR", "1");
        EXPECT_EQ(Shown({"list"}).text.find('\x1b'), std::string::npos);
    }
    {
        const CVariable empty("NO_COLOR", "");
        EXPECT_NE(Shown({"list"}).text.find('\x1b'), std::string::npos);
    }
    {
        const CVariable dumb("TERM", "dumb");
        EXPECT_EQ(Shown({"list"}).text.find('\x1b'), std::string::npos);
    }
    EXPECT_EQ(Shown({"list", "--json"}).text.find('\x1b'), std::string::npos);
    EXPECT_EQ(Ctl({"list"}).output.find('\x1b'), std::string::npos);
}

TEST_F(OnATerminal, HelpIsAsWideAsTheTerminal)
{
    for (const char* const command : {"list", "raise", "strings", "decode", "status", "statistics"})
    {
        const SShown narrow = Shown({command, "--help"}, 64);
        EXPECT_EQ(narrow.status, 0);
        EXPECT_LE(LongestLine(narrow.text), 64) << narrow.text;
        EXPECT_NE(narrow.text.find("\nExample: faultkeeperctl "), std::string::npos) << narrow.text;
    }
    EXPECT_LE(LongestLine(Shown({"--help"}, 80).text), 80);
    EXPECT_LE(LongestLine(Shown({"--help"}, 40).text), 40);
    EXPECT_LE(LongestLine(Shown({"strings", "--help"}, 40).text), 40);
}

TEST_F(OnATerminal, WhatTakesMoreThanASecondIsTold)
{
    const SilentOwner owner;
    ASSERT_TRUE(owner.Listens());
    const SShown shown = Shown({"raise", kLink, "--timeout", "4"});
    EXPECT_EQ(shown.text.find("\rwaiting for the owner, 1 s"), 0U) << shown.text;
    const std::size_t end = shown.text.rfind("waiting for the owner");
    EXPECT_NE(shown.text.find("\r                          \r", end), std::string::npos)
        << "the line stays: " << shown.text;
    EXPECT_NE(shown.text.find("sent to the owner\r\n", end), std::string::npos) << shown.text;
}

TEST_F(OnATerminal, WhatTakesNoSecondIsNotTold)
{
    EXPECT_EQ(Shown({"tree"}).text.find("+Positioning\r\n"), 0U);
}
