#include "support/Shrinking.h"
#include "support/wire/HostElements.h"
#include "support/wire/WireModel.h"

#include <MPI/BDecoderC.h>
#include <MPI/BElementC.h>
#include <MPI/BEncoderC.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

// Random streams, right and damaged, and a plain reader of the format that tells what is in them.

namespace
{

using Support::SWireElement;
using Support::SWireStream;

const std::string kFormatBytes = "0123456789:-deil";
const std::string kDigits = "0123456789";
constexpr const char* kWrongSigns[] = {"0", "-", "+", "-0"};
const std::string kPaddingKey = "longer than any other";

struct SCase
{
    std::vector<std::string> pieces; ///< of the stream, as it was written
    unsigned cut = 0;                ///< seed of how it is fed; 0: all at once
};

std::string Joined(const std::vector<std::string>& pieces)
{
    return std::accumulate(pieces.begin(), pieces.end(), std::string());
}

std::string Encoded(const SWireElement& element)
{
    BEncoderC encoder;
    encoder.Element(*Support::HostElementOf(element));
    return encoder.Bytes();
}

// ---- What the decoder makes of it

SWireStream Decoded(const std::string& stream, unsigned cut)
{
    std::minstd_rand random(cut);
    const std::size_t longest = cut == 0 ? stream.size() : std::size_t{1} << random() % 14;
    BDecoderC decoder;
    SWireStream decoded;
    for (std::size_t begin = 0; begin < stream.size() && !decoder.Failed();)
    {
        const std::size_t piece = std::min(1 + random() % longest, stream.size() - begin);
        begin += decoder.Feed(stream.data() + begin, piece);
        if (const std::unique_ptr<BDictionaryC> message = decoder.TakeMessage())
            decoded.messages.push_back(
                {static_cast<std::size_t>(decoder.MessageOffset()), Support::WireElementOf(*message)});
    }
    decoded.endOffset = static_cast<std::size_t>(decoder.StreamOffset());
    if (decoder.Incomplete())
        decoded.end = Support::eweCutOff;
    if (!decoder.Failed())
        return decoded;
    decoded.end = Support::eweWrong;
    decoded.endOffset = static_cast<std::size_t>(decoder.FaultOffset());
    return decoded;
}

/// What is to be decoded, and what is decoded instead; empty if that is the same.
std::string Difference(const SCase& tried, const SWireStream& expected)
{
    const std::string is = Shown(Decoded(Joined(tried.pieces), tried.cut));
    return is == Shown(expected) ? "" : "is\n" + is + "and not\n" + Shown(expected);
}

std::string DifferenceFromModel(const SCase& tried)
{
    return Difference(tried, Support::ReadWire(Joined(tried.pieces)));
}

// ---- Making streams, and making them smaller

class Maker
{
public:
    explicit Maker(unsigned seed) : m_random(seed) {}

    unsigned Below(std::size_t limit) { return static_cast<unsigned>(m_random() % limit); }

    /// The keys come in any order, but not twice.
    SWireElement Dictionary(std::size_t levels)
    {
        SWireElement made = {Support::ewkDictionary, "", {}, {}};
        for (unsigned count = Below(5); count > 0; --count)
        {
            const std::string key = Below(2) == 0 ? std::string(1, kFormatBytes[Below(16)]) : Text();
            if (made.Find(key) == nullptr)
                Insert(made, key, Element(levels - 1));
        }
        return made;
    }

    /// Some are as long as a message may be, or a few bytes more or less.
    SWireElement Message()
    {
        SWireElement message = Dictionary(1 + Below(BDecoderC::kMaximumDepth));
        if (Below(80) == 0)
            Pad(message);
        return message;
    }

    SCase Stream()
    {
        SCase made;
        for (unsigned count = Below(4); count > 0; --count)
        {
            const std::vector<std::string> written = Support::WrittenWire(Message());
            made.pieces.insert(made.pieces.end(), written.begin(), written.end());
        }
        made.cut = Below(1000);
        return made;
    }

    void Damage(std::vector<std::string>& pieces)
    {
        if (pieces.empty())
            return;
        const std::size_t index = Below(pieces.size());
        std::string& piece = pieces[index];
        const std::size_t place = Below(std::min<std::size_t>(piece.size(), 12));
        switch (Below(6))
        {
        case 0:
            piece[place] = Byte();
            break;
        case 1:
            piece.erase(place, 1);
            break;
        case 2:
            piece.insert(piece.begin() + static_cast<std::ptrdiff_t>(place), Byte());
            break;
        case 3:
            piece.resize(place);
            pieces.resize(index + 1);
            break;
        case 4: // a number or length in another spelling
            piece.insert(std::min(piece.find_first_of(kDigits), piece.size()),
                         kWrongSigns[Below(std::size(kWrongSigns))]);
            break;
        default: // what stands elsewhere
            piece = pieces[Below(pieces.size())];
        }
        pieces.erase(std::remove(pieces.begin(), pieces.end(), ""), pieces.end());
    }

private:
    char Byte() { return Below(4) == 0 ? static_cast<char>(Below(256)) : kFormatBytes[Below(16)]; }

    std::string Text()
    {
        std::string text(Below(12), ' ');
        std::generate(text.begin(), text.end(), [this] { return Byte(); });
        return text;
    }

    std::string Number()
    {
        using Limits = std::numeric_limits<std::int64_t>;
        const unsigned kind = Below(6);
        if (kind == 0)
            return std::to_string(Below(2) == 0 ? Limits::min() : Limits::max());
        if (kind < 3)
            return std::to_string(static_cast<int>(Below(5)) - 2);
        const std::uint64_t bits = (std::uint64_t{m_random()} << 32 | m_random()) >> Below(64);
        return std::to_string(static_cast<std::int64_t>(bits));
    }

