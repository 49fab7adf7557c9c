#include "unit/presentation/DisplayFixture.h"

#include "unit/Common/view/NumberedErrors.h"

#include <Faultkeeper/ErrorPresentation.h>

#include <algorithm>
#include <ostream>
#include <random>
#include <stdexcept>

using namespace Faultkeeper;

// State keys of every length: as many bits behind the index as it takes to end at every place of a byte, in
// every pattern while there are few, made of one error's triggers or of several; and keys of every number of
// digits.

namespace
{

std::string PatternOf(unsigned number, int bits)
{
    std::string pattern;
    for (int bit = bits - 1; bit >= 0; --bit)
        pattern += (number >> bit & 1U) != 0 ? '1' : '0';
    return pattern;
}

/// The key of these bits, four at a time.
std::string Packed(std::string bits)
{
    while (bits.size() % 8 != 0)
        bits += '0';
    std::string key;
    for (; !bits.empty(); bits.erase(0, 4))
        key += "0123456789ABCDEF"[std::stoul(bits.substr(0, 4), nullptr, 2)];
    return key;
}

std::string Unpacked(const std::string& key)
{
    std::string bits;
    for (const char digit : key)
        bits += PatternOf(static_cast<unsigned>(std::stoi(std::string(1, digit), nullptr, 16)), 4);
    return bits;
}

/// A tree that is rebuilt from a key: "0 1 2" are the errors, then the lines; or what was thrown.
struct SRebuilt
{
    std::string errors;
    std::string lines;

    bool operator==(const SRebuilt& other) const { return errors == other.errors && lines == other.lines; }
};

std::ostream& operator<<(std::ostream& out, const SRebuilt& rebuilt)
{
    return out << rebuilt.errors << "\n" << rebuilt.lines;
}

class StateKeyModelTest : public DisplayFixture
{
protected:
    SRebuilt Rebuilt(const std::string& key)
    {
        SErrorTree tree;
        std::vector<std::string> lines;
        std::vector<std::pair<int, int>> codes;
        try
        {
            CErrorPresentation::RegenerateErrorTree(key, *m_database, m_reader, tree, lines, codes, true);
        }
        catch (const std::out_of_range& error)
        {
            return {Numbers(codes), error.what()};
        }
        return {Numbers(codes), Joined(lines)};
    }
};

// ---- One error with so many triggers, all of them leaves

class StateKeyLengthTest : public StateKeyModelTest, public testing::WithParamInterface<int>
{
protected:
    int Bits() const { return GetParam(); }

    /// Error 1 is the top, the triggers are those behind it, in two sets.
    void SetUp() override
    {
        std::vector<Support::STestError> errors{Node(0), Node(1)};
        std::vector<int> first;
        std::vector<int> second;
        for (int bit = 0; bit < Bits(); ++bit)
        {
            errors.push_back(Node(2 + bit));
            (bit < Bits() / 3 ? first : second).push_back(2 + bit);
        }
        errors[1] = Node(1, {Set(first), Set(second)});
        Load(errors);
    }

    static constexpr unsigned kEveryPattern = 256; // so lengths from 10 to 18 bits have all of theirs

    /// All patterns of few bits, some of many.
    std::vector<std::string> Patterns() const
    {
        std::vector<std::string> patterns;
        std::mt19937 random(static_cast<unsigned>(Bits()));
        const unsigned all = 1U << Bits();
        for (unsigned number = 0; number < std::min(all, kEveryPattern); ++number)
            patterns.push_back(
                PatternOf(all <= kEveryPattern ? number : static_cast<unsigned>(random()) % all, Bits()));
        patterns.push_back(PatternOf(0, Bits()));
        patterns.push_back(PatternOf(all - 1, Bits()));
        return patterns;
    }

    void ActivatePattern(const std::string& pattern)
    {
        std::vector<int> active{1};
        for (int bit = 0; bit < Bits(); ++bit)
            if (pattern[static_cast<std::size_t>(bit)] == '1')
                active.push_back(2 + bit);
        Activate(active);
    }

