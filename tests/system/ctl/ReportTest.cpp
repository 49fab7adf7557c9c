#include "CtlFixture.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <thread>

using namespace Support;

namespace
{
constexpr const char* kRaise = "d4:argsli265243ei2ei0ee4:name10:RaiseError3:seqi1ee";
constexpr const char* kClear = "d4:argsli265243ei2ee4:name10:ClearError3:seqi1ee";

// Stands in for an owner: takes connections on the port that all reports go to, and reads.
class CListener
{
public:
    CListener() : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        const int yes = 1;
        setsockopt(m_socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        struct sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(5300);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (bind(m_socket, reinterpret_cast<const struct sockaddr*>(&address), sizeof address) != 0 ||
            listen(m_socket, 4) != 0)
            throw std::runtime_error("cannot listen on port 5300");
    }
    ~CListener() { close(m_socket); }
    CListener(const CListener&) = delete;
    CListener& operator=(const CListener&) = delete;

    /// Takes the next report and is gone, like an owner that is killed.
    void TakeAReportAndGo()
    {
        const int connection = accept(m_socket, nullptr, nullptr);
        std::string text;
        char byte = 0;
        while (text.find("3:seqi1ee") == std::string::npos && read(connection, &byte, 1) == 1)
            text += byte;
        close(m_socket);
        m_socket = -1;
        close(connection);
    }

    /// All that the next connection brings until it is closed.
    /// @param answer  said once a report has come
    std::string Received(const std::string& answer = "") const
    {
        struct pollfd waiting = {m_socket, POLLIN, 0};
        if (poll(&waiting, 1, kPatienceMilliseconds) != 1)
            return "nobody came";
        const int connection = accept(m_socket, nullptr, nullptr);
        std::string text;
        char byte = 0;
        while (!answer.empty() && text.find("3:seqi1ee") == std::string::npos &&
               read(connection, &byte, 1) == 1)
            text += byte;
        if (write(connection, answer.data(), answer.size()) != static_cast<ssize_t>(answer.size()))
            text += "not answered";
        char buffer[256];
        for (ssize_t count; (count = read(connection, buffer, sizeof buffer)) > 0;)
            text.append(buffer, static_cast<std::size_t>(count));
        close(connection);
        return text;
    }

private:
    int m_socket;
};

class Report : public CtlTest
{
};
} // namespace

TEST_F(Report, RaiseSendsOneMessageAndSaysSo)
{
    const CListener owner;
    const SFinished finished = Ctl({"raise", kReceiver});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output, "raise of Positioning:GPS:No Data:2 (0x40C1B:2) sent to the owner\n");
    EXPECT_EQ(finished.errors, "");
    EXPECT_NE(owner.Received().find(kRaise), std::string::npos);
}

TEST_F(Report, ClearSendsOneMessageAndSaysSo)
{
    const CListener owner;
    const SFinished finished = Ctl({"clear", kReceiver});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output, "clear of Positioning:GPS:No Data:2 (0x40C1B:2) sent to the owner\n");
    EXPECT_NE(owner.Received().find(kClear), std::string::npos);
}

TEST_F(Report, AnOwnersAcknowledgementIsWaitedForAndTold)
{
    const CListener owner;
    std::string received;
    std::thread thread([&] { received = owner.Received("d7:welcomei0eed3:acki1ee"); });
    const SFinished finished = Ctl({"raise", kReceiver, "--timeout", "30"});
    thread.join();
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output,
              "raise of Positioning:GPS:No Data:2 (0x40C1B:2) sent to the owner and acknowledged\n");
    EXPECT_NE(received.find(kRaise), std::string::npos);
}

TEST_F(Report, AnAcknowledgementIsAlsoInTheDocument)
{
    const CListener owner;
    std::thread thread([&] { owner.Received("d7:welcomei1ee"); });
    const Json document = Document({"clear", kReceiver, "--timeout", "30"});
    thread.join();
    EXPECT_EQ(document["acknowledged"], true) << "a welcome with the report's number says as much";
}

TEST_F(Report, AnOwnerThatAcknowledgesButNotInTimeIsAsGoodAsNone)
{
    const CListener owner;
    std::thread thread([&] { owner.Received("d7:welcomei0ee"); });
    const SFinished finished = Ctl({"raise", kReceiver, "--timeout", "1"});
    thread.join();
    EXPECT_EQ(finished.status, 3);
    EXPECT_EQ(finished.output, "");
    EXPECT_EQ(
        finished.errors,
        "faultkeeperctl: the owner has not acknowledged the report within 1 s; it may still be applied\n");
}

