#include "support/FreshDirectory.h"
#include "support/Shrinking.h"

#include <Faultkeeper/ErrorOverlay.h>
#include <Faultkeeper/Identifiers.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace Faultkeeper;

// Random pattern files over a handful of errors, so that patterns match often, overlap, hide each other and
// hold an error twice, and a plain model of what is found in them.

namespace
{

typedef std::pair<int, int> TId;

/// Ids as the file spells them, and what they stand for. The last two are skipped.
struct SSpelling
{
    const char* text;
    TId id;
    bool kept;
};

int Code(int module, int subModule, int problem)
{
    return module | subModule | problem;
}

const int kUblox = Code(emiPositioning, esmiUblox, epiNoData);
const int kGsm = Code(emiCellRadio, esmiGSM, epiNoNetwork);

const SSpelling kSpellings[] = {{"Positioning:Ublox:No Data:2", {kUblox, 2}, true},
                                {"Positioning:Ublox:No Data:3", {kUblox, 3}, true},
                                {"Positioning:Ublox:No Data:-1", {kUblox, -1}, true},
                                {"Cell Radio:GSM:No Network:11", {kGsm, 11}, true},
                                {"Cell Radio:GSM:No Network:0", {kGsm, 0}, true},
                                {"Nowhere:GSM:No Network:4", {-1, 4}, true},
                                {"Positioning:Ublox:No Data", {}, false},
                                {"Positioning:Ublox:No Data:2:2", {}, false}};
constexpr int kSpelt = 8;
constexpr int kIds = 6;

struct STestPattern
{
    std::string code;
    bool partial = false;
    std::vector<int> spellings;
};

struct SCase
{
    std::vector<STestPattern> patterns;
    std::vector<int> given; ///< numbers of spellings
};

std::string FileOf(const std::vector<STestPattern>& patterns)
{
    std::string text = "<Overlay><Patterns>\n";
    for (const STestPattern& pattern : patterns)
    {
        text += "<pattern fixedCode='" + pattern.code + "' allowPartialMatch='" +
                (pattern.partial ? "yes" : "no") + "'>";
        for (const int spelling : pattern.spellings)
            text += std::string("<e id='") + kSpellings[spelling].text + "'/>";
        text += "</pattern>\n";
    }
    return text + "</Patterns></Overlay>\n";
}

std::vector<TId> IdsOf(const std::vector<int>& spellings)
{
    std::vector<TId> ids;
    for (const int spelling : spellings)
        if (kSpellings[spelling].kept)
            ids.push_back(kSpellings[spelling].id);
    return ids;
}

// ---- The model

bool EachOccurs(const std::vector<TId>& wanted, const std::vector<TId>& given)
{
    for (const TId& id : wanted)
    {
        bool found = false;
        for (const TId& other : given)
            found = found || (other.first == id.first && other.second == id.second);
        if (!found)
            return false;
    }
    return true;
}

/// Code of the first pattern that matches, step by step.
std::string Expected(const SCase& tried)
{
    std::vector<TId> given = IdsOf(tried.given);
    std::sort(given.begin(), given.end());
    for (const STestPattern& pattern : tried.patterns)
    {
        if (pattern.code.empty())
            continue;
        std::vector<TId> ids = IdsOf(pattern.spellings);
        std::sort(ids.begin(), ids.end());
        bool equal = ids.size() == given.size();
        for (std::size_t i = 0; equal && i < ids.size(); ++i)
            equal = ids[i] == given[i];
        if (equal || (pattern.partial && (ids.empty() || EachOccurs(ids, given))))
            return pattern.code;
    }
    return "";
}

// ---- Making cases, and making them smaller

class Maker
{
public:
    explicit Maker(unsigned seed) : m_random(seed) {}

    SCase Made()
    {
        SCase made;
        const int patterns = 1 + Below(8);
        for (int number = 0; number < patterns; ++number)
        {
            const bool nameless = Below(8) == 0;
            made.patterns.push_back(
                {nameless ? "" : "C" + std::to_string(number), Below(3) == 0, AnySpellings(kSpelt)});
        }
        made.given = AnySpellings(kIds);
        if (Below(2) == 0) // something that is there
            made.given = made.patterns[static_cast<std::size_t>(Below(patterns))].spellings;
        if (Below(4) == 0)
            made.given.push_back(Below(kIds));
        std::shuffle(made.given.begin(), made.given.end(), m_random);
        return made;
    }

private:
    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    std::vector<int> AnySpellings(int limit)
    {
        std::vector<int> spellings(static_cast<std::size_t>(Below(4)));
        std::generate(spellings.begin(), spellings.end(), [&] { return Below(limit); });
        return spellings;
    }

    std::mt19937 m_random;
};

std::vector<SCase> Smaller(const SCase& whole)
{
    std::vector<SCase> smaller;
    for (const std::vector<STestPattern>& patterns : Support::Shortened(whole.patterns))
        smaller.push_back({patterns, whole.given});
    for (const std::vector<int>& given : Support::Shortened(whole.given))
        smaller.push_back({whole.patterns, given});
    for (std::size_t pattern = 0; pattern < whole.patterns.size(); ++pattern)
    {
        for (const std::vector<int>& spellings : Support::Shortened(whole.patterns[pattern].spellings))
        {
            smaller.push_back(whole);
            smaller.back().patterns[pattern].spellings = spellings;
        }
    }
    return smaller;
}

class PatternModelTest : public testing::TestWithParam<unsigned>
{
protected:
    std::string Found(const SCase& tried) const
    {
        Support::WriteFile(m_directory.File("ErrorPatterns.xml"), FileOf(tried.patterns));
        return CErrorOverlay(m_directory.Prefix()).FindFriendlyCode(IdsOf(tried.given));
    }

    Support::CFreshDirectory m_directory;
};

TEST_P(PatternModelTest, TheFirstPatternThatMatchesIsFound)
{
    Maker maker(GetParam());
    int matches = 0;
    for (int round = 0; round < 150; ++round)
    {
        const SCase tried = maker.Made();
        matches += Expected(tried).empty() ? 0 : 1;
        if (Found(tried) == Expected(tried))
            continue;
        const SCase smallest = Support::Shrunk(
            tried, Smaller, [this](const SCase& each) { return Found(each) != Expected(each); });
        FAIL() << "in round " << round << ", smallest case:\n"
               << FileOf(smallest.patterns) << "given " << testing::PrintToString(IdsOf(smallest.given))
               << "\nis      '" << Found(smallest) << "'\nand not '" << Expected(smallest) << "'";
    }
    EXPECT_GT(matches, 40) << "hardly a case that matches";
    EXPECT_LT(matches, 140) << "hardly a case that does not match";
}

INSTANTIATE_TEST_SUITE_P(Seeds, PatternModelTest, testing::Range(0u, 8u));

} // namespace