    /// The triggers have no lines if theirs are the last bits of the key.
    SRebuilt Expected(const std::string& pattern) const
    {
        SRebuilt expected{"1", NumberedErrors::Name(1) + "\n"};
        const bool padded = (10 + Bits()) % 8 != 0;
        for (int bit = 0; bit < Bits(); ++bit)
        {
            if (pattern[static_cast<std::size_t>(bit)] != '1')
                continue;
            expected.errors += " " + std::to_string(2 + bit);
            expected.lines += padded ? NumberedErrors::Name(2 + bit) + "\n" : "";
        }
        return expected;
    }
};

TEST_P(StateKeyLengthTest, EveryPatternHasItsKeyAndComesBackFromIt)
{
    for (const std::string& pattern : Patterns())
    {
        ActivatePattern(pattern);
        const std::string key = Tree(1).stateKey;
        ASSERT_EQ(key, Packed("0000000001" + pattern)) << pattern;
        Activate({}); // the live state has moved on
        ASSERT_EQ(Rebuilt(key), Expected(pattern)) << pattern;
    }
}

TEST_P(StateKeyLengthTest, ByteEndsArePaddedAndNothingElse)
{
    ActivatePattern(PatternOf(0, Bits()));
    const std::size_t bytes = static_cast<std::size_t>(10 + Bits() + 7) / 8;
    EXPECT_EQ(Tree(1).stateKey.size(), 2 * bytes);
}

INSTANTIATE_TEST_SUITE_P(Bits, StateKeyLengthTest, testing::Range(0, 18));

// ---- Keys of every number of digits, whatever they hold

/// 0 has the triggers 1 and 2, in the next set 3; 1 has 3 and 4; 2 has 4; 3 has 5, 5 and 5.
const std::vector<std::vector<std::vector<int>>> kSets = {{{1, 2}, {3}}, {{3}, {4}}, {{4}},
                                                          {{5, 5, 5}},   {},         {}};

/// What a key stands for, word for word.
class Rebuilder
{
public:
    SRebuilt Of(const std::string& key)
    {
        m_bits = Unpacked(key);
        m_rebuilt.errors = "0";
        m_rebuilt.lines = NumberedErrors::Name(0) + "\n";
        if (m_bits.size() < 10)
            return {"0", "basic_string::substr"};
        m_bits = m_bits.substr(10);
        Walk(0);
        return m_rebuilt;
    }

private:
    void Walk(int error)
    {
        if (m_bits.empty())
            return;
        std::size_t i = 0;
        std::vector<int> selected;
        for (const std::vector<int>& set : kSets[static_cast<std::size_t>(error)])
        {
            for (const int trigger : set)
            {
                if (i < m_bits.size() && m_bits[i] == '1')
                {
                    selected.push_back(trigger);
                    m_rebuilt.errors += " " + std::to_string(trigger);
                }
                ++i;
            }
        }
        if (m_bits.size() <= i)
            return m_bits.clear();
        m_bits = m_bits.substr(i);
        for (const int trigger : selected)
        {
            m_rebuilt.lines += NumberedErrors::Name(trigger) + "\n";
            Walk(trigger);
        }
    }

    std::string m_bits;
    SRebuilt m_rebuilt;
};

class AnyStateKeyTest : public StateKeyModelTest
{
protected:
    void SetUp() override
    {
        std::vector<Support::STestError> errors;
        for (std::size_t number = 0; number < kSets.size(); ++number)
        {
            std::vector<Support::STestTriggerSet> sets;
            for (const std::vector<int>& set : kSets[number])
                sets.push_back(Set(set));
            errors.push_back(Node(static_cast<int>(number), sets));
        }
        Load(errors);
    }

