#ifndef FAULTKEEPERCTL_OWNER_OWNERSTATISTICS_H
#define FAULTKEEPERCTL_OWNER_OWNERSTATISTICS_H

#include "common/text/ErrorNames.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace Faultkeeper::Apps
{

/// What an owner tells of itself, by name.
struct SOwnerStatistics
{
    std::map<std::string, std::int64_t> numbers;
    std::map<std::string, std::string> texts;
    std::optional<bool> known; ///< is there the error that was asked for? Owners need not tell

    /// A text; empty if the owner does not tell it.
    std::string Text(const std::string& name) const
    {
        const auto found = texts.find(name);
        return found != texts.end() ? found->second : std::string();
    }
};

/// How asking went.
enum EOwnerAnswer : int
{
    eoaAnswered,
    eoaNobody, ///< nobody listens
    eoaSilent, ///< somebody does, and has not answered in time
};

/// Asks the owner on port 5300 of this machine.
/// @param patience    how long to wait for the answer
/// @param statistics  replaced if it has answered, untouched otherwise
/// @param error       to ask for as well; null for none
EOwnerAnswer AskOwner(std::chrono::milliseconds patience, SOwnerStatistics& statistics,
                      const ErrorId* error = nullptr);

} // namespace Faultkeeper::Apps

#endif
