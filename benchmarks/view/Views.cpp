#include "view/Views.h"

#include "subjects/Configurations.h"
#include "subjects/MeasuredIds.h"

#include <stdexcept>

namespace Benchmarks
{

using namespace Faultkeeper;

CViews::CViews(std::size_t errors) : m_database(DatabaseOf(esPlausible, errors))
{
    m_owner = std::make_unique<CErrorDatabaseView>(true, eViewOwner);
    if (!m_owner->LoadErrors(m_database) || !m_owner->FaultkeeperReady(true))
        throw std::runtime_error("no table");
    m_reader = std::make_unique<CErrorDatabaseView>(false, eViewReader);
    const Ids ids = MakeIdPairs(errors);
    for (std::size_t place = 0; place < errors; ++place)
    {
        m_ids.push_back(ids[place * ScatterStep(errors) % errors]);
        m_database.ClearError(ids[place].first, ids[place].second, true);
    }
    m_database.UpdateErrorTree();
    m_reader->Synchronise(m_database);
    m_bare = std::make_unique<CBareTable>();
}

} // namespace Benchmarks
