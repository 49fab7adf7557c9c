#include "store/StoreRows.h"

#include "common/Checksum.h"

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::int64_t kTypes = 0x10000; // as many as there can be of one code

constexpr int kNoCode = -1; // no error's: what stands in the place of a cause's type is an owner's reason

/// The number of an error's row.
std::int64_t IdOf(std::int64_t code, std::int64_t type)
{
    return code * kTypes + static_cast<std::uint16_t>(type);
}

std::int64_t ChecksumOf(const SStoredError& error)
{
    const SErrorEntry& entry = error.entry;
    return CChecksum()
        .Add(entry.problemCode)
        .Add(entry.problemType)
        .Add(entry.flags & kRaisedFlag)
        .Add(entry.counter1)
        .Add(entry.counter2)
        .Add(static_cast<std::int64_t>(error.raises))
        .Add(entry.raisedTime.Nanoseconds())
        .Add(entry.clearedTime.Nanoseconds())
        .Value();
}

std::int64_t ChecksumOf(const SStoredSession& session, std::int64_t place)
{
    return CChecksum()
        .Add(place)
        .Add(session.id)
        .Add(static_cast<std::int64_t>(session.applied))
        .Add(session.left)
        .Value();
}

/// What a transition followed from, as it stands in its row.
struct SCause
{
    explicit SCause(const STransition& transition)
        : there(transition.caused || transition.reason != eorNone),
          code(transition.caused ? transition.causeCode
               : there           ? kNoCode
                                 : 0),
          type(transition.caused ? transition.causeType : static_cast<int>(transition.reason))
    {
    }

    const bool there;
    const int code;
    const int type;
};

std::int64_t ChecksumOf(const STransition& transition)
{
    const SCause cause(transition);
    return CChecksum()
        .Add(static_cast<std::int64_t>(transition.number))
        .Add(transition.time.Nanoseconds())
        .Add(transition.sinceBoot)
        .Add(transition.raised ? 1 : 0)
        .Add(transition.problemCode)
        .Add(transition.problemType)
        .Add(transition.session)
        .Add(cause.there ? 1 : 0)
        .Add(cause.code)
        .Add(cause.type)
        .Value();
}

std::int64_t ChecksumOfFact(std::int64_t id, const std::string& value)
{
    return CChecksum().Add(id).Add(value).Value();
}

// Of columns as they are in the file: a record would take their values into its own ranges.

std::int64_t ChecksumOfErrorColumns(const CSqliteStatement& row)
{
    CChecksum checksum;
    for (int column = 1; column < 9; ++column)
        checksum.Add(row.Integer(column));
    return checksum.Value();
}

std::int64_t ChecksumOfTransitionColumns(const CSqliteStatement& row)
{
    CChecksum checksum;
    for (int column = 0; column < 6; ++column)
        checksum.Add(row.Integer(column));
    checksum.Add(row.Text(6)).Add(row.Nothing(7) ? 0 : 1);
    return checksum.Add(row.Integer(7)).Add(row.Integer(8)).Value();
}
} // namespace

void PutRow(CSqliteStatement& statement, const SStoredError& error)
{
    const SErrorEntry& entry = error.entry;
    statement.Put(IdOf(entry.problemCode, entry.problemType))
        .Put(entry.problemCode)
        .Put(entry.problemType)
        .Put(entry.flags & kRaisedFlag)
        .Put(entry.counter1)
        .Put(entry.counter2)
        .Put(static_cast<std::int64_t>(error.raises))
        .Put(entry.raisedTime.Nanoseconds())
        .Put(entry.clearedTime.Nanoseconds())
        .Put(ChecksumOf(error));
}

bool GetRow(const CSqliteStatement& row, SStoredError& error)
{
    SErrorEntry& entry = error.entry;
    entry.problemCode = static_cast<std::int32_t>(row.Integer(1));
    entry.problemType = static_cast<std::int16_t>(row.Integer(2));
    entry.flags = row.Integer(3) != 0 ? kRaisedFlag : std::uint16_t(0);
    entry.counter1 = static_cast<std::uint16_t>(row.Integer(4));
    entry.counter2 = static_cast<std::uint16_t>(row.Integer(5));
    error.raises = static_cast<std::uint64_t>(row.Integer(6));
    entry.raisedTime = Core::Time::FromNanoseconds(row.Integer(7));
    entry.clearedTime = Core::Time::FromNanoseconds(row.Integer(8));
    return row.Integer(9) == ChecksumOfErrorColumns(row) &&
           row.Integer(0) == IdOf(entry.problemCode, entry.problemType);
}

ErrorId IdOfErrorRow(const CSqliteStatement& row)
{
    if (row.Integer(9) == ChecksumOfErrorColumns(row))
        return ErrorId(static_cast<int>(row.Integer(1)), static_cast<int>(row.Integer(2)));
    const std::int64_t id = row.Integer(0);
    const auto type = static_cast<std::int16_t>(id);
    return ErrorId(static_cast<int>((id - static_cast<std::uint16_t>(type)) / kTypes), type);
}

void PutRow(CSqliteStatement& statement, const SStoredSession& session, std::int64_t place)
{
    statement.Put(place)
        .Put(session.id)
        .Put(static_cast<std::int64_t>(session.applied))
        .Put(session.left)
        .Put(ChecksumOf(session, place));
}

bool GetRow(const CSqliteStatement& row, SStoredSession& session, std::int64_t& place)
{
    place = row.Integer(0);
    session.id = row.Text(1);
    session.applied = static_cast<std::uint64_t>(row.Integer(2));
    session.left = row.Integer(3);
    return row.Integer(4) == ChecksumOf(session, place);
}

void PutRow(CSqliteStatement& statement, const STransition& transition)
{
    statement.Put(static_cast<std::int64_t>(transition.number))
        .Put(transition.time.Nanoseconds())
        .Put(transition.sinceBoot)
        .Put(transition.raised ? 1 : 0)
        .Put(transition.problemCode)
        .Put(transition.problemType)
        .Put(transition.session);
    const SCause cause(transition);
    if (cause.there)
        statement.Put(cause.code).Put(cause.type);
    else
        statement.PutNothing().PutNothing();
    statement.Put(ChecksumOf(transition));
}

bool GetRow(const CSqliteStatement& row, STransition& transition)
{
    transition.number = static_cast<std::uint64_t>(row.Integer(0));
    transition.time = Core::Time::FromNanoseconds(row.Integer(1));
    transition.sinceBoot = row.Integer(2);
    transition.raised = row.Integer(3) != 0;
    transition.problemCode = static_cast<int>(row.Integer(4));
    transition.problemType = static_cast<int>(row.Integer(5));
    transition.session = row.Text(6);
    const bool byOwner = !row.Nothing(7) && row.Integer(7) == kNoCode;
    transition.caused = !row.Nothing(7) && !byOwner;
    transition.causeCode = transition.caused ? static_cast<int>(row.Integer(7)) : 0;
    transition.causeType = transition.caused ? static_cast<int>(row.Integer(8)) : 0;
    transition.reason = byOwner ? static_cast<EOwnersReason>(row.Integer(8)) : eorNone;
    return row.Integer(9) == ChecksumOfTransitionColumns(row);
}

void PutFactRow(CSqliteStatement& statement, std::int64_t id, const std::string& value)
{
    statement.Put(id).Put(value).Put(ChecksumOfFact(id, value));
}

bool GetFactRow(const CSqliteStatement& row, std::int64_t& id, std::string& value)
{
    id = row.Integer(0);
    value = row.Text(1);
    return row.Integer(2) == ChecksumOfFact(id, value);
}

} // namespace Faultkeeper::Apps
