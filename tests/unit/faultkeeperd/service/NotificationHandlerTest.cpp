#include "faultkeeperd/service/NotificationHandler.h"

#include "../OwnerFixture.h"
#include "faultkeeperd/owner/Owner.h"
#include "support/CapturedOutput.h"

#include <MPI/BAtomC.h>
#include <MPI/BDictionaryC.h>
#include <MPI/BListC.h>

#include <gtest/gtest.h>

#include <cstdint>

using namespace Support;
using Faultkeeper::Apps::CNotificationHandler;
using Faultkeeper::Apps::COwner;

namespace
{

class NotificationHandler : public OwnerTest
{
protected:
    void SetUp() override
    {
        OwnerTest::SetUp();
        m_owner = NewOwner();
        m_handler.Begin(*m_owner, Keeper());
    }

    /// What is logged when a notification arrives; its connection stays in any case.
    std::string Notify(const std::string& name, const BListC& arguments)
    {
        const MPIPeerC peer{7, "127.0.0.1:40312"};
        const BDictionaryC message;
        return WarnedBy(
            [&] {
                EXPECT_TRUE(
                    m_handler.NotificationReceived(peer, MPINotificationC{name, arguments, message, 68}));
            });
    }

    std::string Notify(const std::string& name, const std::vector<std::int64_t>& arguments)
    {
        BListC list;
        for (const std::int64_t argument : arguments)
            list.Append(std::make_unique<BAtomC>(argument));
        return Notify(name, list);
    }

    bool Active(const Id& id) { return Database().RetrieveError(id.first, id.second)->Active(); }

    bool NothingActive()
    {
        return !Active(kLinkSensor) && !Active(kDataSensor) && !Active(kReceiver) && !Active(kPosition);
    }

    std::unique_ptr<COwner> m_owner;
    CNotificationHandler m_handler;
};

} // namespace

TEST_F(NotificationHandler, RaisesAndClearsWithoutAWord)
{
    EXPECT_EQ(Notify("RaiseError", {0x40C09, 9, 0}), "");
    EXPECT_TRUE(Active(kLinkSensor));
    EXPECT_TRUE(Active(kPosition));
    EXPECT_EQ(Notify("ClearError", {0x40C09, 9}), "");
    EXPECT_TRUE(NothingActive());
}

TEST_F(NotificationHandler, TakesARaiseWithoutItsThirdNumberAndWithAny)
{
    EXPECT_EQ(Notify("RaiseError", {0x40C09, 9}), "");
    EXPECT_TRUE(Active(kLinkSensor));
    EXPECT_EQ(Notify("RaiseError", {0x4281B, 2, -5}), "");
    EXPECT_TRUE(Active(kDataSensor));
}

TEST_F(NotificationHandler, NamesAnUnknownErrorInTheLog)
{
    EXPECT_EQ(Notify("RaiseError", {0x40C1B, 4, 0}),
              "faultkeeperd: warning: 127.0.0.1:40312 at byte 68: RaiseError of an unknown error "
              "\"Positioning:GPS:No Data:4\", \"0x40C1B:4\"\n");
    EXPECT_EQ(Notify("ClearError", {0x50C1B, 2}),
              "faultkeeperd: warning: 127.0.0.1:40312 at byte 68: ClearError of an unknown error "
              "\"Service:GPS:No Data:2\", \"0x50C1B:2\"\n");
    EXPECT_TRUE(NothingActive());
}

TEST_F(NotificationHandler, NeverCutsANumberIntoOneThatIsRight)
{
    const std::int64_t tooLarge =
        (std::int64_t{1} << 32) + 0x40C09; // its lower half is the link sensor's code
    EXPECT_EQ(Notify("RaiseError", {tooLarge, 9, 0}),
              "faultkeeperd: warning: 127.0.0.1:40312 at byte 68: RaiseError with wrong arguments: "
              "argument 1 is out of range\n");
    EXPECT_EQ(Notify("RaiseError", {0x40C09, (std::int64_t{1} << 32) + 9, 0}),
              "faultkeeperd: warning: 127.0.0.1:40312 at byte 68: RaiseError with wrong arguments: "
              "argument 2 is out of range\n");
    EXPECT_TRUE(NothingActive());
}

TEST_F(NotificationHandler, AcceptsTheWholeRangeOfANumber)
{
    EXPECT_NE(Notify("RaiseError", {2147483647, -2147483648, 0}).find("unknown error"), std::string::npos);
    EXPECT_NE(Notify("RaiseError", {2147483648, 2}).find("argument 1 is out of range"), std::string::npos);
    EXPECT_NE(Notify("RaiseError", {1, -2147483649}).find("argument 2 is out of range"), std::string::npos);
}

