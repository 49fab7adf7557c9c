#ifndef FAULTKEEPER_ERRORDBVIEWCHANGED_H
#define FAULTKEEPER_ERRORDBVIEWCHANGED_H

#include <Faultkeeper/Export.h>

namespace Faultkeeper
{

struct SErrorEntry;

/// Told by a reading view of every record that it found changed.
///
/// Calls come from inside CErrorDatabaseView::Synchronise, on its thread and without the table's lock, after
/// the local database has been given the change.
///
/// Ownership: the view borrows its listener and never deletes it.
class FAULTKEEPER_EXPORT CErrorDbViewChanged
{
public:
    virtual ~CErrorDbViewChanged();

    /// @param entry  the view's own copy of the record; valid during the call
    virtual void ErrorEntryChanged(const SErrorEntry& entry) = 0;
};

} // namespace Faultkeeper

#endif
