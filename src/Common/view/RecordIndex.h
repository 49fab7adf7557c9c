#ifndef FAULTKEEPER_COMMON_VIEW_RECORDINDEX_H
#define FAULTKEEPER_COMMON_VIEW_RECORDINDEX_H

#include <Faultkeeper/StatusTable.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace Faultkeeper
{

/// Finds records of a table by identifier without walking through them; of several the first, as a walk
/// would.
///
/// The identifiers are compared with those known before a table is searched, and positions worked out anew
/// only if any is different. Only positions are kept: a record is compared before it is taken for found, so
/// that a table that changes meanwhile is never read outside its records. Cost: Know() that of one walk,
/// Find() constant.
class CRecordIndex
{
public:
    CRecordIndex() { m_slots.fill(kEmpty); }

    /// Takes over the table's identifiers as they are now.
    void Know(const SStatusTable& table);

    /// Position of the first record with this identifier, or -1. Only 16 bits of the type count.
    /// @param table  the one that Know has seen last, with the same identifiers
    int Find(const SStatusTable& table, int code, int type) const;

private:
    struct SId
    {
        std::int32_t code;
        std::int16_t type;
    };

    static constexpr std::size_t kSlots = 1024; // a power of two; at most 400 are taken
    static constexpr std::int16_t kEmpty = -1;

    bool Knows(const SStatusTable& table) const;
    void Build(const SStatusTable& table);
    void Insert(const SStatusTable& table, int position);
    std::size_t FindSlot(const SStatusTable& table, std::int32_t code, std::int16_t type) const;

    int m_count = 0;
    std::array<SId, kStatusTableCapacity> m_ids;
    std::array<std::int16_t, kSlots> m_slots; // positions
};

} // namespace Faultkeeper

#endif