    /// Keys of the error with index 0: two digits are 0, and the third begins with two zeros.
    void ExpectEveryKeyToBeRead(const std::string& beginning, std::size_t digits)
    {
        ASSERT_EQ(Rebuilt(beginning), Rebuilder().Of(beginning)) << "'" << beginning << "'";
        if (beginning.size() == digits)
            return;
        const std::string next = beginning.size() < 2    ? "0"
                                 : beginning.size() == 2 ? "0123"
                                                         : "0123456789ABCDEF";
        for (const char digit : next)
            ExpectEveryKeyToBeRead(beginning + digit, digits);
    }
};

TEST_F(AnyStateKeyTest, EveryKeyOfUpToSixDigitsIsReadAsFarAsItGoes)
{
    ExpectEveryKeyToBeRead("", 6);
}

class StateKeyDigitsTest : public AnyStateKeyTest, public testing::WithParamInterface<unsigned>
{
};

TEST_P(StateKeyDigitsTest, KeysOfEveryNumberOfDigitsAreReadAsFarAsTheyGo)
{
    std::mt19937 random(GetParam());
    for (std::size_t digits = 0; digits <= 12; ++digits)
    {
        for (int round = 0; round < 30; ++round)
        {
            std::string key = std::string("00").substr(0, digits);
            if (digits > 2)
                key += "0123"[random() % 4]; // the index is 0, so the third digit begins with two zeros
            while (key.size() < digits)
                key += "0123456789ABCDEF"[random() % 16];
            ASSERT_EQ(Rebuilt(key), Rebuilder().Of(key)) << "'" << key << "'";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, StateKeyDigitsTest, testing::Range(0u, 4u));

// ---- The longest way down

TEST_F(StateKeyModelTest, AChainOf400HasABitForEachLinkAndComesBack)
{
    constexpr int kChain = 400;
    std::vector<Support::STestError> errors;
    std::vector<int> all;
    std::string lines;
    for (int number = 0; number < kChain; ++number)
    {
        errors.push_back(number + 1 < kChain ? Node(number, {Set({number + 1})}) : Node(number));
        all.push_back(number);
        lines += NumberedErrors::Name(number) + "\n";
    }
    Load(errors);
    Activate(all);
    const std::string key = Tree(0).stateKey;
    EXPECT_EQ(key, Packed("0000000000" + std::string(kChain - 1, '1')));
    Activate({});
    EXPECT_EQ(Rebuilt(key).lines, lines);
}

// ---- The way round

/// How many errors lead to a circle, and how many it has.
class StateKeyCircleTest : public StateKeyModelTest, public testing::WithParamInterface<std::pair<int, int>>
{
};

TEST_P(StateKeyCircleTest, ATreeTurnsBackWhereItHasBeenAndSoDoesTheOneThatComesBack)
{
    const auto [lead, circle] = GetParam();
    const int count = lead + circle;
    std::vector<Support::STestError> errors;
    std::vector<int> all;
    std::string lines;
    for (int number = 0; number < count; ++number)
    {
        errors.push_back(Node(number, {Set({number + 1 < count ? number + 1 : lead})}));
        all.push_back(number);
        lines += NumberedErrors::Name(number) + "\n";
    }
    Load(errors);
    Activate(all);
    const std::string key = Tree(0).stateKey;
    EXPECT_EQ(key, Packed("0000000000" + std::string(static_cast<std::size_t>(count), '1')));
    Activate({});
    EXPECT_EQ(Rebuilt(key).lines, lines + NumberedErrors::Name(lead) + "\n");
}

INSTANTIATE_TEST_SUITE_P(Errors, StateKeyCircleTest,
                         testing::Values(std::pair(0, 2), std::pair(0, 32), std::pair(0, 33),
                                         std::pair(0, 34), std::pair(0, 100), std::pair(30, 2),
                                         std::pair(31, 2), std::pair(32, 2), std::pair(33, 2),
                                         std::pair(60, 40)));

} // namespace
