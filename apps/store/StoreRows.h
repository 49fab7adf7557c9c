#ifndef FAULTKEEPER_APPS_STORE_STOREROWS_H
#define FAULTKEEPER_APPS_STORE_STOREROWS_H

#include "store/Sqlite.h"
#include "store/StoreRecords.h"

#include <cstdint>
#include <string>

/// Records as rows of a store's tables: each ends with a checksum of all before it.
namespace Faultkeeper::Apps
{

/// Appends all values of the record's row to the statement.
void PutRow(CSqliteStatement& statement, const SStoredError& error);
void PutRow(CSqliteStatement& statement, const SStoredSession& session, std::int64_t place);
void PutRow(CSqliteStatement& statement, const STransition& transition);
void PutFactRow(CSqliteStatement& statement, std::int64_t id, const std::string& value);

/// The record that all columns of a row make.
/// @return false if the row is not as it was written; the record is worth nothing then
bool GetRow(const CSqliteStatement& row, SStoredError& error);
bool GetRow(const CSqliteStatement& row, SStoredSession& session, std::int64_t& place);
bool GetRow(const CSqliteStatement& row, STransition& transition);
bool GetFactRow(const CSqliteStatement& row, std::int64_t& id, std::string& value);

/// The error that a row was written for, as far as a row that is not as it was written still tells: its
/// number says it, and the columns say it once more.
ErrorId IdOfErrorRow(const CSqliteStatement& row);

} // namespace Faultkeeper::Apps

#endif
