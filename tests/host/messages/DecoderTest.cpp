#include <MPI/BAtomC.h>
#include <MPI/BDecoderC.h>
#include <MPI/BEncoderC.h>
#include <MPI/BListC.h>

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace
{

std::string Encoded(const BElementC& element)
{
    BEncoderC encoder;
    encoder.Element(element);
    return encoder.Bytes();
}

/// What a decoder makes of a stream that comes in pieces of one size: the messages, a line each, and how it
/// ends.
std::string Decoded(const std::string& stream, std::size_t piece)
{
    BDecoderC decoder;
    std::string result;
    std::size_t begin = 0;
    while (begin < stream.size() && !decoder.Failed())
    {
        begin += decoder.Feed(stream.data() + begin, std::min(piece, stream.size() - begin));
        if (const std::unique_ptr<BDictionaryC> message = decoder.TakeMessage())
            result += std::to_string(decoder.MessageOffset()) + " " + Encoded(*message) + "\n";
    }
    EXPECT_EQ(decoder.StreamOffset(), begin);
    if (decoder.Failed())
        return result + "wrong at " + std::to_string(decoder.FaultOffset()) + ": " + decoder.FaultReason();
    return result + (decoder.Incomplete() ? "incomplete" : "done");
}

/// The same, after a check that the size of the pieces makes no difference.
std::string Decoded(const std::string& stream)
{
    std::string whole = Decoded(stream, stream.size() + 1);
    EXPECT_EQ(Decoded(stream, 1), whole);
    EXPECT_EQ(Decoded(stream, 7), whole);
    return whole;
}

TEST(HostDecoder, GivesOneMessageAfterTheOther)
{
    EXPECT_EQ(Decoded("d1:ai1eedeli"),
              "0 d1:ai1ee\n8 de\nwrong at 10: a message is a dictionary and begins with \"d\"");
    EXPECT_EQ(Decoded("d1:ai1eed1:bli2e2:xye1:cd1:d0:eed"),
              "0 d1:ai1ee\n8 d1:bli2e2:xye1:cd1:d0:ee\nincomplete");
    EXPECT_EQ(Decoded(""), "done");
}

TEST(HostDecoder, TakesNothingMoreWhileAMessageWaits)
{
    BDecoderC decoder;
    EXPECT_EQ(decoder.Feed("dede", 4), 2u);
    EXPECT_EQ(decoder.Feed("de", 2), 0u);
    EXPECT_NE(decoder.TakeMessage(), nullptr);
    EXPECT_EQ(decoder.TakeMessage(), nullptr);
    EXPECT_EQ(decoder.Feed("de", 2), 2u);
}

TEST(HostDecoder, MakesTheElementsThatWereEncoded)
{
    const std::string bytes = "d4:argsli-7e4:textd1:kleee4:name3:foo3:seqi9223372036854775807ee";
    BDecoderC decoder;
    ASSERT_EQ(decoder.Feed(bytes.data(), bytes.size()), bytes.size());
    const std::unique_ptr<BDictionaryC> message = decoder.TakeMessage();
    ASSERT_NE(message, nullptr);
    const BListC* const arguments = message->Find("args")->AsList();
    ASSERT_NE(arguments, nullptr);
    EXPECT_EQ(arguments->Parent(), message.get());
    EXPECT_EQ(arguments->At(0)->AsAtom()->Integer(), -7);
    EXPECT_EQ(arguments->At(1)->AsAtom()->Text(), "text");
    EXPECT_EQ(arguments->At(2)->AsDictionary()->Find("k")->AsList()->Size(), 0u);
    EXPECT_EQ(message->Find("name")->AsAtom()->Text(), "foo");
    EXPECT_EQ(message->Find("seq")->AsAtom()->Integer(), 9223372036854775807);
}

TEST(HostDecoder, TakesKeysInAnyOrder)
{
    EXPECT_EQ(Decoded("d4:name1:x4:argslee"), "0 d4:argsle4:name1:xe\ndone");
}

TEST(HostDecoder, RefusesAKeyForTheSecondTime)
{
    EXPECT_EQ(Decoded("ded1:ai1e1:bi2e1:ai3ee"),
              "0 de\nwrong at 15: key for the second time in a dictionary");
    EXPECT_EQ(Decoded("d1:ad1:ai1e1:ai2eee"), "wrong at 11: key for the second time in a dictionary");
    EXPECT_EQ(Decoded("d0:i1e0:i2ee"), "wrong at 6: key for the second time in a dictionary");
    EXPECT_EQ(Decoded("d1:ad1:ai1ee1:bd1:ai2eee"), "0 d1:ad1:ai1ee1:bd1:ai2eee\ndone");
}

TEST(HostDecoder, TakesNothingButADictionaryForAMessage)
{
    const std::string reason = ": a message is a dictionary and begins with \"d\"";
    EXPECT_EQ(Decoded("le"), "wrong at 0" + reason);
    EXPECT_EQ(Decoded("i1e"), "wrong at 0" + reason);
    EXPECT_EQ(Decoded("GET / HTTP/1.1\r\n"), "wrong at 0" + reason);
    EXPECT_EQ(Decoded("de\nde"), "0 de\nwrong at 2" + reason);
    EXPECT_EQ(Decoded(std::string(1, '\0')), "wrong at 0" + reason);
}

TEST(HostDecoder, RefusesLeadingZeros)
{
    EXPECT_EQ(Decoded("d1:ai01ee"), "wrong at 6: number with a leading zero");
    EXPECT_EQ(Decoded("d1:ai00ee"), "wrong at 6: number with a leading zero");
    EXPECT_EQ(Decoded("d1:a01:xe"), "wrong at 5: length with a leading zero");
    EXPECT_EQ(Decoded("d01:ai1ee"), "wrong at 2: length with a leading zero");
    EXPECT_EQ(Decoded("d1:ai0e1:b0:e"), "0 d1:ai0e1:b0:e\ndone");
}

TEST(HostDecoder, RefusesMinusZeroAndPlusSigns)
{
    EXPECT_EQ(Decoded("d1:ai-0ee"), "wrong at 6: a digit from 1 to 9 expected");
    EXPECT_EQ(Decoded("d1:ai-01ee"), "wrong at 6: a digit from 1 to 9 expected");
    EXPECT_EQ(Decoded("d1:ai+1ee"), "wrong at 5: a digit or \"-\" expected");
    EXPECT_EQ(Decoded("d1:ai--1ee"), "wrong at 6: a digit from 1 to 9 expected");
}

TEST(HostDecoder, RefusesNumbersBeyond64Bits)
{
    EXPECT_EQ(Decoded("d1:ai9223372036854775807ee"), "0 d1:ai9223372036854775807ee\ndone");
    EXPECT_EQ(Decoded("d1:ai9223372036854775808ee"), "wrong at 23: number does not fit 64 bits");
    EXPECT_EQ(Decoded("d1:ai-9223372036854775808ee"), "0 d1:ai-9223372036854775808ee\ndone");
    EXPECT_EQ(Decoded("d1:ai-9223372036854775809ee"), "wrong at 24: number does not fit 64 bits");
    EXPECT_EQ(Decoded("d1:ai92233720368547758070ee"), "wrong at 24: number does not fit 64 bits");
    EXPECT_EQ(Decoded("d1:ai18446744073709551616ee"), "wrong at 24: number does not fit 64 bits");
}

TEST(HostDecoder, RefusesWhatTheEncoderWouldNotWrite)
{
    EXPECT_EQ(Decoded("d1:aiee"), "wrong at 5: a digit or \"-\" expected");
    EXPECT_EQ(Decoded("d1:ai-ee"), "wrong at 6: a digit from 1 to 9 expected");
    EXPECT_EQ(Decoded("d1:ai1xe"), "wrong at 6: a digit or the end of the number expected");
    EXPECT_EQ(Decoded("d1:ai0xe"), "wrong at 6: a digit or the end of the number expected");
    EXPECT_EQ(Decoded("d1:ae"), "wrong at 4: a value expected");
    EXPECT_EQ(Decoded("di1ei2ee"), "wrong at 1: a key or the end of the dictionary expected");
    EXPECT_EQ(Decoded("d1xa"), "wrong at 2: a digit or \":\" expected");
    EXPECT_EQ(Decoded("d-1:a"), "wrong at 1: a key or the end of the dictionary expected");
    EXPECT_EQ(Decoded("d1:alxe"), "wrong at 5: a value expected");
}

/// A message of so many bytes: a dictionary with one text.
std::string MessageOfBytes(std::size_t size)
{
    const std::size_t around = std::string("d1:a65000:e").size();
    return "d1:a" + std::to_string(size - around) + ":" + std::string(size - around, 'x') + "e";
}

TEST(HostDecoder, TakesMessagesOf65536Bytes)
{
    const std::string largest = MessageOfBytes(65536);
    ASSERT_EQ(largest.size(), 65536u);
    EXPECT_EQ(Decoded(largest + "d"), "0 " + largest + "\nincomplete");
}

TEST(HostDecoder, RefusesMessagesOfMoreBytes)
{
    std::string numbers;
    while (numbers.size() < 66000)
        numbers += "i1e";
    EXPECT_EQ(Decoded("ded1:al" + numbers), "0 de\nwrong at 65538: message longer than 65536 bytes");
}

TEST(HostDecoder, RefusesALengthThatCannotFitAtItsDigits)
{
    EXPECT_EQ(Decoded("d1:a65536:"), "wrong at 8: message longer than 65536 bytes");
    EXPECT_EQ(Decoded(MessageOfBytes(65537)), "wrong at 8: message longer than 65536 bytes");
    EXPECT_EQ(Decoded("d1:a1073741824:"), "wrong at 9: message longer than 65536 bytes");
    EXPECT_EQ(Decoded("d99999999999999999999999:"), "wrong at 5: message longer than 65536 bytes");
}

TEST(HostDecoder, ALengthFitsOnlyIfWhatMustFollowTheTextDoes)
{
    const std::string deep = "d1:alll65522:" + std::string(65522, 'x'); // 65535 bytes
    EXPECT_EQ(Decoded(deep), "wrong at 11: message longer than 65536 bytes") << "four levels have to end";
    const std::string fits = "d1:alll65519:" + std::string(65519, 'x') + "eeee";
    EXPECT_EQ(Decoded(fits), "0 " + fits + "\ndone");
    EXPECT_EQ(Decoded("d1:alll65520:"), "wrong at 11: message longer than 65536 bytes");
    const std::string key = "d65526:" + std::string(65526, 'k') + "0:e";
    EXPECT_EQ(Decoded(key), "0 " + key + "\ndone");
    EXPECT_EQ(Decoded("d65527:"), "wrong at 5: message longer than 65536 bytes") << "a key has a value";
}

TEST(HostDecoder, TakesEightLevels)
{
    const std::string eight = "d1:a" + std::string(7, 'l') + std::string(7, 'e') + "e";
    EXPECT_EQ(Decoded(eight), "0 " + eight + "\ndone");
}

TEST(HostDecoder, RefusesMoreLevels)
{
    EXPECT_EQ(Decoded("d1:a" + std::string(8, 'l')), "wrong at 11: message deeper than 8 levels");
    EXPECT_EQ(Decoded("d1:a" + std::string(7, 'l') + "d"), "wrong at 11: message deeper than 8 levels");
    EXPECT_EQ(Decoded("d1:a" + std::string(60000, 'l')), "wrong at 11: message deeper than 8 levels");
}

TEST(HostDecoder, TakesNothingAfterAFaultUntilReset)
{
    BDecoderC decoder;
    EXPECT_EQ(decoder.Feed("dex", 3), 2u);
    decoder.TakeMessage();
    EXPECT_EQ(decoder.Feed("x", 1), 0u);
    EXPECT_TRUE(decoder.Failed());
    EXPECT_EQ(decoder.FaultOffset(), 2u);
    EXPECT_EQ(decoder.Feed("de", 2), 0u);
    EXPECT_EQ(decoder.TakeMessage(), nullptr);
    decoder.Reset();
    EXPECT_FALSE(decoder.Failed());
    EXPECT_EQ(decoder.FaultReason(), "");
    EXPECT_EQ(decoder.Feed("de", 2), 2u);
    EXPECT_NE(decoder.TakeMessage(), nullptr);
    EXPECT_EQ(decoder.MessageOffset(), 0u);
}

TEST(HostDecoder, IsIncompleteAfterEveryTruncation)
{
    const std::string whole = "d4:argsli265243ei-2e0:d1:ki0eee4:name10:RaiseErrore";
    for (std::size_t size = 1; size < whole.size(); ++size)
        EXPECT_EQ(Decoded(whole.substr(0, size)), "incomplete") << size;
    EXPECT_EQ(Decoded(whole), "0 " + whole + "\ndone");
}

TEST(HostDecoder, IsNotIncompleteAfterAWrongByte)
{
    BDecoderC decoder;
    EXPECT_FALSE(decoder.Incomplete());
    EXPECT_EQ(decoder.Feed("d1:", 3), 3u);
    EXPECT_TRUE(decoder.Incomplete());
    EXPECT_EQ(decoder.Feed("xi-x", 4), 3u);
    EXPECT_TRUE(decoder.Failed());
    EXPECT_FALSE(decoder.Incomplete());
}

} // namespace
