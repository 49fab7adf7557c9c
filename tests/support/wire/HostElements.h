#pragma once

#include "support/wire/WireModel.h"

#include <MPI/BAtomC.h>
#include <MPI/BDictionaryC.h>
#include <MPI/BElementC.h>
#include <MPI/BListC.h>

#include <cstdint>
#include <memory>
#include <string>

namespace Support
{

/// What a host's element holds.
inline SWireElement WireElementOf(const BElementC& element)
{
    if (const BAtomC* const atom = element.AsAtom())
        return atom->IsInteger() ? SWireElement{ewkNumber, std::to_string(atom->Integer()), {}, {}}
                                 : SWireElement{ewkText, atom->Text(), {}, {}};
    SWireElement result;
    if (const BListC* const list = element.AsList())
    {
        result.kind = ewkList;
        for (const auto& each : list->Elements())
            result.elements.push_back(WireElementOf(*each));
        return result;
    }
    result.kind = ewkDictionary;
    for (const auto& entry : element.AsDictionary()->Elements())
    {
        result.keys.push_back(entry.first);
        result.elements.push_back(WireElementOf(*entry.second));
    }
    return result;
}

/// The host's element that holds the same.
inline std::unique_ptr<BElementC> HostElementOf(const SWireElement& element)
{
    if (element.kind == ewkNumber)
        return std::make_unique<BAtomC>(static_cast<std::int64_t>(std::stoll(element.value)));
    if (element.kind == ewkText)
        return std::make_unique<BAtomC>(element.value);
    if (element.kind == ewkList)
    {
        auto list = std::make_unique<BListC>();
        for (const SWireElement& each : element.elements)
            list->Append(HostElementOf(each));
        return list;
    }
    auto dictionary = std::make_unique<BDictionaryC>();
    for (std::size_t index = 0; index < element.elements.size(); ++index)
        dictionary->Insert(element.keys[index], HostElementOf(element.elements[index]));
    return dictionary;
}

} // namespace Support
