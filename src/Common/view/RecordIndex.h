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
/// Only positions are kept, and a record is compared before it is taken for found. Whoever changes a table's
/// identifiers, or lets somebody else do so, says so with MayDiffer; then they are compared with those known,
/// and positions worked out anew only if any is different. Cost: constant; after MayDiffer one walk.
class CRecordIndex
{
public:
    /// The table's identifiers may not be those known.
    void MayDiffer() { m_trusted = false; }

    /// Position of the first record with this identifier, or -1. Only 16 bits of the type count.
    /// @param table  the same each time, or MayDiffer comes before
    int Find(const SStatusTable& table, int code, int type);

private:
    struct SId
    {
        std::int32_t code;
        std::int16_t type;
    };

    static constexpr std::size_t kSlots = 1024; // a power of two; at most 400 are taken
    static constexpr std::int16_t kEmpty = -1;

    bool Known(const SStatusTable& table) const;
    void Build(const SStatusTable& table);
    void Insert(const SStatusTable& table, int position);
    std::size_t FindSlot(const SStatusTable& table, int count, std::int32_t code, std::int16_t type) const;

    bool m_trusted = false;
    int m_count = -1; // none yet
    std::array<SId, kStatusTableCapacity> m_ids;
    std::array<std::int16_t, kSlots> m_slots; // positions
};

} // namespace Faultkeeper

#endif
