// Notifications of numbers alone are handed over without elements, and taken and refused as the others are.
#include <MPI/BDecoderC.h>
#include <MPI/BDictionaryC.h>
#include <MPI/BEncoderC.h>
#include <MPI/MPISocketServerC.h>

#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <string>

#include "host/connections/RawPeer.h"
#include "host/connections/SessionsHandler.h"

namespace
{

using HostTest::CRawConnection;
using HostTest::Eventually;
using HostTest::kPlain;

/// Takes notifications of numbers as they are.
class NumbersHandler : public HostTest::CSessionsHandler
{
public:
    bool NumbersReceived(const MPIPeerC& peer, const MPINumbersC& notification) override
    {
        std::string& log = logs[peer.connection];
        log += std::to_string(notification.offset) + " " + std::string(notification.name);
        for (std::size_t index = 0; index < notification.count; ++index)
            log += " " + std::to_string(notification.arguments[index]);
        log += " number " + std::to_string(notification.number) + "\n";
        return notification.name != "refuse";
    }
};

TEST(HostServerNumbers, AreHandedOverWithoutElements)
{
    NumbersHandler handler;
    MPISocketServerC server(handler);
    ASSERT_TRUE(server.Listen(0));
    CRawConnection connection = CRawConnection::To("127.0.0.1", server.Port());
    connection.Send("d4:argsli265243ei-2ei0ee4:name10:RaiseError3:seqi7eed4:argsle4:name0:e"
                    "d4:argsl1:ae4:name1:xe");
    connection.Send(std::string("d4:argsle4:name6:refusee") + kPlain);
    EXPECT_TRUE(Eventually([&] { return server.Serve(0) >= 0 && connection.Ended(); }));
    EXPECT_EQ(handler.logs[1],
              "0 RaiseError 265243 -2 0 number 7\n52  number 0\n70 x number 0\n92 refuse number 0\n"
              "batch\ndisconnected\n");
}

/// What a stream comes to by the decoder alone.
std::string DecodedLog(const std::string& stream)
{
    BDecoderC decoder;
    std::string log;
    for (std::size_t begin = 0; begin < stream.size() && !decoder.Failed();)
    {
        begin += decoder.Feed(stream.data() + begin, stream.size() - begin);
        const std::unique_ptr<BDictionaryC> message = decoder.TakeMessage();
        if (message == nullptr)
            continue;
        BEncoderC encoder;
        encoder.Element(*message);
        log += std::to_string(decoder.MessageOffset()) + " " + encoder.Bytes() + "\n";
    }
    if (decoder.Failed())
        log += "refused at " + std::to_string(decoder.FaultOffset()) + ": " + decoder.FaultReason() + "\n";
    if (decoder.Incomplete())
        log +=
            "refused at " + std::to_string(decoder.StreamOffset()) + ": connection ended within a message\n";
    return log;
}

/// Writes down whole messages.
class MessagesHandler : public MPIServerHandlerC
{
public:
    bool NotificationReceived(const MPIPeerC&, const MPINotificationC& notification) override
    {
        BEncoderC encoder;
        encoder.Element(notification.message);
        log += std::to_string(notification.offset) + " " + encoder.Bytes() + "\n";
        return true;
    }
    void InputRefused(const MPIPeerC&, std::uint64_t offset, const std::string& reason) override
    {
        log += "refused at " + std::to_string(offset) + ": " + reason + "\n";
        judged = reason.find("seq") != std::string::npos || reason.find("notification") != std::string::npos;
    }
    void PeerDisconnected(const MPIPeerC&) override { ended = true; }

    std::string log;
    bool judged = false; // refused for what it says, not for how
    bool ended = false;
};

TEST(HostServerNumbers, AreTakenAndRefusedExactlyAsTheDecoderDoes)
{
    const std::string right = "d4:argsli265243ei-2ei0ee4:name10:RaiseError3:seqi12ee";
    const std::string bytes = "0159-:deils\xFF";
    for (std::size_t position = 0; position < right.size(); ++position)
    {
        for (const char byte : bytes)
        {
            std::string stream = right + right;
            stream[position] = byte;
            stream.replace(stream.size() - 4, 2, "99"); // so that the numbers rise
            MessagesHandler handler;
            MPISocketServerC server(handler);
            ASSERT_TRUE(server.Listen(0));
            CRawConnection connection = CRawConnection::To("127.0.0.1", server.Port());
            connection.Send(stream);
            connection.EndSending();
            ASSERT_TRUE(Eventually([&] { return server.Serve(0) >= 0 && handler.ended; }));
            if (!handler.judged)
            {
                EXPECT_EQ(handler.log, DecodedLog(stream)) << stream;
            }
        }
    }
}

TEST(HostServerNumbers, DoNotDependOnHowTheStreamIsCut)
{
    const std::string right = "d4:argsli265243ei-2ei0ee4:name10:RaiseError3:seqi12ee";
    const std::string next = "d4:argsli265243ei2ee4:name10:ClearError3:seqi13ee";
    for (std::size_t cut = 1; cut < right.size() + next.size(); ++cut)
    {
        MessagesHandler handler;
        MPISocketServerC server(handler);
        ASSERT_TRUE(server.Listen(0));
        CRawConnection connection = CRawConnection::To("127.0.0.1", server.Port());
        connection.Send((right + next).substr(0, cut));
        ASSERT_TRUE(Eventually([&] { return server.Serve(0) >= 0 && server.ConnectionCount() == 1; }));
        ASSERT_GE(server.Serve(20), 0);
        connection.Send((right + next).substr(cut));
        connection.EndSending();
        ASSERT_TRUE(Eventually([&] { return server.Serve(0) >= 0 && handler.ended; }));
        EXPECT_EQ(handler.log, "0 " + right + "\n53 " + next + "\n") << cut;
    }
}

TEST(HostServerNumbers, AreTakenAndRefusedAsTheDecoderDoesAtTheirLimitsToo)
{
    std::string sixteen;
    for (int number = 1; number <= 16; ++number)
        sixteen += "i" + std::to_string(number) + "e";
    const std::string limits[] = {
        "d4:argsli9223372036854775807ei-9223372036854775807ee4:name1:xe",
        "d4:argsli9223372036854775808ee4:name1:xe",
        "d4:argsli-9223372036854775808ee4:name1:xe",
        "d4:argsli-9223372036854775809ee4:name1:xe",
        "d4:argsli99999999999999999999ee4:name1:xe",
        "d4:argsl" + sixteen + "e4:name1:xe",
        "d4:argsl" + sixteen + "i17ee4:name1:xe",
        "d4:argsle4:name1024:" + std::string(1024, 'n') + "e",
        "d4:argsle4:name1025:" + std::string(1025, 'n') + "e",
        "d4:argsle4:name1:x3:seqi9223372036854775807ee",
    };
    for (const std::string& stream : limits)
    {
        MessagesHandler handler;
        MPISocketServerC server(handler);
        ASSERT_TRUE(server.Listen(0));
        CRawConnection connection = CRawConnection::To("127.0.0.1", server.Port());
        connection.Send(stream);
        connection.EndSending();
        ASSERT_TRUE(Eventually([&] { return server.Serve(0) >= 0 && handler.ended; }));
        EXPECT_EQ(handler.log, DecodedLog(stream)) << stream;
    }
}

} // namespace
