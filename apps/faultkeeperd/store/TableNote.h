#ifndef FAULTKEEPER_FAULTKEEPERD_STORE_TABLENOTE_H
#define FAULTKEEPER_FAULTKEEPERD_STORE_TABLENOTE_H

#include <string>

namespace Faultkeeper::Apps
{

/// What a table has to do with a store.
enum ETableRelation : int
{
    etrUnknown = 0, ///< nobody has said
    etrStored,      ///< the store has all of the table that counts
    etrAhead,       ///< the table went on from the store, which has not all of it
    etrApart,       ///< the table counts by itself, and is in no store
    etrElsewhere    ///< the table is newer than the store, and how they count is not known
};

/// A note beside the table, for the next owner: which store has what is in the table, and whether it still
/// has.
///
/// A store that fails, or is not used for a while, falls behind; then the table of a dead owner knows better,
/// and only the note can tell. It is one line, a sign and the store's path. That a store falls behind changes
/// the sign alone, in its place, which a full disk does not keep from being written.
/// Failure: a directory that takes no file has no note; then everything counts as unknown. A note that could
/// not be written whole makes the table the newer; if it was to say that the store has all, it is removed. It
/// is tried again whenever it is to say something, though that be the same.
class CTableNote
{
public:
    /// @param path  of the note; empty: there is none, and nothing is written
    explicit CTableNote(const std::string& path) : m_path(path) {}

    /// Reads what an owner before has left. To be called when that one has ended.
    void Read();

    /// What the table has to do with that store, by what the note says. An empty path stands for no store.
    ETableRelation RelationTo(const std::string& store) const;

    /// The table is in that store, or went on from it, or from none.
    void Write(ETableRelation relation, const std::string& store);

    /// The table has got ahead of what it was stored in, whatever that was. Not once only: a store that goes
    /// on failing goes on saying so.
    void FallBehind();

private:
    bool PutSign(ETableRelation relation) const;
    bool PutAll(ETableRelation relation, const std::string& store) const;

    const std::string m_path;
    ETableRelation m_relation = etrUnknown;
    std::string m_store;
    bool m_written = false; // as these say
};

} // namespace Faultkeeper::Apps

#endif
