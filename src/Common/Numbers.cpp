#include "Common/Numbers.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace Faultkeeper
{

bool ReadNumber(const std::string& text, int& number)
{
    char* end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (end == text.c_str())
        return false;
    number = static_cast<int>(
        std::clamp<long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
    return true;
}

int NumberOrZero(const std::string& text)
{
    int number = 0;
    ReadNumber(text, number);
    return number;
}

} // namespace Faultkeeper
