#include "messages/ServerModel.h"

#include <algorithm>

namespace Fuzz
{

namespace
{

using Support::SWireElement;
using Support::SWireMessage;

bool Is(const SWireElement* element, Support::EWireKind kind)
{
    return element != nullptr && element->kind == kind;
}

bool IsSession(const std::string& text)
{
    return text.size() == 32 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
}

/// Goes through the messages of a connection in their order.
class CFollower
{
public:
    const SConnection& Connection() const { return m_connection; }

    /// @return false if the connection ends with it
    bool Follow(const SWireMessage& message)
    {
        const SWireElement* const name = message.content.Find("name");
        const SWireElement* const arguments = message.content.Find("args");
        if (!Is(name, Support::ewkText) || !Is(arguments, Support::ewkList))
            return Refuse(message.offset);
        return name->value == "Hello" ? Introduce(message.offset, *arguments)
                                      : Notify(message, name->value, *arguments);
    }

    bool Refuse(std::uint64_t offset)
    {
        m_connection.refused = true;
        m_connection.refusalOffset = offset;
        return false;
    }

    void End(const Support::SWireStream& stream)
    {
        m_connection.wrongByte = stream.end == Support::eweWrong;
        if (stream.end != Support::eweWhole)
            Refuse(stream.endOffset);
    }

private:
    bool Introduce(std::uint64_t offset, const SWireElement& arguments)
    {
        const bool first = m_connection.session.empty() && m_connection.notifications.empty();
        if (!first || arguments.elements.size() != 1 || arguments.elements[0].kind != Support::ewkText ||
            !IsSession(arguments.elements[0].value))
            return Refuse(offset);
        m_connection.session = arguments.elements[0].value;
        return true;
    }

    /// Whatever number it has from 1 on, also one that was there before: to skip those is its receiver's.
    bool Notify(const SWireMessage& message, const std::string& name, const SWireElement& arguments)
    {
        const SWireElement* const number = message.content.Find("seq");
        if (number != nullptr &&
            (number->kind != Support::ewkNumber || number->value[0] == '-' || number->value == "0"))
            return Refuse(message.offset);
        m_connection.notifications.push_back(
            {message.offset, name, Support::Shown(arguments), Support::Shown(message.content),
             number == nullptr ? 0 : std::stoull(number->value), m_connection.session});
        m_connection.endsByHandler = name == kRefusedByHandler;
        return !m_connection.endsByHandler;
    }

    SConnection m_connection;
};

} // namespace

bool SNotification::operator==(const SNotification& other) const
{
    return offset == other.offset && name == other.name && arguments == other.arguments &&
           message == other.message && number == other.number && session == other.session;
}

SConnection ExpectedOf(const Support::SWireStream& stream)
{
    CFollower follower;
    const bool goesOn = std::all_of(stream.messages.begin(), stream.messages.end(),
                                    [&](const SWireMessage& message) { return follower.Follow(message); });
    if (goesOn)
        follower.End(stream);
    return follower.Connection();
}

} // namespace Fuzz
