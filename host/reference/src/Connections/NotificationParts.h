#ifndef CONNECTIONS_NOTIFICATIONPARTS_H
#define CONNECTIONS_NOTIFICATIONPARTS_H

#include <MPI/BAtomC.h>
#include <MPI/BDictionaryC.h>
#include <MPI/BListC.h>

#include <string>

/// The two parts that make a message a notification, borrowed from it.
template <typename Dictionary, typename List> struct NotificationPartsOf
{
    explicit NotificationPartsOf(Dictionary& message)
    {
        const BElementC* const nameElement = message.Find("name");
        const BAtomC* const atom = nameElement != nullptr ? nameElement->AsAtom() : nullptr;
        name = atom != nullptr && !atom->IsInteger() ? &atom->Text() : nullptr;
        auto* const argumentsElement = message.Find("args");
        arguments = argumentsElement != nullptr ? argumentsElement->AsList() : nullptr;
    }

    bool Complete() const { return name != nullptr && arguments != nullptr; }

    const std::string* name; // null if there is none, or if it is no text
    List* arguments;         // null if there are none, or if they are no list
};

using NotificationParts = NotificationPartsOf<BDictionaryC, BListC>;
using ConstNotificationParts = NotificationPartsOf<const BDictionaryC, const BListC>;

#endif