    SWireElement Element(std::size_t levels)
    {
        const unsigned kind = Below(levels > 0 ? 4 : 2);
        if (kind == 0)
            return {Support::ewkNumber, Number(), {}, {}};
        if (kind == 1)
            return {Support::ewkText, Text(), {}, {}};
        if (kind == 2)
            return Dictionary(levels);
        SWireElement list = {Support::ewkList, "", {}, {}};
        for (unsigned count = Below(5); count > 0; --count)
            list.elements.push_back(Element(levels - 1));
        return list;
    }

    void Insert(SWireElement& dictionary, const std::string& key, const SWireElement& element)
    {
        const std::ptrdiff_t place = Below(dictionary.keys.size() + 1);
        dictionary.keys.insert(dictionary.keys.begin() + place, key);
        dictionary.elements.insert(dictionary.elements.begin() + place, element);
    }

    /// Puts a long key in, or a long text at any depth.
    void Pad(SWireElement& message)
    {
        const bool keyIsLong = Below(3) == 0;
        const unsigned levels = Below(BDecoderC::kMaximumDepth);
        const auto padding = [&](std::size_t size)
        {
            SWireElement value = {Support::ewkText, std::string(keyIsLong ? 0 : size, 'x'), {}, {}};
            for (unsigned level = 0; level < levels; ++level)
                value = {Support::ewkList, "", {}, {value}};
            return value;
        };
        const unsigned seed = Below(1000); // of the place, which is the same both times
        const auto padded = [&](std::size_t size)
        {
            Maker places(seed);
            SWireElement result = message;
            places.Insert(result, keyIsLong ? std::string(size, 'k') : kPaddingKey, padding(size));
            return result;
        };
        const std::size_t around = Joined(Support::WrittenWire(padded(10000))).size() - 10000;
        message = padded(BDecoderC::kMaximumMessageBytes - around + Below(7) - 3);
    }

    std::mt19937 m_random;
};

std::vector<SCase> Smaller(const SCase& whole)
{
    std::vector<SCase> smaller;
    if (whole.cut != 0)
        smaller.push_back({whole.pieces, 0});
    for (const std::vector<std::string>& pieces : Support::Shortened(whole.pieces))
        smaller.push_back({pieces, whole.cut});
    return smaller;
}

std::string StreamOf(const SCase& tried)
{
    return Support::Shown(SWireElement{Support::ewkText, Joined(tried.pieces), {}, {}}) + " cut by " +
           std::to_string(tried.cut) + "\n";
}

class HostDecoderModel : public testing::TestWithParam<unsigned>
{
};

TEST_P(HostDecoderModel, TheMessagesThatWereWrittenComeOutInOrderWithTheirOffsetsHoweverTheStreamIsCut)
{
    Maker maker(GetParam());
    for (int round = 0; round < 40; ++round)
    {
        SWireStream expected;
        SCase tried = {{}, maker.Below(1000)};
        for (unsigned count = maker.Below(5); count > 0; --count)
        {
            const SWireElement message = maker.Dictionary(BDecoderC::kMaximumDepth);
            tried.pieces.push_back(Joined(Support::WrittenWire(message)));
            expected.messages.push_back({expected.endOffset, message});
            expected.endOffset += tried.pieces.back().size();
        }
        ASSERT_EQ(Difference(tried, expected), "") << StreamOf(tried);
        ASSERT_EQ(DifferenceFromModel(tried), "") << StreamOf(tried);
    }
}

TEST_P(HostDecoderModel, DamagedStreamsGiveTheMessagesBeforeTheFaultAndAreRefusedWhereItIs)
{
    Maker maker(GetParam());
    std::map<Support::EWireEnd, int> ends;
    int behindMessages = 0;
    const auto made = [&]
    {
        SCase damaged = maker.Stream();
        for (unsigned damages = maker.Below(4); damages > 0; --damages)
            maker.Damage(damaged.pieces);
        const SWireStream read = Support::ReadWire(Joined(damaged.pieces));
        ++ends[read.end];
        behindMessages += read.end == Support::eweWrong && !read.messages.empty() ? 1 : 0;
        return damaged;
    };
    EXPECT_EQ(Support::SmallestDifference(200, made, Smaller, DifferenceFromModel, StreamOf), "");
    EXPECT_GT(ends[Support::eweWhole], 20) << "hardly a stream that is right";
    EXPECT_GT(ends[Support::eweCutOff], 5) << "hardly a stream that is cut off";
    EXPECT_GT(ends[Support::eweWrong], 40) << "hardly a stream that is wrong";
    EXPECT_GT(behindMessages, 8) << "hardly a fault behind a message";
}

TEST_P(HostDecoderModel, TheEncoderWritesEveryElementInOneWayWithTheKeysInOrder)
{
    Maker maker(GetParam());
    for (int round = 0; round < 40; ++round)
    {
        const SWireElement element = maker.Dictionary(BDecoderC::kMaximumDepth);
        const SWireElement sorted = Support::WireElementOf(*Support::HostElementOf(element));
        ASSERT_TRUE(std::is_sorted(sorted.keys.begin(), sorted.keys.end()));
        ASSERT_EQ(Shown(sorted), Shown(element));
        ASSERT_EQ(Encoded(element), Joined(Support::WrittenWire(sorted)));
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, HostDecoderModel, testing::Range(0u, 20u));

} // namespace
