#ifndef FAULTKEEPER_APPS_STORE_TRANSITIONCAUSES_H
#define FAULTKEEPER_APPS_STORE_TRANSITIONCAUSES_H

#include <vector>

namespace Faultkeeper
{
class CError;
class CErrorDatabase;
} // namespace Faultkeeper

namespace Faultkeeper::Apps
{

/// Tells which change of a child made a parent follow.
///
/// The database reports changes in the order in which they happen: an error, then each of its parents that
/// follows, and what follows from that first. So the cause of a change is the nearest one before it, on the
/// way back to the request, whose error is a trigger that satisfies (or no longer satisfies) the parent's
/// sets.
class CTransitionCauses
{
public:
    /// @param database  borrowed
    explicit CTransitionCauses(const CErrorDatabase& database) : m_database(database) {}

    /// A request comes; what changes from here on follows from it.
    void Begin() { m_way.clear(); }

    /// An error has changed.
    /// @return the error that caused it; null for the one that the request was for
    const CError* CauseOf(int problemCode, int problemType, bool raised);

private:
    const CErrorDatabase& m_database;
    std::vector<const CError*> m_way; // from the request's error to the last change
};

} // namespace Faultkeeper::Apps

#endif
