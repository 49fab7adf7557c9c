#include "faultkeeperctl/keys/PhoneKey.h"

#include "common/text/TypedText.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace Faultkeeper::Apps
{

namespace
{
typedef std::vector<std::string> Groups;

constexpr std::string_view kLetters = "GHJKLMNPQRSTVWXYZ"; // a letter's place is its value
constexpr std::string_view kDigits = "0123456789ABCDEF";
constexpr std::string_view kBetween = " \t\r\n-";
constexpr std::size_t kPrime = 17;
constexpr std::size_t kDataLetters = kPhoneGroupLetters - 1;
constexpr std::size_t kPlaceMark = 7;
constexpr char kFilling = 'Z';

// What texts from elsewhere have in the place of blanks and dashes.
constexpr std::string_view kOtherGaps[] = {
    "\xC2\xA0",     "\xE2\x80\x87", "\xE2\x80\x89", "\xE2\x80\xAF", // blanks that do not break, or are narrow
    "\xE2\x80\x90", "\xE2\x80\x91", "\xE2\x80\x92", "\xE2\x80\x93", // U+2010 to U+2015
    "\xE2\x80\x94", "\xE2\x80\x95", "\xE2\x88\x92", "\xEF\xBC\x8D", // minus, hyphen of full width
    "\xC2\xAD"};                                                    // a hyphen for line ends

std::string WithUsualGaps(std::string typed)
{
    for (const std::string_view gap : kOtherGaps)
    {
        for (std::size_t at = typed.find(gap); at != std::string::npos; at = typed.find(gap, at))
            typed.replace(at, gap.size(), " ");
    }
    return typed;
}

char Capital(char c)
{
    return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

/// What the check letter has to account for besides the digits. The last group counts as one place further
/// on, so that it can be told from any group that may have changed places with it.
std::size_t MarkOf(std::size_t place, bool last)
{
    return kPlaceMark * (last ? place + 1 : place) % kPrime;
}

std::size_t WeightedSum(const std::string& letters)
{
    std::size_t sum = 0;
    for (std::size_t i = 0; i < kDataLetters; ++i)
        sum += (i + 1) * kLetters.find(letters[i]);
    return sum % kPrime;
}

char CheckLetter(const std::string& letters, std::size_t place, bool last)
{
    return kLetters[(WeightedSum(letters) + kPrime - MarkOf(place, last)) % kPrime];
}

bool HasOnlyLetters(const std::string& text)
{
    return text.find_first_not_of(kLetters) == std::string::npos;
}

// Only the last group is filled up, and only behind the key's digits.
bool IsFilledRightly(const std::string& group, bool last)
{
    const std::string letters = group.substr(0, kDataLetters);
    const std::size_t digits = std::min(letters.find(kFilling), kDataLetters);
    return digits > 0 && (last || digits == kDataLetters) &&
           letters.find_first_not_of(kFilling, digits) == std::string::npos;
}

/// Is this the group for that place?
bool Fits(const std::string& group, std::size_t place, bool last)
{
    return group.size() == kPhoneGroupLetters && HasOnlyLetters(group) && IsFilledRightly(group, last) &&
           CheckLetter(group, place, last) == group.back();
}

Groups FilledGroups(const std::string& letters)
{
    Groups groups;
    for (std::size_t start = 0; start < letters.size(); start += kPhoneGroupLetters)
        groups.push_back(letters.substr(start, kPhoneGroupLetters));
    return groups;
}

/// The groups as they were typed, however long each is.
Groups TypedGroups(const std::string& text)
{
    const std::string typed = WithUsualGaps(text);
    Groups groups;
    for (std::size_t start = 0; (start = typed.find_first_not_of(kBetween, start)) != std::string::npos;)
    {
        const std::size_t end = std::min(typed.find_first_of(kBetween, start), typed.size());
        groups.push_back(BareKey(typed.substr(start, end - start)));
        start = end;
    }
    return groups;
}

std::string Listed(const std::vector<std::size_t>& numbers)
{
    std::string text;
    for (std::size_t i = 0; i < numbers.size(); ++i)
        text += (i == 0 ? "" : i + 1 == numbers.size() ? " and " : ", ") + std::to_string(numbers[i]);
    return text;
}

// From a group on, does each fit a place that is so many further on than its own?
bool FitShifted(const Groups& groups, std::size_t first, std::size_t forward, std::size_t back)
{
    for (std::size_t i = first; i < groups.size(); ++i)
    {
        if (!Fits(groups[i], i + forward - back, i + 1 == groups.size()))
            return false;
    }
    return true;
}

bool HaveChangedPlaces(const Groups& groups, const std::vector<std::size_t>& wrong)
{
    return wrong.size() == 2 && Fits(groups[wrong[0] - 1], wrong[1] - 1, wrong[1] == groups.size()) &&
           Fits(groups[wrong[1] - 1], wrong[0] - 1, false);
}

/// What may have happened, where the groups themselves tell.
std::string LikelyCause(const Groups& groups, const std::vector<std::size_t>& wrong)
{
    const std::size_t first = wrong.front() - 1;
    if (HaveChangedPlaces(groups, wrong))
        return ", as if they had changed places";
    if (first > 0 && groups[first] == groups[first - 1] && FitShifted(groups, first, 0, 1))
        return ", as if group " + std::to_string(first) + " were there twice";
    if (FitShifted(groups, first, 1, 0))
        return ", as if a group were missing in front of group " + std::to_string(wrong.front());
    if (first + 1 == groups.size() && Fits(groups[first], first, false))
        return ", or what follows it is missing";
    return "";
}

std::string Problem(const Groups& groups, const std::vector<std::size_t>& wrong)
{
    if (wrong.size() > 1)
        return "groups " + Listed(wrong) + " of the key are wrong" + LikelyCause(groups, wrong);
    return "group " + Listed(wrong) + " of the key, " + QuotedTyped(groups[wrong.front() - 1]) +
           ", is wrong" + LikelyCause(groups, wrong);
}

std::vector<std::size_t> Unfitting(const Groups& groups)
{
    std::vector<std::size_t> wrong;
    for (std::size_t i = 0; i < groups.size(); ++i)
    {
        if (!Fits(groups[i], i, i + 1 == groups.size()))
            wrong.push_back(i + 1);
    }
    return wrong;
}

// A letter is missing or one too many: the gaps tell where, or, without gaps, where it stops fitting.
SPhoneReading UnevenReading(const Groups& typed, const std::string& letters)
{
    SPhoneReading reading;
    for (std::size_t i = 0; i < typed.size() && typed.size() > 1; ++i)
    {
        if (typed[i].size() != kPhoneGroupLetters)
            reading.wrong.push_back(i + 1);
    }
    const bool gaps = !reading.wrong.empty();
    const Groups groups = gaps ? typed : FilledGroups(letters);
    if (!gaps)
        reading.wrong = {Unfitting(groups).front()}; // the last group is too short, so there is one
    reading.problem = Problem(groups, reading.wrong) + ": each group has " +
                      std::to_string(kPhoneGroupLetters) + " letters";
    return reading;
}

std::string DigitsOf(const Groups& groups)
{
    std::string key;
    for (const std::string& group : groups)
    {
        for (const char letter : group.substr(0, kDataLetters))
            key += letter == kFilling ? "" : std::string(1, kDigits[kLetters.find(letter)]);
    }
    return key;
}
} // namespace

std::string PhoneKey(const std::string& key)
{
    std::string text;
    for (std::size_t start = 0; start < key.size(); start += kDataLetters)
    {
        std::string letters;
        for (const char digit : key.substr(start, kDataLetters))
            letters += kLetters[kDigits.find(digit)];
        letters.resize(kDataLetters, kFilling);
        const bool last = start + kDataLetters >= key.size();
        text += (start == 0 ? "" : " ") + letters + CheckLetter(letters, start / kDataLetters, last);
    }
    return text;
}

SPhoneReading ReadPhoneKey(const std::string& typed)
{
    const std::string letters = BareKey(typed);
    if (letters.size() % kPhoneGroupLetters != 0)
        return UnevenReading(TypedGroups(typed), letters);
    const Groups groups = FilledGroups(letters);
    const std::vector<std::size_t> wrong = Unfitting(groups);
    if (wrong.empty())
        return {DigitsOf(groups), {}, ""};
    return {"", wrong, Problem(groups, wrong)};
}

bool LooksLikePhoneKey(const std::string& typed)
{
    const std::string bare = BareKey(typed);
    const auto holds = [&bare](std::string_view characters)
    {
        return std::count_if(bare.begin(), bare.end(),
                             [characters](char c) { return characters.find(c) != std::string::npos; });
    };
    return holds(kLetters) > holds(kDigits);
}

std::string BareKey(const std::string& typed)
{
    std::string bare;
    for (const char c : WithUsualGaps(typed))
        bare += kBetween.find(c) == std::string::npos ? std::string(1, Capital(c)) : "";
    return bare;
}

} // namespace Faultkeeper::Apps
