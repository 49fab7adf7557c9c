#include <MPI/BAtomC.h>
#include <MPI/BDecoderC.h>
#include <MPI/BEncoderC.h>
#include <MPI/BListC.h>

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>

namespace
{

std::string Encoded(const BElementC& element)
{
    BEncoderC encoder;
    encoder.Element(element);
    return encoder.Bytes();
}

class HostDecoderModel : public testing::TestWithParam<unsigned>
{
protected:
    unsigned Random(unsigned below) { return static_cast<unsigned>(m_random() % below); }

    std::string RandomText()
    {
        std::string text;
        for (unsigned length = Random(12); length > 0; --length)
            text += static_cast<char>(Random(256));
        return text;
    }

    std::unique_ptr<BElementC> RandomElement(int levels)
    {
        const unsigned kind = Random(levels > 0 ? 4 : 2);
        if (kind == 0)
        {
            const std::uint64_t bits = (std::uint64_t{m_random()} << 32 | m_random()) >> Random(64);
            return std::make_unique<BAtomC>(static_cast<std::int64_t>(bits));
        }
        if (kind == 1)
            return std::make_unique<BAtomC>(RandomText());
        if (kind == 2)
            return RandomList(levels);
        return RandomDictionary(levels);
    }

    std::unique_ptr<BListC> RandomList(int levels)
    {
        auto list = std::make_unique<BListC>();
        for (unsigned count = Random(5); count > 0; --count)
            list->Append(RandomElement(levels - 1));
        return list;
    }

    std::unique_ptr<BDictionaryC> RandomDictionary(int levels)
    {
        auto dictionary = std::make_unique<BDictionaryC>();
        for (unsigned count = Random(5); count > 0; --count)
            dictionary->Insert(RandomText(), RandomElement(levels - 1));
        return dictionary;
    }

    std::mt19937 m_random{GetParam()};
};

TEST_P(HostDecoderModel, WhatWasEncodedDecodesToTheSameElementsWhateverThePieces)
{
    BDecoderC decoder;
    for (int round = 0; round < 100; ++round)
    {
        const std::string bytes = Encoded(*RandomDictionary(BDecoderC::kMaximumDepth));
        for (std::size_t begin = 0; begin < bytes.size();)
        {
            const std::size_t piece = std::min<std::size_t>(1 + Random(9), bytes.size() - begin);
            ASSERT_EQ(decoder.Feed(bytes.data() + begin, piece), piece);
            begin += piece;
        }
        const std::unique_ptr<BDictionaryC> message = decoder.TakeMessage();
        ASSERT_NE(message, nullptr);
        ASSERT_EQ(Encoded(*message), bytes);
    }
}

TEST_P(HostDecoderModel, WhatIsTakenOfDamagedMessagesIsWhatTheEncoderWritesExceptForTheOrderOfKeys)
{
    for (int round = 0; round < 500; ++round)
    {
        std::string bytes = Encoded(*RandomDictionary(4));
        for (unsigned damages = 1 + Random(3); damages > 0; --damages)
            bytes[Random(static_cast<unsigned>(bytes.size()))] = "0123456789:-deil"[Random(16)];
        BDecoderC decoder;
        const std::size_t taken = decoder.Feed(bytes.data(), bytes.size());
        const std::unique_ptr<BDictionaryC> message = decoder.TakeMessage();
        ASSERT_EQ(message != nullptr ? 1 : 0, decoder.Failed() || decoder.Incomplete() ? 0 : 1);
        if (message == nullptr)
            continue;
        std::string sorted = bytes.substr(0, taken);
        std::string again = Encoded(*message);
        std::sort(sorted.begin(), sorted.end());
        std::sort(again.begin(), again.end());
        ASSERT_EQ(again, sorted);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, HostDecoderModel, testing::Range(0u, 20u));

} // namespace
