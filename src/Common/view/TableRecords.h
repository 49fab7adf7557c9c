#ifndef FAULTKEEPER_COMMON_VIEW_TABLERECORDS_H
#define FAULTKEEPER_COMMON_VIEW_TABLERECORDS_H

#include <Faultkeeper/StatusTable.h>

namespace Faultkeeper
{

/// Records of a table that may be read: its count, kept within 0..400 whatever another process wrote there.
int RecordCount(const SStatusTable& table);

/// Position of the first record with this identifier, or -1. Only 16 bits of the type are compared, as many
/// as a record holds.
int FindRecord(const SStatusTable& table, int code, int type);

/// When the record last changed: its clear if that is later than its raise, otherwise its raise.
Core::Time ChangeTime(const SErrorEntry& record);

/// Sets the header's last raise time but for the type word, which counts the table's changes.
void SetLastRaiseTime(SStatusHeader& header, const Core::Time& time);

inline bool Raised(const SErrorEntry& record)
{
    return (record.flags & kRaisedFlag) != 0;
}

} // namespace Faultkeeper

#endif
