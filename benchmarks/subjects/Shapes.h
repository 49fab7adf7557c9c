#pragma once

#include <Faultkeeper/TriggerSet.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Benchmarks
{

/// One trigger set of a measured hierarchy.
struct SMeasuredSet
{
    bool autoTrigger;
    Faultkeeper::EErrorLinkingMode linkingMode;
    Faultkeeper::EErrorTitleSource titleSource;
    std::vector<std::size_t> triggers; ///< places of errors
};

/// The trigger sets of each error; an error's place is its rank in identifier order.
using Shape = std::vector<std::vector<SMeasuredSet>>;

enum EShape
{
    esPlausible, ///< families and single errors mixed as in the example configuration, consoles of 400 errors
    esChain,    ///< each error the only trigger of another, in the order that is worst for passes over a list
    esDiamonds, ///< layers of two, each error of a layer over both of the next: paths double with every layer
};

/// "plausible", "chain" or "diamonds".
const char* NameOf(EShape shape);

/// A hierarchy of exactly so many errors, the same at every call.
Shape MakeShape(EShape shape, std::size_t errors);

/// Places of the errors that are nobody's trigger and have none.
std::vector<std::size_t> SinglePlaces(const Shape& shape);

/// Places of the errors that are nobody's trigger and have some.
std::vector<std::size_t> TopPlaces(const Shape& shape);

/// Places of the errors that are triggers and have none themselves.
std::vector<std::size_t> LeafPlaces(const Shape& shape);

/// A number near 0.618 of `count` that has no common factor with it, so that steps of it visit every place.
std::size_t ScatterStep(std::size_t count);

} // namespace Benchmarks
