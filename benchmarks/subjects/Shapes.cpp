#include "subjects/Shapes.h"

#include <algorithm>
#include <numeric>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
constexpr std::size_t kConsole = 400; // errors of one console: as many as the shared table holds
constexpr std::size_t kFamily = 40;

struct SFamilySet
{
    std::size_t owner;
    bool autoTrigger;
    EErrorLinkingMode linkingMode;
    EErrorTitleSource titleSource;
    std::vector<std::size_t> triggers;
};

// Counts per 40 errors as in the example configuration: 7 summaries, 10 sets, some 30 triggers, 2 to 4
// levels, one trigger with two parents below a common one, a fifth of all errors without any link.
const std::vector<SFamilySet>& FamilySets()
{
    static const std::vector<SFamilySet> sets = {
        {0, true, eelmChildOnly, eetsTrigger, {1, 2, 3}},
        {0, false, eelmVerbose, eetsParent, {4}},
        {1, true, eelmDeep, eetsTrigger, {5, 6, 7, 8, 9}},
        {2, true, eelmDeep, eetsTrigger, {9, 10, 11, 12}},
        {2, false, eelmVerbose, eetsParent, {13}},
        {3, true, eelmShallow, eetsParent, {14, 15, 16, 17}},
        {14, true, eelmDeep, eetsParent, {30, 31}},
        {18, true, eelmDeep, eetsTrigger, {19, 20, 21}},
        {18, false, eelmVerbose, eetsParent, {22}},
        {23, true, eelmDeep, eetsParent, {24, 25, 26}},
        {27, true, eelmChildOnly, eetsTrigger, {28, 29}},
    };
    return sets;
}

/// Families are spread over their console as those of the example are over its modules.
std::size_t PlausiblePlace(std::size_t number, std::size_t errors)
{
    const std::size_t first = number / kConsole * kConsole;
    const std::size_t size = std::min(kConsole, errors - first);
    return first + (number - first) * ScatterStep(size) % size;
}

void AddFamilySet(Shape& shape, std::size_t first, const SFamilySet& set)
{
    if (first + set.owner >= shape.size())
        return;
    SMeasuredSet measured{set.autoTrigger, set.linkingMode, set.titleSource, {}};
    for (const std::size_t trigger : set.triggers)
    {
        if (first + trigger < shape.size())
            measured.triggers.push_back(PlausiblePlace(first + trigger, shape.size()));
    }
    if (!measured.triggers.empty())
        shape[PlausiblePlace(first + set.owner, shape.size())].push_back(measured);
}

Shape MakePlausible(std::size_t errors)
{
    Shape shape(errors);
    for (std::size_t first = 0; first < errors; first += kFamily)
    {
        for (const SFamilySet& set : FamilySets())
            AddFamilySet(shape, first, set);
    }
    return shape;
}

void Link(Shape& shape, std::size_t owner, std::vector<std::size_t> triggers)
{
    shape[owner].push_back({true, eelmDeep, eetsParent, std::move(triggers)});
}

// From the first place to the last, and from there downward: each pass over the list meets one member only.
Shape MakeChain(std::size_t errors)
{
    Shape shape(errors);
    if (errors > 1)
        Link(shape, 0, {errors - 1});
    for (std::size_t place = errors - 1; place > 1; --place)
        Link(shape, place, {place - 1});
    return shape;
}

Shape MakeDiamonds(std::size_t errors)
{
    Shape shape(errors);
    for (std::size_t place = 0; place < errors; ++place)
    {
        const std::size_t below = (place / 2 + 1) * 2;
        if (below + 1 < errors)
            Link(shape, place, {below, below + 1});
        else if (below < errors)
            Link(shape, place, {below});
    }
    return shape;
}

std::vector<bool> TriggerMarks(const Shape& shape)
{
    std::vector<bool> marks(shape.size());
    for (const std::vector<SMeasuredSet>& sets : shape)
    {
        for (const SMeasuredSet& set : sets)
        {
            for (const std::size_t trigger : set.triggers)
                marks[trigger] = true;
        }
    }
    return marks;
}

std::vector<std::size_t> PlacesOf(const Shape& shape, bool withTriggers, bool thatAreTriggers)
{
    const std::vector<bool> marks = TriggerMarks(shape);
    std::vector<std::size_t> places;
    for (std::size_t place = 0; place < shape.size(); ++place)
    {
        if (shape[place].empty() != withTriggers && marks[place] == thatAreTriggers)
            places.push_back(place);
    }
    return places;
}
} // namespace

const char* NameOf(EShape shape)
{
    constexpr const char* kNames[] = {"plausible", "chain", "diamonds"};
    return kNames[shape];
}

Shape MakeShape(EShape shape, std::size_t errors)
{
    if (shape == esChain)
        return MakeChain(errors);
    return shape == esDiamonds ? MakeDiamonds(errors) : MakePlausible(errors);
}

std::vector<std::size_t> SinglePlaces(const Shape& shape)
{
    return PlacesOf(shape, false, false);
}

std::vector<std::size_t> TopPlaces(const Shape& shape)
{
    return PlacesOf(shape, true, false);
}

std::vector<std::size_t> LeafPlaces(const Shape& shape)
{
    return PlacesOf(shape, false, true);
}

std::size_t ScatterStep(std::size_t count)
{
    std::size_t step = std::max<std::size_t>(1, count * 618 / 1000);
    while (std::gcd(step, count) != 1)
        ++step;
    return step;
}

} // namespace Benchmarks
