#include "Common/view/RecordIndex.h"

#include "Common/view/TableRecords.h"

namespace Faultkeeper
{

namespace
{
constexpr std::uint32_t kSpread = 2654435761U; // 2^32 divided by the golden ratio: neighbours end up apart
constexpr int kSlotShift = 22;                 // leaves the ten upper bits

std::size_t FirstSlot(std::int32_t code, std::int16_t type)
{
    const std::uint32_t mixed =
        static_cast<std::uint32_t>(code) ^ (static_cast<std::uint16_t>(type) * 0x9E5U);
    return (mixed * kSpread) >> kSlotShift;
}

bool Matches(const SErrorEntry& record, std::int32_t code, std::int16_t type)
{
    return record.problemCode == code && record.problemType == type;
}
} // namespace

void CRecordIndex::Know(const SStatusTable& table)
{
    if (!Knows(table))
        Build(table);
}

int CRecordIndex::Find(const SStatusTable& table, int code, int type) const
{
    return m_slots[FindSlot(table, code, static_cast<std::int16_t>(type))];
}

bool CRecordIndex::Knows(const SStatusTable& table) const
{
    const int count = RecordCount(table);
    if (count != m_count)
        return false;
    int position = 0;
    while (position < count)
    {
        const SId& id = m_ids[static_cast<std::size_t>(position)];
        if (!Matches(table.records[position], id.code, id.type))
            return false;
        ++position;
    }
    return true;
}

void CRecordIndex::Build(const SStatusTable& table)
{
    m_count = RecordCount(table);
    m_slots.fill(kEmpty);
    for (int position = 0; position < m_count; ++position)
        Insert(table, position);
}

void CRecordIndex::Insert(const SStatusTable& table, int position)
{
    const SErrorEntry& record = table.records[position];
    m_ids[static_cast<std::size_t>(position)] = {record.problemCode, record.problemType};
    const std::size_t slot = FindSlot(table, record.problemCode, record.problemType);
    if (m_slots[slot] == kEmpty) // otherwise an earlier record has this identifier, and is the one found
        m_slots[slot] = static_cast<std::int16_t>(position);
}

/// The slot that leads to the record, or the empty one where the search for it ends. There is always an empty
/// one: no more positions than records are kept, and all are within the table whatever its count says now.
std::size_t CRecordIndex::FindSlot(const SStatusTable& table, std::int32_t code, std::int16_t type) const
{
    std::size_t slot = FirstSlot(code, type);
    while (m_slots[slot] != kEmpty && !Matches(table.records[m_slots[slot]], code, type))
        slot = (slot + 1) % kSlots;
    return slot;
}

} // namespace Faultkeeper
