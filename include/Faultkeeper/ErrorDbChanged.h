#ifndef FAULTKEEPER_ERRORDBCHANGED_H
#define FAULTKEEPER_ERRORDBCHANGED_H

#include <Faultkeeper/Export.h>

namespace Faultkeeper
{

/// Told of every error that is raised or cleared in a database, unless the change was silent.
///
/// Calls come on the thread that made the change, a child's before its parents'.
/// Ownership: the database borrows its listener and never deletes it.
class FAULTKEEPER_EXPORT CErrorDbChanged
{
public:
    virtual ~CErrorDbChanged();

    /// The error has become active.
    virtual void ErrorRaised(int problemCode, int problemType) = 0;
    /// The error has become inactive.
    virtual void ErrorCleared(int problemCode, int problemType) = 0;
};

} // namespace Faultkeeper

#endif