TEST_F(Report, WhetherAnOwnerThatIsGoneHadAppliedItIsNotSure)
{
    CListener owner;
    std::thread thread([&] { owner.TakeAReportAndGo(); });
    const SFinished finished = Ctl({"raise", kReceiver, "--timeout", "1"});
    thread.join();
    EXPECT_EQ(finished.status, 3);
    EXPECT_EQ(finished.output, "");
    EXPECT_EQ(finished.errors, "faultkeeperctl: no owner: the connection was lost after the report was sent; "
                               "it may or may not have been applied\n");
}

TEST_F(Report, ATimeoutOutOfRangeIsRefused)
{
    EXPECT_EQ(Ctl({"raise", kReceiver, "--timeout", "-1"}).status, 2);
    EXPECT_EQ(Ctl({"raise", kReceiver, "--timeout", "soon"}).status, 2);
}

TEST_F(Report, ThatItWasSentIsToldAlsoWithoutStandardOutput)
{
    const CListener owner;
    CProgram shell({"/bin/sh", "-c", std::string(FAULTKEEPER_TEST_CTL) + " raise 0x40C1B:2 >&-"});
    EXPECT_EQ(shell.Wait(), 1);
    EXPECT_EQ(shell.Errors().find("faultkeeperctl: the report was sent to the owner, but"), 0U)
        << shell.Errors();
    const std::string received = owner.Received();
    EXPECT_NE(received.find(kRaise), std::string::npos);
    EXPECT_EQ(received.find("sent to the owner"), std::string::npos); // nothing goes to the wrong descriptor
}

TEST_F(Report, EveryFormOfAnIdentifierSendsTheSame)
{
    const CListener owner;
    for (const char* const id :
         {"0x40C1B:2", "265243:2", "Positioning:GPS:No Data:DataErraticAndIntermittentlyIncorrect"})
    {
        EXPECT_EQ(Ctl({"raise", id, "--timeout", "0"}).status, 0) << id;
        EXPECT_NE(owner.Received().find(kRaise), std::string::npos) << id;
    }
}

TEST_F(Report, GivesADocument)
{
    const CListener owner;
    EXPECT_EQ(
        Document({"raise", kReceiver}).dump(),
        R"({"id":"Positioning:GPS:No Data:2","problemCode":265243,"problemType":2,"request":"raise","sent":true,"acknowledged":false})");
}

TEST_F(Report, NeedsNoConfiguration)
{
    const CListener owner;
    EXPECT_EQ(Bare({"raise", "Positioning:GPS:Crash:3"}).status, 0);
    EXPECT_NE(owner.Received().find("d4:argsli265227ei3ei0ee4:name10:RaiseError3:seqi1ee"),
              std::string::npos);
}

TEST_F(Report, WithoutAnOwnerTheStatusIsThree)
{
    for (const char* const command : {"raise", "clear"})
    {
        const SFinished finished = Ctl({command, kReceiver});
        EXPECT_EQ(finished.status, 3);
        EXPECT_EQ(finished.output, "");
        EXPECT_EQ(finished.errors, "faultkeeperctl: no owner: nobody listens on port 5300 of this machine\n");
    }
}

TEST_F(Report, AnErrorThatTheConfigurationDoesNotDefineIsRefusedWithTheNearest)
{
    const SFinished finished = Ctl({"raise", "Positioning:GPS:No Data:3"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.errors, "faultkeeperctl: the configuration in " + Configuration() +
                                   "/ defines no error \"Positioning:GPS:No Data:3\"; the nearest is "
                                   "\"Positioning:GPS:No Data:2\"\n");
    EXPECT_EQ(Ctl({"clear", "0x40C1B:3"}).errors, finished.errors);
}

TEST_F(Report, ATypingSlipIsToldWithTheNearestRightName)
{
    const SFinished finished = Bare({"raise", "Positioning:GPS:No Dta:2"});
    EXPECT_EQ(finished.status, 2);
    EXPECT_EQ(finished.errors, "faultkeeperctl: no problem is called \"No Dta\", the nearest is \"No Data\"; "
                               "did you mean \"Positioning:GPS:No Data:2\"?\n");
}

TEST_F(Report, ATypingSlipIsToldWithTheNearestConfiguredErrorIfThatIsAnotherOne)
{
    const SFinished finished = Ctl({"raise", "Audio:Nome:Cannot Open:3"});
    EXPECT_EQ(finished.status, 2);
    EXPECT_EQ(finished.errors, "faultkeeperctl: no sub-module is called \"Nome\", the nearest is \"None\"; "
                               "did you mean \"Audio:None:Cannot Open:3\"?; "
                               "the nearest configured error is \"Audio:None:Cannot Open:11\"\n");
}

TEST_F(Report, NumbersOutOfRangeAreRefused)
{
    for (const char* const id : {"0x40C1B:22", "0x100040C1B:2", "0x40C1B:65538", "0x1040C1B:2"})
    {
        const SFinished finished = Bare({"raise", id});
        EXPECT_EQ(finished.status, 2) << id;
        EXPECT_EQ(finished.output, "") << id;
    }
}
