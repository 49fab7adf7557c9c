#ifndef FAULTKEEPER_APPS_STORE_STOREIMAGE_H
#define FAULTKEEPER_APPS_STORE_STOREIMAGE_H

#include <cstdint>
#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

typedef std::vector<unsigned char> Bytes;

/// What a store's files look like from outside: as long as it stays the same, so do they.
struct SStoreMark
{
    std::int64_t databaseChanged = 0; ///< nanoseconds since 1970; -1 if there is no such file
    std::int64_t databaseBytes = 0;
    std::int64_t logChanged = 0;
    std::int64_t logBytes = 0;
    bool settled = false; ///< the last change is so old that another one would show in its time

    bool SameAs(const SStoreMark& other) const;
};

SStoreMark MarkOfStore(const std::string& path);

/// The database in a store's file as of the last commit, whether an owner is writing it or not.
///
/// The files are opened for reading only, and SQLite never gets to see them, so nothing is locked, made,
/// changed or removed, whatever the access rights would allow. The database is read first and the log beside
/// it ("-wal") second: what an owner moves from the log into the database meanwhile still stands in the log.
/// A log that begins anew gets other numbers at its beginning; then all is read again.
/// Cost: memory as large as both files.
/// @throws CSqliteFailure
Bytes ReadStoreImage(const std::string& path);

/// Puts what a log has committed into the image that it belongs to. A log that does not begin right, and
/// what comes after the last commit, counts for nothing.
/// @throws CSqliteFailure, damage, if it cannot belong to it
void AddLog(Bytes& image, const Bytes& log);

} // namespace Faultkeeper::Apps

#endif
