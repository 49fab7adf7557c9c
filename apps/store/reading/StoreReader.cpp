#include "store/reading/StoreReader.h"

#include "store/StoreFacts.h"
#include "store/StoreFile.h"
#include "store/StoreRows.h"
#include "store/reading/StoreImage.h"

#include <algorithm>
#include <limits>

namespace Faultkeeper::Apps
{

CStoreReader::CStoreReader(const std::string& path, EStoreCheck check) : m_database(ReadStoreImage(path))
{
    m_database.Run("PRAGMA cell_size_check = ON");
    CheckStoreTables(m_database);
    if (check == escWholeFile)
        m_database.Check();
}

std::string CStoreReader::Boot()
{
    const SStoreFacts facts = ReadStoreFacts(m_database);
    for (const std::int64_t id : facts.bad)
        m_dropped.push_back(NameOfFact(id));
    return facts.Value(esfBoot);
}

std::vector<SStoredError> CStoreReader::Errors()
{
    std::vector<SStoredError> errors;
    SStoredError error;
    CSqliteStatement rows(m_database, "SELECT * FROM errors");
    while (rows.Next())
    {
        if (GetRow(rows, error))
        {
            errors.push_back(error);
            continue;
        }
        const ErrorId id = IdOfErrorRow(rows);
        m_dropped.push_back("error " + ErrorName(id.first, id.second));
    }
    return errors;
}

std::vector<STransition> CStoreReader::Journal(std::uint64_t from)
{
    constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();
    std::vector<STransition> transitions;
    STransition transition;
    CSqliteStatement rows(m_database, "SELECT * FROM journal WHERE number >= ? ORDER BY number");
    rows.Put(static_cast<std::int64_t>(std::min(from, kLargest)));
    while (rows.Next())
    {
        if (GetRow(rows, transition))
            transitions.push_back(transition);
        else
            m_dropped.push_back("transition numbered " + std::to_string(transition.number));
    }
    return transitions;
}

std::uint64_t CStoreReader::NextNumber()
{
    return static_cast<std::uint64_t>(m_database.Integer("SELECT max(number) FROM journal")) + 1;
}

} // namespace Faultkeeper::Apps
