#pragma once

#include "support/wire/WireModel.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Fuzz
{

/// A notification of this name is one that the handler refuses.
constexpr const char* kRefusedByHandler = "refuse";

/// A notification as a server has to pass it on, elements as lines of text.
struct SNotification
{
    std::uint64_t offset;
    std::string name;
    std::string arguments;
    std::string message;
    std::uint64_t number; ///< 0 if it has none
    std::string session;  ///< of its sender; empty if that has not introduced itself

    bool operator==(const SNotification& other) const;
};

/// All that a server has to tell of one connection over which a stream has come to its end.
struct SConnection
{
    std::string session; ///< that is introduced, before everything else; empty if none is
    std::vector<SNotification> notifications;
    bool endsByHandler = false; ///< the last one is refused by the handler
    bool refused = false;       ///< behind the notifications
    std::uint64_t refusalOffset = 0;
    bool wrongByte = false; ///< which is why, rather than a message that is no notification
};

SConnection ExpectedOf(const Support::SWireStream& stream);

} // namespace Fuzz
