#include "presentation/Screen.h"

#include "subjects/Configurations.h"
#include "subjects/MeasuredIds.h"

#include <Faultkeeper/ErrorPresentation.h>

#include <stdexcept>
#include <utility>

namespace Benchmarks
{

using namespace Faultkeeper;

CScreen::CScreen(std::size_t errors)
    : m_database(DatabaseOf(esPlausible, errors)), m_overlay(ConfigurationOf(esPlausible, errors)),
      m_owner(std::make_unique<CErrorDatabaseView>(true, eViewOwner))
{
    if (!m_owner->LoadErrors(m_database) || !m_owner->FaultkeeperReady(true))
        throw std::runtime_error("no table");
    const std::vector<std::pair<int, int>> ids = MakeIdPairs(errors);
    m_owner->RaiseErrors(ids);
    std::vector<std::pair<int, int>> cleared;
    for (std::size_t place = 0; place < errors; place += 4)
        cleared.push_back(ids[place]);
    m_owner->ClearErrors(cleared);
    for (std::size_t place = 0; place < errors; ++place)
    {
        // What the table has no record for, nobody but this database knows.
        if (place >= kStatusTableCapacity && place % 4 != 0)
            m_database.RaiseError(ids[place].first, ids[place].second, true);
        else
            m_database.ClearError(ids[place].first, ids[place].second, true);
    }
    m_view = std::make_unique<CErrorDatabaseView>(false, eViewReader);
    m_view->Synchronise(m_database);
    m_database.UpdateErrorTree();
    m_bare = std::make_unique<CBareTable>();
}

std::vector<SErrorTree> CScreen::Trees(bool useTextKeys) const
{
    std::vector<SErrorTree> trees;
    CErrorPresentation::GetErrorTree(*m_view, m_overlay, Tops(), trees, useTextKeys);
    return trees;
}

} // namespace Benchmarks