TEST_F(NotificationHandler, RefusesAWrongNumberOfArguments)
{
    for (const auto& arguments : std::vector<std::vector<std::int64_t>>{{}, {0x40C09}, {0x40C09, 9, 0, 0}})
        EXPECT_EQ(Notify("RaiseError", arguments),
                  "faultkeeperd: warning: 127.0.0.1:40312 at byte 68: RaiseError with wrong arguments: " +
                      std::to_string(arguments.size()) + " arguments\n");
    EXPECT_TRUE(NothingActive());
}

TEST_F(NotificationHandler, RefusesAClearWithAThirdNumber)
{
    Notify("RaiseError", {0x40C09, 9, 0});
    EXPECT_EQ(
        Notify("ClearError", {0x40C09, 9, 0}),
        "faultkeeperd: warning: 127.0.0.1:40312 at byte 68: ClearError with wrong arguments: 3 arguments\n");
    EXPECT_TRUE(Active(kLinkSensor));
}

TEST_F(NotificationHandler, RefusesTextWhereANumberBelongs)
{
    BListC arguments;
    arguments.Append(std::make_unique<BAtomC>(std::int64_t{0x40C09}));
    arguments.Append(std::make_unique<BAtomC>(std::string("9")));
    EXPECT_EQ(Notify("RaiseError", arguments),
              "faultkeeperd: warning: 127.0.0.1:40312 at byte 68: RaiseError with wrong arguments: "
              "argument 2 is not a number\n");
    EXPECT_TRUE(NothingActive());
}

TEST_F(NotificationHandler, RefusesAListWhereANumberBelongs)
{
    BListC arguments;
    arguments.Append(std::make_unique<BListC>());
    arguments.Append(std::make_unique<BAtomC>(std::int64_t{9}));
    EXPECT_NE(Notify("ClearError", arguments).find("argument 1 is not a number"), std::string::npos);
}

TEST_F(NotificationHandler, LogsAnUnknownNotificationOnOneLine)
{
    EXPECT_EQ(Notify("Raise\nfaultkeeperd: info: ended", {1, 2}),
              "faultkeeperd: warning: 127.0.0.1:40312 at byte 68: unknown notification "
              "\"Raise\\x0Afaultkeeperd: info: ended\"\n");
}

TEST_F(NotificationHandler, LogsNothingThatSteersATerminal)
{
    EXPECT_EQ(Notify("\xC2\x85\xC2\x9B\x9B\"", {1, 2}),
              "faultkeeperd: warning: 127.0.0.1:40312 at byte 68: unknown notification "
              "\"\\xC2\\x85\\xC2\\x9B\\x9B\\\"\"\n");
}

TEST_F(NotificationHandler, CutsAnEndlessName)
{
    EXPECT_EQ(Notify(std::string(60000, 'x'), {1, 2}),
              "faultkeeperd: warning: 127.0.0.1:40312 at byte 68: unknown notification \"" +
                  std::string(80, 'x') + "\"...\n");
}

TEST_F(NotificationHandler, LogsRefusedInputWithPeerAndOffset)
{
    const MPIPeerC peer{7, "[::1]:40312"};
    EXPECT_EQ(WarnedBy([&] { m_handler.InputRefused(peer, 12, "not a dictionary"); }),
              "faultkeeperd: warning: [::1]:40312 at byte 12: not a dictionary; connection closed\n");
}

TEST_F(NotificationHandler, LogsAPeerThatIsTurnedAway)
{
    const MPIPeerC peer{0, "127.0.0.1:40312"};
    EXPECT_EQ(WarnedBy([&] { m_handler.PeerTurnedAway(peer); }),
              "faultkeeperd: warning: 127.0.0.1:40312: turned away, there are too many connections\n");
}

TEST_F(NotificationHandler, TakesNumbersAsTheyCome)
{
    const MPIPeerC peer{7, "127.0.0.1:40312"};
    const std::int64_t raise[] = {0x40C09, 9, 0};
    EXPECT_EQ(WarnedBy([&] { m_handler.NumbersReceived(peer, {"RaiseError", raise, 3, 68, 0}); }), "");
    EXPECT_TRUE(Active(kLinkSensor));
    EXPECT_EQ(WarnedBy([&] { m_handler.NumbersReceived(peer, {"ClearError", raise, 2, 68, 0}); }), "");
    EXPECT_TRUE(NothingActive());
}

