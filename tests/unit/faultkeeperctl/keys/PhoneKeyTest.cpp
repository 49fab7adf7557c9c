#include "faultkeeperctl/keys/PhoneKey.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace Faultkeeper::Apps;

namespace
{
typedef std::vector<std::size_t> Numbers;

const std::string kLetters = "GHJKLMNPQRSTVWXYZ";

std::vector<std::string> GroupsOf(const std::string& phoneKey)
{
    std::vector<std::string> groups;
    for (std::size_t start = 0; start < phoneKey.size(); start += 6)
        groups.push_back(phoneKey.substr(start, 5));
    return groups;
}

std::string Joined(const std::vector<std::string>& groups)
{
    std::string text;
    for (const std::string& group : groups)
        text += (text.empty() ? "" : " ") + group;
    return text;
}

Numbers FromTo(std::size_t first, std::size_t last)
{
    Numbers numbers;
    for (std::size_t number = first; number <= last; ++number)
        numbers.push_back(number);
    return numbers;
}

bool EndsWith(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// Keys of every number of digits; the parameter tells which twenty numbers, and is the seed.
class PhoneKeyModelTest : public testing::TestWithParam<unsigned>
{
protected:
    template <typename Check> void WithEachKey(const Check& check)
    {
        std::mt19937 random(GetParam());
        for (unsigned digits = GetParam() * 20 + 1; digits <= GetParam() * 20 + 20; ++digits)
        {
            m_key.clear();
            while (m_key.size() < digits)
                m_key += "0123456789ABCDEF"[random() % 16];
            m_phone = PhoneKey(m_key);
            m_groups = GroupsOf(m_phone);
            check();
        }
    }

    std::string m_key;
    std::string m_phone;
    std::vector<std::string> m_groups;
};
} // namespace

TEST_P(PhoneKeyModelTest, ComesBack)
{
    WithEachKey(
        [this]
        {
            EXPECT_EQ(ReadPhoneKey(m_phone).key, m_key);
            EXPECT_EQ(ReadPhoneKey(m_phone).problem, "");
            EXPECT_EQ(m_groups.size(), (m_key.size() + 3) / 4);
            EXPECT_TRUE(LooksLikePhoneKey(m_phone));
            EXPECT_FALSE(LooksLikePhoneKey(m_key));
        });
}

TEST_P(PhoneKeyModelTest, ComesBackInSmallLettersAndWithOtherGapsOrNone)
{
    WithEachKey(
        [this]
        {
            std::string small = m_phone;
            std::transform(small.begin(), small.end(), small.begin(),
                           [](char c) { return c == ' ' ? '-' : static_cast<char>(c - 'A' + 'a'); });
            EXPECT_EQ(ReadPhoneKey(small).key, m_key);
            std::string together = m_phone;
            together.erase(std::remove(together.begin(), together.end(), ' '), together.end());
            EXPECT_EQ(ReadPhoneKey(together).key, m_key);
            EXPECT_EQ(ReadPhoneKey(" - " + m_phone + "\t\n").key, m_key);
        });
}

TEST_P(PhoneKeyModelTest, EveryWrongLetterIsNoticedAndItsGroupNamed)
{
    WithEachKey(
        [this]
        {
            for (std::size_t place = 0; place < m_phone.size(); ++place)
            {
                for (const char letter : kLetters + "ILOU0B5")
                {
                    std::string heard = m_phone;
                    heard[place] = letter;
                    if (m_phone[place] == ' ' || heard == m_phone)
                        continue;
                    const SPhoneReading reading = ReadPhoneKey(heard);
                    ASSERT_EQ(reading.wrong, Numbers{place / 6 + 1}) << heard << " for " << m_phone;
                    ASSERT_EQ(reading.problem.find("group " + std::to_string(place / 6 + 1) +
                                                   " of the key, \"" + GroupsOf(heard)[place / 6] +
                                                   "\", is wrong"),
                              0U)
                        << reading.problem;
                    ASSERT_EQ(reading.key, "");
                }
            }
        });
}

TEST_P(PhoneKeyModelTest, TwoLettersOfAGroupThatChangedPlacesAreNoticed)
{
    WithEachKey(
        [this]
        {
            for (std::size_t group = 0; group < m_groups.size(); ++group)
            {
                for (std::size_t i = 0; i < 5; ++i)
                {
                    for (std::size_t j = 0; j < i; ++j)
                    {
                        std::vector<std::string> heard = m_groups;
                        std::swap(heard[group][i], heard[group][j]);
                        if (heard != m_groups)
                        {
                            ASSERT_EQ(ReadPhoneKey(Joined(heard)).wrong, Numbers{group + 1}) << Joined(heard);
                        }
                    }
                }
            }
        });
}

TEST_P(PhoneKeyModelTest, NeighboursOfTwoGroupsThatChangedPlacesAreNoticed)
{
    WithEachKey(
        [this]
        {
            for (std::size_t group = 0; group + 1 < m_groups.size(); ++group)
            {
                std::vector<std::string> heard = m_groups;
                std::swap(heard[group].back(), heard[group + 1].front());
                if (heard != m_groups)
                {
                    ASSERT_EQ(ReadPhoneKey(Joined(heard)).wrong, Numbers({group + 1, group + 2}))
                        << Joined(heard);
                }
            }
        });
}

TEST_P(PhoneKeyModelTest, GroupsThatChangedPlacesAreNoticedAndNamed)
{
    WithEachKey(
        [this]
        {
            for (std::size_t one = 0; one < m_groups.size(); ++one)
            {
                for (std::size_t other = one + 1; other < std::min(m_groups.size(), one + 16); ++other)
                {
                    std::vector<std::string> heard = m_groups;
                    std::swap(heard[one], heard[other]);
                    const SPhoneReading reading = ReadPhoneKey(Joined(heard));
                    ASSERT_EQ(reading.wrong, Numbers({one + 1, other + 1})) << Joined(heard);
                    ASSERT_EQ(reading.problem, "groups " + std::to_string(one + 1) + " and " +
                                                   std::to_string(other + 1) +
                                                   " of the key are wrong, as if they had changed places");
                }
            }
        });
}

TEST_P(PhoneKeyModelTest, AMissingGroupIsNoticedAndItsPlaceNamed)
{
    WithEachKey(
        [this]
        {
            for (std::size_t group = 0; group < m_groups.size() && m_groups.size() > 1; ++group)
            {
                std::vector<std::string> heard = m_groups;
                heard.erase(heard.begin() + static_cast<std::ptrdiff_t>(group));
                const SPhoneReading reading = ReadPhoneKey(Joined(heard));
                const bool end = group == heard.size();
                ASSERT_EQ(reading.wrong, FromTo(end ? group : group + 1, heard.size())) << Joined(heard);
                ASSERT_TRUE(
                    EndsWith(reading.problem, end ? ", or what follows it is missing"
                                                  : ", as if a group were missing in front of group " +
                                                        std::to_string(group + 1)))
                    << reading.problem;
            }
        });
}

TEST_P(PhoneKeyModelTest, AGroupThatIsThereTwiceIsNoticedAndNamed)
{
    WithEachKey(
        [this]
        {
            for (std::size_t group = 0; group < m_groups.size(); ++group)
            {
                std::vector<std::string> heard = m_groups;
                heard.insert(heard.begin() + static_cast<std::ptrdiff_t>(group), m_groups[group]);
                const SPhoneReading reading = ReadPhoneKey(Joined(heard));
                const bool end = group + 1 == m_groups.size(); // its first copy is not the last group
                ASSERT_EQ(reading.wrong, FromTo(end ? group + 1 : group + 2, heard.size())) << Joined(heard);
                ASSERT_TRUE(end || EndsWith(reading.problem, ", as if group " + std::to_string(group + 1) +
                                                                 " were there twice"))
                    << reading.problem;
            }
        });
}

TEST_P(PhoneKeyModelTest, AMissingLetterIsNoticedAndItsGroupNamed)
{
    WithEachKey(
        [this]
        {
            for (std::size_t place = 0; place < m_phone.size(); ++place)
            {
                std::string heard = m_phone;
                if (m_phone[place] == ' ')
                    continue;
                heard.erase(place, 1);
                const SPhoneReading reading = ReadPhoneKey(heard);
                ASSERT_EQ(reading.wrong, Numbers{place / 6 + 1}) << heard;
                ASSERT_TRUE(EndsWith(reading.problem, ": each group has 5 letters")) << reading.problem;
            }
        });
}

INSTANTIATE_TEST_SUITE_P(Digits, PhoneKeyModelTest, testing::Range(0U, 5U));

// 7, 1, 4, 0 is 7 + 2 + 12 = 21; less 7, the mark of the only group, 14.
TEST(PhoneKeyTest, HasTheFormThatTechniciansKnow)
{
    EXPECT_EQ(PhoneKey("7140"), "PHLGX");
    EXPECT_EQ(PhoneKey("0140"), "GHLGP");
    EXPECT_EQ(PhoneKey("00F0A1"), "GGYGT SHZZQ");
    EXPECT_EQ(PhoneKey(""), "");
}

TEST(PhoneKeyTest, ALetterThatIsMissingIsFoundWithoutGapsToo)
{
    EXPECT_EQ(ReadPhoneKey("GGYGTSHZV").problem,
              "group 2 of the key, \"SHZV\", is wrong: each group has 5 letters");
}

TEST(PhoneKeyTest, FillingMayOnlyStandBehindTheKey)
{
    EXPECT_EQ(ReadPhoneKey("ZZZZX").wrong, Numbers{1});
    for (const char check : kLetters)
    {
        EXPECT_NE(ReadPhoneKey(std::string("ZZZZ") + check).problem, "");
        EXPECT_NE(ReadPhoneKey(std::string("GZGG") + check).problem, "");
        EXPECT_NE(ReadPhoneKey(std::string("GGGZ") + check + " SHZZQ").problem, "");
    }
}

TEST(PhoneKeyTest, WhatCannotBeWrittenIsShownSafely)
{
    EXPECT_EQ(ReadPhoneKey("GHLG\x1b").problem, "group 1 of the key, \"GHLG\\x1B\", is wrong");
}

TEST(PhoneKeyTest, TellsTheTwoFormsApartAlsoWithMistakesInThem)
{
    EXPECT_TRUE(LooksLikePhoneKey("GHLG5"));
    EXPECT_TRUE(LooksLikePhoneKey("ghl g0"));
    EXPECT_FALSE(LooksLikePhoneKey("00G0"));
    EXPECT_FALSE(LooksLikePhoneKey(""));
}

TEST(PhoneKeyTest, TakesTheBlanksAndDashesOfOtherTextsForGaps)
{
    const std::string phone = PhoneKey("0140F");
    ASSERT_EQ(phone.size(), 11U);
    for (const char* const gap : {"\xC2\xA0", "\xE2\x80\x90", "\xE2\x80\x91", "\xE2\x80\x92", "\xE2\x80\x93",
                                  "\xE2\x80\x94", " \xE2\x80\x93\xC2\xA0", "\xE2\x80\x87", "\xE2\x80\x89",
                                  "\xE2\x80\xAF", "\xE2\x80\x95", "\xE2\x88\x92", "\xEF\xBC\x8D", "\xC2\xAD"})
    {
        const std::string typed = phone.substr(0, 5) + gap + phone.substr(6);
        EXPECT_EQ(ReadPhoneKey(typed).key, "0140F") << typed;
        EXPECT_TRUE(LooksLikePhoneKey(typed)) << typed;
        EXPECT_EQ(BareKey(std::string("01") + gap + "40f"), "0140F");
        EXPECT_EQ(ReadPhoneKey(phone.substr(0, 4) + gap + phone.substr(6)).wrong, Numbers({1})) << typed;
    }
}
