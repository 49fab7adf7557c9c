#include "faultkeeperctl/StateKeys.h"

#include "common/TypedText.h"
#include "faultkeeperctl/Settings.h"

#include <cctype>
#include <cstddef>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::size_t kLeastDigits = 3;
} // namespace

std::string CheckedKey(const std::string& typed)
{
    std::string key = typed;
    for (char& c : key)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (key.find_first_not_of("0123456789ABCDEF") != std::string::npos)
        throw CFailure(epsUsage,
                       QuotedTyped(key) + " is no state key: it holds other characters than 0-9 and A-F");
    if (key.size() < kLeastDigits)
        throw CFailure(epsUsage, "the key " + QuotedTyped(key) +
                                     " is too short: at least 10 bits, that is 3 digits, name an error");
    return key;
}

} // namespace Faultkeeper::Apps
