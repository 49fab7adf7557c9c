#include "faultkeeperctl/keys/TypedKey.h"

#include "common/text/TypedText.h"
#include "faultkeeperctl/Settings.h"
#include "faultkeeperctl/keys/PhoneKey.h"

#include <cstddef>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::size_t kLeastDigits = 3;

void CheckDigits(const std::string& key)
{
    if (key.find_first_not_of("0123456789ABCDEF") != std::string::npos)
        throw CFailure(epsUsage,
                       QuotedTyped(key) + " is no state key: it holds other characters than 0-9 and A-F");
    if (key.size() < kLeastDigits)
        throw CFailure(epsUsage, "the key " + QuotedTyped(key) +
                                     " is too short: at least 10 bits, that is 3 digits, name an error");
}
} // namespace

std::string JoinedWords(const std::vector<std::string>& words)
{
    std::string typed;
    for (const std::string& word : words)
        typed += (typed.empty() ? "" : " ") + word;
    return typed;
}

std::string KeyFromTyped(const std::vector<std::string>& words)
{
    const std::string typed = JoinedWords(words);
    if (!LooksLikePhoneKey(typed))
    {
        std::string key = BareKey(typed); // small letters mean the same
        CheckDigits(key);
        return key;
    }
    const SPhoneReading reading = ReadPhoneKey(typed);
    if (!reading.problem.empty())
        throw CFailure(epsUsage, reading.problem);
    CheckDigits(reading.key);
    return reading.key;
}

} // namespace Faultkeeper::Apps
