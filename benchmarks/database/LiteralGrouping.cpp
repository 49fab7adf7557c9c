#include "database/LiteralGrouping.h"

#include <cstddef>
#include <iterator>
#include <vector>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
using Errors = std::list<const CError*>;
using Position = Errors::const_iterator;

/// A group that grows while it is being made.
struct SGroup
{
    Errors members;
    const CError* top;
};

/// Compares one error with every member, those included that the comparison itself has added.
bool Compare(const CError* error, SGroup& group)
{
    bool joined = false;
    for (const CError* member : group.members)
    {
        if (!error->IsRelatedTo(member))
            continue;
        group.members.push_back(error);
        if (error->Position() > group.top->Position())
            group.top = error;
        joined = true;
    }
    return joined;
}

bool Pass(Position from, Position end, std::size_t place, std::vector<bool>& visited, SGroup& group)
{
    bool added = false;
    for (; from != end; ++from, ++place)
    {
        if (!visited[place] && Compare(*from, group))
        {
            visited[place] = true;
            added = true;
        }
    }
    return added;
}
} // namespace

void GroupLiterally(const Errors& errors, Errors& tops)
{
    tops.clear();
    std::vector<bool> visited(errors.size());
    std::size_t place = 0;
    for (Position error = errors.begin(); error != errors.end(); ++error, ++place)
    {
        if (visited[place])
            continue;
        visited[place] = true;
        SGroup group{{*error}, *error};
        while (Pass(std::next(error), errors.end(), place + 1, visited, group))
        {
        }
        tops.push_back(group.top);
    }
}

CLiteralTree::CLiteralTree(const CErrorDatabase& database)
{
    for (const CError& error : database.GetErrorList())
        m_index[{error.ProblemCode(), error.ProblemType()}] = const_cast<CError*>(&error);
}

void CLiteralTree::Update()
{
    Errors active;
    Errors changedActive;
    Errors inactive;
    Errors changedInactive;
    for (const auto& entry : m_index)
    {
        CError& error = *entry.second;
        (error.Active() ? active : inactive).push_back(&error);
        if (error.Changed())
            (error.Active() ? changedActive : changedInactive).push_back(&error);
        error.Changed(false);
    }
    GroupLiterally(active, m_activeTops);
    GroupLiterally(changedActive, m_changedActiveTops);
    GroupLiterally(inactive, m_inactiveTops);
    GroupLiterally(changedInactive, m_changedInactiveTops);
}

} // namespace Benchmarks