TEST_F(NotificationHandler, ComplainsOfWrongNumbersInTheSameWords)
{
    const MPIPeerC peer{7, "127.0.0.1:40312"};
    const std::int64_t numbers[] = {0x40C09, 9, 0, 0};
    const std::int64_t tooLarge[] = {std::int64_t{1} << 32, 9};
    const std::int64_t unknown[] = {0x40C1B, 4};
    const auto complaint = [&](const MPINumbersC& notification)
    { return WarnedBy([&] { EXPECT_TRUE(m_handler.NumbersReceived(peer, notification)); }); };
    const std::string begin = "faultkeeperd: warning: 127.0.0.1:40312 at byte 68: ";
    EXPECT_EQ(complaint({"ClearError", numbers, 3, 68, 0}),
              begin + "ClearError with wrong arguments: 3 arguments\n");
    EXPECT_EQ(complaint({"RaiseError", numbers, 4, 68, 0}),
              begin + "RaiseError with wrong arguments: 4 arguments\n");
    EXPECT_EQ(complaint({"RaiseError", numbers, 1, 68, 0}),
              begin + "RaiseError with wrong arguments: 1 arguments\n");
    EXPECT_EQ(complaint({"RaiseError", tooLarge, 2, 68, 0}),
              begin + "RaiseError with wrong arguments: argument 1 is out of range\n");
    EXPECT_EQ(complaint({"RaiseError", unknown, 2, 68, 0}),
              begin + "RaiseError of an unknown error \"Positioning:GPS:No Data:4\", \"0x40C1B:4\"\n");
    EXPECT_EQ(complaint({"Help", numbers, 1, 68, 0}), begin + "unknown notification \"Help\"\n");
}

TEST_F(NotificationHandler, AppliesWhatIsSentAgainOnce)
{
    const MPIPeerC first{7, "127.0.0.1:40312", "0123456789abcdef0123456789abcdef"};
    const MPIPeerC second{8, "127.0.0.1:40313", first.session};
    const std::int64_t id[] = {0x40C09, 9};
    m_handler.PeerIntroduced(first);
    m_handler.NumbersReceived(first, {"RaiseError", id, 2, 58, 1});
    m_handler.NumbersReceived(first, {"ClearError", id, 2, 100, 2});
    m_handler.PeerDisconnected(first);
    m_handler.PeerIntroduced(second);
    m_handler.NumbersReceived(second, {"RaiseError", id, 2, 58, 1});
    EXPECT_TRUE(NothingActive()) << "it was cleared since";
    BListC arguments;
    arguments.Append(std::make_unique<BAtomC>(std::int64_t{0x40C09}));
    arguments.Append(std::make_unique<BAtomC>(std::int64_t{9}));
    const BDictionaryC message;
    const std::string name = "RaiseError";
    m_handler.NotificationReceived(second, {name, arguments, message, 68, 2});
    EXPECT_TRUE(NothingActive()) << "however it is decoded";
    m_handler.NotificationReceived(second, {name, arguments, message, 68, 3});
    EXPECT_TRUE(Active(kLinkSensor));
}

TEST_F(NotificationHandler, NumbersWithoutASessionMeanNothing)
{
    const MPIPeerC peer{7, "127.0.0.1:40312"};
    const std::int64_t id[] = {0x40C09, 9};
    m_handler.NumbersReceived(peer, {"RaiseError", id, 2, 0, 5});
    m_handler.NumbersReceived({8, "127.0.0.1:40313"}, {"ClearError", id, 2, 0, 1});
    EXPECT_TRUE(NothingActive());
}

TEST_F(NotificationHandler, SessionsHaveNumbersOfTheirOwn)
{
    const MPIPeerC first{7, "127.0.0.1:40312", "0123456789abcdef0123456789abcdef"};
    const MPIPeerC second{8, "127.0.0.1:40313", "fedcba9876543210fedcba9876543210"};
    const std::int64_t id[] = {0x40C09, 9};
    m_handler.PeerIntroduced(first);
    m_handler.PeerIntroduced(second);
    m_handler.NumbersReceived(first, {"RaiseError", id, 2, 0, 5});
    m_handler.NumbersReceived(second, {"ClearError", id, 2, 0, 1});
    EXPECT_TRUE(NothingActive());
}

TEST_F(NotificationHandler, CountsWhatBecomesOfNotifications)
{
    const MPIPeerC peer{7, "127.0.0.1:40312", "0123456789abcdef0123456789abcdef"};
    const std::int64_t id[] = {0x40C09, 9};
    const std::int64_t unknown[] = {0x40C1B, 4};
    m_handler.PeerIntroduced(peer);
    m_handler.NumbersReceived(peer, {"RaiseError", id, 2, 0, 1});
    m_handler.NumbersReceived(peer, {"RaiseError", id, 2, 0, 1});
    WarnedBy([&] { m_handler.NumbersReceived(peer, {"RaiseError", unknown, 2, 0, 2}); });
    Notify("Help", {1});
    Notify("RaiseError", {1});
    WarnedBy([&] { m_handler.InputRefused(peer, 12, "not a dictionary"); });
    EXPECT_EQ(m_handler.Counts().received, 5U);
    EXPECT_EQ(m_handler.Counts().applied, 1U);
    EXPECT_EQ(m_handler.Counts().repeated, 1U);
    EXPECT_EQ(m_handler.Counts().unknown, 2U);
    EXPECT_EQ(m_handler.Counts().malformed, 2U);
}
